#pragma once
// The embedded host link: the agency host system in the desktop process, on a worker thread of its own,
// over a SQLite file in the user's data folder. On first start (the file is new, or holds no officers yet)
// the schema is created and the demo set loaded; a database in use is never refilled.
//
// For showing and testing time-outs the link can hold each reply back for a while (artificial latency)
// and can drop replies altogether; the request is still carried out, as a real host would when the
// answer is lost on the way back.

#include "hostsystem.h"
#include "messaging/hostlink.h"

#include <QDate>
#include <QString>

#include <atomic>
#include <memory>

namespace adjustacc::host {

class HostPool;

struct EmbeddedLinkOptions {
  // Folder of the database file; empty for the user's application data folder.
  QString dataFolder;
  QString fileName = QStringLiteral("adjustacc.sqlite");
  // The signed-on officer; every request is carried out as this officer.
  QString officerId;
  // The day the demo set is laid out around; an invalid date means today.
  QDate demoDay;
  int latencyMs = 0;
  bool dropReplies = false;
  // Which officers of a refund worksheet must differ (HostSystem::setDutySeparation). The database keeps the
  // worksheets of every officer who signs on at this desktop, so the agency's setting applies here too.
  DutySeparation dutySeparation = DutySeparation::NeighbouringSteps;
};

class EmbeddedLink : public messaging::HostLink {
  Q_OBJECT
public:
  explicit EmbeddedLink(EmbeddedLinkOptions options, QObject* parent = nullptr);
  // Waits for the request being carried out (if any), then closes the database.
  ~EmbeddedLink() override;

  void submit(const messaging::Request& request) override;

  QString databasePath() const { return m_databasePath; }
  QString officerId() const;
  void setOfficerId(const QString& officerId);

  int latency() const { return m_latencyMs.load(); }
  void setLatency(int milliseconds);
  bool dropsReplies() const { return m_dropReplies.load(); }
  void setDropReplies(bool drop);

  // Requests handed over whose reply has not been delivered (or dropped) yet.
  int pending() const { return m_pending; }

Q_SIGNALS:
  // The database could not be opened or prepared; every request is then answered with a failing reply.
  void databaseError(const QString& text);

private:
  void deliver(const messaging::Reply& reply);

  QString m_databasePath;
  QString m_officerId;
  std::atomic<int> m_latencyMs{0};
  std::atomic<bool> m_dropReplies{false};
  const DutySeparation m_dutySeparation;  // read by the worker thread; never changes
  int m_pending = 0;
  bool m_errorReported = false;
  std::unique_ptr<HostPool> m_pool;
};

}  // namespace adjustacc::host
