#include "httpservice.h"

#include "hostpool.h"
#include "messaging/jsoncodec.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>

#include <algorithm>

namespace adjustacc::host {

using messaging::Reply;
using messaging::Request;
using messaging::Result;

Q_LOGGING_CATEGORY(lcRequests, "adjustacc.host.request")

namespace {

const QByteArray kJson = QByteArrayLiteral("application/json");

// A body up to this size is read with its head, before the token is checked: it costs no more than what a
// socket holds unread anyway, and spares the check a trip of its own. A larger body (or a chunked one) is read
// only once its token has been accepted. An unauthenticated caller's small body is read for its reply-to name
// and request id, so that the desktop's request message recognises the refusal as its answer.
constexpr qsizetype kBodyAtHandBytes = 64 * 1024;

// The longest a value may be in a log line, by kind.
constexpr qsizetype kLogIdChars = 80;
constexpr qsizetype kLogTextChars = 300;

const QString kDatabaseUnavailable =
    QStringLiteral("The host system's database is not available at the moment; please try again later.");
const QString kTooBusy = QStringLiteral("The host system is too busy to take the request; please try again.");
const QString kDatabaseLost =
    QStringLiteral("The host system's database stopped answering while the request was carried out; please send "
                   "it again (a save that went through is never applied twice).");

// The reply-to name and request id of a body that could not be decoded, when they can still be read.
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

bool isJsonMediaType(const QByteArray& contentType) {
  const qsizetype parameters = contentType.indexOf(';');
  return contentType.left(parameters < 0 ? contentType.size() : parameters).trimmed().toLower() == kJson;
}

bool isPlainLogChar(QChar c) {
  const char16_t u = c.unicode();
  return (u >= u'a' && u <= u'z') || (u >= u'A' && u <= u'Z') || (u >= u'0' && u <= u'9') || u == u'.' ||
         u == u'_' || u == u'-' || u == u':' || u == u'/' || u == u'@' || u == u'+';
}

bool mustEscape(QChar c) {
  switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:  // direction overrides would make a line read other than it is
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
    case QChar::Other_NotAssigned:
      return true;
    default:
      return false;
  }
}

// A value for a log line: as it is when it is a plain word, otherwise quoted with every control character
// escaped; at most `limit` characters of it, with how many more there were.
QString logValue(const QString& text, qsizetype limit) {
  if (text.isEmpty()) {
    return QStringLiteral("-");
  }
  if (text.size() <= limit && std::all_of(text.begin(), text.end(), isPlainLogChar)) {
    return text;
  }
  const qsizetype shown = std::min(text.size(), limit);
  QString out;
  out.reserve(shown + 16);
  out += u'"';
  for (qsizetype i = 0; i < shown; ++i) {
    const QChar c = text.at(i);
    if (c.isHighSurrogate() && i + 1 < shown && text.at(i + 1).isLowSurrogate()) {
      out += c;
      out += text.at(++i);
    } else if (c == u'"' || c == u'\\') {
      out += u'\\';
      out += c;
    } else if (c == u'\n') {
      out += QLatin1String("\\n");
    } else if (c == u'\r') {
      out += QLatin1String("\\r");
    } else if (c == u'\t') {
      out += QLatin1String("\\t");
    } else if (c.isSurrogate() || mustEscape(c)) {
      out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
    } else {
      out += c;
    }
  }
  out += u'"';
  if (text.size() > shown) {
    out += QStringLiteral("...(%1 more characters)").arg(text.size() - shown);
  }
  return out;
}

// What a worker hands back: the token's verdict or the answer, and what to log.
struct TokenVerdict {
  int status = 200;  // 200 when valid
  QString officerId;
  QString text;
  QString detail;
};

// The service's cache lifetimes, on the worker's token store and host system.
void configure(HostSession& session, const HttpServiceOptions& options) {
  if (TokenStore* tokens = session.tokens()) {
    tokens->setCacheLifetime(options.tokenCacheLifetime);
  }
  if (HostSystem* system = session.system()) {
    system->setOfficerCacheLifetime(options.officerCacheLifetime);
    system->setDutySeparation(options.dutySeparation);
  }
}

TokenVerdict verifyToken(HostSession& session, const QString& token) {
  if (!session.system()) {
    return {503, {}, kDatabaseUnavailable, session.error()};
  }
  const TokenStore::Check check = session.tokens()->verify(token);
  if (check.valid()) {
    return {200, check.officerId, {}, {}};
  }
  if (check.outcome == TokenStore::Check::Outcome::Failed) {
    session.checkConnection();
    return {503, {}, kDatabaseUnavailable, check.error};
  }
  return {401, {}, check.error, {}};
}

}  // namespace

struct HttpService::Pending {
  explicit Pending(std::shared_ptr<HttpExchange> e) : exchange(std::move(e)) { timer.start(); }
  std::shared_ptr<HttpExchange> exchange;
  QElapsedTimer timer;
  RequestLogEntry entry;
};

struct HttpService::Outcome {
  int status = 200;
  QByteArray body;
  RequestLogEntry entry;
  HttpHeaders headers;
};

HttpService::HttpService(HttpServiceOptions options, QObject* parent)
    : QObject(parent), m_options(std::move(options)) {
  qRegisterMetaType<RequestLogEntry>();
  int workers = m_options.workers;
  if (workers <= 0) {
    workers = m_options.database.driver == QLatin1String("QPSQL") ? 4 : 1;
  }
  m_pool = std::make_unique<HostPool>(QStringLiteral("adjustacc-host"), workers,
                                      HostPool::plainOpener(m_options.database));
  HttpFrontOptions front;
  front.maxConnections = m_options.maxConnections;
  front.idleTimeout = m_options.idleTimeout;
  front.maxDiscardBytes = m_options.maxBodyBytes;
  m_front = std::make_unique<HttpFront>(front);
  m_front->setHandler([this](const std::shared_ptr<HttpExchange>& exchange) { handleExchange(exchange); });
}

HttpService::~HttpService() {
  // Workers first: they may still be carrying out requests; their answers to this object are discarded.
  m_pool.reset();
  m_front.reset();
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
  m_front->useTls(configuration);
  return true;
}

Result<quint16> HttpService::listen(const QHostAddress& address, quint16 port) {
  return m_front->listen(address, port);
}

void HttpService::stopListening() { m_front->stopListening(); }

QString HttpService::bearerToken(const QByteArray& authorization) {
  const QByteArray value = authorization.trimmed();
  static const QByteArray scheme = QByteArrayLiteral("bearer ");
  if (value.size() <= scheme.size() || value.left(scheme.size()).toLower() != scheme) {
    return {};
  }
  return QString::fromLatin1(value.mid(scheme.size()).trimmed());
}

QString HttpService::logLine(const RequestLogEntry& entry) {
  QString line = QStringLiteral("officer=%1 code=%2 request=%3 status=%4 ms=%5")
                     .arg(logValue(entry.officerId, kLogIdChars),
                          entry.code > 0 ? QString::number(entry.code) : QStringLiteral("-"),
                          logValue(entry.requestId, kLogIdChars))
                     .arg(entry.status)
                     .arg(entry.milliseconds);
  if (entry.path != QLatin1String("/v1/request")) {
    line += QStringLiteral(" path=") + logValue(entry.path, kLogIdChars);
  }
  if (entry.status >= 400) {
    line += QStringLiteral(" refused=") + logValue(entry.error, kLogTextChars);
  } else if (!entry.error.isEmpty()) {
    line += QStringLiteral(" error=") + logValue(entry.error, kLogTextChars);
  }
  if (!entry.detail.isEmpty()) {
    line += QStringLiteral(" detail=") + logValue(entry.detail, kLogTextChars);
  }
  return line;
}

void HttpService::handleExchange(const std::shared_ptr<HttpExchange>& exchange) {
  ++m_inFlight;
  auto pending = std::make_shared<Pending>(exchange);
  const HttpHead& head = exchange->head();
  pending->entry.path = QString::fromLatin1(head.path);
  if (head.refusal != 0) {
    refuse(pending, head.refusal, head.refusalText);
    return;
  }
  if (head.path == "/v1/request") {
    if (head.method == "POST") {
      handlePost(pending);
    } else {
      refuse(pending, 405, QStringLiteral("This method is not allowed here."), {{"Allow", "POST"}});
    }
  } else if (head.path == "/v1/health") {
    if (head.method == "GET" || head.method == "HEAD") {
      handleHealth(pending);
    } else {
      refuse(pending, 405, QStringLiteral("This method is not allowed here."), {{"Allow", "GET, HEAD"}});
    }
  } else {
    refuse(pending, 404, QStringLiteral("There is no such service path."));
  }
}

void HttpService::handlePost(const std::shared_ptr<Pending>& pending) {
  const HttpHead& head = pending->exchange->head();
  if (!head.chunked && head.contentLength > m_options.maxBodyBytes) {
    refuseBody(pending, HttpExchange::Body::TooLarge);
    return;
  }
  if (!isJsonMediaType(head.header("content-type"))) {
    refuse(pending, 415, QStringLiteral("The request must be sent as JSON (Content-Type: application/json)."));
    return;
  }
  const QString token = bearerToken(head.header("authorization"));
  if (token.isEmpty()) {
    refuseUnsigned(pending, 401, QStringLiteral("The request carries no sign-on token."));
    return;
  }
  if (m_pool->queued() >= m_options.maxQueued) {
    refuseUnsigned(pending, 503, kTooBusy);
    return;
  }
  if (head.chunked || head.contentLength > kBodyAtHandBytes) {
    checkTokenFirst(pending, token);
    return;
  }
  pending->exchange->readBody(kBodyAtHandBytes, [this, pending, token](HttpExchange::Body outcome,
                                                                       const QByteArray& body) {
    if (outcome != HttpExchange::Body::Complete) {
      refuseBody(pending, outcome);
      return;
    }
    carryOut(pending, token, {}, body);
  });
}

void HttpService::checkTokenFirst(const std::shared_ptr<Pending>& pending, const QString& token) {
  m_pool->post([this, pending, token](HostSession& session) {
    configure(session, m_options);
    const TokenVerdict verdict = verifyToken(session, token);
    QMetaObject::invokeMethod(
        this,
        [this, pending, verdict] {
          if (verdict.status != 200) {
            pending->entry.detail = verdict.detail;
            refuse(pending, verdict.status, verdict.text);
            return;
          }
          pending->entry.officerId = verdict.officerId;
          pending->exchange->readBody(m_options.maxBodyBytes, [this, pending, officer = verdict.officerId](
                                                                  HttpExchange::Body outcome, const QByteArray& body) {
            if (outcome != HttpExchange::Body::Complete) {
              refuseBody(pending, outcome);
              return;
            }
            if (m_pool->queued() >= m_options.maxQueued) {
              refuse(pending, 503, kTooBusy);
              return;
            }
            carryOut(pending, {}, officer, body);
          });
        },
        Qt::QueuedConnection);
  });
}

void HttpService::carryOut(const std::shared_ptr<Pending>& pending, const QString& token, const QString& officerId,
                           const QByteArray& body) {
  m_pool->post([this, pending, token, officerId, body, entry = pending->entry](HostSession& session) mutable {
    Outcome outcome;
    const auto refuseWith = [&](int status, const QString& replyTo, const QString& requestId, const QString& text) {
      outcome.status = status;
      entry.error = text;
      outcome.body = failureBody(replyTo, requestId, text);
    };

    configure(session, m_options);
    QString officer = officerId;
    if (officer.isEmpty()) {
      const TokenVerdict verdict = verifyToken(session, token);
      if (verdict.status != 200) {
        // The caller is not signed on: only the reply-to name and request id of its body are used.
        const auto [replyTo, requestId] = envelopeOf(body);
        entry.requestId = requestId;
        entry.detail = verdict.detail;
        refuseWith(verdict.status, replyTo, requestId, verdict.text);
      } else {
        officer = verdict.officerId;
      }
    } else if (!session.system()) {
      const auto [replyTo, requestId] = envelopeOf(body);
      entry.requestId = requestId;
      entry.detail = session.error();
      refuseWith(503, replyTo, requestId, kDatabaseUnavailable);
    }

    if (!officer.isEmpty() && outcome.body.isEmpty()) {
      entry.officerId = officer;
      const Result<Request> decoded = messaging::decodeRequest(body);
      if (!decoded.ok()) {
        const auto [replyTo, requestId] = envelopeOf(body);
        entry.requestId = requestId;
        refuseWith(400, replyTo, requestId, decoded.error());
      } else {
        const Request& hostRequest = decoded.value();
        entry.code = hostRequest.code;
        entry.requestId = hostRequest.requestId;
        // Officer ids compare without regard to case, as the host compares them.
        if (hostRequest.user.trimmed().compare(officer, Qt::CaseInsensitive) != 0) {
          refuseWith(403, hostRequest.replyTo, hostRequest.requestId,
                     QStringLiteral("The request is made for user %1, but the sign-on token belongs to officer %2.")
                         .arg(hostRequest.user.trimmed(), officer));
        } else {
          const Reply reply = session.system()->handle(hostRequest, officer);
          if (!reply.error.isEmpty() && !session.checkConnection()) {
            // The database went away under the request: that is the service being unavailable, whatever
            // statement noticed it. The connection is opened again for the next request.
            entry.detail = reply.error;
            refuseWith(503, hostRequest.replyTo, hostRequest.requestId, kDatabaseLost);
          } else {
            entry.error = reply.error;
            outcome.body = messaging::encodeReply(reply);
          }
        }
      }
    }
    outcome.entry = std::move(entry);
    QMetaObject::invokeMethod(
        this, [this, pending, outcome = std::move(outcome)] { finish(pending, outcome); }, Qt::QueuedConnection);
  });
}

void HttpService::handleHealth(const std::shared_ptr<Pending>& pending) {
  m_pool->post([this, pending, entry = pending->entry](HostSession& session) mutable {
    // A dead connection is dropped here and opened again before the next job.
    const bool up = session.checkConnection();
    QJsonObject health;
    health.insert(QLatin1String("status"), up ? QLatin1String("ok") : QLatin1String("unavailable"));
    health.insert(QLatin1String("database"), up ? QLatin1String("ok") : QLatin1String("unavailable"));
    Outcome outcome;
    outcome.status = up ? 200 : 503;
    outcome.body = QJsonDocument(health).toJson(QJsonDocument::Compact);
    if (!up) {
      entry.error = kDatabaseUnavailable;
      entry.detail = session.error();
    }
    outcome.entry = std::move(entry);
    QMetaObject::invokeMethod(
        this, [this, pending, outcome = std::move(outcome)] { finish(pending, outcome); }, Qt::QueuedConnection);
  });
}

void HttpService::refuseUnsigned(const std::shared_ptr<Pending>& pending, int status, const QString& text) {
  const HttpHead& head = pending->exchange->head();
  if (head.chunked || head.contentLength > kBodyAtHandBytes) {
    refuse(pending, status, text);
    return;
  }
  pending->exchange->readBody(kBodyAtHandBytes, [this, pending, status, text](HttpExchange::Body outcome,
                                                                              const QByteArray& body) {
    Outcome refusal;
    refusal.status = status;
    refusal.entry = pending->entry;
    refusal.entry.error = text;
    const auto [replyTo, requestId] =
        outcome == HttpExchange::Body::Complete ? envelopeOf(body) : std::pair<QString, QString>();
    refusal.entry.requestId = requestId;
    refusal.body = failureBody(replyTo, requestId, text);
    finish(pending, refusal);
  });
}

void HttpService::refuseBody(const std::shared_ptr<Pending>& pending, HttpExchange::Body outcome) {
  switch (outcome) {
    case HttpExchange::Body::TooLarge:
      refuse(pending, 413,
             QStringLiteral("The request is larger than the host accepts (%1 bytes at most).").arg(m_options.maxBodyBytes));
      return;
    case HttpExchange::Body::Malformed:
      refuse(pending, 400, QStringLiteral("The request's chunked body is malformed."));
      return;
    case HttpExchange::Body::Lost:
    case HttpExchange::Body::Complete:
      refuse(pending, 400, QStringLiteral("The client went away before its request's body arrived."));
      return;
  }
}

void HttpService::refuse(const std::shared_ptr<Pending>& pending, int status, const QString& text,
                         HttpHeaders headers) {
  Outcome refusal;
  refusal.status = status;
  refusal.body = failureBody({}, {}, text);
  refusal.headers = std::move(headers);
  refusal.entry = pending->entry;
  refusal.entry.error = text;
  finish(pending, refusal);
}

void HttpService::finish(const std::shared_ptr<Pending>& pending, const Outcome& outcome) {
  HttpAnswer answer{outcome.status, kJson, outcome.body, outcome.headers};
  if (outcome.status == 401 && answer.headers.isEmpty()) {
    answer.headers.append(std::pair<QByteArray, QByteArray>("WWW-Authenticate", "Bearer"));
  }
  // A client that went away meanwhile is answered by nobody; the request is still logged.
  pending->exchange->answer(std::move(answer));
  RequestLogEntry entry = outcome.entry;
  entry.status = outcome.status;
  entry.milliseconds = pending->timer.elapsed();
  qCInfo(lcRequests).noquote() << logLine(entry);
  Q_EMIT requestFinished(entry);
  if (--m_inFlight == 0) {
    Q_EMIT idle();
  }
}

}  // namespace adjustacc::host
