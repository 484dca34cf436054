// The account receivable adjustment: void or delete a form, or remove and reinstate its assessments (fees
// and penalties) with the License Purchase Option particulars when an LPO fee goes; activity rows the
// clerk added or changed come with the same save. History is never rewritten: every removal and
// reinstatement is a row of its own, a reinstatement names the removal it reverses, and the form's
// amounts are recomputed from its rows.
#include "activity.h"
#include "aradjustmentrules.h"
#include "handlers.h"
#include "receivable.h"
#include "requestcheck.h"

#include "messaging/receivablebalance.h"

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

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

// The ASSESSMENT records of the save (a record without fields is none), each naming an assessment of this
// receivable as it was read; each is read (and locked) and checked in the order sent.
Result<QList<AssessmentChange>> readAssessmentChanges(const Sql& sql, const Receivable& receivable,
                                                      const messaging::RecordList* list, const QDate& adjusted) {
  using R = Result<QList<AssessmentChange>>;
  QList<AssessmentChange> changes;
  QSet<qint64> seen;
  for (qsizetype i = 0; list && i < list->records.size(); ++i) {
    if (list->records[i].fields().isEmpty()) {
      continue;
    }
    const RecordReader r(list->records[i], QStringLiteral("ASSESSMENT record %1").arg(i + 1));
    Result<AssessmentKey> key = readAssessmentRecord(r, adjusted);
    if (!key) {
      return R::failure(key.error());
    }
    Result<std::optional<Assessment>> found =
        findAssessment(sql, receivable.id, key->customerId, key->transaction, key->code, key->sequence);
    if (!found) {
      return R::failure(found.error());
    }
    Result<AssessmentChange> change = checkAssessmentChange(r, key.value(), found.value(), receivable, adjusted, seen);
    if (!change) {
      return R::failure(change.error());
    }
    changes.append(change.value());
  }
  return changes;
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

Result<qint64> recordAdjustment(const Context& context, AuditedWriter& writer, const Receivable& receivable,
                                const ArAdjustmentHeader& header) {
  const Sql& sql = context.sql;
  return writer.insert(
      QStringLiteral("ADJSTMT"),
      {{QStringLiteral("ADJSTMT_KIND_CD"), QStringLiteral("AR")},
       {QStringLiteral("ACCT_RCVBL_ID"), receivable.id},
       {QStringLiteral("ADJSTMT_DT"), sql.date(header.adjusted)},
       {QStringLiteral("ADJSTMT_TYP_CD"),
        header.formAction() ? QVariant(header.action) : QVariant(QMetaType(QMetaType::QString))},
       {QStringLiteral("ADJSTMT_CMMT_TXT"), header.comment},
       {QStringLiteral("OFFICER_ID"), context.officer.id},
       {QStringLiteral("REQUEST_ID"), context.request.requestId},
       {QStringLiteral("CREATED_TS"), sql.dialect().timestampValue(context.now)}},
      QStringLiteral("ADJSTMT_ID"));
}

// Voids ("V") or deletes ("D", and makes inactive) the form, with an activity row.
Result<bool> applyFormAction(AuditedWriter& writer, const Receivable& receivable, const ArAdjustmentHeader& header) {
  ColumnValues form = {{QStringLiteral("ACCT_STTS_CD"), header.action}};
  if (header.action == u"D") {
    form.append({QStringLiteral("ACTV_STTS_CD"), QStringLiteral("I")});
  }
  if (Result<bool> done = writer.update(QStringLiteral("ACCT_RCVBL"), {{QStringLiteral("ACCT_RCVBL_ID"), receivable.id}},
                                        form, receivable.version, receivable.what());
      !done) {
    return done;
  }
  return addSystemActivity(
      writer, receivable.id, header.action == u"V" ? QStringLiteral("VOD") : QStringLiteral("DEL"),
      QStringLiteral("Form %1: %2")
          .arg(header.action == u"V" ? QStringLiteral("voided") : QStringLiteral("deleted"), header.comment),
      std::nullopt, receivable.balance);
}

// The columns of an LPO_DTL row for the particulars.
ColumnValues lpoColumns(const Sql& sql, const LpoDetails& details) {
  ColumnValues columns = {{QStringLiteral("PRCHS_OPTN_ST_CD"), details.where}};
  if (!details.inState()) {
    columns.append({QStringLiteral("PRCHS_OPTN_TXT"), details.comment});
    return columns;
  }
  columns.append({QStringLiteral("PRCHS_OPTN_TAG_NBR"), details.plate});
  columns.append({QStringLiteral("PRCHS_OPTN_DT"), sql.date(details.bought)});
  columns.append({QStringLiteral("PRCHS_OPTN_TM"), details.time});
  columns.append({QStringLiteral("PO_TRP_ID"), details.troop});
  columns.append({QStringLiteral("PO_TRP_DSTRCT_ID"), details.district});
  columns.append({QStringLiteral("PRCHS_OPTN_WGT"), details.weight});
  columns.append({QStringLiteral("TOT_PRCHS_OPTN_AMT"), details.paid});
  columns.append({QStringLiteral("PRCHS_OPTN_TXT"), details.comment});
  return columns;
}

// The removed LPO fee and its particulars.
struct LpoRemoval {
  Assessment assessment;
  LpoDetails details;
};

// Removes and reinstates the assessments (each a history row; a reinstatement owes again what was owed when
// it was removed), records the LPO particulars, recomputes the receivable and adds an activity row.
Result<bool> applyAssessmentChanges(const Context& context, AuditedWriter& writer, const Receivable& receivable,
                                    const ArAdjustmentHeader& header, qint64 adjustment,
                                    const QList<AssessmentChange>& changes, const std::optional<LpoRemoval>& lpo) {
  using R = Result<bool>;
  const Sql& sql = context.sql;
  QStringList described;
  for (const AssessmentChange& change : changes) {
    const Assessment& a = change.assessment;
    const QString what = QStringLiteral("Assessment %1 of %2").arg(a.code, receivable.what().toLower());
    qint64 newBalance = 0;
    QVariant reverses{QMetaType(QMetaType::LongLong)};
    if (!change.removal) {
      Result<std::optional<std::pair<qint64, qint64>>> removal = openRemoval(sql, a.id);
      if (!removal) {
        return R::failure(removal.error());
      }
      std::optional<qint64> dueWhenRemoved;
      if (removal.value()) {
        reverses = removal.value()->first;
        dueWhenRemoved = removal.value()->second;
      }
      newBalance = messaging::reinstatedDue(a.amount, dueWhenRemoved);
    }
    if (Result<bool> done = writer.update(
            QStringLiteral("VLTN_ASSMT"), {{QStringLiteral("ASSMT_ID"), a.id}},
            {{QStringLiteral("VLTN_ASSMT_STTS_CD"), change.removal ? QStringLiteral("I") : QStringLiteral("A")},
             {QStringLiteral("BAL_DUE_AMT"), newBalance},
             {QStringLiteral("ADJSTMT_DT"), sql.date(header.adjusted)}},
            change.version, what);
        !done) {
      return done;
    }
    if (Result<qint64> history = writer.insert(
            QStringLiteral("ASSMT_ADJSTMT"),
            {{QStringLiteral("ADJSTMT_ID"), adjustment},
             {QStringLiteral("ASSMT_ID"), a.id},
             {QStringLiteral("CHANGE_CD"), change.removal ? QStringLiteral("R") : QStringLiteral("S")},
             {QStringLiteral("ASMT_AMT"), a.amount},
             {QStringLiteral("PRIOR_BAL_AMT"), a.balance},
             {QStringLiteral("NEW_BAL_AMT"), newBalance},
             {QStringLiteral("REVERSES_ID"), reverses}},
            QStringLiteral("ASSMT_ADJSTMT_ID"));
        !history) {
      return R::failure(history.error());
    }
    described.append(QStringLiteral("%1 %2 %3")
                         .arg(change.removal ? QStringLiteral("Removed") : QStringLiteral("Reinstated"), a.code,
                              centsForDisplay(a.amount)));
  }
  if (lpo) {
    ColumnValues row = {{QStringLiteral("ACCT_RCVBL_ID"), receivable.id},
                        {QStringLiteral("ASSMT_ID"), lpo->assessment.id},
                        {QStringLiteral("ADJSTMT_ID"), adjustment},
                        {QStringLiteral("CREATED_BY_ID"), context.officer.id},
                        {QStringLiteral("CREATED_TS"), sql.dialect().timestampValue(context.now)}};
    row.append(lpoColumns(sql, lpo->details));
    if (Result<qint64> stored = writer.insert(QStringLiteral("LPO_DTL"), row, QStringLiteral("LPO_ID")); !stored) {
      return R::failure(stored.error());
    }
  }
  Result<ReceivableAmounts> amounts = refreshReceivable(writer, receivable, receivable.version);
  if (!amounts) {
    return R::failure(amounts.error());
  }
  return addSystemActivity(writer, receivable.id, QStringLiteral("ADJ"),
                           described.join(QStringLiteral("; ")) + QStringLiteral(": ") + header.comment,
                           amounts->balance - receivable.balance, amounts->balance);
}

// The adjustment of the ADJUSTAR record: checked with its assessments and LPO particulars, then applied.
Result<bool> adjust(const Context& context, AuditedWriter& writer, const Receivable& receivable,
                    const messaging::SaveRecord& record) {
  using R = Result<bool>;
  const Sql& sql = context.sql;
  const messaging::Request& request = context.request;
  const ArRecordsSent sent{hasRecords(request, saverecords::Assessment),
                           hasRecords(request, saverecords::CitationAdditionalInfo)};
  Result<ArAdjustmentHeader> header =
      checkArAdjustmentHeader(RecordReader(record, saverecords::AdjustAR), receivable, sent, context.today);
  if (!header) {
    return R::failure(header.error());
  }
  if (header->action == u"D") {
    Result<qint64> inForce = sql.scalar(
        QStringLiteral("SELECT COUNT(*) FROM PYMT WHERE ACCT_RCVBL_ID = ? AND ACTVTY_STTS_CD IS NULL"), {receivable.id}, 0);
    if (!inForce) {
      return R::failure(inForce.error());
    }
    if (inForce.value() > 0) {
      return R::failure(QStringLiteral("%1 has payments in force; back them out or cancel them before deleting the form.")
                            .arg(receivable.what()));
    }
  }
  Result<QList<AssessmentChange>> changes = readAssessmentChanges(
      sql, receivable, request.recordList(saverecords::Assessment), header->adjusted);
  if (!changes) {
    return R::failure(changes.error());
  }
  const messaging::RecordList* lpoList = request.recordList(saverecords::CitationAdditionalInfo);
  Result<std::optional<Assessment>> lpoRemoved = checkLpoRemoval(changes.value(), sent.lpo ? lpoList->records.size() : 0);
  if (!lpoRemoved) {
    return R::failure(lpoRemoved.error());
  }
  std::optional<LpoRemoval> lpo;
  if (lpoRemoved.value()) {
    Result<LpoDetails> details =
        checkLpoRecord(RecordReader(lpoList->records.first(), saverecords::CitationAdditionalInfo), context.today);
    if (!details) {
      return R::failure(details.error());
    }
    lpo = LpoRemoval{*lpoRemoved.value(), details.value()};
  }

  Result<qint64> adjustment = recordAdjustment(context, writer, receivable, header.value());
  if (!adjustment) {
    return R::failure(adjustment.error());
  }
  if (header->formAction()) {
    return applyFormAction(writer, receivable, header.value());
  }
  return applyAssessmentChanges(context, writer, receivable, header.value(), adjustment.value(), changes.value(), lpo);
}

}  // namespace

Outcome saveArAdjustment(const Context& context) {
  Result<ArAdjustmentRequest> request = readArAdjustmentRequest(context.request, context.officer);
  if (!request) {
    return refuse(request.error());
  }
  Result<std::optional<Receivable>> read =
      readReceivable(context.sql, request->type.toUpper(), request->number.digits, true);
  if (!read) {
    return refuse(read.error());
  }
  if (!read.value()) {
    return refuse(QStringLiteral("Account receivable %1 %2 was not found.").arg(request->type, request->typed));
  }
  const Receivable& receivable = *read.value();
  if (!request->number.checkDigit.isEmpty() && request->number.checkDigit != receivable.checkDigit) {
    return refuse(QStringLiteral("Check digit is not valid for account number %1-%2")
                      .arg(request->number.digits, request->number.checkDigit));
  }
  Result<const messaging::SaveRecord*> record = adjustmentRecordOf(context.request);
  if (!record) {
    return refuse(record.error());
  }
  AuditedWriter writer(context.sql, context.writeContext());
  if (record.value()) {
    if (Result<bool> adjusted = adjust(context, writer, receivable, *record.value()); !adjusted) {
      return refuse(adjusted.error());
    }
  }
  if (const messaging::RecordList* activity = context.request.recordList(saverecords::AccountActivity);
      activity && hasRecords(context.request, saverecords::AccountActivity)) {
    if (!record.value() && (receivable.status == u"D" || receivable.activity == u"I")) {
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
