#include "messaging/scriptedlink.h"
#include "platform/nextnumber.h"
#include "platform/sessionsettings.h"
#include "platform/user.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace adjustacc;
using namespace adjustacc::platform;

namespace {

messaging::Reply numberReply(const QString& number) {
  messaging::RecordSet rows(QList<messaging::Field>{{QStringLiteral("U"), messaging::FieldType::Text}});
  rows.addNew({number});
  messaging::Reply reply;
  reply.sections.insert(QStringLiteral("GetFormNumber"), rows);
  return reply;
}

class NextNumberTest : public ::testing::Test {
protected:
  // Answers the last request and lets the event loop deliver it.
  void answerLast(const messaging::Reply& reply) {
    const qsizetype arrived = arrivedSpy.count();
    const qsizetype failed = failedSpy.count();
    ASSERT_TRUE(link.answerLast(reply));
    ASSERT_TRUE(QTest::qWaitFor([&] { return arrivedSpy.count() > arrived || failedSpy.count() > failed; }));
  }

  messaging::ScriptedLink link;
  SessionSettings session;
  User user{QStringLiteral("OFC7"), QStringLiteral("Pat Officer"), QStringLiteral("NORTH")};
  NextNumber numbers{link, session, user};
  QSignalSpy arrivedSpy{&numbers, &NextNumber::numberArrived};
  QSignalSpy failedSpy{&numbers, &NextNumber::fetchFailed};
};

TEST_F(NextNumberTest, AnswersThePlaceholderAtOnceAndAsksTheHostForARealType) {
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("  ")), u"0000000-0");  // no type: no request
  EXPECT_EQ(link.requestCount(), 0);
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");
  ASSERT_EQ(link.requestCount(), 1);
  const messaging::Request request = link.lastRequest();
  EXPECT_EQ(request.code, 60);
  EXPECT_EQ(request.replyTo, u"AdjustAcc.NextNumber");
  EXPECT_EQ(request.version, u"1.0");
  EXPECT_EQ(request.user, u"OFC7");
  ASSERT_EQ(request.params.size(), 1);
  EXPECT_EQ(request.params[0], (messaging::RequestParameter{QStringLiteral("MARVENTO"), QStringLiteral("key:NBR_TYP_CD"),
                                                            QStringLiteral("="), QStringLiteral("F")}));
  // Asking again while the fetch is under way sends nothing more.
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");
  EXPECT_EQ(link.requestCount(), 1);
}

TEST_F(NextNumberTest, HandsOutAFetchedNumberOnceAndFetchesTheNext) {
  numbers.prefetch(QStringLiteral("F"));
  answerLast(numberReply(QStringLiteral("0001234-4")));
  EXPECT_TRUE(numbers.hasNumber(QStringLiteral("f")));
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0001234-4");
  EXPECT_EQ(link.requestCount(), 2);
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");  // the next one is not here yet
  EXPECT_EQ(link.requestCount(), 2);
  answerLast(numberReply(QStringLiteral("0001235-1")));
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0001235-1");
}

TEST_F(NextNumberTest, KeepsNothingTheHostCouldNotGive) {
  numbers.prefetch(QStringLiteral("F"));
  answerLast(numberReply(QStringLiteral("0000000-0")));
  ASSERT_EQ(failedSpy.count(), 1);
  EXPECT_FALSE(numbers.hasNumber(QStringLiteral("F")));
  EXPECT_FALSE(numbers.isFetching(QStringLiteral("F")));

  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");  // and asks again
  EXPECT_EQ(link.requestCount(), 2);
  answerLast(numberReply(QStringLiteral("0001234-5")));  // the check digit does not fit
  EXPECT_EQ(failedSpy.count(), 2);
  EXPECT_FALSE(numbers.hasNumber(QStringLiteral("F")));

  numbers.prefetch(QStringLiteral("F"));
  messaging::Reply failed;
  failed.error = QStringLiteral("The number service is down");
  answerLast(failed);
  EXPECT_EQ(failedSpy.count(), 3);
  EXPECT_EQ(failedSpy.last().at(1).toString(), u"The number service is down");

  numbers.prefetch(QStringLiteral("F"));
  answerLast(messaging::Reply{});  // no section at all
  EXPECT_EQ(failedSpy.count(), 4);
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");
}

TEST_F(NextNumberTest, EachNumberTypeHasItsOwnNumber) {
  numbers.prefetch(QStringLiteral("F"));
  numbers.prefetch(QStringLiteral("W"));
  ASSERT_EQ(link.requestCount(), 2);
  const messaging::Request worksheet = link.lastRequest();
  EXPECT_EQ(worksheet.param(QStringLiteral("key:NBR_TYP_CD")), u"W");
  ASSERT_TRUE(link.answer(worksheet.requestId, numberReply(QStringLiteral("0001234-4"))));
  ASSERT_TRUE(QTest::qWaitFor([&] { return arrivedSpy.count() == 1; }));
  EXPECT_EQ(arrivedSpy.last().at(0).toString(), u"W");
  EXPECT_FALSE(numbers.hasNumber(QStringLiteral("F")));
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("W")), u"0001234-4");
}

TEST_F(NextNumberTest, AnUnansweredFetchEndsWithTheTimeOutAndIsAskedAgain) {
  ASSERT_TRUE(session.setUpdateTimeoutMs(20));
  numbers.prefetch(QStringLiteral("F"));
  ASSERT_TRUE(QTest::qWaitFor([&] { return failedSpy.count() == 1; }));
  EXPECT_FALSE(numbers.isFetching(QStringLiteral("F")));
  EXPECT_EQ(numbers.nextNumber(QStringLiteral("F")), u"0000000-0");
  EXPECT_EQ(link.requestCount(), 2);
}

}  // namespace
