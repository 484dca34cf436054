// The save watch: how a save is sent, the five ways it concludes, and that only the first of them counts.
#include "support/screentest.h"
#include "support/serviceset.h"

#include "platform/modmessagetitle.h"
#include "platform/timer.h"
#include "screencore/saveoutcomecheck.h"
#include "screencore/savewatch.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::screencore::testing {

using namespace Qt::Literals::StringLiterals;
namespace {

using platform::MsgIcon;
using platform::Pointer;
namespace title = platform::modMessageTitle;

// A saving screen reduced to what the watch reaches: its procedures write what they did into `steps`.
class SaveWatchTest : public ::testing::Test {
protected:
  void SetUp() override {
    title::setMessageTitle(u"Adjust Account"_s);
    ASSERT_TRUE(m_set.session.setUpdateTimeoutMs(45000));
    makeWatch({});
  }

  // The screen's binding; `screenUpdateTimeout` binds the screen's own UpdateTimeout, as screens do.
  void makeWatch(const QString& tickStatus, bool screenUpdateTimeout = true) {
    SaveWatch::Binding binding{
        .pendingSave = [this](bool enable) { steps.append(enable ? u"unlock"_s : u"lock"_s); },
        .initializeData = [this] { steps.append(u"initialize"_s); },
        .assumeApplied = [this] { steps.append(u"remove moved rows"_s); },
        .updateTimeout = {},
    };
    if (screenUpdateTimeout) {
      binding.updateTimeout = [this] {
        steps.append(u"UpdateTimeout"_s);
        m_watch->updateTimeout();
      };
    }
    if (!tickStatus.isEmpty()) {
      binding.tickStatus = tickStatus;
    }
    m_watch = std::make_unique<SaveWatch>(m_set.services, binding, &timer);
    QObject::connect(&timer, &platform::Timer::tick, m_watch.get(), &SaveWatch::timerTicked);
  }

  SaveWatch& watch() { return *m_watch; }
  // Sends a save and forgets the steps the send took.
  void pendingSave() {
    watch().saveSent();
    steps.clear();
    m_set.ui.clearRecord();
  }

  testsupport::ServiceSet m_set;
  platform::Timer timer{u"mTimUpdateTimeout"_s};
  QStringList steps;
  std::unique_ptr<SaveWatch> m_watch;
};

TEST_F(SaveWatchTest, SendingLocksTheInputsAndStartsTheTimer) {
  watch().timeoutNoticed();  // left over from an earlier request
  QSignalSpy states(m_watch.get(), &SaveWatch::saveStateChanged);
  EXPECT_EQ(timer.interval(), 45000);
  EXPECT_FALSE(timer.isRunning());

  watch().saveSent();

  EXPECT_EQ(watch().SaveState(), u"SAVEPENDING");
  EXPECT_FALSE(watch().MsgTimedOut());
  EXPECT_FALSE(watch().AccountChanged());
  EXPECT_EQ(steps, QStringList{u"lock"_s});
  EXPECT_FALSE(m_set.statusBar.isReady());
  EXPECT_TRUE(timer.isRunning());
  ASSERT_EQ(states.size(), 1);
  EXPECT_EQ(states.first().first().toString(), u"SAVEPENDING");

  watch().replyArrived();
  EXPECT_TRUE(m_set.statusBar.isReady());
}

TEST_F(SaveWatchTest, AnAnswerConcludesTheSaveOnce) {
  pendingSave();
  EXPECT_TRUE(watch().answered());
  EXPECT_EQ(watch().SaveState(), QString());
  EXPECT_TRUE(watch().AccountChanged());
  EXPECT_EQ(steps, QStringList{u"unlock"_s});
  EXPECT_FALSE(timer.isRunning());
  EXPECT_EQ(m_set.ui.boxCount(), 0);

  // A second reply only brings data: nothing of the save runs again.
  EXPECT_FALSE(watch().answered());
  EXPECT_EQ(steps, QStringList{u"unlock"_s});
  EXPECT_TRUE(watch().AccountChanged());  // never set back
}

TEST_F(SaveWatchTest, AnErrorReplyRefusesThePendingSave) {
  pendingSave();
  m_set.ui.setPointer(Pointer::Hourglass);
  watch().failed(u"The receivable was changed by another officer."_s);
  EXPECT_EQ(m_set.ui.pointer(), Pointer::Default);

  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().text, u"The receivable was changed by another officer.");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_EQ(m_set.ui.lastBox().title, u"Adjust Account");
  EXPECT_EQ(watch().SaveState(), QString());
  EXPECT_FALSE(watch().AccountChanged());
  // The inputs come back with the clerk's entries as they were: nothing is reset or removed.
  EXPECT_EQ(steps, QStringList{u"unlock"_s});
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_FALSE(timer.isRunning());
}

TEST_F(SaveWatchTest, AnErrorReplyWhileIdleStillUnlocksTheInputs) {
  watch().failed(u"No such receivable."_s);
  EXPECT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(steps, QStringList{u"unlock"_s});
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_FALSE(watch().AccountChanged());
}

TEST_F(SaveWatchTest, AnotherRequestSentAfterATimeOutOwnsTheTimeOutFlag) {
  pendingSave();
  watch().timeoutNoticed();
  watch().updateTimeout();
  ASSERT_TRUE(watch().MsgTimedOut());
  // The clerk asks the host something else; its refusal is a failed search, not a timed-out save.
  watch().requestSent();
  EXPECT_FALSE(watch().MsgTimedOut());
  watch().failed(u"No such receivable."_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
}

TEST_F(SaveWatchTest, AnErrorReplyAfterATimeOutConcludesTheSaveAsApplied) {
  pendingSave();
  m_set.ui.setPointer(Pointer::Hourglass);
  watch().timeoutNoticed();
  watch().failed(u"The host did not answer in time."_s);

  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_EQ(steps, (QStringList{u"UpdateTimeout"_s, u"unlock"_s, u"initialize"_s, u"remove moved rows"_s}));
  EXPECT_TRUE(watch().AccountChanged());
  EXPECT_EQ(watch().SaveState(), QString());
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
  EXPECT_EQ(m_set.ui.pointer(), Pointer::Default);
}

TEST_F(SaveWatchTest, WithoutAScreenUpdateTimeoutTheWatchConcludesItself) {
  makeWatch({}, false);
  pendingSave();
  watch().timeoutNoticed();
  watch().failed(u"The host did not answer in time."_s);
  EXPECT_EQ(steps, (QStringList{u"unlock"_s, u"initialize"_s, u"remove moved rows"_s}));
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
}

TEST_F(SaveWatchTest, UpdateTimeoutWhileIdleOnlyRestoresThePointer) {
  m_set.ui.setPointer(Pointer::Hourglass);
  watch().updateTimeout();
  EXPECT_EQ(m_set.ui.pointer(), Pointer::Default);
  EXPECT_TRUE(steps.isEmpty());
  EXPECT_FALSE(watch().AccountChanged());
  EXPECT_EQ(m_set.statusBar.text(), QString());
}

TEST_F(SaveWatchTest, TheTimerWarnsAndAssumesTheSaveWasApplied) {
  pendingSave();
  m_set.ui.setPointer(Pointer::Hourglass);
  ASSERT_TRUE(timer.fire());

  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().text,
            u"The system has not responded to your save request.  \r\nYour request will be processed as soon as possible.");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_EQ(m_set.ui.lastBox().title, u"Adjust Account");
  EXPECT_EQ(m_set.statusBar.text(), u"Update successful");
  EXPECT_EQ(steps, (QStringList{u"unlock"_s, u"initialize"_s, u"remove moved rows"_s}));
  EXPECT_TRUE(watch().AccountChanged());
  EXPECT_FALSE(timer.isRunning());  // a tick at most once per save
  EXPECT_EQ(m_set.ui.pointer(), Pointer::Default);
}

// After a save concluded without its answer, the host is asked what became of it and the clerk is told.
class SaveOutcomeTest : public SaveWatchTest {
protected:
  // A save sent under `id` and concluded by the timer; answers the question the watch then asks with `reply`.
  void concludeUnanswered(const messaging::Reply& reply) {
    watch().saveSent(u"save-17"_s, u"the changes to CITATION ENF001 number 1000011"_s);
    ASSERT_TRUE(timer.fire());
    const messaging::Request question = m_set.link.lastRequest();
    ASSERT_EQ(question.code, 66);
    ASSERT_EQ(question.replyTo, u"SaveOutcome");
    ASSERT_EQ(question.params.size(), 1);
    EXPECT_EQ(question.params[0].key, u"key:REQUEST_ID");
    EXPECT_EQ(question.params[0].value, u"save-17");
    m_set.ui.clearRecord();
    ASSERT_TRUE(m_set.link.answerLast(reply));
    for (int round = 0; round < 3; ++round) {
      QCoreApplication::processEvents();
    }
  }
  static messaging::Reply outcome(const QString& answer) {
    messaging::Reply reply;
    reply.sections.insert(u"SAVEOUTCOME"_s,
                          testsupport::section({u"REQUEST_ID"_s, u"OUTCOME"_s}, {{u"save-17"_s, answer}}));
    return reply;
  }
};

TEST_F(SaveOutcomeTest, ASaveTheHostAppliedIsConfirmedInTheStatusBar) {
  ASSERT_NO_FATAL_FAILURE(concludeUnanswered(outcome(u"APPLIED"_s)));
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_EQ(m_set.statusBar.text(),
            u"The host confirms that the changes to CITATION ENF001 number 1000011 was saved."_s);
}

TEST_F(SaveOutcomeTest, ASaveTheHostDidNotApplyIsToldInABoxNamingIt) {
  ASSERT_NO_FATAL_FAILURE(concludeUnanswered(outcome(u"NOT APPLIED"_s)));
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_TRUE(m_set.ui.lastBox().text.startsWith(
      u"The host did not save the changes to CITATION ENF001 number 1000011"_s));
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_TRUE(watch().AccountChanged()) << "the conclusion itself is kept as it was";
}

TEST_F(SaveOutcomeTest, NoAnswerToTheQuestionSaysItCouldNotBeConfirmed) {
  ASSERT_NO_FATAL_FAILURE(concludeUnanswered(messaging::Reply::failure({}, {}, u"The host is not running."_s)));
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_TRUE(m_set.statusBar.text().startsWith(u"Whether the changes to CITATION ENF001 number 1000011 was saved "
                                                u"could not be confirmed: The host is not running."_s))
      << m_set.statusBar.text().toStdString();
}

TEST_F(SaveOutcomeTest, AnAnsweredSaveOrOneSentWithoutItsIdAsksNothing) {
  watch().saveSent(u"save-18"_s, u"the changes"_s);
  watch().answered();
  EXPECT_EQ(m_set.link.requestCount(), 0);
  watch().saveSent();
  ASSERT_TRUE(timer.fire());
  EXPECT_EQ(m_set.link.requestCount(), 0);
}

TEST_F(SaveWatchTest, TheTimerTakesTheScreensOwnStatus) {
  makeWatch(u"No connection.  Check back later to see if your request saved."_s);
  pendingSave();
  ASSERT_TRUE(timer.fire());
  EXPECT_EQ(m_set.statusBar.text(), u"No connection.  Check back later to see if your request saved.");
}

TEST_F(SaveWatchTest, ATickWhileIdleOnlyWarns) {
  timer.setEnabled(true);
  ASSERT_TRUE(timer.fire());
  EXPECT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_TRUE(steps.isEmpty());
  EXPECT_FALSE(watch().AccountChanged());
  EXPECT_EQ(m_set.statusBar.text(), QString());
}

// The warning's own event loop lets the reply in before the clerk answers the box: the reply wins, and the
// tick must not reset the screen or take out rows a second time.
TEST_F(SaveWatchTest, AReplyWhileTheWarningIsOpenWins) {
  pendingSave();
  m_set.ui.duringNextBox([this] { EXPECT_TRUE(watch().answered()); });
  ASSERT_TRUE(timer.fire());
  EXPECT_EQ(steps, QStringList{u"unlock"_s});
  EXPECT_EQ(m_set.statusBar.text(), QString());
  EXPECT_TRUE(watch().AccountChanged());
}

// The other way round: the timer concludes first, then the request's time-out and its failing reply come.
TEST_F(SaveWatchTest, ATimeOutAfterTheTickChangesNothingMore) {
  pendingSave();
  ASSERT_TRUE(timer.fire());
  steps.clear();
  watch().timeoutNoticed();
  watch().failed(u"The host did not answer in time."_s);
  EXPECT_EQ(steps, QStringList{u"UpdateTimeout"_s});
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
}

TEST_F(SaveWatchTest, ClosingWhilePendingTellsTheOpenerToReload) {
  pendingSave();
  watch().closing();
  EXPECT_TRUE(watch().AccountChanged());
  EXPECT_EQ(watch().SaveState(), QString());
  EXPECT_FALSE(timer.isRunning());
  EXPECT_TRUE(steps.isEmpty());
  // The late answer finds nothing pending.
  EXPECT_FALSE(watch().answered());
  EXPECT_TRUE(steps.isEmpty());
}

TEST_F(SaveWatchTest, ClosingWhileIdleChangesNothing) {
  watch().closing();
  EXPECT_FALSE(watch().AccountChanged());
}

TEST_F(SaveWatchTest, TheTwoPrimitiveEndings) {
  pendingSave();
  EXPECT_TRUE(watch().cancel());
  EXPECT_FALSE(watch().AccountChanged());
  EXPECT_FALSE(watch().cancel());
  EXPECT_FALSE(watch().conclude());
  pendingSave();
  EXPECT_TRUE(watch().conclude());
  EXPECT_TRUE(watch().AccountChanged());
  EXPECT_TRUE(steps.isEmpty());  // neither touches the screen's controls
}

// Through the event loop, as in the application: each save counts its interval afresh.
TEST_F(SaveWatchTest, TheUpdateTimerTicksOnTheEventLoopAfterEachSave) {
  ASSERT_TRUE(m_set.session.setUpdateTimeoutMs(30));
  makeWatch({});
  pendingSave();
  ASSERT_TRUE(testsupport::waitFor([this] { return m_set.ui.boxCount() == 1; }));
  EXPECT_TRUE(watch().AccountChanged());

  pendingSave();
  ASSERT_TRUE(watch().answered());
  QTest::qWait(90);
  EXPECT_EQ(m_set.ui.boxCount(), 0);  // answered in time: no warning
}

}  // namespace
}  // namespace adjustacc::screencore::testing
