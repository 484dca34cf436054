// The adjustacc-host HTTP service in process on a loopback port, with a real HTTP client and the remote
// link; and the bearer-token store. On SQLite always, on PostgreSQL when ADJUSTACC_TEST_PG names a server.
#include "servicefixture.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QTest>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QUuid>

#include <gtest/gtest.h>

#include <memory>

using namespace adjustacc;
using host::DatabaseOptions;
using host::HttpService;
using host::RequestLogEntry;
using host::TokenStore;
using host::testing::accountInquiry;
using host::testing::HttpResult;
using host::testing::TestConnection;
using messaging::RemoteLink;
using messaging::Reply;
using messaging::Request;

namespace {

using namespace Qt::Literals::StringLiterals;

constexpr int kWaitMs = host::testing::kServiceWaitMs;

// The id part of a bearer token; empty (and a failure) when the token does not split.
QString tokenId(const QString& token) {
  QString id;
  QString secret;
  EXPECT_TRUE(TokenStore::split(token, &id, &secret)) << qPrintable(token);
  return id;
}

class HttpServiceTest : public host::testing::ServiceTest {};

TEST_P(HttpServiceTest, HealthReportsTheDatabase) {
  const HttpResult result = send("GET", u"/v1/health"_s, {}, {});
  EXPECT_EQ(result.status, 200);
  const QJsonObject health = QJsonDocument::fromJson(result.body).object();
  EXPECT_EQ(health.value(QLatin1String("status")).toString(), u"ok"_s);
  EXPECT_EQ(health.value(QLatin1String("database")).toString(), u"ok"_s);
}

TEST_P(HttpServiceTest, GoodRequestIsAnsweredAsTheHostAnswersItAndLogged) {
  const Request request = accountInquiry(m_officers[0], m_type, m_number);
  QSignalSpy logged(m_service.get(), &HttpService::requestFinished);
  RemoteLink link(m_url, m_token);
  const Reply remote = viaLink(link, request);
  ASSERT_TRUE(remote.ok()) << qPrintable(remote.error);
  EXPECT_EQ(remote.requestId, request.requestId);

  // The same inquiry answered directly by the host system gives the same sections and values.
  TestConnection direct(m_options);
  ASSERT_TRUE(direct.ok());
  host::HostSystem system(direct.name());
  const Reply local = system.handle(request, m_officers[0]);
  ASSERT_TRUE(local.ok()) << qPrintable(local.error);
  ASSERT_EQ(remote.sections.keys(), local.sections.keys());
  for (auto it = local.sections.cbegin(); it != local.sections.cend(); ++it) {
    const messaging::RecordSet& mine = remote.sections.value(it.key());
    ASSERT_EQ(mine.recordCount(), it.value().recordCount()) << qPrintable(it.key());
    ASSERT_EQ(mine.fieldCount(), it.value().fieldCount()) << qPrintable(it.key());
    for (int row = 0; row < mine.recordCount(); ++row) {
      for (int field = 0; field < mine.fieldCount(); ++field) {
        EXPECT_EQ(mine.valueAt(row, field), it.value().valueAt(row, field)) << qPrintable(it.key());
      }
    }
  }

  ASSERT_EQ(logged.count(), 1);
  const auto entry = logged.at(0).at(0).value<RequestLogEntry>();
  EXPECT_EQ(entry.officerId, m_officers[0]);
  EXPECT_EQ(entry.code, 47);
  EXPECT_EQ(entry.requestId, request.requestId);
  EXPECT_EQ(entry.status, 200);
  EXPECT_EQ(HttpService::logLine(entry),
            u"officer=%1 code=47 request=%2 status=200 ms=%3"_s.arg(m_officers[0], request.requestId)
                .arg(entry.milliseconds));
}

TEST_P(HttpServiceTest, ConcurrentRequestsAreEachAnsweredForTheirOwnId) {
  RemoteLink link(m_url, m_token);
  QSignalSpy replies(&link, &messaging::HostLink::replyReady);
  QStringList ids;
  for (int i = 0; i < 24; ++i) {
    const Request request = accountInquiry(m_officers[0], m_type, m_number);
    ids.append(request.requestId);
    link.submit(request);
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return replies.count() == 24; }, kWaitMs));
  QStringList answered;
  for (const auto& arguments : replies) {
    const Reply reply = arguments.at(0).value<Reply>();
    EXPECT_TRUE(reply.ok()) << qPrintable(reply.error);
    answered.append(reply.requestId);
  }
  answered.sort();
  ids.sort();
  EXPECT_EQ(answered, ids);
  EXPECT_TRUE(QTest::qWaitFor([&] { return m_service->inFlight() == 0; }, kWaitMs));
}

// Every refusal has its status and a failing reply as JSON, addressed to the request when it can be read.
struct Refusal {
  const char* name;
  int status;
  bool echoesRequestId;
  const char* expectedText;
};

class HttpServiceRefusalTest : public HttpServiceTest {
protected:
  // The body and token for a refusal case; the request id the body carries, if any.
  void build(const QString& name, QByteArray* body, QString* token, QString* requestId) {
    const Request request = accountInquiry(m_officers[0], m_type, m_number);
    *requestId = request.requestId;
    *body = messaging::encodeRequest(request);
    *token = m_token;
    if (name == QLatin1String("NoToken")) {
      token->clear();
    } else if (name == QLatin1String("WrongSecret")) {
      QString wrong = m_token;
      wrong[wrong.size() - 1] = wrong.endsWith(u'A') ? u'B' : u'A';
      *token = wrong;
    } else if (name == QLatin1String("RevokedToken")) {
      TestConnection admin(m_options);
      TokenStore tokens(admin.name());
      ASSERT_TRUE(tokens.revokeToken(tokenId(m_token)).value());
    } else if (name == QLatin1String("OtherOfficersToken")) {
      *token = m_otherToken;
    } else if (name == QLatin1String("MalformedJson")) {
      body->chop(5);
    } else if (name == QLatin1String("NotARequest")) {
      *body = QByteArrayLiteral("{\"replyTo\":\"ADJUSTACC\",\"requestId\":\"abc\"}");
      *requestId = u"abc"_s;
    } else if (name == QLatin1String("OversizedBody")) {
      body->append(QByteArray(messaging::jsonlimits::kMaxRequestBytes, ' '));
    }
  }
};

TEST_P(HttpServiceRefusalTest, AnswersWithStatusAndFailingReply) {
  const std::vector<Refusal> cases = {
      {"NoToken", 401, true, "no sign-on token"},
      {"WrongSecret", 401, true, "not valid"},
      {"OtherOfficersToken", 403, true, "belongs to officer"},
      {"MalformedJson", 400, false, "could not be read"},
      {"NotARequest", 400, true, "could not be read"},
      {"OversizedBody", 413, false, "larger than the host accepts"},
      {"RevokedToken", 401, true, "not valid"},  // last: it revokes the token the others use
  };
  for (const Refusal& c : cases) {
    SCOPED_TRACE(c.name);
    QByteArray body;
    QString token;
    QString requestId;
    build(QLatin1String(c.name), &body, &token, &requestId);
    const HttpResult result = post(body, token);
    EXPECT_EQ(result.status, c.status);
    EXPECT_EQ(result.contentType, QByteArrayLiteral("application/json"));
    const Reply reply = messaging::decodeReply(result.body);
    EXPECT_FALSE(reply.ok());
    EXPECT_TRUE(reply.error.contains(QLatin1String(c.expectedText))) << qPrintable(reply.error);
    if (c.echoesRequestId) {
      EXPECT_EQ(reply.requestId, requestId);
    }
  }
  // Refusals never reach the host: the service still answers a good request afterwards.
  RemoteLink link(m_url, m_otherToken);
  EXPECT_TRUE(viaLink(link, accountInquiry(m_officers[1], m_type, m_number)).ok());
}

TEST_P(HttpServiceRefusalTest, WrongPathsAndMethodsAreRefused) {
  EXPECT_EQ(send("GET", u"/v1/request"_s, {}, {}).status, 405);
  EXPECT_EQ(send("POST", u"/v1/health"_s, {}, {}).status, 405);
  const HttpResult missing = send("POST", u"/v2/request"_s, "{}", "Bearer x");
  EXPECT_EQ(missing.status, 404);
  EXPECT_FALSE(messaging::decodeReply(missing.body).ok());
}

TEST_P(HttpServiceTest, AbandonedRequestsDoNotUpsetTheService) {
  const QByteArray body = messaging::encodeRequest(accountInquiry(m_officers[0], m_type, m_number));
  for (int i = 0; i < 10; ++i) {
    QNetworkRequest request(QUrl(m_url.toString() + u"/v1/request"_s));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    request.setRawHeader("Authorization", "Bearer " + m_token.toUtf8());
    QNetworkReply* reply = m_network.post(request, body);
    QObject::connect(reply, &QNetworkReply::uploadProgress, reply, [reply](qint64 sent, qint64 total) {
      if (sent == total) {
        reply->abort();
      }
    });
    QObject::connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return m_service->inFlight() == 0; }, kWaitMs));
  EXPECT_EQ(send("GET", u"/v1/health"_s, {}, {}).status, 200);
}

TEST_P(HttpServiceTest, ServesHttpsWithACertificateTheClientTrusts) {
  const QString certificate = m_dir.filePath(u"host.crt"_s);
  const QString key = m_dir.filePath(u"host.key"_s);
  QProcess openssl;
  openssl.start(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                               u"-subj"_s, u"/CN=127.0.0.1"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s,
                               u"-keyout"_s, key, u"-out"_s, certificate});
  if (!openssl.waitForFinished(60000) || openssl.exitCode() != 0) {
    GTEST_SKIP() << "openssl could not make a test certificate";
  }

  host::HttpServiceOptions options;
  options.database = m_options;
  HttpService secure(options);
  EXPECT_FALSE(secure.useTls(m_dir.filePath(u"missing.crt"_s), key).ok());
  EXPECT_FALSE(secure.useTls(key, key).ok()) << "a key is no certificate";
  EXPECT_FALSE(secure.useTls(certificate, certificate).ok()) << "a certificate is no key";
  const auto tls = secure.useTls(certificate, key);
  ASSERT_TRUE(tls.ok()) << qPrintable(tls.error());
  const auto port = secure.listen(QHostAddress::LocalHost, 0);
  ASSERT_TRUE(port.ok());
  const QUrl url(u"https://127.0.0.1:%1"_s.arg(port.value()));

  RemoteLink trusting(url, m_token);
  QFile pem(certificate);
  ASSERT_TRUE(pem.open(QIODevice::ReadOnly));
  trusting.addTrustedCertificates(QSslCertificate::fromData(pem.readAll(), QSsl::Pem));
  const Reply good = viaLink(trusting, accountInquiry(m_officers[0], m_type, m_number));
  EXPECT_TRUE(good.ok()) << qPrintable(good.error);

  RemoteLink doubting(url, m_token);
  const Request request = accountInquiry(m_officers[0], m_type, m_number);
  const Reply refused = viaLink(doubting, request);
  EXPECT_FALSE(refused.ok());
  EXPECT_EQ(refused.requestId, request.requestId);
  EXPECT_TRUE(refused.error.contains(u"certificate"_s)) << qPrintable(refused.error);
}

INSTANTIATE_TEST_SUITE_P(Databases, HttpServiceTest, ::testing::Values("sqlite", "postgresql"));
INSTANTIATE_TEST_SUITE_P(Databases, HttpServiceRefusalTest, ::testing::Values("sqlite", "postgresql"));

TEST(HttpServiceHeaders, BearerTokenIsTakenFromTheAuthorizationHeader) {
  EXPECT_EQ(HttpService::bearerToken("Bearer abc.def"), u"abc.def"_s);
  EXPECT_EQ(HttpService::bearerToken("  bearer   abc.def "), u"abc.def"_s);
  EXPECT_EQ(HttpService::bearerToken("Basic dXNlcjpwYXNz"), QString());
  EXPECT_EQ(HttpService::bearerToken("Bearer"), QString());
  EXPECT_EQ(HttpService::bearerToken("Bearer "), QString());
  EXPECT_EQ(HttpService::bearerToken(""), QString());
}

// ---------------------------------------------------------------------------------------------------------
// The token store.

class TokenStoreTest : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(m_dir.isValid());
    DatabaseOptions options;
    options.databaseName = m_dir.filePath(u"tokens.sqlite"_s);
    m_connection = std::make_unique<TestConnection>(options);
    ASSERT_TRUE(m_connection->ok());
    QSqlQuery query(m_connection->db());
    // Only the officers table matters to the store; the rest of the schema is not needed here.
    ASSERT_TRUE(query.exec(
        u"CREATE TABLE OFFICER (OFFICER_ID VARCHAR(16) PRIMARY KEY, ACTIVE_IND CHAR(1) NOT NULL DEFAULT 'Y')"_s));
    ASSERT_TRUE(query.exec(u"INSERT INTO OFFICER VALUES ('CLERK1', 'Y'), ('CLERK2', 'Y'), ('GONE1', 'N')"_s));
    m_store = std::make_unique<TokenStore>(m_connection->name());
    ASSERT_TRUE(m_store->ensureTable().ok());
    ASSERT_TRUE(m_store->ensureTable().ok()) << "creating the table is idempotent";
  }

  QTemporaryDir m_dir;
  std::unique_ptr<TestConnection> m_connection;
  std::unique_ptr<TokenStore> m_store;
};

TEST_F(TokenStoreTest, IssuedTokensVerifyToTheirOfficer) {
  const auto first = m_store->issue(u"CLERK1"_s);
  const auto second = m_store->issue(u"CLERK1"_s);
  const auto other = m_store->issue(u"CLERK2"_s);
  ASSERT_TRUE(first.ok() && second.ok() && other.ok());
  EXPECT_NE(first->token, second->token);
  EXPECT_EQ(m_store->verify(first->token).officerId, u"CLERK1"_s);
  EXPECT_EQ(m_store->verify(second->token).officerId, u"CLERK1"_s);
  EXPECT_EQ(m_store->verify(other->token).officerId, u"CLERK2"_s);
  EXPECT_FALSE(m_store->issue(u"NOSUCH"_s).ok());
  EXPECT_FALSE(m_store->issue(u"  "_s).ok());
}

TEST_F(TokenStoreTest, AnInactiveOfficerIsGivenNoToken) {
  const auto refused = m_store->issue(u"gone1"_s);
  ASSERT_FALSE(refused.ok());
  EXPECT_EQ(refused.error(), u"Officer GONE1 is not active; a token is issued only to an active officer."_s);
  QSqlQuery query(m_connection->db());
  ASSERT_TRUE(query.exec(u"SELECT COUNT(*) FROM HOST_TOKEN"_s) && query.next());
  EXPECT_EQ(query.value(0).toInt(), 0) << "nothing is stored for it";
}

TEST_F(TokenStoreTest, ACachingStoreKeepsWhatItReadButStillChecksTheSecret) {
  const QString token = m_store->issue(u"CLERK1"_s)->token;
  TokenStore caching(m_connection->name());
  caching.setCacheLifetime(std::chrono::hours(1));
  ASSERT_TRUE(caching.verify(token).valid());

  ASSERT_TRUE(m_store->revokeToken(tokenId(token)).value());
  EXPECT_FALSE(m_store->verify(token).valid()) << "without a cache the revocation applies at once";
  EXPECT_TRUE(caching.verify(token).valid()) << "within its lifetime the cache answers";
  QString altered = token;
  altered[30] = altered[30] == u'x' ? u'y' : u'x';
  EXPECT_FALSE(caching.verify(altered).valid()) << "the cache keeps the hash, not the verdict";
}

TEST_F(TokenStoreTest, TheSecretIsNotStored) {
  const auto issued = m_store->issue(u"CLERK1"_s);
  ASSERT_TRUE(issued.ok());
  QString id;
  QString secret;
  ASSERT_TRUE(TokenStore::split(issued->token, &id, &secret));
  QSqlQuery query(m_connection->db());
  ASSERT_TRUE(query.exec(u"SELECT * FROM HOST_TOKEN"_s));
  ASSERT_TRUE(query.next());
  for (int i = 0; i < query.record().count(); ++i) {
    EXPECT_FALSE(query.value(i).toString().contains(secret));
  }
}

TEST_F(TokenStoreTest, AlteredUnknownMalformedAndRevokedTokensAreRefusedAlike) {
  const QString token = m_store->issue(u"CLERK1"_s)->token;
  const QString revokedOne = m_store->issue(u"CLERK2"_s)->token;
  const QString revokedTwo = m_store->issue(u"CLERK2"_s)->token;
  ASSERT_EQ(m_store->revokeOfficer(u"CLERK2"_s).value(), 2);

  QString altered = token;
  altered[20] = altered[20] == u'x' ? u'y' : u'x';
  QString otherId = token;
  otherId[0] = otherId[0] == u'a' ? u'b' : u'a';
  const QStringList refused = {altered,      otherId,    token.left(token.size() - 1),
                               token + u'x', QString(),  u"no-dot-here"_s,
                               revokedOne,   revokedTwo, token.toUpper()};
  for (const QString& candidate : refused) {
    const TokenStore::Check check = m_store->verify(candidate);
    EXPECT_EQ(check.outcome, TokenStore::Check::Outcome::Refused) << qPrintable(candidate);
    EXPECT_TRUE(check.officerId.isEmpty());
    EXPECT_EQ(check.error, m_store->verify(u"x"_s).error) << "one text for every refusal";
  }
  EXPECT_TRUE(m_store->verify(token).valid());

  EXPECT_TRUE(m_store->revokeToken(tokenId(token)).value());
  EXPECT_FALSE(m_store->revokeToken(tokenId(token)).value()) << "already revoked";
  EXPECT_FALSE(m_store->verify(token).valid());

  const auto list = m_store->list();
  ASSERT_TRUE(list.ok());
  ASSERT_EQ(list->size(), 3);
  for (const host::TokenInfo& info : list.value()) {
    EXPECT_TRUE(info.revoked.isValid());
    EXPECT_TRUE(info.issued.isValid());
  }
}

}  // namespace
