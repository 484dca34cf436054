#include "hostpool.h"

#include <QDateTime>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <atomic>

#ifdef __linux__
#include <pthread.h>
#endif

namespace adjustacc::host {

Q_LOGGING_CATEGORY(lcPool, "adjustacc.host.pool")

namespace {

// A connection that could not be opened is tried again on the next job, but not more often than this,
// so that a database that is down does not turn every request into a connection attempt.
constexpr qint64 kReopenIntervalMs = 2000;

std::atomic<int> g_poolSerial{0};

}  // namespace

bool HostSession::checkConnection() {
  if (!m_system) {
    return false;
  }
  QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
  if (query.exec(QStringLiteral("SELECT 1")) && query.next()) {
    return true;
  }
  m_error = QStringLiteral("The database does not answer: %1").arg(query.lastError().text());
  m_system.reset();
  m_tokens.reset();
  m_lastAttemptMs = 0;
  return false;
}

HostPool::HostPool(const QString& name, int threads, Opener opener) : m_opener(std::move(opener)) {
  const int serial = ++g_poolSerial;
  const int count = threads < 1 ? 1 : threads;
  m_threads.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const QString connectionName = QStringLiteral("%1-%2-%3").arg(name).arg(serial).arg(i);
    // Plain threads: Qt adopts them on first use, and QtSql binds each connection to the one that opened it.
    m_threads.emplace_back([this, connectionName] { run(connectionName); });
  }
}

HostPool::~HostPool() {
  std::deque<Job> dropped;
  {
    const std::lock_guard lock(m_mutex);
    m_stopping = true;
    dropped.swap(m_jobs);
  }
  m_wake.notify_all();
  for (std::thread& thread : m_threads) {
    thread.join();
  }
}

void HostPool::post(Job job) {
  {
    const std::lock_guard lock(m_mutex);
    if (m_stopping) {
      return;
    }
    m_jobs.push_back(std::move(job));
  }
  m_wake.notify_one();
}

int HostPool::queued() const {
  const std::lock_guard lock(m_mutex);
  return static_cast<int>(m_jobs.size());
}

HostPool::Opener HostPool::plainOpener(const DatabaseOptions& options) {
  return [options](const QString& connectionName) { return openDatabase(options, connectionName); };
}

void HostPool::openSession(HostSession& session) {
  session.m_lastAttemptMs = QDateTime::currentMSecsSinceEpoch();
  session.m_system.reset();
  session.m_tokens.reset();
  if (QSqlDatabase::contains(session.m_connectionName)) {
    QSqlDatabase::database(session.m_connectionName, false).close();
    QSqlDatabase::removeDatabase(session.m_connectionName);
  }
  const messaging::Result<bool> opened = m_opener(session.m_connectionName);
  if (!opened.ok()) {
    session.m_error = opened.error();
    qCWarning(lcPool, "%s: %s", qUtf8Printable(session.m_connectionName), qUtf8Printable(session.m_error));
    return;
  }
  session.m_error.clear();
  session.m_system = std::make_unique<HostSystem>(session.m_connectionName);
  session.m_tokens = std::make_unique<TokenStore>(session.m_connectionName);
}

void HostPool::run(const QString& connectionName) {
#ifdef __linux__
  // A name of its own in top, perf and the debugger.
  pthread_setname_np(pthread_self(), "host-worker");
#endif
  HostSession session;
  session.m_connectionName = connectionName;
  openSession(session);

  for (;;) {
    Job job;
    {
      std::unique_lock lock(m_mutex);
      m_wake.wait(lock, [this] { return !m_jobs.empty() || m_stopping; });
      if (m_stopping) {
        break;
      }
      job = std::move(m_jobs.front());
      m_jobs.pop_front();
    }
    if (!session.m_system && QDateTime::currentMSecsSinceEpoch() - session.m_lastAttemptMs >= kReopenIntervalMs) {
      openSession(session);
    }
    job(session);
  }

  // The host objects hold queries on the connection; they go first, then the connection itself.
  session.m_system.reset();
  session.m_tokens.reset();
  if (QSqlDatabase::contains(connectionName)) {
    QSqlDatabase::database(connectionName, false).close();
    QSqlDatabase::removeDatabase(connectionName);
  }
}

}  // namespace adjustacc::host
