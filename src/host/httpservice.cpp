#include "httpservice.h"

#include "hostpool.h"
#include "messaging/jsoncodec.h"

#include <QFile>
#include <QHttpServer>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QPointer>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTcpServer>
#include <QTcpSocket>

namespace adjustacc::host {

using messaging::Reply;
using messaging::Request;
using messaging::Result;
using Status = QHttpServerResponder::StatusCode;

Q_LOGGING_CATEGORY(lcRequests, "adjustacc.host.request")

namespace {

const QByteArray kJson = QByteArrayLiteral("application/json");

// The reply-to name and request id of a body that could not be decoded, when they can still be read,
// so that the desktop's request message recognises the refusal as its answer.
std::pair<QString, QString> envelopeOf(const QByteArray& body) {
  const QJsonDocument document = QJsonDocument::fromJson(body);
  if (!document.isObject()) {
    return {};
  }
  const QJsonObject object = document.object();
  return {object.value(QLatin1String("replyTo")).toString(), object.value(QLatin1String("requestId")).toString()};
}

QByteArray failureBody(const QString& replyTo, const QString& requestId, const QString& text) {
  return messaging::encodeReply(Reply::failure(replyTo, requestId, text));
}

int statusNumber(Status status) { return static_cast<int>(status); }

}  // namespace

struct HttpService::Pending {
  explicit Pending(QHttpServerResponder&& r) : responder(std::move(r)), socket(responder.socket()) {
    timer.start();
  }
  QHttpServerResponder responder;
  QPointer<QTcpSocket> socket;
  QElapsedTimer timer;
};

HttpService::HttpService(HttpServiceOptions options, QObject* parent)
    : QObject(parent), m_options(std::move(options)), m_server(std::make_unique<QHttpServer>()) {
  qRegisterMetaType<RequestLogEntry>();
  int workers = m_options.workers;
  if (workers <= 0) {
    workers = m_options.database.driver == QLatin1String("QPSQL") ? 4 : 1;
  }
  m_pool = std::make_unique<HostPool>(QStringLiteral("adjustacc-host"), workers,
                                      HostPool::plainOpener(m_options.database));

  m_server->route(QStringLiteral("/v1/request"), QHttpServerRequest::Method::Post,
                  [this](const QHttpServerRequest& request, QHttpServerResponder&& responder) {
                    handlePost(request, std::move(responder));
                  });
  m_server->route(QStringLiteral("/v1/health"), QHttpServerRequest::Method::Get,
                  [this](const QHttpServerRequest&, QHttpServerResponder&& responder) {
                    handleHealth(std::move(responder));
                  });
  m_server->setMissingHandler([this](const QHttpServerRequest& request, QHttpServerResponder&& responder) {
    auto pending = std::make_shared<Pending>(std::move(responder));
    ++m_inFlight;
    const QString path = request.url().path();
    const bool knownPath = path == QLatin1String("/v1/request") || path == QLatin1String("/v1/health");
    RequestLogEntry entry;
    entry.path = path;
    entry.error = knownPath ? QStringLiteral("This method is not allowed here.")
                            : QStringLiteral("There is no such service path.");
    finish(pending, statusNumber(knownPath ? Status::MethodNotAllowed : Status::NotFound),
           failureBody({}, {}, entry.error), entry);
  });
}

HttpService::~HttpService() {
  // Workers first: they may still be carrying out requests; their answers to this object are discarded.
  m_pool.reset();
  m_server.reset();
}

int HttpService::workerCount() const { return m_pool->size(); }

Result<bool> HttpService::useTls(const QString& certificateFile, const QString& keyFile) {
  QFile certificateText(certificateFile);
  if (!certificateText.open(QIODevice::ReadOnly)) {
    return Result<bool>::failure(QStringLiteral("The certificate file %1 could not be read.").arg(certificateFile));
  }
  const QList<QSslCertificate> chain = QSslCertificate::fromData(certificateText.readAll(), QSsl::Pem);
  if (chain.isEmpty()) {
    return Result<bool>::failure(QStringLiteral("The file %1 holds no PEM certificate.").arg(certificateFile));
  }
  QFile keyText(keyFile);
  if (!keyText.open(QIODevice::ReadOnly)) {
    return Result<bool>::failure(QStringLiteral("The key file %1 could not be read.").arg(keyFile));
  }
  const QByteArray keyData = keyText.readAll();
  QSslKey key(keyData, QSsl::Rsa, QSsl::Pem);
  if (key.isNull()) {
    key = QSslKey(keyData, QSsl::Ec, QSsl::Pem);
  }
  if (key.isNull()) {
    return Result<bool>::failure(QStringLiteral("The file %1 holds no PEM private key (RSA or EC).").arg(keyFile));
  }
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.setLocalCertificateChain(chain);
  configuration.setPrivateKey(key);
  configuration.setPeerVerifyMode(QSslSocket::VerifyNone);  // clients prove themselves with their token
  m_server->sslSetup(configuration);
  return true;
}

Result<quint16> HttpService::listen(const QHostAddress& address, quint16 port) {
  const quint16 bound = m_server->listen(address, port);
  if (bound == 0) {
    return Result<quint16>::failure(
        QStringLiteral("Could not listen on %1 port %2.").arg(address.toString()).arg(port));
  }
  return bound;
}

void HttpService::stopListening() {
  for (QTcpServer* server : m_server->servers()) {
    server->close();
  }
}

QString HttpService::bearerToken(const QByteArray& authorization) {
  const QByteArray value = authorization.trimmed();
  static const QByteArray scheme = QByteArrayLiteral("bearer ");
  if (value.size() <= scheme.size() || value.left(scheme.size()).toLower() != scheme) {
    return {};
  }
  return QString::fromLatin1(value.mid(scheme.size()).trimmed());
}

QString HttpService::logLine(const RequestLogEntry& entry) {
  auto orDash = [](const QString& text) { return text.isEmpty() ? QStringLiteral("-") : text; };
  QString line = QStringLiteral("officer=%1 code=%2 request=%3 status=%4 ms=%5")
                     .arg(orDash(entry.officerId), entry.code > 0 ? QString::number(entry.code) : QStringLiteral("-"),
                          orDash(entry.requestId))
                     .arg(entry.status)
                     .arg(entry.milliseconds);
  if (entry.path != QLatin1String("/v1/request")) {
    line += QStringLiteral(" path=") + orDash(entry.path);
  }
  return line;
}

void HttpService::handlePost(const QHttpServerRequest& request, QHttpServerResponder&& responder) {
  auto pending = std::make_shared<Pending>(std::move(responder));
  ++m_inFlight;
  RequestLogEntry entry;
  entry.path = QStringLiteral("/v1/request");

  QByteArray authorization;
  qsizetype declaredLength = -1;
  for (const auto& [name, value] : request.headers()) {
    if (name.compare("authorization", Qt::CaseInsensitive) == 0) {
      authorization = value;
    } else if (name.compare("content-length", Qt::CaseInsensitive) == 0) {
      bool ok = false;
      declaredLength = value.trimmed().toLongLong(&ok);
      if (!ok) {
        declaredLength = -1;
      }
    }
  }
  const QByteArray body = request.body();
  if (body.size() > m_options.maxBodyBytes || declaredLength > m_options.maxBodyBytes) {
    entry.error = QStringLiteral("The request is larger than the host accepts (%1 bytes at most).")
                      .arg(m_options.maxBodyBytes);
    finish(pending, statusNumber(Status::PayloadTooLarge), failureBody({}, {}, entry.error), entry);
    return;
  }
  const QString token = bearerToken(authorization);
  if (token.isEmpty()) {
    const auto [replyTo, requestId] = envelopeOf(body);
    entry.requestId = requestId;
    entry.error = QStringLiteral("The request carries no sign-on token.");
    finish(pending, statusNumber(Status::Unauthorized), failureBody(replyTo, requestId, entry.error), entry);
    return;
  }
  if (m_pool->queued() >= m_options.maxQueued) {
    const auto [replyTo, requestId] = envelopeOf(body);
    entry.requestId = requestId;
    entry.error = QStringLiteral("The host system is too busy to take the request; please try again.");
    finish(pending, statusNumber(Status::ServiceUnavailable), failureBody(replyTo, requestId, entry.error), entry);
    return;
  }

  m_pool->post([this, pending, token, body, entry](HostSession& session) mutable {
    int status = statusNumber(Status::Ok);
    QByteArray answer;
    const auto refuse = [&](Status code, const QString& replyTo, const QString& requestId, const QString& text) {
      status = statusNumber(code);
      entry.error = text;
      answer = failureBody(replyTo, requestId, text);
    };

    if (TokenStore* tokens = session.tokens()) {
      tokens->setCacheLifetime(m_options.tokenCacheLifetime);
    }
    if (HostSystem* system = session.system()) {
      system->setOfficerCacheLifetime(m_options.officerCacheLifetime);
      system->setDutySeparation(m_options.dutySeparation);
    }
    if (!session.system()) {
      const auto [replyTo, requestId] = envelopeOf(body);
      entry.requestId = requestId;
      refuse(Status::ServiceUnavailable, replyTo, requestId,
             QStringLiteral("The host database is not available: %1").arg(session.error()));
    } else if (const TokenStore::Check check = session.tokens()->verify(token); !check.valid()) {
      const auto [replyTo, requestId] = envelopeOf(body);
      entry.requestId = requestId;
      if (check.outcome == TokenStore::Check::Outcome::Failed) {
        session.checkConnection();
        refuse(Status::ServiceUnavailable, replyTo, requestId, check.error);
      } else {
        refuse(Status::Unauthorized, replyTo, requestId, check.error);
      }
    } else {
      entry.officerId = check.officerId;
      const Result<Request> decoded = messaging::decodeRequest(body);
      if (!decoded.ok()) {
        const auto [replyTo, requestId] = envelopeOf(body);
        entry.requestId = requestId;
        refuse(Status::BadRequest, replyTo, requestId,
               QStringLiteral("The request could not be read: %1").arg(decoded.error()));
      } else {
        const Request& hostRequest = decoded.value();
        entry.code = hostRequest.code;
        entry.requestId = hostRequest.requestId;
        // Officer ids compare without regard to case, as the host compares them.
        if (hostRequest.user.trimmed().compare(check.officerId, Qt::CaseInsensitive) != 0) {
          refuse(Status::Forbidden, hostRequest.replyTo, hostRequest.requestId,
                 QStringLiteral("The request is made for user %1, but the sign-on token belongs to officer %2.")
                     .arg(hostRequest.user.trimmed(), check.officerId));
        } else {
          const Reply reply = session.system()->handle(hostRequest, check.officerId);
          entry.error = reply.error;
          if (!reply.error.isEmpty()) {
            // A failing reply may mean the database went away; then reconnect before the next hostRequest.
            session.checkConnection();
          }
          answer = messaging::encodeReply(reply);
        }
      }
    }
    QMetaObject::invokeMethod(
        this, [this, pending, status, answer, entry] { finish(pending, status, answer, entry); },
        Qt::QueuedConnection);
  });
}

void HttpService::handleHealth(QHttpServerResponder&& responder) {
  auto pending = std::make_shared<Pending>(std::move(responder));
  ++m_inFlight;
  m_pool->post([this, pending](HostSession& session) {
    QJsonObject health;
    // A dead connection is dropped here and opened again before the next job.
    const bool up = session.checkConnection();
    health.insert(QLatin1String("status"), up ? QLatin1String("ok") : QLatin1String("unavailable"));
    health.insert(QLatin1String("database"), up ? QStringLiteral("ok") : session.error());
    RequestLogEntry entry;
    entry.path = QStringLiteral("/v1/health");
    entry.error = up ? QString() : session.error();
    const QByteArray body = QJsonDocument(health).toJson(QJsonDocument::Compact);
    const int status = statusNumber(up ? Status::Ok : Status::ServiceUnavailable);
    QMetaObject::invokeMethod(
        this, [this, pending, status, body, entry] { finish(pending, status, body, entry); }, Qt::QueuedConnection);
  });
}

void HttpService::finish(const std::shared_ptr<Pending>& pending, int status, const QByteArray& body,
                         RequestLogEntry entry) {
  // The client may have gone while the request was carried out; then there is nobody to answer.
  if (pending->socket) {
    if (status == statusNumber(Status::Unauthorized)) {
      pending->responder.write(body, {{"Content-Type", kJson}, {"WWW-Authenticate", "Bearer"}}, Status::Unauthorized);
    } else {
      pending->responder.write(body, {{"Content-Type", kJson}}, static_cast<Status>(status));
    }
  }
  entry.status = status;
  entry.milliseconds = pending->timer.elapsed();
  qCInfo(lcRequests).noquote() << logLine(entry);
  Q_EMIT requestFinished(entry);
  if (--m_inFlight == 0) {
    Q_EMIT idle();
  }
}

}  // namespace adjustacc::host
