// The soak of adjustacc-host on PostgreSQL (make soak): several keep-alive clients send saves (the next refund
// number, request 60) and account inquiries for a bounded time; half way the service is killed with SIGKILL and
// started again. A client resends every save whose answer it did not get, under the same request id, as a
// desktop may. At the end every acknowledged save must be on record exactly once and whole. It prints
//   soak latency_ms p50 <x> p99 <y> ...
//   soak memory_mb ...      (the service around a burst of oversized bodies)
//   soak lost <n> partial <n> doubled <n>
// and exits 1 when a save was lost, partial or doubled. Loopback only; the run is bounded in time.
//
//   soak_host --daemon PATH --pg "host=.. port=.. user=.. dbname=.." [--seconds N] [--clients N]
//
// The service runs as a role of its own (init-db --service-role), as it should in production.

#include "host/hostsystem.h"
#include "messaging/jsoncodec.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QUuid>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

using namespace adjustacc;
using messaging::Reply;
using messaging::Request;

namespace {

const QString kOfficer = QStringLiteral("ADMIN01");
const QString kAdmin = QStringLiteral("soak-admin");

[[noreturn]] void die(const QString& text) {
  std::fprintf(stderr, "soak_host: %s\n", qPrintable(text));
  std::exit(2);
}

QString connectionText(const host::DatabaseOptions& options, const QString& user, const QString& schema) {
  QString text = QStringLiteral("host=%1 port=%2 user=%3 dbname=%4")
                     .arg(options.hostName)
                     .arg(options.port)
                     .arg(user, options.databaseName);
  return schema.isEmpty() ? text : text + QStringLiteral(" schema=") + schema;
}

// Runs a one-shot command of the service's program; its standard output, or the program stops.
QString runCommand(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.start(program, arguments);
  if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
    die(QStringLiteral("%1 %2 failed: %3").arg(program, arguments.value(0), QString::fromLocal8Bit(process.readAllStandardError())));
  }
  return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

// A statement of the set-up, run as it is (PostgreSQL prepares no CREATE ROLE or SET), or the program stops.
void exec(const QString& statement) {
  QSqlQuery query(QSqlDatabase::database(kAdmin, false));
  if (!query.exec(statement)) {
    die(statement + QStringLiteral(": ") + query.lastError().text());
  }
}

// One HTTP answer read off a byte stream: status and body, or nothing while it is incomplete.
struct Answer {
  int status = 0;
  QByteArray body;
};

std::optional<Answer> takeAnswer(QByteArray& buffer) {
  const qsizetype end = buffer.indexOf("\r\n\r\n");
  if (end < 0) {
    return std::nullopt;
  }
  qint64 length = 0;
  const QList<QByteArray> lines = buffer.left(end).split('\n');
  for (const QByteArray& line : lines) {
    if (line.toLower().startsWith("content-length:")) {
      length = line.mid(15).trimmed().toLongLong();
    }
  }
  if (buffer.size() < end + 4 + length) {
    return std::nullopt;
  }
  Answer answer{lines.value(0).split(' ').value(1).toInt(), buffer.mid(end + 4, length)};
  buffer.remove(0, end + 4 + length);
  return answer;
}

QByteArray postBytes(const QString& token, const QByteArray& body) {
  return "POST /v1/request HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\nAuthorization: Bearer " +
         token.toLatin1() + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

Request baseRequest(int code) {
  Request request;
  request.replyTo = QStringLiteral("SOAK");
  request.version = QStringLiteral("1");
  request.code = code;
  request.user = kOfficer;
  request.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
  return request;
}

struct Stats {
  std::map<QString, QString> acked;  // request id -> the number the save was answered with
  int ackedTwiceDifferently = 0;     // a resend answered with another number: applied twice
  std::vector<double> saveMs;
  std::vector<double> inquiryMs;
  int unavailable = 0;  // 503 answers
  int cut = 0;          // requests whose connection went before the answer
  int resent = 0;
  int refused = 0;  // other failing answers
  QString firstRefusal;
};

// A desktop's worth of traffic on one keep-alive connection: one request in flight, saves and inquiries in turn.
class SoakClient : public QObject {
public:
  SoakClient(quint16 port, QString token, QString type, QString number, Stats& stats, int index)
      : m_port(port), m_token(std::move(token)), m_type(std::move(type)), m_number(std::move(number)),
        m_stats(stats), m_counter(index) {
    connect(&m_socket, &QTcpSocket::connected, this, [this] { sendNext(); });
    connect(&m_socket, &QTcpSocket::readyRead, this, [this] { read(); });
    connect(&m_socket, &QTcpSocket::disconnected, this, [this] { lost(); });
    connect(&m_socket, &QTcpSocket::errorOccurred, this, [this] {
      if (m_socket.state() == QAbstractSocket::UnconnectedState) {
        lost();
      }
    });
  }
  // The socket goes last and tells of its closing: by then nobody must be listening.
  ~SoakClient() override { m_socket.disconnect(this); }
  SoakClient(const SoakClient&) = delete;
  SoakClient& operator=(const SoakClient&) = delete;

  void start() { m_socket.connectToHost(QHostAddress::LocalHost, m_port); }
  void stop() { m_stopping = true; }
  bool idle() const { return m_stopping && !m_pending && m_resend.empty(); }

private:
  struct Pending {
    bool save = false;
    QString requestId;
    QByteArray body;
    QElapsedTimer clock;
  };

  void sendNext() {
    if (m_pending || m_socket.state() != QAbstractSocket::ConnectedState) {
      return;
    }
    Pending next;
    if (!m_resend.empty()) {
      next = m_resend.front();
      m_resend.pop_front();
      ++m_stats.resent;
    } else if (m_stopping) {
      return;
    } else {
      Request request = baseRequest(47);
      next.save = m_counter++ % 2 == 0;
      if (next.save) {
        request.code = 60;
        request.params = {{QStringLiteral("MARVENTO"), QStringLiteral("key:NBR_TYP_CD"), QStringLiteral("="),
                           QStringLiteral("F")}};
      } else {
        request.params = {{QStringLiteral("MARVENTO"), QStringLiteral("key:REF_NBR"), QStringLiteral("="), m_number},
                          {QStringLiteral("MARVENTO"), QStringLiteral("key:REF_TYP_CD"), QStringLiteral("="), m_type}};
      }
      next.requestId = request.requestId;
      next.body = messaging::encodeRequest(request);
    }
    next.clock.start();
    m_socket.write(postBytes(m_token, next.body));
    m_pending = std::move(next);
  }

  void read() {
    m_buffer += m_socket.readAll();
    while (m_pending) {
      const std::optional<Answer> answer = takeAnswer(m_buffer);
      if (!answer) {
        return;
      }
      Pending done = *std::exchange(m_pending, std::nullopt);
      const double ms = static_cast<double>(done.clock.nsecsElapsed()) / 1e6;
      const Reply reply = messaging::decodeReply(answer->body);
      if (answer->status == 503) {
        ++m_stats.unavailable;
        if (done.save) {
          m_resend.push_back(done);  // its fate is unknown: sent again under the same id
        }
      } else if (answer->status != 200 || !reply.ok()) {
        ++m_stats.refused;
        if (m_stats.firstRefusal.isEmpty()) {
          m_stats.firstRefusal = QStringLiteral("%1 %2").arg(answer->status).arg(reply.error);
        }
      } else if (done.save) {
        const messaging::RecordSet* numbers = reply.section(QStringLiteral("GetFormNumber"));
        const QString number = numbers && numbers->recordCount() == 1 ? numbers->valueAt(0, 0).toString() : QString();
        const auto known = m_stats.acked.find(done.requestId);
        if (known != m_stats.acked.end() && known->second != number) {
          ++m_stats.ackedTwiceDifferently;
        }
        m_stats.acked[done.requestId] = number;
        m_stats.saveMs.push_back(ms);
      } else {
        m_stats.inquiryMs.push_back(ms);
      }
      sendNext();
    }
  }

  void lost() {
    if (m_pending) {
      ++m_stats.cut;
      if (m_pending->save) {
        m_resend.push_front(*m_pending);
      }
      m_pending.reset();
    }
    m_buffer.clear();
    if (!m_reconnecting && !idle()) {
      m_reconnecting = true;
      QTimer::singleShot(100, this, [this] {
        m_reconnecting = false;
        m_socket.abort();
        start();
      });
    }
  }

  quint16 m_port;
  QString m_token;
  QString m_type;
  QString m_number;
  Stats& m_stats;
  int m_counter;
  QTcpSocket m_socket;
  QByteArray m_buffer;
  std::optional<Pending> m_pending;
  std::deque<Pending> m_resend;
  bool m_stopping = false;
  bool m_reconnecting = false;
};

double percentile(std::vector<double> values, double fraction) {
  if (values.empty()) {
    return 0;
  }
  std::sort(values.begin(), values.end());
  const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5);
  return values[std::min(index, values.size() - 1)];
}

double residentMb(qint64 pid, const char* field) {
  QFile status(QStringLiteral("/proc/%1/status").arg(pid));
  if (!status.open(QIODevice::ReadOnly)) {
    return 0;
  }
  for (const QByteArray& line : status.readAll().split('\n')) {
    if (line.startsWith(field)) {
      return line.mid(static_cast<qsizetype>(qstrlen(field))).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
  }
  return 0;
}

bool waitHealthy(quint16 port, int waitMs) {
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < waitMs) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (socket.waitForConnected(1000)) {
      socket.write("GET /v1/health HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
      QByteArray buffer;
      while (socket.waitForReadyRead(2000)) {
        buffer += socket.readAll();
        if (const std::optional<Answer> answer = takeAnswer(buffer)) {
          if (answer->status == 200) {
            return true;
          }
          break;
        }
      }
    }
    QThread::msleep(50);
  }
  return false;
}

// Oversized bodies at once, from clients that keep sending: each must be refused at the bound, and the memory
// that held them given back.
void oversizedBurst(quint16 port, const QString& token) {
  std::vector<std::unique_ptr<QTcpSocket>> sockets;
  const QByteArray chunk(1024 * 1024, ' ');
  for (int i = 0; i < 5; ++i) {
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QHostAddress::LocalHost, port);
    if (!socket->waitForConnected(5000)) {
      die(QStringLiteral("the burst could not connect"));
    }
    QByteArray head = "POST /v1/request HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n";
    if (i < 4) {
      head += "Authorization: Bearer " + token.toLatin1() + "\r\nTransfer-Encoding: chunked\r\n\r\n";
    } else {
      head += "Content-Length: 300000000\r\n\r\n";  // no token
    }
    socket->write(head);
    for (int piece = 0; piece < 16; ++piece) {
      socket->write(i < 4 ? QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n" : chunk);
    }
    sockets.push_back(std::move(socket));
  }
  QEventLoop loop;
  QTimer::singleShot(15000, &loop, &QEventLoop::quit);
  QTimer poll;
  QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
    const bool all = std::all_of(sockets.begin(), sockets.end(), [](const auto& socket) {
      return socket->bytesAvailable() > 0 || socket->state() == QAbstractSocket::UnconnectedState;
    });
    if (all) {
      loop.quit();
    }
  });
  poll.start(20);
  loop.exec();
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("soak_host"));
  QCommandLineParser parser;
  parser.addOptions({{QStringLiteral("daemon"), QStringLiteral("adjustacc-host"), QStringLiteral("path")},
                     {QStringLiteral("pg"), QStringLiteral("PostgreSQL connection text"), QStringLiteral("text")},
                     {QStringLiteral("seconds"), QStringLiteral("length of the load"), QStringLiteral("n"),
                      QStringLiteral("60")},
                     {QStringLiteral("clients"), QStringLiteral("clients at once"), QStringLiteral("n"),
                      QStringLiteral("6")}});
  parser.process(app);
  const QString daemon = parser.value(QStringLiteral("daemon"));
  const int seconds = std::clamp(parser.value(QStringLiteral("seconds")).toInt(), 4, 300);
  const int clientCount = std::clamp(parser.value(QStringLiteral("clients")).toInt(), 1, 64);
  const auto parsed = host::DatabaseOptions::fromPostgresConnectionString(parser.value(QStringLiteral("pg")));
  if (daemon.isEmpty() || !parsed.ok()) {
    die(QStringLiteral("usage: soak_host --daemon PATH --pg \"host=.. port=.. user=.. dbname=..\" [--seconds N]"));
  }
  const host::DatabaseOptions admin = parsed.value();
  if (const auto opened = host::openDatabase(admin, kAdmin); !opened.ok()) {
    die(opened.error());
  }
  const QString tag = QString::number(QCoreApplication::applicationPid());
  const QString schema = QStringLiteral("soak_") + tag;
  const QString role = QStringLiteral("soak_svc_") + tag;
  exec(QStringLiteral("CREATE ROLE %1 LOGIN").arg(role));
  const auto cleanUp = [&] {
    QSqlQuery query(QSqlDatabase::database(kAdmin, false));
    query.exec(QStringLiteral("DROP SCHEMA IF EXISTS %1 CASCADE").arg(schema));
    query.exec(QStringLiteral("DROP OWNED BY %1").arg(role));
    query.exec(QStringLiteral("DROP ROLE IF EXISTS %1").arg(role));
  };

  const QString adminText = connectionText(admin, admin.userName, schema);
  runCommand(daemon, {QStringLiteral("init-db"), QStringLiteral("--demo"), QStringLiteral("--service-role"), role,
                      QStringLiteral("--pg"), adminText});
  const QString token = runCommand(daemon, {QStringLiteral("token"), QStringLiteral("ISSUE"), QStringLiteral("--officer"),
                                            kOfficer, QStringLiteral("--pg"), adminText});
  exec(QStringLiteral("SET search_path TO %1").arg(schema));
  QSqlQuery facts(QSqlDatabase::database(kAdmin, false));
  if (!facts.exec(QStringLiteral("SELECT NEXT_NBR FROM NBR_SEQ WHERE NBR_TYP_CD = 'F'")) || !facts.next()) {
    die(QStringLiteral("no refund number series"));
  }
  const qint64 firstNumber = facts.value(0).toLongLong();
  if (!facts.exec(QStringLiteral("SELECT COUNT(*) FROM NBR_ISSUED WHERE NBR_TYP_CD = 'F'")) || !facts.next()) {
    die(QStringLiteral("no table of issued numbers"));
  }
  const qint64 issuedBefore = facts.value(0).toLongLong();
  if (!facts.exec(QStringLiteral("SELECT REF_TYP_CD, REF_NBR FROM ACCT_RCVBL ORDER BY ACCT_RCVBL_ID")) || !facts.next()) {
    die(QStringLiteral("no account in the demo set"));
  }
  const QString type = facts.value(0).toString();
  const QString number = facts.value(1).toString();

  quint16 port = 0;
  {
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0)) {
      die(QStringLiteral("no free loopback port"));
    }
    port = probe.serverPort();
  }
  QTemporaryDir logs;
  QProcess service;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("adjustacc.host.request.info=false"));
  service.setProcessEnvironment(environment);
  service.setStandardOutputFile(logs.filePath(QStringLiteral("service.log")), QIODevice::Append);
  service.setStandardErrorFile(logs.filePath(QStringLiteral("service.log")), QIODevice::Append);
  const QStringList serve = {QStringLiteral("serve"), QStringLiteral("--listen"), QStringLiteral("127.0.0.1"),
                             QStringLiteral("--port"), QString::number(port), QStringLiteral("--workers"),
                             QStringLiteral("4"), QStringLiteral("--pg"), connectionText(admin, role, schema)};
  const auto startService = [&] {
    service.start(daemon, serve);
    if (!service.waitForStarted(10000) || !waitHealthy(port, 30000)) {
      QFile log(logs.filePath(QStringLiteral("service.log")));
      log.open(QIODevice::ReadOnly);
      cleanUp();
      die(QStringLiteral("the service did not come up: ") + QString::fromLocal8Bit(log.readAll()).right(2000));
    }
  };
  startService();

  Stats stats;
  std::vector<std::unique_ptr<SoakClient>> clients;
  for (int i = 0; i < clientCount; ++i) {
    clients.push_back(std::make_unique<SoakClient>(port, token, type, number, stats, i));
    clients.back()->start();
  }
  QElapsedTimer clock;
  clock.start();
  QEventLoop loop;
  double killedAt = 0;
  double downMs = 0;
  QTimer::singleShot(seconds * 500, &loop, [&] {
    killedAt = static_cast<double>(clock.elapsed()) / 1000.0;
    service.kill();  // SIGKILL: no draining, no goodbye
    service.waitForFinished(10000);
    QElapsedTimer down;
    down.start();
    startService();
    downMs = static_cast<double>(down.elapsed());
  });
  QTimer::singleShot(seconds * 1000, &loop, [&] {
    for (const auto& client : clients) {
      client->stop();
    }
  });
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, &loop, [&] {
    const bool done = std::all_of(clients.begin(), clients.end(), [](const auto& client) { return client->idle(); });
    if (done || clock.elapsed() > (seconds + 60) * 1000LL) {
      loop.quit();
    }
  });
  watch.start(50);
  loop.exec();
  clients.clear();

  const double rssBefore = residentMb(service.processId(), "VmRSS:");
  oversizedBurst(port, token);
  const double rssDuring = residentMb(service.processId(), "VmRSS:");
  QThread::msleep(1000);
  const double rssAfter = residentMb(service.processId(), "VmRSS:");
  const double rssPeak = residentMb(service.processId(), "VmHWM:");
  service.terminate();
  service.waitForFinished(15000);

  // The record, against what the clients were told.
  std::map<QString, std::pair<int, QString>> issued;  // request id -> numbers issued, the first of them
  std::map<QString, int> trail;                       // request id -> audit entries
  QSqlQuery query(QSqlDatabase::database(kAdmin, false));
  if (!query.exec(QStringLiteral("SELECT REQUEST_ID, COUNT(*), MIN(NBR) FROM NBR_ISSUED WHERE NBR_TYP_CD = 'F' "
                                 "AND REQUEST_ID IS NOT NULL GROUP BY REQUEST_ID"))) {
    die(query.lastError().text());
  }
  while (query.next()) {
    issued[query.value(0).toString()] = {query.value(1).toInt(), query.value(2).toString()};
  }
  if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM NBR_ISSUED WHERE NBR_TYP_CD = 'F'")) || !query.next()) {
    die(query.lastError().text());
  }
  const qint64 issuedDuring = query.value(0).toLongLong() - issuedBefore;
  if (!query.exec(QStringLiteral("SELECT REQUEST_ID, COUNT(*) FROM AUDIT_TRAIL WHERE REQUEST_ID IS NOT NULL "
                                 "GROUP BY REQUEST_ID"))) {
    die(query.lastError().text());
  }
  while (query.next()) {
    trail[query.value(0).toString()] = query.value(1).toInt();
  }
  std::map<QString, bool> recorded;
  if (!query.exec(QStringLiteral("SELECT REQUEST_ID FROM REQUEST_LOG WHERE REQUEST_CD = 60"))) {
    die(query.lastError().text());
  }
  while (query.next()) {
    recorded[query.value(0).toString()] = true;
  }
  if (!query.exec(QStringLiteral("SELECT NEXT_NBR FROM NBR_SEQ WHERE NBR_TYP_CD = 'F'")) || !query.next()) {
    die(query.lastError().text());
  }
  const qint64 numbersTaken = query.value(0).toLongLong() - firstNumber;

  // A whole save leaves as many audit entries as every other save of its kind.
  std::map<int, int> entryCounts;
  for (const auto& [id, entries] : trail) {
    if (recorded.count(id) != 0) {
      ++entryCounts[entries];
    }
  }
  const int wholeEntries = entryCounts.empty() ? 0
                                               : std::max_element(entryCounts.begin(), entryCounts.end(), [](const auto& a, const auto& b) {
                                                   return a.second < b.second;
                                                 })->first;
  int lost = 0;
  int partial = 0;
  int doubled = stats.ackedTwiceDifferently;
  for (const auto& [id, answered] : stats.acked) {
    const auto found = issued.find(id);
    if (found == issued.end() && recorded.count(id) == 0) {
      ++lost;
    } else if (found != issued.end() && found->second.first > 1) {
      ++doubled;
    } else if (found == issued.end() || recorded.count(id) == 0 || !answered.startsWith(found->second.second)) {
      ++partial;
    }
  }
  for (const auto& [id, yes] : recorded) {
    const auto found = issued.find(id);
    const auto entries = trail.find(id);
    const int entryCount = entries == trail.end() ? 0 : entries->second;
    if (found == issued.end() || entryCount < wholeEntries) {
      ++partial;  // on record, but not all of it
    } else if (entryCount > wholeEntries) {
      ++doubled;
    }
  }
  if (numbersTaken != issuedDuring) {
    ++partial;  // the series moved without a number on record, or the other way round
  }
  cleanUp();

  const auto all = [&] {
    std::vector<double> values = stats.saveMs;
    values.insert(values.end(), stats.inquiryMs.begin(), stats.inquiryMs.end());
    return values;
  }();
  std::printf("soak: %d clients for %d s, service killed (SIGKILL) at %.1f s and answering again %.0f ms later\n",
              clientCount, seconds, killedAt, downMs);
  QString refusals = QString::number(stats.refused);
  if (!stats.firstRefusal.isEmpty()) {
    refusals += QStringLiteral(" (the first: %1)").arg(stats.firstRefusal);
  }
  std::printf("soak requests %zu: saves acknowledged %zu, inquiries %zu, answered 503 %d, cut by the kill %d, "
              "resent %d, refused %s\n",
              all.size(), stats.acked.size(), stats.inquiryMs.size(), stats.unavailable, stats.cut, stats.resent,
              qPrintable(refusals));
  std::printf("soak latency_ms p50 %.2f p99 %.2f (saves p50 %.2f p99 %.2f, inquiries p50 %.2f p99 %.2f)\n",
              percentile(all, 0.5), percentile(all, 0.99), percentile(stats.saveMs, 0.5),
              percentile(stats.saveMs, 0.99), percentile(stats.inquiryMs, 0.5), percentile(stats.inquiryMs, 0.99));
  std::printf("soak memory_mb before %.0f during %.0f after %.0f peak %.0f (4 chunked bodies of 16 MB and one "
              "declared 300 MB, all refused at the bound)\n",
              rssBefore, rssDuring, rssAfter, rssPeak);
  std::printf("soak lost %d partial %d doubled %d\n", lost, partial, doubled);
  std::fflush(stdout);
  QSqlDatabase::database(kAdmin, false).close();
  QSqlDatabase::removeDatabase(kAdmin);
  return lost + partial + doubled == 0 && !stats.acked.empty() ? 0 : 1;
}
