#include "remotelink.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>

namespace adjustacc::messaging {

namespace {

const char* const kTooLargeProperty = "adjustacc_tooLarge";

QUrl withPath(const QUrl& base, const QString& tail) {
  QUrl url = base;
  QString path = url.path();
  while (path.endsWith(u'/')) {
    path.chop(1);
  }
  url.setPath(path + tail);
  return url;
}

QString hostText(const QUrl& url) { return url.toDisplayString(QUrl::RemovePath | QUrl::RemoveUserInfo); }

}  // namespace

RemoteLink::RemoteLink(const QUrl& hostUrl, const QString& token, QObject* parent)
    : HostLink(parent),
      m_network(new QNetworkAccessManager(this)),
      m_requestUrl(withPath(hostUrl, QStringLiteral("/v1/request"))),
      m_healthUrl(withPath(hostUrl, QStringLiteral("/v1/health"))),
      m_token(token) {}

RemoteLink::~RemoteLink() {
  const QList<QNetworkReply*> replies = m_inFlight.keys();
  m_inFlight.clear();
  for (QNetworkReply* reply : replies) {
    reply->disconnect(this);
    reply->abort();
    delete reply;
  }
}

void RemoteLink::setTransferTimeout(int milliseconds) { m_transferTimeoutMs = milliseconds < 0 ? 0 : milliseconds; }

void RemoteLink::submit(const Request& request) {
  QNetworkRequest http(m_requestUrl);
  http.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
  http.setRawHeader(QByteArrayLiteral("Accept"), QByteArrayLiteral("application/json"));
  http.setRawHeader(QByteArrayLiteral("Authorization"), QByteArrayLiteral("Bearer ") + m_token.toUtf8());
  http.setTransferTimeout(m_transferTimeoutMs);
  if (!m_trusted.isEmpty()) {
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificates(m_trusted);
    http.setSslConfiguration(tls);
  }
  // A save must never be sent twice behind the clerk's back: no automatic resending.
  http.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);

  QNetworkReply* reply = m_network->post(http, encodeRequest(request));
  m_inFlight.insert(reply, Sent{request.replyTo, request.requestId});
  connect(reply, &QNetworkReply::downloadProgress, this, [reply](qint64 received, qint64 total) {
    if (received > kMaxReplyBytes || total > kMaxReplyBytes) {
      reply->setProperty(kTooLargeProperty, true);
      reply->abort();
    }
  });
  connect(reply, &QNetworkReply::finished, this, [this, reply] { finished(reply); });
}

void RemoteLink::finished(QNetworkReply* networkReply) {
  const auto it = m_inFlight.find(networkReply);
  if (it == m_inFlight.end()) {
    return;
  }
  const Sent sent = it.value();
  m_inFlight.erase(it);
  const Reply reply = replyFor(networkReply, sent);
  networkReply->deleteLater();
  Q_EMIT replyReady(reply);
}

Reply RemoteLink::replyFor(QNetworkReply* networkReply, const Sent& sent) const {
  const auto fail = [&sent](const QString& text) { return Reply::failure(sent.replyTo, sent.requestId, text); };
  const QString host = hostText(m_requestUrl);

  if (networkReply->property(kTooLargeProperty).toBool()) {
    return fail(QStringLiteral("The answer of the host system at %1 is larger than %2 MB and was not read.")
                    .arg(host)
                    .arg(kMaxReplyBytes / (1024 * 1024)));
  }
  const QVariant statusAttribute = networkReply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
  if (!statusAttribute.isValid()) {
    // No HTTP answer at all.
    switch (networkReply->error()) {
      case QNetworkReply::ConnectionRefusedError:
        return fail(QStringLiteral("The host system at %1 could not be reached: the connection was refused. "
                                   "It may not be running.")
                        .arg(host));
      case QNetworkReply::HostNotFoundError:
        return fail(QStringLiteral("The host system at %1 could not be reached: the host name is unknown.").arg(host));
      case QNetworkReply::SslHandshakeFailedError:
        return fail(QStringLiteral("The host system at %1 could not be reached safely: its certificate was not "
                                   "accepted (%2).")
                        .arg(host, networkReply->errorString()));
      case QNetworkReply::TimeoutError:
      case QNetworkReply::OperationCanceledError:
        return fail(QStringLiteral("The host system at %1 did not answer within %2 seconds.")
                        .arg(host)
                        .arg((m_transferTimeoutMs + 999) / 1000));
      default:
        return fail(QStringLiteral("The host system at %1 could not be reached: %2")
                        .arg(host, networkReply->errorString()));
    }
  }

  const int status = statusAttribute.toInt();
  const QByteArray body = networkReply->readAll();
  if (status != 200 && !QJsonDocument::fromJson(body).isObject()) {
    // Not an answer of the host service itself (a proxy's error page, say).
    const QString reason = networkReply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
    const QString statusText = (QString::number(status) + u' ' + reason).trimmed();
    return fail(QStringLiteral("The host system at %1 refused the request (HTTP status %2).").arg(host, statusText));
  }
  Reply reply = decodeReply(body, sent.replyTo, sent.requestId);
  if (reply.requestId.isEmpty()) {
    // Refusals of requests the service could not read carry no id; they still answer this request.
    reply.requestId = sent.requestId;
  }
  if (reply.replyTo.isEmpty()) {
    reply.replyTo = sent.replyTo;
  }
  if (reply.requestId != sent.requestId) {
    return fail(QStringLiteral("The host system at %1 answered another request (%2).").arg(host, reply.requestId));
  }
  if (status != 200 && reply.error.isEmpty()) {
    // A refusal must fail, whatever its body says.
    return fail(QStringLiteral("The host system at %1 refused the request (HTTP status %2).").arg(host).arg(status));
  }
  return reply;
}

}  // namespace adjustacc::messaging
