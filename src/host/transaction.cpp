#include "transaction.h"

#include <QSqlQuery>

namespace adjustacc::host {

using messaging::Result;

Transaction::~Transaction() {
  if (m_open) {
    rollback();
  }
}

Result<bool> Transaction::begin() { return start(m_sql.dialect().beginWriteStatement()); }

Result<bool> Transaction::beginRead() { return start(m_sql.dialect().beginReadStatement()); }

Result<bool> Transaction::start(const QString& statement) {
  if (m_open) {
    return Result<bool>::failure(QStringLiteral("A transaction is already open on this connection"));
  }
  Result<QSqlQuery> started = m_sql.run(statement);
  if (!started) {
    return Result<bool>::failure(started.error());
  }
  m_open = true;
  return true;
}

Result<bool> Transaction::commit() {
  if (!m_open) {
    return Result<bool>::failure(QStringLiteral("No transaction is open to commit"));
  }
  Result<QSqlQuery> done = m_sql.run(QStringLiteral("COMMIT"));
  if (!done) {
    rollback();
    return Result<bool>::failure(done.error());
  }
  m_open = false;
  return true;
}

void Transaction::rollback() {
  m_open = false;
  // A failed rollback leaves nothing to undo: the database ends the transaction itself.
  (void)m_sql.run(QStringLiteral("ROLLBACK"));
}

}  // namespace adjustacc::host
