// Refund worksheets: one refund of excess funds carried officer by officer through its steps
//   "0" new -> "1" prepared -> "2" verified -> "3" approved -> "4" refunded -> "5" mailed,
//   or "3" -> "T" transferred; and void ("V") from any step up to approval.
// The excess refunded is set aside ("W") when the worksheet is prepared, released when it is voided, and
// marked refunded or transferred with the refund step.
#include "excessfunds.h"
#include "handlers.h"
#include "numbers.h"
#include "requestcheck.h"
#include "worksheetrules.h"

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

// The officers' names come from the officers' table; an id that is not there leaves the name null.
const QString& worksheetStatement() {
  static const QString statement = QStringLiteral(
      "SELECT w.RCPT_NBR, w.CUST_ID, w.RFND_NBR, w.RFND_AMT, w.RFND_TO_CD, w.DT_MLD, w.CREATED_DT, "
      "w.CREATOR_ID, w.VERIFY_ID, w.APPROVE_ID, w.RFND_BY_ID, w.VOID_ID, w.DMV_CMMT_TXT, "
      "w.FISCAL_CMMT_TXT, w.RFND_CD, w.WRNT_NBR, w.RFND_DT, w.STTS_CD, c.CUST_NM, c.ADDR_1, c.ADDR_2, "
      "c.CITY, c.STATE, c.ZIP, w.ROW_VRSN_NBR, "
      "oc.OFFICER_NM, w.CREATED_TS, ov.OFFICER_NM, w.VERIFY_TS, oa.OFFICER_NM, w.APPROVE_TS, "
      "orf.OFFICER_NM, w.RFND_BY_TS, w.MAILED_BY_ID, om.OFFICER_NM, w.MAILED_TS, ovd.OFFICER_NM, "
      "w.VOID_TS "
      "FROM RFND_WRKSHT w JOIN CUSTOMER c ON c.CUST_ID = w.CUST_ID "
      "LEFT JOIN OFFICER oc ON oc.OFFICER_ID = w.CREATOR_ID "
      "LEFT JOIN OFFICER ov ON ov.OFFICER_ID = w.VERIFY_ID "
      "LEFT JOIN OFFICER oa ON oa.OFFICER_ID = w.APPROVE_ID "
      "LEFT JOIN OFFICER orf ON orf.OFFICER_ID = w.RFND_BY_ID "
      "LEFT JOIN OFFICER om ON om.OFFICER_ID = w.MAILED_BY_ID "
      "LEFT JOIN OFFICER ovd ON ovd.OFFICER_ID = w.VOID_ID "
      "WHERE w.RFND_NBR = ?");
  return statement;
}

namespace {

const SectionBuilder& worksheetBuilder() {
  static const SectionBuilder builder(
      sectionnames::Refund,
      {{u"RCPT_NBR"}, {u"CUST_ID"}, {u"RFND_NBR"}, {u"RFND_AMT", Cell::Money}, {u"TO"}, {u"DT_MLD", Cell::Day},
       {u"CREATED_DT", Cell::Day}, {u"CREATOR_ID"}, {u"VERIFY_ID"}, {u"APPROVE_ID"}, {u"RFND_BY_ID"}, {u"VOID_ID"},
       {u"DMV_CMMT_TXT"}, {u"FISCAL_CMMT_TXT"}, {u"RFND_CD"}, {u"WRNT_NBR"}, {u"RFND_DT", Cell::Day}, {u"STTS_CD"},
       {u"CUST_NM"}, {u"ADDR_1"}, {u"ADDR_2"}, {u"CITY"}, {u"STATE"}, {u"ZIP"}, {u"ROW_VRSN_NBR"},
       // Who took each step, by name, and when (the host's clock, UTC).
       {u"CREATOR_NM"}, {u"CREATED_TS", Cell::Timestamp}, {u"VERIFY_NM"}, {u"VERIFY_TS", Cell::Timestamp},
       {u"APPROVE_NM"}, {u"APPROVE_TS", Cell::Timestamp}, {u"RFND_BY_NM"}, {u"RFND_BY_TS", Cell::Timestamp},
       {u"MAILED_BY_ID"}, {u"MAILED_BY_NM"}, {u"MAILED_TS", Cell::Timestamp}, {u"VOID_NM"},
       {u"VOID_TS", Cell::Timestamp}});
  return builder;
}

Result<RecordSet> worksheetSection(const Sql& sql, const QString& refundNumber) {
  return worksheetBuilder().run(sql, worksheetStatement(), {refundNumber});
}

Result<std::optional<Worksheet>> readWorksheet(const Sql& sql, const QString& number) {
  using R = Result<std::optional<Worksheet>>;
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT RFND_NBR, RCPT_NBR, CUST_ID, RFND_AMT, STTS_CD, CREATOR_ID, VERIFY_ID, APPROVE_ID, "
                     "RFND_DT, ROW_VRSN_NBR FROM RFND_WRKSHT WHERE RFND_NBR = ?") +
          sql.dialect().lockRowsSuffix(),
      {number});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<Worksheet>();
  }
  const QVariantList& v = *row.value();
  return std::optional<Worksheet>(Worksheet{v.at(0).toString(), v.at(1).toString(), v.at(2).toString(),
                                            v.at(3).toLongLong(), v.at(4).toString(), v.at(5).toString(),
                                            v.at(6).toString(), v.at(7).toString(), SqlDialect::dayFromValue(v.at(8)),
                                            v.at(9).toLongLong()});
}

Outcome answer(const Context& context, const QString& refundNumber) {
  Result<RecordSet> set = worksheetSection(context.sql, refundNumber);
  if (!set) {
    return refuse(set.error());
  }
  Sections sections;
  sections.insert(worksheetBuilder().sectionName(), std::move(set.value()));
  return sections;
}

// --- preparing: read, check, apply ------------------------------------------------------------------------

Result<std::optional<IssuedNumber>> readIssuedNumber(const Sql& sql, const QString& number) {
  using R = Result<std::optional<IssuedNumber>>;
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT OFFICER_ID, USED_IND FROM NBR_ISSUED WHERE NBR_TYP_CD = ? AND NBR = ?") +
          sql.dialect().lockRowsSuffix(),
      {kRefundNumbers, number});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<IssuedNumber>();
  }
  return std::optional<IssuedNumber>(IssuedNumber{row.value()->at(0).toString(), row.value()->at(1).toString() == u"Y"});
}

// What the host holds about the number and the receipt the record names; the issued number and the receipt
// stay locked for the rest of the save. What the record leaves out is not read (checkPrepare refuses it).
Result<PrepareFacts> readPrepareFacts(const Sql& sql, const RecordReader& r, const QString& number,
                                      std::optional<Worksheet> existing) {
  using R = Result<PrepareFacts>;
  PrepareFacts facts;
  facts.existing = std::move(existing);
  Result<std::optional<IssuedNumber>> issued = readIssuedNumber(sql, number);
  if (!issued) {
    return R::failure(issued.error());
  }
  facts.issued = issued.value();
  const QString customer = r.code(QStringLiteral("CUST_ID"));
  const std::optional<QString> receiptNumber = parseReceiptNumber(r.text(QStringLiteral("RCPT_NBR")));
  if (customer.isEmpty() || !receiptNumber) {
    return facts;
  }
  Result<std::optional<Receipt>> receipt = readReceipt(sql, *receiptNumber, true);
  if (!receipt) {
    return R::failure(receipt.error());
  }
  facts.receipt = receipt.value();
  if (facts.receipt) {
    Result<qint64> open = openExcess(sql, *receiptNumber, customer);
    if (!open) {
      return R::failure(open.error());
    }
    facts.openExcess = open.value();
  }
  return facts;
}

// Sets the excess aside ("W"), files the worksheet as prepared and marks its number used.
Result<bool> applyPrepare(const Context& context, const QString& number, const PreparedWorksheet& prepared,
                          const std::optional<Worksheet>& existing) {
  const Sql& sql = context.sql;
  AuditedWriter writer(sql, context.writeContext());
  ExcessDraw draw;
  draw.receipt = prepared.receipt;
  draw.customerId = prepared.customerId;
  draw.amount = prepared.amount;
  draw.status = QStringLiteral("W");
  draw.refundNumber = number;
  if (Result<bool> drawn = drawOpenExcess(writer, draw); !drawn) {
    return Result<bool>::failure(QStringLiteral("The refund of %1").arg(drawn.error()));
  }
  const ColumnValues values = {{QStringLiteral("RCPT_NBR"), prepared.receipt},
                               {QStringLiteral("CUST_ID"), prepared.customerId},
                               {QStringLiteral("RFND_AMT"), prepared.amount},
                               {QStringLiteral("RFND_TO_CD"), prepared.receiver},
                               {QStringLiteral("CREATED_DT"), sql.date(context.today)},
                               {QStringLiteral("CREATOR_ID"), context.officer.id},
                               {QStringLiteral("CREATED_TS"), sql.dialect().timestampValue(context.now)},
                               {QStringLiteral("DMV_CMMT_TXT"), prepared.comment},
                               {QStringLiteral("STTS_CD"), QStringLiteral("1")}};
  if (existing) {
    if (Result<bool> written = writer.update(QStringLiteral("RFND_WRKSHT"), {{QStringLiteral("RFND_NBR"), number}},
                                             values, existing->version,
                                             QStringLiteral("Refund worksheet %1").arg(number));
        !written) {
      return written;
    }
  } else {
    ColumnValues row = values;
    row.prepend({QStringLiteral("RFND_NBR"), number});
    if (Result<qint64> written = writer.insert(QStringLiteral("RFND_WRKSHT"), row, {}, {QStringLiteral("RFND_NBR")});
        !written) {
      return Result<bool>::failure(written.error());
    }
  }
  return writer.update(QStringLiteral("NBR_ISSUED"),
                       {{QStringLiteral("NBR_TYP_CD"), kRefundNumbers}, {QStringLiteral("NBR"), number}},
                       {{QStringLiteral("USED_IND"), QStringLiteral("Y")}}, std::nullopt,
                       QStringLiteral("Refund number %1").arg(number));
}

Outcome prepare(const Context& context, const RecordReader& r, const QString& number,
                std::optional<Worksheet> existing) {
  if (existing && existing->status != u"0") {
    // Refused before anything else is read or locked.
    return refuse(checkPrepare(r, number, PrepareFacts{existing, {}, {}, 0}, context.officer.id).error());
  }
  Result<PrepareFacts> facts = readPrepareFacts(context.sql, r, number, std::move(existing));
  if (!facts) {
    return refuse(facts.error());
  }
  Result<PreparedWorksheet> prepared = checkPrepare(r, number, facts.value(), context.officer.id);
  if (!prepared) {
    return refuse(prepared.error());
  }
  if (Result<bool> applied = applyPrepare(context, number, prepared.value(), facts->existing); !applied) {
    return refuse(applied.error());
  }
  return answer(context, number);
}

// --- the later steps and void: apply ------------------------------------------------------------------------

// Writes the step, and moves the excess the worksheet set aside: released after a void, settled before the
// refund or transfer is recorded.
Result<bool> applyStep(const Context& context, const Worksheet& worksheet, const WorksheetChange& change) {
  const Sql& sql = context.sql;
  AuditedWriter writer(sql, context.writeContext());
  ColumnValues columns = {{QStringLiteral("STTS_CD"), change.next}};
  for (const auto& [column, text] : change.texts) {
    columns.append({column, text});
  }
  for (const auto& [column, day] : change.days) {
    columns.append({column, sql.date(day)});
  }
  // When the step was taken: the host's clock, never the desk's.
  if (!change.timeColumn.isEmpty()) {
    columns.append({change.timeColumn, sql.dialect().timestampValue(context.now)});
  }
  const auto moveExcessHeld = [&] {
    return moveExcess(writer, worksheet.receipt, QStringLiteral("W"), worksheet.number, change.excessTo,
                      change.releasesExcess());
  };
  if (!change.excessTo.isEmpty() && !change.releasesExcess()) {
    if (Result<int> settled = moveExcessHeld(); !settled) {
      return Result<bool>::failure(settled.error());
    }
  }
  if (Result<bool> written = writer.update(QStringLiteral("RFND_WRKSHT"), {{QStringLiteral("RFND_NBR"), worksheet.number}},
                                           columns, worksheet.version,
                                           QStringLiteral("Refund worksheet %1").arg(worksheet.number));
      !written) {
    return written;
  }
  if (change.releasesExcess()) {
    if (Result<int> released = moveExcessHeld(); !released) {
      return Result<bool>::failure(released.error());
    }
  }
  return true;
}

// --- reading a save ---------------------------------------------------------------------------------------------

// The one REFUND record of a save, from an officer who may work on worksheets.
Result<const messaging::SaveRecord*> readSaveRecord(const Context& context) {
  using R = Result<const messaging::SaveRecord*>;
  if (const QString problem = checkParams(context.request, QStringLiteral("The refund worksheet save"), {});
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  for (const auto& list : context.request.records) {
    if (list.name != saverecords::Refund && hasRecords(context.request, list.name)) {
      return R::failure(QStringLiteral("The refund worksheet save does not take %1 records.").arg(list.name));
    }
  }
  const messaging::RecordList* list = context.request.recordList(saverecords::Refund);
  if (!list || list->records.size() != 1) {
    return R::failure(QStringLiteral("A refund worksheet save carries exactly one REFUND record."));
  }
  if (!context.officer.has(rights::CreateRefund)) {
    return R::failure(
        missingRightText(context.officer, rights::CreateRefund, QStringLiteral("work on refund worksheets")));
  }
  return &list->records.first();
}

}  // namespace

Outcome worksheetInquiry(const Context& context) {
  const QString kind = QStringLiteral("The refund worksheet inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::CustId, params::RefundNbr});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString typed = context.param(params::RefundNbr);
  const std::optional<QString> number = refundNumberOf(typed);
  if (!number) {
    return refuse(QStringLiteral("\"%1\" is not a refund number.").arg(typed));
  }
  Result<RecordSet> set = worksheetSection(context.sql, *number);
  if (!set) {
    return refuse(set.error());
  }
  const QString customer = context.param(params::CustId).toUpper();
  if (set->recordCount() == 0 || set->valueAt(0, QStringLiteral("CUST_ID")).toString() != customer) {
    return refuse(QStringLiteral("Refund worksheet %1 of customer %2 was not found.").arg(*number, customer));
  }
  Sections sections;
  sections.insert(worksheetBuilder().sectionName(), std::move(set.value()));
  return sections;
}

Outcome saveWorksheet(const Context& context) {
  Result<const messaging::SaveRecord*> record = readSaveRecord(context);
  if (!record) {
    return refuse(record.error());
  }
  const RecordReader r(*record.value(), saverecords::Refund);
  if (r.isBlank(QStringLiteral("RFND_NBR"))) {
    return refuse(QStringLiteral("The Refund Number can not be found"));
  }
  const std::optional<QString> number = refundNumberOf(r.text(QStringLiteral("RFND_NBR")));
  if (!number) {
    return refuse(QStringLiteral("The Refund Number has not been generated"));
  }
  Result<std::optional<Worksheet>> read = readWorksheet(context.sql, *number);
  if (!read) {
    return refuse(read.error());
  }
  const QString action = r.code(QStringLiteral("ACTION"));
  if (action == u"ADD") {
    return prepare(context, r, *number, read.value());
  }
  if (action != u"UPD") {
    return refuse(r.refusal(QStringLiteral("ACTION must be ADD or UPD")));
  }
  if (!read.value()) {
    return refuse(QStringLiteral("Refund worksheet %1 was not found.").arg(*number));
  }
  const Worksheet& worksheet = *read.value();
  Result<WorksheetChange> change =
      checkStep(worksheet, r, StepContext{context.officer.id, context.today, context.duties});
  if (!change) {
    return refuse(change.error());
  }
  if (Result<bool> applied = applyStep(context, worksheet, change.value()); !applied) {
    return refuse(applied.error());
  }
  return answer(context, worksheet.number);
}

}  // namespace adjustacc::host
