#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "messaging/scriptedlink.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

// How long a test waits for something that should arrive; generous, never asserted.
constexpr int kPatience = 5000;
// How long a test lets the event loop run to see that nothing more arrives.
constexpr int kQuietSpell = 100;

struct Sent {
  std::unique_ptr<RequestMessage> message;
  std::unique_ptr<QSignalSpy> dataReady;
  std::unique_ptr<QSignalSpy> timeout;
};

Sent makeMessage(HostLink* link, int timeoutMs = 0) {
  Sent sent;
  sent.message = std::make_unique<RequestMessage>(link);
  sent.message->setReplyTo(u"AdjustAcc"_s);
  sent.message->setVersion(u"1.0"_s);
  sent.message->setRequestCode(47);
  sent.message->setUser(u"OFC1"_s);
  sent.message->setTimeoutInterval(timeoutMs);
  sent.dataReady = std::make_unique<QSignalSpy>(sent.message.get(), &RequestMessage::DataReady);
  sent.timeout = std::make_unique<QSignalSpy>(sent.message.get(), &RequestMessage::MsgTimeout);
  return sent;
}

Reply replyOf(const QSignalSpy& spy, int index = 0) { return spy.at(index).at(1).value<Reply>(); }

TEST(RequestMessage, SendsHeaderParametersInOrderAndRecordsGroupedByName) {
  ScriptedLink link;
  Sent sent = makeMessage(&link);
  sent.message->addParameter({u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, u"0001234"_s});
  sent.message->addParameter({u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"C"_s});
  sent.message->addRecord(u"ADJUSTAR"_s).setField(u"ACTION"_s, u"ADD"_s);
  sent.message->addRecord(u"ASSESSMENT"_s).setField(u"ASSMT_CD"_s, u"F01"_s);
  sent.message->addRecord(u"ASSESSMENT"_s).setField(u"ASSMT_CD"_s, u"P02"_s);
  const QString id = sent.message->requestId();
  sent.message->send();
  sent.message->send();  // a message goes out once

  ASSERT_EQ(link.requestCount(), 1);
  const Request request = link.lastRequest();
  EXPECT_EQ(request.requestId, id);
  EXPECT_EQ(request.replyTo, u"AdjustAcc"_s);
  EXPECT_EQ(request.version, u"1.0"_s);
  EXPECT_EQ(request.code, 47);
  EXPECT_EQ(request.user, u"OFC1"_s);
  ASSERT_EQ(request.params.size(), 2);
  EXPECT_EQ(request.params[0].key, u"key:REF_NBR"_s);
  EXPECT_EQ(request.params[1].key, u"key:REF_TYP_CD"_s);
  ASSERT_EQ(request.records.size(), 2);
  EXPECT_EQ(request.records[0].name, u"ADJUSTAR"_s);
  ASSERT_EQ(request.records[1].records.size(), 2);
  EXPECT_EQ(request.records[1].records[1].field(u"ASSMT_CD"_s), QVariant(u"P02"_s));
}

TEST(RequestMessage, DeliversItsOwnReplyLaterAndIgnoresOthers) {
  ScriptedLink link;
  Sent sent = makeMessage(&link);
  sent.message->send();
  EXPECT_TRUE(sent.message->isSent());

  // A reply for another request, and one for another request with this reply-to name: neither is ours.
  link.deliver(Reply::failure(u"AdjustAcc"_s, u"someone-else"_s, u"not ours"_s));
  Reply good;
  good.sections.insert(u"RECEIPT"_s, RecordSet({{u"RCPT_NBR"_s, FieldType::Text}}));
  ASSERT_TRUE(link.answerLast(good));
  link.answerLast(Reply::failure({}, {}, u"second answer"_s));  // the host answers twice: only the first counts
  EXPECT_EQ(sent.dataReady->count(), 0) << "a reply is never delivered inside the call that answers";

  ASSERT_TRUE(sent.dataReady->wait(kPatience));
  QTest::qWait(kQuietSpell);
  ASSERT_EQ(sent.dataReady->count(), 1);
  EXPECT_EQ(sent.dataReady->at(0).at(0).toString(), u"AdjustAcc"_s);
  const Reply reply = replyOf(*sent.dataReady);
  EXPECT_TRUE(reply.ok());
  EXPECT_TRUE(reply.hasSection(u"RECEIPT"_s));
  EXPECT_TRUE(sent.message->isAnswered());
}

TEST(RequestMessage, TimesOutThenFailsOnceAndDropsTheLateReply) {
  ScriptedLink link;
  Sent sent = makeMessage(&link, 20);
  // Record the order in which the two events reach the screen.
  QStringList order;
  QObject::connect(sent.message.get(), &RequestMessage::MsgTimeout, [&] { order << u"MsgTimeout"_s; });
  QObject::connect(sent.message.get(), &RequestMessage::DataReady, [&] { order << u"DataReady"_s; });
  sent.message->send();

  ASSERT_TRUE(sent.dataReady->wait(kPatience));
  EXPECT_EQ(order, (QStringList{u"MsgTimeout"_s, u"DataReady"_s}));
  const Reply failed = replyOf(*sent.dataReady);
  EXPECT_TRUE(failed.timedOut);
  EXPECT_EQ(failed.requestId, sent.message->requestId());
  EXPECT_EQ(failed.replyTo, u"AdjustAcc"_s);
  const QString text = ReplyChecker::errorText(failed, u"AdjustAcc"_s, u"QORVA_AdjustAcc.mNcsbMessage_DataReady"_s,
                                               sent.message->requestId());
  EXPECT_TRUE(text.startsWith(u"The host system did not answer in time."_s)) << text.toStdString();

  // The real answer comes after all: it is dropped, and nothing else arrives.
  link.answerLast(Reply());
  QTest::qWait(kQuietSpell);
  EXPECT_EQ(sent.timeout->count(), 1);
  EXPECT_EQ(sent.dataReady->count(), 1);
}

TEST(RequestMessage, AReplyInTimeStopsTheTimer) {
  ScriptedLink link;
  link.setResponder([](const Request&) { return std::optional<Reply>(Reply()); });
  Sent sent = makeMessage(&link, 60);
  sent.message->send();
  ASSERT_TRUE(sent.dataReady->wait(kPatience));
  QTest::qWait(kQuietSpell + 60);
  EXPECT_EQ(sent.timeout->count(), 0);
  EXPECT_EQ(sent.dataReady->count(), 1);
  EXPECT_TRUE(replyOf(*sent.dataReady).ok());
}

// The link goes away before the message is sent (false) or while it waits for the answer (true).
class RequestMessageLinkGone : public ::testing::TestWithParam<bool> {};

TEST_P(RequestMessageLinkGone, FailsOnceLaterNotInsideSendAndWithoutATimeOut) {
  auto link = std::make_unique<ScriptedLink>();
  Sent sent = makeMessage(link.get(), 50);
  if (!GetParam()) {
    link.reset();
  }
  sent.message->send();
  EXPECT_EQ(sent.dataReady->count(), 0);
  link.reset();
  ASSERT_TRUE(sent.dataReady->wait(kPatience));
  QTest::qWait(kQuietSpell + 50);
  EXPECT_EQ(sent.dataReady->count(), 1);
  EXPECT_EQ(sent.timeout->count(), 0);
  const Reply reply = replyOf(*sent.dataReady);
  EXPECT_FALSE(reply.ok());
  EXPECT_FALSE(reply.timedOut);
  EXPECT_EQ(reply.requestId, sent.message->requestId());
  EXPECT_FALSE(ReplyChecker::errorText(reply, u"AdjustAcc"_s, u"X.Y"_s, sent.message->requestId()).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(When, RequestMessageLinkGone, ::testing::Values(false, true),
                         [](const auto& p) { return p.param ? "WhileWaiting" : "BeforeSend"; });

TEST(RequestMessage, ManyMessagesOnOneLinkEachGetTheirOwnReply) {
  ScriptedLink link;
  Sent a = makeMessage(&link);
  Sent b = makeMessage(&link);
  a.message->send();
  b.message->send();
  // Answered in the other order, each with a marker of the request it answers.
  link.answer(b.message->requestId(), Reply::failure({}, {}, u"for b"_s));
  link.answer(a.message->requestId(), Reply::failure({}, {}, u"for a"_s));
  ASSERT_TRUE(a.dataReady->count() == 1 || a.dataReady->wait(kPatience));
  ASSERT_TRUE(b.dataReady->count() == 1 || b.dataReady->wait(kPatience));
  QTest::qWait(kQuietSpell);
  ASSERT_EQ(a.dataReady->count(), 1);
  ASSERT_EQ(b.dataReady->count(), 1);
  EXPECT_EQ(replyOf(*a.dataReady).error, u"for a"_s);
  EXPECT_EQ(replyOf(*b.dataReady).error, u"for b"_s);
}

}  // namespace
}  // namespace adjustacc::messaging
