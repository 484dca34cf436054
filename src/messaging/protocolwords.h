#pragma once
// The words of the host protocol: request codes, selection parameters, and the names of the sections a
// reply carries and of the record sets a save sends. A screen that asks and the host that answers must
// spell each of them alike, so both read them from here (the rights are in rightnames.h, the fields and
// layouts of each section in sections.h).

#include <QString>

namespace adjustacc::messaging {

// What a request asks for. 47, 41, 74 and 75 are the agency's own codes; the others are this system's.
namespace requestcodes {
inline constexpr int Account = 47;           // an account, its assessments, a receipt, refund information, a
                                             // customer's accounts; the payment adjustment
inline constexpr int ReceivableDetail = 41;  // an account receivable's activity; its adjustment
inline constexpr int NextNumber = 60;        // the next number of a series
inline constexpr int CustomerSearch = 62;
inline constexpr int CodeTable = 63;
inline constexpr int Officer = 64;           // the signed-on officer and rights, or another officer's name
inline constexpr int RefundWorksheet = 74;
inline constexpr int RefundWorksheetSave = 75;  // a step of a refund worksheet, or its void
inline constexpr int ExcessFundTransfer = 77;
inline constexpr int SaveOutcome = 66;  // whether a save whose answer never came was applied; settles it
}  // namespace requestcodes

// Selection parameters: the system and operator every parameter carries, the keys ("key:" and a field
// name) and the values of the flag parameters.
namespace params {
inline const QString System = QStringLiteral("MARVENTO");
inline const QString Operator = QStringLiteral("=");

inline const QString AcctRcvblNbr = QStringLiteral("key:ACCT_RCVBL_NBR");
inline const QString AcctRcvblTypCd = QStringLiteral("key:ACCT_RCVBL_TYP_CD");
inline const QString All = QStringLiteral("key:ALL");
inline const QString AsOfDt = QStringLiteral("key:AS_OF_DT");
inline const QString CdTblId = QStringLiteral("key:CD_TBL_ID");
inline const QString CustId = QStringLiteral("key:CUST_ID");
inline const QString CustNm = QStringLiteral("key:CUST_NM");
inline const QString Lpo = QStringLiteral("key:LPO");
inline const QString NbrTypCd = QStringLiteral("key:NBR_TYP_CD");
inline const QString OfficerId = QStringLiteral("key:OFFICER_ID");
inline const QString OvrgRcpt = QStringLiteral("key:OVRG_RCPT");
inline const QString RcptNbr = QStringLiteral("key:RCPT_NBR");
inline const QString ReceiptDetl = QStringLiteral("key:RECEIPT_DETL");
inline const QString ReceiptNbr = QStringLiteral("key:RECEIPT_NBR");
inline const QString RefNbr = QStringLiteral("key:REF_NBR");
inline const QString RefTypCd = QStringLiteral("key:REF_TYP_CD");
inline const QString RefundNbr = QStringLiteral("key:REFUND_NBR");
inline const QString RequestId = QStringLiteral("key:REQUEST_ID");
inline const QString Region = QStringLiteral("key:REGION");
inline const QString Thin = QStringLiteral("key:THIN");

inline const QString Yes = QStringLiteral("YES");       // key:RECEIPT_DETL, key:THIN
inline const QString No = QStringLiteral("NO");         // key:LPO
inline const QString YesLetter = QStringLiteral("Y");   // key:ALL
}  // namespace params

// Sections of a reply, by the name they travel under. Two come back in a second shape, which sections.h
// names as a layout of its own (sections::kReceiptPayments, sections::kRefundInformation).
namespace sectionnames {
inline const QString AccountActivity = QStringLiteral("ACCOUNTACTIVITY");
inline const QString AccountReceivables = QStringLiteral("ACNTSRCVBL");
inline const QString Assessment = QStringLiteral("ASSESSMENT");
inline const QString CodeTable = QStringLiteral("QVR_CODE");
inline const QString Customer = QStringLiteral("CUSTOMER");
inline const QString CustomerForm = QStringLiteral("CUSTOMERFORM");
inline const QString Fund = QStringLiteral("FUND");
inline const QString GetFormNumber = QStringLiteral("GetFormNumber");
inline const QString Officer = QStringLiteral("OFFICER");
inline const QString Overpayment = QStringLiteral("OVERPAYMENT");
inline const QString Receipt = QStringLiteral("RECEIPT");
inline const QString Refund = QStringLiteral("REFUND");
inline const QString Rights = QStringLiteral("RIGHTS");
inline const QString SaveOutcome = QStringLiteral("SAVEOUTCOME");
}  // namespace sectionnames

// What the save outcome inquiry answers in OUTCOME.
namespace saveoutcomes {
inline const QString Applied = QStringLiteral("APPLIED");
inline const QString NotApplied = QStringLiteral("NOT APPLIED");
}  // namespace saveoutcomes

// The longest comment the host keeps, in characters: an adjustment's (ADJSTMT_CMMT_TXT) and an activity row's
// (ACTVTY_CMMT_TXT). The screens' comment boxes take no more; the host refuses a longer field of a save, and
// shortens the activity text it writes itself (what a save changed, then the comment) to fit.
namespace limits {
inline constexpr int CommentLength = 2000;
}  // namespace limits

// Record sets a save sends. Several share their name with a reply section but not their fields.
namespace saverecords {
inline const QString AccountActivity = QStringLiteral("ACCOUNTACTIVITY");
inline const QString AccountReceivables = QStringLiteral("ACNTSRCVBL");  // payments to back out or cancel
inline const QString AdjustAR = QStringLiteral("ADJUSTAR");
inline const QString AdjustPay = QStringLiteral("ADJUSTPAY");
inline const QString Assessment = QStringLiteral("ASSESSMENT");
inline const QString CitationAdditionalInfo = QStringLiteral("CTTNADTNINFO");  // License Purchase Option
inline const QString Refund = QStringLiteral("REFUND");
inline const QString TransferPay = QStringLiteral("TRANSFERPAY");
}  // namespace saverecords

}  // namespace adjustacc::messaging
