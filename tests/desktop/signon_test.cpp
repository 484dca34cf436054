// Signing on: the officer and rights from the officer inquiry, the code tables into the local store, and the code
// boxes' query text and the description lookup running on that store; failures and warnings.
#include "desktop/codetablestore.h"
#include "desktop/signon.h"

#include "inquiry/codetablequerytext.h"
#include "messaging/reply.h"
#include "messaging/scriptedlink.h"
#include "platform/clock.h"
#include "platform/sessionsettings.h"
#include "platform/sqlcodelookup.h"
#include "platform/sqlcodetablesource.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using messaging::FieldType;
using messaging::RecordSet;
using messaging::Reply;
using messaging::Request;

RecordSet codeRows(const QString& table, const QList<QStringList>& rows) {
  RecordSet set({{u"CD_TBL_ID"_s, FieldType::Text}, {u"CD_TBL_CD"_s, FieldType::Text},
                 {u"CD_TBL_DES"_s, FieldType::Text}, {u"EFCTV_DT"_s, FieldType::Date},
                 {u"END_DT"_s, FieldType::Date}, {u"REGION"_s, FieldType::Text}});
  for (const QStringList& row : rows) {
    set.addNew({table, row.value(0), row.value(1), row.value(2), row.value(3).isEmpty() ? QVariant() : row.value(3),
                u"NE"_s});
  }
  set.moveFirst();
  return set;
}

TEST(CodeTableStoreTest, TheCodeBoxQueryAndTheLookupRunOnTheStoredRows) {
  CodeTableStore store(u"test.codes.query"_s);
  ASSERT_TRUE(store.isOpen()) << store.openError().toStdString();
  const auto stored = store.replaceTable(
      u"FORMDOC"_s, codeRows(u"FORMDOC"_s, {{u"C"_s, u"CITATION ENF001"_s, u"2020-01-01"_s, {}},
                                            {u"W"_s, u"WARNING NOTICE"_s, u"2020-01-01"_s, u"2024-03-07"_s},
                                            {u"X"_s, u"EXPIRED FORM"_s, u"2020-01-01"_s, u"2024-03-06"_s},
                                            {u"Z"_s, u"ZONE PERMIT"_s, u"2024-03-08"_s, {}}}));
  ASSERT_TRUE(stored) << stored.error().toStdString();
  EXPECT_EQ(stored.value(), 4);

  const platform::Clock clock(QDateTime(QDate(2024, 3, 7), QTime(10, 0)));
  platform::SqlCodeTableSource source(store.connectionName(), clock);
  const auto offered = source.run(inquiry::codeTableQueryText(u"ne"_s, u"FORMDOC"_s, clock.today()));
  ASSERT_TRUE(offered) << offered.error().toStdString();
  QStringList codes;
  for (int row = 0; row < offered->recordCount(); ++row) {
    codes.append(offered->valueAt(row, u"CD_TBL_CD"_s).toString());
  }
  // In effect today: no end date, or ending today; not yet started or already ended are not offered.
  EXPECT_EQ(codes, (QStringList{u"C"_s, u"W"_s}));

  const platform::User user(u"ADMIN01"_s, u"Avery"_s, u"NE"_s);
  platform::SqlCodeLookup lookup(store.connectionName(), user);
  EXPECT_EQ(lookup.description(u"FORMDOC"_s, u"c"_s), u"CITATION ENF001"_s);
  EXPECT_EQ(lookup.description(u"FORMDOC"_s, u"X"_s), u"EXPIRED FORM"_s);
}

TEST(CodeTableStoreTest, ReplacingATableReplacesOnlyItsRowsAndBadRowsChangeNothing) {
  CodeTableStore store(u"test.codes.replace"_s);
  ASSERT_TRUE(store.replaceTable(u"CSTATUS"_s, codeRows(u"CSTATUS"_s, {{u"U"_s, u"UNPAID"_s, u"2020-01-01"_s, {}},
                                                                      {u"V"_s, u"VOID"_s, u"2020-01-01"_s, {}}})));
  ASSERT_TRUE(store.replaceTable(u"FEE"_s, codeRows(u"FEE"_s, {{u"F02"_s, u"LATE FEE"_s, u"2020-01-01"_s, {}}})));
  ASSERT_TRUE(store.replaceTable(u"cstatus"_s, codeRows(u"CSTATUS"_s, {{u"Y"_s, u"PAID"_s, u"2020-01-01"_s, {}}})));
  EXPECT_EQ(store.rowCount(u"CSTATUS"_s), 1);
  EXPECT_EQ(store.rowCount(u"FEE"_s), 1);

  const auto mixed = store.replaceTable(u"FEE"_s, codeRows(u"PENALTY"_s, {{u"P01"_s, u"OVERWEIGHT"_s, {}, {}}}));
  ASSERT_FALSE(mixed);
  EXPECT_TRUE(mixed.error().contains(u"PENALTY"_s)) << mixed.error().toStdString();
  const auto noCode = store.replaceTable(u"FEE"_s, codeRows(u"FEE"_s, {{u"F03"_s, u"INTEREST"_s, {}, {}},
                                                                      {u" "_s, u"BLANK"_s, {}, {}}}));
  ASSERT_FALSE(noCode);
  EXPECT_EQ(store.rowCount(u"FEE"_s), 1);
  EXPECT_EQ(store.rowCount(), 2);
  const auto noFields = store.replaceTable(u"FEE"_s, RecordSet({{u"CD_TBL_CD"_s, FieldType::Text}}));
  ASSERT_FALSE(noFields);
  EXPECT_TRUE(noFields.error().contains(u"CD_TBL_ID"_s));
}

// --- sign-on ---------------------------------------------------------------------------------------------------------

class SignOnTest : public ::testing::Test {
protected:
  SignOnTest() : store(u"test.codes.signon"_s) {}

  // The host as the sign-on sees it: an officer with two rights, two code tables, every other table empty.
  std::optional<Reply> answer(const Request& request) {
    requests.append(request);
    Reply reply;
    if (request.code == SignOn::kOfficerInquiryCode) {
      if (!knownOfficer) {
        reply.sections.insert(u"OFFICER"_s, RecordSet({{u"OFFICER_ID"_s, FieldType::Text}}));
        return reply;
      }
      RecordSet officer({{u"OFFICER_ID"_s, FieldType::Text}, {u"OFFICER_NM"_s, FieldType::Text},
                         {u"REGION"_s, FieldType::Text}});
      officer.addNew({u"CLERK07"_s, u"Casey Moreno"_s, u"NE"_s});
      RecordSet rights({{u"RIGHT_NM"_s, FieldType::Text}});
      rights.addNew({u"ADJUSTAR"_s});
      rights.addNew({u"QORVA_ActvityUpdate"_s});
      reply.sections.insert(u"OFFICER"_s, officer);
      reply.sections.insert(u"RIGHTS"_s, rights);
      return reply;
    }
    const QString table = request.param(u"key:CD_TBL_ID"_s);
    if (table == failingTable) {
      reply.error = u"The code table inquiry failed."_s;
      return reply;
    }
    if (table == u"FORMDOC"_s) {
      reply.sections.insert(u"QVR_CODE"_s, codeRows(table, {{u"C"_s, u"CITATION ENF001"_s, u"2020-01-01"_s, {}},
                                                            {u"P"_s, u"PAYMENT PLAN"_s, u"2020-01-01"_s, {}}}));
    } else if (table == u"CSTATUS"_s) {
      reply.sections.insert(u"QVR_CODE"_s, codeRows(table, {{u"U"_s, u"UNPAID"_s, u"2020-01-01"_s, {}}}));
    } else {
      reply.sections.insert(u"QVR_CODE"_s, codeRows(table, {}));
    }
    return reply;
  }

  bool run(SignOn& signOn) {
    link.setResponder([this](const Request& request) { return answer(request); });
    QSignalSpy finished(&signOn, &SignOn::finished);
    signOn.start();
    EXPECT_TRUE(finished.wait(5000));
    return !finished.isEmpty() && finished.constLast().at(0).toBool();
  }

  messaging::ScriptedLink link;
  platform::SessionSettings session;
  CodeTableStore store;
  QList<Request> requests;
  bool knownOfficer = true;
  QString failingTable;
};

TEST_F(SignOnTest, LearnsTheOfficerAndKeepsEveryCodeTable) {
  SignOn signOn(link, session, u"clerk07"_s, store);
  ASSERT_TRUE(run(signOn)) << signOn.error().toStdString();
  EXPECT_EQ(signOn.user().officerId(), u"CLERK07"_s);
  EXPECT_EQ(signOn.user().name(), u"Casey Moreno"_s);
  EXPECT_EQ(signOn.user().regionCode(), u"NE"_s);
  EXPECT_TRUE(signOn.user().hasRight(u"ADJUSTAR"_s));
  EXPECT_TRUE(signOn.user().hasRight(u"QORVA_ActvityUpdate"_s));
  EXPECT_FALSE(signOn.user().hasRight(u"CREATEREFUND"_s));
  EXPECT_TRUE(signOn.warnings().isEmpty());
  EXPECT_EQ(store.rowCount(u"FORMDOC"_s), 2);
  EXPECT_EQ(store.rowCount(u"CSTATUS"_s), 1);

  ASSERT_EQ(requests.size(), 1 + SignOn::codeTables().size());
  const Request& officer = requests.first();
  EXPECT_EQ(officer.code, 64);
  EXPECT_EQ(officer.user, u"clerk07"_s);
  EXPECT_EQ(officer.replyTo, u"AdjustAcc.SignOn"_s);
  EXPECT_EQ(officer.version, u"1.0"_s);
  QStringList asked;
  for (qsizetype i = 1; i < requests.size(); ++i) {
    EXPECT_EQ(requests[i].code, 63);
    ASSERT_EQ(requests[i].params.size(), 1);
    EXPECT_EQ(requests[i].params[0].system, u"MARVENTO"_s);
    EXPECT_EQ(requests[i].params[0].op, u"="_s);
    asked.append(requests[i].params[0].value);
  }
  EXPECT_EQ(asked, SignOn::codeTables());
}

TEST_F(SignOnTest, AnOfficerTheHostDoesNotKnowFailsTheSignOn) {
  knownOfficer = false;
  SignOn signOn(link, session, u"NOBODY"_s, store);
  EXPECT_FALSE(run(signOn));
  EXPECT_TRUE(signOn.error().contains(u"NOBODY"_s)) << signOn.error().toStdString();
  EXPECT_EQ(requests.size(), 1);  // no code table is asked for
}

TEST_F(SignOnTest, AFailedReplyFailsTheSignOnWithTheHostsReason) {
  link.setResponder([](const Request&) {
    Reply reply;
    reply.error = u"The sign-on token is not valid."_s;
    return std::optional<Reply>(reply);
  });
  SignOn refused(link, session, u"ADMIN01"_s, store);
  QSignalSpy finished(&refused, &SignOn::finished);
  refused.start();
  ASSERT_TRUE(finished.wait(5000));
  EXPECT_FALSE(finished.constFirst().at(0).toBool());
  EXPECT_TRUE(refused.error().contains(u"The sign-on token is not valid."_s)) << refused.error().toStdString();
}

TEST_F(SignOnTest, ACodeTableThatCannotBeReadIsAWarningAndTheRestIsKept) {
  failingTable = u"CSTATUS"_s;
  SignOn signOn(link, session, u"CLERK07"_s, store);
  ASSERT_TRUE(run(signOn));
  ASSERT_EQ(signOn.warnings().size(), 1);
  EXPECT_TRUE(signOn.warnings().first().contains(u"CSTATUS"_s));
  EXPECT_EQ(store.rowCount(u"FORMDOC"_s), 2);
  EXPECT_EQ(store.rowCount(u"CSTATUS"_s), 0);
}

}  // namespace
}  // namespace adjustacc::desktop
