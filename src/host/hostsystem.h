#pragma once
// The agency host system: the system of record that answers every inquiry and save the screens send.
// One code path for SQLite (embedded) and PostgreSQL (shared), through QtSql.

#include "dutyseparation.h"

#include "messaging/reply.h"
#include "messaging/request.h"
#include "messaging/result.h"

#include <QDate>
#include <QString>

#include <chrono>

namespace adjustacc::host {

struct DatabaseOptions {
  QString driver = QStringLiteral("QSQLITE");  // "QSQLITE" or "QPSQL"
  QString databaseName;                        // SQLite file path, or PostgreSQL database name
  QString hostName;
  int port = -1;
  QString userName;
  QString password;
  QString connectOptions;
  QString schema;  // PostgreSQL only: the schema to work in (created when absent); empty: the server's default

  // "host=127.0.0.1 port=55432 user=postgres dbname=postgres" -> QPSQL options.
  static messaging::Result<DatabaseOptions> fromPostgresConnectionString(const QString& text);
};

// Opens a QSqlDatabase connection named `connectionName` on the calling thread (a connection is used only on the
// thread that opened it).
messaging::Result<bool> openDatabase(const DatabaseOptions& options, const QString& connectionName);

// Creates every table, index and sequence when absent (idempotent), on either database, and brings the tables
// of a database that an older host made up to this host's layout (schema.h, kSchemaVersion).
messaging::Result<bool> createSchema(const QString& connectionName);

// Fills an empty database with the demo set; dates are relative to `today` so the demo never ages.
messaging::Result<bool> loadDemoData(const QString& connectionName, const QDate& today);

class HostSystem {
public:
  // Uses an open connection; must be used on the thread that opened it.
  explicit HostSystem(QString connectionName);
  ~HostSystem();
  HostSystem(const HostSystem&) = delete;
  HostSystem& operator=(const HostSystem&) = delete;

  // Answers one request. `officerId` is the authenticated officer (the daemon's bearer token, or the embedded
  // desktop's signed-on officer); a request whose user is another officer is refused. Never throws: every
  // failure is a Reply with an error text, and a failed save writes nothing.
  messaging::Reply handle(const messaging::Request& request, const QString& officerId);

  // How long an inquiry may go by what the host last read of its officer (still active, region, rights)
  // instead of reading it again; 0 reads it for every request. Saves always read the officer afresh, so a
  // right taken away or an officer made inactive stops saves at once and inquiries within this time.
  void setOfficerCacheLifetime(std::chrono::milliseconds lifetime);
  static constexpr std::chrono::milliseconds kDefaultOfficerCacheLifetime{5000};

  // Which officers of a refund worksheet must be different people (see dutyseparation.h); by default those of
  // neighbouring steps, as the screens check.
  void setDutySeparation(DutySeparation separation);
  DutySeparation dutySeparation() const;

private:
  struct Impl;
  Impl* d;
};

}  // namespace adjustacc::host
