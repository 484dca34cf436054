// Refund worksheets: one refund of excess funds carried officer by officer through its steps
//   "0" new -> "1" prepared -> "2" verified -> "3" approved -> "4" refunded -> "5" mailed,
//   or "3" -> "T" transferred; and void ("V") from any step up to approval.
// The excess refunded is set aside ("W") when the worksheet is prepared, released when it is voided, and
// marked refunded or transferred with the refund step.
#include "excessfunds.h"
#include "handlers.h"
#include "numbers.h"
#include "requestcheck.h"

#include "messaging/formnumber.h"

#include <QHash>

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

const SectionBuilder& worksheetBuilder() {
  static const SectionBuilder builder(
      sectionnames::Refund,
      {{u"RCPT_NBR"}, {u"CUST_ID"}, {u"RFND_NBR"}, {u"RFND_AMT", Cell::Money}, {u"TO"}, {u"DT_MLD", Cell::Day},
       {u"CREATED_DT", Cell::Day}, {u"CREATOR_ID"}, {u"VERIFY_ID"}, {u"APPROVE_ID"}, {u"RFND_BY_ID"}, {u"VOID_ID"},
       {u"DMV_CMMT_TXT"}, {u"FISCAL_CMMT_TXT"}, {u"RFND_CD"}, {u"WRNT_NBR"}, {u"RFND_DT", Cell::Day}, {u"STTS_CD"},
       {u"CUST_NM"}, {u"ADDR_1"}, {u"ADDR_2"}, {u"CITY"}, {u"STATE"}, {u"ZIP"}, {u"ROW_VRSN_NBR"}});
  return builder;
}

Result<RecordSet> worksheetSection(const Sql& sql, const QString& refundNumber) {
  return worksheetBuilder().run(
      sql,
      QStringLiteral("SELECT w.RCPT_NBR, w.CUST_ID, w.RFND_NBR, w.RFND_AMT, w.RFND_TO_CD, w.DT_MLD, w.CREATED_DT, "
                     "w.CREATOR_ID, w.VERIFY_ID, w.APPROVE_ID, w.RFND_BY_ID, w.VOID_ID, w.DMV_CMMT_TXT, "
                     "w.FISCAL_CMMT_TXT, w.RFND_CD, w.WRNT_NBR, w.RFND_DT, w.STTS_CD, c.CUST_NM, c.ADDR_1, c.ADDR_2, "
                     "c.CITY, c.STATE, c.ZIP, w.ROW_VRSN_NBR FROM RFND_WRKSHT w JOIN CUSTOMER c ON c.CUST_ID = w.CUST_ID "
                     "WHERE w.RFND_NBR = ?"),
      {refundNumber});
}

// A refund number as the screens hold it: up to seven digits, or the "NNNNNNN-D" the number service gave.
std::optional<QString> refundNumberOf(const QString& text) {
  const std::optional<AccountNumber> number = parseAccountNumber(text);
  if (!number || number->digits == u"0000000") {
    return std::nullopt;
  }
  if (!number->checkDigit.isEmpty()) {
    const std::optional<int> digit = messaging::formCheckDigit(number->digits);
    if (!digit || QString::number(*digit) != number->checkDigit) {
      return std::nullopt;
    }
  }
  return number->digits;
}

struct Worksheet {
  QString number;
  QString receipt;
  QString customerId;
  qint64 amount = 0;
  QString status;
  QString creator;
  QString verifier;
  QString approver;
  QDate refundDate;
  qint64 version = 0;
};

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

QString statusName(const QString& code) {
  static const QHash<QString, QString> names = {
      {QStringLiteral("0"), QStringLiteral("NEW")},      {QStringLiteral("1"), QStringLiteral("PREPARED")},
      {QStringLiteral("2"), QStringLiteral("VERIFIED")}, {QStringLiteral("3"), QStringLiteral("APPROVED")},
      {QStringLiteral("4"), QStringLiteral("REFUNDED")}, {QStringLiteral("5"), QStringLiteral("MAILED")},
      {QStringLiteral("T"), QStringLiteral("TRANSFERRED")}, {QStringLiteral("V"), QStringLiteral("VOIDED")}};
  return names.value(code, code);
}

// The step that leads to `next`, and the status it starts from.
QString previousStatus(const QString& next) {
  if (next == u"2") return QStringLiteral("1");
  if (next == u"3") return QStringLiteral("2");
  if (next == u"4" || next == u"T") return QStringLiteral("3");
  if (next == u"5") return QStringLiteral("4");
  return {};
}

bool sameOfficer(const QString& a, const QString& b) {
  return !a.trimmed().isEmpty() && a.trimmed().compare(b.trimmed(), Qt::CaseInsensitive) == 0;
}

// The officer field of a step must name the signed-on officer: nobody records a step in another's name.
QString officerFieldProblem(const Context& context, const RecordReader& r, const QString& field,
                            const QString& stepMessage) {
  const QString named = r.text(field);
  if (named.isEmpty()) {
    return stepMessage;
  }
  if (!sameOfficer(named, context.officer.id)) {
    return r.refusal(QStringLiteral("%1 names %2, but the signed-on officer is %3").arg(field, named, context.officer.id));
  }
  return {};
}

Result<QString> receiverOf(const RecordReader& r, bool required) {
  const QString to = r.text(QStringLiteral("TO"));
  if (to.isEmpty()) {
    return required ? Result<QString>::failure(QStringLiteral("Please select who receives the refund when issued"))
                    : Result<QString>(QString());
  }
  if (to != u"1" && to != u"2" && to != u"3") {
    return Result<QString>::failure(r.refusal(QStringLiteral("TO must be 1 (taxpayer), 2 (division) or 3 (other)")));
  }
  return to;
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

Outcome prepare(const Context& context, const RecordReader& r, const QString& number,
                const std::optional<Worksheet>& existing) {
  const Sql& sql = context.sql;
  if (existing && existing->status != u"0") {
    return refuse(QStringLiteral("Refund worksheet %1 already exists (status %2).").arg(number, statusName(existing->status)));
  }
  if (r.code(QStringLiteral("STTS_CD")) != u"1") {
    return refuse(r.refusal(QStringLiteral("a new worksheet is saved as prepared (STTS_CD 1)")));
  }
  Result<std::optional<QVariantList>> issued = sql.firstRow(
      QStringLiteral("SELECT USED_IND FROM NBR_ISSUED WHERE NBR_TYP_CD = 'F' AND NBR = ?") + sql.dialect().lockRowsSuffix(),
      {number});
  if (!issued) {
    return refuse(issued.error());
  }
  if (!issued.value()) {
    return refuse(QStringLiteral("Refund number %1 was not given out by the host; ask for a new refund number.").arg(number));
  }
  if (!existing && issued.value()->first().toString() == u"Y") {
    return refuse(QStringLiteral("Refund number %1 is already used by another worksheet.").arg(number));
  }
  const QString customer = r.code(QStringLiteral("CUST_ID"));
  if (customer.isEmpty()) {
    return refuse(QStringLiteral("The Customer ID can not be found"));
  }
  const std::optional<QString> receiptNumber = parseReceiptNumber(r.text(QStringLiteral("RCPT_NBR")));
  if (!receiptNumber) {
    return refuse(r.refusal(QStringLiteral("RCPT_NBR (the receipt whose excess is refunded) is required")));
  }
  Result<std::optional<Receipt>> receipt = readReceipt(sql, *receiptNumber, true);
  if (!receipt) {
    return refuse(receipt.error());
  }
  if (!receipt.value()) {
    return refuse(QStringLiteral("Receipt %1 was not found.").arg(*receiptNumber));
  }
  if (receipt.value()->status != u"O") {
    return refuse(QStringLiteral("Receipt %1 is backed out or canceled; its excess can not be refunded.").arg(*receiptNumber));
  }
  if (!receipt.value()->isConfirmed()) {
    return refuse(QStringLiteral("Excess Funds that are not Confirmed can not be Refunded"));
  }
  Result<std::optional<qint64>> amount = r.cents(QStringLiteral("RFND_AMT"));
  if (!amount) {
    return refuse(amount.error());
  }
  if (!amount.value() || *amount.value() <= 0) {
    return refuse(r.refusal(QStringLiteral("RFND_AMT (the refund amount) must be above $0.00")));
  }
  Result<QString> to = receiverOf(r, true);
  if (!to) {
    return refuse(to.error());
  }
  const QString comment = r.text(QStringLiteral("DMV_CMMT_TXT"));
  if (comment.isEmpty()) {
    return refuse(QStringLiteral("The comment field is required by DMV HQ personnel"));
  }
  if (const QString problem =
          officerFieldProblem(context, r, QStringLiteral("CREATOR_ID"),
                              QStringLiteral("When preparing a refund, the officer preparing the refund must be displayed."));
      !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<qint64> open = openExcess(sql, *receiptNumber, customer);
  if (!open) {
    return refuse(open.error());
  }
  if (open.value() == 0) {
    return refuse(QStringLiteral("Excess Fund status must be OPEN to create refund"));
  }
  AuditedWriter writer(sql, context.writeContext());
  ExcessDraw draw;
  draw.receipt = *receiptNumber;
  draw.customerId = customer;
  draw.amount = *amount.value();
  draw.status = QStringLiteral("W");
  draw.refundNumber = number;
  if (Result<bool> drawn = drawOpenExcess(writer, draw); !drawn) {
    return refuse(QStringLiteral("The refund of %1").arg(drawn.error()));
  }
  const ColumnValues values = {{QStringLiteral("RCPT_NBR"), *receiptNumber},
                               {QStringLiteral("CUST_ID"), customer},
                               {QStringLiteral("RFND_AMT"), *amount.value()},
                               {QStringLiteral("RFND_TO_CD"), to.value()},
                               {QStringLiteral("CREATED_DT"), sql.date(context.today)},
                               {QStringLiteral("CREATOR_ID"), context.officer.id},
                               {QStringLiteral("DMV_CMMT_TXT"), comment},
                               {QStringLiteral("STTS_CD"), QStringLiteral("1")}};
  if (existing) {
    if (Result<bool> written = writer.update(QStringLiteral("RFND_WRKSHT"), {{QStringLiteral("RFND_NBR"), number}},
                                             values, existing->version,
                                             QStringLiteral("Refund worksheet %1").arg(number));
        !written) {
      return refuse(written.error());
    }
  } else {
    ColumnValues row = values;
    row.prepend({QStringLiteral("RFND_NBR"), number});
    if (Result<qint64> written = writer.insert(QStringLiteral("RFND_WRKSHT"), row, {}, {QStringLiteral("RFND_NBR")});
        !written) {
      return refuse(written.error());
    }
  }
  if (Result<bool> used = writer.update(QStringLiteral("NBR_ISSUED"),
                                        {{QStringLiteral("NBR_TYP_CD"), kRefundNumbers}, {QStringLiteral("NBR"), number}},
                                        {{QStringLiteral("USED_IND"), QStringLiteral("Y")}}, std::nullopt,
                                        QStringLiteral("Refund number %1").arg(number));
      !used) {
    return refuse(used.error());
  }
  return answer(context, number);
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
  const Sql& sql = context.sql;
  if (const QString problem = checkParams(context.request, QStringLiteral("The refund worksheet save"), {});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  for (const auto& list : context.request.records) {
    if (list.name != saverecords::Refund && hasRecords(context.request, list.name)) {
      return refuse(QStringLiteral("The refund worksheet save does not take %1 records.").arg(list.name));
    }
  }
  const messaging::RecordList* list = context.request.recordList(saverecords::Refund);
  if (!list || list->records.size() != 1) {
    return refuse(QStringLiteral("A refund worksheet save carries exactly one REFUND record."));
  }
  if (!context.officer.has(rights::CreateRefund)) {
    return refuse(missingRightText(context.officer, rights::CreateRefund, QStringLiteral("work on refund worksheets")));
  }
  const RecordReader r(list->records.first(), saverecords::Refund);
  const std::optional<QString> number = refundNumberOf(r.text(QStringLiteral("RFND_NBR")));
  if (r.isBlank(QStringLiteral("RFND_NBR"))) {
    return refuse(QStringLiteral("The Refund Number can not be found"));
  }
  if (!number) {
    return refuse(QStringLiteral("The Refund Number has not been generated"));
  }
  Result<std::optional<Worksheet>> read = readWorksheet(sql, *number);
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
  const Worksheet worksheet = *read.value();
  const QString what = QStringLiteral("Refund worksheet %1").arg(worksheet.number);
  Result<qint64> version = r.rowVersion(QStringLiteral("refund worksheet"));
  if (!version) {
    return refuse(version.error());
  }
  if (version.value() != worksheet.version) {
    return refuse(changedSinceReadText(what));
  }
  if ((!r.isBlank(QStringLiteral("CUST_ID")) && r.code(QStringLiteral("CUST_ID")) != worksheet.customerId) ||
      (!r.isBlank(QStringLiteral("RCPT_NBR")) && r.code(QStringLiteral("RCPT_NBR")) != worksheet.receipt)) {
    return refuse(r.refusal(QStringLiteral("the customer or receipt is not that of refund worksheet %1").arg(worksheet.number)));
  }
  const QString next = r.code(QStringLiteral("STTS_CD"));
  if (worksheet.status == u"4" || worksheet.status == u"5" || worksheet.status == u"T" || worksheet.status == u"V") {
    if (next == u"V" || worksheet.status != u"4" || next != u"5") {
      return refuse(QStringLiteral("The following transaction can not be voided or saved: a Voided/Transferred/Refunded "
                                   "Worksheet"));
    }
  }
  AuditedWriter writer(sql, context.writeContext());
  if (next == u"V") {
    if (const QString problem = officerFieldProblem(context, r, QStringLiteral("VOID_ID"),
                                                    r.refusal(QStringLiteral("VOID_ID (the officer voiding) is required")));
        !problem.isEmpty()) {
      return refuse(problem);
    }
    if (Result<bool> voided = writer.update(QStringLiteral("RFND_WRKSHT"), {{QStringLiteral("RFND_NBR"), worksheet.number}},
                                            {{QStringLiteral("STTS_CD"), QStringLiteral("V")},
                                             {QStringLiteral("VOID_ID"), context.officer.id}},
                                            worksheet.version, what);
        !voided) {
      return refuse(voided.error());
    }
    if (Result<int> released =
            moveExcess(writer, worksheet.receipt, QStringLiteral("W"), worksheet.number, QStringLiteral("O"), true);
        !released) {
      return refuse(released.error());
    }
    return answer(context, worksheet.number);
  }
  const QString from = previousStatus(next);
  if (from.isEmpty() || from != worksheet.status) {
    return refuse(QStringLiteral("Refund worksheet %1 is %2; it can not be moved to %3.")
                      .arg(worksheet.number, statusName(worksheet.status), next.isEmpty() ? QStringLiteral("(no status)")
                                                                                           : statusName(next)));
  }
  ColumnValues changes = {{QStringLiteral("STTS_CD"), next}};
  // Who receives the refund and the headquarters comment may still be corrected up to approval.
  if (next == u"2" || next == u"3") {
    Result<QString> to = receiverOf(r, false);
    if (!to) {
      return refuse(to.error());
    }
    if (!to.value().isEmpty()) {
      changes.append({QStringLiteral("RFND_TO_CD"), to.value()});
    }
    if (r.code(QStringLiteral("DMV_CMMT_TXT")).isEmpty() && r.isPresent(QStringLiteral("DMV_CMMT_TXT"))) {
      return refuse(QStringLiteral("The comment field is required by DMV HQ personnel"));
    }
    if (!r.isBlank(QStringLiteral("DMV_CMMT_TXT"))) {
      changes.append({QStringLiteral("DMV_CMMT_TXT"), r.text(QStringLiteral("DMV_CMMT_TXT"))});
    }
  }
  if (next == u"2") {
    if (const QString problem = officerFieldProblem(
            context, r, QStringLiteral("VERIFY_ID"),
            QStringLiteral("When verifying a refund, the officer verifying the refund must be displayed."));
        !problem.isEmpty()) {
      return refuse(problem);
    }
    if (sameOfficer(worksheet.creator, context.officer.id)) {
      return refuse(QStringLiteral("The person preparing and verifying the Refund Worksheet can not be the same."));
    }
    changes.append({QStringLiteral("VERIFY_ID"), context.officer.id});
  } else if (next == u"3") {
    if (const QString problem = officerFieldProblem(
            context, r, QStringLiteral("APPROVE_ID"),
            QStringLiteral("When approving a refund, the officer approving the refund must be displayed."));
        !problem.isEmpty()) {
      return refuse(problem);
    }
    if (sameOfficer(worksheet.verifier, context.officer.id)) {
      return refuse(QStringLiteral("The person verifying and approving the Refund Worksheet can not be the same."));
    }
    changes.append({QStringLiteral("APPROVE_ID"), context.officer.id});
  } else if (next == u"4" || next == u"T") {
    if (const QString problem = officerFieldProblem(
            context, r, QStringLiteral("RFND_BY_ID"),
            QStringLiteral("When refunding an excess fund, the officer refunding the excess fund must be displayed."));
        !problem.isEmpty()) {
      return refuse(problem);
    }
    const QString code = r.code(QStringLiteral("RFND_CD"));
    if (code != (next == u"4" ? u"1" : u"0")) {
      return refuse(QStringLiteral("Please select Transferred or Refunded"));
    }
    changes.append({QStringLiteral("RFND_BY_ID"), context.officer.id});
    changes.append({QStringLiteral("RFND_CD"), code});
    const QString fiscal = r.text(QStringLiteral("FISCAL_CMMT_TXT"));
    if (!fiscal.isEmpty()) {
      changes.append({QStringLiteral("FISCAL_CMMT_TXT"), fiscal});
    }
    if (next == u"T") {
      if (fiscal.isEmpty()) {
        return refuse(QStringLiteral("Please enter the Refund Description, when Tranferring the excess funds"));
      }
    } else {
      const QString warrant = r.text(QStringLiteral("WRNT_NBR"));
      if (warrant.isEmpty()) {
        return refuse(QStringLiteral("Please enter the Warrant Number, when Refunding the worksheet"));
      }
      Result<QDate> refunded = r.requiredDay(QStringLiteral("RFND_DT"), QStringLiteral("the refund date"));
      if (!refunded) {
        return refuse(refunded.error());
      }
      if (refunded.value() > context.today) {
        return refuse(QStringLiteral("Refund Date must be current or before"));
      }
      changes.append({QStringLiteral("WRNT_NBR"), warrant});
      changes.append({QStringLiteral("RFND_DT"), sql.date(refunded.value())});
    }
    if (Result<int> settled = moveExcess(writer, worksheet.receipt, QStringLiteral("W"), worksheet.number,
                                         next == u"4" ? QStringLiteral("R") : QStringLiteral("T"), false);
        !settled) {
      return refuse(settled.error());
    }
  } else if (next == u"5") {
    Result<QDate> mailed = r.requiredDay(QStringLiteral("DT_MLD"), QStringLiteral("the date mailed"));
    if (!mailed) {
      return refuse(mailed.error());
    }
    if (mailed.value() > context.today) {
      return refuse(QStringLiteral("Mail Date must be current or before"));
    }
    if (worksheet.refundDate.isValid() && mailed.value() < worksheet.refundDate) {
      return refuse(QStringLiteral("Mail Date must be greater than or equal to the Refund Date"));
    }
    changes.append({QStringLiteral("DT_MLD"), sql.date(mailed.value())});
  }
  if (Result<bool> written = writer.update(QStringLiteral("RFND_WRKSHT"), {{QStringLiteral("RFND_NBR"), worksheet.number}},
                                           changes, worksheet.version, what);
      !written) {
    return refuse(written.error());
  }
  return answer(context, worksheet.number);
}

}  // namespace adjustacc::host
