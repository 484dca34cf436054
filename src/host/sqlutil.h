#pragma once
// Small helpers around QSqlQuery that every handler uses: run a parameterised statement and get either
// the query or the text of what went wrong. Money is held as whole cents; amounts and days travel as
// messaging/wirecodec.h writes them.

#include "messaging/result.h"
#include "messaging/sqldialect.h"

#include <QDate>
#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantList>

#include <memory>
#include <optional>

namespace adjustacc::host {

using messaging::SqlDialect;

// The dialect of a connection the host works on, or why the host can not work on it.
messaging::Result<SqlDialect> hostDialect(const QString& driverName);

// A connection with its dialect. Every statement goes through here, with its values bound: no text from a
// request is ever spliced into SQL.
class Sql {
public:
  Sql(QSqlDatabase db, SqlDialect dialect) : m_db(std::move(db)), m_dialect(dialect) {}
  // The open connection of that name with its dialect, or why there is none.
  static messaging::Result<Sql> onConnection(const QString& connectionName);

  const SqlDialect& dialect() const { return m_dialect; }
  QSqlDatabase database() const { return m_db; }

  // Prepares `statement`, binds `values` to its "?" placeholders in order and runs it. Forward-only.
  messaging::Result<QSqlQuery> run(const QString& statement, const QVariantList& values = {}) const;
  // As run(), but the statement stays prepared on this connection for the next call with the same text (no
  // new parse and plan, no round trips to prepare and drop it). For the statements every inquiry runs; the
  // caller reads the rows before it runs the same text again.
  // The query belongs to the connection's cache: it stays valid until the same text is run again.
  messaging::Result<QSqlQuery*> runPrepared(const QString& statement, const QVariantList& values) const;
  // The first row of a query, or nothing when it has none.
  messaging::Result<std::optional<QVariantList>> firstRow(const QString& statement,
                                                          const QVariantList& values = {}) const;
  // The first column of the first row as a number; `fallback` when there is no row or it is null.
  messaging::Result<qint64> scalar(const QString& statement, const QVariantList& values, qint64 fallback) const;
  // An INSERT ... RETURNING <id> answered with the new id.
  messaging::Result<qint64> insertReturningId(const QString& statement, const QVariantList& values) const;

  QVariant date(const QDate& day) const { return m_dialect.dateValue(day); }

  // Statements run on this connection so far (run and runPrepared, failed ones included): tells whether an
  // inquiry read with one statement, which sees one state of the database by itself.
  quint64 statementCount() const { return m_statements; }

  // The database's error of the last statement that failed (for telling a conflict with a concurrent
  // writer, worth another attempt, from a refusal).
  QSqlError lastError() const { return m_lastError; }
  void clearLastError() const { m_lastError = QSqlError(); }

private:
  QSqlDatabase m_db;
  SqlDialect m_dialect;
  mutable QSqlError m_lastError;
  mutable quint64 m_statements = 0;
  std::shared_ptr<QHash<QString, std::shared_ptr<QSqlQuery>>> m_prepared =
      std::make_shared<QHash<QString, std::shared_ptr<QSqlQuery>>>();
};

// The text shown for a failed statement: what the host was doing and what the database said.
QString databaseFailureText(const QSqlQuery& query);

// "$1,234.50" for messages meant for clerks (amounts travel as messaging/wirecodec.h writes them).
QString centsForDisplay(qint64 cents);

}  // namespace adjustacc::host
