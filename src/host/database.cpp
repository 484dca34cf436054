// Opening a connection to the host's database, on either driver.
#include "hostsystem.h"
#include "sqlutil.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace adjustacc::host {

using messaging::Result;

namespace {

bool isSchemaName(const QString& name) {
  if (name.isEmpty() || name.size() > 60 || !(name[0].isLower() && name[0].unicode() < 128)) {
    return false;
  }
  for (const QChar c : name) {
    if (!((c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_')) {
      return false;
    }
  }
  return true;
}

}  // namespace

Result<DatabaseOptions> DatabaseOptions::fromPostgresConnectionString(const QString& text) {
  DatabaseOptions options;
  options.driver = QStringLiteral("QPSQL");
  QStringList extra;
  qsizetype i = 0;
  const qsizetype n = text.size();
  while (i < n) {
    while (i < n && text[i].isSpace()) {
      ++i;
    }
    if (i >= n) {
      break;
    }
    const qsizetype keyStart = i;
    while (i < n && text[i] != u'=' && !text[i].isSpace()) {
      ++i;
    }
    const QString key = text.mid(keyStart, i - keyStart);
    while (i < n && text[i].isSpace()) {
      ++i;
    }
    if (i >= n || text[i] != u'=' || key.isEmpty()) {
      return Result<DatabaseOptions>::failure(
          QStringLiteral("PostgreSQL connection text \"%1\": \"%2\" is not of the form key=value").arg(text, key));
    }
    ++i;
    while (i < n && text[i].isSpace()) {
      ++i;
    }
    QString value;
    if (i < n && text[i] == u'\'') {
      ++i;
      bool closed = false;
      while (i < n) {
        if (text[i] == u'\\' && i + 1 < n) {
          value.append(text[i + 1]);
          i += 2;
        } else if (text[i] == u'\'') {
          closed = true;
          ++i;
          break;
        } else {
          value.append(text[i++]);
        }
      }
      if (!closed) {
        return Result<DatabaseOptions>::failure(
            QStringLiteral("PostgreSQL connection text \"%1\": a quoted value is not closed").arg(text));
      }
    } else {
      while (i < n && !text[i].isSpace()) {
        value.append(text[i++]);
      }
    }
    if (key == u"host" || key == u"hostaddr") {
      options.hostName = value;
    } else if (key == u"port") {
      bool ok = false;
      options.port = value.toInt(&ok);
      if (!ok || options.port <= 0 || options.port > 65535) {
        return Result<DatabaseOptions>::failure(
            QStringLiteral("PostgreSQL connection text: port \"%1\" is not a port number").arg(value));
      }
    } else if (key == u"user") {
      options.userName = value;
    } else if (key == u"password") {
      options.password = value;
    } else if (key == u"dbname") {
      options.databaseName = value;
    } else if (key == u"schema") {
      options.schema = value;
    } else {
      extra.append(key + u'=' + value);
    }
  }
  options.connectOptions = extra.join(u';');
  return options;
}

Result<bool> openDatabase(const DatabaseOptions& options, const QString& connectionName) {
  const Result<SqlDialect> dialect = hostDialect(options.driver);
  if (!dialect) {
    return Result<bool>::failure(dialect.error());
  }
  if (QSqlDatabase::contains(connectionName)) {
    return Result<bool>::failure(QStringLiteral("A database connection named \"%1\" is already open").arg(connectionName));
  }
  if (!options.schema.isEmpty() && !isSchemaName(options.schema)) {
    return Result<bool>::failure(
        QStringLiteral("\"%1\" is not a usable schema name (lower-case letters, digits and _)").arg(options.schema));
  }
  QString failure;
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(options.driver, connectionName);
    db.setDatabaseName(options.databaseName);
    if (!options.hostName.isEmpty()) {
      db.setHostName(options.hostName);
    }
    if (options.port > 0) {
      db.setPort(options.port);
    }
    if (!options.userName.isEmpty()) {
      db.setUserName(options.userName);
    }
    if (!options.password.isEmpty()) {
      db.setPassword(options.password);
    }
    QString connectOptions = options.connectOptions;
    if (options.driver == u"QSQLITE" && !connectOptions.contains(QStringLiteral("QSQLITE_BUSY_TIMEOUT"))) {
      // Another writer holds the file only for the length of one save.
      connectOptions = connectOptions.isEmpty() ? QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000")
                                                : connectOptions + QStringLiteral(";QSQLITE_BUSY_TIMEOUT=10000");
    }
    db.setConnectOptions(connectOptions);
    if (!db.open()) {
      failure = QStringLiteral("The host's database could not be opened: %1").arg(db.lastError().text());
    } else {
      const Sql sql(db, dialect.value());
      QStringList setup = dialect->sessionSetup();
      if (!options.schema.isEmpty() && dialect->kind() == SqlDialect::Kind::Postgres) {
        // Created only when absent: the service's own role may use the schema but not create one.
        const Result<std::optional<QVariantList>> exists =
            sql.firstRow(QStringLiteral("SELECT 1 FROM pg_namespace WHERE nspname = ?"), {options.schema});
        if (!exists) {
          failure = exists.error();
        } else if (!exists.value()) {
          setup.append(QStringLiteral("CREATE SCHEMA IF NOT EXISTS %1").arg(options.schema));
        }
        setup.append(QStringLiteral("SET search_path TO %1").arg(options.schema));
      }
      for (const QString& statement : setup) {
        if (!failure.isEmpty()) {
          break;
        }
        if (Result<QSqlQuery> done = sql.run(statement); !done) {
          failure = done.error();
        }
      }
    }
    if (!failure.isEmpty()) {
      db.close();
    }
  }
  if (!failure.isEmpty()) {
    QSqlDatabase::removeDatabase(connectionName);
    return Result<bool>::failure(failure);
  }
  return true;
}

}  // namespace adjustacc::host
