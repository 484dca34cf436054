#pragma once
// A raw HTTP/1.1 client on one loopback connection, for what Qt's own client never sends: pipelined requests,
// framings that disagree, bodies that stop half way, silence. Its waits run the event loop, so that a service
// living on the test's thread goes on working meanwhile.

#include <QByteArray>
#include <QList>
#include <QTcpSocket>
#include <QTest>

#include <optional>
#include <utility>

namespace adjustacc::host::testing {

struct WireResponse {
  int status = 0;
  QList<std::pair<QByteArray, QByteArray>> headers;  // names in lower case
  QByteArray body;

  QByteArray header(const QByteArray& lowerName) const {
    for (const auto& [name, value] : headers) {
      if (name == lowerName) {
        return value;
      }
    }
    return {};
  }
};

class WireClient {
public:
  explicit WireClient(quint16 port) { m_socket.connectToHost(QHostAddress::LocalHost, port); }

  bool waitConnected(int waitMs) {
    return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, waitMs);
  }
  void send(const QByteArray& bytes) { m_socket.write(bytes); }

  // The next whole response (a "100 Continue" counts as one), or nothing when none came within the time or the
  // connection closed first. The answer to HEAD has no body, whatever its Content-Length says.
  std::optional<WireResponse> next(int waitMs, bool toHead = false) {
    m_toHead = toHead;
    std::optional<WireResponse> response;
    [[maybe_unused]] const bool settled = QTest::qWaitFor(
        [&] {
          m_buffer += m_socket.readAll();
          response = take();
          return response.has_value() || m_socket.state() == QAbstractSocket::UnconnectedState;
        },
        waitMs);
    if (!response) {
      m_buffer += m_socket.readAll();
      response = take();
    }
    return response;
  }

  // Waits until the service has closed the connection; false when it is still open after the time.
  bool waitClosed(int waitMs) {
    return QTest::qWaitFor(
        [this] {
          m_buffer += m_socket.readAll();
          return m_socket.state() == QAbstractSocket::UnconnectedState;
        },
        waitMs);
  }
  bool isOpen() const { return m_socket.state() == QAbstractSocket::ConnectedState; }
  void close() { m_socket.abort(); }

  // A request as raw bytes: the request line, Host, the given header lines ("Name: value\r\n" each) and body.
  static QByteArray request(const QByteArray& method, const QByteArray& path, const QByteArray& headers = {},
                            const QByteArray& body = {}) {
    return method + ' ' + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers + "\r\n" + body;
  }
  // A POST of a JSON body to /v1/request with its length, and the token when there is one.
  static QByteArray post(const QByteArray& body, const QString& token, const QByteArray& moreHeaders = {}) {
    QByteArray headers = "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
                         "\r\n" + moreHeaders;
    if (!token.isEmpty()) {
      headers += "Authorization: Bearer " + token.toLatin1() + "\r\n";
    }
    return request("POST", "/v1/request", headers, body);
  }

private:
  std::optional<WireResponse> take() {
    const qsizetype end = m_buffer.indexOf("\r\n\r\n");
    if (end < 0) {
      return std::nullopt;
    }
    WireResponse response;
    const QList<QByteArray> lines = m_buffer.left(end).split('\n');
    const QList<QByteArray> statusLine = lines.value(0).trimmed().split(' ');
    response.status = statusLine.value(1).toInt();
    qint64 length = 0;
    for (qsizetype i = 1; i < lines.size(); ++i) {
      const qsizetype colon = lines[i].indexOf(':');
      const QByteArray name = lines[i].left(colon).trimmed().toLower();
      const QByteArray value = lines[i].mid(colon + 1).trimmed();
      response.headers.append({name, value});
      if (name == "content-length") {
        length = value.toLongLong();
      }
    }
    if (m_toHead) {
      length = 0;
    }
    if (m_buffer.size() < end + 4 + length) {
      return std::nullopt;
    }
    response.body = m_buffer.mid(end + 4, length);
    m_buffer.remove(0, end + 4 + length);
    return response;
  }

  QTcpSocket m_socket;
  QByteArray m_buffer;
  bool m_toHead = false;
};

}  // namespace adjustacc::host::testing
