#pragma once
// The refund worksheet as the Receipt Detail screen's "Create Refund" hands an excess fund to it: each value the
// receipt screen writes goes to the worksheet's property or data label of the same meaning (the refund number
// to label 0 and to the worksheet's own refund number, through its GetFormNumber), the receipt the
// fund came from to its receipt label (the host files the worksheet under it), and the screen's flag of a
// saved or voided worksheet tells the receipt screen to read the receipt again.

#include "payments/refundhandover.h"
#include "refunds/worksheet.h"

namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::document {

class WorkSheetHandOver : public payments::RefundWorksheet {
public:
  WorkSheetHandOver(platform::Services& services, const QString& receiptNumber);

  void setCustomerID(const QString& customerId) override;
  void setDataLabel(int index, const QString& text) override;
  // The worksheet shows one address line: the second follows the first after a blank, as the worksheet
  // itself shows an address read from the host.
  void setSecondAddressLine(const QString& text) override;
  void setStatus(const QString& statusCode) override;
  void loadExisting(const QString& customerId, const QString& statusCode, const QString& refundNumber,
                    const QString& editMode) override;
  void showModal() override;
  bool refundCompleted() const override;

  refunds::QORVA_WorkSheet& sheet() { return m_sheet; }

private:
  refunds::QORVA_WorkSheet m_sheet;
};

}  // namespace adjustacc::document
