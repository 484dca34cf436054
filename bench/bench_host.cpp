// Speed of the host links, each against an anchor measured in the same run:
//  - the account inquiry through the embedded link, end to end (submit -> replyReady with the record sets),
//    for accounts of 10, 1,000 and 50,000 receivables, against the raw SQL of the same rows on the same
//    SQLite file (a QSqlQuery reading every value);
//  - the adjustacc-host service on PostgreSQL under a bounded loopback load (four lean keep-alive HTTP clients,
//    each with one inquiry in flight; the desktop's remote link is measured too, for information) against the
//    same statements sent straight to PostgreSQL by four threads.
// The ratio lines come last: ours over the anchor.
#include "benchsupport.h"

#include "host/embeddedlink.h"
#include "host/hostsystem.h"
#include "host/httpservice.h"
#include "host/tokens.h"
#include "messaging/jsoncodec.h"
#include "messaging/remotelink.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>
#include <QUuid>

#include <benchmark/benchmark.h>

#include <ctime>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace adjustacc;
using messaging::Reply;
using messaging::Request;

namespace {

using benchsupport::die;
using benchsupport::kAccountSizes;
using benchsupport::kReceiptsSql;
using benchsupport::kReceivablesSql;

// Payment-plan accounts of the benchmark: reference type and number per size.
const QString kPlanType = QStringLiteral("PP");
QString planNumber(int size) { return QString::number(8000000 + size); }

// Adds one payment-plan account per size, its receivables filed under the plan's reference.
void addBenchmarkAccounts(const QString& connection, const std::vector<int>& sizes) {
  QSqlDatabase db = QSqlDatabase::database(connection, false);
  if (!db.transaction()) {
    die(db.lastError().text());
  }
  QSqlQuery query(db);
  if (!query.exec(QStringLiteral("INSERT INTO CUSTOMER (CUST_ID, CUST_NM, ADDR_1, CITY, STATE, ZIP) "
                                 "VALUES ('BENCH0001', 'BENCHMARK HAULING LLC', '1 MAIN ST', 'CAPITOL', 'NE', '68500')"))) {
    die(query.lastError().text());
  }
  query.prepare(QStringLiteral(
      "INSERT INTO ACCT_RCVBL (ACCT_RCVBL_TYP_CD, ACCT_RCVBL_NBR, ACCT_RCVBL_CK_NBR, REF_TYP_CD, REF_NBR, CUST_ID, "
      "STP_DT, ORIG_ASSMT_AMT, LTE_FEE_AMT, ACRD_INTRST_AMT, ACCT_RCVBL_DUE_AMT, ACCT_RCVBL_BAL_AMT, ACCT_STTS_CD, "
      "ACTV_STTS_CD, CASE_ID) VALUES ('BN', ?, ?, ?, ?, 'BENCH0001', ?, ?, ?, ?, ?, ?, 'A', 'A', ?)"));
  int serial = 0;
  const QDate stop = QDate::currentDate().addDays(90);
  for (int size : sizes) {
    for (int i = 0; i < size; ++i, ++serial) {
      const qint64 original = 10000 + (serial % 977) * 100;
      query.addBindValue(QStringLiteral("%1").arg(serial, 7, 10, QLatin1Char('0')));
      query.addBindValue(QString::number(serial % 10));
      query.addBindValue(kPlanType);
      query.addBindValue(planNumber(size));
      query.addBindValue(stop);
      query.addBindValue(original);
      query.addBindValue(qint64{2500});
      query.addBindValue(qint64{(serial % 13) * 10});
      query.addBindValue(original + 2500);
      query.addBindValue(original / 2);
      query.addBindValue(serial % 7 == 0 ? QVariant(QStringLiteral("CASE%1").arg(serial)) : QVariant());
      if (!query.exec()) {
        die(query.lastError().text());
      }
    }
  }
  if (!db.commit()) {
    die(db.lastError().text());
  }
}

QString firstOfficer(const QString& connection) {
  QSqlQuery query(QSqlDatabase::database(connection, false));
  if (!query.exec(QStringLiteral("SELECT OFFICER_ID FROM OFFICER ORDER BY OFFICER_ID")) || !query.next()) {
    die(QStringLiteral("the demo set has no officers"));
  }
  return query.value(0).toString();
}

Request accountInquiry(const QString& officer, int size) {
  Request request;
  request.replyTo = QStringLiteral("ADJUSTACC");
  request.version = QStringLiteral("1");
  request.code = 47;
  request.user = officer;
  request.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
  request.params = {
      {QStringLiteral("MARVENTO"), QStringLiteral("key:REF_NBR"), QStringLiteral("="), planNumber(size)},
      {QStringLiteral("MARVENTO"), QStringLiteral("key:REF_TYP_CD"), QStringLiteral("="), kPlanType}};
  return request;
}

// The inquiry's statements run raw, each prepared once on its connection (as the host system keeps its own
// prepared), reading every value of every row.
class RawInquiry {
public:
  explicit RawInquiry(const QSqlDatabase& db) : m_receivables(db), m_receipts(db) {
    for (auto [query, sql] : {std::pair{&m_receivables, &kReceivablesSql}, std::pair{&m_receipts, &kReceiptsSql}}) {
      query->setForwardOnly(true);
      if (!query->prepare(*sql)) {
        die(query->lastError().text());
      }
    }
  }
  // Returns the receivable rows read.
  int run(int size) {
    int rows = 0;
    for (QSqlQuery* query : {&m_receivables, &m_receipts}) {
      query->bindValue(0, kPlanType);
      query->bindValue(1, planNumber(size));
      query->bindValue(2, kPlanType);
      query->bindValue(3, planNumber(size));
      if (!query->exec()) {
        die(query->lastError().text());
      }
      const int columns = query->record().count();
      while (query->next()) {
        for (int i = 0; i < columns; ++i) {
          QVariant value = query->value(i);
          benchmark::DoNotOptimize(value);
        }
        if (query == &m_receivables) {
          ++rows;
        }
      }
      query->finish();
    }
    return rows;
  }

private:
  QSqlQuery m_receivables;
  QSqlQuery m_receipts;
};

// --- the embedded link on SQLite -------------------------------------------------------------------------------

struct EmbeddedBench {
  QTemporaryDir dir;
  QString officer;
  std::unique_ptr<host::EmbeddedLink> link;
  QString rawConnection = QStringLiteral("bench-raw");
};

EmbeddedBench& embedded() {
  static EmbeddedBench* bench = [] {
    auto* b = new EmbeddedBench;
    host::DatabaseOptions options;
    options.databaseName = b->dir.filePath(QStringLiteral("adjustacc.sqlite"));
    benchsupport::openHostDatabase(options, b->rawConnection);
    if (auto demo = host::loadDemoData(b->rawConnection, QDate::currentDate()); !demo.ok()) {
      die(demo.error());
    }
    addBenchmarkAccounts(b->rawConnection, kAccountSizes);
    b->officer = firstOfficer(b->rawConnection);
    b->link = benchsupport::embeddedLink(b->dir.path(), b->officer);
    return b;
  }();
  return *bench;
}

void BM_EmbeddedInquiry(benchmark::State& state) {
  EmbeddedBench& bench = embedded();
  const int size = static_cast<int>(state.range(0));
  const Request request = accountInquiry(bench.officer, size);
  QEventLoop loop;
  Reply last;
  const auto connection = QObject::connect(bench.link.get(), &messaging::HostLink::replyReady, &loop,
                                           [&](const Reply& reply) {
                                             last = reply;
                                             loop.quit();
                                           });
  for (auto _ : state) {
    bench.link->submit(request);
    loop.exec();
    if (!last.ok()) {
      state.SkipWithError(qPrintable(last.error));
      break;
    }
    const messaging::RecordSet* receivables = last.section(QStringLiteral("ACNTSRCVBL"));
    if (!receivables || receivables->recordCount() != size) {
      state.SkipWithError("the reply does not hold the account's receivables");
      break;
    }
  }
  QObject::disconnect(connection);
  state.SetItemsProcessed(state.iterations() * size);
}

void BM_RawSqlInquiry(benchmark::State& state) {
  EmbeddedBench& bench = embedded();
  const int size = static_cast<int>(state.range(0));
  RawInquiry raw(QSqlDatabase::database(bench.rawConnection, false));
  for (auto _ : state) {
    if (raw.run(size) != size) {
      state.SkipWithError("the raw query does not find the account's receivables");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * size);
}

// The host system alone, on the calling thread: what the link adds is the difference to the embedded run.
void BM_HandleInquiry(benchmark::State& state) {
  EmbeddedBench& bench = embedded();
  const int size = static_cast<int>(state.range(0));
  host::HostSystem system(bench.rawConnection);
  const Request request = accountInquiry(bench.officer, size);
  for (auto _ : state) {
    const Reply reply = system.handle(request, bench.officer);
    if (!reply.ok()) {
      state.SkipWithError(qPrintable(reply.error));
      break;
    }
    benchmark::DoNotOptimize(reply.sections);
  }
  state.SetItemsProcessed(state.iterations() * size);
}

// Each is measured in several short repetitions, taken in random turns with the others (see main), and the
// quickest repetition counts for the ratios: the machine is shared, and a burst of other work during one
// benchmark should not decide how it compares with another.
constexpr int kRepetitions = 5;
constexpr double kRepetitionSeconds = 0.2;

BENCHMARK(BM_EmbeddedInquiry)->Name("host_inquiry/embedded")->Arg(10)->Arg(1000)->Arg(50000)->UseRealTime()
    ->Repetitions(kRepetitions)->MinTime(kRepetitionSeconds)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HandleInquiry)->Name("host_inquiry/handle")->Arg(10)->Arg(1000)->Arg(50000)->UseRealTime()
    ->Repetitions(kRepetitions)->MinTime(kRepetitionSeconds)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RawSqlInquiry)->Name("host_inquiry/raw_sql")->Arg(10)->Arg(1000)->Arg(50000)->UseRealTime()
    ->Repetitions(kRepetitions)->MinTime(kRepetitionSeconds)->Unit(benchmark::kMicrosecond);

// Keeps the least real time per iteration over the repetitions of every benchmark, for the ratio lines.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations > 0) {
        // "host_inquiry/embedded/1000/min_time:0.200/repeats:5/real_time" -> "host_inquiry/embedded/1000"
        std::string name;
        for (const QByteArray& part : QByteArray::fromStdString(run.benchmark_name()).split('/')) {
          if (!part.contains(':') && part != "real_time") {
            if (!name.empty()) {
              name += '/';
            }
            name.append(part.constData(), static_cast<std::size_t>(part.size()));
          }
        }
        const double perIteration = run.real_accumulated_time / static_cast<double>(run.iterations);
        const auto known = seconds.find(name);
        seconds[name] = known == seconds.end() ? perIteration : std::min(known->second, perIteration);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::optional<double> ratio(const std::string& ours, const std::string& anchor) const {
    const auto a = seconds.find(ours);
    const auto b = seconds.find(anchor);
    if (a == seconds.end() || b == seconds.end() || b->second <= 0) {
      return std::nullopt;
    }
    return a->second / b->second;
  }
  std::map<std::string, double> seconds;
};

// --- the service on PostgreSQL ----------------------------------------------------------------------------------

constexpr int kClients = 4;
constexpr int kWarmUpRequests = 100;
// Each measurement is bounded by a count and a time; the three are measured in turn, several rounds, and the best
// round of each counts, so that a burst of other work on the machine does not decide the ratio.
constexpr int kRounds = 6;
constexpr int kMaxRequests = 3000;
constexpr qint64 kMaxMilliseconds = 2500;
constexpr int kThroughputAccountSize = 10;

struct Throughput {
  double ours = 0;    // requests per second through the service (lean HTTP clients)
  double viaRemoteLinks = 0;  // the same through the desktop's remote link
  double direct = 0;  // the same statements per second straight to PostgreSQL
  // CPU microseconds per request, of this process and of the database server together (the least of the
  // rounds; 0 when the server's processes can not be read): less at the mercy of other work on the machine
  // than the rates.
  double oursCpu = 0;
  double directCpu = 0;
  QString skipped;    // why it was not measured
};

// CPU time spent so far by this process and, when the database server runs on this machine, by its processes
// (the postmaster, the backends alive now, and those it has already reaped).
class CpuClock {
public:
  explicit CpuClock(const QString& connection) {
    QSqlQuery query(QSqlDatabase::database(connection, false));
    if (query.exec(QStringLiteral("SELECT pg_backend_pid()")) && query.next()) {
      const std::vector<long long> backend = statFields(query.value(0).toLongLong());
      if (backend.size() > 3) {
        m_postmaster = backend[3];  // field 4: the parent
      }
    }
  }
  bool seesServer() const { return m_postmaster > 0; }
  double seconds() const {
    timespec own{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
    double total = static_cast<double>(own.tv_sec) + static_cast<double>(own.tv_nsec) / 1e9;
    if (m_postmaster <= 0) {
      return total;
    }
    const double tick = static_cast<double>(sysconf(_SC_CLK_TCK));
    const std::vector<long long> postmaster = statFields(m_postmaster);
    if (postmaster.size() > 16) {
      // Fields 14..17: its own user and system time, then that of the children it has waited for.
      total += static_cast<double>(postmaster[13] + postmaster[14] + postmaster[15] + postmaster[16]) / tick;
    }
    const QDir proc(QStringLiteral("/proc"));
    for (const QString& entry : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
      bool number = false;
      const long long pid = entry.toLongLong(&number);
      if (!number) {
        continue;
      }
      const std::vector<long long> child = statFields(pid);
      if (child.size() > 14 && child[3] == m_postmaster) {
        total += static_cast<double>(child[13] + child[14]) / tick;
      }
    }
    return total;
  }

private:
  // The numeric fields of /proc/<pid>/stat, 1-based field n at index n-1 (the name, field 2, reads as 0).
  static std::vector<long long> statFields(long long pid) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly)) {
      return {};
    }
    const QByteArray text = file.readAll();
    const qsizetype nameEnd = text.lastIndexOf(')');
    if (nameEnd < 0) {
      return {};
    }
    std::vector<long long> fields = {pid, 0};
    for (const QByteArray& field : text.mid(nameEnd + 2).trimmed().split(' ')) {
      fields.push_back(field.toLongLong());
    }
    return fields;
  }

  long long m_postmaster = 0;
};

// The PostgreSQL server to use: ADJUSTACC_TEST_PG, or a throwaway cluster started here (stopped again on return).
class PostgresServer {
public:
  PostgresServer() {
    m_connection = qEnvironmentVariable("ADJUSTACC_TEST_PG");
    if (!m_connection.isEmpty()) {
      return;
    }
    QProcess script;
    if (!runScript(script, QStringLiteral("start"), 120000) || script.exitStatus() != QProcess::NormalExit ||
        script.exitCode() != 0) {
      m_problem = QStringLiteral("no PostgreSQL: %1").arg(QString::fromLocal8Bit(script.readAllStandardError()).trimmed());
      return;
    }
    m_connection = QString::fromLocal8Bit(script.readAllStandardOutput()).trimmed();
    m_started = true;
  }
  ~PostgresServer() {
    if (m_started) {
      QProcess script;
      runScript(script, QStringLiteral("stop"), 60000);
    }
  }
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;
  const QString& connection() const { return m_connection; }
  const QString& problem() const { return m_problem; }

private:
  // Runs the cluster script with `action` on the benchmark's own port and folder; false when it did not finish
  // in `timeoutMs`.
  bool runScript(QProcess& script, const QString& action, int timeoutMs) const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ADJUSTACC_PG_PORT"), QStringLiteral("55491"));
    environment.insert(QStringLiteral("ADJUSTACC_PG_DIR"), QStringLiteral("/tmp/adjustacc-bench-pg"));
    script.setProcessEnvironment(environment);
    script.start(m_script, {action});
    return script.waitForFinished(timeoutMs);
  }

  const QString m_script = QStringLiteral(ADJUSTACC_SOURCE_DIR "/scripts/pg-test-cluster.sh");
  QString m_connection;
  QString m_problem;
  bool m_started = false;
};

// Clients keep `kClients` inquiries in flight through remote links until the count or the time is used up.
double serviceThroughput(const QUrl& url, const QString& token, const QString& officer, int count, QString* error) {
  std::vector<std::unique_ptr<messaging::RemoteLink>> links;
  QEventLoop loop;
  int sent = 0;
  int answered = 0;
  QElapsedTimer clock;
  clock.start();
  for (int i = 0; i < kClients; ++i) {
    links.push_back(std::make_unique<messaging::RemoteLink>(url, token));
    messaging::RemoteLink* link = links.back().get();
    QObject::connect(link, &messaging::HostLink::replyReady, &loop, [&, link](const Reply& reply) {
      ++answered;
      if (!reply.ok() && error->isEmpty()) {
        *error = reply.error;
      }
      const messaging::RecordSet* receivables = reply.section(QStringLiteral("ACNTSRCVBL"));
      if (reply.ok() && (!receivables || receivables->recordCount() != kThroughputAccountSize) && error->isEmpty()) {
        *error = QStringLiteral("the reply does not hold the account's receivables");
      }
      if (sent < count && clock.elapsed() < kMaxMilliseconds && error->isEmpty()) {
        ++sent;
        link->submit(accountInquiry(officer, kThroughputAccountSize));
      } else if (answered == sent) {
        loop.quit();
      }
    });
  }
  for (const auto& link : links) {
    ++sent;
    link->submit(accountInquiry(officer, kThroughputAccountSize));
  }
  loop.exec();
  return answered / (static_cast<double>(clock.nsecsElapsed()) / 1e9);
}

// A lean HTTP/1.1 load client: one keep-alive connection, one request in flight, each answer read and decoded
// (as the direct anchor reads every value). It keeps the load generator's own cost small, so that what is measured
// is the service.
class LoadClient : public QObject {
public:
  LoadClient(quint16 port, QString token, QString officer, std::function<bool()> more, QString* error)
      : m_token(std::move(token)), m_officer(std::move(officer)), m_more(std::move(more)), m_error(error) {
    QObject::connect(&m_socket, &QTcpSocket::connected, this, [this] { send(); });
    QObject::connect(&m_socket, &QTcpSocket::readyRead, this, [this] { read(); });
    QObject::connect(&m_socket, &QTcpSocket::errorOccurred, this, [this] {
      fail(QStringLiteral("load client: ") + m_socket.errorString());
    });
    m_socket.connectToHost(QHostAddress::LocalHost, port);
  }
  int answered() const { return m_answered; }
  bool busy() const { return m_busy; }
  std::function<void()> onIdle;

private:
  void send() {
    const QByteArray body = messaging::encodeRequest(accountInquiry(m_officer, kThroughputAccountSize));
    m_socket.write("POST /v1/request HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                   "Authorization: Bearer " + m_token.toLatin1() + "\r\nContent-Length: " +
                   QByteArray::number(body.size()) + "\r\n\r\n" + body);
    m_busy = true;
  }
  void read() {
    m_buffer += m_socket.readAll();
    const qsizetype end = m_buffer.indexOf("\r\n\r\n");
    if (end < 0) {
      return;
    }
    qsizetype length = -1;
    for (const QByteArray& line : m_buffer.left(end).split('\n')) {
      if (line.toLower().startsWith("content-length:")) {
        length = line.mid(15).trimmed().toLongLong();
      }
    }
    if (length < 0 || m_buffer.size() < end + 4 + length) {
      return;
    }
    const Reply reply = messaging::decodeReply(QByteArrayView(m_buffer).sliced(end + 4, length));
    m_buffer.remove(0, end + 4 + length);
    const messaging::RecordSet* receivables = reply.section(QStringLiteral("ACNTSRCVBL"));
    if (!reply.ok() || !receivables || receivables->recordCount() != kThroughputAccountSize) {
      fail(reply.ok() ? QStringLiteral("the reply does not hold the account's receivables") : reply.error);
      return;
    }
    ++m_answered;
    if (m_more()) {
      send();
    } else {
      finishUp();
    }
  }
  void fail(const QString& text) {
    if (m_error->isEmpty()) {
      *m_error = text;
    }
    finishUp();
  }
  void finishUp() {
    if (m_busy) {
      m_busy = false;
      if (onIdle) {
        onIdle();
      }
    }
  }

  QTcpSocket m_socket;
  QString m_token;
  QString m_officer;
  std::function<bool()> m_more;
  QString* m_error;
  QByteArray m_buffer;
  int m_answered = 0;
  bool m_busy = false;
};

double loadClientThroughput(quint16 port, const QString& token, const QString& officer, int count, QString* error,
                            int* answeredOut = nullptr) {
  QEventLoop loop;
  int started = 0;
  QElapsedTimer clock;
  clock.start();
  const auto more = [&] {
    if (started >= count || clock.elapsed() >= kMaxMilliseconds || !error->isEmpty()) {
      return false;
    }
    ++started;
    return true;
  };
  std::vector<std::unique_ptr<LoadClient>> clients;
  int idle = 0;
  for (int i = 0; i < kClients; ++i) {
    ++started;
    clients.push_back(std::make_unique<LoadClient>(port, token, officer, more, error));
    clients.back()->onIdle = [&] {
      if (++idle == kClients) {
        loop.quit();
      }
    };
  }
  QTimer::singleShot(kMaxMilliseconds + 10000, &loop, &QEventLoop::quit);  // a client that never connected
  loop.exec();
  int answered = 0;
  for (const auto& client : clients) {
    answered += client->answered();
  }
  if (answeredOut) {
    *answeredOut = answered;
  }
  return answered / (static_cast<double>(clock.nsecsElapsed()) / 1e9);
}

// `kClients` threads, each with its own connection, run the inquiry's statements until the count or time is used.
double directThroughput(const host::DatabaseOptions& options, int count, int* answeredOut = nullptr) {
  std::atomic<int> remaining{count};
  std::atomic<int> done{0};
  std::atomic<bool> failed{false};
  QElapsedTimer clock;
  clock.start();
  std::vector<QThread*> threads;
  for (int i = 0; i < kClients; ++i) {
    threads.push_back(QThread::create([&, i] {
      const QString name = QStringLiteral("bench-direct-%1").arg(i);
      if (!host::openDatabase(options, name).ok()) {
        failed = true;
        return;
      }
      {
        RawInquiry raw(QSqlDatabase::database(name, false));
        while (remaining.fetch_sub(1) > 0 && clock.elapsed() < kMaxMilliseconds) {
          if (raw.run(kThroughputAccountSize) != kThroughputAccountSize) {
            failed = true;
          }
          ++done;
        }
      }
      QSqlDatabase::database(name, false).close();
      QSqlDatabase::removeDatabase(name);
    }));
    threads.back()->start();
  }
  for (QThread* thread : threads) {
    thread->wait();
    delete thread;
  }
  if (failed) {
    return 0;
  }
  if (answeredOut) {
    *answeredOut = done;
  }
  return done / (static_cast<double>(clock.nsecsElapsed()) / 1e9);
}

Throughput daemonThroughput() {
  Throughput result;
  PostgresServer server;
  if (server.connection().isEmpty()) {
    result.skipped = server.problem();
    return result;
  }
  auto parsed = host::DatabaseOptions::fromPostgresConnectionString(server.connection());
  if (!parsed.ok()) {
    result.skipped = parsed.error();
    return result;
  }
  host::DatabaseOptions options = parsed.value();
  options.schema = QStringLiteral("bench_") + QUuid::createUuid().toString(QUuid::Id128).left(12);

  const QString admin = QStringLiteral("bench-pg-admin");
  QString officer;
  QString token;
  {
    if (auto opened = host::openDatabase(options, admin); !opened.ok()) {
      result.skipped = opened.error();
      return result;
    }
    if (auto schema = host::createSchema(admin); !schema.ok()) {
      die(schema.error());
    }
    if (auto demo = host::loadDemoData(admin, QDate::currentDate()); !demo.ok()) {
      die(demo.error());
    }
    addBenchmarkAccounts(admin, {kThroughputAccountSize});
    officer = firstOfficer(admin);
    host::TokenStore tokens(admin);
    if (!tokens.ensureTable().ok()) {
      die(QStringLiteral("no token table"));
    }
    token = tokens.issue(officer)->token;
  }

  // The service on a thread of its own, as in the daemon, so that the clients do not share its event loop.
  QThread serviceThread;
  QObject anchor;
  anchor.moveToThread(&serviceThread);
  serviceThread.start();
  host::HttpService* service = nullptr;
  quint16 port = 0;
  QMetaObject::invokeMethod(
      &anchor,
      [&] {
        host::HttpServiceOptions serviceOptions;
        serviceOptions.database = options;
        serviceOptions.workers = kClients;
        service = new host::HttpService(serviceOptions);
        const auto bound = service->listen(QHostAddress::LocalHost, 0);
        port = bound.ok() ? bound.value() : 0;
      },
      Qt::BlockingQueuedConnection);
  if (port == 0) {
    die(QStringLiteral("the service could not listen"));
  }
  const QUrl url(QStringLiteral("http://127.0.0.1:%1").arg(port));

  QString error;
  serviceThroughput(url, token, officer, kWarmUpRequests, &error);
  directThroughput(options, kWarmUpRequests);
  const CpuClock cpu(admin);
  const auto leastCpu = [&cpu](double& least, double start, int requests) {
    if (!cpu.seesServer() || requests <= 0) {
      return;
    }
    // The direct threads' connections end with their run: give the server a moment to reap those backends,
    // whose time then counts with the postmaster's children.
    QThread::msleep(200);
    const double perRequest = (cpu.seconds() - start) * 1e6 / requests;
    least = least > 0 ? std::min(least, perRequest) : perRequest;
  };
  for (int round = 0; round < kRounds && error.isEmpty(); ++round) {
    int answered = 0;
    double start = cpu.seconds();
    result.ours = std::max(result.ours, loadClientThroughput(port, token, officer, kMaxRequests, &error, &answered));
    leastCpu(result.oursCpu, start, answered);
    result.viaRemoteLinks = std::max(result.viaRemoteLinks, serviceThroughput(url, token, officer, kMaxRequests, &error));
    start = cpu.seconds();
    result.direct = std::max(result.direct, directThroughput(options, kMaxRequests, &answered));
    leastCpu(result.directCpu, start, answered);
  }
  if (!error.isEmpty()) {
    result.skipped = QStringLiteral("the service failed a request: ") + error;
  }

  QMetaObject::invokeMethod(&anchor, [&] { delete service; }, Qt::BlockingQueuedConnection);
  serviceThread.quit();
  serviceThread.wait();
  {
    QSqlQuery drop(QSqlDatabase::database(admin, false));
    drop.exec(QStringLiteral("DROP SCHEMA IF EXISTS %1 CASCADE").arg(options.schema));
  }
  QSqlDatabase::database(admin, false).close();
  QSqlDatabase::removeDatabase(admin);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  // The service runs here as adjustacc-host runs it: on Qt's own event loop rather than GLib's.
  if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) {
    qputenv("QT_NO_GLIB", "1");
  }
  QCoreApplication app(argc, argv);
  // The repetitions of the benchmarks are taken in random turns unless the command line says otherwise.
  std::vector<char*> arguments(argv, argv + argc);
  static char interleave[] = "--benchmark_enable_random_interleaving=true";
  const bool interleaveGiven = std::any_of(arguments.begin() + 1, arguments.end(), [](const char* argument) {
    return std::string(argument).rfind("--benchmark_enable_random_interleaving", 0) == 0;
  });
  if (!interleaveGiven) {
    arguments.insert(arguments.begin() + 1, interleave);
  }
  int benchmarkArgc = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&benchmarkArgc, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(benchmarkArgc, arguments.data())) {
    return 1;
  }
  QLoggingCategory::setFilterRules(QStringLiteral("adjustacc.host.*.info=false"));
  RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  embedded().link.reset();

  const Throughput throughput = daemonThroughput();
  if (throughput.skipped.isEmpty()) {
    std::printf("daemon_throughput: service %.0f requests/s (through remote links %.0f), direct PostgreSQL %.0f "
                "requests/s (%d clients, %d-row account)\n",
                throughput.ours, throughput.viaRemoteLinks, throughput.direct, kClients, kThroughputAccountSize);
    if (throughput.oursCpu > 0 && throughput.directCpu > 0) {
      std::printf("daemon_cpu: service %.0f us/request, direct PostgreSQL %.0f us/request (this process and the "
                  "database server together); info daemon_cpu_ratio %.3f\n",
                  throughput.oursCpu, throughput.directCpu, throughput.directCpu / throughput.oursCpu);
    }
  } else {
    std::printf("daemon_throughput skipped: %s\n", qPrintable(throughput.skipped));
  }
  for (int size : kAccountSizes) {
    const std::string n = std::to_string(size);
    if (const auto r = reporter.ratio(std::string("host_inquiry/embedded/").append(n),
                                      std::string("host_inquiry/raw_sql/").append(n))) {
      std::printf("host_inquiry_%d embedded over raw SQL: %.2f\n", size, *r);
    }
    if (const auto r = reporter.ratio(std::string("host_inquiry/handle/").append(n),
                                      std::string("host_inquiry/raw_sql/").append(n))) {
      std::printf("host_inquiry_%d host system alone over raw SQL: %.2f\n", size, *r);
    }
  }

  // Ratio lines last.
  if (const auto r = reporter.ratio("host_inquiry/embedded/1000", "host_inquiry/raw_sql/1000")) {
    std::printf("ratio host_inquiry_1000 %.3f\n", *r);
  } else {
    std::printf("ratio host_inquiry_1000 skipped\n");
  }
  if (throughput.skipped.isEmpty() && throughput.direct > 0) {
    std::printf("ratio daemon_throughput %.3f\n", throughput.ours / throughput.direct);
  } else {
    std::printf("ratio daemon_throughput skipped\n");
  }
  std::fflush(stdout);
  benchmark::Shutdown();
  return 0;
}
