// Signing on: the officer and rights from the officer inquiry, the code tables into the local store, and the code
// boxes' query text and the description lookup running on that store; failures and warnings.
#include "desktop/codetablestore.h"
#include "desktop/signon.h"

#include "host/demodata.h"
#include "host/embeddedlink.h"
#include "screencore/codetablequerytext.h"
#include "messaging/reply.h"
#include "messaging/scriptedlink.h"
#include "platform/clock.h"
#include "platform/sessionsettings.h"
#include "platform/sqlcodelookup.h"
#include "platform/sqlcodetablesource.h"

#include <QSignalSpy>
#include <QTemporaryDir>
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

TEST(CodeTableStoreTest, ReplacingATableReplacesOnlyItsRowsAndBadRowsChangeNothing) {
  CodeTableStore store(u"test.codes.replace"_s);
  ASSERT_TRUE(store.isOpen()) << store.openError().toStdString();
  const auto stored =
      store.replaceTable(u"CSTATUS"_s, codeRows(u"CSTATUS"_s, {{u"U"_s, u"UNPAID"_s, {}, {}}, {u"V"_s, u"VOID"_s, {}, {}}}));
  ASSERT_TRUE(stored) << stored.error().toStdString();
  EXPECT_EQ(stored.value(), 2);
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
    if (silentCode == request.code) {
      return std::nullopt;
    }
    if (refuseAll) {
      reply.error = u"The sign-on token is not valid."_s;
      return reply;
    }
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
  bool refuseAll = false;
  int silentCode = 0;  // requests of this code get no answer
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
    ASSERT_EQ(requests[i].params.size(), 2);
    for (const auto& param : requests[i].params) {
      EXPECT_EQ(param.system, u"MARVENTO"_s);
      EXPECT_EQ(param.op, u"="_s);
    }
    EXPECT_EQ(requests[i].params[0].key, u"key:CD_TBL_ID"_s);
    // The whole table, whatever its dates, so that ended codes on old rows are still described.
    EXPECT_EQ(requests[i].param(u"key:ALL"_s), u"Y"_s);
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
  refuseAll = true;
  SignOn refused(link, session, u"ADMIN01"_s, store);
  EXPECT_FALSE(run(refused));
  EXPECT_TRUE(refused.error().contains(u"The sign-on token is not valid."_s)) << refused.error().toStdString();
}

TEST_F(SignOnTest, NoAnswerIsToldAsTheSignOnsOwnFailure) {
  ASSERT_TRUE(session.setUpdateTimeoutMs(40));
  silentCode = SignOn::kOfficerInquiryCode;
  SignOn unanswered(link, session, u"CLERK07"_s, store);
  EXPECT_FALSE(run(unanswered));
  EXPECT_EQ(unanswered.error(), u"Officer CLERK07 could not be signed on: the host system did not answer within a "
                                u"second."_s);

  // A code table that gets no answer is a warning worded the same way.
  silentCode = SignOn::kCodeTableInquiryCode;
  SignOn tablesUnanswered(link, session, u"CLERK07"_s, store);
  ASSERT_TRUE(run(tablesUnanswered));
  ASSERT_EQ(tablesUnanswered.warnings().size(), SignOn::codeTables().size());
  EXPECT_EQ(tablesUnanswered.warnings().first(),
            u"Code table ADJDOC could not be read: the host system did not answer within a second."_s);
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

// Against the embedded host and its demo set (laid out around a fixed day): FORMDOC holds "W" ending that day,
// "X" that ended the day before and "Z" that starts the day after; COLLECTN-USER holds "OLD" ending that day
// and "NEW" starting the day after.
TEST(SignOnEmbeddedTest, TheLocalCopyDescribesEndedAndFutureCodesWhileTheBoxesOfferTodaysOnly) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const QDate day(2024, 3, 7);
  host::EmbeddedLinkOptions options;
  options.dataFolder = dir.path();
  options.officerId = host::demo::Admin;
  options.demoDay = day;
  host::EmbeddedLink link(options);
  platform::SessionSettings session;
  CodeTableStore store(u"test.codes.embedded"_s);
  SignOn signOn(link, session, host::demo::Admin, store);
  QSignalSpy finished(&signOn, &SignOn::finished);
  signOn.start();
  ASSERT_TRUE(finished.wait(30000));
  ASSERT_TRUE(finished.constFirst().at(0).toBool()) << signOn.error().toStdString();
  EXPECT_TRUE(signOn.warnings().isEmpty()) << signOn.warnings().join(u'\n').toStdString();

  platform::SqlCodeLookup lookup(store.connectionName(), signOn.user());
  const struct {
    const char16_t* table;
    const char16_t* code;
    const char16_t* description;
  } described[] = {
      {u"FORMDOC", u"X", u"EXPIRED FORM"},       {u"FORMDOC", u"Z", u"ZONE PERMIT"},
      {u"FORMDOC", u"W", u"WARNING NOTICE"},     {u"ADJDOC", u"x", u"EXPIRED FORM"},
      {u"COLLECTN-USER", u"NEW", u"NEW CONTACT CODE"}, {u"COLLECTN-USER", u"OLD", u"OLD NOTE CODE"},
      {u"CSTATUS", u"V", u"VOID"},
  };
  for (const auto& row : described) {
    EXPECT_EQ(lookup.description(QString::fromUtf16(row.table), QString::fromUtf16(row.code)),
              QString::fromUtf16(row.description))
        << QString::fromUtf16(row.table).toStdString() << " " << QString::fromUtf16(row.code).toStdString();
  }
  EXPECT_TRUE(lookup.lastError().isEmpty()) << lookup.lastError().toStdString();

  const platform::Clock clock(QDateTime(day, QTime(10, 0)));
  platform::SqlCodeTableSource source(store.connectionName(), clock);
  const auto offered = [&](const QString& table) {
    QStringList codes;
    const auto rows = source.run(screencore::codeTableQueryText(signOn.user().regionCode(), table, day));
    EXPECT_TRUE(rows) << rows.error().toStdString();
    for (int row = 0; rows && row < rows->recordCount(); ++row) {
      codes.append(rows->valueAt(row, u"CD_TBL_CD"_s).toString());
    }
    return codes;
  };
  const QStringList documents = offered(u"FORMDOC"_s);
  EXPECT_TRUE(documents.contains(u"C"_s));
  EXPECT_TRUE(documents.contains(u"W"_s)) << "ends today: still offered";
  EXPECT_FALSE(documents.contains(u"X"_s)) << "ended yesterday";
  EXPECT_FALSE(documents.contains(u"Z"_s)) << "starts tomorrow";
  QStringList notes = offered(u"COLLECTN-USER"_s);
  EXPECT_TRUE(notes.contains(u"OLD"_s));
  EXPECT_FALSE(notes.contains(u"NEW"_s));
  EXPECT_EQ(notes.removeDuplicates(), 0) << "one row per code on the day";
}

}  // namespace
}  // namespace adjustacc::desktop
