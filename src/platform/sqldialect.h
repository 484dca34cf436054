#pragma once
// What differs between the two databases the code tables can live in, for the desktop's own reads:
// SQLite keeps QVR_CODE's dates as 'yyyy-mm-dd' text (which compares correctly as text), PostgreSQL in
// DATE columns. Everything else the code-table reads need is common SQL.

#include "messaging/result.h"

#include <QDate>
#include <QString>
#include <QVariant>

namespace adjustacc::platform {

class SqlDialect {
public:
  enum class Kind { Sqlite, Postgres };

  // "QSQLITE" or "QPSQL"; any other driver is refused with its name.
  static messaging::Result<SqlDialect> forDriver(const QString& driverName);

  Kind kind() const { return m_kind; }
  // A date as a bound value that compares with the date columns of QVR_CODE.
  QVariant dateValue(const QDate& date) const;

private:
  explicit SqlDialect(Kind kind) : m_kind(kind) {}
  Kind m_kind;
};

}  // namespace adjustacc::platform
