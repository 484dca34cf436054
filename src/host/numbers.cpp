#include "numbers.h"

#include "handlers.h"
#include "requestcheck.h"

#include "messaging/formnumber.h"

namespace adjustacc::host {

using messaging::Result;

Result<std::optional<qint64>> takeNumber(AuditedWriter& writer, const QString& series) {
  using R = Result<std::optional<qint64>>;
  const Sql& sql = writer.sql();
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT NEXT_NBR, LAST_NBR, ISSUE_IND FROM NBR_SEQ WHERE NBR_TYP_CD = ?") +
          sql.dialect().lockRowsSuffix(),
      {series});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return R::failure(QStringLiteral("The host keeps no number series \"%1\".").arg(series));
  }
  const qint64 next = row.value()->at(0).toLongLong();
  const qint64 last = row.value()->at(1).toLongLong();
  if (row.value()->at(2).toString() != u"Y" || next > last) {
    return std::optional<qint64>();
  }
  Result<bool> advanced = writer.update(QStringLiteral("NBR_SEQ"), {{QStringLiteral("NBR_TYP_CD"), series}},
                                        {{QStringLiteral("NEXT_NBR"), next + 1}}, std::nullopt,
                                        QStringLiteral("Number series %1").arg(series));
  if (!advanced) {
    return R::failure(advanced.error());
  }
  return std::optional<qint64>(next);
}

std::optional<SeriesRight> rightToTakeNumber(const QString& series) {
  // Refund numbers, and warrant numbers which only the refund step uses, go to officers who work on refund
  // worksheets.
  if (series == kRefundNumbers || series == kWarrantNumbers) {
    return SeriesRight{rights::CreateRefund, series == kRefundNumbers ? QStringLiteral("be given refund numbers")
                                                                      : QStringLiteral("be given warrant numbers")};
  }
  return std::nullopt;
}

Outcome issueNumber(const Context& context) {
  static const SectionBuilder builder(sectionnames::GetFormNumber, {{u"U"}});
  const QString kind = QStringLiteral("The number request");
  if (const QString problem = checkParams(context.request, kind, {params::NbrTypCd}); !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString series = context.param(params::NbrTypCd).toUpper();
  Result<std::optional<QVariantList>> known =
      context.sql.firstRow(QStringLiteral("SELECT PUBLIC_IND FROM NBR_SEQ WHERE NBR_TYP_CD = ?"), {series});
  if (!known) {
    return refuse(known.error());
  }
  if (!known.value() || known.value()->at(0).toString() != u"Y") {
    return refuse(QStringLiteral("Number type \"%1\" is not one the host hands out.").arg(series));
  }
  // Refused before a number is taken: a number given to an officer who may not use it is lost to the series.
  if (const std::optional<SeriesRight> needed = rightToTakeNumber(series); needed && !context.officer.has(needed->right)) {
    return refuse(missingRightText(context.officer, needed->right, needed->purpose));
  }
  AuditedWriter writer(context.sql, context.writeContext());
  Result<std::optional<qint64>> number = takeNumber(writer, series);
  if (!number) {
    return refuse(number.error());
  }
  QString text = messaging::formNumberPlaceholder();
  if (number.value()) {
    Result<QString> formatted = messaging::makeFormNumber(*number.value());
    if (!formatted) {
      return refuse(formatted.error());
    }
    text = formatted.value();
    Result<qint64> issued = writer.insert(
        QStringLiteral("NBR_ISSUED"),
        {{QStringLiteral("NBR_TYP_CD"), series},
         {QStringLiteral("NBR"), text.left(messaging::kFormNumberDigits)},
         {QStringLiteral("OFFICER_ID"), context.officer.id},
         {QStringLiteral("REQUEST_ID"), context.request.requestId},
         {QStringLiteral("ISSUED_TS"), context.sql.dialect().timestampValue(context.now)},
         {QStringLiteral("USED_IND"), QStringLiteral("N")}},
        {}, {QStringLiteral("NBR_TYP_CD"), QStringLiteral("NBR")});
    if (!issued) {
      return refuse(issued.error());
    }
  }
  messaging::RecordSet set = builder.empty();
  set.addNew({text});
  set.moveFirst();
  Sections sections;
  sections.insert(builder.sectionName(), set);
  return sections;
}

}  // namespace adjustacc::host
