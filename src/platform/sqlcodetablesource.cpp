#include "sqlcodetablesource.h"

#include "codetablequery.h"

#include "messaging/sqldialect.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <optional>
#include <utility>

namespace adjustacc::platform {

namespace {

QString orderClause(const CodeTableQuery& query) {
  QString column = QStringLiteral("CD_TBL_CD");
  if (query.orderBy == CodeTableQuery::OrderBy::Description) {
    column = QStringLiteral("CD_TBL_DES");
  } else if (query.orderBy == CodeTableQuery::OrderBy::TableId) {
    column = QStringLiteral("CD_TBL_ID");
  }
  return QStringLiteral(" ORDER BY ") + column + (query.descending ? QStringLiteral(" DESC") : QString());
}

}  // namespace

SqlCodeTableSource::SqlCodeTableSource(QString connectionName, const Clock& clock)
    : m_connectionName(std::move(connectionName)), m_clock(clock) {}

messaging::Result<messaging::RecordSet> SqlCodeTableSource::run(const QString& queryText) {
  using R = messaging::Result<messaging::RecordSet>;
  const messaging::Result<CodeTableQuery> query = CodeTableQuery::parse(queryText);
  if (!query) {
    return R::failure(query.error());
  }
  QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
  if (!db.isValid() || !db.isOpen()) {
    return R::failure(QStringLiteral("The code tables cannot be read: database connection \"%1\" is not open")
                          .arg(m_connectionName));
  }
  const std::optional<messaging::SqlDialect> dialect = messaging::SqlDialect::of(db);
  if (!dialect) {
    return R::failure(
        QStringLiteral("The code tables cannot be read through the database driver \"%1\" (QSQLITE or QPSQL expected)")
            .arg(db.driverName()));
  }

  QSqlQuery sql(db);
  sql.setForwardOnly(true);
  const QString statement =
      QStringLiteral("SELECT CD_TBL_ID, CD_TBL_CD, CD_TBL_DES FROM QVR_CODE WHERE REGION = ? AND CD_TBL_ID = ? "
                     "AND ((EFCTV_DT <= ? AND END_DT IS NULL) OR (EFCTV_DT <= ? AND END_DT >= ?))") +
      orderClause(query.value());
  if (!sql.prepare(statement)) {
    return R::failure(QStringLiteral("The code tables cannot be read: %1").arg(sql.lastError().text()));
  }
  const QDate today = m_clock.today();
  sql.addBindValue(query->region);
  sql.addBindValue(query->table);
  for (const std::optional<QDate>& date : query->dates) {
    sql.addBindValue(dialect->dateValue(date.value_or(today)));
  }
  if (!sql.exec()) {
    return R::failure(QStringLiteral("The code tables cannot be read: %1").arg(sql.lastError().text()));
  }

  using messaging::Field;
  using messaging::FieldType;
  messaging::RecordSet rows(QList<Field>{{QStringLiteral("CD_TBL_ID"), FieldType::Text},
                                         {QStringLiteral("CD_TBL_CD"), FieldType::Text},
                                         {QStringLiteral("CD_TBL_DES"), FieldType::Text}});
  while (sql.next()) {
    QList<QVariant> values;
    values.reserve(3);
    for (int i = 0; i < 3; ++i) {
      values.append(sql.isNull(i) ? QVariant() : QVariant(sql.value(i).toString()));
    }
    rows.addNew(values);
  }
  if (sql.lastError().isValid()) {
    return R::failure(QStringLiteral("The code tables cannot be read: %1").arg(sql.lastError().text()));
  }
  rows.moveFirst();
  return rows;
}

}  // namespace adjustacc::platform
