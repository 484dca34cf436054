// The host links: the embedded link (host on a worker thread over a SQLite file) and the remote link's
// handling of everything an HTTP peer can do wrong.
#include "linkhelpers.h"

#include "host/embeddedlink.h"
#include "host/hostsystem.h"
#include "messaging/jsoncodec.h"
#include "messaging/remotelink.h"
#include "messaging/requestmessage.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QUuid>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace adjustacc;
using host::EmbeddedLink;
using host::EmbeddedLinkOptions;
using host::testing::accountInquiry;
using host::testing::DemoFacts;
using host::testing::readDemoFacts;
using messaging::HostLink;
using messaging::RemoteLink;
using messaging::Reply;
using messaging::Request;
using messaging::RequestMessage;

namespace {

using namespace Qt::Literals::StringLiterals;

constexpr int kWaitMs = 20000;

// Runs `use` with a connection of its own to a SQLite file, on the test thread.
void withFile(const QString& path, const std::function<void(QSqlDatabase&)>& use) {
  const QString name = u"links-test-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
    db.setDatabaseName(path);
    ASSERT_TRUE(db.open());
    use(db);
    db.close();
  }
  QSqlDatabase::removeDatabase(name);
}

int countRows(const QString& path, const QString& table) {
  int count = -1;
  withFile(path, [&](QSqlDatabase& db) {
    QSqlQuery query(db);
    if (query.exec(u"SELECT COUNT(*) FROM "_s + table) && query.next()) {
      count = query.value(0).toInt();
    }
  });
  return count;
}

// The demo set's officers and first account, read from the file.
DemoFacts demoFacts(const QString& path) {
  DemoFacts facts;
  withFile(path, [&](QSqlDatabase& db) { facts = readDemoFacts(db); });
  return facts;
}

Reply submitAndWait(HostLink& link, const Request& request) { return host::testing::submitAndWait(link, request, kWaitMs); }

class EmbeddedLinkTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }

  EmbeddedLinkOptions options(const QString& officer = {}) const {
    EmbeddedLinkOptions o;
    o.dataFolder = m_dir.filePath(u"data"_s);
    o.officerId = officer;
    return o;
  }
  QString path() const { return m_dir.filePath(u"data/adjustacc.sqlite"_s); }

  // Starts a link once so that the file holds the demo set, and reads what the tests need from it.
  DemoFacts prepareDemo() {
    {
      EmbeddedLink link(options());
      submitAndWait(link, accountInquiry(u"NOBODY"_s, u"X"_s, u"1"_s));
    }
    return demoFacts(path());
  }

  QTemporaryDir m_dir;
};

TEST_F(EmbeddedLinkTest, FirstStartCreatesTheFileWithTheDemoSetAndAnswersOnTheCallersThread) {
  const DemoFacts facts = prepareDemo();
  ASSERT_FALSE(facts.officer().isEmpty()) << "the demo set has officers";
  ASSERT_FALSE(facts.number.isEmpty()) << "the demo set has accounts";

  EmbeddedLink link(options(facts.officer()));
  EXPECT_EQ(link.databasePath(), path());
  QThread* deliveredOn = nullptr;
  QObject::connect(&link, &HostLink::replyReady, &link, [&] { deliveredOn = QThread::currentThread(); });
  const Request request = accountInquiry(facts.officer(), facts.type, facts.number);
  const Reply reply = submitAndWait(link, request);

  EXPECT_EQ(reply.error, QString());
  EXPECT_EQ(reply.requestId, request.requestId);
  EXPECT_EQ(reply.replyTo, request.replyTo);
  ASSERT_TRUE(reply.hasSection(u"ACNTSRCVBL"_s));
  EXPECT_GT(reply.section(u"ACNTSRCVBL"_s)->recordCount(), 0);
  EXPECT_EQ(deliveredOn, QThread::currentThread());
  EXPECT_EQ(link.pending(), 0);
}

TEST_F(EmbeddedLinkTest, DemoSetFillsOnlyADatabaseWithoutOfficers) {
  // One database already in use (it has an officer of its own), one whose first filling never happened.
  const auto prepare = [&](const QString& folder, bool withOfficer) {
    ASSERT_TRUE(QDir().mkpath(m_dir.filePath(folder)));
    host::DatabaseOptions db;
    db.databaseName = m_dir.filePath(folder + u"/adjustacc.sqlite"_s);
    const QString name = u"links-test-"_s + folder;
    ASSERT_TRUE(host::openDatabase(db, name).ok());
    ASSERT_TRUE(host::createSchema(name).ok());
    if (withOfficer) {
      QSqlQuery query(QSqlDatabase::database(name, false));
      ASSERT_TRUE(query.exec(QStringLiteral(
          "INSERT INTO OFFICER (OFFICER_ID, OFFICER_NM, REGION) VALUES ('LOCAL01', 'Local officer', 'NE')")));
    }
    QSqlDatabase::database(name, false).close();
    QSqlDatabase::removeDatabase(name);
  };
  prepare(u"inuse"_s, true);
  prepare(u"unfilled"_s, false);
  // A zero-length file counts as new.
  ASSERT_TRUE(QDir().mkpath(m_dir.filePath(u"empty"_s)));
  {
    QFile file(m_dir.filePath(u"empty/adjustacc.sqlite"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  }

  for (const QString& folder : {u"inuse"_s, u"unfilled"_s, u"empty"_s}) {
    EmbeddedLinkOptions o = options();
    o.dataFolder = m_dir.filePath(folder);
    EmbeddedLink link(o);
    submitAndWait(link, accountInquiry(u"NOBODY"_s, u"X"_s, u"1"_s));
  }
  EXPECT_EQ(countRows(m_dir.filePath(u"inuse/adjustacc.sqlite"_s), u"OFFICER"_s), 1);
  EXPECT_GT(countRows(m_dir.filePath(u"unfilled/adjustacc.sqlite"_s), u"OFFICER"_s), 1);
  EXPECT_GT(countRows(m_dir.filePath(u"empty/adjustacc.sqlite"_s), u"OFFICER"_s), 1);
}

// Latency and the drop switch against the request message's time-out.
struct TimeoutCase {
  const char* name;
  int latencyMs;
  bool drop;
  int timeoutMs;
  bool expectTimeout;
  bool expectLinkReply;  // the late answer still reaches the link (and is dropped by the message)
};

class EmbeddedLinkTimeoutTest : public EmbeddedLinkTest, public ::testing::WithParamInterface<TimeoutCase> {};

TEST_P(EmbeddedLinkTimeoutTest, RequestMessageSeesExactlyOneDataReady) {
  const TimeoutCase c = GetParam();
  const DemoFacts facts = prepareDemo();
  EmbeddedLinkOptions o = options(facts.officer());
  o.latencyMs = c.latencyMs;
  o.dropReplies = c.drop;
  EmbeddedLink link(o);

  RequestMessage message(&link);
  message.setReplyTo(u"ADJUSTACC"_s);
  message.setVersion(u"1"_s);
  message.setRequestCode(47);
  message.setUser(facts.officer());
  message.addParameter({u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, facts.number});
  message.addParameter({u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, facts.type});
  message.setTimeoutInterval(c.timeoutMs);
  QSignalSpy timeouts(&message, &RequestMessage::MsgTimeout);
  QSignalSpy dataReady(&message, &RequestMessage::DataReady);
  QSignalSpy linkReplies(&link, &HostLink::replyReady);
  message.send();

  ASSERT_TRUE(dataReady.wait(kWaitMs));
  const Reply reply = dataReady.at(0).at(1).value<Reply>();
  EXPECT_EQ(timeouts.count(), c.expectTimeout ? 1 : 0);
  EXPECT_EQ(reply.timedOut, c.expectTimeout);
  EXPECT_EQ(reply.ok(), !c.expectTimeout) << qPrintable(reply.error);

  // Let the link finish: the late answer arrives (or is dropped) and the message stays answered once.
  EXPECT_TRUE(QTest::qWaitFor([&] { return link.pending() == 0; }, kWaitMs));
  QCoreApplication::processEvents();
  EXPECT_EQ(linkReplies.count(), c.expectLinkReply ? 1 : 0);
  EXPECT_EQ(dataReady.count(), 1);
  EXPECT_EQ(timeouts.count(), c.expectTimeout ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    LatencyAndDrops, EmbeddedLinkTimeoutTest,
    ::testing::Values(TimeoutCase{"AnsweredInTime", 0, false, 15000, false, true},
                      TimeoutCase{"SlowerThanTheTimeout", 1500, false, 50, true, true},
                      TimeoutCase{"ReplyDropped", 0, true, 200, true, false}),
    [](const ::testing::TestParamInfo<TimeoutCase>& param) { return std::string(param.param.name); });

TEST_F(EmbeddedLinkTest, UnusableDataFolderGivesFailingRepliesAndOneErrorSignal) {
  // A data folder below a plain file cannot be created.
  QFile blocker(m_dir.filePath(u"blocker"_s));
  ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
  blocker.close();
  EmbeddedLinkOptions o = options(u"ANYONE"_s);
  o.dataFolder = m_dir.filePath(u"blocker/data"_s);
  EmbeddedLink link(o);
  QSignalSpy errors(&link, &EmbeddedLink::databaseError);

  const Request first = accountInquiry(u"ANYONE"_s, u"X"_s, u"1"_s);
  const Reply reply = submitAndWait(link, first);
  EXPECT_FALSE(reply.ok());
  EXPECT_EQ(reply.requestId, first.requestId);
  EXPECT_TRUE(reply.error.contains(u"could not be"_s)) << qPrintable(reply.error);
  submitAndWait(link, accountInquiry(u"ANYONE"_s, u"X"_s, u"1"_s));
  EXPECT_EQ(errors.count(), 1);
}

TEST_F(EmbeddedLinkTest, DestroyingTheLinkWithRequestsInFlightClosesItsConnection) {
  const DemoFacts facts = prepareDemo();
  const QStringList before = QSqlDatabase::connectionNames();
  {
    EmbeddedLink link(options(facts.officer()));
    QSignalSpy replies(&link, &HostLink::replyReady);
    for (int i = 0; i < 20; ++i) {
      link.submit(accountInquiry(facts.officer(), facts.type, facts.number));
    }
  }
  EXPECT_EQ(QSqlDatabase::connectionNames(), before);
  // The file is whole and usable again.
  EmbeddedLink again(options(facts.officer()));
  EXPECT_TRUE(submitAndWait(again, accountInquiry(facts.officer(), facts.type, facts.number)).ok());
}

// ---------------------------------------------------------------------------------------------------------
// The remote link against a scripted HTTP peer.

class ScriptedHttpPeer : public QObject {
public:
  // What to answer a complete request with; an empty answer leaves the request hanging.
  using Answer = std::function<QByteArray(const QByteArray& head, const QByteArray& body)>;

  explicit ScriptedHttpPeer(Answer answer) : m_answer(std::move(answer)) {
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
      while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
      }
    });
  }
  QUrl url() const { return QUrl(u"http://127.0.0.1:%1"_s.arg(m_server.serverPort())); }
  QByteArray lastHead;
  QByteArray lastBody;

private:
  void read(QTcpSocket* socket) {
    QByteArray& buffer = m_buffers[socket];
    buffer += socket->readAll();
    const qsizetype end = buffer.indexOf("\r\n\r\n");
    if (end < 0) {
      return;
    }
    const QByteArray head = buffer.left(end);
    qsizetype length = 0;
    for (const QByteArray& line : head.split('\n')) {
      if (line.toLower().startsWith("content-length:")) {
        length = line.mid(15).trimmed().toLongLong();
      }
    }
    if (buffer.size() < end + 4 + length) {
      return;
    }
    lastHead = head;
    lastBody = buffer.mid(end + 4, length);
    buffer.clear();
    const QByteArray answer = m_answer(lastHead, lastBody);
    if (!answer.isEmpty()) {
      socket->write(answer);
    }
  }

  Answer m_answer;
  QTcpServer m_server;
  QHash<QTcpSocket*, QByteArray> m_buffers;
};

QByteArray httpAnswer(const QByteArray& statusLine, const QByteArray& contentType, const QByteArray& body) {
  return "HTTP/1.1 " + statusLine + "\r\nContent-Type: " + contentType +
         "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

TEST(RemoteLinkTest, SendsTheRequestAsJsonWithTheTokenAndDeliversTheDecodedReply) {
  Request request = accountInquiry(u"OFFICER1"_s, u"CIT"_s, u"2000001"_s);
  request.records = {{u"ADJUSTAR"_s, {}}};
  request.records[0].records.append(messaging::SaveRecord());
  request.records[0].records[0].setField(u"ACTION"_s, QVariant());
  ScriptedHttpPeer peer([](const QByteArray&, const QByteArray& body) {
    const auto decoded = messaging::decodeRequest(body);
    Reply reply;
    reply.replyTo = decoded.ok() ? decoded->replyTo : QString();
    reply.requestId = decoded.ok() ? decoded->requestId : QString();
    messaging::RecordSet rows({{u"RCPT_NBR"_s, messaging::FieldType::Text}});
    rows.addNew({u"R1"_s});
    rows.addNew({QVariant()});
    reply.sections.insert(u"RECEIPT"_s, rows);
    return httpAnswer("200 OK", "application/json", messaging::encodeReply(reply));
  });
  RemoteLink link(QUrl(peer.url().toString() + u"/adjustacc/"_s), u"secret-token"_s);
  EXPECT_EQ(link.requestUrl().path(), u"/adjustacc/v1/request"_s);

  const Reply reply = submitAndWait(link, request);
  ASSERT_TRUE(reply.ok()) << qPrintable(reply.error);
  EXPECT_EQ(reply.requestId, request.requestId);
  ASSERT_TRUE(reply.hasSection(u"RECEIPT"_s));
  const messaging::RecordSet* receipts = reply.section(u"RECEIPT"_s);
  ASSERT_EQ(receipts->recordCount(), 2);
  EXPECT_EQ(receipts->valueAt(0, 0).toString(), u"R1"_s);
  EXPECT_TRUE(receipts->isNullAt(1, 0));

  EXPECT_TRUE(peer.lastHead.startsWith("POST /adjustacc/v1/request HTTP/1.1")) << peer.lastHead.constData();
  EXPECT_TRUE(peer.lastHead.contains("Authorization: Bearer secret-token")) << peer.lastHead.constData();
  const auto sent = messaging::decodeRequest(peer.lastBody);
  ASSERT_TRUE(sent.ok()) << qPrintable(sent.error());
  EXPECT_EQ(sent.value(), request);
  EXPECT_EQ(link.pending(), 0);
}

// Each way an HTTP peer can fail becomes a failing reply for the request that was sent.
struct PeerFailure {
  const char* name;
  std::function<QByteArray(const Request&)> answer;  // empty answer: the peer never answers
  const char* expectedText;
};

class RemoteLinkFailureTest : public ::testing::TestWithParam<PeerFailure> {};

TEST_P(RemoteLinkFailureTest, BecomesAFailingReplyForTheRequest) {
  const PeerFailure c = GetParam();
  const Request request = accountInquiry(u"OFFICER1"_s, u"CIT"_s, u"2000001"_s);
  ScriptedHttpPeer peer([&](const QByteArray&, const QByteArray&) { return c.answer(request); });
  RemoteLink link(peer.url(), u"token"_s);
  link.setTransferTimeout(300);

  const Reply reply = submitAndWait(link, request);
  EXPECT_FALSE(reply.ok());
  EXPECT_EQ(reply.requestId, request.requestId);
  EXPECT_EQ(reply.replyTo, request.replyTo);
  EXPECT_TRUE(reply.error.contains(QLatin1String(c.expectedText))) << qPrintable(reply.error);
  EXPECT_EQ(link.pending(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Peers, RemoteLinkFailureTest,
    ::testing::Values(
        PeerFailure{"Unreadable200",
                    [](const Request&) { return httpAnswer("200 OK", "application/json", "{\"replyTo\":"); },
                    "could not be read"},
        PeerFailure{"ProxyErrorPage",
                    [](const Request&) { return httpAnswer("502 Bad Gateway", "text/html", "<html>down</html>"); },
                    "HTTP status 502"},
        PeerFailure{"RefusalWithoutErrorText",
                    [](const Request& r) {
                      Reply good;
                      good.replyTo = r.replyTo;
                      good.requestId = r.requestId;
                      return httpAnswer("500 Internal Server Error", "application/json", messaging::encodeReply(good));
                    },
                    "HTTP status 500"},
        PeerFailure{"HostRefusalKeepsItsText",
                    [](const Request& r) {
                      return httpAnswer(
                          "401 Unauthorized", "application/json",
                          messaging::encodeReply(Reply::failure(r.replyTo, r.requestId, u"Token not valid."_s)));
                    },
                    "Token not valid."},
        PeerFailure{"AnswerToAnotherRequest",
                    [](const Request& r) {
                      Reply other;
                      other.replyTo = r.replyTo;
                      other.requestId = u"someone-else"_s;
                      return httpAnswer("200 OK", "application/json", messaging::encodeReply(other));
                    },
                    "another request"},
        PeerFailure{"HangingPeer", [](const Request&) { return QByteArray(); }, "did not answer"}),
    [](const ::testing::TestParamInfo<PeerFailure>& param) { return std::string(param.param.name); });

TEST(RemoteLinkTest, DeadHostGivesAFailingReply) {
  quint16 port = 0;
  {
    QTcpServer probe;
    ASSERT_TRUE(probe.listen(QHostAddress::LocalHost, 0));
    port = probe.serverPort();
  }
  RemoteLink link(QUrl(u"http://127.0.0.1:%1"_s.arg(port)), u"token"_s);
  const Request request = accountInquiry(u"OFFICER1"_s, u"CIT"_s, u"2000001"_s);
  const Reply reply = submitAndWait(link, request);
  EXPECT_FALSE(reply.ok());
  EXPECT_EQ(reply.requestId, request.requestId);
  EXPECT_TRUE(reply.error.contains(u"refused"_s)) << qPrintable(reply.error);
}

TEST(RemoteLinkTest, RequestMessageTimesOutOnAHangingHostLikeOnTheEmbeddedLink) {
  ScriptedHttpPeer peer([](const QByteArray&, const QByteArray&) { return QByteArray(); });
  auto link = std::make_unique<RemoteLink>(peer.url(), u"token"_s);
  RequestMessage message(link.get());
  message.setReplyTo(u"ADJUSTACC"_s);
  message.setRequestCode(47);
  message.setUser(u"OFFICER1"_s);
  message.setTimeoutInterval(50);
  QSignalSpy timeouts(&message, &RequestMessage::MsgTimeout);
  QSignalSpy dataReady(&message, &RequestMessage::DataReady);
  message.send();
  ASSERT_TRUE(dataReady.wait(kWaitMs));
  EXPECT_EQ(timeouts.count(), 1);
  EXPECT_TRUE(dataReady.at(0).at(1).value<Reply>().timedOut);
  EXPECT_EQ(link->pending(), 1);
  // Closing the link abandons the hung transfer without delivering anything.
  link.reset();
  QCoreApplication::processEvents();
  EXPECT_EQ(dataReady.count(), 1);
}

}  // namespace
