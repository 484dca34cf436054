#pragma once
// Every change to stored data goes through AuditedWriter: it writes the row and appends to AUDIT_TRAIL the
// row as it was before and as it is after, with the officer, the request id and the moment. The trail
// itself is append-only (the database refuses to change or delete its rows).
//
// Rows of the tables that carry ROW_VRSN_NBR get the next version on every change; an update that names
// the version the clerk read is refused when the row has moved on since (optimistic concurrency).

#include "sqlutil.h"

#include "messaging/result.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>

#include <optional>
#include <utility>

namespace adjustacc::host {

using ColumnValues = QList<std::pair<QString, QVariant>>;

// Who changes what and when; the same for every write of one request.
struct WriteContext {
  QString officerId;
  QString requestId;
  QDateTime now;  // UTC
};

// The standard refusal for a row that changed since the clerk read it.
QString changedSinceReadText(const QString& what);

class AuditedWriter {
public:
  AuditedWriter(const Sql& sql, WriteContext context) : m_sql(sql), m_context(std::move(context)) {}

  const WriteContext& context() const { return m_context; }
  const Sql& sql() const { return m_sql; }

  // Inserts a row. With `generatedKey` (a column the database fills) the new key is answered; otherwise
  // `key` names the columns among `values` that identify the row and 0 is answered.
  messaging::Result<qint64> insert(const QString& table, const ColumnValues& values, const QString& generatedKey,
                                   const QStringList& key = {});

  // Changes the one row that `key` identifies. With `expectedVersion`, the row must still carry that
  // ROW_VRSN_NBR; otherwise the change is refused with changedSinceReadText(what). A row that does not
  // exist is refused as "<what> was not found".
  messaging::Result<bool> update(const QString& table, const ColumnValues& key, const ColumnValues& changes,
                                 std::optional<qint64> expectedVersion, const QString& what);

private:
  messaging::Result<QString> snapshot(const QString& table, const ColumnValues& key) const;
  messaging::Result<bool> append(const QString& table, const ColumnValues& key, const QString& changeCode,
                                 const QString& before, const QString& after) const;

  const Sql& m_sql;
  WriteContext m_context;
};

// True for the names this host builds its statements from (upper-case letters, digits, "_").
bool isPlainIdentifier(const QString& name);

}  // namespace adjustacc::host
