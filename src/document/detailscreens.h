#pragma once
// How the document opens the two detail screens of its lists: "AR Detail" (the Account Receivable Detail
// screen) and "Receipt Detail" (the Receipt Detail screen). The document decides everything that comes
// before the screen itself - which row, the values handed over, whether the receivable may be saved - and
// hands it over through this interface, which the application implements with the real screens.
//
// AR Detail, in this order:
//   loadArDetail(opening)           the screen is given the chosen receivable (not shown yet);
//   (the document requests the receivable's assessments)
//   showArDetail()                  the screen is shown; it may be modal: the assessments arrive while it
//                                   is open, as addAssessmentLine(grid, line) calls, one per assessment.
// Receipt Detail:
//   openReceiptDetail(opening, request)
//                                   the screen is given the chosen receipt and the request for its detail,
//                                   already sent; it takes the request as its own message object (connects
//                                   DataReady and MsgTimeout before it returns to the event loop, which is
//                                   when the reply can arrive at the earliest) and is shown.
//
// NoDetailScreens is the stand-in until the screens exist: it shows nothing and logs what it was handed.

#include <QLoggingCategory>
#include <QString>

#include <memory>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::document {

Q_DECLARE_LOGGING_CATEGORY(lcDocument)

// The chosen account receivable, as the document hands it to the detail screen (cell text as the list
// shows it; a null cell is empty).
struct ArDetailOpening {
  QString customerId;         // CUST_ID
  QString formDescription;    // FORM_DESC (the account type's description)
  QString receivableNumber;   // ACCT_RCVBL_NBR
  QString checkNumber;        // ACCT_RCVBL_CK_NBR
  QString receivableType;     // ACCT_RCVBL_TYP_CD
  QString statusCode;         // ACCT_STTS_CD
  QString statusDescription;  // its description in code table "CSTATUS"
  QString customerName;       // CUST_NAME
  QString activityStatus;     // ACTV_STTS_CD
  QString caseId;             // CASE_ID
  // False for a receivable that may be looked at but not saved: inactive (ACTV_STTS_CD "I"), bound to a
  // case (CASE_ID not blank) or voided (ACCT_STTS_CD "V"). The screen's Save button starts disabled then.
  bool saveEnabled = true;
};

// Whether a receivable may be saved from the detail screen (see ArDetailOpening::saveEnabled).
bool receivableMaySave(const QString& activityStatus, const QString& caseId, const QString& statusCode);

// The chosen receipt.
struct ReceiptDetailOpening {
  QString receiptNumber;      // RCPT_NBR
  QString totalPayment;       // TOT_PYMT_AMT
  QString statusDescription;  // STTS_DESC
  QString customerId;         // CUST_ID
  QString receiptDate;        // RCPT_DT
  int instance = 0;           // the screen's instance number: the document's count of receipt screens opened
  QString replyTo;            // the reply-to name of the screen's requests (receiptReplyToName)
};

// The reply-to name of a receipt screen's requests: the application's name, "PayDetail" and the screen's
// instance number ("AdjustAccPayDetail0" for the first screen the document opens, then 1, 2...).
QString receiptReplyToName(const QString& applicationName, int instance);

class DetailScreens {
public:
  virtual ~DetailScreens();
  virtual void loadArDetail(const ArDetailOpening& opening) = 0;
  virtual void showArDetail() = 0;
  // An assessment line for grid 0 ("Available Assessments") or grid 1 ("Adjusted Assessments"): cells
  // separated by tab characters, in the order the detail screen's grids have them.
  virtual void addAssessmentLine(int gridIndex, const QString& line) = 0;
  virtual void openReceiptDetail(const ReceiptDetailOpening& opening,
                                 std::unique_ptr<messaging::RequestMessage> request) = 0;
};

// Shows nothing; logs what it is handed (category "adjustacc.document") and lets the receipt request go.
class NoDetailScreens : public DetailScreens {
public:
  void loadArDetail(const ArDetailOpening& opening) override;
  void showArDetail() override;
  void addAssessmentLine(int gridIndex, const QString& line) override;
  void openReceiptDetail(const ReceiptDetailOpening& opening,
                         std::unique_ptr<messaging::RequestMessage> request) override;
};

}  // namespace adjustacc::document
