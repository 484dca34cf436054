#include "embeddedlink.h"

#include "hostpool.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTimer>

namespace adjustacc::host {

using messaging::Reply;
using messaging::Request;
using messaging::Result;

Q_LOGGING_CATEGORY(lcEmbedded, "adjustacc.host.embedded")

namespace {

QString databasePathFor(const EmbeddedLinkOptions& options) {
  QString folder = options.dataFolder;
  if (folder.isEmpty()) {
    folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
  }
  return QDir(folder).filePath(options.fileName.isEmpty() ? QStringLiteral("adjustacc.sqlite") : options.fileName);
}

// Runs on the worker thread: opens the file, brings the schema up to date and, while the database holds no
// officers yet (a new file, or one whose first filling never finished), loads the demo set.
HostPool::Opener embeddedOpener(const QString& path, QDate demoDay) {
  return [path, demoDay](const QString& connectionName) -> Result<bool> {
    const QFileInfo file(path);
    if (!QDir().mkpath(file.absolutePath())) {
      return Result<bool>::failure(QStringLiteral("The data folder %1 could not be created.").arg(file.absolutePath()));
    }
    DatabaseOptions options;
    options.driver = QStringLiteral("QSQLITE");
    options.databaseName = path;
    if (Result<bool> opened = openDatabase(options, connectionName); !opened.ok()) {
      return opened;
    }
    if (Result<bool> schema = createSchema(connectionName); !schema.ok()) {
      return schema;
    }
    const QDate day = demoDay.isValid() ? demoDay : QDate::currentDate();
    const Result<bool> demo = loadDemoData(connectionName, day);
    if (!demo.ok()) {
      return Result<bool>::failure(QStringLiteral("The demo data could not be loaded: %1").arg(demo.error()));
    }
    if (demo.value()) {
      qCInfo(lcEmbedded, "filled %s with the demo set", qUtf8Printable(path));
    }
    return true;
  };
}

}  // namespace

EmbeddedLink::EmbeddedLink(EmbeddedLinkOptions options, QObject* parent)
    : HostLink(parent),
      m_databasePath(databasePathFor(options)),
      m_officerId(options.officerId),
      m_latencyMs(options.latencyMs < 0 ? 0 : options.latencyMs),
      m_dropReplies(options.dropReplies),
      m_dutySeparation(options.dutySeparation) {
  // One worker: SQLite serialises writers anyway, and one thread keeps the replies in request order.
  m_pool = std::make_unique<HostPool>(QStringLiteral("adjustacc-embedded"), 1,
                                      embeddedOpener(m_databasePath, options.demoDay));
}

EmbeddedLink::~EmbeddedLink() {
  // The pool joins its thread here, while this object is still whole; replies already posted to it are
  // discarded with it.
  m_pool.reset();
}

QString EmbeddedLink::officerId() const { return m_officerId; }

void EmbeddedLink::setOfficerId(const QString& officerId) { m_officerId = officerId; }

void EmbeddedLink::setLatency(int milliseconds) { m_latencyMs = milliseconds < 0 ? 0 : milliseconds; }

void EmbeddedLink::setDropReplies(bool drop) { m_dropReplies = drop; }

void EmbeddedLink::submit(const Request& request) {
  ++m_pending;
  const QString officer = m_officerId;
  m_pool->post([this, request, officer](HostSession& session) {
    Reply reply;
    if (HostSystem* system = session.system()) {
      system->setDutySeparation(m_dutySeparation);
      reply = system->handle(request, officer);
    } else {
      reply = Reply::failure(request.replyTo, request.requestId,
                             QStringLiteral("The local host database could not be opened: %1").arg(session.error()));
    }
    // The link outlives the pool (its destructor stops the pool first), so it is safe to post to.
    QMetaObject::invokeMethod(
        this, [this, reply, error = session.error()] {
          if (!error.isEmpty() && !m_errorReported) {
            m_errorReported = true;
            Q_EMIT databaseError(error);
          }
          const int latency = m_latencyMs.load();
          if (latency > 0) {
            QTimer::singleShot(latency, this, [this, reply] { deliver(reply); });
          } else {
            deliver(reply);
          }
        },
        Qt::QueuedConnection);
  });
}

void EmbeddedLink::deliver(const Reply& reply) {
  --m_pending;
  if (m_dropReplies.load()) {
    qCInfo(lcEmbedded, "reply to request %s dropped", qUtf8Printable(reply.requestId));
    return;
  }
  Q_EMIT replyReady(reply);
}

}  // namespace adjustacc::host
