// Requests the host must refuse with a clear reply and without writing anything; hostile text that it must
// store as text; and resends that arrive at the same moment on several connections.
#include "hostfixture.h"

#include "host/handlercontext.h"

#include <QThread>

#include <atomic>
#include <thread>
#include <vector>

namespace adjustacc::host::testing {
namespace {

using messaging::Reply;

class BadRequests : public HostTest {
protected:
  // A valid activity save on 1000011 whose fields the cases spoil.
  RequestBuilder activity(const QString& comment, const QString& user = demo::Admin) {
    RequestBuilder request(41, user);
    request.param(QStringLiteral("key:REF_NBR"), QStringLiteral("1000011"))
        .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C"))
        .param(QStringLiteral("key:LPO"), QStringLiteral("NO"))
        .record(QStringLiteral("ACCOUNTACTIVITY"), {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                                                    {QStringLiteral("ACTVTY_DT"), today().toString(Qt::ISODate)},
                                                    {QStringLiteral("ACCT_ACTVTY_CD"), QStringLiteral("NTE")},
                                                    {QStringLiteral("ACTVTY_CMMT_TXT"), comment}});
    return request;
  }
  static RequestBuilder account() {
    RequestBuilder request(47);
    request.param(QStringLiteral("key:REF_NBR"), QStringLiteral("1000011"))
        .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C"));
    return request;
  }
};

TEST_P(BadRequests, AreAnsweredWithAClearRefusalAndWriteNothing) {
  messaging::Request wrongSystem = account();
  wrongSystem.params[0].system = QStringLiteral("OTHER");
  messaging::Request wrongOperator = account();
  wrongOperator.params[1].op = QStringLiteral("<>");
  messaging::Request noId = activity(QStringLiteral("x"));
  noId.requestId.clear();
  messaging::Request unknownSet = activity(QStringLiteral("x"));
  unknownSet.records.append({QStringLiteral("PAYROLL"), {messaging::SaveRecord()}});
  unknownSet.records.last().records.first().setField(QStringLiteral("AMOUNT"), QStringLiteral("1"));
  messaging::Request unknownField = activity(QStringLiteral("x"));
  unknownField.records[0].records[0].setField(QStringLiteral("DROP_TABLE"), QStringLiteral("1"));
  messaging::Request badDate = activity(QStringLiteral("x"));
  badDate.records[0].records[0].setField(QStringLiteral("ACTVTY_DT"), QStringLiteral("31/12/2020"));
  messaging::Request brokenText = activity(QStringLiteral("x"));
  brokenText.records[0].records[0].setField(QStringLiteral("ACTVTY_CMMT_TXT"), QString(QChar(0xD800)) + u'x');
  messaging::Request inquiryWithRecords = RequestBuilder(62).param(QStringLiteral("key:CUST_ID"), QStringLiteral("100001"));
  inquiryWithRecords.records.append({QStringLiteral("ADJUSTAR"), {messaging::SaveRecord()}});
  inquiryWithRecords.records.last().records.first().setField(QStringLiteral("ACTION"), QStringLiteral("ADD"));

  const struct {
    const char* name;
    messaging::Request request;
    QString officer;
    const char16_t* expected;
  } cases[] = {
      {"unknown code", RequestBuilder(99), {}, u"Request code 99 is not a request this host answers."},
      {"no parameters", RequestBuilder(47), {}, u"is not a request this host answers"},
      {"missing parameter", RequestBuilder(47).param(QStringLiteral("key:REF_NBR"), QStringLiteral("1000011")), {},
       u"needs the parameter key:REF_TYP_CD"},
      {"unknown parameter", account().param(QStringLiteral("key:FOO"), QStringLiteral("1")), {},
       u"does not take the parameter \"key:FOO\""},
      {"parameter twice", account().param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("O")), {}, u"is given twice"},
      {"other system", wrongSystem, {}, u"this host answers system MARVENTO"},
      {"other operator", wrongOperator, {}, u"only \"=\" is supported"},
      {"oversized parameter", RequestBuilder(62).param(QStringLiteral("key:CUST_NM"), QString(65, u'A')), {},
       u"is longer than 64 characters"},
      {"control character", RequestBuilder(62).param(QStringLiteral("key:CUST_NM"), QStringLiteral("AB\x01")), {},
       u"holds a control character"},
      {"oversized comment", activity(QString(2001, u'x')), {}, u"is longer than 2000 characters"},
      {"control character in a comment", activity(QStringLiteral("a\x1b[2Jb")), {}, u"holds a control character"},
      {"broken character", brokenText, {}, u"holds a broken character"},
      {"unknown record set", unknownSet, {}, u"\"PAYROLL\", which this system does not save"},
      {"unknown field", unknownField, {}, u"has a field \"DROP_TABLE\""},
      {"malformed date", badDate, {}, u"a date written yyyy-mm-dd is expected"},
      {"inquiry with records", inquiryWithRecords, {}, u"takes no save records"},
      {"no request id", noId, {}, u"carries no request id"},
      {"another officer's name", activity(QStringLiteral("x")), demo::Clerk, u"signed-on officer is \"CLERK01\""},
      {"unknown officer", activity(QStringLiteral("x"), QStringLiteral("NOBODY")), {}, u"is not known to the host"},
      {"the system's own id", activity(QStringLiteral("x"), QStringLiteral("SYSTEM")), {}, u"is not known to the host"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Reply reply = expectRefused(c.request, QString::fromUtf16(c.expected), c.officer);
    EXPECT_TRUE(reply.sections.isEmpty());
    EXPECT_EQ(reply.requestId, c.request.requestId);
  }
}

TEST_P(BadRequests, HostileTextIsStoredAsTextAndHarmsNothing) {
  const QString hostile = QStringLiteral("x'); DROP TABLE CUSTOMER; -- \u00e9\U0001F600 \"quoted\" \\ %_");
  ok(activity(hostile));
  EXPECT_EQ(value(QStringLiteral("SELECT ACTVTY_CMMT_TXT FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT LIKE 'x''); DROP%'"))
                .toString(),
            hostile);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM CUSTOMER")), 6);
  const Reply found = ok(RequestBuilder(62).param(QStringLiteral("key:CUST_NM"), QStringLiteral("' OR 1=1 --")));
  EXPECT_EQ(rows(found, QStringLiteral("CUSTOMER")), 0);
}

TEST_P(BadRequests, AHostWithoutAnOpenDatabaseAnswersWithAnError) {
  HostSystem closed(QStringLiteral("no-such-connection"));
  const Reply reply = closed.handle(account(), demo::Admin);
  EXPECT_TRUE(reply.error.contains(QStringLiteral("is not open")));
}

TEST_P(BadRequests, EveryReplySectionMatchesTheCatalogue) {
  // Builders that name a field the catalogue lacks report it once they are first used; use them all.
  ok(account());
  ok(RequestBuilder(47)
         .param(QStringLiteral("key:REF_NBR"), QStringLiteral("1000011"))
         .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C"))
         .param(QStringLiteral("key:LPO"), QStringLiteral("NO")));
  ok(RequestBuilder(47).param(QStringLiteral("key:RECEIPT_NBR"), QStringLiteral("8000005")));
  ok(RequestBuilder(47)
         .param(QStringLiteral("key:CUST_ID"), QStringLiteral("100003"))
         .param(QStringLiteral("key:RCPT_NBR"), QStringLiteral("8000005")));
  ok(RequestBuilder(47)
         .param(QStringLiteral("key:CUST_ID"), QStringLiteral("100003"))
         .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C")));
  ok(RequestBuilder(41)
         .param(QStringLiteral("key:ACCT_RCVBL_NBR"), QStringLiteral("1000011"))
         .param(QStringLiteral("key:ACCT_RCVBL_TYP_CD"), QStringLiteral("C")));
  ok(RequestBuilder(62).param(QStringLiteral("key:CUST_ID"), QStringLiteral("100001")));
  ok(RequestBuilder(63).param(QStringLiteral("key:CD_TBL_ID"), QStringLiteral("FEE")));
  ok(RequestBuilder(64));
  ok(RequestBuilder(74).param(QStringLiteral("key:CUST_ID"), QStringLiteral("100003")).param(QStringLiteral("key:REFUND_NBR"), QStringLiteral("3000002")));
  ok(RequestBuilder(60).param(QStringLiteral("key:NBR_TYP_CD"), QStringLiteral("F")));
  EXPECT_EQ(sectionBuilderProblems(), QStringList());
}

// Several connections send the same save at the same moment (a link resending while the first is still
// being applied): it is applied once and every sender gets the same answer.
TEST_P(BadRequests, ConcurrentResendsAreAppliedOnce) {
  const messaging::Request request = activity(QStringLiteral("Sent from several desks at once"));
  constexpr int kSenders = 4;
  std::vector<QString> errors(kSenders);
  std::atomic<int> ready{0};
  std::vector<std::thread> senders;
  for (int i = 0; i < kSenders; ++i) {
    senders.emplace_back([&, i] {
      const QString connection = QStringLiteral("%1-sender-%2").arg(m_connection).arg(i);
      {
        auto opened = openDatabase(m_options, connection);
        if (!opened.ok()) {
          errors[i] = opened.error();
          ready.fetch_add(1);
          return;
        }
        HostSystem host(connection);
        ready.fetch_add(1);
        while (ready.load() < kSenders) {
          std::this_thread::yield();
        }
        errors[i] = host.handle(request, demo::Admin).error;
        QSqlDatabase::database(connection, false).close();
      }
      QSqlDatabase::removeDatabase(connection);
    });
  }
  for (auto& sender : senders) {
    sender.join();
  }
  for (const QString& error : errors) {
    EXPECT_EQ(error, QString());
  }
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT = ?"),
                  {QStringLiteral("Sent from several desks at once")}),
            1);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM REQUEST_LOG WHERE REQUEST_ID = ?"), {request.requestId}), 1);
}

INSTANTIATE_TEST_SUITE_P(Databases, BadRequests, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
