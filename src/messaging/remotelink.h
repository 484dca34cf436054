#pragma once
// The remote host link: requests go as JSON to the shared host service (adjustacc-host) over HTTP,
// POST <host>/v1/request with the officer's bearer token. Whatever goes wrong on the way (no network,
// a refused connection, an HTTP error, an answer that cannot be read, a host that does not answer)
// comes back as a failing reply with a text a clerk can act on; the link never throws and never blocks.
//
// The request message keeps its own (short) time-out; the link also gives up on a transfer that hangs
// for much longer, so that nothing stays open for ever.

#include "hostlink.h"
#include "jsoncodec.h"

#include <QHash>
#include <QList>
#include <QSslCertificate>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

namespace adjustacc::messaging {

class RemoteLink : public HostLink {
  Q_OBJECT
public:
  // `hostUrl` is the service's address ("http://host:8470", optionally with a path prefix).
  RemoteLink(const QUrl& hostUrl, const QString& token, QObject* parent = nullptr);
  // Requests still on the way are aborted; their replies are not delivered.
  ~RemoteLink() override;

  void submit(const Request& request) override;

  QUrl requestUrl() const { return m_requestUrl; }
  QUrl healthUrl() const { return m_healthUrl; }
  void setToken(const QString& token) { m_token = token; }
  // Certificates to trust besides the system's, for an https host whose certificate the agency issued itself.
  void addTrustedCertificates(const QList<QSslCertificate>& certificates) { m_trusted += certificates; }

  // Milliseconds without any progress after which a transfer is abandoned (default two minutes).
  int transferTimeout() const { return m_transferTimeoutMs; }
  void setTransferTimeout(int milliseconds);

  // Largest answer accepted; a larger one is abandoned and reported.
  static constexpr qint64 kMaxReplyBytes = jsonlimits::kMaxReplyBytes;

  int pending() const { return static_cast<int>(m_inFlight.size()); }

private:
  // What the answer must be matched against.
  struct Sent {
    QString replyTo;
    QString requestId;
  };
  void finished(QNetworkReply* networkReply);
  Reply replyFor(QNetworkReply* networkReply, const Sent& sent) const;

  QNetworkAccessManager* m_network;
  QUrl m_requestUrl;
  QUrl m_healthUrl;
  QString m_token;
  QList<QSslCertificate> m_trusted;
  int m_transferTimeoutMs = 120000;
  QHash<QNetworkReply*, Sent> m_inFlight;
};

}  // namespace adjustacc::messaging
