#pragma once
// The HTTP/1.1 front of the host service: connections, request heads and bodies, answers. Qt's own HTTP server
// (6.4) reads a whole request body before its handler sees the request and answers pipelined requests in the
// order they finish; a service that unknown callers can reach needs more than that:
//  - the head is handed over before any of the body is read, so a request can be refused by its declared size,
//    its content type or its token without taking in what it sends;
//  - answers leave in the order the requests came on their connection, however the workers finish them;
//  - a body is bounded whether it comes with Content-Length or chunked; a request carrying both framings, or
//    two lengths, is refused (that disagreement is how requests are smuggled past a proxy);
//  - a connection that keeps the front waiting (sends nothing, or reads nothing of its answers) is closed after
//    a settable time, and the open connections are bounded (beyond the bound new ones wait to be accepted).
// Everything here runs on the thread the front lives on; the handler passes work to other threads itself.

#include "messaging/result.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QSslConfiguration>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <utility>

class QTcpServer;
class QTcpSocket;

namespace adjustacc::host {

class HttpConnection;

struct HttpFrontOptions {
  // Open connections at most; beyond them new connections wait in the listen queue until one closes.
  int maxConnections = 512;
  // How long a connection may keep the front waiting: for the whole head of its next request, between two
  // pieces of a body, for reading what was written to it. Then it is closed.
  std::chrono::milliseconds idleTimeout{15000};
  // A request head (request line and header lines) larger than this is refused (431).
  qsizetype maxHeadBytes = 16 * 1024;
  // The body of an answered request that has not been read is read and thrown away up to this size, so that
  // the connection can stay open; a longer one closes the connection after the answer.
  qsizetype maxDiscardBytes = 4 * 1024 * 1024;
  // Requests of one connection waiting for their answers; the next ones are read when one has been answered.
  int maxPipelined = 16;
};

using HttpHeaders = QList<std::pair<QByteArray, QByteArray>>;

// A request line and its header lines, as far as the front needs them to frame the body.
struct HttpHead {
  QByteArray method;
  QByteArray target;     // as sent
  QByteArray path;       // the target without its query
  int minorVersion = 1;  // HTTP/1.x
  HttpHeaders headers;   // names in lower case, values without surrounding blanks
  qint64 contentLength = 0;
  bool chunked = false;
  bool keepAlive = true;
  bool expectsContinue = false;
  // When the head itself is wrong (framing, size, version), the status and reason to refuse it with; the
  // connection closes after that answer.
  int refusal = 0;
  QString refusalText;

  // The first value of a header (name in lower case), or an empty text.
  QByteArray header(QByteArrayView lowerName) const;
  bool hasBody() const { return chunked || contentLength > 0; }
};

struct HttpAnswer {
  int status = 200;
  QByteArray contentType;
  QByteArray body;
  HttpHeaders headers;  // further header lines
};

// One request on a connection, from its head to its answer. Used on the front's thread only; it may outlive
// its connection (a client that went away), and then reads nothing and answers nobody.
class HttpExchange {
public:
  enum class Body {
    Complete,   // the whole body, within the limit
    TooLarge,   // longer than the limit: nothing more is read from the connection, which closes after the answer
    Malformed,  // the chunked framing is broken: as TooLarge
    Lost,       // the client went away first
  };
  using BodyHandler = std::function<void(Body outcome, const QByteArray& body)>;

  explicit HttpExchange(HttpHead head) : m_head(std::move(head)) {}

  const HttpHead& head() const { return m_head; }
  // Reads the body, keeping at most `limit` bytes; `done` runs once, possibly before this returns.
  void readBody(qsizetype limit, BodyHandler done);
  // The answer, once. A body not read yet is read and thrown away, or the connection closes after the answer.
  void answer(HttpAnswer answer);
  bool isAnswered() const { return m_answered; }
  bool isConnected() const { return m_connection != nullptr; }

private:
  friend class HttpConnection;
  enum class BodyState { Unread, Keeping, Discarding, Done };

  HttpHead m_head;
  HttpConnection* m_connection = nullptr;
  BodyState m_bodyState = BodyState::Unread;
  BodyHandler m_bodyHandler;
  qsizetype m_bodyLimit = 0;
  QByteArray m_body;
  bool m_answered = false;
  HttpAnswer m_answer;
  bool m_continueWanted = false;
  bool m_continueSent = false;
};

class HttpFront : public QObject {
  Q_OBJECT
public:
  using Handler = std::function<void(const std::shared_ptr<HttpExchange>& exchange)>;

  explicit HttpFront(HttpFrontOptions options, QObject* parent = nullptr);
  ~HttpFront() override;

  // Runs for every request head, wrong ones included (HttpHead::refusal); it must answer each exchange once.
  void setHandler(Handler handler) { m_handler = std::move(handler); }
  // Speaks HTTPS with this configuration. Call before listen().
  void useTls(const QSslConfiguration& configuration);

  // Starts listening; port 0 picks a free one. Returns the port, or a failure text.
  messaging::Result<quint16> listen(const QHostAddress& address, quint16 port);
  // Stops taking new connections; open ones go on.
  void stopListening();

  int connectionCount() const { return static_cast<int>(m_connections.size()); }
  const HttpFrontOptions& options() const { return m_options; }

private:
  friend class HttpConnection;
  void acceptConnections();
  void connectionClosed(HttpConnection* connection);
  void sweep();
  // Milliseconds on the front's clock, for the connections' deadlines.
  qint64 now() const { return m_clock.elapsed(); }
  // The Date header's value for this second.
  const QByteArray& dateValue();

  HttpFrontOptions m_options;
  Handler m_handler;
  std::unique_ptr<QTcpServer> m_server;
  std::optional<QSslConfiguration> m_tls;
  std::set<HttpConnection*> m_connections;
  QTimer m_sweeper;
  QElapsedTimer m_clock;
  bool m_full = false;
  qint64 m_dateSecond = -1;
  QByteArray m_date;
};

}  // namespace adjustacc::host
