#include "httpfront.h"

#include <QDateTime>
#include <QLocale>
#include <QLoggingCategory>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>
#include <cctype>
#include <deque>
#include <string>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#endif

namespace adjustacc::host {

Q_LOGGING_CATEGORY(lcHttp, "adjustacc.host.http", QtInfoMsg)

namespace {

// What a socket may hold unread, and what the front takes from it at a time: a client that sends more than
// the front wants yet (a body nobody asked for) waits in its own TCP window, not in the service's memory.
constexpr qint64 kSocketBuffer = 64 * 1024;
// Answers written but not yet taken by the client beyond which the front reads no further requests.
constexpr qint64 kMaxWriteBacklog = 4 * 1024 * 1024;
constexpr int kMaxHeaderLines = 100;
constexpr int kMaxMethodLength = 32;
// A chunk-size line with its extensions; the trailer section is bounded like a head.
constexpr qsizetype kMaxChunkLine = 1024;
// How long a closing connection still takes (and throws away) what the client sends, so that the client gets
// to read the answer before the connection is reset under it.
constexpr qint64 kLingerMs = 2000;

const char* reasonPhrase(int status) {
  switch (status) {
    case 100: return "Continue";
    case 200: return "OK";
    case 400: return "Bad Request";
    case 401: return "Unauthorized";
    case 403: return "Forbidden";
    case 404: return "Not Found";
    case 405: return "Method Not Allowed";
    case 408: return "Request Timeout";
    case 413: return "Content Too Large";
    case 415: return "Unsupported Media Type";
    case 431: return "Request Header Fields Too Large";
    case 500: return "Internal Server Error";
    case 501: return "Not Implemented";
    case 503: return "Service Unavailable";
    case 505: return "HTTP Version Not Supported";
    default: return "Status";
  }
}

// A character of a method or header name ("tchar").
bool isTokenChar(char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
    return true;
  }
  return std::char_traits<char>::find("!#$%&'*+-.^_`|~", 15, c) != nullptr;
}

bool isToken(QByteArrayView text) {
  return !text.isEmpty() && std::all_of(text.begin(), text.end(), isTokenChar);
}

// A field value may hold visible characters, blanks, tabs and bytes of UTF-8; no other control character.
bool isFieldValue(QByteArrayView text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    const auto u = static_cast<unsigned char>(c);
    return (u < 0x20 && c != '\t') || u == 0x7f;
  });
}

// 1 to 18 decimal digits, no sign or blank: a length that a qint64 holds.
std::optional<qint64> parseLength(QByteArrayView text) {
  if (text.isEmpty() || text.size() > 18 ||
      !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return std::nullopt;
  }
  return text.toLongLong();
}

// The comma-separated members of a header's values, trimmed and in lower case.
QList<QByteArray> listMembers(const HttpHeaders& headers, QByteArrayView name) {
  QList<QByteArray> members;
  for (const auto& [key, value] : headers) {
    if (key == name) {
      for (const QByteArray& member : value.split(',')) {
        if (const QByteArray trimmed = member.trimmed().toLower(); !trimmed.isEmpty()) {
          members.append(trimmed);
        }
      }
    }
  }
  return members;
}

HttpHead refusedHead(HttpHead head, int status, const QString& text) {
  head.refusal = status;
  head.refusalText = text;
  head.keepAlive = false;
  head.chunked = false;
  head.contentLength = 0;
  return head;
}

// The request line and header lines (without the empty line that ends them).
HttpHead parseHead(QByteArrayView text) {
  HttpHead head;
  QList<QByteArrayView> lines;
  for (qsizetype start = 0; start <= text.size();) {
    qsizetype end = text.indexOf('\n', start);
    if (end < 0) {
      end = text.size();
    }
    QByteArrayView line = text.sliced(start, end - start);
    if (line.endsWith('\r')) {
      line.chop(1);
    }
    if (line.contains('\r') || line.contains('\0')) {
      return refusedHead(head, 400, QStringLiteral("The request head holds a stray control character."));
    }
    lines.append(line);
    start = end + 1;
  }

  const QByteArrayView requestLine = lines.value(0);
  const qsizetype firstSpace = requestLine.indexOf(' ');
  const qsizetype lastSpace = requestLine.lastIndexOf(' ');
  if (firstSpace <= 0 || lastSpace <= firstSpace + 1) {
    return refusedHead(head, 400, QStringLiteral("The request line is not \"METHOD target HTTP/1.1\"."));
  }
  const QByteArrayView method = requestLine.first(firstSpace);
  const QByteArrayView target = requestLine.sliced(firstSpace + 1, lastSpace - firstSpace - 1);
  const QByteArrayView version = requestLine.sliced(lastSpace + 1);
  if (!isToken(method) || method.size() > kMaxMethodLength || target.contains(' ') || !isFieldValue(target)) {
    return refusedHead(head, 400, QStringLiteral("The request line is not \"METHOD target HTTP/1.1\"."));
  }
  head.method = method.toByteArray();
  head.target = target.toByteArray();
  if (version == "HTTP/1.1" || version == "HTTP/1.0") {
    head.minorVersion = version.back() - '0';
  } else if (version.startsWith("HTTP/") && version.size() == 8 && version.at(6) == '.') {
    return refusedHead(head, 505, QStringLiteral("The host service speaks HTTP/1.1 (and 1.0)."));
  } else {
    return refusedHead(head, 400, QStringLiteral("The request line is not \"METHOD target HTTP/1.1\"."));
  }
  QByteArrayView path = target;
  if (path.startsWith("http://") || path.startsWith("https://")) {
    const qsizetype authority = path.indexOf("//") + 2;
    const qsizetype slash = path.indexOf('/', authority);
    path = slash < 0 ? QByteArrayView("/") : path.sliced(slash);
  }
  if (const qsizetype query = path.indexOf('?'); query >= 0) {
    path = path.first(query);
  }
  head.path = path.toByteArray();

  if (lines.size() - 1 > kMaxHeaderLines) {
    return refusedHead(head, 431, QStringLiteral("The request has more than %1 header lines.").arg(kMaxHeaderLines));
  }
  for (qsizetype i = 1; i < lines.size(); ++i) {
    const QByteArrayView line = lines.at(i);
    if (line.startsWith(' ') || line.startsWith('\t')) {
      return refusedHead(head, 400, QStringLiteral("Header lines folded onto the next line are not accepted."));
    }
    const qsizetype colon = line.indexOf(':');
    // No blank may stand between a header's name and its colon: proxies disagree on what it would mean.
    if (colon <= 0 || !isToken(line.first(colon))) {
      return refusedHead(head, 400, QStringLiteral("A header line is not \"Name: value\"."));
    }
    const QByteArrayView value = line.sliced(colon + 1).trimmed();
    if (!isFieldValue(value)) {
      return refusedHead(head, 400, QStringLiteral("A header value holds a control character."));
    }
    head.headers.append({line.first(colon).toByteArray().toLower(), value.toByteArray()});
  }

  int hosts = 0;
  int lengths = 0;
  bool transferCoded = false;
  for (const auto& [name, value] : head.headers) {
    if (name == "host") {
      ++hosts;
    } else if (name == "content-length") {
      ++lengths;
      const std::optional<qint64> length = parseLength(value);
      if (!length) {
        return refusedHead(head, 400, QStringLiteral("The Content-Length is not a number of bytes."));
      }
      head.contentLength = *length;
    } else if (name == "transfer-encoding") {
      transferCoded = true;
    }
  }
  if (head.minorVersion == 1 && hosts != 1) {
    return refusedHead(head, 400, QStringLiteral("An HTTP/1.1 request names its Host exactly once."));
  }
  if (lengths > 1) {
    return refusedHead(head, 400, QStringLiteral("The request carries more than one Content-Length."));
  }
  if (transferCoded) {
    if (lengths > 0) {
      return refusedHead(head, 400,
                         QStringLiteral("The request carries both a Content-Length and a Transfer-Encoding."));
    }
    if (head.minorVersion == 0) {
      return refusedHead(head, 400, QStringLiteral("An HTTP/1.0 request can not be sent with a Transfer-Encoding."));
    }
    if (listMembers(head.headers, "transfer-encoding") != QList<QByteArray>{"chunked"}) {
      return refusedHead(head, 501, QStringLiteral("Only the chunked transfer coding is understood."));
    }
    head.chunked = true;
  }
  const QList<QByteArray> connection = listMembers(head.headers, "connection");
  head.keepAlive = head.minorVersion == 1 ? !connection.contains("close") : connection.contains("keep-alive");
  head.expectsContinue = head.minorVersion == 1 && listMembers(head.headers, "expect").contains("100-continue");
  return head;
}

}  // namespace

QByteArray HttpHead::header(QByteArrayView lowerName) const {
  for (const auto& [name, value] : headers) {
    if (name == lowerName) {
      return value;
    }
  }
  return {};
}

// --- one connection -------------------------------------------------------------------------------------------

class HttpConnection : public QObject {
public:
  HttpConnection(HttpFront& front, QTcpSocket* socket);
  ~HttpConnection() override;

  // Starts reading; the front knows the connection by then, so that it may end at once.
  void start();
  void wantBody(HttpExchange& exchange);
  void answered(HttpExchange& exchange);
  qint64 deadline() const { return m_deadline; }
  void expire();

private:
  enum class Input {
    Head,      // reading the next request's head
    Deciding,  // the handler has the head and has not yet said what to do with the body
    Body,      // reading the current request's body (kept or thrown away)
    Stopped,   // no further request is read
  };
  enum class Chunk { Size, Data, DataEnd, Trailer };

  void onReadyRead();
  void onBytesWritten();
  void onGone();
  void process();
  bool step();
  void fill();
  bool takeHead();
  void deliver(const std::shared_ptr<HttpExchange>& exchange);
  // Reads what is at hand of the current body; true when it is finished (or reading it ended).
  bool consumeBody();
  bool takeBodyBytes(qsizetype count);
  void bodyEnded(HttpExchange::Body outcome);
  void stopInput();
  void flush();
  QByteArray serialize(const HttpExchange& exchange, bool closing);
  void beginClose();
  void finishClose();
  void rearm();

  HttpFront& m_front;
  QTcpSocket* m_socket;
  QByteArray m_in;
  qsizetype m_headScanned = 0;
  Input m_input = Input::Head;
  // Every request not yet answered on the wire, in the order it came.
  std::deque<std::shared_ptr<HttpExchange>> m_queue;
  // The request whose body is read or decided on.
  std::shared_ptr<HttpExchange> m_current;
  qint64 m_left = 0;  // bytes left of the body (Content-Length) or of the current chunk
  Chunk m_chunk = Chunk::Size;
  qsizetype m_taken = 0;  // body bytes read so far
  qsizetype m_trailerBytes = 0;
  bool m_inputStopped = false;
  bool m_closing = false;
  bool m_lingering = false;
  bool m_gone = false;
  bool m_processing = false;
  bool m_again = false;
  qint64 m_headSince = 0;
  qint64 m_lastInput = 0;
  qint64 m_lastOutput = 0;
  qint64 m_deadline = 0;
};

HttpConnection::HttpConnection(HttpFront& front, QTcpSocket* socket) : m_front(front), m_socket(socket) {
  m_socket->setParent(this);
  m_socket->setReadBufferSize(kSocketBuffer);
  m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
  m_headSince = m_lastInput = m_lastOutput = m_front.now();
  connect(m_socket, &QTcpSocket::readyRead, this, &HttpConnection::onReadyRead);
  connect(m_socket, &QTcpSocket::bytesWritten, this, &HttpConnection::onBytesWritten);
  connect(m_socket, &QTcpSocket::disconnected, this, &HttpConnection::onGone);
  connect(m_socket, &QTcpSocket::errorOccurred, this, [this] {
    if (m_socket->state() == QAbstractSocket::UnconnectedState) {
      onGone();
    }
  });
}

HttpConnection::~HttpConnection() {
  m_socket->disconnect(this);
  // Requests a handler still holds answer nobody from now on.
  for (const std::shared_ptr<HttpExchange>& exchange : m_queue) {
    exchange->m_connection = nullptr;
  }
  if (m_current) {
    m_current->m_connection = nullptr;
  }
}

void HttpConnection::start() {
  rearm();
  if (m_socket->bytesAvailable() > 0) {
    process();
  }
}

void HttpConnection::onReadyRead() {
  if (m_gone) {
    return;
  }
  m_lastInput = m_front.now();
  if (m_lingering) {
    m_socket->skip(m_socket->bytesAvailable());
    return;
  }
  process();
}

void HttpConnection::onBytesWritten() {
  if (m_gone) {
    return;
  }
  m_lastOutput = m_front.now();
  if (m_closing && !m_lingering && m_socket->bytesToWrite() == 0) {
    finishClose();
    return;
  }
  process();  // a write backlog that held further requests back may have gone
}

void HttpConnection::onGone() {
  if (m_gone) {
    return;
  }
  m_gone = true;
  m_deadline = 0;
  // The handler may still hold these requests; from now on they read nothing and answer nobody.
  for (const std::shared_ptr<HttpExchange>& exchange : m_queue) {
    exchange->m_connection = nullptr;
  }
  m_queue.clear();
  if (const std::shared_ptr<HttpExchange> current = std::exchange(m_current, nullptr)) {
    current->m_connection = nullptr;
    if (current->m_bodyState == HttpExchange::BodyState::Keeping) {
      current->m_bodyState = HttpExchange::BodyState::Done;
      const HttpExchange::BodyHandler handler = std::exchange(current->m_bodyHandler, nullptr);
      current->m_body.clear();
      handler(HttpExchange::Body::Lost, {});
    }
  }
  m_front.connectionClosed(this);
}

void HttpConnection::expire() {
  qCDebug(lcHttp, "closing connection from %s: it kept the service waiting",
          qUtf8Printable(m_socket->peerAddress().toString()));
  m_socket->abort();
  onGone();
}

void HttpConnection::process() {
  // Handlers may answer at once, from inside a step; the loop then runs again instead of nesting.
  if (m_processing) {
    m_again = true;
    return;
  }
  m_processing = true;
  do {
    m_again = false;
    while (!m_gone && step()) {
    }
  } while (m_again && !m_gone);
  m_processing = false;
  rearm();
}

bool HttpConnection::step() {
  if (m_lingering || m_closing) {
    return false;
  }
  switch (m_input) {
    case Input::Head:
      if (m_inputStopped || static_cast<int>(m_queue.size()) >= m_front.options().maxPipelined ||
          m_socket->bytesToWrite() > kMaxWriteBacklog) {
        return false;
      }
      fill();
      return takeHead();
    case Input::Body:
      fill();
      // Taking a little at a time: when what was at hand is used up, the socket may hold more.
      return consumeBody() || m_socket->bytesAvailable() > 0;
    case Input::Deciding:
    case Input::Stopped:
      return false;
  }
  return false;
}

void HttpConnection::fill() {
  const qint64 capacity = std::max<qint64>(kSocketBuffer, m_front.options().maxHeadBytes + 1024);
  const qint64 room = capacity - m_in.size();
  if (room > 0 && m_socket->bytesAvailable() > 0) {
    m_in.append(m_socket->read(room));
  }
}

bool HttpConnection::takeHead() {
  // Empty lines before a request line are passed over (some clients end a body with an extra CRLF).
  qsizetype skip = 0;
  while (skip < m_in.size() && (m_in.at(skip) == '\n' || (m_in.at(skip) == '\r' && skip + 1 < m_in.size() &&
                                                          m_in.at(skip + 1) == '\n'))) {
    skip += m_in.at(skip) == '\r' ? 2 : 1;
  }
  if (skip > 0) {
    m_in.remove(0, skip);
    m_headScanned = 0;
  }
  if (m_in.isEmpty()) {
    return false;
  }
  // The head ends at the first empty line.
  qsizetype end = -1;
  qsizetype bodyStart = -1;
  for (qsizetype i = m_in.indexOf('\n', std::max<qsizetype>(0, m_headScanned - 2)); i >= 0;
       i = m_in.indexOf('\n', i + 1)) {
    if (i + 1 < m_in.size() && m_in.at(i + 1) == '\n') {
      end = i;
      bodyStart = i + 2;
      break;
    }
    if (i + 2 < m_in.size() && m_in.at(i + 1) == '\r' && m_in.at(i + 2) == '\n') {
      end = i;
      bodyStart = i + 3;
      break;
    }
  }
  const qsizetype maxHead = m_front.options().maxHeadBytes;
  if (end < 0 && m_in.size() <= maxHead) {
    m_headScanned = m_in.size();
    return false;
  }
  m_headScanned = 0;
  HttpHead head;
  if (end < 0 || end > maxHead) {
    head = refusedHead(head, 431, QStringLiteral("The request head is larger than %1 bytes.").arg(maxHead));
    m_in.clear();
  } else {
    QByteArrayView text(m_in.constData(), end);
    if (text.endsWith('\r')) {
      text.chop(1);
    }
    head = parseHead(text);
    m_in.remove(0, bodyStart);
  }

  auto exchange = std::make_shared<HttpExchange>(std::move(head));
  exchange->m_connection = this;
  m_queue.push_back(exchange);
  const HttpHead& parsed = exchange->head();
  if (parsed.refusal != 0 || !parsed.keepAlive) {
    m_inputStopped = true;
  }
  if (parsed.refusal != 0) {
    m_input = Input::Stopped;
    exchange->m_bodyState = HttpExchange::BodyState::Done;
  } else if (parsed.hasBody()) {
    m_current = exchange;
    m_input = Input::Deciding;
    m_left = parsed.chunked ? 0 : parsed.contentLength;
    m_chunk = Chunk::Size;
    m_taken = 0;
    m_trailerBytes = 0;
  } else {
    exchange->m_bodyState = HttpExchange::BodyState::Done;
    m_input = m_inputStopped ? Input::Stopped : Input::Head;
    m_headSince = m_front.now();
  }
  deliver(exchange);
  return true;
}

void HttpConnection::deliver(const std::shared_ptr<HttpExchange>& exchange) {
  if (m_front.m_handler) {
    m_front.m_handler(exchange);
  } else {
    exchange->answer({500, "text/plain", "No handler.", {}});
  }
}

void HttpConnection::wantBody(HttpExchange& exchange) {
  Q_ASSERT(m_current.get() == &exchange && m_input == Input::Deciding);
  if (!exchange.head().chunked && exchange.head().contentLength > exchange.m_bodyLimit) {
    // Refused by its declared length: not a byte of it is read.
    exchange.m_bodyState = HttpExchange::BodyState::Done;
    const HttpExchange::BodyHandler handler = std::exchange(exchange.m_bodyHandler, nullptr);
    stopInput();
    handler(HttpExchange::Body::TooLarge, {});
    return;
  }
  exchange.m_bodyState = HttpExchange::BodyState::Keeping;
  exchange.m_continueWanted = exchange.head().expectsContinue;
  m_input = Input::Body;
  m_lastInput = m_front.now();
  flush();
  process();
}

void HttpConnection::answered(HttpExchange& exchange) {
  if (m_current.get() == &exchange) {
    if (exchange.m_bodyState == HttpExchange::BodyState::Unread) {
      // Nobody will read this body. A client waiting for "100 Continue" will not send it; a long one is not
      // worth taking in: either way the connection ends with this answer.
      const HttpHead& head = exchange.head();
      if (head.expectsContinue || (!head.chunked && head.contentLength > m_front.options().maxDiscardBytes)) {
        exchange.m_bodyState = HttpExchange::BodyState::Done;
        stopInput();
      } else {
        exchange.m_bodyState = HttpExchange::BodyState::Discarding;
        m_input = Input::Body;
        m_lastInput = m_front.now();
      }
    } else if (exchange.m_bodyState == HttpExchange::BodyState::Keeping) {
      exchange.m_bodyState = HttpExchange::BodyState::Discarding;
      exchange.m_bodyHandler = nullptr;
      exchange.m_body.clear();
      exchange.m_body.squeeze();
    }
  }
  flush();
  process();
}

bool HttpConnection::takeBodyBytes(qsizetype count) {
  HttpExchange& exchange = *m_current;
  if (exchange.m_bodyState == HttpExchange::BodyState::Keeping) {
    if (m_taken + count > exchange.m_bodyLimit) {
      return false;
    }
    exchange.m_body.append(m_in.constData(), count);
  } else if (m_taken + count > m_front.options().maxDiscardBytes) {
    return false;
  }
  m_taken += count;
  m_in.remove(0, count);
  return true;
}

bool HttpConnection::consumeBody() {
  const bool chunked = m_current->head().chunked;
  if (!chunked) {
    const qsizetype count = std::min<qint64>(m_left, m_in.size());
    if (count > 0 && !takeBodyBytes(count)) {
      bodyEnded(HttpExchange::Body::TooLarge);
      return true;
    }
    m_left -= count;
    if (m_left == 0) {
      bodyEnded(HttpExchange::Body::Complete);
      return true;
    }
    return false;
  }
  for (;;) {
    switch (m_chunk) {
      case Chunk::Size:
      case Chunk::Trailer: {
        const qsizetype newline = m_in.indexOf('\n');
        if (newline < 0) {
          if (m_in.size() > kMaxChunkLine) {
            bodyEnded(HttpExchange::Body::Malformed);
            return true;
          }
          return false;
        }
        QByteArrayView line(m_in.constData(), newline);
        if (line.endsWith('\r')) {
          line.chop(1);
        }
        if (m_chunk == Chunk::Trailer) {
          m_trailerBytes += newline + 1;
          const bool last = line.isEmpty();
          m_in.remove(0, newline + 1);
          if (last) {
            bodyEnded(HttpExchange::Body::Complete);
            return true;
          }
          if (m_trailerBytes > m_front.options().maxHeadBytes) {
            bodyEnded(HttpExchange::Body::Malformed);
            return true;
          }
          break;
        }
        if (const qsizetype extension = line.indexOf(';'); extension >= 0) {
          line.truncate(extension);
        }
        line = line.trimmed();
        bool ok = line.size() >= 1 && line.size() <= 15 &&
                  std::all_of(line.begin(), line.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
        const qint64 size = ok ? line.toLongLong(&ok, 16) : 0;
        if (!ok) {
          bodyEnded(HttpExchange::Body::Malformed);
          return true;
        }
        m_in.remove(0, newline + 1);
        m_left = size;
        m_chunk = size == 0 ? Chunk::Trailer : Chunk::Data;
        break;
      }
      case Chunk::Data: {
        const qsizetype count = std::min<qint64>(m_left, m_in.size());
        if (count == 0) {
          return false;
        }
        if (!takeBodyBytes(count)) {
          bodyEnded(HttpExchange::Body::TooLarge);
          return true;
        }
        m_left -= count;
        if (m_left == 0) {
          m_chunk = Chunk::DataEnd;
        }
        break;
      }
      case Chunk::DataEnd:
        if (m_in.startsWith("\r\n")) {
          m_in.remove(0, 2);
        } else if (m_in.startsWith('\n')) {
          m_in.remove(0, 1);
        } else if (m_in.isEmpty() || m_in == "\r") {
          return false;
        } else {
          bodyEnded(HttpExchange::Body::Malformed);
          return true;
        }
        m_chunk = Chunk::Size;
        break;
    }
  }
}

void HttpConnection::bodyEnded(HttpExchange::Body outcome) {
  const std::shared_ptr<HttpExchange> exchange = std::exchange(m_current, nullptr);
  if (outcome == HttpExchange::Body::Complete) {
    m_input = m_inputStopped ? Input::Stopped : Input::Head;
    m_headSince = m_front.now();
  } else {
    // What follows in the stream can not be framed (or is not worth reading): no further request is read.
    stopInput();
  }
  const bool kept = exchange->m_bodyState == HttpExchange::BodyState::Keeping;
  exchange->m_bodyState = HttpExchange::BodyState::Done;
  if (kept) {
    const HttpExchange::BodyHandler handler = std::exchange(exchange->m_bodyHandler, nullptr);
    const QByteArray body = outcome == HttpExchange::Body::Complete ? std::exchange(exchange->m_body, {}) : QByteArray();
    exchange->m_body = QByteArray();
    handler(outcome, body);
  } else {
    flush();  // an answer already written may have been the last one
  }
}

void HttpConnection::stopInput() {
  m_inputStopped = true;
  m_input = Input::Stopped;
  m_current.reset();
}

void HttpConnection::flush() {
  if (m_gone || m_closing) {
    return;
  }
  bool wrote = false;
  while (!m_queue.empty()) {
    HttpExchange& exchange = *m_queue.front();
    if (!exchange.m_answered) {
      // Its turn has come: a client that waits for leave to send the body gets it now.
      if (exchange.m_continueWanted && !exchange.m_continueSent) {
        m_socket->write("HTTP/1.1 100 Continue\r\n\r\n");
        exchange.m_continueSent = true;
        wrote = true;
      }
      break;
    }
    const bool closing = m_queue.size() == 1 && m_inputStopped;
    m_socket->write(serialize(exchange, closing));
    wrote = true;
    exchange.m_connection = nullptr;
    m_queue.pop_front();
    if (m_queue.empty()) {
      m_headSince = m_front.now();
    }
  }
  if (wrote) {
    m_lastOutput = m_front.now();
  }
  if (m_inputStopped && m_queue.empty()) {
    beginClose();
  }
}

QByteArray HttpConnection::serialize(const HttpExchange& exchange, bool closing) {
  const HttpAnswer& answer = exchange.m_answer;
  QByteArray out;
  out.reserve(answer.body.size() + 256);
  out += "HTTP/1.1 ";
  out += QByteArray::number(answer.status);
  out += ' ';
  out += reasonPhrase(answer.status);
  out += "\r\nDate: ";
  out += m_front.dateValue();
  if (!answer.contentType.isEmpty()) {
    out += "\r\nContent-Type: ";
    out += answer.contentType;
  }
  out += "\r\nContent-Length: ";
  out += QByteArray::number(answer.body.size());
  for (const auto& [name, value] : answer.headers) {
    out += "\r\n";
    out += name;
    out += ": ";
    out += value;
  }
  if (closing) {
    out += "\r\nConnection: close";
  } else if (exchange.head().minorVersion == 0) {
    out += "\r\nConnection: keep-alive";
  }
  out += "\r\n\r\n";
  if (exchange.head().method != "HEAD") {
    out += answer.body;
  }
  return out;
}

void HttpConnection::beginClose() {
  if (m_closing) {
    return;
  }
  m_closing = true;
  m_inputStopped = true;
  m_input = Input::Stopped;
  if (m_socket->bytesToWrite() == 0) {
    finishClose();
  }
}

void HttpConnection::finishClose() {
#ifdef Q_OS_UNIX
  // On plain TCP the sending half is shut first and what the client still sends is taken and thrown away for
  // a moment: closing with unread data would reset the connection, and the client might lose the answer.
  if (qobject_cast<QSslSocket*>(m_socket) == nullptr && m_socket->socketDescriptor() >= 0 &&
      ::shutdown(static_cast<int>(m_socket->socketDescriptor()), SHUT_WR) == 0) {
    m_lingering = true;
    m_in.clear();
    m_current.reset();
    m_socket->skip(m_socket->bytesAvailable());
    m_deadline = m_front.now() + std::min<qint64>(kLingerMs, m_front.options().idleTimeout.count());
    return;
  }
#endif
  m_socket->disconnectFromHost();
  if (m_socket->state() == QAbstractSocket::UnconnectedState) {
    onGone();
  }
}

void HttpConnection::rearm() {
  if (m_gone || m_lingering) {
    return;
  }
  const qint64 idle = m_front.options().idleTimeout.count();
  if (m_socket->bytesToWrite() > 0) {
    m_deadline = m_lastOutput + idle;  // the client is not reading its answers
  } else if (m_input == Input::Body) {
    m_deadline = m_lastInput + idle;  // the client stopped sending the body
  } else if (m_input == Input::Head && m_queue.empty()) {
    m_deadline = m_headSince + idle;  // the whole next head must come in time, however it trickles
  } else {
    m_deadline = 0;  // the service has the next move
  }
}

// --- the exchange ------------------------------------------------------------------------------------------------

void HttpExchange::readBody(qsizetype limit, BodyHandler done) {
  if (!m_head.hasBody()) {
    done(Body::Complete, {});
    return;
  }
  if (m_connection == nullptr || m_bodyState != BodyState::Unread || m_answered) {
    done(Body::Lost, {});
    return;
  }
  m_bodyLimit = limit;
  m_bodyHandler = std::move(done);
  m_connection->wantBody(*this);
}

void HttpExchange::answer(HttpAnswer answer) {
  if (m_answered) {
    return;
  }
  m_answered = true;
  m_answer = std::move(answer);
  if (m_connection != nullptr) {
    m_connection->answered(*this);
  }
}

// --- the front ---------------------------------------------------------------------------------------------------

HttpFront::HttpFront(HttpFrontOptions options, QObject* parent) : QObject(parent), m_options(std::move(options)) {
  m_options.maxConnections = std::max(1, m_options.maxConnections);
  m_options.maxPipelined = std::max(1, m_options.maxPipelined);
  m_options.idleTimeout = std::max(m_options.idleTimeout, std::chrono::milliseconds(1));
  m_clock.start();
  const auto interval = std::clamp<qint64>(m_options.idleTimeout.count() / 4, 10, 1000);
  m_sweeper.setInterval(static_cast<int>(interval));
  connect(&m_sweeper, &QTimer::timeout, this, &HttpFront::sweep);
}

HttpFront::~HttpFront() {
  m_server.reset();
  // The connections are children of the front and go with it; their requests are detached first, so that
  // a handler still holding one answers nobody.
  for (HttpConnection* connection : std::set<HttpConnection*>(m_connections)) {
    delete connection;
  }
}

void HttpFront::useTls(const QSslConfiguration& configuration) { m_tls = configuration; }

messaging::Result<quint16> HttpFront::listen(const QHostAddress& address, quint16 port) {
  if (m_tls) {
    auto server = std::make_unique<QSslServer>();
    server->setSslConfiguration(*m_tls);
    // A handshake that never completes holds a socket like a silent client.
    server->setHandshakeTimeout(static_cast<int>(m_options.idleTimeout.count()));
    m_server = std::move(server);
  } else {
    m_server = std::make_unique<QTcpServer>();
  }
  connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &HttpFront::acceptConnections);
  if (!m_server->listen(address, port)) {
    const QString why = m_server->errorString();
    m_server.reset();
    return messaging::Result<quint16>::failure(
        QStringLiteral("Could not listen on %1 port %2: %3").arg(address.toString()).arg(port).arg(why));
  }
  m_sweeper.start();
  return m_server->serverPort();
}

void HttpFront::stopListening() {
  if (m_server) {
    m_server->close();
  }
}

void HttpFront::acceptConnections() {
  while (m_server && m_server->hasPendingConnections()) {
    if (static_cast<int>(m_connections.size()) >= m_options.maxConnections) {
      if (!m_full) {
        m_full = true;
        qCWarning(lcHttp, "%d connections are open, the most the service keeps; new ones wait until one closes",
                  m_options.maxConnections);
      }
      m_server->pauseAccepting();
      return;
    }
    QTcpSocket* socket = m_server->nextPendingConnection();
    if (socket == nullptr) {
      return;
    }
    auto* connection = new HttpConnection(*this, socket);
    connection->setParent(this);
    m_connections.insert(connection);
    connection->start();
  }
}

void HttpFront::connectionClosed(HttpConnection* connection) {
  if (m_connections.erase(connection) == 0) {
    return;
  }
  connection->deleteLater();
  if (m_full && static_cast<int>(m_connections.size()) < m_options.maxConnections) {
    m_full = false;
    if (m_server) {
      m_server->resumeAccepting();
      acceptConnections();
    }
  }
}

void HttpFront::sweep() {
  const qint64 moment = now();
  std::vector<HttpConnection*> expired;
  for (HttpConnection* connection : m_connections) {
    if (connection->deadline() > 0 && moment >= connection->deadline()) {
      expired.push_back(connection);
    }
  }
  for (HttpConnection* connection : expired) {
    connection->expire();
  }
}

const QByteArray& HttpFront::dateValue() {
  const QDateTime utc = QDateTime::currentDateTimeUtc();
  const qint64 second = utc.toSecsSinceEpoch();
  if (second != m_dateSecond) {
    m_dateSecond = second;
    m_date = QLocale::c().toString(utc, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'")).toLatin1();
  }
  return m_date;
}

}  // namespace adjustacc::host
