#include "messaging/replychecker.h"

#include <gtest/gtest.h>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

const QString kSource = u"QORVA_AdjustAcc.mNcsbMessage_DataReady"_s;

Reply goodReply() {
  Reply reply;
  reply.replyTo = u"AdjustAcc"_s;
  reply.requestId = u"id-1"_s;
  return reply;
}

TEST(ReplyChecker, AcceptsAGoodReplyWithOrWithoutAnIdToMatch) {
  EXPECT_EQ(ReplyChecker::errorText(goodReply(), u"AdjustAcc"_s, kSource, u"id-1"_s), QString());
  // The document's second check passes an id that nothing fills: it must not fail a good reply.
  EXPECT_EQ(ReplyChecker::errorText(goodReply(), u"AdjustAcc"_s, u"QORVA_PayDetail.mNcsbMessage_DataReady"_s, {}),
            QString());
}

struct Failing {
  const char* name;
  Reply reply;
  QString replyToName;
  QString requestId;
  QString headline;
  QString detail;  // expected between headline and source; empty when none is expected
};

Reply with(void (*change)(Reply&)) {
  Reply reply = goodReply();
  change(reply);
  return reply;
}

class ReplyCheckerFails : public ::testing::TestWithParam<Failing> {};

TEST_P(ReplyCheckerFails, SaysWhatHappenedAndNamesTheSource) {
  const Failing& c = GetParam();
  const QString text = ReplyChecker::errorText(c.reply, c.replyToName, kSource, c.requestId);
  QString expected = c.headline;
  if (!c.detail.isEmpty())
    expected += u"\r\n\r\n"_s + c.detail;
  expected += u"\r\n\r\nSource: "_s + kSource;
  EXPECT_EQ(text, expected);
}

INSTANTIATE_TEST_SUITE_P(
    EachCase, ReplyCheckerFails,
    ::testing::Values(
        Failing{"HostError", with([](Reply& r) { r.error = u"Receipt 12 is not on file."_s; }), u"AdjustAcc"_s,
                u"id-1"_s, u"The host system could not answer the request."_s, u"Receipt 12 is not on file."_s},
        Failing{"HostErrorWithoutIdToMatch", with([](Reply& r) { r.error = u"Refused."_s; }), u"AdjustAcc"_s, {},
                u"The host system could not answer the request."_s, u"Refused."_s},
        Failing{"TimedOut",
                with([](Reply& r) {
                  r.timedOut = true;
                  r.error = u"No answer within 30 seconds."_s;
                }),
                u"AdjustAcc"_s, u"id-1"_s, u"The host system did not answer in time."_s,
                u"No answer within 30 seconds."_s},
        Failing{"OtherReplyTo", goodReply(), u"AdjustAccPayDetail1"_s, u"id-1"_s,
                u"An answer from the host system arrived for another window and was not used."_s,
                u"It was addressed to \"AdjustAcc\", not to \"AdjustAccPayDetail1\"."_s},
        Failing{"ReplyToDiffersOnlyInCase", goodReply(), u"ADJUSTACC"_s, {},
                u"An answer from the host system arrived for another window and was not used."_s,
                u"It was addressed to \"AdjustAcc\", not to \"ADJUSTACC\"."_s},
        Failing{"OtherRequestId", goodReply(), u"AdjustAcc"_s, u"id-2"_s,
                u"An answer from the host system arrived for an earlier request and was not used."_s,
                u"It answers request id-1; the request waiting is id-2."_s},
        // Whom a reply is for is decided before what it says.
        Failing{"ErrorForAnotherRequest", with([](Reply& r) { r.error = u"old failure"_s; }), u"AdjustAcc"_s,
                u"id-2"_s, u"An answer from the host system arrived for an earlier request and was not used."_s,
                u"It answers request id-1; the request waiting is id-2."_s}),
    [](const ::testing::TestParamInfo<Failing>& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace adjustacc::messaging
