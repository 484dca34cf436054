// Inquiries about accounts and customers: the account's receivables and receipts, the assessments of one
// receivable, a customer's forms of a type, the customer search, code tables and officers.
#include "handlers.h"
#include "requestcheck.h"

#include "messaging/formnumber.h"
#include "messaging/wirecodec.h"

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

const SectionBuilder& receivablesBuilder() {
  static const SectionBuilder builder(
      sectionnames::AccountReceivables,
      {{u"CUST_NAME"}, {u"ACCT_RCVBL_NBR"}, {u"ACCT_RCVBL_CK_NBR"}, {u"STP_DT", Cell::Day},
       {u"ORIG_ASSMT_AMT", Cell::Money}, {u"LTE_FEE_AMT", Cell::Money}, {u"ACRD_INTRST_AMT", Cell::Money},
       {u"ACCT_RCVBL_DUE_AMT", Cell::Money}, {u"ACCT_RCVBL_BAL_AMT", Cell::Money}, {u"ACCT_STTS_CD"},
       {u"ACCT_RCVBL_TYP_CD"}, {u"ACTV_STTS_CD"}, {u"CASE_ID"}, {u"CUST_ID"}, {u"ROW_VRSN_NBR"}});
  return builder;
}

const QStringList kReceivableSelect = {
    QStringLiteral("c.CUST_NM"),          QStringLiteral("a.ACCT_RCVBL_NBR"),     QStringLiteral("a.ACCT_RCVBL_CK_NBR"),
    QStringLiteral("a.STP_DT"),           QStringLiteral("a.ORIG_ASSMT_AMT"),     QStringLiteral("a.LTE_FEE_AMT"),
    QStringLiteral("a.ACRD_INTRST_AMT"),  QStringLiteral("a.ACCT_RCVBL_DUE_AMT"), QStringLiteral("a.ACCT_RCVBL_BAL_AMT"),
    QStringLiteral("a.ACCT_STTS_CD"),     QStringLiteral("a.ACCT_RCVBL_TYP_CD"),  QStringLiteral("a.ACTV_STTS_CD"),
    QStringLiteral("a.CASE_ID"),          QStringLiteral("a.CUST_ID"),            QStringLiteral("a.ROW_VRSN_NBR")};
const QString kReceivableFrom = QStringLiteral("FROM ACCT_RCVBL a JOIN CUSTOMER c ON c.CUST_ID = a.CUST_ID ");
const QString kReceivableColumns =
    QStringLiteral("SELECT ") + kReceivableSelect.join(QStringLiteral(", ")) + u' ' + kReceivableFrom;
// The account list's order: by customer, then by number (indexes into kReceivableSelect).
const QList<int> kReceivableOrder = {13, 1};

const SectionBuilder& receiptsBuilder() {
  static const SectionBuilder builder(
      sectionnames::Receipt, {{u"RCPT_DT", Cell::Day}, {u"RCPT_NBR"}, {u"RCPT_STTS_CD"},
                              {u"TOT_PYMT_AMT", Cell::Money}, {u"OVR_PYMT_AMT", Cell::Money}, {u"CUST_ID"},
                              {u"CNFRMTN_NBR"}, {u"ROW_VRSN_NBR"}});
  return builder;
}

// The receipt list shows the whole excess of each receipt (null when it had none).
const QStringList kReceiptSelect = {
    QStringLiteral("r.RCPT_DT"), QStringLiteral("r.RCPT_NBR"), QStringLiteral("r.RCPT_STTS_CD"),
    QStringLiteral("r.TOT_PYMT_AMT"),
    QStringLiteral("(SELECT SUM(o.OVR_PYMT_AMT) FROM OVR_PYMT o WHERE o.RCPT_NBR = r.RCPT_NBR)"),
    QStringLiteral("r.CUST_ID"), QStringLiteral("r.CNFRMTN_NBR"), QStringLiteral("r.ROW_VRSN_NBR")};
const QString kReceiptFrom = QStringLiteral("FROM RCPT r ");
const QList<int> kReceiptOrder = {1};  // by receipt number

// An account is every receivable filed under the reference (a form, a payment plan, an alert) or carrying
// that number itself.
const QString kAccountCondition = QStringLiteral("(a.REF_TYP_CD = ? AND a.REF_NBR = ?) OR "
                                                 "(a.ACCT_RCVBL_TYP_CD = ? AND a.ACCT_RCVBL_NBR = ?)");

QString checkCode(const QString& key, const QString& value) {
  if (value.isEmpty() || value.size() > limits::kMaxCodeChars) {
    return QStringLiteral("Parameter %1 must hold a code of 1 to %2 characters.").arg(key).arg(limits::kMaxCodeChars);
  }
  for (const QChar c : value) {
    if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != u'-' && c != u'_') {
      return QStringLiteral("Parameter %1: \"%2\" is not a code.").arg(key, value);
    }
  }
  return {};
}

// The reference of the account to open: its type and its number as stored.
struct AccountReference {
  QString type;
  QString number;
};

Result<AccountReference> readReference(const Context& context, const QString& numberKey, const QString& typeKey) {
  using R = Result<AccountReference>;
  AccountReference reference;
  reference.type = context.param(typeKey).toUpper();
  if (const QString problem = checkCode(typeKey, reference.type); !problem.isEmpty()) {
    return R::failure(problem);
  }
  const QString typed = context.param(numberKey);
  if (reference.type == kCheckNumberType) {
    // A check number is any letters and digits, as printed on the check.
    if (typed.isEmpty() || typed.size() > 30) {
      return R::failure(QStringLiteral("A check number has 1 to 30 letters and digits."));
    }
    for (const QChar c : typed) {
      if (!(c.isLetterOrNumber() && c.unicode() < 128)) {
        return R::failure(QStringLiteral("Check number \"%1\" may hold only letters and digits.").arg(typed));
      }
    }
    reference.number = typed.toUpper();
    return reference;
  }
  const std::optional<AccountNumber> number = parseAccountNumber(typed);
  if (!number) {
    return R::failure(QStringLiteral("Account Number \"%1\" is Invalid: up to seven digits are expected, "
                                     "optionally followed by \"-\" and the check digit.")
                          .arg(typed));
  }
  if (!number->checkDigit.isEmpty()) {
    const QString written = number->digits + u'-' + number->checkDigit;
    const messaging::FormNumberProblem problem = messaging::checkFormNumber(written);
    if (problem != messaging::FormNumberProblem::None) {
      return R::failure(messaging::formNumberProblemText(problem, written));
    }
  }
  reference.number = number->digits;
  return reference;
}

}  // namespace

Result<RecordSet> receivableSection(const Sql& sql, qint64 receivableId) {
  return receivablesBuilder().run(sql, kReceivableColumns + QStringLiteral("WHERE a.ACCT_RCVBL_ID = ?"),
                                  {receivableId});
}

namespace {

// The account's receivables and its receipts, read with one statement.
const SectionUnion& accountSections() {
  static const SectionUnion sections(
      {{&receivablesBuilder(), kReceivableSelect, kReceivableFrom + QStringLiteral("WHERE ") + kAccountCondition,
        kReceivableOrder},
       {&receiptsBuilder(), kReceiptSelect,
        kReceiptFrom + QStringLiteral("WHERE r.RCPT_NBR IN (SELECT p.RCPT_NBR FROM PYMT p JOIN ACCT_RCVBL a "
                                      "ON a.ACCT_RCVBL_ID = p.ACCT_RCVBL_ID WHERE ") +
            kAccountCondition + u')',
        kReceiptOrder}});
  return sections;
}

// The same for a check number: the receivables its payments paid, and the receipts it was part of.
const SectionUnion& checkSections() {
  static const SectionUnion sections(
      {{&receivablesBuilder(), kReceivableSelect,
        kReceivableFrom + QStringLiteral("WHERE a.ACCT_RCVBL_ID IN (SELECT p.ACCT_RCVBL_ID FROM PYMT p "
                                         "JOIN FUND f ON f.RCPT_NBR = p.RCPT_NBR WHERE f.FUND_RFRNC_NBR = ?)"),
        kReceivableOrder},
       {&receiptsBuilder(), kReceiptSelect,
        kReceiptFrom + QStringLiteral("WHERE r.RCPT_NBR IN (SELECT f.RCPT_NBR FROM FUND f WHERE f.FUND_RFRNC_NBR = ?)"),
        kReceiptOrder}});
  return sections;
}

}  // namespace

Outcome accountInquiry(const Context& context) {
  const QString kind = QStringLiteral("The account inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::RefNbr, params::RefTypCd});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<AccountReference> reference = readReference(context, params::RefNbr, params::RefTypCd);
  if (!reference) {
    return refuse(reference.error());
  }
  const AccountReference& ref = reference.value();
  Sections sections;
  QString error;
  const QVariantList values = ref.type == kCheckNumberType
                                  ? QVariantList{ref.number}
                                  : QVariantList{ref.type, ref.number, ref.type, ref.number};
  const SectionUnion& both = ref.type == kCheckNumberType ? checkSections() : accountSections();
  if (!both.addTo(sections, context.sql, {values, values}, error)) {
    return refuse(error);
  }
  return sections;
}

// --- assessments --------------------------------------------------------------------------------------------

namespace {

const SectionBuilder& assessmentBuilder() {
  static const SectionBuilder builder(
      sectionnames::Assessment,
      {{u"VLTN_ASSMT_STTS_CD"}, {u"VLTN_ASSMT_SEQ_NBR"}, {u"TRNSCTN_NBR"}, {u"CUST_ID"}, {u"CUST_NM"},
       {u"ASSMT_ISSUE_DT", Cell::Day}, {u"ADJSTMT_DT", Cell::Day}, {u"ASSMT_CD"}, {u"LIC_PRCHS_OPTN_IND"},
       {u"AC_ASMT_AMT", Cell::Money}, {u"CL_ASMT_AMT", Cell::Money}, {u"BAL_DUE_AMT", Cell::Money},
       {u"STTS_IND"}, {u"ASSMT_TYP_CD"}, {u"ROW_VRSN_NBR"}, {u"RMVD_BAL_AMT", Cell::Money}});
  return builder;
}

}  // namespace

const QString& assessmentStatement() {
  static const QString statement = QStringLiteral(
      "SELECT s.VLTN_ASSMT_STTS_CD, s.VLTN_ASSMT_SEQ_NBR, s.TRNSCTN_NBR, s.CUST_ID, c.CUST_NM, "
      "s.ASSMT_ISSUE_DT, s.ADJSTMT_DT, s.ASSMT_CD, s.LIC_PRCHS_OPTN_IND, s.AC_ASMT_AMT, s.CL_ASMT_AMT, "
      "s.BAL_DUE_AMT, s.STTS_IND, s.ASSMT_TYP_CD, s.ROW_VRSN_NBR, "
      // What a removed assessment still owed when its open removal was made: what reinstating it
      // owes again.
      "CASE WHEN s.VLTN_ASSMT_STTS_CD <> 'A' THEN (SELECT r.PRIOR_BAL_AMT FROM ASSMT_ADJSTMT r "
      "WHERE r.ASSMT_ID = s.ASSMT_ID AND r.CHANGE_CD = 'R' AND NOT EXISTS (SELECT 1 FROM ASSMT_ADJSTMT "
      "x WHERE x.REVERSES_ID = r.ASSMT_ADJSTMT_ID) ORDER BY r.ASSMT_ADJSTMT_ID DESC LIMIT 1) END "
      "FROM VLTN_ASSMT s JOIN CUSTOMER c ON c.CUST_ID = s.CUST_ID WHERE s.ACCT_RCVBL_ID = ? "
      "ORDER BY s.ASSMT_CD, s.ASSMT_ISSUE_DT, s.VLTN_ASSMT_SEQ_NBR");
  return statement;
}

Result<RecordSet> assessmentSection(const Sql& sql, qint64 receivableId) {
  return assessmentBuilder().run(sql, assessmentStatement(), {receivableId});
}

Outcome assessmentInquiry(const Context& context) {
  const QString kind = QStringLiteral("The assessment inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::RefNbr, params::RefTypCd, params::Lpo});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  if (const QString problem = checkFlag(context.request, kind, params::Lpo, params::No,
                                        QStringLiteral("the assessments without the account"), true);
      !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<AccountReference> reference = readReference(context, params::RefNbr, params::RefTypCd);
  if (!reference) {
    return refuse(reference.error());
  }
  Result<qint64> id = context.sql.scalar(
      QStringLiteral("SELECT ACCT_RCVBL_ID FROM ACCT_RCVBL WHERE ACCT_RCVBL_TYP_CD = ? AND ACCT_RCVBL_NBR = ?"),
      {reference->type, reference->number}, 0);
  if (!id) {
    return refuse(id.error());
  }
  Sections sections;
  if (id.value() == 0) {
    sections.insert(assessmentBuilder().sectionName(), assessmentBuilder().empty());
    return sections;
  }
  Result<RecordSet> assessments = assessmentSection(context.sql, id.value());
  if (!assessments) {
    return refuse(assessments.error());
  }
  sections.insert(assessmentBuilder().sectionName(), std::move(assessments.value()));
  return sections;
}

// --- a customer's forms ---------------------------------------------------------------------------------------

Outcome customerFormsInquiry(const Context& context) {
  static const SectionBuilder builder(
      sectionnames::CustomerForm,
      {{u"FORM_CK_DGT_NBR"}, {u"FORM_NBR"}, {u"STP_DT", Cell::Day}, {u"ASSMT_DUE_AMT", Cell::Money},
       {u"ORIG_ASSMT_AMT", Cell::Money}, {u"FORM_TYP_CD"}, {u"CTTN_STTS_CD"}, {u"BAL_DUE", Cell::Money},
       {u"LST_PYMT_DT", Cell::Day}});
  const QString kind = QStringLiteral("The customer's accounts inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::CustId, params::RefTypCd});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString customer = context.param(params::CustId).toUpper();
  const QString type = context.param(params::RefTypCd).toUpper();
  if (const QString problem = checkCode(params::CustId, customer); !problem.isEmpty()) {
    return refuse(problem);
  }
  if (const QString problem = checkCode(params::RefTypCd, type); !problem.isEmpty()) {
    return refuse(problem);
  }
  // The Select Account box offers the status codes (CSTATUS) as well as form types, so the code chosen
  // selects the forms of that type or in that status.
  Sections sections;
  QString error;
  if (!builder.addTo(sections, context.sql,
                     QStringLiteral("SELECT a.ACCT_RCVBL_CK_NBR, a.ACCT_RCVBL_NBR, a.STP_DT, a.ACCT_RCVBL_DUE_AMT, "
                                    "a.ORIG_ASSMT_AMT, a.ACCT_RCVBL_TYP_CD, a.ACCT_STTS_CD, a.ACCT_RCVBL_BAL_AMT, "
                                    "(SELECT MAX(p.PYMT_DT) FROM PYMT p WHERE p.ACCT_RCVBL_ID = a.ACCT_RCVBL_ID "
                                    "AND p.ACTVTY_STTS_CD IS NULL) "
                                    "FROM ACCT_RCVBL a WHERE a.CUST_ID = ? AND (a.ACCT_RCVBL_TYP_CD = ? OR "
                                    "a.ACCT_STTS_CD = ?) ORDER BY a.STP_DT, a.ACCT_RCVBL_NBR"),
                     {customer, type, type}, error)) {
    return refuse(error);
  }
  return sections;
}

// --- customer search --------------------------------------------------------------------------------------------

Outcome customerSearch(const Context& context) {
  static const SectionBuilder builder(sectionnames::Customer, {{u"CUST_ID"}, {u"CUST_NM"}, {u"ADDR_1"},
                                                              {u"ADDR_2"}, {u"CITY"}, {u"STATE"}, {u"ZIP"},
                                                              {u"ALERT_IND"}});
  const QString kind = QStringLiteral("The customer search");
  if (const QString problem = checkParams(context.request, kind, {}, {params::CustId, params::CustNm});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString id = context.param(params::CustId).toUpper();
  const QString name = context.param(params::CustNm).toUpper();
  if (id.isEmpty() == name.isEmpty()) {
    return refuse(QStringLiteral("The customer search takes either key:CUST_ID or key:CUST_NM (part of the name)."));
  }
  const QString columns = QStringLiteral("SELECT CUST_ID, CUST_NM, ADDR_1, ADDR_2, CITY, STATE, ZIP, ALERT_IND "
                                         "FROM CUSTOMER ");
  Sections sections;
  QString error;
  if (!id.isEmpty()) {
    if (!builder.addTo(sections, context.sql, columns + QStringLiteral("WHERE CUST_ID = ?"), {id}, error)) {
      return refuse(error);
    }
    return sections;
  }
  if (name.size() < 2) {
    return refuse(QStringLiteral("Enter at least two letters of the customer's name."));
  }
  QString pattern = name;
  pattern.replace(u'\\', QStringLiteral("\\\\")).replace(u'%', QStringLiteral("\\%")).replace(u'_', QStringLiteral("\\_"));
  if (!builder.addTo(sections, context.sql,
                     columns + QStringLiteral("WHERE UPPER(CUST_NM) LIKE ? ESCAPE '\\' ORDER BY CUST_NM, CUST_ID "
                                              "LIMIT 200"),
                     {u'%' + pattern + u'%'}, error)) {
    return refuse(error);
  }
  return sections;
}

// --- code tables -------------------------------------------------------------------------------------------------

Outcome codeTableInquiry(const Context& context) {
  static const SectionBuilder builder(sectionnames::CodeTable,
                                      {{u"CD_TBL_ID"}, {u"CD_TBL_CD"}, {u"CD_TBL_DES"}, {u"EFCTV_DT", Cell::Day},
                                       {u"END_DT", Cell::Day}, {u"REGION"}});
  static const QString kColumns =
      QStringLiteral("SELECT CD_TBL_ID, CD_TBL_CD, CD_TBL_DES, EFCTV_DT, END_DT, REGION FROM QVR_CODE "
                     "WHERE REGION = ? AND CD_TBL_ID = ? ");
  const QString kind = QStringLiteral("The code table inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::CdTblId},
                                          {params::Region, params::AsOfDt, params::All});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString table = context.param(params::CdTblId).toUpper();
  if (const QString problem = checkCode(params::CdTblId, table); !problem.isEmpty()) {
    return refuse(problem);
  }
  QString region = context.param(params::Region).toUpper();
  if (region.isEmpty()) {
    region = context.officer.region;
  } else if (const QString problem = checkCode(params::Region, region); !problem.isEmpty()) {
    return refuse(problem);
  }
  // key:ALL asks for the whole table, ended and future rows included: what a desktop keeps to describe the
  // codes old rows still carry.
  if (const QString problem = checkFlag(context.request, kind, params::All, params::YesLetter,
                                        QStringLiteral("every row of the code table, whatever its dates"));
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const bool all = !context.request.param(params::All).isNull();
  if (all) {
    if (!context.request.param(params::AsOfDt).isNull()) {
      return refuse(QStringLiteral("The code table inquiry takes key:ALL (every row, whatever its dates) or "
                                   "key:AS_OF_DT (the rows in effect on one day), not both."));
    }
  }
  Sections sections;
  QString error;
  if (all) {
    if (!builder.addTo(sections, context.sql, kColumns + QStringLiteral("ORDER BY CD_TBL_CD, EFCTV_DT"),
                       {region, table}, error)) {
      return refuse(error);
    }
    return sections;
  }
  QDate day = context.today;
  if (const QString asOf = context.param(params::AsOfDt); !asOf.isEmpty()) {
    const std::optional<QDate> parsed = messaging::wire::readDay(asOf);
    if (!parsed) {
      return refuse(QStringLiteral("Parameter key:AS_OF_DT \"%1\" is not a date written yyyy-mm-dd.").arg(asOf));
    }
    day = *parsed;
  }
  const QVariant dayValue = context.sql.date(day);
  if (!builder.addTo(sections, context.sql,
                     kColumns + QStringLiteral("AND EFCTV_DT <= ? AND (END_DT IS NULL OR END_DT >= ?) "
                                               "ORDER BY CD_TBL_CD, EFCTV_DT"),
                     {region, table, dayValue, dayValue}, error)) {
    return refuse(error);
  }
  return sections;
}

// --- officers ------------------------------------------------------------------------------------------------------

Outcome officerInquiry(const Context& context) {
  static const SectionBuilder officers(sectionnames::Officer, {{u"OFFICER_ID"}, {u"OFFICER_NM"}, {u"REGION"}});
  static const SectionBuilder rightsHeld(sectionnames::Rights, {{u"RIGHT_NM"}});
  const QString kind = QStringLiteral("The officer inquiry");
  if (const QString problem = checkParams(context.request, kind, {}, {params::OfficerId});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  QString id = context.param(params::OfficerId).toUpper();
  if (id.isEmpty()) {
    id = context.officer.id;
  } else if (const QString problem = checkCode(params::OfficerId, id); !problem.isEmpty()) {
    return refuse(problem);
  }
  Sections sections;
  QString error;
  if (!officers.addTo(sections, context.sql,
                      QStringLiteral("SELECT OFFICER_ID, OFFICER_NM, REGION FROM OFFICER WHERE OFFICER_ID = ?"), {id},
                      error)) {
    return refuse(error);
  }
  // Only officers themselves learn which rights they hold.
  if (id == context.officer.id) {
    if (!rightsHeld.addTo(sections, context.sql,
                          QStringLiteral("SELECT RIGHT_NM FROM OFFICER_RIGHT WHERE OFFICER_ID = ? ORDER BY RIGHT_NM"),
                          {id}, error)) {
      return refuse(error);
    }
  }
  return sections;
}

}  // namespace adjustacc::host
