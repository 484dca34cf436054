#pragma once
// The request handlers, one group per subject. Inquiries only read. Saves run inside the transaction the
// host opened for them, write through AuditedWriter and answer the refreshed sections; a refusal is
// returned as text and the host rolls everything back.

#include "handlercontext.h"

namespace adjustacc::host {

// Account type that finds an account by the reference number of a fund (a check number).
inline const QString kCheckNumberType = QStringLiteral("K");

// --- inquiries (accountinquiry.cpp) ------------------------------------------------------------------
Outcome accountInquiry(const Context& context);        // 47 REF_NBR + REF_TYP_CD -> ACNTSRCVBL, RECEIPT
Outcome assessmentInquiry(const Context& context);     // 47 ... + LPO=NO -> ASSESSMENT
Outcome customerFormsInquiry(const Context& context);  // 47 CUST_ID + REF_TYP_CD -> CUSTOMERFORM
Outcome customerSearch(const Context& context);        // 62 CUST_NM or CUST_ID -> CUSTOMER
Outcome codeTableInquiry(const Context& context);      // 63 CD_TBL_ID -> QVR_CODE
Outcome officerInquiry(const Context& context);        // 64 -> OFFICER, RIGHTS

// --- activity (activity.cpp) -------------------------------------------------------------------------------
Outcome activityInquiry(const Context& context);  // 41 ACCT_RCVBL_NBR + ACCT_RCVBL_TYP_CD -> ACCOUNTACTIVITY

// --- receipts (receipts.cpp) -------------------------------------------------------------------------------
Outcome receiptDetailInquiry(const Context& context);  // 47 RECEIPT_NBR + RECEIPT_DETL -> RECEIPT, FUND, ...
Outcome refundInfoInquiry(const Context& context);     // 47 CUST_ID + RCPT_NBR -> REFUND (information)
Outcome savePaymentAdjustment(const Context& context); // 47 RECEIPT_NBR + RECEIPT_DETL + ADJUSTPAY
Outcome saveTransfer(const Context& context);          // 77 OVRG_RCPT + TRANSFERPAY

// --- account receivable adjustments (aradjustment.cpp) ---------------------------------------------------
Outcome saveArAdjustment(const Context& context);  // 41 REF_NBR + REF_TYP_CD + LPO + ADJUSTAR...

// --- refund worksheets (worksheet.cpp) -----------------------------------------------------------------------
Outcome worksheetInquiry(const Context& context);  // 74 CUST_ID + REFUND_NBR -> REFUND
Outcome saveWorksheet(const Context& context);     // 75 REFUND

// --- numbers (numbers.cpp) -------------------------------------------------------------------------------------
Outcome issueNumber(const Context& context);  // 60 NBR_TYP_CD -> GetFormNumber

// --- the outcome of a save whose answer never came (saveoutcome.cpp) --------------------------------------------
Outcome saveOutcomeInquiry(const Context& context);  // 66 REQUEST_ID -> SAVEOUTCOME

// --- shared pieces -----------------------------------------------------------------------------------------------
// The receipt detail sections (RECEIPT, FUND, ACNTSRCVBL payments, OVERPAYMENT) of one receipt; empty
// sections when there is no such receipt.
messaging::Result<Sections> receiptDetailSections(const Sql& sql, const QString& receiptNumber);
// The ASSESSMENT section of one account receivable.
messaging::Result<messaging::RecordSet> assessmentSection(const Sql& sql, qint64 receivableId);
// The ACNTSRCVBL section (account list layout) holding one account receivable.
messaging::Result<messaging::RecordSet> receivableSection(const Sql& sql, qint64 receivableId);
// The ACCOUNTACTIVITY section of one account receivable, newest first.
messaging::Result<messaging::RecordSet> activitySection(const Sql& sql, qint64 receivableId);

// The statements behind the ASSESSMENT section (one bound value: the receivable's id) and the REFUND
// worksheet section (one bound value: the refund number), for the benchmarks that run them raw as their anchor.
const QString& assessmentStatement();
const QString& worksheetStatement();

}  // namespace adjustacc::host
