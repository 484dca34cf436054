#pragma once
// How "Create Refund" on the Receipt Detail screen hands an excess fund over to the refund worksheet screen.
//
// The worksheet screen lives in its own folder and the receipt screens do not depend on it. Whoever opens
// the Receipt Detail screen (the document) may give it a RefundWorksheetOpener; without one, "Create Refund"
// tells the clerk plainly that the refund worksheet is not available in this version and changes nothing.
//
// What the receipt screen does with the worksheet, in order:
//   1. Create Refund asks the host for the refund information of the chosen excess fund; nothing is made
//      until it is answered (a refusal or a time-out is shown as any other and opens no worksheet);
//   2. opener() makes the worksheet (not yet shown);
//   3. setCustomerID(owner of the excess fund) and setDataLabel(1..6, ...) with the excess fund's row:
//        1 customer name, 2 address line 1, 3 city, 4 state, 5 ZIP, 6 refund amount;
//      then the answer's non-null fields over them: setCustomerID, setDataLabel(0, the refund number of a
//      worksheet already under way), setStatus(status code), setDataLabel(1..5, name and address) and
//      setSecondAddressLine. Label 0 is the worksheet's refund number itself (the one it saves and prints),
//      and the status is written before the worksheet loads, which reads it then;
//   4. showModal() - returns when the clerk closes the worksheet. A worksheet given no refund number takes
//      one from the refund series itself when it loads;
//   5. refundCompleted() is read after showModal() returns: true makes the receipt screen read the receipt
//      again (and tells its own opener that the account changed).
// An excess fund already on a worksheet (Enter or a double-click on its row, openWorksheet) opens that worksheet
// through loadExisting() in place of step 3, then steps 4 and 5 as above.
//
// The worksheet screen plugs in with a small adapter in the opener's code:
//
//   detail.setRefundWorksheetOpener([&services] { return std::make_unique<WorkSheetHandOver>(services); });
//
// where WorkSheetHandOver wraps the worksheet screen (QORVA_WorkSheet): each setter writes the screen's
// property or data label of the same index, showModal() shows it, refundCompleted() reads its flag.

#include <QString>

#include <functional>
#include <memory>

namespace adjustacc::payments {

class RefundWorksheet {
public:
  // Indexes of the worksheet's data labels that the receipt screen fills.
  enum DataLabel {
    RefundNumberLabel = 0,
    NameLabel = 1,
    Address1Label = 2,
    CityLabel = 3,
    StateLabel = 4,
    ZipLabel = 5,
    AmountLabel = 6,
  };

  virtual ~RefundWorksheet();
  virtual void setCustomerID(const QString& customerId) = 0;
  virtual void setDataLabel(int index, const QString& text) = 0;
  virtual void setSecondAddressLine(const QString& text) = 0;
  virtual void setStatus(const QString& statusCode) = 0;
  // An existing worksheet of an excess fund, where it stands: its customer, its step (STTS_CD), its refund
  // number, and "O" when the officer may take the step (empty: look only). Instead of the setters above.
  virtual void loadExisting(const QString& customerId, const QString& statusCode, const QString& refundNumber,
                            const QString& editMode) = 0;
  // Shows the worksheet modally; returns when it hid itself.
  virtual void showModal() = 0;
  virtual bool refundCompleted() const = 0;
};

// Makes a refund worksheet for one "Create Refund"; may answer null (then nothing is shown).
using RefundWorksheetOpener = std::function<std::unique_ptr<RefundWorksheet>()>;

}  // namespace adjustacc::payments
