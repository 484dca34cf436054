#pragma once
// One save, one transaction: a guard that opens a write transaction and rolls it back when it goes out
// of scope uncommitted, so every early return of a handler leaves the database as it was.

#include "sqlutil.h"

#include "messaging/result.h"

namespace adjustacc::host {

class Transaction {
public:
  explicit Transaction(const Sql& sql) : m_sql(sql) {}
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  // A write transaction (every save), or a read-only one (an inquiry that reads several tables).
  messaging::Result<bool> begin();
  messaging::Result<bool> beginRead();
  messaging::Result<bool> commit();
  // Rolls back now (also done by the destructor when still open).
  void rollback();
  bool isOpen() const { return m_open; }

private:
  messaging::Result<bool> start(const QString& statement);

  const Sql& m_sql;
  bool m_open = false;
};

}  // namespace adjustacc::host
