#include "sections.h"

#include "protocolwords.h"
#include "wirecodec.h"

#include <QHash>

#include <algorithm>

namespace adjustacc::messaging {

namespace {

using namespace Qt::StringLiterals;

constexpr FieldType T = FieldType::Text;
constexpr FieldType N = FieldType::Number;
constexpr FieldType D = FieldType::Date;
constexpr FieldType S = FieldType::DateTime;

// The dictionary: every field name once, with the type it has wherever it appears. Amounts, weights and
// counting numbers are numbers; identifiers ("..._NBR", "..._ID", "..._CD") stay text because they may
// carry leading zeros or letters and are matched as typed; dates are dates; times ("HH:MM") are text,
// which orders them correctly as long as they are written with two-digit hours.
QList<FieldInfo> makeDictionary() {
  QList<FieldInfo> fields = {
      {u"AC_ASMT_AMT"_s, N, u"assessment amount when a License Purchase Option applies"_s},
      {u"ACCT_ACTVTY_CD"_s, T, u"activity code (code table COLLECTN)"_s},
      {u"ACCT_CK_DGT_NBR"_s, T, u"check digit of the account receivable number, on an activity row"_s},
      {u"ACCT_RCVBL_BAL_AMT"_s, N, u"amount still due on the account receivable"_s},
      {u"ACCT_RCVBL_CK_NBR"_s, T, u"check digit of the account receivable number"_s},
      {u"ACCT_RCVBL_DUE_AMT"_s, N, u"assessment amount of the account receivable"_s},
      {u"ACCT_RCVBL_DUE_DT"_s, D, u"due date of the account receivable"_s},
      {u"ACCT_RCVBL_NBR"_s, T, u"account receivable (form) number"_s},
      {u"ACCT_RCVBL_TYP_CD"_s, T, u"account receivable type (code table REFDOCTYP)"_s},
      {u"ACCT_STTS_CD"_s, T, u"account receivable status (code table CSTATUS; V = void)"_s},
      {u"ACRD_INTRST_AMT"_s, N, u"accrued interest"_s},
      {u"ACTION"_s, T, u"what to do with the row: ADD, UPD; on payment rows BACKOUT or CANCEL; null when untouched"_s},
      {u"ACTV_STTS_CD"_s, T, u"activity status of the account receivable (I = inactive)"_s},
      {u"ACTVTY_AMT"_s, N, u"amount of an activity"_s},
      {u"ACTVTY_BAL_AMT"_s, N, u"balance after an activity"_s},
      {u"ACTVTY_CMMT_TXT"_s, T, u"activity comment"_s},
      {u"ACTVTY_DT"_s, D, u"activity date"_s},
      {u"ACTVTY_SEQ_NBR"_s, N, u"the host's number of an activity row; names the row a change applies to"_s},
      {u"ACTVTY_STTS_CD"_s, T, u"adjustment of a payment (code table PAYADJUST: B backed out, C canceled; null in force)"_s},
      {u"ACTVTY_STTS_DES"_s, T, u"description of ACTVTY_STTS_CD, filled by the screen"_s},
      {u"ACTVTY_TM"_s, T, u"activity time, HH:MM"_s},
      {u"ADDR_1"_s, T, u"address line 1"_s},
      {u"ADDR_2"_s, T, u"address line 2"_s},
      {u"ADJST_ACTION"_s, T, u"payment adjustment to apply: B back out, C cancel"_s},
      {u"ADJST_CMMT_TXT"_s, T, u"comment of an account receivable adjustment"_s},
      {u"ADJSTMT_CMMT_TXT"_s, T, u"comment of a receipt adjustment"_s},
      {u"ADJSTMT_DT"_s, D, u"date of the adjustment"_s},
      {u"ADJSTMT_TYP_CD"_s, T, u"adjustment type: V void, D delete (account receivable); B back out, C cancel (receipt)"_s},
      {u"ADR_2_ADR"_s, T, u"address line 2, as the refund information carries it"_s},
      {u"ADTL_INFO_TXT"_s, T, u"additional information; SYSTEM marks a row the system made"_s},
      {u"ALERT_IND"_s, T, u"Y when the customer has alerts"_s},
      {u"APPROVE_ID"_s, T, u"officer who approved the refund worksheet"_s},
      {u"APPROVE_NM"_s, T, u"name of the officer who approved the refund worksheet"_s},
      {u"APPROVE_TS"_s, S, u"when the refund worksheet was approved (host clock, UTC)"_s},
      {u"ASSMT_CD"_s, T, u"assessment code: a fee (code table FEE) or, starting with P, a penalty (PENALTY)"_s},
      {u"ASSMT_DUE_AMT"_s, N, u"assessment amount of a customer's form"_s},
      {u"ASSMT_ISSUE_DT"_s, D, u"date the assessment was issued"_s},
      {u"ASSMT_TYP_CD"_s, T, u"kind of assessment: F fee, P penalty"_s},
      {u"ASSMT_PP_TYP_CD"_s, T, u"payment plan type of the paid assessment"_s},
      {u"BAL_DUE"_s, N, u"amount due on a customer's form"_s},
      {u"BAL_DUE_AMT"_s, N, u"amount still due on the assessment"_s},
      {u"RMVD_BAL_AMT"_s, N, u"what a removed assessment still owed when its open removal was made"_s},
      {u"CD_TBL_CD"_s, T, u"a code of a code table"_s},
      {u"CD_TBL_DES"_s, T, u"description of a code"_s},
      {u"CD_TBL_ID"_s, T, u"name of a code table (FORMDOC, CSTATUS, PENALTY...)"_s},
      {u"CASE_ID"_s, T, u"case the account receivable is bound to; empty when none"_s},
      {u"CITY"_s, T, u"city"_s},
      {u"CL_ASMT_AMT"_s, N, u"assessment amount"_s},
      {u"CL_PYMT_AMT"_s, N, u"amount of the payment applied to the account receivable"_s},
      {u"CNFRMTN_NBR"_s, T, u"confirmation number of the receipt; empty while not confirmed"_s},
      {u"CREATED_DT"_s, D, u"date the refund worksheet was prepared"_s},
      {u"CREATED_TS"_s, S, u"when the refund worksheet was prepared (host clock, UTC)"_s},
      {u"CREATOR_ID"_s, T, u"officer who prepared the refund worksheet"_s},
      {u"CREATOR_NM"_s, T, u"name of the officer who prepared the refund worksheet"_s},
      {u"CTTN_STTS_CD"_s, T, u"status of a customer's form (code table CSTATUS)"_s},
      {u"CTTN_STTS_TXT"_s, T, u"description of CTTN_STTS_CD, filled by the screen"_s},
      {u"CUST_ID"_s, T, u"customer id"_s},
      {u"CUST_NAME"_s, T, u"customer name"_s},
      {u"CUST_NM"_s, T, u"customer name"_s},
      {u"EFCTV_DT"_s, D, u"first day a code is in effect"_s},
      {u"END_DT"_s, D, u"last day a code is in effect; null when it has no end"_s},
      {u"DMV_CMMT_TXT"_s, T, u"headquarters comment of the refund worksheet"_s},
      {u"DSTNTN_RCPT_NBR"_s, T, u"receipt an excess fund was moved to; 0 when none"_s},
      {u"DT_MLD"_s, D, u"date the refund warrant was mailed"_s},
      {u"EXPRTN_DY_DT"_s, T, u"expiration day of a fund (day number as text)"_s},
      {u"EXPRTN_MO_DT"_s, T, u"expiration month of a fund (month number as text)"_s},
      {u"EXPRTN_YR_DT"_s, T, u"expiration year of a fund (year as text)"_s},
      {u"FISCAL_CMMT_TXT"_s, T, u"fiscal comment of the refund worksheet"_s},
      {u"FORM_CK_DGT_NBR"_s, T, u"check digit of a customer's form number"_s},
      {u"FORM_DESC"_s, T, u"description of the account receivable type, filled by the screen"_s},
      {u"FORM_NBR"_s, T, u"customer's form number"_s},
      {u"FORM_NUMBER"_s, T, u"form number with its check digit (0000123-4), filled by the screen"_s},
      {u"FORM_TYP_CD"_s, T, u"type of a customer's form"_s},
      {u"FRCPT_NBR"_s, T, u"receipt number of a fund"_s},
      {u"FUND_AMT"_s, N, u"amount of a fund"_s},
      {u"FUND_DESC"_s, T, u"description of the fund type or of the excess fund status, filled by the screen"_s},
      {u"FUND_EXPR"_s, T, u"expiration date of a fund as shown (mm/dd/yyyy or N/A), filled by the screen"_s},
      {u"FUND_RFRNC_NBR"_s, T, u"reference number of a fund (check or card reference)"_s},
      {u"FUND_TYP_CD"_s, T, u"fund type (code table FUNDTYP; R has an expiration date)"_s},
      {u"INSTLMT_NBR"_s, N, u"installment number of a payment plan payment"_s},
      {u"LIC_PRCHS_OPTN_IND"_s, T, u"Y when the assessment is a License Purchase Option fee"_s},
      {u"LST_PYMT_DT"_s, D, u"date of the last payment on a customer's form"_s},
      {u"LST_UPDT_TS"_s, S, u"time stamp of the last change of the row"_s},
      {u"LST_UPDT_USER_ID"_s, T, u"officer who last changed the row"_s},
      {u"LST_UPDT_USER_NM"_s, T, u"name of the officer who last changed the row; empty for a system entry"_s},
      {u"LTE_FEE_AMT"_s, N, u"late fee"_s},
      {u"MAILED_BY_ID"_s, T, u"officer who recorded the mailing of the refund warrant (kept by the host)"_s},
      {u"MAILED_BY_NM"_s, T, u"name of the officer who recorded the mailing of the refund warrant"_s},
      {u"MAILED_TS"_s, S, u"when the mailing of the refund warrant was recorded (host clock, UTC)"_s},
      {u"OFFICER_ID"_s, T, u"officer id"_s},
      {u"OFFICER_NM"_s, T, u"officer name"_s},
      {u"OVR_PYMT_AMT"_s, N, u"excess (overpaid) amount"_s},
      {u"OVR_PYMT_DT"_s, D, u"date of the excess fund"_s},
      {u"OVR_PYMT_STTS_CD"_s, T, u"status of the excess fund (code table REFUNDTYP; O open)"_s},
      {u"OVR_PYMT_TM"_s, T, u"time of the excess fund, HH:MM"_s},
      {u"ORIG_ASSMT_AMT"_s, N, u"original assessment amount"_s},
      {u"PO_TRP_DSTRCT_ID"_s, T, u"district of the License Purchase Option"_s},
      {u"PO_TRP_ID"_s, T, u"troop of the License Purchase Option"_s},
      {u"PRCHS_OPTN_DT"_s, D, u"date the License Purchase Option was bought"_s},
      {u"PRCHS_OPTN_ST_CD"_s, T, u"0 bought in state, 1 out of state"_s},
      {u"PRCHS_OPTN_TAG_NBR"_s, T, u"plate number of the License Purchase Option"_s},
      {u"PRCHS_OPTN_TM"_s, T, u"time the License Purchase Option was bought, HH:MM"_s},
      {u"PRCHS_OPTN_TXT"_s, T, u"comments on the License Purchase Option"_s},
      {u"PRCHS_OPTN_WGT"_s, N, u"weight of the License Purchase Option"_s},
      {u"PYMT_DT"_s, D, u"date of the payment"_s},
      {u"PYMT_NBR"_s, T, u"payment number"_s},
      {u"RCPT_DT"_s, D, u"date of the receipt (payment date)"_s},
      {u"RCPT_NBR"_s, T, u"receipt number"_s},
      {u"RCPT_STTS_CD"_s, T, u"receipt status (code table REFUNDTYP; O open)"_s},
      {u"REGION"_s, T, u"region code of an officer or a code row"_s},
      {u"RFND_AMT"_s, N, u"refund amount"_s},
      {u"RFND_BY_ID"_s, T, u"officer who refunded or transferred the excess fund"_s},
      {u"RFND_BY_NM"_s, T, u"name of the officer who refunded or transferred the excess fund"_s},
      {u"RFND_BY_TS"_s, S, u"when the excess fund was refunded or transferred (host clock, UTC)"_s},
      {u"RFND_CD"_s, T, u"0 transferred, 1 refunded"_s},
      {u"RFND_DT"_s, D, u"date of the refund"_s},
      {u"RFND_NBR"_s, T, u"refund number, seven digits"_s},
      {u"RFND_STTS_CD"_s, T, u"the step of the refund worksheet an excess fund is on (STTS_CD of the worksheet)"_s},
      {u"RIGHT_NM"_s, T, u"name of a right an officer holds"_s},
      {u"ROW_VRSN_NBR"_s, N, u"version of the row, raised by the host on every change; a save hands back the version it read"_s},
      {u"STATE"_s, T, u"state"_s},
      {u"STP_DT"_s, D, u"stop date"_s},
      {u"STTS_CD"_s, T, u"status code (refund worksheet step: 0-5, T, V; on payments the payment status)"_s},
      {u"STTS_IND"_s, T, u"status indicator of an assessment as the host keeps it"_s},
      {u"STTS_DESC"_s, T, u"description of the status code, filled by the screen"_s},
      {u"TO"_s, T, u"who receives the refund: 1 taxpayer, 2 division, 3 other"_s},
      {u"TOT_PRCHS_OPTN_AMT"_s, N, u"amount paid for the License Purchase Option"_s},
      {u"TOT_PYMT_AMT"_s, N, u"total amount of the receipt"_s},
      {u"TRNSCTN_DT"_s, D, u"date of the transaction"_s},
      {u"TRNSCTN_NBR"_s, T, u"transaction number"_s},
      {u"TRNSFR_AMT"_s, N, u"amount of an excess fund transferred to an account receivable"_s},
      {u"U"_s, T, u"a number the host generated (refund number)"_s},
      {u"REQUEST_ID"_s, T, u"the request id of a save"_s},
      {u"OUTCOME"_s, T, u"what became of a save: APPLIED or NOT APPLIED"_s},
      {u"VERIFY_ID"_s, T, u"officer who verified the refund worksheet"_s},
      {u"VERIFY_NM"_s, T, u"name of the officer who verified the refund worksheet"_s},
      {u"VERIFY_TS"_s, S, u"when the refund worksheet was verified (host clock, UTC)"_s},
      {u"VLTN_ASSMT_SEQ_NBR"_s, N, u"sequence number of the assessment on its form"_s},
      {u"VLTN_ASSMT_STTS_CD"_s, T, u"assessment status: A active, I removed"_s},
      {u"VOID_ID"_s, T, u"officer who voided the refund worksheet"_s},
      {u"VOID_NM"_s, T, u"name of the officer who voided the refund worksheet"_s},
      {u"VOID_TS"_s, S, u"when the refund worksheet was voided (host clock, UTC)"_s},
      {u"WRNT_NBR"_s, T, u"warrant number of the refund"_s},
      {u"ZIP"_s, T, u"ZIP code"_s},
  };
  std::sort(fields.begin(), fields.end(), [](const FieldInfo& a, const FieldInfo& b) { return a.name < b.name; });
  return fields;
}

const QList<FieldInfo>& dictionary() {
  static const QList<FieldInfo> fields = makeDictionary();
  return fields;
}

const QHash<QString, qsizetype>& dictionaryIndex() {
  static const QHash<QString, qsizetype> index = [] {
    QHash<QString, qsizetype> byName;
    const auto& fields = dictionary();
    for (qsizetype i = 0; i < fields.size(); ++i)
      byName.insert(fields[i].name.toUpper(), i);
    return byName;
  }();
  return index;
}

struct LayoutEntry {
  QString name;
  LayoutKind kind;
  QString purpose;
  QStringList fields;
};

SectionLayout makeLayout(const LayoutEntry& entry) {
  SectionLayout layout;
  layout.name = entry.name;
  layout.section = entry.name.section(u':', 0, 0);
  layout.kind = entry.kind;
  layout.purpose = entry.purpose;
  layout.fields.reserve(entry.fields.size());
  for (const QString& name : entry.fields) {
    const FieldInfo* info = sections::fieldInfo(name);
    // Every layout field is in the dictionary (a test walks them); Text is only a safe fallback.
    layout.fields.append(Field{name, info ? info->type : FieldType::Text});
  }
  return layout;
}

constexpr LayoutKind R = LayoutKind::ReplySection;
constexpr LayoutKind W = LayoutKind::SaveRecord;

QList<SectionLayout> makeLayouts() {
  const QList<LayoutEntry> entries = {
      // ---- reply sections ----------------------------------------------------------------------------
      {sectionnames::AccountActivity, R, u"activity log of one account receivable, newest first after sorting"_s,
       {u"ACTVTY_SEQ_NBR"_s, u"ACTVTY_DT"_s, u"ACTVTY_TM"_s, u"ACCT_ACTVTY_CD"_s, u"ACTVTY_AMT"_s,
        u"ACTVTY_BAL_AMT"_s, u"LST_UPDT_USER_ID"_s, u"ACTVTY_CMMT_TXT"_s, u"ACTION"_s, u"ADTL_INFO_TXT"_s,
        u"ACCT_RCVBL_NBR"_s, u"ACCT_CK_DGT_NBR"_s, u"ACCT_RCVBL_TYP_CD"_s, u"LST_UPDT_TS"_s, u"ROW_VRSN_NBR"_s,
        u"LST_UPDT_USER_NM"_s}},
      {sectionnames::AccountReceivables, R, u"account receivables of an account, for the Account Receivables list"_s,
       {u"CUST_NAME"_s, u"FORM_DESC"_s, u"ACCT_RCVBL_NBR"_s, u"ACCT_RCVBL_CK_NBR"_s, u"STP_DT"_s,
        u"ORIG_ASSMT_AMT"_s, u"LTE_FEE_AMT"_s, u"ACRD_INTRST_AMT"_s, u"STTS_DESC"_s, u"ACCT_RCVBL_DUE_AMT"_s,
        u"ACCT_RCVBL_BAL_AMT"_s, u"ACCT_STTS_CD"_s, u"ACCT_RCVBL_TYP_CD"_s, u"ACTV_STTS_CD"_s, u"CASE_ID"_s,
        u"CUST_ID"_s, u"ROW_VRSN_NBR"_s}},
      {QString(sections::kReceiptPayments), R,
       u"payments of one receipt against account receivables (sent as section ACNTSRCVBL with the receipt detail)"_s,
       {u"CUST_ID"_s, u"CUST_NAME"_s, u"FORM_DESC"_s, u"ACCT_RCVBL_NBR"_s, u"ACCT_RCVBL_DUE_DT"_s,
        u"CL_PYMT_AMT"_s, u"ADJSTMT_DT"_s, u"ACTVTY_STTS_DES"_s, u"ACTVTY_STTS_CD"_s, u"ACTION"_s,
        u"TRNSCTN_NBR"_s, u"TRNSCTN_DT"_s, u"PYMT_DT"_s, u"PYMT_NBR"_s, u"STTS_CD"_s, u"ACCT_RCVBL_CK_NBR"_s,
        u"ACCT_RCVBL_TYP_CD"_s, u"RCPT_NBR"_s, u"ACCT_STTS_CD"_s, u"ACTV_STTS_CD"_s, u"ASSMT_PP_TYP_CD"_s,
        u"INSTLMT_NBR"_s, u"ROW_VRSN_NBR"_s}},
      {sectionnames::Assessment, R, u"assessments (fees and penalties) of one account receivable"_s,
       {u"VLTN_ASSMT_STTS_CD"_s, u"VLTN_ASSMT_SEQ_NBR"_s, u"TRNSCTN_NBR"_s, u"CUST_ID"_s, u"CUST_NM"_s,
        u"ASSMT_ISSUE_DT"_s, u"ADJSTMT_DT"_s, u"ASSMT_CD"_s, u"LIC_PRCHS_OPTN_IND"_s, u"AC_ASMT_AMT"_s,
        u"CL_ASMT_AMT"_s, u"BAL_DUE_AMT"_s, u"STTS_IND"_s, u"ASSMT_TYP_CD"_s, u"ROW_VRSN_NBR"_s, u"RMVD_BAL_AMT"_s}},
      {sectionnames::Customer, R, u"customers found by the customer selector"_s,
       {u"CUST_ID"_s, u"CUST_NM"_s, u"ADDR_1"_s, u"ADDR_2"_s, u"CITY"_s, u"STATE"_s, u"ZIP"_s, u"ALERT_IND"_s}},
      {sectionnames::CustomerForm, R, u"forms (accounts) of one customer and type, for the Select Account list"_s,
       {u"FORM_CK_DGT_NBR"_s, u"FORM_NBR"_s, u"FORM_NUMBER"_s, u"STP_DT"_s, u"CTTN_STTS_TXT"_s,
        u"ASSMT_DUE_AMT"_s, u"ORIG_ASSMT_AMT"_s, u"FORM_TYP_CD"_s, u"CTTN_STTS_CD"_s, u"BAL_DUE"_s,
        u"LST_PYMT_DT"_s}},
      {sectionnames::GetFormNumber, R, u"a number the host generated (the next refund number), one row"_s, {u"U"_s}},
      {sectionnames::SaveOutcome, R, u"what became of a save whose answer never came, one row"_s,
       {u"REQUEST_ID"_s, u"OUTCOME"_s}},
      {sectionnames::Fund, R, u"funds that made up one receipt"_s,
       {u"FUND_DESC"_s, u"FUND_RFRNC_NBR"_s, u"FUND_AMT"_s, u"FUND_TYP_CD"_s, u"FRCPT_NBR"_s, u"FUND_EXPR"_s,
        u"EXPRTN_MO_DT"_s, u"EXPRTN_DY_DT"_s, u"EXPRTN_YR_DT"_s}},
      {sectionnames::Overpayment, R, u"excess funds of one receipt"_s,
       {u"CUST_NM"_s, u"OVR_PYMT_DT"_s, u"OVR_PYMT_TM"_s, u"FUND_DESC"_s, u"DSTNTN_RCPT_NBR"_s,
        u"OVR_PYMT_AMT"_s, u"CUST_ID"_s, u"ADDR_1"_s, u"ADDR_2"_s, u"CITY"_s, u"STATE"_s, u"ZIP"_s,
        u"OVR_PYMT_STTS_CD"_s, u"ROW_VRSN_NBR"_s, u"RFND_NBR"_s, u"RFND_STTS_CD"_s}},
      {sectionnames::Officer, R, u"an officer: the signed-on one, or the one asked for by id"_s,
       {u"OFFICER_ID"_s, u"OFFICER_NM"_s, u"REGION"_s}},
      {sectionnames::CodeTable, R, u"rows of one code table for one region: those in effect on a day, or all of them"_s,
       {u"CD_TBL_ID"_s, u"CD_TBL_CD"_s, u"CD_TBL_DES"_s, u"EFCTV_DT"_s, u"END_DT"_s, u"REGION"_s}},
      {sectionnames::Receipt, R, u"receipts of an account, for the Receipts list; one receipt with the receipt detail"_s,
       {u"RCPT_DT"_s, u"RCPT_NBR"_s, u"RCPT_STTS_CD"_s, u"STTS_DESC"_s, u"TOT_PYMT_AMT"_s, u"OVR_PYMT_AMT"_s,
        u"CUST_ID"_s, u"CNFRMTN_NBR"_s, u"ROW_VRSN_NBR"_s}},
      {sectionnames::Refund, R, u"one refund worksheet with its customer's name and address"_s,
       {u"RCPT_NBR"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"RFND_AMT"_s, u"TO"_s, u"DT_MLD"_s, u"CREATED_DT"_s,
        u"CREATOR_ID"_s, u"VERIFY_ID"_s, u"APPROVE_ID"_s, u"RFND_BY_ID"_s, u"VOID_ID"_s, u"DMV_CMMT_TXT"_s,
        u"FISCAL_CMMT_TXT"_s, u"RFND_CD"_s, u"WRNT_NBR"_s, u"RFND_DT"_s, u"STTS_CD"_s, u"ACTION"_s, u"CUST_NM"_s,
        u"ADDR_1"_s, u"ADDR_2"_s, u"CITY"_s, u"STATE"_s, u"ZIP"_s, u"ROW_VRSN_NBR"_s,
        // who took each step, by name, and when
        u"CREATOR_NM"_s, u"CREATED_TS"_s, u"VERIFY_NM"_s, u"VERIFY_TS"_s, u"APPROVE_NM"_s, u"APPROVE_TS"_s,
        u"RFND_BY_NM"_s, u"RFND_BY_TS"_s, u"MAILED_BY_ID"_s, u"MAILED_BY_NM"_s, u"MAILED_TS"_s, u"VOID_NM"_s,
        u"VOID_TS"_s}},
      {QString(sections::kRefundInformation), R,
       u"refund information for a customer and receipt before a refund is created (sent as section REFUND)"_s,
       {u"CUST_ID"_s, u"RFND_NBR"_s, u"STTS_CD"_s, u"CUST_NM"_s, u"ADDR_1"_s, u"ADR_2_ADR"_s, u"CITY"_s,
        u"STATE"_s, u"ZIP"_s}},
      {sectionnames::Rights, R, u"the rights the signed-on officer holds, one row each"_s, {u"RIGHT_NM"_s}},

      // ---- save records ------------------------------------------------------------------------------
      {saverecords::AccountActivity, W, u"activity rows added (ADD) or changed (UPD) on the Account Activity screen"_s,
       {u"ACTION"_s, u"ACTVTY_SEQ_NBR"_s, u"ACCT_RCVBL_NBR"_s, u"ACCT_CK_DGT_NBR"_s, u"ACCT_RCVBL_TYP_CD"_s,
        u"ACTVTY_DT"_s, u"ACTVTY_TM"_s, u"ACCT_ACTVTY_CD"_s, u"ACTVTY_CMMT_TXT"_s, u"LST_UPDT_USER_ID"_s,
        u"LST_UPDT_TS"_s, u"ROW_VRSN_NBR"_s}},
      {saverecords::AccountReceivables, W, u"payments of a receipt to back out or cancel, one record per payment"_s,
       {u"ACTION"_s, u"CUST_ID"_s, u"ACCT_RCVBL_TYP_CD"_s, u"ACCT_RCVBL_NBR"_s, u"ACCT_RCVBL_CK_NBR"_s,
        u"ADJST_ACTION"_s, u"CL_PYMT_AMT"_s, u"ADJSTMT_DT"_s, u"TRNSCTN_DT"_s, u"TRNSCTN_NBR"_s, u"ROW_VRSN_NBR"_s}},
      {saverecords::AdjustAR, W, u"the adjustment of one account receivable: void, delete or fee/penalty adjustment"_s,
       {u"ACTION"_s, u"CUST_ID"_s, u"ADJSTMT_DT"_s, u"ADJST_CMMT_TXT"_s, u"ADJSTMT_TYP_CD"_s, u"ACCT_RCVBL_NBR"_s,
        u"ACCT_RCVBL_CK_NBR"_s, u"ACCT_RCVBL_TYP_CD"_s, u"ROW_VRSN_NBR"_s}},
      {saverecords::AdjustPay, W, u"the adjustment of one receipt, with its date and comment"_s,
       {u"ACTION"_s, u"ADJSTMT_DT"_s, u"ADJSTMT_CMMT_TXT"_s, u"ADJSTMT_TYP_CD"_s, u"RCPT_NBR"_s, u"ROW_VRSN_NBR"_s}},
      {saverecords::Assessment, W, u"assessments removed (status I) or reinstated (status A), one record per assessment"_s,
       {u"ACTION"_s, u"CUST_ID"_s, u"TRNSCTN_NBR"_s, u"ASSMT_CD"_s, u"VLTN_ASSMT_SEQ_NBR"_s, u"ADJSTMT_DT"_s,
        u"LIC_PRCHS_OPTN_IND"_s, u"CL_ASMT_AMT"_s, u"AC_ASMT_AMT"_s, u"BAL_DUE_AMT"_s, u"VLTN_ASSMT_STTS_CD"_s,
        u"ROW_VRSN_NBR"_s}},
      {saverecords::CitationAdditionalInfo, W, u"License Purchase Option particulars of the adjusted form"_s,
       {u"ACTION"_s, u"PRCHS_OPTN_ST_CD"_s, u"PRCHS_OPTN_TAG_NBR"_s, u"PRCHS_OPTN_DT"_s, u"PRCHS_OPTN_TM"_s,
        u"PO_TRP_ID"_s, u"PO_TRP_DSTRCT_ID"_s, u"PRCHS_OPTN_WGT"_s, u"TOT_PRCHS_OPTN_AMT"_s,
        u"PRCHS_OPTN_TXT"_s}},
      {saverecords::Refund, W, u"one step of a refund worksheet (prepare, verify, approve, refund or transfer, mail) or its void"_s,
       {u"ACTION"_s, u"CUST_ID"_s, u"RFND_NBR"_s, u"TO"_s, u"DT_MLD"_s, u"CREATED_DT"_s, u"CREATOR_ID"_s,
        u"VERIFY_ID"_s, u"APPROVE_ID"_s, u"RFND_BY_ID"_s, u"VOID_ID"_s, u"DMV_CMMT_TXT"_s, u"FISCAL_CMMT_TXT"_s,
        u"RFND_CD"_s, u"WRNT_NBR"_s, u"RFND_DT"_s, u"RFND_AMT"_s, u"RCPT_NBR"_s, u"STTS_CD"_s, u"ROW_VRSN_NBR"_s}},
      {saverecords::TransferPay, W,
       u"transfers of an excess fund to account receivables, one record per receiving account receivable"_s,
       {u"ACTION"_s, u"RCPT_NBR"_s, u"CUST_ID"_s, u"ACCT_RCVBL_TYP_CD"_s, u"ACCT_RCVBL_NBR"_s,
        u"ACCT_RCVBL_CK_NBR"_s, u"TRNSFR_AMT"_s}},
  };
  QList<SectionLayout> layouts;
  layouts.reserve(entries.size());
  for (const auto& entry : entries)
    layouts.append(makeLayout(entry));
  return layouts;
}

QString valueProblem(FieldType type, const QString& text) {
  if (text.isEmpty())
    return {};
  switch (type) {
    case FieldType::Text:
      return {};
    case FieldType::Number:
      return wire::isNumber(text) ? QString() : u"a number such as 1234.50 is expected"_s;
    case FieldType::Date:
      return wire::readDay(text).has_value() ? QString() : u"a date written yyyy-mm-dd is expected"_s;
    case FieldType::DateTime:
      return wire::isTimestamp(text) ? QString() : u"a time stamp written yyyy-mm-dd HH:MM:SS is expected"_s;
  }
  return {};
}

}  // namespace

int SectionLayout::fieldIndex(const QString& fieldName) const {
  for (qsizetype i = 0; i < fields.size(); ++i) {
    if (fields[i].name.compare(fieldName, Qt::CaseInsensitive) == 0)
      return int(i);
  }
  return -1;
}

namespace sections {

const QList<SectionLayout>& allLayouts() {
  static const QList<SectionLayout> layouts = makeLayouts();
  return layouts;
}

const SectionLayout* layout(const QString& name, LayoutKind kind) {
  for (const auto& candidate : allLayouts()) {
    if (candidate.kind == kind && candidate.name == name)
      return &candidate;
  }
  return nullptr;
}

const QList<FieldInfo>& allFields() { return dictionary(); }

const FieldInfo* fieldInfo(const QString& fieldName) {
  const auto& index = dictionaryIndex();
  const auto it = index.constFind(fieldName.toUpper());
  return it == index.constEnd() ? nullptr : &dictionary()[*it];
}

std::optional<FieldType> fieldType(const QString& fieldName) {
  const FieldInfo* info = fieldInfo(fieldName);
  if (!info)
    return std::nullopt;
  return info->type;
}

QString checkSaveRecords(const QList<RecordList>& lists) {
  for (const RecordList& list : lists) {
    const SectionLayout* saveLayout = layout(list.name, LayoutKind::SaveRecord);
    if (!saveLayout)
      return u"The save carries records named \"%1\", which this system does not save."_s.arg(list.name);
    for (qsizetype r = 0; r < list.records.size(); ++r) {
      for (const auto& [name, value] : list.records[r].fields()) {
        // Exact names: the receiving side reads save fields by their exact (upper-case) name.
        const int index = saveLayout->fieldIndex(name);
        if (index < 0 || saveLayout->fields[index].name != name) {
          return u"Record %1 of \"%2\" has a field \"%3\" that a %2 record does not have."_s.arg(r + 1)
              .arg(list.name, name);
        }
        if (value.isNull())
          continue;
        const QString text = value.toString();
        const QString problem = valueProblem(saveLayout->fields[index].type, text);
        if (!problem.isEmpty()) {
          return u"Record %1 of \"%2\": the value \"%3\" of %4 is not valid: %5."_s.arg(r + 1)
              .arg(list.name, text.left(40), name, problem);
        }
      }
    }
  }
  return {};
}

}  // namespace sections
}  // namespace adjustacc::messaging
