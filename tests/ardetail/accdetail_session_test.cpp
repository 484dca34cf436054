// The account receivable detail screen over a working session: how it looks when it opens, what a pending save
// lets the clerk do, the receivable as each save leaves it, and activity entries carried across visits to the log.
#include "accdetailfixture.h"

namespace adjustacc::ardetail::testing {
namespace {

using platform::MsgAnswer;
using A = QORVA_AccDetail;

// The receivable as a save's reply carries it.
messaging::RecordSet receivableRow(const QString& version, const QString& balance) {
  return testsupport::section({u"ACCT_RCVBL_NBR"_s, u"ACCT_RCVBL_TYP_CD"_s, u"ACCT_RCVBL_BAL_AMT"_s, u"ROW_VRSN_NBR"_s},
                              {{u"1000011"_s, u"C"_s, balance, version}});
}

TEST_F(AccDetailTest, OpeningMarksNothingButTheClerksChangesAreChecked) {
  for (const bool mayAdjust : {true, false}) {
    if (!mayAdjust) {
      m_set.user.revoke(u"ADJUSTAR"_s);
    }
    open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
    for (const platform::Control* input : std::initializer_list<const platform::Control*>{
             &screen().mDtpDTPicker, &screen().mTxtAdjust, &screen().QORVA_CodesCombo, &grid(A::AvailableGrid),
             &grid(A::AdjustedGrid)}) {
      EXPECT_FALSE(m_set.fieldMarking.isMarked(*input)) << input->name().toStdString() << mayAdjust;
    }
    EXPECT_TRUE(screen().mDtpDTPicker.isEmpty());
  }
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  screen().mDtpDTPicker.setDate(QDate(2024, 3, 8));  // after today
  EXPECT_TRUE(m_set.fieldMarking.isMarked(screen().mDtpDTPicker));
  EXPECT_TRUE(m_set.fieldMarking.isMarked(screen().mTxtAdjust));
}

// Without its action codes (the code table cannot be read) the screen still locks what the officer may not do and
// is laid out for looking.
TEST(AccDetailLoad, AFailedActionListLeavesTheRightsAndTheLayoutInPlace) {
  platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
  for (const bool mayAdjust : {false, true}) {
    testsupport::ServiceSet set;  // no code table "ACCADJUST"
    if (mayAdjust) {
      set.user.grant(u"ADJUSTAR"_s);
    }
    QORVA_AccDetail screen(set.services);
    screen.setVisible(true);
    EXPECT_EQ(set.ui.boxCount(), 1) << "the failure is reported";
    EXPECT_EQ(screen.mCmdButton[A::SaveButton].isEnabled(), mayAdjust);
    EXPECT_EQ(screen.mTxtAdjust.isEnabled(), mayAdjust);
    EXPECT_EQ(screen.mDtpDTPicker.isEnabled(), mayAdjust);
    EXPECT_EQ(screen.mSdgDBGrid[A::AvailableGrid].column(u"REMOVE"_s).isLocked(), !mayAdjust);
    EXPECT_EQ(screen.mTimUpdateTimeout.interval(), set.session.updateTimeoutMs());
    EXPECT_EQ(screen.mTxtAdjust.tabIndex(), 4);
    EXPECT_TRUE(screen.mDtpDTPicker.isEmpty());
    EXPECT_TRUE(screen.mSdgDBGrid[A::AvailableGrid].allowUpdate());
  }
}

TEST_F(AccDetailTest, WhileASaveIsPendingNeitherSaveNorCloseSendsItAgain) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  ASSERT_EQ(m_set.link.requestCount(), 1);
  screen().SaveData();  // as a second press of Enter would
  EXPECT_EQ(m_set.link.requestCount(), 1);
  EXPECT_EQ(m_set.statusBar.text(), u"Waiting for the answer to the save."_s);

  const int boxes = m_set.ui.boxCount();
  screen().mCmdButton[A::CloseButton].click();
  EXPECT_EQ(m_set.ui.boxCount(), boxes) << "no save question while the save is on its way";
  EXPECT_EQ(m_set.link.requestCount(), 1);
  EXPECT_FALSE(screen().isVisible());
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_EQ(screen().SaveState(), QString());
}

TEST_F(AccDetailTest, AccountActivityWaitsForThePendingSavesAnswer) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"A"_s, u"P01"_s, u"40.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  screen().mCmdButton[A::AccountActivityButton].click();
  EXPECT_EQ(m_set.link.requestCount(), 1);
  EXPECT_EQ(m_set.statusBar.text(), u"Waiting for the answer to the save."_s);
  EXPECT_EQ(screen().SaveState(), u"SAVEPENDING"_s);
  // The save's own answer still concludes it.
  answer(testsupport::replyWith({{u"ASSESSMENT"_s, assessmentRows({assessment(u"I"_s, u"F20"_s, u"25.00"_s),
                                                                   assessment(u"A"_s, u"P01"_s, u"40.00"_s)})}}));
  EXPECT_EQ(screen().SaveState(), QString());
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_EQ(grid(A::AvailableGrid).rows(), 1);
  EXPECT_EQ(grid(A::AdjustedGrid).rows(), 1);
}

TEST_F(AccDetailTest, TheActivityRequestAfterATimedOutSaveIsNoSaveOfItsOwn) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  screen().mNcsbMessage_MsgTimeout();
  messaging::Reply late;
  late.error = u"The host did not answer in time."_s;
  answer(late);
  ASSERT_EQ(m_set.statusBar.text(), u"Search timed out");
  const int sent = m_set.link.requestCount();
  screen().mCmdButton[A::AccountActivityButton].click();
  ASSERT_EQ(m_set.link.requestCount(), sent + 1);
  messaging::Reply refused;
  refused.error = u"No activity"_s;
  answer(refused);
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
}

TEST_F(AccDetailTest, EachSaveTakesTheReceivableAsTheHostLeftIt) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"A"_s, u"P01"_s, u"40.00"_s)});
  screen().setBalance(u"65.00"_s);
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  answer(testsupport::replyWith({{u"ASSESSMENT"_s, assessmentRows({assessment(u"I"_s, u"F20"_s, u"25.00"_s),
                                                                   assessment(u"A"_s, u"P01"_s, u"40.00"_s)})},
                                 {u"ACNTSRCVBL"_s, receivableRow(u"8"_s, u"40.00"_s)}}));
  ASSERT_EQ(screen().SaveState(), QString());
  mark(A::AvailableGrid, 0);
  EXPECT_EQ(screen().m_balanceAfter.caption(), u"$0.00"_s);  // from the balance the save left
  enter(QDate(2024, 3, 2), u"Second thoughts"_s);
  screen().SaveData();
  ASSERT_EQ(m_set.link.requestCount(), 2);
  const messaging::Request second = m_set.link.lastRequest();
  ASSERT_EQ(second.records.first().name, u"ADJUSTAR"_s);
  EXPECT_EQ(second.records.first().records.first().field(u"ROW_VRSN_NBR"_s), u"8"_s);
}

}  // namespace
}  // namespace adjustacc::ardetail::testing
