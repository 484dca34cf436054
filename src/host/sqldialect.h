#pragma once
// Everything that differs between the two databases the host runs on (SQLite for the embedded host,
// PostgreSQL for the shared service) lives in this one class: column types, how a write transaction
// starts, how the audit trail is made append-only, how a row is locked, how errors are told apart.
// Every other file writes SQL that both databases accept.

#include "messaging/result.h"

#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace adjustacc::host {

class SqlDialect {
public:
  enum class Kind { Sqlite, Postgres };

  explicit SqlDialect(Kind kind) : m_kind(kind) {}
  // The dialect of an open connection; an error for a driver the host does not support.
  static messaging::Result<SqlDialect> of(const QSqlDatabase& db);

  Kind kind() const { return m_kind; }

  // --- column types --------------------------------------------------------------------------------
  QString idColumn() const;      // surrogate key filled by the database
  QString dateType() const;      // a calendar day
  QString timestampType() const; // a moment, to the millisecond

  // --- values ---------------------------------------------------------------------------------------
  // What to bind for a calendar day / a moment so that the column type above receives it.
  QVariant dateValue(const QDate& date) const;
  QVariant timestampValue(const QDateTime& moment) const;

  // --- transactions and locks --------------------------------------------------------------------------
  // Starts a write transaction. SQLite takes its write lock at once (so two writers never deadlock on
  // the upgrade); PostgreSQL runs at read committed and relies on row locks.
  QString beginWriteStatement() const;
  // Starts a read-only transaction, so that the sections of one reply come from one state of the data.
  QString beginReadStatement() const;
  // Appended to a SELECT that reads a row the transaction is about to change.
  QString lockRowsSuffix() const;

  // --- reading --------------------------------------------------------------------------------------------
  // Whether every statement is a round trip to a database server (PostgreSQL). Then reading several sections
  // with one statement pays, also because it needs no transaction around it; in process (SQLite) a
  // statement and a transaction cost next to nothing, and narrower rows read faster.
  bool statementsTravel() const { return m_kind == Kind::Postgres; }

  // --- schema --------------------------------------------------------------------------------------------
  // Statements that make `table` append-only: any UPDATE, DELETE or TRUNCATE of its rows fails. (SQLite has no
  // TRUNCATE: its "DELETE FROM table" without a condition runs the delete trigger all the same.)
  QStringList appendOnlyGuard(const QString& table) const;
  // Statements run on every new connection.
  QStringList sessionSetup() const;
  // A query with one bound value (the upper-case table name) answering one row when the table exists.
  QString tableExistsQuery() const;

  // --- errors ----------------------------------------------------------------------------------------------
  // A second row with the same unique key.
  bool isUniqueViolation(const QSqlError& error) const;
  // A conflict with a concurrent writer that a fresh attempt would not meet (deadlock, serialization,
  // busy database).
  bool isConcurrencyConflict(const QSqlError& error) const;

private:
  Kind m_kind;
};

}  // namespace adjustacc::host
