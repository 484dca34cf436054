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

messaging::RecordSet activityRows(const QList<QList<QVariant>>& rows) {
  return testsupport::section({u"ACTVTY_SEQ_NBR"_s, u"ACTVTY_DT"_s, u"ACCT_ACTVTY_CD"_s, u"ACTVTY_CMMT_TXT"_s,
                               u"LST_UPDT_USER_ID"_s, u"ACTION"_s, u"ROW_VRSN_NBR"_s},
                              rows);
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
  saveAndTimeOut();
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

// An entry added on one visit to the log and not yet saved is there on the next visit, and goes with the save.
TEST_F(AccDetailTest, ActivityEntriesOfAnEarlierVisitAreKeptUntilSaved) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  const messaging::RecordSet hostRows =
      activityRows({{u"1"_s, u"2024-02-01"_s, u"CAL"_s, u"First call"_s, u"OFC7"_s, QVariant(), u"3"_s}});
  screen().mCmdButton[A::AccountActivityButton].click();
  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& log = dynamic_cast<activity::QORVA_Activity&>(form);
    log.mFtcboActivityCode.setCode(u"CAL"_s);
    log.mTxtComment.setText(u"Customer called back"_s);
    log.mCmdActivity[activity::QORVA_Activity::AddButton].click();
    // The host's row changed too.
    ASSERT_TRUE(log.mSdgActivity.userClickRow(1));
    log.mTxtComment.setText(u"First call, no answer"_s);
    log.mCmdActivity[activity::QORVA_Activity::UpdateButton].click();
    log.mCmdActivity[activity::QORVA_Activity::SaveButton].click();
  });
  answer(testsupport::replyWith({{u"ACCOUNTACTIVITY"_s, hostRows}}));
  ASSERT_TRUE(screen().DataChanged());

  screen().mCmdButton[A::AccountActivityButton].click();
  QStringList seen;
  m_set.ui.queueModal([this, &seen](platform::ModalForm& form) {
    auto& log = dynamic_cast<activity::QORVA_Activity&>(form);
    const messaging::RecordSet& rows = *log.ActivityRows();
    for (int row = 0; row < rows.recordCount(); ++row) {
      seen.append(rows.valueAt(row, u"ACTVTY_CMMT_TXT"_s).toString() + u'|' +
                  rows.valueAt(row, u"ACTION"_s).toString());
    }
    // Closed without saving this visit: what the earlier visit handed over stays.
    m_set.ui.queueAnswer(MsgAnswer::No);
    log.mCmdActivity[activity::QORVA_Activity::CloseButton].click();
  });
  answer(testsupport::replyWith({{u"ACCOUNTACTIVITY"_s, hostRows}}));
  seen.sort();
  EXPECT_EQ(seen, (QStringList{u"Customer called back|ADD"_s, u"First call, no answer|UPD"_s}));

  screen().SaveData();
  ASSERT_EQ(screen().SaveState(), u"SAVEPENDING"_s) << m_set.ui.lastBox().text.toStdString();
  const messaging::Request saved = m_set.link.lastRequest();
  ASSERT_EQ(saved.records.size(), 1);
  QStringList sent;
  for (const messaging::SaveRecord& record : saved.records[0].records) {
    sent.append(record.field(u"ACTION"_s).toString() + u'|' + record.field(u"ACTVTY_CMMT_TXT"_s).toString());
  }
  sent.sort();
  EXPECT_EQ(sent, (QStringList{u"ADD|Customer called back"_s, u"UPD|First call, no answer"_s}));
}

TEST_F(AccDetailTest, CommentBoxesTakeNoMoreThanTheHostKeeps) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  // The host keeps a comment of up to 2,000 characters.
  const int limit = screen().mTxtAdjust.maxLength();
  EXPECT_GT(limit, 0);
  EXPECT_LE(limit, 2000);
  screen().mTxtAdjust.userSetText(QString(2100, u'x'));
  EXPECT_EQ(screen().mTxtAdjust.text().size(), limit);
  activity::QORVA_Activity log(m_set.services);
  EXPECT_GT(log.mTxtComment.maxLength(), 0);
  EXPECT_LE(log.mTxtComment.maxLength(), 2000);
}

}  // namespace
}  // namespace adjustacc::ardetail::testing
