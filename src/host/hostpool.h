#pragma once
// A small pool of host worker threads, each with its own database connection, so that whoever posts
// work (the desktop's user-interface thread, the service's HTTP thread) never waits on SQL.
//
// A QSqlDatabase connection may only be used on the thread that opened it, so each worker opens its
// connection on its own thread, keeps a HostSystem and a TokenStore over it, and closes and removes it
// again when the pool stops. Jobs are taken from one shared queue by whichever worker is free.

#include "hostsystem.h"
#include "tokens.h"

#include <QString>

#include <condition_variable>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace adjustacc::host {

// What a job finds on its worker thread.
class HostSession {
public:
  const QString& connectionName() const { return m_connectionName; }
  // Null when the connection could not be opened; error() then says why.
  HostSystem* system() const { return m_system.get(); }
  TokenStore* tokens() const { return m_tokens.get(); }
  const QString& error() const { return m_error; }

  // Runs a trivial query. When the connection no longer answers (the database went away), the session is
  // closed and opened again before the next job, and false comes back with the reason in error().
  bool checkConnection();

private:
  friend class HostPool;
  QString m_connectionName;
  std::unique_ptr<HostSystem> m_system;
  std::unique_ptr<TokenStore> m_tokens;
  QString m_error;
  qint64 m_lastAttemptMs = 0;
};

class HostPool {
public:
  // Opens (and, where wanted, prepares) one connection under the given name, on the calling worker thread.
  using Opener = std::function<messaging::Result<bool>(const QString& connectionName)>;
  // Runs on a worker thread. To hand a result back, post it to a QObject that outlives the pool.
  using Job = std::function<void(HostSession& session)>;

  // `name` prefixes the connection names (for logs); at least one thread is started.
  HostPool(const QString& name, int threads, Opener opener);
  // Stops the pool: running jobs finish, queued ones are dropped, every connection is closed and removed.
  ~HostPool();
  HostPool(const HostPool&) = delete;
  HostPool& operator=(const HostPool&) = delete;

  void post(Job job);
  int size() const { return static_cast<int>(m_threads.size()); }
  // Jobs waiting for a free worker.
  int queued() const;

  // An opener for plain connections with the given options.
  static Opener plainOpener(const DatabaseOptions& options);

private:
  void run(const QString& connectionName);
  void openSession(HostSession& session);

  Opener m_opener;
  mutable std::mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<Job> m_jobs;
  bool m_stopping = false;
  std::vector<std::thread> m_threads;
};

}  // namespace adjustacc::host
