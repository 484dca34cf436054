// The account receivable adjustment: void or delete a form, or remove and reinstate its assessments (fees
// and penalties) with the License Purchase Option particulars when an LPO fee goes; activity rows the
// clerk added or changed come with the same save. History is never rewritten: every removal and
// reinstatement is a row of its own, a reinstatement names the removal it reverses, and the form's
// amounts are recomputed from its rows.
#include "activity.h"
#include "handlers.h"
#include "receivable.h"
#include "requestcheck.h"

#include <QSet>
#include <QTime>

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

const QStringList kLpoFees = {QStringLiteral("F01"), QStringLiteral("F09"), QStringLiteral("F15")};
// The forms a clerk may delete: ENF001, ENF003, ENF507 citations and temporary permits.
const QStringList kDeletableTypes = {QStringLiteral("T"), QStringLiteral("O"), QStringLiteral("M"), QStringLiteral("C")};
const QString kPaymentPlan = QStringLiteral("P");

struct Assessment {
  qint64 id = 0;
  QString code;
  QString transaction;
  qint64 sequence = 0;
  QString customerId;
  QDate issued;
  qint64 amount = 0;     // the LPO amount for License Purchase Option fees
  qint64 balance = 0;
  QString status;
  bool lpo = false;
  qint64 version = 0;
};

struct AssessmentChange {
  Assessment assessment;
  bool removal = false;
  qint64 version = 0;
};

Result<std::optional<Assessment>> findAssessment(const Sql& sql, qint64 receivableId, const QString& customer,
                                                 const QString& transaction, const QString& code, qint64 sequence) {
  using R = Result<std::optional<Assessment>>;
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT ASSMT_ID, ASSMT_CD, TRNSCTN_NBR, VLTN_ASSMT_SEQ_NBR, CUST_ID, ASSMT_ISSUE_DT, "
                     "CASE WHEN LIC_PRCHS_OPTN_IND = 'Y' THEN AC_ASMT_AMT ELSE CL_ASMT_AMT END, BAL_DUE_AMT, "
                     "VLTN_ASSMT_STTS_CD, LIC_PRCHS_OPTN_IND, ROW_VRSN_NBR FROM VLTN_ASSMT "
                     "WHERE ACCT_RCVBL_ID = ? AND CUST_ID = ? AND TRNSCTN_NBR = ? AND ASSMT_CD = ? AND "
                     "VLTN_ASSMT_SEQ_NBR = ?") +
          sql.dialect().lockRowsSuffix(),
      {receivableId, customer, transaction, code, sequence});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<Assessment>();
  }
  const QVariantList& v = *row.value();
  return std::optional<Assessment>(Assessment{
      v.at(0).toLongLong(), v.at(1).toString(), v.at(2).toString(), v.at(3).toLongLong(), v.at(4).toString(),
      SqlDialect::dayFromValue(v.at(5)), v.at(6).toLongLong(), v.at(7).toLongLong(), v.at(8).toString().trimmed().toUpper(),
      v.at(9).toString().trimmed().toUpper() == u"Y", v.at(10).toLongLong()});
}

// The assessment records of the save, each naming an assessment of this receivable as it was read.
Result<QList<AssessmentChange>> readAssessmentRecords(const Context& context, const Receivable& receivable,
                                                      const messaging::RecordList* list, const QDate& adjusted) {
  using R = Result<QList<AssessmentChange>>;
  QList<AssessmentChange> changes;
  if (!list) {
    return changes;
  }
  QSet<qint64> seen;
  for (qsizetype i = 0; i < list->records.size(); ++i) {
    const RecordReader r(list->records[i], QStringLiteral("ASSESSMENT record %1").arg(i + 1));
    if (list->records[i].fields().isEmpty()) {
      continue;
    }
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
    for (const QString& amountField : {QStringLiteral("CL_ASMT_AMT"), QStringLiteral("AC_ASMT_AMT"),
                                      QStringLiteral("BAL_DUE_AMT")}) {
      if (Result<std::optional<qint64>> amount = r.cents(amountField); !amount) {
        return R::failure(amount.error());
      }
    }
    Result<std::optional<Assessment>> found =
        findAssessment(context.sql, receivable.id, customer->toUpper(), transaction.value(), code.value(),
                       *sequence.value());
    if (!found) {
      return R::failure(found.error());
    }
    if (!found.value()) {
      return R::failure(r.refusal(QStringLiteral("assessment %1 (transaction %2, sequence %3) is not on %4")
                                      .arg(code.value(), transaction.value())
                                      .arg(*sequence.value())
                                      .arg(receivable.what().toLower())));
    }
    const Assessment& assessment = *found.value();
    if (seen.contains(assessment.id)) {
      return R::failure(r.refusal(QStringLiteral("assessment %1 is adjusted twice in one save").arg(assessment.code)));
    }
    seen.insert(assessment.id);
    Result<qint64> version = r.rowVersion(QStringLiteral("assessment"));
    if (!version) {
      return R::failure(version.error());
    }
    const QString what = QStringLiteral("Assessment %1 of %2").arg(assessment.code, receivable.what().toLower());
    if (version.value() != assessment.version) {
      return R::failure(changedSinceReadText(what));
    }
    const bool removal = target == u"I";
    if (removal && assessment.status != u"A") {
      return R::failure(r.refusal(QStringLiteral("assessment %1 is already removed").arg(assessment.code)));
    }
    if (!removal && assessment.status == u"A") {
      return R::failure(r.refusal(QStringLiteral("assessment %1 is not removed, so it can not be reinstated")
                                      .arg(assessment.code)));
    }
    if (assessment.issued.isValid() && adjusted < assessment.issued) {
      return R::failure(removal
                            ? QStringLiteral("Date Adjusted must be >= assessment date in Available Assessments Grid")
                            : QStringLiteral("Date Adjusted must be >= assessment date in Adjusted Assessments Grid"));
    }
    changes.append({assessment, removal, version.value()});
  }
  return changes;
}

struct LpoDetails {
  ColumnValues columns;
};

Result<LpoDetails> readLpoRecord(const Context& context, const messaging::SaveRecord& record) {
  using R = Result<LpoDetails>;
  const RecordReader r(record, saverecords::CitationAdditionalInfo);
  if (r.code(QStringLiteral("ACTION")) != u"UPD") {
    return R::failure(r.refusal(QStringLiteral("ACTION must be UPD")));
  }
  const QString where = r.text(QStringLiteral("PRCHS_OPTN_ST_CD"));
  if (where != u"0" && where != u"1") {
    return R::failure(QStringLiteral("In or Out of State is required"));
  }
  const QString comment = r.text(QStringLiteral("PRCHS_OPTN_TXT"));
  LpoDetails details;
  details.columns = {{QStringLiteral("PRCHS_OPTN_ST_CD"), where}};
  if (where == u"1") {
    if (comment.isEmpty()) {
      return R::failure(QStringLiteral("Comment required for Out-of-State LPO"));
    }
    details.columns.append({QStringLiteral("PRCHS_OPTN_TXT"), comment});
    return details;
  }
  const QString plate = r.code(QStringLiteral("PRCHS_OPTN_TAG_NBR"));
  if (plate.isEmpty()) {
    return R::failure(QStringLiteral("Plate is required"));
  }
  for (const QChar c : plate) {
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
  if (*bought.value() > context.today) {
    return R::failure(r.refusal(QStringLiteral("the purchase date can not be after today")));
  }
  const QString time = r.text(QStringLiteral("PRCHS_OPTN_TM"));
  if (time.isEmpty()) {
    return R::failure(QStringLiteral("Time Purchased is required"));
  }
  if (time.size() != 5 || !QTime::fromString(time, QStringLiteral("HH:mm")).isValid()) {
    return R::failure(r.refusal(QStringLiteral("PRCHS_OPTN_TM \"%1\" is not a time written HH:MM").arg(time)));
  }
  const QString troop = r.code(QStringLiteral("PO_TRP_ID"));
  if (troop.isEmpty()) {
    return R::failure(QStringLiteral("Troop/District is required"));
  }
  Result<std::optional<qint64>> weight = r.integer(QStringLiteral("PRCHS_OPTN_WGT"));
  if (!weight) {
    return R::failure(weight.error());
  }
  if (!weight.value()) {
    return R::failure(QStringLiteral("Weight is required"));
  }
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
  details.columns.append({QStringLiteral("PRCHS_OPTN_TAG_NBR"), plate});
  details.columns.append({QStringLiteral("PRCHS_OPTN_DT"), context.sql.date(*bought.value())});
  details.columns.append({QStringLiteral("PRCHS_OPTN_TM"), time});
  details.columns.append({QStringLiteral("PO_TRP_ID"), troop});
  details.columns.append({QStringLiteral("PO_TRP_DSTRCT_ID"), r.code(QStringLiteral("PO_TRP_DSTRCT_ID"))});
  details.columns.append({QStringLiteral("PRCHS_OPTN_WGT"), *weight.value()});
  details.columns.append({QStringLiteral("TOT_PRCHS_OPTN_AMT"), *paid.value()});
  details.columns.append({QStringLiteral("PRCHS_OPTN_TXT"), comment});
  return details;
}

// The removal a reinstatement reverses: the latest one of the assessment not reversed yet.
Result<std::optional<std::pair<qint64, qint64>>> openRemoval(const Sql& sql, qint64 assessmentId) {
  using R = Result<std::optional<std::pair<qint64, qint64>>>;
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT r.ASSMT_ADJSTMT_ID, r.PRIOR_BAL_AMT FROM ASSMT_ADJSTMT r WHERE r.ASSMT_ID = ? AND "
                     "r.CHANGE_CD = 'R' AND NOT EXISTS (SELECT 1 FROM ASSMT_ADJSTMT s WHERE s.REVERSES_ID = "
                     "r.ASSMT_ADJSTMT_ID) ORDER BY r.ASSMT_ADJSTMT_ID DESC"),
      {assessmentId});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<std::pair<qint64, qint64>>();
  }
  return std::optional<std::pair<qint64, qint64>>({row.value()->at(0).toLongLong(), row.value()->at(1).toLongLong()});
}

Outcome refreshed(const Context& context, qint64 receivableId) {
  Result<RecordSet> assessments = assessmentSection(context.sql, receivableId);
  if (!assessments) {
    return refuse(assessments.error());
  }
  Result<RecordSet> receivable = receivableSection(context.sql, receivableId);
  if (!receivable) {
    return refuse(receivable.error());
  }
  Sections sections;
  sections.insert(sectionnames::Assessment, std::move(assessments.value()));
  sections.insert(sectionnames::AccountReceivables, std::move(receivable.value()));
  return sections;
}

}  // namespace

Outcome saveArAdjustment(const Context& context) {
  const Sql& sql = context.sql;
  const QString kind = QStringLiteral("The account receivable adjustment");
  if (const QString problem = checkParams(context.request, kind, {params::RefNbr, params::RefTypCd}, {params::Lpo});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const QStringList taken = {saverecords::AdjustAR, saverecords::Assessment, saverecords::CitationAdditionalInfo,
                             saverecords::AccountActivity};
  for (const auto& list : context.request.records) {
    if (!taken.contains(list.name) && hasRecords(context.request, list.name)) {
      return refuse(QStringLiteral("The account receivable adjustment does not take %1 records.").arg(list.name));
    }
  }
  if (!context.officer.has(rights::AdjustAR)) {
    return refuse(missingRightText(context.officer, rights::AdjustAR, QStringLiteral("adjust account receivables")));
  }
  const QString typed = context.param(params::RefNbr);
  const std::optional<AccountNumber> number = parseAccountNumber(typed);
  if (!number) {
    return refuse(QStringLiteral("Account Number \"%1\" is Invalid: up to seven digits are expected.").arg(typed));
  }
  Result<std::optional<Receivable>> read =
      readReceivable(sql, context.param(params::RefTypCd).toUpper(), number->digits, true);
  if (!read) {
    return refuse(read.error());
  }
  if (!read.value()) {
    return refuse(QStringLiteral("Account receivable %1 %2 was not found.")
                      .arg(context.param(params::RefTypCd), typed));
  }
  const Receivable receivable = *read.value();
  if (!number->checkDigit.isEmpty() && number->checkDigit != receivable.checkDigit) {
    return refuse(QStringLiteral("Check digit is not valid for account number %1-%2").arg(number->digits, number->checkDigit));
  }
  AuditedWriter writer(sql, context.writeContext());
  const messaging::RecordList* header = context.request.recordList(saverecords::AdjustAR);
  const bool adjusts = hasRecords(context.request, saverecords::AdjustAR);
  if (!adjusts && (hasRecords(context.request, saverecords::Assessment) ||
                   hasRecords(context.request, saverecords::CitationAdditionalInfo))) {
    return refuse(QStringLiteral("Assessment and License Purchase Option changes come with the ADJUSTAR record that "
                                 "says when and why."));
  }
  if (adjusts) {
    if (header->records.size() != 1) {
      return refuse(QStringLiteral("An account receivable adjustment carries one ADJUSTAR record."));
    }
    const RecordReader h(header->records.first(), saverecords::AdjustAR);
    if (h.code(QStringLiteral("ACTION")) != u"ADD") {
      return refuse(h.refusal(QStringLiteral("ACTION must be ADD")));
    }
    const std::optional<AccountNumber> named = parseAccountNumber(h.text(QStringLiteral("ACCT_RCVBL_NBR")));
    if ((!h.isBlank(QStringLiteral("ACCT_RCVBL_NBR")) && (!named || named->digits != receivable.number)) ||
        (!h.isBlank(QStringLiteral("ACCT_RCVBL_TYP_CD")) && h.code(QStringLiteral("ACCT_RCVBL_TYP_CD")) != receivable.type) ||
        (!h.isBlank(QStringLiteral("ACCT_RCVBL_CK_NBR")) && h.text(QStringLiteral("ACCT_RCVBL_CK_NBR")) != receivable.checkDigit)) {
      return refuse(h.refusal(QStringLiteral("the record names another account receivable than %1")
                                  .arg(receivable.displayNumber())));
    }
    if (!h.isBlank(QStringLiteral("CUST_ID")) && h.code(QStringLiteral("CUST_ID")) != receivable.customerId) {
      return refuse(h.refusal(QStringLiteral("%1 belongs to customer %2, not %3")
                                  .arg(receivable.what(), receivable.customerId, h.code(QStringLiteral("CUST_ID")))));
    }
    Result<qint64> version = h.rowVersion(QStringLiteral("account receivable"));
    if (!version) {
      return refuse(version.error());
    }
    if (version.value() != receivable.version) {
      return refuse(changedSinceReadText(receivable.what()));
    }
    const QString action = h.code(QStringLiteral("ADJSTMT_TYP_CD"));
    if (!action.isEmpty() && action != u"V" && action != u"D") {
      return refuse(h.refusal(QStringLiteral("ADJSTMT_TYP_CD must be V (void), D (delete) or empty")));
    }
    const bool formAction = !action.isEmpty();
    if (receivable.status == u"D") {
      return refuse(QStringLiteral("%1 has been deleted and can not be adjusted.").arg(receivable.what()));
    }
    if (receivable.activity == u"I") {
      return refuse(QStringLiteral("%1 is inactive and can not be adjusted.").arg(receivable.what()));
    }
    if (!receivable.caseId.isEmpty()) {
      return refuse(QStringLiteral("%1 is bound to case %2 and can not be adjusted.").arg(receivable.what(), receivable.caseId));
    }
    if (receivable.type == kPaymentPlan && formAction) {
      return refuse(QStringLiteral("Can not void or delete a payment plan"));
    }
    if (receivable.status == u"V" && action != u"D") {
      return refuse(QStringLiteral("Can not adjust a voided form"));
    }
    Result<QDate> adjusted = h.requiredDay(QStringLiteral("ADJSTMT_DT"), QStringLiteral("the adjustment date"));
    if (!adjusted) {
      return refuse(h.isBlank(QStringLiteral("ADJSTMT_DT")) ? QStringLiteral("Adjusted Date is required") : adjusted.error());
    }
    if (adjusted.value() > context.today) {
      return refuse(QStringLiteral("Date Adjusted must be current date or a prior date"));
    }
    const bool touchesAssessments = hasRecords(context.request, saverecords::Assessment) ||
                                    hasRecords(context.request, saverecords::CitationAdditionalInfo);
    if (formAction && touchesAssessments) {
      return refuse(QStringLiteral("You can not select Action and adjust a fee/penalty at the same time"));
    }
    if (!formAction && !hasRecords(context.request, saverecords::Assessment)) {
      return refuse(QStringLiteral("Please adjust the account receivables or the Fees/Penalties"));
    }
    const QString comment = h.text(QStringLiteral("ADJST_CMMT_TXT"));
    if (comment.isEmpty()) {
      return refuse(QStringLiteral("Comment is required"));
    }
    if (action == u"D") {
      if (!kDeletableTypes.contains(receivable.type)) {
        return refuse(QStringLiteral("Only delete ENF001, ENF003, ENF507, and Temporary Permits"));
      }
      if (receivable.number.toLongLong() > kLastTypedFormNumber) {
        return refuse(QStringLiteral("Can not delete a generated form. Please void and correct the form instead."));
      }
      Result<qint64> inForce = sql.scalar(
          QStringLiteral("SELECT COUNT(*) FROM PYMT WHERE ACCT_RCVBL_ID = ? AND ACTVTY_STTS_CD IS NULL"), {receivable.id}, 0);
      if (!inForce) {
        return refuse(inForce.error());
      }
      if (inForce.value() > 0) {
        return refuse(QStringLiteral("%1 has payments in force; back them out or cancel them before deleting the form.")
                          .arg(receivable.what()));
      }
    }
    Result<QList<AssessmentChange>> changes =
        readAssessmentRecords(context, receivable, context.request.recordList(saverecords::Assessment), adjusted.value());
    if (!changes) {
      return refuse(changes.error());
    }
    int lpoFeesRemoved = 0;
    const Assessment* lpoRemoved = nullptr;
    for (const AssessmentChange& change : changes.value()) {
      if (change.removal && kLpoFees.contains(change.assessment.code.toUpper())) {
        ++lpoFeesRemoved;
      }
      if (change.removal && change.assessment.lpo) {
        lpoRemoved = &change.assessment;
      }
    }
    if (lpoFeesRemoved > 1) {
      return refuse(QStringLiteral("Adjust only one LPO at a time"));
    }
    const messaging::RecordList* lpoList = context.request.recordList(saverecords::CitationAdditionalInfo);
    const bool hasLpo = hasRecords(context.request, saverecords::CitationAdditionalInfo);
    if (hasLpo && lpoList->records.size() != 1) {
      return refuse(QStringLiteral("An adjustment carries at most one CTTNADTNINFO record."));
    }
    if (lpoRemoved && !hasLpo) {
      return refuse(QStringLiteral("License Purchase Option particulars (CTTNADTNINFO) are required when an LPO fee is "
                                   "removed."));
    }
    if (!lpoRemoved && hasLpo) {
      return refuse(QStringLiteral("License Purchase Option particulars are only taken with the removal of an LPO fee."));
    }

    // --- effects -----------------------------------------------------------------------------------------
    Result<qint64> adjustment = writer.insert(
        QStringLiteral("ADJSTMT"),
        {{QStringLiteral("ADJSTMT_KIND_CD"), QStringLiteral("AR")},
         {QStringLiteral("ACCT_RCVBL_ID"), receivable.id},
         {QStringLiteral("ADJSTMT_DT"), sql.date(adjusted.value())},
         {QStringLiteral("ADJSTMT_TYP_CD"), formAction ? QVariant(action) : QVariant(QMetaType(QMetaType::QString))},
         {QStringLiteral("ADJSTMT_CMMT_TXT"), comment},
         {QStringLiteral("OFFICER_ID"), context.officer.id},
         {QStringLiteral("REQUEST_ID"), context.request.requestId},
         {QStringLiteral("CREATED_TS"), sql.dialect().timestampValue(context.now)}},
        QStringLiteral("ADJSTMT_ID"));
    if (!adjustment) {
      return refuse(adjustment.error());
    }
    if (formAction) {
      ColumnValues form = {{QStringLiteral("ACCT_STTS_CD"), action}};
      if (action == u"D") {
        form.append({QStringLiteral("ACTV_STTS_CD"), QStringLiteral("I")});
      }
      if (Result<bool> done = writer.update(QStringLiteral("ACCT_RCVBL"), {{QStringLiteral("ACCT_RCVBL_ID"), receivable.id}},
                                            form, receivable.version, receivable.what());
          !done) {
        return refuse(done.error());
      }
      if (Result<bool> logged = addSystemActivity(
              writer, receivable.id, action == u"V" ? QStringLiteral("VOD") : QStringLiteral("DEL"),
              QStringLiteral("Form %1: %2").arg(action == u"V" ? QStringLiteral("voided") : QStringLiteral("deleted"), comment),
              std::nullopt, receivable.balance);
          !logged) {
        return refuse(logged.error());
      }
    } else {
      QStringList described;
      for (const AssessmentChange& change : changes.value()) {
        const Assessment& a = change.assessment;
        const QString what = QStringLiteral("Assessment %1 of %2").arg(a.code, receivable.what().toLower());
        qint64 newBalance = 0;
        QVariant reverses{QMetaType(QMetaType::LongLong)};
        if (!change.removal) {
          Result<std::optional<std::pair<qint64, qint64>>> removal = openRemoval(sql, a.id);
          if (!removal) {
            return refuse(removal.error());
          }
          // Owed again what was owed when it was removed; the full amount when the removal is not on record.
          newBalance = a.amount;
          if (removal.value()) {
            reverses = removal.value()->first;
            newBalance = removal.value()->second;
          }
        }
        if (Result<bool> done = writer.update(QStringLiteral("VLTN_ASSMT"), {{QStringLiteral("ASSMT_ID"), a.id}},
                                              {{QStringLiteral("VLTN_ASSMT_STTS_CD"), change.removal ? QStringLiteral("I") : QStringLiteral("A")},
                                               {QStringLiteral("BAL_DUE_AMT"), newBalance},
                                               {QStringLiteral("ADJSTMT_DT"), sql.date(adjusted.value())}},
                                              change.version, what);
            !done) {
          return refuse(done.error());
        }
        if (Result<qint64> history = writer.insert(QStringLiteral("ASSMT_ADJSTMT"),
                                                    {{QStringLiteral("ADJSTMT_ID"), adjustment.value()},
                                                     {QStringLiteral("ASSMT_ID"), a.id},
                                                     {QStringLiteral("CHANGE_CD"), change.removal ? QStringLiteral("R") : QStringLiteral("S")},
                                                     {QStringLiteral("ASMT_AMT"), a.amount},
                                                     {QStringLiteral("PRIOR_BAL_AMT"), a.balance},
                                                     {QStringLiteral("NEW_BAL_AMT"), newBalance},
                                                     {QStringLiteral("REVERSES_ID"), reverses}},
                                                    QStringLiteral("ASSMT_ADJSTMT_ID"));
            !history) {
          return refuse(history.error());
        }
        described.append(QStringLiteral("%1 %2 %3")
                             .arg(change.removal ? QStringLiteral("Removed") : QStringLiteral("Reinstated"), a.code,
                                  centsForDisplay(a.amount)));
      }
      if (lpoRemoved) {
        Result<LpoDetails> details = readLpoRecord(context, lpoList->records.first());
        if (!details) {
          return refuse(details.error());
        }
        ColumnValues row = {{QStringLiteral("ACCT_RCVBL_ID"), receivable.id},
                            {QStringLiteral("ASSMT_ID"), lpoRemoved->id},
                            {QStringLiteral("ADJSTMT_ID"), adjustment.value()},
                            {QStringLiteral("CREATED_BY_ID"), context.officer.id},
                            {QStringLiteral("CREATED_TS"), sql.dialect().timestampValue(context.now)}};
        row.append(details->columns);
        if (Result<qint64> stored = writer.insert(QStringLiteral("LPO_DTL"), row, QStringLiteral("LPO_ID")); !stored) {
          return refuse(stored.error());
        }
      }
      Result<ReceivableAmounts> amounts = refreshReceivable(writer, receivable, receivable.version);
      if (!amounts) {
        return refuse(amounts.error());
      }
      if (Result<bool> logged = addSystemActivity(writer, receivable.id, QStringLiteral("ADJ"),
                                                  described.join(QStringLiteral("; ")) + QStringLiteral(": ") + comment,
                                                  amounts->balance - receivable.balance, amounts->balance);
          !logged) {
        return refuse(logged.error());
      }
    }
  }
  if (const messaging::RecordList* activity = context.request.recordList(saverecords::AccountActivity);
      activity && hasRecords(context.request, saverecords::AccountActivity)) {
    if (!adjusts && (receivable.status == u"D" || receivable.activity == u"I")) {
      return refuse(QStringLiteral("%1 is deleted or inactive; its activity can not be changed.").arg(receivable.what()));
    }
    Result<int> written = applyActivityRecords(context, writer, receivable, *activity);
    if (!written) {
      return refuse(written.error());
    }
  }
  return refreshed(context, receivable.id);
}

}  // namespace adjustacc::host
