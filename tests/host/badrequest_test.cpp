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

using namespace Qt::Literals::StringLiterals;

using messaging::Reply;

class BadRequests : public HostTest {
protected:
  // A valid activity save on 1000011 whose fields the cases spoil.
  RequestBuilder activity(const QString& comment, const QString& user = demo::Admin) {
    RequestBuilder request(41, user);
    request.param(u"key:REF_NBR"_s, u"1000011"_s).param(u"key:REF_TYP_CD"_s, u"C"_s).param(u"key:LPO"_s, u"NO"_s);
    request.record(u"ACCOUNTACTIVITY"_s, {{u"ACTION"_s, u"ADD"_s},
                                          {u"ACTVTY_DT"_s, today().toString(Qt::ISODate)},
                                          {u"ACCT_ACTVTY_CD"_s, u"NTE"_s},
                                          {u"ACTVTY_CMMT_TXT"_s, comment}});
    return request;
  }
  static RequestBuilder account() { return accountRequest(u"1000011"_s); }
};

TEST_P(BadRequests, AreAnsweredWithAClearRefusalAndWriteNothing) {
  messaging::Request wrongSystem = account();
  wrongSystem.params[0].system = u"OTHER"_s;
  messaging::Request wrongOperator = account();
  wrongOperator.params[1].op = u"<>"_s;
  messaging::Request noId = activity(u"x"_s);
  noId.requestId.clear();
  messaging::Request unknownSet = activity(u"x"_s);
  unknownSet.records.append({u"PAYROLL"_s, {messaging::SaveRecord()}});
  unknownSet.records.last().records.first().setField(u"AMOUNT"_s, u"1"_s);
  messaging::Request unknownField = activity(u"x"_s);
  unknownField.records[0].records[0].setField(u"DROP_TABLE"_s, u"1"_s);
  messaging::Request badDate = activity(u"x"_s);
  badDate.records[0].records[0].setField(u"ACTVTY_DT"_s, u"31/12/2020"_s);
  messaging::Request brokenText = activity(u"x"_s);
  brokenText.records[0].records[0].setField(u"ACTVTY_CMMT_TXT"_s, QString(QChar(0xD800)) + u'x');
  messaging::Request inquiryWithRecords = RequestBuilder(62).param(u"key:CUST_ID"_s, u"100001"_s);
  inquiryWithRecords.records.append({u"ADJUSTAR"_s, {messaging::SaveRecord()}});
  inquiryWithRecords.records.last().records.first().setField(u"ACTION"_s, u"ADD"_s);

  const struct {
    const char* name;
    messaging::Request request;
    QString officer;
    const char16_t* expected;
  } cases[] = {
      {"unknown code", RequestBuilder(99), {}, u"Request code 99 is not a request this host answers."},
      {"no parameters", RequestBuilder(47), {}, u"is not a request this host answers"},
      {"missing parameter",
       RequestBuilder(47).param(u"key:REF_NBR"_s, u"1000011"_s),
       {},
       u"needs the parameter key:REF_TYP_CD"},
      {"unknown parameter", account().param(u"key:FOO"_s, u"1"_s), {}, u"does not take the parameter \"key:FOO\""},
      {"parameter twice", account().param(u"key:REF_TYP_CD"_s, u"O"_s), {}, u"is given twice"},
      {"other system", wrongSystem, {}, u"this host answers system MARVENTO"},
      {"other operator", wrongOperator, {}, u"only \"=\" is supported"},
      {"oversized parameter",
       RequestBuilder(62).param(u"key:CUST_NM"_s, QString(65, u'A')),
       {},
       u"is longer than 64 characters"},
      {"control character", RequestBuilder(62).param(u"key:CUST_NM"_s, u"AB\x01"_s), {}, u"holds a control character"},
      {"oversized comment", activity(QString(2001, u'x')), {}, u"is longer than 2000 characters"},
      {"control character in a comment", activity(u"a\x1b[2Jb"_s), {}, u"holds a control character"},
      {"broken character", brokenText, {}, u"holds a broken character"},
      {"unknown record set", unknownSet, {}, u"\"PAYROLL\", which this system does not save"},
      {"unknown field", unknownField, {}, u"has a field \"DROP_TABLE\""},
      {"malformed date", badDate, {}, u"a date written yyyy-mm-dd is expected"},
      {"inquiry with records", inquiryWithRecords, {}, u"takes no save records"},
      {"no request id", noId, {}, u"carries no request id"},
      {"another officer's name", activity(u"x"_s), demo::Clerk, u"signed-on officer is \"CLERK01\""},
      {"unknown officer", activity(u"x"_s, u"NOBODY"_s), {}, u"is not known to the host"},
      {"the system's own id", activity(u"x"_s, u"SYSTEM"_s), {}, u"is not known to the host"},
      {"flag of another value",
       account().param(u"key:LPO"_s, u"YES"_s),
       {},
       u"Parameter key:LPO \"YES\" is not valid: the assessment inquiry takes key:LPO = NO"},
      {"blank flag",
       RequestBuilder(41)
           .param(u"key:ACCT_RCVBL_NBR"_s, u"1000011"_s)
           .param(u"key:ACCT_RCVBL_TYP_CD"_s, u"C"_s)
           .param(u"key:THIN"_s, u" "_s),
       {},
       u"Parameter key:THIN \"\" is not valid: the account activity inquiry takes key:THIN = YES"},
      {"receipt detail flag",
       RequestBuilder(47).param(u"key:RECEIPT_NBR"_s, u"8000005"_s).param(u"key:RECEIPT_DETL"_s, u"NO"_s),
       {},
       u"takes key:RECEIPT_DETL = YES (the receipt with its funds and payments)."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Reply reply = expectRefused(c.request, QString::fromUtf16(c.expected), c.officer);
    EXPECT_TRUE(reply.sections.isEmpty());
    EXPECT_EQ(reply.requestId, c.request.requestId);
  }
}

TEST_P(BadRequests, HostileTextIsStoredAsTextAndHarmsNothing) {
  const QString hostile = u"x'); DROP TABLE CUSTOMER; -- \u00e9\U0001F600 \"quoted\" \\ %_"_s;
  ok(activity(hostile));
  EXPECT_EQ(value(u"SELECT ACTVTY_CMMT_TXT FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT LIKE 'x''); DROP%'"_s).toString(),
            hostile);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM CUSTOMER"_s), 6);
  const Reply found = ok(RequestBuilder(62).param(u"key:CUST_NM"_s, u"' OR 1=1 --"_s));
  EXPECT_EQ(rows(found, u"CUSTOMER"_s), 0);
}

TEST_P(BadRequests, AHostWithoutAnOpenDatabaseAnswersWithAnError) {
  HostSystem closed(u"no-such-connection"_s);
  const Reply reply = closed.handle(account(), demo::Admin);
  EXPECT_TRUE(reply.error.contains(u"is not open"_s));
}

TEST_P(BadRequests, EveryReplySectionMatchesTheCatalogue) {
  // Builders that name a field the catalogue lacks report it once they are first used; use them all.
  ok(account());
  ok(account().param(u"key:LPO"_s, u"NO"_s));
  ok(RequestBuilder(47).param(u"key:RECEIPT_NBR"_s, u"8000005"_s));
  ok(RequestBuilder(47).param(u"key:CUST_ID"_s, u"100003"_s).param(u"key:RCPT_NBR"_s, u"8000005"_s));
  ok(RequestBuilder(47).param(u"key:CUST_ID"_s, u"100003"_s).param(u"key:REF_TYP_CD"_s, u"C"_s));
  ok(RequestBuilder(41).param(u"key:ACCT_RCVBL_NBR"_s, u"1000011"_s).param(u"key:ACCT_RCVBL_TYP_CD"_s, u"C"_s));
  ok(RequestBuilder(62).param(u"key:CUST_ID"_s, u"100001"_s));
  ok(RequestBuilder(63).param(u"key:CD_TBL_ID"_s, u"FEE"_s));
  ok(RequestBuilder(64));
  ok(RequestBuilder(74).param(u"key:CUST_ID"_s, u"100003"_s).param(u"key:REFUND_NBR"_s, u"3000002"_s));
  ok(RequestBuilder(60).param(u"key:NBR_TYP_CD"_s, u"F"_s));
  EXPECT_EQ(sectionBuilderProblems(), QStringList());
}

// Several connections send the same save at the same moment (a link resending while the first is still
// being applied): it is applied once and every sender gets the same answer.
TEST_P(BadRequests, ConcurrentResendsAreAppliedOnce) {
  const messaging::Request request = activity(u"Sent from several desks at once"_s);
  constexpr int kSenders = 4;
  std::vector<QString> errors(kSenders);
  std::atomic<int> ready{0};
  std::vector<std::thread> senders;
  for (int i = 0; i < kSenders; ++i) {
    senders.emplace_back([&, i] {
      const QString connection = u"%1-sender-%2"_s.arg(m_connection).arg(i);
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
  EXPECT_EQ(
      count(u"SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT = ?"_s, {u"Sent from several desks at once"_s}),
      1);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM REQUEST_LOG WHERE REQUEST_ID = ?"_s, {request.requestId}), 1);
}

INSTANTIATE_TEST_SUITE_P(Databases, BadRequests, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
