// adjustacc-host: the shared agency host system as an HTTP+JSON service.
//
//   adjustacc-host init-db [--demo [--demo-day YYYY-MM-DD]] [--service-role ROLE]   DATABASE
//   adjustacc-host serve [--listen ADDRESS] [--port N] [--workers N] [--tls-cert FILE --tls-key FILE]
//                        [--idle-timeout SECONDS] [--max-connections N]
//                        [--duty-separation neighbouring|four-officers]             DATABASE
//   adjustacc-host token ISSUE --officer ID                     DATABASE
//   adjustacc-host token REVOKE (--officer ID | --token-id ID)   DATABASE
//   adjustacc-host token LIST                                    DATABASE
//
// DATABASE is --pg "host=.. port=.. user=.. dbname=.." (or the environment variable ADJUSTACC_HOST_PG),
// or --sqlite FILE.

#include "host/hostsystem.h"
#include "host/httpservice.h"
#include "host/schema.h"
#include "host/tokens.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDate>
#include <QHostAddress>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>
#include <QTimer>

#include <csignal>
#include <optional>
#include <cstdio>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <sys/socket.h>
#include <unistd.h>

namespace {

using adjustacc::host::DatabaseOptions;
using adjustacc::host::DutySeparation;
using adjustacc::host::HttpService;
using adjustacc::host::HttpServiceOptions;
using adjustacc::host::TokenStore;
using adjustacc::messaging::Result;

Q_LOGGING_CATEGORY(lcDaemon, "adjustacc.host")

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
// How long a stop waits for requests already received before it closes anyway.
constexpr int kDrainMs = 10000;

const QString kAdminConnection = QStringLiteral("adjustacc-host-admin");

QTextStream& out() {
  static QTextStream stream(stdout);
  return stream;
}

QTextStream& err() {
  static QTextStream stream(stderr);
  return stream;
}

int usage(const QCommandLineParser& parser, const QString& problem) {
  if (!problem.isEmpty()) {
    err() << "adjustacc-host: " << problem << Qt::endl << Qt::endl;
  }
  err() << parser.helpText();
  err() << "\nCommands:\n"
           "  init-db [--demo [--demo-day YYYY-MM-DD]] [--service-role ROLE]\n"
           "                                             create the schema (and load the demo set; give the\n"
           "                                             service's own PostgreSQL role what it needs)\n"
           "  serve [--listen ADDRESS] [--port N] [--workers N] [--tls-cert FILE --tls-key FILE]\n"
           "        [--duty-separation neighbouring|four-officers]\n"
           "        [--idle-timeout SECONDS] [--max-connections N]\n"
           "                                             answer POST /v1/request and GET /v1/health\n"
           "  token ISSUE --officer ID                   issue a bearer token (printed once)\n"
           "  token REVOKE --officer ID | --token-id ID  revoke tokens\n"
           "  token LIST                                 list tokens (never their secrets)\n"
           "\nThe database is --pg \"host=.. port=.. user=.. dbname=..\" (or ADJUSTACC_HOST_PG) or --sqlite FILE.\n";
  err().flush();
  return kExitUsage;
}

Result<DatabaseOptions> databaseOptions(const QCommandLineParser& parser) {
  const bool pg = parser.isSet(QStringLiteral("pg"));
  const bool sqlite = parser.isSet(QStringLiteral("sqlite"));
  if (pg && sqlite) {
    return Result<DatabaseOptions>::failure(QStringLiteral("Name one database: --pg or --sqlite, not both."));
  }
  if (sqlite) {
    DatabaseOptions options;
    options.driver = QStringLiteral("QSQLITE");
    options.databaseName = parser.value(QStringLiteral("sqlite"));
    return options;
  }
  QString connection = parser.value(QStringLiteral("pg"));
  if (!pg) {
    connection = qEnvironmentVariable("ADJUSTACC_HOST_PG");
  }
  if (connection.trimmed().isEmpty()) {
    return Result<DatabaseOptions>::failure(
        QStringLiteral("Name the database: --pg \"host=.. port=.. user=.. dbname=..\" (or set ADJUSTACC_HOST_PG), "
                       "or --sqlite FILE."));
  }
  return DatabaseOptions::fromPostgresConnectionString(connection);
}

// A connection on the main thread for the one-shot commands; closed and removed when this goes.
class AdminConnection {
public:
  explicit AdminConnection(const DatabaseOptions& options) : m_opened(adjustacc::host::openDatabase(options, kAdminConnection)) {}
  ~AdminConnection() {
    if (QSqlDatabase::contains(kAdminConnection)) {
      QSqlDatabase::database(kAdminConnection, false).close();
      QSqlDatabase::removeDatabase(kAdminConnection);
    }
  }
  AdminConnection(const AdminConnection&) = delete;
  AdminConnection& operator=(const AdminConnection&) = delete;
  const Result<bool>& opened() const { return m_opened; }

private:
  Result<bool> m_opened;
};

int fail(const QString& text) {
  err() << "adjustacc-host: " << text << Qt::endl;
  return kExitFailure;
}

int initDb(const QCommandLineParser& parser, const DatabaseOptions& options) {
  QDate day = QDate::currentDate();
  if (parser.isSet(QStringLiteral("demo-day"))) {
    day = QDate::fromString(parser.value(QStringLiteral("demo-day")), Qt::ISODate);
    if (!day.isValid()) {
      return fail(QStringLiteral("--demo-day wants a date as YYYY-MM-DD."));
    }
  }
  AdminConnection connection(options);
  if (!connection.opened().ok()) {
    return fail(connection.opened().error());
  }
  if (Result<bool> schema = adjustacc::host::createSchema(kAdminConnection); !schema.ok()) {
    return fail(schema.error());
  }
  TokenStore tokens(kAdminConnection);
  if (Result<bool> table = tokens.ensureTable(); !table.ok()) {
    return fail(table.error());
  }
  out() << "The schema is in place." << Qt::endl;
  if (parser.isSet(QStringLiteral("demo"))) {
    if (Result<bool> demo = adjustacc::host::loadDemoData(kAdminConnection, day); !demo.ok()) {
      return fail(demo.error());
    }
    out() << "The demo set is loaded, laid out around " << day.toString(Qt::ISODate) << "." << Qt::endl;
  }
  if (parser.isSet(QStringLiteral("service-role"))) {
    const QString role = parser.value(QStringLiteral("service-role"));
    if (Result<bool> granted = adjustacc::host::grantServiceRole(kAdminConnection, role); !granted.ok()) {
      return fail(granted.error());
    }
    out() << "Role " << role << " may now run the service: it reads, adds and changes rows, and only adds to the "
          << "audit trail." << Qt::endl;
  }
  return kExitOk;
}

int token(const QCommandLineParser& parser, const QString& action, const DatabaseOptions& options) {
  AdminConnection connection(options);
  if (!connection.opened().ok()) {
    return fail(connection.opened().error());
  }
  TokenStore tokens(kAdminConnection);
  if (Result<bool> table = tokens.ensureTable(); !table.ok()) {
    return fail(table.error());
  }
  const QString officer = parser.value(QStringLiteral("officer"));
  if (action == QLatin1String("ISSUE")) {
    if (officer.isEmpty()) {
      return usage(parser, QStringLiteral("token ISSUE needs --officer ID."));
    }
    const Result<adjustacc::host::IssuedToken> issued = tokens.issue(officer);
    if (!issued.ok()) {
      return fail(issued.error());
    }
    // The token alone on standard output, so that scripts can take it; the note goes to standard error.
    out() << issued->token << Qt::endl;
    err() << "Token " << issued->tokenId << " issued for officer " << issued->officerId
          << ". It is shown only this once; keep it like a password." << Qt::endl;
    return kExitOk;
  }
  if (action == QLatin1String("REVOKE")) {
    const QString tokenId = parser.value(QStringLiteral("token-id"));
    if (officer.isEmpty() == tokenId.isEmpty()) {
      return usage(parser, QStringLiteral("token REVOKE needs --officer ID or --token-id ID."));
    }
    if (!tokenId.isEmpty()) {
      const Result<bool> revoked = tokens.revokeToken(tokenId);
      if (!revoked.ok()) {
        return fail(revoked.error());
      }
      out() << (revoked.value() ? "Token revoked." : "No such token in force.") << Qt::endl;
      return revoked.value() ? kExitOk : kExitFailure;
    }
    const Result<int> revoked = tokens.revokeOfficer(officer);
    if (!revoked.ok()) {
      return fail(revoked.error());
    }
    out() << revoked.value() << " token(s) of officer " << officer << " revoked." << Qt::endl;
    return kExitOk;
  }
  if (action == QLatin1String("LIST")) {
    const auto list = tokens.list();
    if (!list.ok()) {
      return fail(list.error());
    }
    for (const adjustacc::host::TokenInfo& info : list.value()) {
      out() << info.tokenId << '\t' << info.officerId << '\t' << info.issued.toString(Qt::ISODate) << '\t'
            << (info.revoked.isValid() ? QStringLiteral("revoked ") + info.revoked.toString(Qt::ISODate)
                                       : QStringLiteral("in force"))
            << Qt::endl;
    }
    return kExitOk;
  }
  return usage(parser, QStringLiteral("token wants ISSUE, REVOKE or LIST, not \"%1\".").arg(action));
}

// SIGINT and SIGTERM are turned into a byte on a pipe, read by the event loop (the only thing a signal
// handler may safely do is write).
int g_signalPipe[2] = {-1, -1};

void onSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const auto written = ::write(g_signalPipe[1], &byte, 1);
}

bool installSignalHandlers() {
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalPipe) != 0) {
    return false;
  }
  struct sigaction action = {};
  action.sa_handler = onSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  return ::sigaction(SIGINT, &action, nullptr) == 0 && ::sigaction(SIGTERM, &action, nullptr) == 0;
}

int serve(const QCommandLineParser& parser, const DatabaseOptions& options) {
  bool ok = true;
  const QString listenText = parser.value(QStringLiteral("listen"));
  const QHostAddress address(listenText);
  if (address.isNull()) {
    return usage(parser, QStringLiteral("--listen wants an IP address, not \"%1\".").arg(listenText));
  }
  const uint port = parser.value(QStringLiteral("port")).toUInt(&ok);
  if (!ok || port > 65535) {
    return usage(parser, QStringLiteral("--port wants a number from 0 to 65535."));
  }
  const QString dutyText = parser.value(QStringLiteral("duty-separation"));
  const std::optional<DutySeparation> duties = adjustacc::host::dutySeparationFromName(dutyText);
  if (!duties) {
    return usage(parser,
                 QStringLiteral("--duty-separation wants neighbouring or four-officers, not \"%1\".").arg(dutyText));
  }
  int workers = 0;
  if (parser.isSet(QStringLiteral("workers"))) {
    workers = parser.value(QStringLiteral("workers")).toInt(&ok);
    if (!ok || workers < 1 || workers > 64) {
      return usage(parser, QStringLiteral("--workers wants a number from 1 to 64."));
    }
  }
  HttpServiceOptions serviceOptions;
  if (parser.isSet(QStringLiteral("idle-timeout"))) {
    const double seconds = parser.value(QStringLiteral("idle-timeout")).toDouble(&ok);
    if (!ok || seconds < 0.1 || seconds > 3600) {
      return usage(parser, QStringLiteral("--idle-timeout wants a number of seconds from 0.1 to 3600."));
    }
    serviceOptions.idleTimeout = std::chrono::milliseconds(qRound64(seconds * 1000));
  }
  if (parser.isSet(QStringLiteral("max-connections"))) {
    serviceOptions.maxConnections = parser.value(QStringLiteral("max-connections")).toInt(&ok);
    if (!ok || serviceOptions.maxConnections < 1 || serviceOptions.maxConnections > 100000) {
      return usage(parser, QStringLiteral("--max-connections wants a number from 1 to 100000."));
    }
  }

  {
    // Fail at once, with the reason, when the database cannot be used at all; make sure the token table exists.
    AdminConnection connection(options);
    if (!connection.opened().ok()) {
      return fail(connection.opened().error());
    }
    QSqlQuery officers(QSqlDatabase::database(kAdminConnection, false));
    if (!officers.exec(QStringLiteral("SELECT COUNT(*) FROM OFFICER")) || !officers.next()) {
      return fail(QStringLiteral("The database holds no host system yet: run adjustacc-host init-db first."));
    }
    if (officers.value(0).toInt() == 0) {
      qCWarning(lcDaemon, "the database has no officers: nobody can be given a token");
    }
    if (const Result<QString> layout = adjustacc::host::schemaVersionProblem(kAdminConnection); !layout.ok()) {
      return fail(layout.error());
    } else if (!layout->isEmpty()) {
      return fail(layout.value());
    }
    if (Result<bool> table = TokenStore(kAdminConnection).ensureTable(); !table.ok()) {
      return fail(table.error());
    }
    if (const Result<QString> role = adjustacc::host::serviceRoleProblem(kAdminConnection); !role.ok()) {
      return fail(role.error());
    } else if (!role->isEmpty()) {
      qCWarning(lcDaemon, "%s: the service could take the audit trail's guard away; give it a role of its own "
                          "(init-db --service-role ROLE, see docs/daemon.md)",
                qUtf8Printable(role.value()));
    }
  }

  if (!installSignalHandlers()) {
    return fail(QStringLiteral("Could not install the stop signal handlers."));
  }

  serviceOptions.database = options;
  serviceOptions.workers = workers;
  serviceOptions.dutySeparation = *duties;
  HttpService service(serviceOptions);
  const QString certificate = parser.value(QStringLiteral("tls-cert"));
  const QString key = parser.value(QStringLiteral("tls-key"));
  if (certificate.isEmpty() != key.isEmpty()) {
    return usage(parser, QStringLiteral("HTTPS needs both --tls-cert and --tls-key."));
  }
  if (!certificate.isEmpty()) {
    if (const Result<bool> tls = service.useTls(certificate, key); !tls.ok()) {
      return fail(tls.error());
    }
  }
  const Result<quint16> bound = service.listen(address, static_cast<quint16>(port));
  if (!bound.ok()) {
    return fail(bound.error());
  }
  qCInfo(lcDaemon, "listening on %s port %u (%s) with %d worker(s) on %s; separation of duties: %s",
         qUtf8Printable(address.toString()), unsigned{bound.value()}, certificate.isEmpty() ? "http" : "https",
         service.workerCount(), options.driver == QLatin1String("QPSQL") ? "PostgreSQL" : "SQLite",
         qUtf8Printable(adjustacc::host::dutySeparationName(*duties)));

  QSocketNotifier notifier(g_signalPipe[0], QSocketNotifier::Read);
  bool stopping = false;
  QObject::connect(&notifier, &QSocketNotifier::activated, &service, [&] {
    char byte = 0;
    [[maybe_unused]] const auto got = ::read(g_signalPipe[0], &byte, 1);
    if (stopping) {
      return;
    }
    stopping = true;
    qCInfo(lcDaemon, "stopping: %d request(s) still being answered", service.inFlight());
    service.stopListening();
    if (service.inFlight() == 0) {
      QCoreApplication::quit();
      return;
    }
    QObject::connect(&service, &HttpService::idle, qApp, &QCoreApplication::quit);
    QTimer::singleShot(kDrainMs, qApp, &QCoreApplication::quit);
  });

  const int code = QCoreApplication::exec();
  qCInfo(lcDaemon, "stopped");
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  // The service has no use for the GLib main loop that Qt's event loops otherwise run on: Qt's own loop wakes
  // its threads with less work per request (about a sixth less processor time under load). A QT_NO_GLIB set
  // by whoever starts the service is left as it is.
  if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) {
    qputenv("QT_NO_GLIB", "1");
  }
#ifdef __GLIBC__
  // Request bodies and replies of a megabyte or more come and go; mapped on their own, they go back to the
  // system when freed. Left to glibc, the threshold climbs after the first large free, and the memory of a burst
  // of large requests stays with the process.
  mallopt(M_MMAP_THRESHOLD, 256 * 1024);
#endif
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("adjustacc-host"));
  QCoreApplication::setApplicationVersion(QStringLiteral(ADJUSTACC_VERSION));
  qSetMessagePattern(QStringLiteral("%{time yyyy-MM-ddThh:mm:ss.zzz} %{if-warning}warning %{endif}"
                                    "%{if-critical}critical %{endif}%{category}: %{message}"));

  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("The shared agency host system of adjustacc."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("init-db, serve or token"));
  parser.addOptions({
      {QStringLiteral("pg"), QStringLiteral("PostgreSQL connection options."), QStringLiteral("options")},
      {QStringLiteral("sqlite"), QStringLiteral("SQLite database file."), QStringLiteral("file")},
      {QStringLiteral("listen"), QStringLiteral("Address to listen on (default 127.0.0.1)."), QStringLiteral("address"),
       QStringLiteral("127.0.0.1")},
      {QStringLiteral("port"), QStringLiteral("Port to listen on (default 8470)."), QStringLiteral("port"),
       QStringLiteral("8470")},
      {QStringLiteral("workers"), QStringLiteral("Worker threads, one database connection each."),
       QStringLiteral("count")},
      {QStringLiteral("tls-cert"), QStringLiteral("serve: HTTPS certificate (PEM)."), QStringLiteral("file")},
      {QStringLiteral("tls-key"), QStringLiteral("serve: HTTPS private key (PEM)."), QStringLiteral("file")},
      {QStringLiteral("duty-separation"),
       QStringLiteral("serve: which refund worksheet officers must differ: neighbouring (the preparer does not verify, "
                      "the verifier does not approve; the default) or four-officers (prepare, verify, approve and "
                      "refund by four different officers)."),
       QStringLiteral("rule"), QStringLiteral("neighbouring")},
      {QStringLiteral("idle-timeout"),
       QStringLiteral("serve: seconds a connection may keep the service waiting before it is closed (default 15)."),
       QStringLiteral("seconds")},
      {QStringLiteral("max-connections"),
       QStringLiteral("serve: open connections at most; more wait to be accepted (default 512)."),
       QStringLiteral("count")},
      {QStringLiteral("service-role"),
       QStringLiteral("init-db: the PostgreSQL role the service runs as, given what it needs and no more."),
       QStringLiteral("role")},
      {QStringLiteral("demo"), QStringLiteral("init-db: load the demo set.")},
      {QStringLiteral("demo-day"), QStringLiteral("init-db: the day the demo set is laid out around."),
       QStringLiteral("date")},
      {QStringLiteral("officer"), QStringLiteral("token: the officer id."), QStringLiteral("id")},
      {QStringLiteral("token-id"), QStringLiteral("token REVOKE: the token's id."), QStringLiteral("id")},
  });
  if (!parser.parse(QCoreApplication::arguments())) {
    return usage(parser, parser.errorText());
  }
  if (parser.isSet(QStringLiteral("help"))) {
    usage(parser, {});
    return kExitOk;
  }
  if (parser.isSet(QStringLiteral("version"))) {
    out() << QCoreApplication::applicationName() << ' ' << QCoreApplication::applicationVersion() << Qt::endl;
    return kExitOk;
  }

  const QStringList positional = parser.positionalArguments();
  const QString command = positional.value(0);
  if (command.isEmpty()) {
    return usage(parser, QStringLiteral("Say what to do: init-db, serve or token."));
  }
  const bool isToken = command == QLatin1String("token");
  if (positional.size() > (isToken ? 2 : 1)) {
    return usage(parser, QStringLiteral("Unexpected argument \"%1\".").arg(positional.last()));
  }
  if (command != QLatin1String("init-db") && command != QLatin1String("serve") && !isToken) {
    return usage(parser, QStringLiteral("Unknown command \"%1\".").arg(command));
  }
  const Result<DatabaseOptions> options = databaseOptions(parser);
  if (!options.ok()) {
    return usage(parser, options.error());
  }

  if (command == QLatin1String("init-db")) {
    return initDb(parser, options.value());
  }
  if (command == QLatin1String("serve")) {
    return serve(parser, options.value());
  }
  return token(parser, positional.value(1).toUpper(), options.value());
}
