#pragma once
// Everything that differs between the two databases this system keeps its data in (SQLite for the embedded
// host and the desktop's own code-table reads, PostgreSQL for the shared service) lives in this one class:
// column types, how values are bound and read back, how a write transaction starts, how the audit trail is
// made append-only, how a row is locked, how errors are told apart. Every other file writes SQL that both
// databases accept.

#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVariant>

#include <optional>

namespace adjustacc::messaging {

class SqlDialect {
public:
  enum class Kind { Sqlite, Postgres };

  explicit SqlDialect(Kind kind) : m_kind(kind) {}
  // The dialect of a driver ("QSQLITE", "QPSQL"), or nothing for a driver this system does not run on;
  // the caller says in its own words what can then not be done.
  static std::optional<SqlDialect> forDriver(QStringView driverName);
  static std::optional<SqlDialect> of(const QSqlDatabase& db) { return forDriver(db.driverName()); }

  Kind kind() const { return m_kind; }

  // --- column types --------------------------------------------------------------------------------
  QString idColumn() const;      // surrogate key filled by the database
  QString dateType() const;      // a calendar day
  QString timestampType() const; // a moment, to the millisecond

  // --- values ---------------------------------------------------------------------------------------
  // What to bind for a calendar day / a moment so that the column type above receives it.
  QVariant dateValue(const QDate& date) const;
  QVariant timestampValue(const QDateTime& moment) const;

  // --- values read back ----------------------------------------------------------------------------------
  // A day as either database hands it back (ISO text from SQLite, a QDate from PostgreSQL); invalid for null.
  static QDate dayFromValue(const QVariant& value);
  // The same day as the wire writes it, "yyyy-mm-dd"; null for null.
  static QVariant dayCell(const QVariant& value);
  // A moment as replies carry it, "yyyy-mm-dd HH:MM:SS"; null for null.
  static QVariant timestampCell(const QVariant& value);

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

}  // namespace adjustacc::messaging
