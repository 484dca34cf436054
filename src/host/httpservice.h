#pragma once
// The shared host system's HTTP+JSON service (the heart of adjustacc-host):
//   POST /v1/request  body: a request; Authorization: Bearer <token>; answers the host's reply
//   GET  /v1/health   {"status":"ok","database":"ok"}, or 503 when the database does not answer
//
// The HTTP front (httpfront.h) parses and frames; checking the token, decoding the request, carrying it out and
// encoding the reply happen on a pool of worker threads, each with its own database connection. A body is
// taken in before the token is checked only when it is small (no more than a socket holds anyway); a larger
// one is read only once its token has been accepted.
//
// Statuses: 200 for every answer of the host system (its own refusals travel in the reply's error text);
// 400 for a request that is not a valid request; 401 for a missing, unknown or revoked token; 403 for a request
// whose user is not the token's officer; 404/405 for other paths and methods (405 with Allow); 413 for a body
// over the bound; 415 for a body that is not JSON; 503 when the database is down or too much work is waiting.
// Every refusal carries a failing reply as JSON, so that the desktop can show its text. A caller is never told
// what the database said; the log is.

#include "hostsystem.h"
#include "httpfront.h"
#include "messaging/jsoncodec.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

namespace adjustacc::host {

class HostPool;

struct HttpServiceOptions {
  DatabaseOptions database;
  // Worker threads (one database connection each); 0 chooses 1 for SQLite and 4 for PostgreSQL.
  int workers = 0;
  // Largest request body accepted.
  qsizetype maxBodyBytes = messaging::jsonlimits::kMaxRequestBytes;
  // Requests allowed to wait for a free worker before new ones are answered 503.
  int maxQueued = 256;
  // Open connections at most (more wait to be accepted), and how long a connection may keep the service
  // waiting for its next request, the rest of a body, or for reading its answers before it is closed.
  int maxConnections = 512;
  std::chrono::milliseconds idleTimeout{15000};
  // How long a worker trusts what it read of a token; a revoked token stops working within this time.
  std::chrono::milliseconds tokenCacheLifetime{5000};
  // How long a worker's inquiries go by what it read of an officer (active, rights); saves always read afresh.
  std::chrono::milliseconds officerCacheLifetime = HostSystem::kDefaultOfficerCacheLifetime;
  // Which officers of a refund worksheet must differ (HostSystem::setDutySeparation).
  DutySeparation dutySeparation = DutySeparation::NeighbouringSteps;
};

// What the service logs for each request it answered.
struct RequestLogEntry {
  QString officerId;  // empty when unknown (no or bad token)
  int code = 0;       // request code; 0 when the body was not a request
  QString requestId;
  int status = 0;  // HTTP status
  qint64 milliseconds = 0;
  QString path;
  QString error;   // the reply's error text, or why the request was refused
  QString detail;  // what the caller was not told (the database's own words)
};

class HttpService : public QObject {
  Q_OBJECT
public:
  explicit HttpService(HttpServiceOptions options, QObject* parent = nullptr);
  // Stops the workers (running requests finish) and closes every connection.
  ~HttpService() override;

  // Serves HTTPS with this certificate and private key (PEM files; RSA or EC key). Call before listen().
  messaging::Result<bool> useTls(const QString& certificateFile, const QString& keyFile);

  // Starts listening; port 0 picks a free one. Returns the port, or a failure text.
  messaging::Result<quint16> listen(const QHostAddress& address, quint16 port);
  // Stops taking new connections; requests already received are still answered.
  void stopListening();

  // Requests received and not yet answered.
  int inFlight() const { return m_inFlight; }
  int workerCount() const;

  // The bearer token of an Authorization header value ("Bearer <token>"), or an empty text.
  static QString bearerToken(const QByteArray& authorization);
  // One log line for a request: "officer=X code=47 request=ID status=200 ms=3", and for a refusal
  // ` refused="why"`. Every value is bounded and escaped: whatever a caller sends stays on its one line.
  static QString logLine(const RequestLogEntry& entry);

Q_SIGNALS:
  void requestFinished(const adjustacc::host::RequestLogEntry& entry);
  // In-flight count came back to zero.
  void idle();

private:
  struct Pending;
  struct Outcome;
  void handleExchange(const std::shared_ptr<HttpExchange>& exchange);
  void handlePost(const std::shared_ptr<Pending>& pending);
  void checkTokenFirst(const std::shared_ptr<Pending>& pending, const QString& token);
  void carryOut(const std::shared_ptr<Pending>& pending, const QString& token, const QString& officerId,
                const QByteArray& body);
  void handleHealth(const std::shared_ptr<Pending>& pending);
  // Refuses a caller not signed on, with the reply-to name and request id of a small body read for it.
  void refuseUnsigned(const std::shared_ptr<Pending>& pending, int status, const QString& text);
  void refuseBody(const std::shared_ptr<Pending>& pending, HttpExchange::Body outcome);
  void refuse(const std::shared_ptr<Pending>& pending, int status, const QString& text, HttpHeaders headers = {});
  void finish(const std::shared_ptr<Pending>& pending, const Outcome& outcome);

  HttpServiceOptions m_options;
  std::unique_ptr<HttpFront> m_front;
  std::unique_ptr<HostPool> m_pool;
  int m_inFlight = 0;
};

}  // namespace adjustacc::host

Q_DECLARE_METATYPE(adjustacc::host::RequestLogEntry)
