// The adjustacc-host service on the wire: raw bytes over a real loopback socket, for what a careful HTTP/1.1
// service owes its callers and itself: answers in request order, bodies refused before they are taken in,
// framings that disagree refused, silent and surplus connections bounded, a log that a caller can neither forge
// nor flood, and nothing of the database's own words for a caller who is not signed on.
#include "servicefixture.h"
#include "wireclient.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QSqlError>
#include <QTcpServer>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

using namespace adjustacc;
using host::DatabaseOptions;
using host::HttpService;
using host::HttpServiceOptions;
using host::testing::accountInquiry;
using host::testing::kServiceWaitMs;
using host::testing::TestConnection;
using host::testing::WireClient;
using host::testing::WireResponse;
using messaging::Reply;
using messaging::Request;

namespace {

using namespace Qt::Literals::StringLiterals;

// Request 60: the next refund number, a save (recorded under its request id).
Request numberRequest(const QString& user) {
  Request request;
  request.replyTo = u"ADJUSTACC"_s;
  request.version = u"1"_s;
  request.code = 60;
  request.user = user;
  request.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
  request.params = {{u"MARVENTO"_s, u"key:NBR_TYP_CD"_s, u"="_s, u"F"_s}};
  return request;
}

Reply replyOf(const std::optional<WireResponse>& response) {
  return response ? messaging::decodeReply(response->body) : Reply::failure({}, {}, u"no answer"_s);
}

// A token of the right shape that the store never issued.
const QString kUnknownToken = u"0123456789abcdef."_s + QString(43, u'A');

// Keeps every line of the request log written while it lives.
class RequestLogCapture {
public:
  RequestLogCapture() {
    const QMutexLocker lock(&s_mutex);
    s_lines.clear();
    s_previous = qInstallMessageHandler(&RequestLogCapture::handle);
  }
  ~RequestLogCapture() { qInstallMessageHandler(s_previous); }
  RequestLogCapture(const RequestLogCapture&) = delete;
  RequestLogCapture& operator=(const RequestLogCapture&) = delete;

  QStringList lines() const {
    const QMutexLocker lock(&s_mutex);
    return s_lines;
  }

private:
  static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (context.category != nullptr && qstrcmp(context.category, "adjustacc.host.request") == 0) {
      const QMutexLocker lock(&s_mutex);
      s_lines.append(message);
      return;
    }
    s_previous(type, context, message);
  }
  static inline QMutex s_mutex;
  static inline QStringList s_lines;
  static inline QtMessageHandler s_previous = nullptr;
};

class HttpWireTest : public host::testing::ServiceTest {
protected:
  // A service of this test's own over the fixture's database.
  std::unique_ptr<HttpService> startWith(const std::function<void(HttpServiceOptions&)>& adjust, quint16* port) {
    HttpServiceOptions options = serviceOptions();
    adjust(options);
    return startService(options, port);
  }
};

TEST_P(HttpWireTest, PipelinedRequestsAreAnsweredInTheOrderTheyCame) {
  quint16 port = 0;
  const auto service = startWith([](HttpServiceOptions& options) { options.workers = 4; }, &port);
  ASSERT_TRUE(service);
  WireClient client(port);
  ASSERT_TRUE(client.waitConnected(kServiceWaitMs));

  struct Expected {
    int status;
    QString requestId;  // empty: not a reply of the host
  };
  for (int round = 0; round < 5; ++round) {
    SCOPED_TRACE(round);
    QByteArray batch;
    std::vector<Expected> expected;
    const auto add = [&](const QByteArray& bytes, int status, const QString& requestId) {
      batch += bytes;
      expected.push_back({status, requestId});
    };
    add(WireClient::request("GET", "/v1/health"), 200, {});
    add(WireClient::request("GET", "/v1/nothing"), 404, {});
    const Request save = numberRequest(m_officers[0]);
    add(WireClient::post(messaging::encodeRequest(save), m_token), 200, save.requestId);
    for (int i = 0; i < 2; ++i) {
      const Request inquiry = accountInquiry(m_officers[0], m_type, m_number);
      add(WireClient::post(messaging::encodeRequest(inquiry), m_token), 200, inquiry.requestId);
    }
    const Request unsigned_ = accountInquiry(m_officers[0], m_type, m_number);
    add(WireClient::post(messaging::encodeRequest(unsigned_), {}), 401, unsigned_.requestId);
    const Request last = accountInquiry(m_officers[1], m_type, m_number);
    add(WireClient::post(messaging::encodeRequest(last), m_otherToken), 200, last.requestId);
    client.send(batch);

    for (const Expected& want : expected) {
      const std::optional<WireResponse> response = client.next(kServiceWaitMs);
      ASSERT_TRUE(response.has_value());
      EXPECT_EQ(response->status, want.status);
      if (!want.requestId.isEmpty()) {
        const Reply reply = replyOf(response);
        EXPECT_EQ(reply.requestId, want.requestId);
        EXPECT_EQ(reply.ok(), want.status == 200) << qPrintable(reply.error);
      }
    }
  }
  EXPECT_TRUE(client.isOpen()) << "keep-alive holds through pipelined refusals";
}

TEST_P(HttpWireTest, ARefusedCallerCanNeitherForgeNorFloodTheLog) {
  RequestLogCapture log;
  WireClient client(m_port);
  ASSERT_TRUE(client.waitConnected(kServiceWaitMs));

  Request forged = accountInquiry(m_officers[0], m_type, m_number);
  forged.requestId = u"r1\nofficer=ADMIN01 code=75 request=forged status=200 ms=1"_s;
  Request long_ = accountInquiry(m_officers[0], m_type, m_number);
  long_.requestId = QString(60'000, u'x');  // small enough to be read with the head, and echoed
  Request huge = accountInquiry(m_officers[0], m_type, m_number);
  huge.requestId = QString(1'000'000, u'y');  // read only after a token that is never accepted
  Request controls = accountInquiry(m_officers[0], m_type, m_number);
  controls.requestId = u"r4\r\nofficer=ADMIN01 code=75 status=200"_s;
  Request otherUser = accountInquiry(u"X\u202E\nY"_s, m_type, m_number);

  client.send(WireClient::post(messaging::encodeRequest(forged), {}));
  client.send(WireClient::post(messaging::encodeRequest(long_), {}));
  client.send(WireClient::post(messaging::encodeRequest(huge), kUnknownToken));
  const std::vector<int> statuses = {401, 401, 401};
  for (int status : statuses) {
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, status);
  }
  WireClient signedOn(m_port);
  signedOn.send(WireClient::post(messaging::encodeRequest(controls), m_token));
  const std::optional<WireResponse> refusedByHost = signedOn.next(kServiceWaitMs);
  ASSERT_TRUE(refusedByHost.has_value());
  EXPECT_FALSE(replyOf(refusedByHost).ok());
  signedOn.send(WireClient::post(messaging::encodeRequest(otherUser), m_token));
  const std::optional<WireResponse> forbidden = signedOn.next(kServiceWaitMs);
  ASSERT_TRUE(forbidden.has_value());
  EXPECT_EQ(forbidden->status, 403);
  ASSERT_TRUE(QTest::qWaitFor([&] { return m_service->inFlight() == 0; }, kServiceWaitMs));

  const QStringList lines = log.lines();
  ASSERT_EQ(lines.size(), 5) << qPrintable(lines.join(u"\n---\n"_s).left(2000));
  qsizetype total = 0;
  for (const QString& line : lines) {
    SCOPED_TRACE(line.left(300).toStdString());
    total += line.size();
    EXPECT_FALSE(line.contains(u'\n') || line.contains(u'\r') || line.contains(QChar(0x202E)));
    EXPECT_LT(line.size(), 1000);
    if (line.contains(u"status=4"_s)) {
      EXPECT_TRUE(line.contains(u" refused="_s)) << "a refusal says so, and why";
    }
  }
  EXPECT_LT(total, 4000);
  EXPECT_TRUE(lines[0].contains(u"request=\"r1\\nofficer=ADMIN01 code=75"_s)) << qPrintable(lines[0]);
  EXPECT_TRUE(lines[0].contains(u"refused=\"The request carries no sign-on token.\""_s)) << qPrintable(lines[0]);
  EXPECT_TRUE(lines[1].contains(u"more characters)"_s)) << "a long id is cut, saying how much was left out";
  EXPECT_TRUE(lines[3].contains(u"r4\\r\\nofficer"_s)) << qPrintable(lines[3]);
}

TEST_P(HttpWireTest, BodiesAreRefusedBeforeTheyAreTakenIn) {
  const QByteArray json = "Content-Type: application/json\r\n";
  const QByteArray bearer = "Authorization: Bearer " + m_token.toLatin1() + "\r\n";
  {
    SCOPED_TRACE("declared too large: answered from the head alone");
    WireClient client(m_port);
    client.send(WireClient::request("POST", "/v1/request", json + bearer + "Content-Length: 300000000\r\n"));
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 413);
    EXPECT_EQ(response->header("connection"), "close");
    EXPECT_TRUE(client.waitClosed(kServiceWaitMs));
  }
  {
    SCOPED_TRACE("no token: refused before a byte of the body is sent");
    WireClient client(m_port);
    client.send(WireClient::request("POST", "/v1/request", json + "Content-Length: 1000000\r\n"));
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 401);
  }
  {
    SCOPED_TRACE("an unknown token: refused before the body is sent");
    WireClient client(m_port);
    client.send(WireClient::request("POST", "/v1/request",
                                    json + "Authorization: Bearer " + kUnknownToken.toLatin1() +
                                        "\r\nTransfer-Encoding: chunked\r\n"));
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 401);
  }
  {
    SCOPED_TRACE("chunked past the bound: reading stops at the bound");
    WireClient client(m_port);
    QByteArray bytes = WireClient::request("POST", "/v1/request", json + bearer + "Transfer-Encoding: chunked\r\n");
    const QByteArray chunk(1024 * 1024, ' ');
    for (int i = 0; i < 6; ++i) {
      bytes += QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
    }
    client.send(bytes);  // no last chunk: the answer must not wait for the end
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 413);
    EXPECT_TRUE(client.waitClosed(kServiceWaitMs));
  }
  {
    SCOPED_TRACE("a large body with a good token is read after the token, and answered");
    WireClient client(m_port);
    const Request inquiry = accountInquiry(m_officers[0], m_type, m_number);
    const QByteArray body = messaging::encodeRequest(inquiry) + QByteArray(200'000, ' ');
    const QByteArray whole = WireClient::post(body, m_token);
    client.send(whole.left(whole.size() - body.size() / 2));
    QTest::qWait(50);
    client.send(whole.right(body.size() / 2));
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 200);
    EXPECT_EQ(replyOf(response).requestId, inquiry.requestId);
    EXPECT_TRUE(replyOf(response).ok()) << qPrintable(replyOf(response).error);
  }
}

TEST_P(HttpWireTest, HttpManners) {
  const Request inquiry = accountInquiry(m_officers[0], m_type, m_number);
  const QByteArray body = messaging::encodeRequest(inquiry);
  const QByteArray bearer = "Authorization: Bearer " + m_token.toLatin1() + "\r\n";
  const QByteArray length = "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
  struct Case {
    const char* name;
    QByteArray bytes;
    int status;
    QByteArray allow;
  };
  const std::vector<Case> cases = {
      {"NotJson", WireClient::request("POST", "/v1/request", "Content-Type: text/plain\r\n" + bearer + length, body),
       415, {}},
      {"NoContentType", WireClient::request("POST", "/v1/request", bearer + length, body), 415, {}},
      {"JsonWithCharset",
       WireClient::request("POST", "/v1/request", "Content-Type: Application/JSON; charset=utf-8\r\n" + bearer + length,
                           body),
       200, {}},
      {"GetOnRequest", WireClient::request("GET", "/v1/request"), 405, "POST"},
      {"PostOnHealth", WireClient::request("POST", "/v1/health", "Content-Length: 2\r\n", "{}"), 405, "GET, HEAD"},
      {"Malformed", WireClient::post("{\"replyTo\":", m_token), 400, {}},
  };
  WireClient client(m_port);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    client.send(c.bytes);
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, c.status);
    EXPECT_EQ(response->header("allow"), c.allow);
    EXPECT_EQ(response->header("content-type"), "application/json");
    const Reply reply = replyOf(response);
    EXPECT_EQ(reply.ok(), c.status == 200) << qPrintable(reply.error);
    EXPECT_LE(reply.error.count(u"could not be read"_s), 1) << qPrintable(reply.error);
  }

  client.send(WireClient::request("HEAD", "/v1/health"));
  const std::optional<WireResponse> head = client.next(kServiceWaitMs, true);
  ASSERT_TRUE(head.has_value());
  EXPECT_EQ(head->status, 200);
  EXPECT_GT(head->header("content-length").toInt(), 0);

  // A client that asks leave to send its body gets it, in its turn, and then its answer.
  client.send(WireClient::request("POST", "/v1/request",
                                  "Content-Type: application/json\r\nExpect: 100-continue\r\n" + bearer + length));
  const std::optional<WireResponse> interim = client.next(kServiceWaitMs);
  ASSERT_TRUE(interim.has_value());
  EXPECT_EQ(interim->status, 100);
  client.send(body);
  const std::optional<WireResponse> answer = client.next(kServiceWaitMs);
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(replyOf(answer).requestId, inquiry.requestId);
}

TEST_P(HttpWireTest, SilentAndSlowConnectionsAreClosed) {
  quint16 port = 0;
  const auto service = startWith(
      [](HttpServiceOptions& options) { options.idleTimeout = std::chrono::milliseconds(300); }, &port);
  ASSERT_TRUE(service);
  {
    SCOPED_TRACE("silent from the start");
    WireClient client(port);
    ASSERT_TRUE(client.waitConnected(kServiceWaitMs));
    EXPECT_TRUE(client.waitClosed(kServiceWaitMs));
  }
  {
    SCOPED_TRACE("a head trickling in a byte at a time");
    WireClient client(port);
    ASSERT_TRUE(client.waitConnected(kServiceWaitMs));
    const QByteArray head = WireClient::request("GET", "/v1/health", "X-Slow: " + QByteArray(200, 'a') + "\r\n");
    for (qsizetype i = 0; i < head.size() - 1 && client.isOpen(); ++i) {
      client.send(head.mid(i, 1));
      QTest::qWait(50);
    }
    EXPECT_FALSE(client.isOpen()) << "the whole head must come within the time, however it trickles";
  }
  {
    SCOPED_TRACE("a body that stops half way");
    WireClient client(port);
    client.send(WireClient::post(QByteArray(100, ' '), m_token).chopped(50));
    EXPECT_TRUE(client.waitClosed(kServiceWaitMs));
  }
  {
    SCOPED_TRACE("kept alive after an answer, then silent");
    WireClient client(port);
    client.send(WireClient::request("GET", "/v1/health"));
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 200);
    EXPECT_TRUE(client.waitClosed(kServiceWaitMs));
  }
}

TEST_P(HttpWireTest, OpenConnectionsAreBounded) {
  quint16 port = 0;
  const auto service = startWith([](HttpServiceOptions& options) { options.maxConnections = 3; }, &port);
  ASSERT_TRUE(service);
  std::vector<std::unique_ptr<WireClient>> open;
  for (int i = 0; i < 3; ++i) {
    open.push_back(std::make_unique<WireClient>(port));
    open.back()->send(WireClient::request("GET", "/v1/health"));
    const std::optional<WireResponse> response = open.back()->next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, 200);
  }
  WireClient waiting(port);
  waiting.send(WireClient::request("GET", "/v1/health"));
  EXPECT_FALSE(waiting.next(500).has_value()) << "a fourth connection is not taken while three are open";
  open.front()->close();
  const std::optional<WireResponse> response = waiting.next(kServiceWaitMs);
  ASSERT_TRUE(response.has_value()) << "it is taken once one of them has gone";
  EXPECT_EQ(response->status, 200);
}

TEST_P(HttpWireTest, ASaveWhoseDatabaseGoesAwayIsAnsweredUnavailable) {
  if (!onPostgres()) {
    GTEST_SKIP() << "the database connection is cut on the PostgreSQL server";
  }
  quint16 port = 0;
  const auto service = startWith(
      [](HttpServiceOptions& options) {
        options.workers = 1;
        options.tokenCacheLifetime = std::chrono::hours(1);  // so that the save itself meets the cut
      },
      &port);
  ASSERT_TRUE(service);
  WireClient client(port);
  const auto save = [&](const Request& request) {
    client.send(WireClient::post(messaging::encodeRequest(request), m_token));
    return client.next(kServiceWaitMs);
  };
  const std::optional<WireResponse> first = save(numberRequest(m_officers[0]));
  ASSERT_TRUE(first.has_value());
  ASSERT_EQ(first->status, 200);
  ASSERT_TRUE(replyOf(first).ok()) << qPrintable(replyOf(first).error);

  DatabaseOptions admin = m_options;
  admin.connectOptions.clear();
  TestConnection connection(admin);
  ASSERT_TRUE(connection.ok());
  QSqlQuery cut(connection.db());
  ASSERT_TRUE(cut.exec(u"SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE application_name = '%1'"_s.arg(
      m_options.schema)))
      << qPrintable(cut.lastError().text());
  ASSERT_TRUE(QTest::qWaitFor(
      [&] {
        QSqlQuery left(connection.db());
        return left.exec(u"SELECT COUNT(*) FROM pg_stat_activity WHERE application_name = '%1'"_s.arg(
                   m_options.schema)) &&
               left.next() && left.value(0).toInt() == 0;
      },
      kServiceWaitMs));

  const Request request = numberRequest(m_officers[0]);
  const std::optional<WireResponse> cutOff = save(request);
  ASSERT_TRUE(cutOff.has_value());
  EXPECT_EQ(cutOff->status, 503);
  const Reply refused = replyOf(cutOff);
  EXPECT_EQ(refused.requestId, request.requestId);
  EXPECT_TRUE(refused.error.contains(u"please send it again"_s)) << qPrintable(refused.error);
  EXPECT_FALSE(refused.error.contains(u"server"_s)) << "the database's own words stay in the log";

  const std::optional<WireResponse> again = save(request);
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(again->status, 200);
  EXPECT_TRUE(replyOf(again).ok()) << qPrintable(replyOf(again).error);
  QSqlQuery issued(connection.db());
  ASSERT_TRUE(issued.exec(u"SELECT COUNT(*) FROM %1.NBR_ISSUED WHERE REQUEST_ID = '%2'"_s.arg(m_options.schema,
                                                                                              request.requestId)));
  ASSERT_TRUE(issued.next());
  EXPECT_EQ(issued.value(0).toInt(), 1);
}

INSTANTIATE_TEST_SUITE_P(Databases, HttpWireTest, ::testing::Values("sqlite", "postgresql"));

// Frames that the front refuses by their head; the connection closes after the answer, so that nothing
// smuggled behind them is ever read.
struct BadFrame {
  const char* name;
  QByteArray bytes;
  int status;
};

class HttpWireFrameTest : public host::testing::ServiceTest {};

TEST_P(HttpWireFrameTest, DisagreeingAndMalformedFramesAreRefusedAndTheConnectionClosed) {
  const QByteArray json = "Content-Type: application/json\r\n";
  const QByteArray bearer = "Authorization: Bearer " + m_token.toLatin1() + "\r\n";
  const QByteArray smuggled = WireClient::request("GET", "/v1/health");
  const std::vector<BadFrame> frames = {
      {"LengthAndChunked",
       WireClient::request("POST", "/v1/request", json + bearer + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n",
                           "0\r\n\r\n" + smuggled),
       400},
      {"ChunkedAndLength",
       WireClient::request("POST", "/v1/request", json + bearer + "Transfer-Encoding: chunked\r\nContent-Length: 40\r\n",
                           "0\r\n\r\n" + smuggled),
       400},
      {"TwoLengths", WireClient::request("POST", "/v1/request", json + "Content-Length: 2\r\nContent-Length: 2\r\n", "{}"),
       400},
      {"SignedLength", WireClient::request("POST", "/v1/request", json + "Content-Length: +2\r\n", "{}"), 400},
      {"UnknownCoding",
       WireClient::request("POST", "/v1/request", json + "Transfer-Encoding: gzip, chunked\r\n", "0\r\n\r\n"), 501},
      {"FoldedHeader", WireClient::request("GET", "/v1/health", "X-One: 1\r\n two\r\n"), 400},
      {"BlankBeforeColon", WireClient::request("POST", "/v1/request", json + "Content-Length : 2\r\n", "{}"), 400},
      {"ControlInValue", WireClient::request("GET", "/v1/health", QByteArray("X-One: a\x01z\r\n")), 400},
      {"NoHost", "GET /v1/health HTTP/1.1\r\n\r\n" + smuggled, 400},
      {"OtherVersion", "GET /v1/health HTTP/2.0\r\nHost: 127.0.0.1\r\n\r\n", 505},
      {"HeadTooLarge", WireClient::request("GET", "/v1/health", "X-Big: " + QByteArray(20'000, 'a') + "\r\n"), 431},
      {"BrokenChunkSize",
       WireClient::request("POST", "/v1/request", json + bearer + "Transfer-Encoding: chunked\r\n", "zz\r\n{}\r\n0\r\n\r\n"),
       400},
  };
  for (const BadFrame& frame : frames) {
    SCOPED_TRACE(frame.name);
    WireClient client(m_port);
    client.send(frame.bytes);
    const std::optional<WireResponse> response = client.next(kServiceWaitMs);
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->status, frame.status);
    EXPECT_FALSE(messaging::decodeReply(response->body).ok()) << "a failing reply the desktop can show";
    EXPECT_TRUE(client.waitClosed(kServiceWaitMs));
    EXPECT_FALSE(client.next(0).has_value()) << "nothing behind the refused frame is answered";
  }
}

INSTANTIATE_TEST_SUITE_P(Databases, HttpWireFrameTest, ::testing::Values("sqlite"));

// With the database out of reach, whoever asks learns that it is unavailable, not where it is or what it said;
// the log keeps the reason.
TEST(HttpServiceWithoutDatabase, CallersAreNotToldWhatTheDatabaseSaid) {
  if (!QSqlDatabase::isDriverAvailable(u"QPSQL"_s)) {
    GTEST_SKIP() << "no PostgreSQL driver";
  }
  QTcpServer placeholder;
  ASSERT_TRUE(placeholder.listen(QHostAddress::LocalHost, 0));
  const quint16 deadPort = placeholder.serverPort();
  placeholder.close();

  HttpServiceOptions options;
  const auto database = DatabaseOptions::fromPostgresConnectionString(
      u"host=127.0.0.1 port=%1 user=nobody dbname=nothing connect_timeout=5"_s.arg(deadPort));
  ASSERT_TRUE(database.ok());
  options.database = database.value();
  options.workers = 1;
  RequestLogCapture log;
  HttpService service(options);
  const auto port = service.listen(QHostAddress::LocalHost, 0);
  ASSERT_TRUE(port.ok());

  WireClient client(port.value());
  client.send(WireClient::request("GET", "/v1/health"));
  const std::optional<WireResponse> health = client.next(kServiceWaitMs);
  ASSERT_TRUE(health.has_value());
  EXPECT_EQ(health->status, 503);
  EXPECT_EQ(QJsonDocument::fromJson(health->body).object().value(u"database"_s).toString(), u"unavailable"_s);

  const Request request = accountInquiry(u"ADMIN01"_s, u"C"_s, u"1"_s);
  client.send(WireClient::post(messaging::encodeRequest(request), kUnknownToken));
  const std::optional<WireResponse> refused = client.next(kServiceWaitMs);
  ASSERT_TRUE(refused.has_value());
  EXPECT_EQ(refused->status, 503);
  EXPECT_EQ(replyOf(refused).requestId, request.requestId);

  for (const std::optional<WireResponse>& response : {health, refused}) {
    const QByteArray body = response->body;
    EXPECT_FALSE(body.contains(QByteArray::number(deadPort)) || body.contains("127.0.0.1") ||
                 body.contains("connect") || body.contains("nobody"))
        << body.constData();
  }
  ASSERT_TRUE(QTest::qWaitFor([&] { return service.inFlight() == 0; }, kServiceWaitMs));
  const QStringList lines = log.lines();
  ASSERT_EQ(lines.size(), 2);
  for (const QString& line : lines) {
    EXPECT_TRUE(line.contains(u"status=503"_s) && line.contains(u" detail="_s)) << qPrintable(line);
  }
}

}  // namespace
