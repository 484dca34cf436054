#include "sqlutil.h"

#include <QSqlError>
#include <QSqlRecord>

namespace adjustacc::host {

using messaging::Result;

QString databaseFailureText(const QSqlQuery& query) {
  const QSqlError error = query.lastError();
  QString text = error.databaseText().trimmed();
  if (text.isEmpty()) {
    text = error.driverText().trimmed();
  }
  return QStringLiteral("The host's database refused the request: %1").arg(text);
}

Result<SqlDialect> hostDialect(const QString& driverName) {
  if (const std::optional<SqlDialect> dialect = SqlDialect::forDriver(driverName)) {
    return *dialect;
  }
  return Result<SqlDialect>::failure(
      QStringLiteral("The host runs on SQLite (QSQLITE) or PostgreSQL (QPSQL), not on \"%1\"").arg(driverName));
}

Result<Sql> Sql::onConnection(const QString& connectionName) {
  QSqlDatabase db = QSqlDatabase::database(connectionName, false);
  if (!db.isOpen()) {
    return Result<Sql>::failure(QStringLiteral("No open database connection named \"%1\"").arg(connectionName));
  }
  Result<SqlDialect> dialect = hostDialect(db.driverName());
  if (!dialect) {
    return Result<Sql>::failure(dialect.error());
  }
  return Sql(db, dialect.value());
}

Result<QSqlQuery> Sql::run(const QString& statement, const QVariantList& values) const {
  ++m_statements;
  QSqlQuery query(m_db);
  query.setForwardOnly(true);
  if (values.isEmpty()) {
    // Statements without values run as they are: PostgreSQL can not prepare BEGIN, COMMIT or DDL.
    if (!query.exec(statement)) {
      m_lastError = query.lastError();
      return Result<QSqlQuery>::failure(databaseFailureText(query));
    }
    return query;
  }
  if (!query.prepare(statement)) {
    m_lastError = query.lastError();
    return Result<QSqlQuery>::failure(databaseFailureText(query));
  }
  for (const QVariant& value : values) {
    query.addBindValue(value);
  }
  if (!query.exec()) {
    m_lastError = query.lastError();
    return Result<QSqlQuery>::failure(databaseFailureText(query));
  }
  return query;
}

Result<QSqlQuery*> Sql::runPrepared(const QString& statement, const QVariantList& values) const {
  ++m_statements;
  std::shared_ptr<QSqlQuery>& slot = (*m_prepared)[statement];
  if (!slot) {
    auto query = std::make_shared<QSqlQuery>(m_db);
    query->setForwardOnly(true);
    if (!query->prepare(statement)) {
      m_lastError = query->lastError();
      const QString failure = databaseFailureText(*query);
      m_prepared->remove(statement);
      return Result<QSqlQuery*>::failure(failure);
    }
    slot = std::move(query);
  }
  QSqlQuery* query = slot.get();
  query->finish();
  for (int i = 0; i < values.size(); ++i) {
    query->bindValue(i, values.at(i));
  }
  if (!query->exec()) {
    m_lastError = query->lastError();
    const QString failure = databaseFailureText(*query);
    // A statement that no longer runs (the connection was reopened) is prepared afresh next time.
    m_prepared->remove(statement);
    return Result<QSqlQuery*>::failure(failure);
  }
  return query;
}

Result<std::optional<QVariantList>> Sql::firstRow(const QString& statement, const QVariantList& values) const {
  using R = Result<std::optional<QVariantList>>;
  Result<QSqlQuery> query = run(statement, values);
  if (!query) {
    return R::failure(query.error());
  }
  QSqlQuery& q = query.value();
  if (!q.next()) {
    return std::optional<QVariantList>();
  }
  QVariantList row;
  const int columns = q.record().count();
  row.reserve(columns);
  for (int i = 0; i < columns; ++i) {
    row.append(q.value(i));
  }
  return std::optional<QVariantList>(std::move(row));
}

Result<qint64> Sql::scalar(const QString& statement, const QVariantList& values, qint64 fallback) const {
  Result<std::optional<QVariantList>> row = firstRow(statement, values);
  if (!row) {
    return Result<qint64>::failure(row.error());
  }
  if (!row.value() || row.value()->isEmpty() || row.value()->first().isNull()) {
    return fallback;
  }
  return row.value()->first().toLongLong();
}

Result<qint64> Sql::insertReturningId(const QString& statement, const QVariantList& values) const {
  Result<std::optional<QVariantList>> row = firstRow(statement, values);
  if (!row) {
    return Result<qint64>::failure(row.error());
  }
  if (!row.value() || row.value()->isEmpty()) {
    return Result<qint64>::failure(QStringLiteral("The host's database did not return the new row's key"));
  }
  return row.value()->first().toLongLong();
}

QString centsForDisplay(qint64 cents) {
  const bool negative = cents < 0;
  const quint64 magnitude = negative ? quint64(0) - quint64(cents) : quint64(cents);
  QString whole = QString::number(magnitude / 100);
  for (qsizetype at = whole.size() - 3; at > 0; at -= 3) {
    whole.insert(at, u',');
  }
  const QString fraction = QStringLiteral("%1").arg(magnitude % 100, 2, 10, QLatin1Char('0'));
  return (negative ? QStringLiteral("-$") : QStringLiteral("$")) + whole + u'.' + fraction;
}

}  // namespace adjustacc::host
