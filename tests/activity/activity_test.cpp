// The Account Activity screen: the log as it is shown, the checks of an entry in their order, adding and changing
// rows with the marks the detail screen saves, the rights on system rows and other officers' rows, the filter
// texts, the caption and the way the screen closes.
#include "activityfixture.h"

#include <functional>

namespace adjustacc::activity::testing {
namespace {

using platform::MsgAnswer;
using platform::MsgButtons;
using platform::MsgIcon;

const QDate kToday(2024, 3, 7);

TEST_F(ActivityTest, TheLogShowsNewestFirstWithCodeDescriptionsAndOfficersNames) {
  open();
  QStringList order;
  for (int row = 0; row < rows().recordCount(); ++row) {
    order.append(value(row, u"ACTVTY_SEQ_NBR"_s).toString());
  }
  EXPECT_EQ(order, (QStringList{u"1"_s, u"3"_s, u"4"_s, u"2"_s}));
  const platform::Grid& grid = screen().mSdgActivity;
  EXPECT_EQ(grid.column(u"Description"_s).cellValue(rowOf(u"3"_s)), u"PAYMENT POSTED"_s);
  EXPECT_EQ(grid.column(u"Name"_s).cellValue(rowOf(u"1"_s)), u"Pat Officer"_s);
  // Another officer by the name the host sent; a system row, which has none, by the id it was written under.
  EXPECT_EQ(grid.column(u"Name"_s).cellValue(rowOf(u"2"_s)), u"Dana Reyes"_s);
  EXPECT_EQ(grid.column(u"Name"_s).cellValue(rowOf(u"3"_s)), u"BATCH"_s);
  EXPECT_EQ(m_set.codeTables.queries().size(), 2);
  EXPECT_TRUE(m_set.codeTables.queries().at(0).contains(u"CD_TBL_ID = 'COLLECTN-USER'"_s));
  EXPECT_TRUE(m_set.codeTables.queries().at(1).contains(u"CD_TBL_ID = 'COLLECTN'"_s));
  EXPECT_FALSE(screen().mCmdActivity[A::SaveButton].isEnabled());
  EXPECT_TRUE(reportedErrors().isEmpty());
}

TEST_F(ActivityTest, ThePickersStartAtTheFirstDayOfTheLogAndTodayAndRefuseEarlierDays) {
  open();
  EXPECT_EQ(picker(A::FromDate).text(), u"01/27/1997"_s);
  EXPECT_EQ(picker(A::ToDate).text(), u"03/07/2024"_s);
  EXPECT_EQ(picker(A::EntryDate).text(), u"03/07/2024"_s);
  for (const int index : {A::FromDate, A::ToDate, A::EntryDate}) {
    EXPECT_EQ(picker(index).minDate(), QDate(1997, 1, 27));
  }
  EXPECT_FALSE(picker(A::EntryDate).setDate(QDate(1997, 1, 26)));
  EXPECT_TRUE(picker(A::EntryDate).setDate(QDate(1997, 1, 27)));
}

// --- the checks ------------------------------------------------------------------------------------------------

struct CheckCase {
  const char* name;
  std::function<void(ActivityTest&)> enter;
  bool adding;
  QString expected;
};

class CheckEditsTest : public ActivityTest, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(CheckEditsTest, RulesRunInTheirOrderWithTheirExactMessages) {
  const CheckCase& c = GetParam();
  open();
  c.enter(*this);
  EXPECT_EQ(screen().CheckEdits(c.adding), c.expected);
  EXPECT_TRUE(reportedErrors().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Activity, CheckEditsTest,
    ::testing::Values(
        CheckCase{"TheFirstDayOfTheLogPasses",
                  [](ActivityTest& fixture) { fixture.enter(QDate(1997, 1, 27), u"CALL"_s, u"Old note"_s); }, true,
                  QString()},
        CheckCase{"TheDayBeforeIsRefused",
                  [](ActivityTest& fixture) {
                    fixture.picker(A::EntryDate).setMinDate(QDate(1990, 1, 1));
                    fixture.enter(QDate(1997, 1, 26), u"CALL"_s, u"Old note"_s);
                  },
                  true, u" Date can not be less than 1/27/1997\r\n"_s},
        CheckCase{"NoDateAtAllIsBeforeTheLog",
                  [](ActivityTest& fixture) {
                    fixture.enter(kToday, u"CALL"_s, u"Note"_s);
                    fixture.picker(A::EntryDate).clear();
                  },
                  true, u" Date can not be less than 1/27/1997\r\n"_s},
        CheckCase{"TomorrowNoCodeAndABlankComment",
                  [](ActivityTest& fixture) { fixture.enter(kToday.addDays(1), QString(), u"   "_s); }, true,
                  u" Date can not be greater than current date\r\n Code Description must be selected\r\n"
                  u" Comment must be entered.\r\n"_s},
        CheckCase{"ACodeOfficersMayNotChoose",
                  [](ActivityTest& fixture) { fixture.enter(kToday, u"PAY"_s, u"Note"_s); }, false,
                  u" Code Description must be selected\r\n"_s},
        CheckCase{"TheOfficersOwnEntryAgainWhenAdding",
                  [](ActivityTest& fixture) { fixture.enter(QDate(2024, 3, 1), u"call"_s, u" Left a message  "_s); },
                  true, u" Can not add duplicate information\r\n"_s},
        CheckCase{"TheSameEntryWhenUpdatingIsNotTested",
                  [](ActivityTest& fixture) { fixture.enter(QDate(2024, 3, 1), u"CALL"_s, u"Left a message"_s); },
                  false, QString()},
        CheckCase{"AnotherOfficersEntryIsNoDuplicate",
                  [](ActivityTest& fixture) { fixture.enter(QDate(2024, 2, 15), u"LTR"_s, u"Demand letter sent"_s); },
                  true, QString()},
        CheckCase{"AnotherDayIsNoDuplicate",
                  [](ActivityTest& fixture) { fixture.enter(QDate(2024, 3, 2), u"CALL"_s, u"Left a message"_s); }, true,
                  QString()}),
    [](const ::testing::TestParamInfo<CheckCase>& param) { return std::string(param.param.name); });

TEST_F(ActivityTest, ARefusedEntryIsShownOnceAndLeavesTheRowsAndTheFilterAsTheyWere) {
  open();
  enter(kToday.addDays(1), u"CALL"_s, u"Note"_s);
  EXPECT_TRUE(click(A::AddButton));
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().text, u" Date can not be greater than current date\r\n"_s);
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_EQ(m_set.ui.lastBox().title, u"Adjust Account"_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Error(s) found"_s);
  EXPECT_EQ(rows().recordCount(), 4);
  EXPECT_FALSE(picker(A::FromDate).isEmpty());
  EXPECT_FALSE(screen().mCmdActivity[A::SaveButton].isEnabled());
  EXPECT_TRUE(m_set.fieldMarking.isMarked(picker(A::EntryDate)));
}

// --- adding and changing rows ------------------------------------------------------------------------------------

TEST_F(ActivityTest, AnAddedRowCarriesTheAccountTheOfficerAndADDAndGoesBackWithTheSave) {
  open();
  enter(kToday, u"LTR"_s, u"  Second letter  "_s);
  ASSERT_TRUE(click(A::AddButton));
  EXPECT_EQ(m_set.statusBar.text(), u"Account activity information was added to the active window."_s);
  ASSERT_EQ(rows().recordCount(), 5);
  // Newest first: today's row leads the list.
  EXPECT_EQ(value(0, u"ACTION"_s), u"ADD"_s);
  EXPECT_EQ(value(0, u"ACCT_RCVBL_NBR"_s), u"1000011"_s);
  EXPECT_EQ(value(0, u"ACCT_CK_DGT_NBR"_s), u"5"_s);
  EXPECT_EQ(value(0, u"ACCT_RCVBL_TYP_CD"_s), u"C"_s);
  EXPECT_EQ(value(0, u"ACTVTY_DT"_s), u"2024-03-07"_s);
  EXPECT_EQ(value(0, u"ACCT_ACTVTY_CD"_s), u"LTR"_s);
  EXPECT_EQ(value(0, u"ACTVTY_CMMT_TXT"_s), u"Second letter"_s);
  EXPECT_EQ(value(0, u"LST_UPDT_USER_ID"_s), u"OFC7"_s);
  EXPECT_TRUE(screen().mCmdActivity[A::SaveButton].isEnabled());
  EXPECT_TRUE(picker(A::FromDate).isEmpty());

  ASSERT_TRUE(click(A::SaveButton));
  EXPECT_TRUE(screen().SaveChange());
  EXPECT_FALSE(screen().isVisible());
  const messaging::RecordSet changed = screen().changedRows();
  ASSERT_EQ(changed.recordCount(), 1);
  EXPECT_EQ(changed.value(u"ACTVTY_CMMT_TXT"_s), u"Second letter"_s);
  EXPECT_TRUE(reportedErrors().isEmpty());
}

TEST_F(ActivityTest, TheSameEntryCannotBeAddedTwice) {
  open();
  enter(kToday, u"CALL"_s, u"Promised to pay"_s);
  ASSERT_TRUE(click(A::AddButton));
  ASSERT_TRUE(click(A::AddButton));
  EXPECT_EQ(m_set.ui.boxTexts(), QStringList{u" Can not add duplicate information\r\n"_s});
  EXPECT_EQ(rows().recordCount(), 5);
}

// The detail screen keeps what an earlier visit handed back until it is saved; the next visit shows it again.
TEST_F(ActivityTest, ChangesOfAnEarlierVisitAreShownAgainAndHandedBackAgain) {
  open();
  choose(rowOf(u"1"_s));
  screen().mTxtComment.setText(u"Left a second message"_s);
  ASSERT_TRUE(click(A::UpdateButton));
  ASSERT_TRUE(click(A::ClearEntryButton));
  enter(kToday, u"LTR"_s, u"Letter handed over"_s);
  ASSERT_TRUE(click(A::AddButton));
  const messaging::RecordSet earlier = screen().changedRows();
  ASSERT_EQ(earlier.recordCount(), 2);

  m_screen = std::make_unique<A>(m_set.services);
  m_screen->setARNumber(u"1000011-5"_s);
  m_screen->setARType(u"C"_s);
  m_screen->LoadActivity(testsupport::replyWith({{u"ACCOUNTACTIVITY"_s, logRows()}}));
  m_screen->keepChanges(earlier);
  m_screen->setVisible(true);
  ASSERT_EQ(rows().recordCount(), 5);
  EXPECT_EQ(value(rowOf(u"1"_s), u"ACTVTY_CMMT_TXT"_s), u"Left a second message"_s);
  EXPECT_EQ(value(rowOf(u"1"_s), u"ACTION"_s), u"UPD"_s);
  EXPECT_EQ(value(0, u"ACTVTY_CMMT_TXT"_s), u"Letter handed over"_s);  // newest first
  EXPECT_EQ(value(0, u"ACTION"_s), u"ADD"_s);
  // The entry is still the officer's own: typed again, it is a duplicate.
  enter(kToday, u"LTR"_s, u"Letter handed over"_s);
  click(A::AddButton);
  EXPECT_EQ(m_set.ui.boxTexts().last(), u" Can not add duplicate information\r\n"_s);
  EXPECT_TRUE(screen().mCmdActivity[A::SaveButton].isEnabled());
  ASSERT_TRUE(click(A::SaveButton));
  EXPECT_TRUE(screen().SaveChange());
  EXPECT_EQ(screen().changedRows().recordCount(), 2);
}

// The officer's id on a row is the same id whatever its case, as it is everywhere else on the screen.
TEST_F(ActivityTest, AnEntryOfTheOfficerUnderTheIdInAnotherCaseIsADuplicate) {
  open();
  const int row = rowOf(u"1"_s);
  ASSERT_GE(row, 0);
  ASSERT_TRUE(rows().updateAt(rows().bookmarkAt(row), rows().fieldIndex(u"LST_UPDT_USER_ID"_s), u"ofc7"_s));
  enter(QDate(2024, 3, 1), u"CALL"_s, u"Left a message"_s);
  click(A::AddButton);
  EXPECT_EQ(m_set.ui.boxTexts(), QStringList{u" Can not add duplicate information\r\n"_s});
  EXPECT_EQ(rows().recordCount(), 4);
  // Another officer's entry stays no duplicate.
  ASSERT_TRUE(rows().updateAt(rows().bookmarkAt(row), rows().fieldIndex(u"LST_UPDT_USER_ID"_s), u"ofc77"_s));
  ASSERT_TRUE(click(A::AddButton));
  EXPECT_EQ(rows().recordCount(), 5);
}

TEST_F(ActivityTest, ChangingARowToEqualAnotherIsNotChecked) {
  open();
  choose(rowOf(u"4"_s));
  enter(QDate(2024, 3, 1), u"CALL"_s, u"Left a message"_s);  // row 1's entry
  ASSERT_TRUE(click(A::UpdateButton));
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_EQ(m_set.statusBar.text(), u"Account activity information was updated in the active window."_s);
  const int changed = rowOf(u"4"_s);
  EXPECT_EQ(value(changed, u"ACTVTY_DT"_s), u"2024-03-01"_s);
  EXPECT_EQ(value(changed, u"ACTVTY_CMMT_TXT"_s), u"Left a message"_s);
  EXPECT_EQ(value(changed, u"ACTION"_s), u"UPD"_s);
  EXPECT_TRUE(value(rowOf(u"1"_s), u"ACTION"_s).isNull());
  EXPECT_EQ(screen().changedRows().recordCount(), 1);
}

TEST_F(ActivityTest, ARowAddedHereStaysADDWhenItIsChanged) {
  open();
  enter(kToday, u"CALL"_s, u"First words"_s);
  ASSERT_TRUE(click(A::AddButton));
  choose(0);
  EXPECT_FALSE(screen().mFtcboActivityCode.isLocked());  // an added row may take another code
  EXPECT_EQ(screen().mTxtComment.text(), u"First words"_s);
  enter(kToday, u"LTR"_s, u"Better words"_s);
  ASSERT_TRUE(click(A::UpdateButton));
  ASSERT_EQ(rows().recordCount(), 5);
  EXPECT_EQ(value(0, u"ACTION"_s), u"ADD"_s);
  EXPECT_EQ(value(0, u"ACCT_ACTVTY_CD"_s), u"LTR"_s);
  EXPECT_EQ(value(0, u"ACTVTY_CMMT_TXT"_s), u"Better words"_s);
}

TEST_F(ActivityTest, UpdateWithNothingChangedMarksNothing) {
  open();
  choose(rowOf(u"1"_s));
  EXPECT_EQ(picker(A::EntryDate).date(), QDate(2024, 3, 1));
  EXPECT_EQ(screen().mFtcboActivityCode.selectedCode(), u"CALL"_s);
  ASSERT_TRUE(click(A::UpdateButton));
  EXPECT_EQ(m_set.statusBar.text(),
            u"Account activity information was not updated in the active window. Account activity was not changed."_s);
  EXPECT_EQ(screen().changedRows().recordCount(), 0);
  EXPECT_FALSE(screen().mCmdActivity[A::SaveButton].isEnabled());
}

// --- rights -----------------------------------------------------------------------------------------------------

struct RightsCase {
  const char* name;
  const char* sequence;
  bool updateRight;
  bool mayUpdate;
};

class RightsTest : public ActivityTest, public ::testing::WithParamInterface<RightsCase> {};

TEST_P(RightsTest, UpdateAndTheEntryFrameFollowTheChosenRow) {
  const RightsCase& c = GetParam();
  open(c.updateRight);
  choose(rowOf(QLatin1String(c.sequence)));
  EXPECT_EQ(screen().mCmdActivity[A::UpdateButton].isEnabled(), c.mayUpdate);
  EXPECT_EQ(screen().mFraAddUpdate.isEnabled(), c.mayUpdate);
  EXPECT_EQ(screen().mCmdActivity[A::UpdateButton].click(), c.mayUpdate);
  EXPECT_FALSE(screen().mCmdActivity[A::AddButton].isEnabled());
  // A host row keeps its code.
  EXPECT_TRUE(screen().mFtcboActivityCode.isLocked());
}

INSTANTIATE_TEST_SUITE_P(Activity, RightsTest,
                         ::testing::Values(RightsCase{"OwnRowWithoutTheRight", "1", false, true},
                                           RightsCase{"AnotherOfficersRowWithoutTheRight", "2", false, false},
                                           RightsCase{"AnotherOfficersRowWithTheRight", "2", true, true},
                                           RightsCase{"ASystemRowWithoutTheRight", "3", false, false},
                                           RightsCase{"ASystemRowEvenWithTheRight", "3", true, false}),
                         [](const ::testing::TestParamInfo<RightsCase>& param) {
                           return std::string(param.param.name);
                         });

TEST_F(ActivityTest, ClearingTheEntryGivesAddBackAndForgetsTheChosenRow) {
  open();
  choose(rowOf(u"2"_s));
  ASSERT_FALSE(screen().mFraAddUpdate.isEnabled());
  // Clear (5) sits in the disabled frame; Search clears the entry as well.
  EXPECT_FALSE(click(A::ClearEntryButton));
  ASSERT_TRUE(click(A::SearchButton));
  EXPECT_TRUE(screen().mFraAddUpdate.isEnabled());
  EXPECT_TRUE(screen().mCmdActivity[A::AddButton].isEnabled());
  EXPECT_FALSE(screen().mFtcboActivityCode.isLocked());
  EXPECT_TRUE(screen().mFtcboActivityCode.isEmpty());
  EXPECT_TRUE(screen().mTxtComment.text().isEmpty());
  EXPECT_EQ(picker(A::EntryDate).date(), kToday);
  EXPECT_TRUE(screen().mSdgActivity.selectedRows().isEmpty());
}

// --- the filter ----------------------------------------------------------------------------------------------------

TEST_F(ActivityTest, TheFilterTextsAsTheyAreWritten) {
  open();
  EXPECT_EQ(rows().filter(), u"ACTVTY_DT >= #01/27/1997# and ACTVTY_DT <=  #03/07/2024#"_s);
  EXPECT_EQ(rows().recordCount(), 4);

  screen().mFtcboFilterCode.setText(u"CALL"_s);
  picker(A::FromDate).setDate(QDate(2024, 2, 1));
  picker(A::ToDate).setDate(QDate(2024, 2, 29));
  ASSERT_TRUE(click(A::SearchButton));
  EXPECT_EQ(rows().filter(), u"ACCT_ACTVTY_CD = 'CALL' and ACTVTY_DT >= #02/01/2024# and ACTVTY_DT <=  #02/29/2024#"_s);
  ASSERT_EQ(rows().recordCount(), 1);
  EXPECT_EQ(value(0, u"ACTVTY_SEQ_NBR"_s), u"4"_s);

  picker(A::FromDate).setDate(QDate(2024, 3, 1));
  ASSERT_TRUE(click(A::SearchButton));
  EXPECT_EQ(m_set.ui.boxTexts(), QStringList{u"From Date must be less than or equal to To Date"_s});
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
  EXPECT_EQ(rows().recordCount(), 1);  // the filter in force stays

  ASSERT_TRUE(click(A::ClearFilterButton));
  EXPECT_TRUE(picker(A::FromDate).isEmpty());
  EXPECT_TRUE(picker(A::ToDate).isEmpty());
  EXPECT_TRUE(screen().mFtcboFilterCode.isEmpty());
  ASSERT_TRUE(click(A::SearchButton));
  EXPECT_EQ(rows().filter(), QString());
  EXPECT_EQ(rows().recordCount(), 4);
}

TEST_F(ActivityTest, LookingForChangesShowsTheWholeLogAgain) {
  open();
  screen().mFtcboFilterCode.setText(u"LTR"_s);
  ASSERT_TRUE(click(A::SearchButton));
  ASSERT_EQ(rows().recordCount(), 1);
  EXPECT_FALSE(screen().DataChanged());
  EXPECT_EQ(rows().filter(), QString());
  EXPECT_EQ(rows().recordCount(), 4);
}

TEST_F(ActivityTest, AnEntryTypedAgainIsReportedAsADuplicateWhileItIsTyped) {
  open();
  enter(QDate(2024, 3, 1), u"CALL"_s, u"Left a messag"_s);
  EXPECT_NE(m_set.statusBar.text(), u"Duplicate entry exists"_s);
  ASSERT_TRUE(screen().mTxtComment.userType(u"e"_s));
  EXPECT_EQ(m_set.statusBar.text(), u"Duplicate entry exists"_s);
  EXPECT_EQ(rows().recordCount(), 4);
  EXPECT_EQ(rows().filter(), u"ACTVTY_DT >= #01/27/1997# and ACTVTY_DT <=  #03/07/2024#"_s);
}

// --- caption -----------------------------------------------------------------------------------------------------

struct CaptionCase {
  const char* name;
  std::function<void(A&)> handOver;
  QString expected;
};

class CaptionTest : public ActivityTest, public ::testing::WithParamInterface<CaptionCase> {};

TEST_P(CaptionTest, TheCaptionFollowsTheLastPropertySet) {
  A screen(m_set.services);
  GetParam().handOver(screen);
  EXPECT_EQ(screen.caption(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Activity, CaptionTest,
                         ::testing::Values(CaptionCase{"TypeAfterNumber",
                                                       [](A& s) {
                                                         s.setARNumber(u"1000011-5"_s);
                                                         s.setARType(u"C"_s);
                                                       },
                                                       u"Account Activity for CITATION ENF001 1000011-5"_s},
                                           CaptionCase{"InstallmentTypeAfterNumber",
                                                       [](A& s) {
                                                         s.setARNumber(u"2000042-7"_s);
                                                         s.setARType(u" P "_s);
                                                       },
                                                       u"Account Activity for Installment # 2000042-7"_s},
                                           CaptionCase{"NumberAfterInstallmentType",
                                                       [](A& s) {
                                                         s.setARType(u"P"_s);
                                                         s.setARNumber(u"2000042-7"_s);
                                                       },
                                                       u"Account Activity for PAYMENT PLAN 2000042-7"_s}),
                         [](const ::testing::TestParamInfo<CaptionCase>& param) {
                           return std::string(param.param.name);
                         });

// --- closing -----------------------------------------------------------------------------------------------------

TEST_F(ActivityTest, ClosingWithoutChangesAsksNothing) {
  open();
  ASSERT_TRUE(click(A::CloseButton));
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_FALSE(screen().isVisible());
  EXPECT_FALSE(screen().SaveChange());
}

struct CloseCase {
  const char* name;
  MsgAnswer answer;
  bool visible;
  bool saveChange;
};

class CloseTest : public ActivityTest, public ::testing::WithParamInterface<CloseCase> {};

TEST_P(CloseTest, ClosingWithChangesAsksWhetherToSave) {
  const CloseCase& c = GetParam();
  open();
  enter(kToday, u"CALL"_s, u"Promised to pay"_s);
  ASSERT_TRUE(click(A::AddButton));
  screen().setSaveChange(true);  // as an earlier showing may have left it
  m_set.ui.queueAnswer(c.answer);
  ASSERT_TRUE(click(A::CloseButton));
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  const platform::ScriptedUi::Box box = m_set.ui.lastBox();
  EXPECT_EQ(box.text, u"Information on the active window has changed. Would you like to save your changes?"_s);
  EXPECT_EQ(box.buttons, MsgButtons::YesNoCancel);
  EXPECT_EQ(box.icon, MsgIcon::Question);
  EXPECT_EQ(screen().isVisible(), c.visible);
  EXPECT_EQ(screen().SaveChange(), c.saveChange);
  EXPECT_EQ(screen().changedRows().recordCount(), 1);
  EXPECT_TRUE(m_set.ui.scriptErrors().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Activity, CloseTest,
                         ::testing::Values(CloseCase{"Yes", MsgAnswer::Yes, false, true},
                                           CloseCase{"No", MsgAnswer::No, false, false},
                                           CloseCase{"CancelStaysOpen", MsgAnswer::Cancel, true, true}),
                         [](const ::testing::TestParamInfo<CloseCase>& param) {
                           return std::string(param.param.name);
                         });

}  // namespace
}  // namespace adjustacc::activity::testing
