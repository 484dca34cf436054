#include "sqldialect.h"

namespace adjustacc::platform {

messaging::Result<SqlDialect> SqlDialect::forDriver(const QString& driverName) {
  if (driverName == u"QSQLITE") {
    return SqlDialect(Kind::Sqlite);
  }
  if (driverName == u"QPSQL") {
    return SqlDialect(Kind::Postgres);
  }
  return messaging::Result<SqlDialect>::failure(
      QStringLiteral("The code tables cannot be read through the database driver \"%1\" (QSQLITE or QPSQL expected)")
          .arg(driverName));
}

QVariant SqlDialect::dateValue(const QDate& date) const {
  switch (m_kind) {
    case Kind::Sqlite:
      return date.toString(QStringLiteral("yyyy-MM-dd"));
    case Kind::Postgres:
      return date;
  }
  return {};
}

}  // namespace adjustacc::platform
