// The account receivable detail screen: its grids and totals, the checks of an adjustment in their order, the
// records a save sends, and how each way a save ends leaves the screen.
#include "accdetailfixture.h"

namespace adjustacc::ardetail::testing {
namespace {

using platform::MsgAnswer;
using platform::MsgIcon;
using A = QORVA_AccDetail;

TEST_F(AccDetailTest, AssessmentsGoToTheirGridsWithMoneyShownAndHiddenValuesKept) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"I"_s, u"P01"_s, u"1250"_s),
        assessment(u"A"_s, u"F09"_s, u"90.00"_s, u"2024-01-10"_s, u"Y"_s)});
  EXPECT_EQ(grid(A::AdjustedGrid).caption(), u"Adjusted  Assessments");
  ASSERT_EQ(grid(A::AvailableGrid).rows(), 2);
  ASSERT_EQ(grid(A::AdjustedGrid).rows(), 1);
  const platform::Grid& adjusted = grid(A::AdjustedGrid);
  EXPECT_EQ(adjusted.column(u"Description"_s).cellValue(0), u"OVERWEIGHT PENALTY"_s);
  EXPECT_EQ(adjusted.column(u"CL_ASMT_AMT"_s).cellValue(0), u"$1,250.00"_s);
  EXPECT_EQ(adjusted.column(u"BAL_DUE_AMT"_s).cellValue(0), u"$0.00"_s);  // nothing due: null
  EXPECT_EQ(adjusted.column(u"LIC_PRCHS_OPTN_IND"_s).caption(), u"LPO_IND");
  const platform::Grid& available = grid(A::AvailableGrid);
  EXPECT_EQ(available.column(u"AC_ASMT_AMT"_s).cellValue(1), u"90.00"_s);
  EXPECT_FALSE(available.column(u"AC_ASMT_AMT"_s).isVisible());
  EXPECT_FALSE(available.column(u"ROW_VRSN_NBR"_s).cellValue(0).toString().isEmpty());
  EXPECT_TRUE(available.column(u"CL_ASMT_AMT"_s).isLocked());
  EXPECT_FALSE(available.column(u"REMOVE"_s).isLocked());
}

TEST_F(AccDetailTest, TheTotalsFollowTheMarks) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"A"_s, u"F09"_s, u"90.00"_s, u"2024-01-10"_s, u"Y"_s),
        assessment(u"I"_s, u"P01"_s, u"1000.50"_s)});
  mark(A::AvailableGrid, 0);
  EXPECT_EQ(label(A::TotalRemovalLabel), u"$25.00");
  EXPECT_EQ(label(A::TotalAdjustmentLabel), u"$25.00");
  mark(A::AvailableGrid, 1);  // an option fee counts like any other
  mark(A::AdjustedGrid, 0);
  EXPECT_EQ(label(A::TotalRemovalLabel), u"$115.00");
  EXPECT_EQ(label(A::TotalReinstatedLabel), u"$1,000.50");
  EXPECT_EQ(label(A::TotalAdjustmentLabel), u"$1,115.50");
  mark(A::AvailableGrid, 0);  // cleared again
  EXPECT_EQ(label(A::TotalRemovalLabel), u"$90.00");
  EXPECT_EQ(label(A::TotalAdjustmentLabel), u"$1,090.50");
}

TEST_F(AccDetailTest, TheBalanceAfterTheSaveFollowsTheMarks) {
  Row partlyPaid = assessment(u"A"_s, u"F20"_s, u"25.00"_s);
  partlyPaid[u"BAL_DUE_AMT"_s] = u"10.00"_s;
  Row removedPartlyPaid = assessment(u"I"_s, u"P01"_s, u"1000.50"_s);
  removedPartlyPaid[u"RMVD_BAL_AMT"_s] = u"400.00"_s;
  open({partlyPaid, assessment(u"A"_s, u"P01"_s, u"40.00"_s), removedPartlyPaid,
        assessment(u"I"_s, u"F20"_s, u"30.00"_s)});
  screen().setBalance(u"$1,050.00"_s);
  EXPECT_EQ(screen().m_balanceAfter.caption(), u""_s);  // nothing marked: nothing to foresee

  mark(A::AvailableGrid, 0);  // what it still owes comes off, not its amount
  EXPECT_EQ(screen().m_balanceAfter.caption(), u"$1,040.00"_s);
  mark(A::AdjustedGrid, 0);  // owed again what it owed when it was removed
  EXPECT_EQ(screen().m_balanceAfter.caption(), u"$1,440.00"_s);
  mark(A::AdjustedGrid, 1);  // no removal on record: the whole amount
  EXPECT_EQ(screen().m_balanceAfter.caption(), u"$1,470.00"_s);
  mark(A::AdjustedGrid, 0);
  mark(A::AdjustedGrid, 1);
  mark(A::AvailableGrid, 1);
  EXPECT_EQ(screen().m_balanceAfter.caption(), u"$1,000.00"_s);

  screen().setBalance(u"not known"_s);  // a balance that is no sum of money foresees nothing
  EXPECT_EQ(screen().m_balanceAfter.caption(), u""_s);
}

struct CheckCase {
  const char* name;
  QString type;
  QString status;
  std::function<void(AccDetailTest&)> enter;
  QString expected;
};

class CheckEditTest : public AccDetailTest, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(CheckEditTest, RulesRunInTheirOrderWithTheirExactMessages) {
  const CheckCase& c = GetParam();
  open({assessment(u"A"_s, u"F09"_s, u"90.00"_s, u"2024-02-10"_s, u"Y"_s),
        assessment(u"A"_s, u"F15"_s, u"30.00"_s, u"2024-01-10"_s, u"Y"_s),
        assessment(u"I"_s, u"P01"_s, u"100.00"_s, u"2024-02-20"_s)},
       u"1000011"_s, c.type, c.status);
  c.enter(*this);
  screen().CheckEdit();
  EXPECT_EQ(screen().ErrorText(), c.expected);
}

const QDate kToday(2024, 3, 7);

INSTANTIATE_TEST_SUITE_P(
    AccDetail, CheckEditTest,
    ::testing::Values(
        CheckCase{"VoidOfAPaymentPlanStopsAtOnce", u"P"_s, u"U"_s,
                  [](AccDetailTest& fixture) { fixture.chooseAction(u"V"_s); },
                  u"Can not void or delete a payment plan\r\n"_s},
        CheckCase{"DeleteWithALaterDateAndNoCommentSkipsTheTypeRule", u"X"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.chooseAction(u"D"_s);
                    fixture.screen().mDtpDTPicker.setDate(kToday.addDays(1));
                  },
                  u"Date Adjusted must be current date or a prior date\r\nComment is required\r\n"_s},
        CheckCase{"DeleteOfAnotherKindOfForm", u"X"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.chooseAction(u"D"_s);
                    fixture.enter();
                  },
                  u"Only delete ENF001, ENF003, ENF507, and Temporary Permits\r\n"_s},
        CheckCase{"AVoidedFormMayOnlyBeDeleted", u"C"_s, u"V"_s,
                  [](AccDetailTest& fixture) {
                    fixture.mark(A::AdjustedGrid, 0);
                    fixture.enter();
                  },
                  u"Can not adjust a voided form\r\n"_s},
        CheckCase{"NothingMarkedNoDateNoComment", u"C"_s, u"U"_s, [](AccDetailTest&) {},
                  u"Adjusted Date is required\r\nPlease adjust the account receivables or the Fees/Penalties\r\n"
                  u"Comment is required\r\n"_s},
        CheckCase{"TwoOptionFees", u"C"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.mark(A::AvailableGrid, 0);
                    fixture.mark(A::AvailableGrid, 1);
                    fixture.enter();
                  },
                  u"Adjust only one LPO at a time\r\n"_s},
        CheckCase{"AnActionAndMarkedRows", u"C"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.mark(A::AvailableGrid, 1);
                    fixture.chooseAction(u"V"_s);
                    fixture.enter();
                  },
                  u"You can not select Action and adjust a fee/penalty at the same time\r\n"_s},
        CheckCase{"ADateBeforeAMarkedAssessmentOfEachGrid", u"C"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.mark(A::AvailableGrid, 0);
                    fixture.mark(A::AdjustedGrid, 0);
                    fixture.enter(QDate(2024, 2, 9));
                  },
                  u"Date Adjusted must be >= assessment date in Available Assessments Grid\r\n"
                  u"Date Adjusted must be >= assessment date in Adjusted Assessments Grid\r\n"_s},
        CheckCase{"TheDateOfTheAssessmentItselfPasses", u"C"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.mark(A::AvailableGrid, 0);
                    fixture.enter(QDate(2024, 2, 10));
                  },
                  QString()},
        CheckCase{"ABlankCommentIsNoComment", u"C"_s, u"U"_s,
                  [](AccDetailTest& fixture) {
                    fixture.mark(A::AvailableGrid, 1);
                    fixture.enter(kToday, u"   "_s);
                  },
                  u"Comment is required\r\n"_s}),
    [](const ::testing::TestParamInfo<CheckCase>& row) { return std::string(row.param.name); });

TEST_F(AccDetailTest, SaveSendsTheAdjustmentAndEachMarkedAssessment) {
  open({assessment(u"A"_s, u"F20"_s, u"1,025.00"_s), assessment(u"A"_s, u"P01"_s, u"40.00"_s),
        assessment(u"I"_s, u"P01"_s, u"100.00"_s)});
  mark(A::AvailableGrid, 0);
  mark(A::AdjustedGrid, 0);
  enter();
  screen().SaveData();

  ASSERT_EQ(m_set.link.requestCount(), 1);
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.code, 41);
  EXPECT_EQ(request.replyTo, u"AdjustAccAccDetail");
  EXPECT_EQ(request.params, (QList<messaging::RequestParameter>{{u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, u"1000011"_s},
                                                                {u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"C"_s},
                                                                {u"MARVENTO"_s, u"key:LPO"_s, u"="_s, u"NO"_s}}));
  ASSERT_EQ(request.records.size(), 2);
  EXPECT_EQ(request.records[0].name, u"ADJUSTAR");
  const messaging::SaveRecord& header = request.records[0].records.first();
  EXPECT_EQ(header.fields(), (QList<std::pair<QString, QVariant>>{{u"ACTION"_s, u"ADD"_s},
                                                                  {u"CUST_ID"_s, u"100001"_s},
                                                                  {u"ADJSTMT_DT"_s, u"2024-03-01"_s},
                                                                  {u"ADJST_CMMT_TXT"_s, u"Waived on appeal"_s},
                                                                  {u"ADJSTMT_TYP_CD"_s, u""_s},
                                                                  {u"ACCT_RCVBL_NBR"_s, u"1000011"_s},
                                                                  {u"ACCT_RCVBL_CK_NBR"_s, u"5"_s},
                                                                  {u"ACCT_RCVBL_TYP_CD"_s, u"C"_s},
                                                                  {u"ROW_VRSN_NBR"_s, u"7"_s}}));
  const QList<messaging::SaveRecord>& moved = request.records[1].records;
  ASSERT_EQ(moved.size(), 2);
  EXPECT_EQ(moved[0].field(u"VLTN_ASSMT_STTS_CD"_s), u"I"_s);
  EXPECT_EQ(moved[0].field(u"CL_ASMT_AMT"_s), u"1025.00"_s);  // without "$" and ","
  EXPECT_EQ(moved[0].field(u"BAL_DUE_AMT"_s), u"0"_s);
  EXPECT_EQ(moved[0].field(u"ASSMT_CD"_s), u"F20"_s);
  EXPECT_FALSE(moved[0].field(u"ROW_VRSN_NBR"_s).toString().isEmpty());
  EXPECT_FALSE(moved[0].hasField(u"AC_ASMT_AMT"_s));
  EXPECT_EQ(moved[1].field(u"VLTN_ASSMT_STTS_CD"_s), u"A"_s);
  EXPECT_EQ(moved[1].field(u"BAL_DUE_AMT"_s), u"100.00"_s);
  EXPECT_EQ(moved[1].field(u"LIC_PRCHS_OPTN_IND"_s), u"N"_s);

  EXPECT_EQ(screen().SaveState(), u"SAVEPENDING");
  EXPECT_EQ(m_set.statusBar.text(), u"Saving Fees/Penalties for CITATION ENF001 number 1000011");
  for (const platform::Control* input :
       std::initializer_list<const platform::Control*>{&screen().mDtpDTPicker, &screen().QORVA_CodesCombo,
                                                       &screen().mTxtAdjust, &screen().mCmdButton[A::SaveButton],
                                                       &grid(A::AvailableGrid), &grid(A::AdjustedGrid)}) {
    EXPECT_FALSE(input->isEnabled()) << input->name().toStdString();
  }
  EXPECT_TRUE(screen().mTimUpdateTimeout.isRunning());
}

TEST_F(AccDetailTest, NothingEnteredSendsNothing) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  screen().SaveData();
  EXPECT_EQ(m_set.link.requestCount(), 0);
  EXPECT_EQ(m_set.statusBar.text(), u"Information did not change.  Save request canceled. ");
  mark(A::AvailableGrid, 0);
  screen().SaveData();
  EXPECT_EQ(m_set.link.requestCount(), 0);
  EXPECT_EQ(m_set.statusBar.text(), u"Error(s) found");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_EQ(m_set.ui.lastBox().text, u"Adjusted Date is required\r\nComment is required\r\n");
}

TEST_F(AccDetailTest, TheAnswerRefillsTheGridsAndClearsTheInputs) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"A"_s, u"P01"_s, u"40.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  answer(testsupport::replyWith({{u"ASSESSMENT"_s, assessmentRows({assessment(u"I"_s, u"F20"_s, u"25.00"_s),
                                                                   assessment(u"A"_s, u"P01"_s, u"40.00"_s)})}}));
  EXPECT_EQ(screen().SaveState(), QString());
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_EQ(grid(A::AvailableGrid).rows(), 1);
  EXPECT_EQ(grid(A::AdjustedGrid).rows(), 1);
  EXPECT_EQ(grid(A::AdjustedGrid).column(u"ASSMT_CD"_s).cellValue(0), u"F20"_s);
  EXPECT_TRUE(screen().mDtpDTPicker.isEmpty());
  EXPECT_EQ(screen().mTxtAdjust.text(), QString());
  EXPECT_EQ(label(A::TotalRemovalLabel), QString());
  EXPECT_EQ(label(A::TotalAdjustmentLabel), QString());
  EXPECT_TRUE(screen().mCmdButton[A::SaveButton].isEnabled());
  EXPECT_TRUE(m_set.statusBar.isReady());
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_FALSE(screen().mTimUpdateTimeout.isRunning());
}

// Only generated forms (numbers above 1999999) lose their Save button after a void; a delete always does.
TEST_F(AccDetailTest, AfterAVoidOrDeleteTheSaveButtonFollowsTheFormNumber) {
  struct Case {
    QString number;
    QString action;
    bool saveEnabled;
  };
  for (const Case& c : {Case{u"1999999"_s, u"V"_s, true}, Case{u"2000000"_s, u"V"_s, false},
                        Case{u"1999999"_s, u"D"_s, false}}) {
    open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)}, c.number);
    chooseAction(c.action);
    enter();
    m_set.ui.queueAnswer(MsgAnswer::Yes);  // the delete's question
    screen().SaveData();
    ASSERT_EQ(screen().SaveState(), u"SAVEPENDING") << c.number.toStdString() << c.action.toStdString();
    answer(testsupport::replyWith({}));
    EXPECT_EQ(screen().mCmdButton[A::SaveButton].isEnabled(), c.saveEnabled)
        << c.number.toStdString() << c.action.toStdString();
    EXPECT_EQ(screen().mTxtAdjust.isEnabled(), c.saveEnabled);
    EXPECT_EQ(label(A::StatusLabel), m_set.codes.description(u"CSTATUS"_s, c.action));
    EXPECT_EQ(m_set.link.lastRequest().records.size(), 1);  // ADJUSTAR alone
  }
}

TEST_F(AccDetailTest, ADeleteIsRefusedForGeneratedFormsAndConfirmedForOthers) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)}, u"2000000"_s);
  chooseAction(u"D"_s);
  enter();
  screen().SaveData();
  EXPECT_EQ(m_set.ui.lastBox().text, u"Can not delete a generated form. Please void and correct the form instead.");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Information);
  EXPECT_EQ(m_set.link.requestCount(), 0);

  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)}, u"1999999"_s);
  chooseAction(u"D"_s);
  enter();
  m_set.ui.queueAnswer(MsgAnswer::No);
  screen().SaveData();
  EXPECT_EQ(m_set.ui.lastBox().text, u"Are you sure that you want to delete this form?");
  EXPECT_EQ(m_set.ui.lastBox().buttons, platform::MsgButtons::YesNoCancel);
  EXPECT_EQ(m_set.statusBar.text(), u"Save Request Canceled.");
  EXPECT_EQ(m_set.link.requestCount(), 0);
  EXPECT_EQ(screen().SaveState(), QString());
}

TEST_F(AccDetailTest, ATimeOutTakesTheMarkedRowsOutOfBothGrids) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"A"_s, u"P01"_s, u"40.00"_s),
        assessment(u"I"_s, u"F09"_s, u"90.00"_s), assessment(u"I"_s, u"P01"_s, u"10.00"_s)});
  mark(A::AvailableGrid, 1);
  mark(A::AdjustedGrid, 0);
  enter();
  saveAndTimeOut();

  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
  EXPECT_TRUE(screen().AccountChanged());
  ASSERT_EQ(grid(A::AvailableGrid).rows(), 1);
  EXPECT_EQ(grid(A::AvailableGrid).column(u"ASSMT_CD"_s).cellValue(0), u"F20"_s);
  ASSERT_EQ(grid(A::AdjustedGrid).rows(), 1);
  EXPECT_EQ(grid(A::AdjustedGrid).column(u"ASSMT_CD"_s).cellValue(0), u"P01"_s);
  EXPECT_TRUE(screen().mCmdButton[A::SaveButton].isEnabled());
}

TEST_F(AccDetailTest, ARefusedSaveKeepsEverythingTheClerkEntered) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"A"_s, u"P01"_s, u"40.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  messaging::Reply refused;
  refused.error = u"Assessment F20 was changed by another user after you read it."_s;
  answer(refused);
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"Assessment F20 was changed by another user after you read it."));
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_FALSE(screen().AccountChanged());
  EXPECT_EQ(screen().SaveState(), QString());
  EXPECT_EQ(grid(A::AvailableGrid).rows(), 2);
  EXPECT_EQ(label(A::TotalRemovalLabel), u"$25.00");
  EXPECT_EQ(screen().mTxtAdjust.text(), u"Waived on appeal");
  EXPECT_EQ(screen().mDtpDTPicker.date(), QDate(2024, 3, 1));
  EXPECT_TRUE(screen().mCmdButton[A::SaveButton].isEnabled());
  EXPECT_TRUE(grid(A::AvailableGrid).isEnabled());
}

TEST_F(AccDetailTest, WithoutTheRightTheScreenOnlyShowsTheReceivable) {
  m_set.user.revoke(u"ADJUSTAR"_s);
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s), assessment(u"I"_s, u"P01"_s, u"40.00"_s)});
  EXPECT_FALSE(screen().mCmdButton[A::SaveButton].isEnabled());
  EXPECT_TRUE(grid(A::AvailableGrid).column(u"REMOVE"_s).isLocked());
  // Locked by grid 0's column name, which grid 1 does not have: its Reinstate column is left as it was.
  EXPECT_FALSE(grid(A::AdjustedGrid).column(u"REINSTATE"_s).isLocked());
  EXPECT_FALSE(screen().mDtpDTPicker.isEnabled());
  EXPECT_FALSE(screen().QORVA_CodesCombo.isEnabled());
  EXPECT_FALSE(screen().mTxtAdjust.isEnabled());
  EXPECT_EQ(grid(A::AvailableGrid).rows(), 1);
  // An error reply unlocks what a save locked, never what the right forbids.
  screen().mCmdButton[A::AccountActivityButton].click();
  messaging::Reply refused;
  refused.error = u"No activity"_s;
  answer(refused);
  EXPECT_FALSE(screen().mCmdButton[A::SaveButton].isEnabled());
  EXPECT_FALSE(screen().mTxtAdjust.isEnabled());
}

TEST_F(AccDetailTest, CloseAsksOnlyWhenSomethingWasEntered) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  screen().mCmdButton[A::CloseButton].click();
  EXPECT_FALSE(screen().isVisible());
  EXPECT_EQ(m_set.ui.boxCount(), 0);

  screen().setVisible(true);
  screen().mTxtAdjust.setText(u"Called the customer"_s);
  m_set.ui.queueAnswer(MsgAnswer::Cancel);
  screen().mCmdButton[A::CloseButton].click();
  EXPECT_EQ(m_set.ui.lastBox().text, u"Adjustment data has been changed.  Do you wish to save these changes?");
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Question);
  EXPECT_TRUE(screen().isVisible());
  m_set.ui.queueAnswer(MsgAnswer::Yes);  // the save finds errors: the screen stays
  screen().mCmdButton[A::CloseButton].click();
  EXPECT_TRUE(screen().isVisible());
  m_set.ui.queueAnswer(MsgAnswer::No);
  screen().mCmdButton[A::CloseButton].click();
  EXPECT_FALSE(screen().isVisible());
  EXPECT_FALSE(screen().AccountChanged());
}

TEST_F(AccDetailTest, ClosingWhileASaveIsPendingTellsTheOpenerToReload) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  screen().SaveData();
  screen().mCmdButton[A::CloseButton].click();
  EXPECT_FALSE(screen().isVisible());
  EXPECT_TRUE(screen().AccountChanged());
}

TEST_F(AccDetailTest, MoveGridRowAddsTheRowToTheOtherGridAsAdjustedToday) {
  Row partlyPaid = assessment(u"A"_s, u"F09"_s, u"90.00"_s, u"2024-01-10"_s, u"Y"_s);
  partlyPaid[u"BAL_DUE_AMT"_s] = u"60.00"_s;
  open({assessment(u"A"_s, u"P01"_s, u"40.00"_s), partlyPaid});
  grid(A::AvailableGrid).setRow(1);
  screen().MoveGridRow(A::AvailableGrid);
  ASSERT_EQ(grid(A::AvailableGrid).rows(), 2);  // the source row stays
  ASSERT_EQ(grid(A::AdjustedGrid).rows(), 1);
  const platform::Grid& to = grid(A::AdjustedGrid);
  EXPECT_EQ(to.column(u"VLTN_ASSMT_STTS_CD"_s).cellValue(0), u"I"_s);
  EXPECT_EQ(to.column(u"ADJSTMT_DT"_s).cellValue(0), u"03-07-2024"_s);
  EXPECT_EQ(to.column(u"ASSMT_ISSUE_DT"_s).cellValue(0), u"2024-01-10"_s);
  EXPECT_EQ(to.column(u"Description"_s).cellValue(0), u"LPO FEE 90 DAY"_s);
  EXPECT_EQ(to.column(u"CL_ASMT_AMT"_s).cellValue(0), u"$90.00"_s);
  EXPECT_EQ(to.column(u"BAL_DUE_AMT"_s).cellValue(0), u"$90.00"_s);
  EXPECT_EQ(to.column(u"REINSTATE"_s).cellValue(0), QString());
  EXPECT_EQ(to.column(u"LIC_PRCHS_OPTN_IND"_s).cellValue(0), u"Y"_s);
  // Reinstated again before the account is read anew, it owes what it owed when it was removed.
  screen().setBalance(u"100.00"_s);
  mark(A::AdjustedGrid, 0);
  EXPECT_EQ(screen().m_balanceAfter.caption(), u"$160.00"_s);
}

}  // namespace
}  // namespace adjustacc::ardetail::testing

namespace adjustacc::ardetail::testing {
namespace {

// Removing a License Purchase Option fee asks for the option's particulars before anything is sent.
TEST_F(AccDetailTest, AnOptionFeeRemovalSendsTheOptionOrNothingWhenItIsCancelled) {
  open({assessment(u"A"_s, u"F09"_s, u"90.00"_s, u"2024-01-10"_s, u"Y"_s), assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  mark(A::AvailableGrid, 0);
  enter();
  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& option = dynamic_cast<QORVA_LicPurchOpt&>(form);
    option.mCmd[QORVA_LicPurchOpt::CancelButton].click();
  });
  screen().SaveData();
  EXPECT_EQ(m_set.statusBar.text(), u"License Purchase Option did not save. Save Request canceled.");
  EXPECT_EQ(m_set.link.requestCount(), 0);
  EXPECT_EQ(screen().SaveState(), QString());

  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& option = dynamic_cast<QORVA_LicPurchOpt&>(form);
    option.mRdo[QORVA_LicPurchOpt::OutOfState].userChoose();
    option.mTxt[QORVA_LicPurchOpt::Comments].setText(u"Bought in Vermont"_s);
    option.mCmd[QORVA_LicPurchOpt::SaveButton].click();
  });
  screen().SaveData();
  ASSERT_EQ(m_set.link.requestCount(), 1);
  const messaging::Request request = m_set.link.lastRequest();
  ASSERT_EQ(request.records.size(), 3);
  EXPECT_EQ(request.records[0].name, u"CTTNADTNINFO");
  const messaging::SaveRecord& option = request.records[0].records.first();
  EXPECT_EQ(option.field(u"ACTION"_s), u"UPD"_s);
  EXPECT_EQ(option.field(u"PRCHS_OPTN_ST_CD"_s), u"1"_s);
  EXPECT_EQ(option.field(u"PRCHS_OPTN_TXT"_s), u"Bought in Vermont"_s);
  EXPECT_EQ(request.records[1].name, u"ADJUSTAR");
  EXPECT_EQ(request.records[2].name, u"ASSESSMENT");
  const messaging::SaveRecord& removed = request.records[2].records.first();
  EXPECT_EQ(removed.field(u"LIC_PRCHS_OPTN_IND"_s), u"Y"_s);
  EXPECT_EQ(removed.field(u"AC_ASMT_AMT"_s), u"90.00"_s);
  EXPECT_FALSE(removed.hasField(u"CL_ASMT_AMT"_s));
}

}  // namespace
}  // namespace adjustacc::ardetail::testing

namespace adjustacc::ardetail::testing {
namespace {

// "Account Activity" asks for the log; its reply opens the activity screen, whose added rows wait for the
// detail screen's save - made at once when nothing else was entered.
TEST_F(AccDetailTest, ActivityRowsAddedOnTheLogAreSavedByTheDetailScreen) {
  open({assessment(u"A"_s, u"F20"_s, u"25.00"_s)});
  screen().mCmdButton[A::AccountActivityButton].click();
  const messaging::Request asked = m_set.link.lastRequest();
  EXPECT_EQ(asked.params, (QList<messaging::RequestParameter>{
                              {u"MARVENTO"_s, u"key:ACCT_RCVBL_NBR"_s, u"="_s, u"1000011"_s},
                              {u"MARVENTO"_s, u"key:ACCT_RCVBL_TYP_CD"_s, u"="_s, u"C"_s},
                              {u"MARVENTO"_s, u"key:THIN"_s, u"="_s, u"YES"_s}}));
  EXPECT_EQ(m_set.statusBar.text(), u"Requesting Account Activity for CITATION ENF001 number 1000011");
  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& log = dynamic_cast<activity::QORVA_Activity&>(form);
    EXPECT_EQ(log.mSdgActivity.rows(), 1);
    log.mFtcboActivityCode.setCode(u"CAL"_s);
    log.mTxtComment.setText(u"Customer called about the penalty"_s);
    log.mCmdActivity[activity::QORVA_Activity::AddButton].click();
    log.mCmdActivity[activity::QORVA_Activity::SaveButton].click();
  });
  answer(testsupport::replyWith(
      {{u"ACCOUNTACTIVITY"_s,
        testsupport::section({u"ACTVTY_SEQ_NBR"_s, u"ACTVTY_DT"_s, u"ACCT_ACTVTY_CD"_s, u"ACTVTY_CMMT_TXT"_s,
                              u"LST_UPDT_USER_ID"_s, u"ACTION"_s, u"ROW_VRSN_NBR"_s},
                             {{u"1"_s, u"2024-02-01"_s, u"CAL"_s, u"First call"_s, u"OFC9"_s, QVariant(), u"3"_s}})}}));
  ASSERT_TRUE(screen().DataChanged());

  screen().SaveData();
  ASSERT_EQ(screen().SaveState(), u"SAVEPENDING") << m_set.ui.lastBox().text.toStdString();
  const messaging::Request saved = m_set.link.lastRequest();
  ASSERT_EQ(saved.records.size(), 1);
  EXPECT_EQ(saved.records[0].name, u"ACCOUNTACTIVITY");
  const messaging::SaveRecord& added = saved.records[0].records.first();
  EXPECT_EQ(added.field(u"ACTION"_s), u"ADD"_s);
  EXPECT_EQ(added.field(u"ACCT_RCVBL_NBR"_s), u"1000011"_s);
  EXPECT_EQ(added.field(u"ACCT_CK_DGT_NBR"_s), u"5"_s);
  EXPECT_EQ(added.field(u"ACCT_ACTVTY_CD"_s), u"CAL"_s);
  EXPECT_EQ(added.field(u"ACTVTY_CMMT_TXT"_s), u"Customer called about the penalty"_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Saving Account Activity for CITATION ENF001 number 1000011");

  answer(testsupport::replyWith({}));
  EXPECT_TRUE(screen().AccountChanged());
  EXPECT_FALSE(screen().DataChanged());  // taken by the save
}

}  // namespace
}  // namespace adjustacc::ardetail::testing
