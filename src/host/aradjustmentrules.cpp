#include "aradjustmentrules.h"

#include "audit.h"
#include "handlercontext.h"

#include <QTime>

namespace adjustacc::host {

using messaging::Result;

namespace {

const QStringList kLpoFees = {QStringLiteral("F01"), QStringLiteral("F09"), QStringLiteral("F15")};
// The forms a clerk may delete: ENF001, ENF003, ENF507 citations and temporary permits.
const QStringList kDeletableTypes = {QStringLiteral("T"), QStringLiteral("O"), QStringLiteral("M"), QStringLiteral("C")};
const QString kPaymentPlan = QStringLiteral("P");

// The receivable can be adjusted at all, and the form action fits it: the refusal, or an empty text.
QString receivableProblem(const Receivable& receivable, const QString& action) {
  if (receivable.status == u"D") {
    return QStringLiteral("%1 has been deleted and can not be adjusted.").arg(receivable.what());
  }
  if (receivable.activity == u"I") {
    return QStringLiteral("%1 is inactive and can not be adjusted.").arg(receivable.what());
  }
  if (!receivable.caseId.isEmpty()) {
    return QStringLiteral("%1 is bound to case %2 and can not be adjusted.").arg(receivable.what(), receivable.caseId);
  }
  if (receivable.type == kPaymentPlan && !action.isEmpty()) {
    return QStringLiteral("Can not void or delete a payment plan");
  }
  if (receivable.status == u"V" && action != u"D") {
    return QStringLiteral("Can not adjust a voided form");
  }
  return {};
}

}  // namespace

Result<ArAdjustmentRequest> readArAdjustmentRequest(const messaging::Request& request, const Officer& officer) {
  using R = Result<ArAdjustmentRequest>;
  const QString kind = QStringLiteral("The account receivable adjustment");
  if (const QString problem = checkParams(request, kind, {params::RefNbr, params::RefTypCd},
                                          {params::Lpo});
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  const QStringList taken = {saverecords::AdjustAR, saverecords::Assessment, saverecords::CitationAdditionalInfo,
                             saverecords::AccountActivity};
  for (const auto& list : request.records) {
    if (!taken.contains(list.name) && hasRecords(request, list.name)) {
      return R::failure(QStringLiteral("The account receivable adjustment does not take %1 records.").arg(list.name));
    }
  }
  if (!officer.has(rights::AdjustAR)) {
    return R::failure(missingRightText(officer, rights::AdjustAR, QStringLiteral("adjust account receivables")));
  }
  const QString typed = request.param(params::RefNbr).trimmed();
  const std::optional<AccountNumber> number = parseAccountNumber(typed);
  if (!number) {
    return R::failure(QStringLiteral("Account Number \"%1\" is Invalid: up to seven digits are expected.").arg(typed));
  }
  return ArAdjustmentRequest{request.param(params::RefTypCd).trimmed(), *number, typed};
}

Result<const messaging::SaveRecord*> adjustmentRecordOf(const messaging::Request& request) {
  using R = Result<const messaging::SaveRecord*>;
  if (!hasRecords(request, saverecords::AdjustAR)) {
    if (hasRecords(request, saverecords::Assessment) || hasRecords(request, saverecords::CitationAdditionalInfo)) {
      return R::failure(QStringLiteral("Assessment and License Purchase Option changes come with the ADJUSTAR record "
                                       "that says when and why."));
    }
    return static_cast<const messaging::SaveRecord*>(nullptr);
  }
  const messaging::RecordList* header = request.recordList(saverecords::AdjustAR);
  if (header->records.size() != 1) {
    return R::failure(QStringLiteral("An account receivable adjustment carries one ADJUSTAR record."));
  }
  return &header->records.first();
}

Result<ArAdjustmentHeader> checkArAdjustmentHeader(const RecordReader& h, const Receivable& receivable,
                                                   const ArRecordsSent& sent, const QDate& today) {
  using R = Result<ArAdjustmentHeader>;
  if (h.code(QStringLiteral("ACTION")) != u"ADD") {
    return R::failure(h.refusal(QStringLiteral("ACTION must be ADD")));
  }
  const std::optional<AccountNumber> named = parseAccountNumber(h.text(QStringLiteral("ACCT_RCVBL_NBR")));
  if ((!h.isBlank(QStringLiteral("ACCT_RCVBL_NBR")) && (!named || named->digits != receivable.number)) ||
      (!h.isBlank(QStringLiteral("ACCT_RCVBL_TYP_CD")) && h.code(QStringLiteral("ACCT_RCVBL_TYP_CD")) != receivable.type) ||
      (!h.isBlank(QStringLiteral("ACCT_RCVBL_CK_NBR")) && h.text(QStringLiteral("ACCT_RCVBL_CK_NBR")) != receivable.checkDigit)) {
    return R::failure(
        h.refusal(QStringLiteral("the record names another account receivable than %1").arg(receivable.displayNumber())));
  }
  if (!h.isBlank(QStringLiteral("CUST_ID")) && h.code(QStringLiteral("CUST_ID")) != receivable.customerId) {
    return R::failure(h.refusal(QStringLiteral("%1 belongs to customer %2, not %3")
                                    .arg(receivable.what(), receivable.customerId, h.code(QStringLiteral("CUST_ID")))));
  }
  Result<qint64> version = h.rowVersion(QStringLiteral("account receivable"));
  if (!version) {
    return R::failure(version.error());
  }
  if (version.value() != receivable.version) {
    return R::failure(changedSinceReadText(receivable.what()));
  }
  ArAdjustmentHeader header;
  header.action = h.code(QStringLiteral("ADJSTMT_TYP_CD"));
  if (header.formAction() && header.action != u"V" && header.action != u"D") {
    return R::failure(h.refusal(QStringLiteral("ADJSTMT_TYP_CD must be V (void), D (delete) or empty")));
  }
  if (const QString problem = receivableProblem(receivable, header.action); !problem.isEmpty()) {
    return R::failure(problem);
  }
  Result<QDate> adjusted = h.requiredDay(QStringLiteral("ADJSTMT_DT"), QStringLiteral("the adjustment date"));
  if (!adjusted) {
    return R::failure(h.isBlank(QStringLiteral("ADJSTMT_DT")) ? QStringLiteral("Adjusted Date is required")
                                                              : adjusted.error());
  }
  header.adjusted = adjusted.value();
  if (header.adjusted > today) {
    return R::failure(QStringLiteral("Date Adjusted must be current date or a prior date"));
  }
  if (header.formAction() && (sent.assessments || sent.lpo)) {
    return R::failure(QStringLiteral("You can not select Action and adjust a fee/penalty at the same time"));
  }
  if (!header.formAction() && !sent.assessments) {
    return R::failure(QStringLiteral("Please adjust the account receivables or the Fees/Penalties"));
  }
  header.comment = h.text(QStringLiteral("ADJST_CMMT_TXT"));
  if (header.comment.isEmpty()) {
    return R::failure(QStringLiteral("Comment is required"));
  }
  if (header.action == u"D") {
    if (!kDeletableTypes.contains(receivable.type)) {
      return R::failure(QStringLiteral("Only delete ENF001, ENF003, ENF507, and Temporary Permits"));
    }
    if (receivable.number.toLongLong() > kLastTypedFormNumber) {
      return R::failure(QStringLiteral("Can not delete a generated form. Please void and correct the form instead."));
    }
  }
  return header;
}

// --- assessments ---------------------------------------------------------------------------------------------------

Result<AssessmentKey> readAssessmentRecord(const RecordReader& r, const QDate& adjusted) {
  using R = Result<AssessmentKey>;
  if (r.code(QStringLiteral("ACTION")) != u"UPD") {
    return R::failure(r.refusal(QStringLiteral("ACTION must be UPD")));
  }
  Result<QString> customer = r.required(QStringLiteral("CUST_ID"), QStringLiteral("the customer"));
  Result<QString> transaction = r.required(QStringLiteral("TRNSCTN_NBR"), QStringLiteral("the transaction"));
  Result<QString> code = r.required(QStringLiteral("ASSMT_CD"), QStringLiteral("the assessment code"));
  Result<std::optional<qint64>> sequence = r.integer(QStringLiteral("VLTN_ASSMT_SEQ_NBR"));
  for (const Result<QString>* part : {&customer, &transaction, &code}) {
    if (!*part) {
      return R::failure(part->error());
    }
  }
  if (!sequence) {
    return R::failure(sequence.error());
  }
  if (!sequence.value()) {
    return R::failure(r.refusal(QStringLiteral("VLTN_ASSMT_SEQ_NBR (the assessment's sequence) is required")));
  }
  const QString target = r.code(QStringLiteral("VLTN_ASSMT_STTS_CD"));
  if (target != u"I" && target != u"A") {
    return R::failure(r.refusal(QStringLiteral("VLTN_ASSMT_STTS_CD must be I (remove) or A (reinstate)")));
  }
  Result<std::optional<QDate>> day = r.day(QStringLiteral("ADJSTMT_DT"));
  if (!day) {
    return R::failure(day.error());
  }
  if (day.value() && *day.value() != adjusted) {
    return R::failure(r.refusal(QStringLiteral("ADJSTMT_DT must be the date of the adjustment (%1)")
                                    .arg(adjusted.toString(Qt::ISODate))));
  }
  // The amounts are only checked for form: the host takes them from its rows.
  for (const QString& amountField :
       {QStringLiteral("CL_ASMT_AMT"), QStringLiteral("AC_ASMT_AMT"), QStringLiteral("BAL_DUE_AMT")}) {
    if (Result<std::optional<qint64>> amount = r.cents(amountField); !amount) {
      return R::failure(amount.error());
    }
  }
  return AssessmentKey{customer->toUpper(), transaction.value(), code.value(), *sequence.value(), target == u"I"};
}

Result<AssessmentChange> checkAssessmentChange(const RecordReader& r, const AssessmentKey& key,
                                               const std::optional<Assessment>& found, const Receivable& receivable,
                                               const QDate& adjusted, QSet<qint64>& seen) {
  using R = Result<AssessmentChange>;
  if (!found) {
    return R::failure(r.refusal(QStringLiteral("assessment %1 (transaction %2, sequence %3) is not on %4")
                                    .arg(key.code, key.transaction)
                                    .arg(key.sequence)
                                    .arg(receivable.what().toLower())));
  }
  const Assessment& assessment = *found;
  if (seen.contains(assessment.id)) {
    return R::failure(r.refusal(QStringLiteral("assessment %1 is adjusted twice in one save").arg(assessment.code)));
  }
  seen.insert(assessment.id);
  Result<qint64> version = r.rowVersion(QStringLiteral("assessment"));
  if (!version) {
    return R::failure(version.error());
  }
  if (version.value() != assessment.version) {
    return R::failure(
        changedSinceReadText(QStringLiteral("Assessment %1 of %2").arg(assessment.code, receivable.what().toLower())));
  }
  if (key.removal && assessment.status != u"A") {
    return R::failure(r.refusal(QStringLiteral("assessment %1 is already removed").arg(assessment.code)));
  }
  if (!key.removal && assessment.status == u"A") {
    return R::failure(
        r.refusal(QStringLiteral("assessment %1 is not removed, so it can not be reinstated").arg(assessment.code)));
  }
  if (assessment.issued.isValid() && adjusted < assessment.issued) {
    return R::failure(key.removal
                          ? QStringLiteral("Date Adjusted must be >= assessment date in Available Assessments Grid")
                          : QStringLiteral("Date Adjusted must be >= assessment date in Adjusted Assessments Grid"));
  }
  return AssessmentChange{assessment, key.removal, version.value()};
}

// --- License Purchase Option ---------------------------------------------------------------------------------------

Result<std::optional<Assessment>> checkLpoRemoval(const QList<AssessmentChange>& changes, qsizetype lpoRecords) {
  using R = Result<std::optional<Assessment>>;
  int lpoFeesRemoved = 0;
  std::optional<Assessment> lpoRemoved;
  for (const AssessmentChange& change : changes) {
    if (change.removal && kLpoFees.contains(change.assessment.code.toUpper())) {
      ++lpoFeesRemoved;
    }
    if (change.removal && change.assessment.lpo) {
      lpoRemoved = change.assessment;
    }
  }
  if (lpoFeesRemoved > 1) {
    return R::failure(QStringLiteral("Adjust only one LPO at a time"));
  }
  if (lpoRecords > 1) {
    return R::failure(QStringLiteral("An adjustment carries at most one CTTNADTNINFO record."));
  }
  if (lpoRemoved && lpoRecords == 0) {
    return R::failure(QStringLiteral("License Purchase Option particulars (CTTNADTNINFO) are required when an LPO fee "
                                     "is removed."));
  }
  if (!lpoRemoved && lpoRecords > 0) {
    return R::failure(
        QStringLiteral("License Purchase Option particulars are only taken with the removal of an LPO fee."));
  }
  return lpoRemoved;
}

Result<LpoDetails> checkLpoRecord(const RecordReader& r, const QDate& today) {
  using R = Result<LpoDetails>;
  if (r.code(QStringLiteral("ACTION")) != u"UPD") {
    return R::failure(r.refusal(QStringLiteral("ACTION must be UPD")));
  }
  LpoDetails details;
  details.where = r.text(QStringLiteral("PRCHS_OPTN_ST_CD"));
  if (details.where != u"0" && details.where != u"1") {
    return R::failure(QStringLiteral("In or Out of State is required"));
  }
  details.comment = r.text(QStringLiteral("PRCHS_OPTN_TXT"));
  if (!details.inState()) {
    if (details.comment.isEmpty()) {
      return R::failure(QStringLiteral("Comment required for Out-of-State LPO"));
    }
    return details;
  }
  details.plate = r.code(QStringLiteral("PRCHS_OPTN_TAG_NBR"));
  if (details.plate.isEmpty()) {
    return R::failure(QStringLiteral("Plate is required"));
  }
  for (const QChar c : details.plate) {
    if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != u'-') {
      return R::failure(r.refusal(QStringLiteral("a plate number holds letters, digits and \"-\" only")));
    }
  }
  Result<std::optional<QDate>> bought = r.day(QStringLiteral("PRCHS_OPTN_DT"));
  if (!bought) {
    return R::failure(bought.error());
  }
  if (!bought.value()) {
    return R::failure(QStringLiteral("Date Purchased is required"));
  }
  if (*bought.value() > today) {
    return R::failure(r.refusal(QStringLiteral("the purchase date can not be after today")));
  }
  details.bought = *bought.value();
  details.time = r.text(QStringLiteral("PRCHS_OPTN_TM"));
  if (details.time.isEmpty()) {
    return R::failure(QStringLiteral("Time Purchased is required"));
  }
  if (details.time.size() != 5 || !QTime::fromString(details.time, QStringLiteral("HH:mm")).isValid()) {
    return R::failure(r.refusal(QStringLiteral("PRCHS_OPTN_TM \"%1\" is not a time written HH:MM").arg(details.time)));
  }
  details.troop = r.code(QStringLiteral("PO_TRP_ID"));
  if (details.troop.isEmpty()) {
    return R::failure(QStringLiteral("Troop/District is required"));
  }
  details.district = r.code(QStringLiteral("PO_TRP_DSTRCT_ID"));
  Result<std::optional<qint64>> weight = r.integer(QStringLiteral("PRCHS_OPTN_WGT"));
  if (!weight) {
    return R::failure(weight.error());
  }
  if (!weight.value()) {
    return R::failure(QStringLiteral("Weight is required"));
  }
  details.weight = *weight.value();
  Result<std::optional<qint64>> paid = r.cents(QStringLiteral("TOT_PRCHS_OPTN_AMT"));
  if (!paid) {
    return R::failure(QStringLiteral("Amount must be a dollar value for In-State LPO"));
  }
  if (!paid.value() || *paid.value() <= 0) {
    return R::failure(QStringLiteral("Amount required for In-State LPO"));
  }
  if (*paid.value() > 999999999) {
    return R::failure(r.refusal(QStringLiteral("the amount paid can not be above $9,999,999.99")));
  }
  details.paid = *paid.value();
  return details;
}

}  // namespace adjustacc::host
