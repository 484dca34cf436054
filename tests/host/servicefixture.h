#pragma once
// The adjustacc-host service in process on a loopback port, over a fresh host database with the demo set and a
// token for each of its first two officers: on SQLite always, on PostgreSQL when ADJUSTACC_TEST_PG names a
// server (in a schema of its own, dropped afterwards; its connections carry the schema's name as their
// application name, so that a test can find them on the server).
#include "linkhelpers.h"

#include "host/hostsystem.h"
#include "host/httpservice.h"
#include "host/tokens.h"
#include "messaging/jsoncodec.h"
#include "messaging/remotelink.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUrl>
#include <QUuid>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::host::testing {

inline constexpr int kServiceWaitMs = 30000;

// A connection of the test's own, on the test thread, closed and removed with this object.
class TestConnection {
public:
  explicit TestConnection(const DatabaseOptions& options)
      : m_name(u"service-test-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)),
        m_opened(openDatabase(options, m_name)) {}
  ~TestConnection() {
    if (QSqlDatabase::contains(m_name)) {
      QSqlDatabase::database(m_name, false).close();
      QSqlDatabase::removeDatabase(m_name);
    }
  }
  TestConnection(const TestConnection&) = delete;
  TestConnection& operator=(const TestConnection&) = delete;
  bool ok() const { return m_opened.ok(); }
  QString error() const { return m_opened.error(); }
  const QString& name() const { return m_name; }
  QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

private:
  QString m_name;
  messaging::Result<bool> m_opened;
};

struct HttpResult {
  int status = 0;
  QByteArray contentType;
  QByteArray body;
  QNetworkReply::NetworkError error = QNetworkReply::NoError;
};

class ServiceTest : public ::testing::TestWithParam<const char*> {
protected:
  bool onPostgres() const { return QLatin1String(GetParam()) == QLatin1String("postgresql"); }

  void SetUp() override {
    if (onPostgres()) {
      const QString pg = qEnvironmentVariable("ADJUSTACC_TEST_PG");
      if (pg.isEmpty()) {
        GTEST_SKIP() << "ADJUSTACC_TEST_PG is not set";
      }
      auto options = DatabaseOptions::fromPostgresConnectionString(pg);
      ASSERT_TRUE(options.ok()) << qPrintable(options.error());
      m_options = options.value();
      m_options.schema = u"svc_"_s + QUuid::createUuid().toString(QUuid::Id128).left(16);
      m_options.connectOptions = u"application_name="_s + m_options.schema;
    } else {
      ASSERT_TRUE(m_dir.isValid());
      m_options.driver = u"QSQLITE"_s;
      m_options.databaseName = m_dir.filePath(u"host.sqlite"_s);
    }

    {
      TestConnection admin(m_options);
      ASSERT_TRUE(admin.ok()) << qPrintable(admin.error());
      ASSERT_TRUE(createSchema(admin.name()).ok());
      const auto demo = loadDemoData(admin.name(), QDate::currentDate());
      ASSERT_TRUE(demo.ok()) << qPrintable(demo.error());
      TokenStore tokens(admin.name());
      ASSERT_TRUE(tokens.ensureTable().ok());
      const DemoFacts facts = readDemoFacts(admin.db());
      m_officers = facts.officers;
      ASSERT_GE(m_officers.size(), 2);
      m_type = facts.type;
      m_number = facts.number;
      ASSERT_FALSE(m_number.isEmpty()) << "the demo set has accounts";
      m_token = tokens.issue(m_officers[0])->token;
      m_otherToken = tokens.issue(m_officers[1])->token;
    }

    m_service = startService(serviceOptions(), &m_port);
    ASSERT_TRUE(m_service);
    m_url = QUrl(u"http://127.0.0.1:%1"_s.arg(m_port));
  }

  void TearDown() override {
    m_service.reset();
    if (!m_options.schema.isEmpty()) {
      DatabaseOptions plain = m_options;
      plain.schema.clear();
      TestConnection admin(plain);
      QSqlQuery query(admin.db());
      query.exec(u"DROP SCHEMA IF EXISTS %1 CASCADE"_s.arg(m_options.schema));
    }
  }

  // The options of the fixture's service.
  HttpServiceOptions serviceOptions() const {
    HttpServiceOptions options;
    options.database = m_options;
    options.tokenCacheLifetime = std::chrono::milliseconds(0);  // revocations apply at once here
    return options;
  }

  // Another service over the same database, listening on a free loopback port; null when it could not.
  static std::unique_ptr<HttpService> startService(const HttpServiceOptions& options, quint16* port) {
    auto service = std::make_unique<HttpService>(options);
    const auto bound = service->listen(QHostAddress::LocalHost, 0);
    EXPECT_TRUE(bound.ok()) << qPrintable(bound.error());
    if (!bound.ok()) {
      return nullptr;
    }
    *port = bound.value();
    return service;
  }

  HttpResult send(const QByteArray& method, const QString& path, const QByteArray& body,
                  const QByteArray& authorization) {
    QNetworkRequest request(QUrl(m_url.toString() + path));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    if (!authorization.isEmpty()) {
      request.setRawHeader("Authorization", authorization);
    }
    QNetworkReply* reply = m_network.sendCustomRequest(request, method, body);
    QSignalSpy finished(reply, &QNetworkReply::finished);
    HttpResult result;
    if (!finished.wait(kServiceWaitMs)) {
      return result;
    }
    result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.contentType = reply->rawHeader("Content-Type");
    result.body = reply->readAll();
    result.error = reply->error();
    reply->deleteLater();
    return result;
  }

  HttpResult post(const QByteArray& body, const QString& token) {
    return send("POST", u"/v1/request"_s, body, token.isEmpty() ? QByteArray() : "Bearer " + token.toUtf8());
  }

  static messaging::Reply viaLink(messaging::RemoteLink& link, const messaging::Request& request) {
    return submitAndWait(link, request, kServiceWaitMs);
  }

  QTemporaryDir m_dir;
  DatabaseOptions m_options;
  QStringList m_officers;
  QString m_type;
  QString m_number;
  QString m_token;
  QString m_otherToken;
  std::unique_ptr<HttpService> m_service;
  quint16 m_port = 0;
  QUrl m_url;
  QNetworkAccessManager m_network;
};

}  // namespace adjustacc::host::testing
