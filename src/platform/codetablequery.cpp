#include "codetablequery.h"

#include "datetimes.h"

#include <QRegularExpression>

namespace adjustacc::platform {

namespace {

const QRegularExpression& queryExpression() {
  // \s* wherever the texts may run words together; \s+ only where two words would otherwise merge.
  static const QString date = QStringLiteral(R"((#[^#']{1,20}#|date\s*\(\s*\)))");
  static const QString value = QStringLiteral(R"([A-Za-z0-9 _-])");
  static const QRegularExpression expression(
      QStringLiteral(R"(^\s*select\s+cd_tbl_id\s*,\s*cd_tbl_cd\s*,\s*cd_tbl_des\s+from\s+qvr_code\s+where\s+)"
                     R"(region\s*=\s*'()") + value + QStringLiteral(R"(*)'\s*and\s*\(\s*)") +
          QStringLiteral(R"(cd_tbl_id\s*=\s*'()") + value + QStringLiteral(R"(+)'\s*and\s*\(\s*\(\s*)") +
          QStringLiteral(R"(efctv_dt\s*<=\s*)") + date +
          QStringLiteral(R"(\s*and\s*\(\s*end_dt\s*\)\s*is\s+null\s*\)\s*)") +
          QStringLiteral(R"(or\s*\(\s*efctv_dt\s*<=\s*)") + date + QStringLiteral(R"(\s*and\s*end_dt\s*>=\s*)") + date +
          QStringLiteral(R"(\s*\)\s*\)\s*\))") +
          QStringLiteral(R"((?:\s*order\s+by\s+(cd_tbl_des|cd_tbl_cd|cd_tbl_id)(?:\s+(asc|desc))?)?\s*$)"),
      QRegularExpression::CaseInsensitiveOption);
  return expression;
}

}  // namespace

messaging::Result<CodeTableQuery> CodeTableQuery::parse(QStringView text) {
  using R = messaging::Result<CodeTableQuery>;
  if (text.size() > kMaxTextLength) {
    return R::failure(
        QStringLiteral("The code-table query is refused: it is longer than %1 characters").arg(kMaxTextLength));
  }
  const QRegularExpressionMatch m = queryExpression().match(text);
  if (!m.hasMatch()) {
    return R::failure(QStringLiteral("The code-table query is refused: it is not a code-table query of a known form "
                                     "(or a quoted value holds characters other than letters, digits, blanks, "
                                     "\"-\" and \"_\"): %1")
                          .arg(text));
  }
  CodeTableQuery query;
  query.region = m.captured(1);
  query.table = m.captured(2);
  for (int i = 0; i < 3; ++i) {
    const QStringView operand = m.capturedView(3 + i);
    if (!operand.startsWith(u'#')) {
      continue;  // date(): today
    }
    const messaging::Result<QDate> date = parseAnyDate(operand.sliced(1, operand.size() - 2));
    if (!date) {
      return R::failure(QStringLiteral("The code-table query is refused: %1").arg(date.error()));
    }
    query.dates[static_cast<std::size_t>(i)] = date.value();
  }
  const QString order = m.captured(6).toUpper();
  if (order == u"CD_TBL_DES") {
    query.orderBy = OrderBy::Description;
  } else if (order == u"CD_TBL_CD") {
    query.orderBy = OrderBy::Code;
  } else if (order == u"CD_TBL_ID") {
    query.orderBy = OrderBy::TableId;
  }
  query.descending = m.captured(7).compare(u"desc", Qt::CaseInsensitive) == 0;
  return query;
}

}  // namespace adjustacc::platform
