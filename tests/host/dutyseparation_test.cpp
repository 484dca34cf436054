// The separation of duties reaches the host through both ways of running it: the embedded link's options and
// the shared service's options (what adjustacc-host serve --duty-separation sets). Worksheet 3000003 of the
// demo set was prepared by ADMIN01 and verified by VERIFY01; ADMIN01 approves it.
#include "linkhelpers.h"

#include "host/demodata.h"
#include "host/embeddedlink.h"
#include "host/httpservice.h"
#include "host/tokens.h"
#include "messaging/remotelink.h"

#include <QSqlDatabase>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

constexpr int kWaitMs = 30000;

const QString kPreparerApproves = u"The person preparing and approving the Refund Worksheet can not be the same."_s;

messaging::Request request(int code, const QString& user) {
  messaging::Request r;
  r.replyTo = u"AdjustAccWorkSheet1"_s;
  r.version = u"1.0"_s;
  r.code = code;
  r.user = user;
  r.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
  return r;
}

// Reads worksheet 3000003 and sends its approval by the officer who prepared it; the reply of the approval.
messaging::Reply preparerApproves(messaging::HostLink& link) {
  messaging::Request inquiry = request(74, demo::Admin);
  inquiry.params = {{u"MARVENTO"_s, u"key:CUST_ID"_s, u"="_s, u"100003"_s},
                    {u"MARVENTO"_s, u"key:REFUND_NBR"_s, u"="_s, u"3000003"_s}};
  const messaging::Reply read = submitAndWait(link, inquiry, kWaitMs);
  EXPECT_EQ(read.error, QString());
  const messaging::RecordSet worksheet = read.sections.value(u"REFUND"_s);
  EXPECT_EQ(worksheet.recordCount(), 1);
  EXPECT_EQ(worksheet.valueAt(0, u"STTS_CD"_s).toString(), u"2"_s);

  messaging::Request approval = request(75, demo::Admin);
  messaging::SaveRecord record;
  for (const auto& [field, value] : QList<std::pair<QString, QVariant>>{
           {u"ACTION"_s, u"UPD"_s},
           {u"CUST_ID"_s, u"100003"_s},
           {u"RFND_NBR"_s, u"3000003"_s},
           {u"RCPT_NBR"_s, u"8000005"_s},
           {u"STTS_CD"_s, u"3"_s},
           {u"APPROVE_ID"_s, demo::Admin},
           {u"ROW_VRSN_NBR"_s, worksheet.valueAt(0, u"ROW_VRSN_NBR"_s)}}) {
    record.setField(field, value);
  }
  approval.records.append({u"REFUND"_s, {record}});
  return submitAndWait(link, approval, kWaitMs);
}

struct Case {
  const char* name;
  bool service;
  DutySeparation duties;
  const QString* expected;  // the refusal; null when the approval goes through
};

class DutySeparationReachesTheHost : public ::testing::TestWithParam<Case> {};

TEST_P(DutySeparationReachesTheHost, ThroughItsLink) {
  const Case& c = GetParam();
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  std::unique_ptr<messaging::HostLink> link;
  std::unique_ptr<HttpService> service;
  if (c.service) {
    DatabaseOptions database;
    database.databaseName = dir.filePath(u"host.sqlite"_s);
    QString token;
    {
      const QString admin = u"duty-test-admin"_s;
      ASSERT_TRUE(openDatabase(database, admin).ok());
      ASSERT_TRUE(createSchema(admin).ok());
      ASSERT_TRUE(loadDemoData(admin, QDate::currentDate()).ok());
      TokenStore tokens(admin);
      ASSERT_TRUE(tokens.ensureTable().ok());
      token = tokens.issue(demo::Admin)->token;
      QSqlDatabase::database(admin, false).close();
    }
    QSqlDatabase::removeDatabase(u"duty-test-admin"_s);
    HttpServiceOptions options;
    options.database = database;
    options.dutySeparation = c.duties;
    service = std::make_unique<HttpService>(options);
    const auto port = service->listen(QHostAddress::LocalHost, 0);
    ASSERT_TRUE(port.ok()) << port.error().toStdString();
    link = std::make_unique<messaging::RemoteLink>(QUrl(u"http://127.0.0.1:%1"_s.arg(port.value())), token);
  } else {
    EmbeddedLinkOptions options;
    options.dataFolder = dir.path();
    options.officerId = demo::Admin;
    options.dutySeparation = c.duties;
    link = std::make_unique<EmbeddedLink>(options);
  }
  const messaging::Reply reply = preparerApproves(*link);
  EXPECT_EQ(reply.error, c.expected ? *c.expected : QString());
  link.reset();
  service.reset();
}

INSTANTIATE_TEST_SUITE_P(
    Links, DutySeparationReachesTheHost,
    ::testing::Values(Case{"EmbeddedByDefault", false, DutySeparation::NeighbouringSteps, nullptr},
                      Case{"EmbeddedFourOfficers", false, DutySeparation::FourOfficers, &kPreparerApproves},
                      Case{"ServiceByDefault", true, DutySeparation::NeighbouringSteps, nullptr},
                      Case{"ServiceFourOfficers", true, DutySeparation::FourOfficers, &kPreparerApproves}),
    [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace adjustacc::host::testing
