// License Purchase Option: loading it empty, every rule of its check in order, the keys and texts of its
// fields, the troop/district split and check, how Save and Cancel close it, and the values its opener sends.
#include "support/screentest.h"
#include "support/serviceset.h"

#include "ardetail/licpurchopt.h"
#include "platform/modmessagetitle.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace adjustacc::ardetail {
namespace {

using namespace Qt::Literals::StringLiterals;
using platform::MsgAnswer;
using platform::MsgButtons;
using platform::MsgIcon;
using Screen = QORVA_LicPurchOpt;

// What the clerk entered; an option of -1 is neither.
struct Entry {
  int option = -1;
  QString plate;
  QDate date;
  QTime time;
  QString troopDistrict;
  QString weight;
  QString amount;
  QString comment;
};

const QDate kBought(2024, 3, 1);
const QTime kBoughtAt(14, 5);

Entry inStateEntry() {
  return {.option = Screen::InState, .plate = u"ABC-123"_s, .date = kBought, .time = kBoughtAt,
          .troopDistrict = u"A12"_s, .weight = u"4500"_s, .amount = u"1234.50"_s, .comment = {}};
}

// Every data row below is named by its `name`, in the test's name and in failure messages.
template <typename Case>
  requires std::is_same_v<decltype(Case::name), const char*>
void PrintTo(const Case& c, std::ostream* os) {
  *os << c.name;
}

struct RowName {
  template <typename Case>
  std::string operator()(const ::testing::TestParamInfo<Case>& row) const {
    return row.param.name;
  }
};

// Only an option and a comment.
Entry chosen(int option, const QString& comment = {}) {
  Entry entry;
  entry.option = option;
  entry.comment = comment;
  return entry;
}

class LicPurchOptTest : public ::testing::Test {
protected:
  LicPurchOptTest() {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    m_set.codes.add(u"TROOP"_s, u"A"_s, u"TROOP A"_s);
    m_set.codes.add(u"TRPDSTRCT"_s, u"A12"_s, u"TROOP A DISTRICT 12"_s);
    m_screen.setVisible(true);
  }

  void enter(const Entry& entry) { enterInto(m_screen, entry); }

  static void enterInto(Screen& screen, const Entry& entry) {
    if (entry.option >= 0) {
      screen.mRdo[entry.option].setValue(true);
    }
    screen.mTxt[Screen::Plate].setText(entry.plate);
    if (entry.date.isValid()) {
      screen.QORVA_DTP1[Screen::DatePurchased].setDate(entry.date);
    }
    if (entry.time.isValid()) {
      screen.QORVA_DTP1[Screen::TimePurchased].setTime(entry.time);
    }
    screen.mTxt[Screen::TroopDistrict].setText(entry.troopDistrict);
    screen.mTxt[Screen::Weight].setText(entry.weight);
    screen.mTxt[Screen::Amount].setText(entry.amount);
    screen.mTxt[Screen::Comments].setText(entry.comment);
  }

  // The inputs in the error colour, as "mTxt(2)".
  QStringList marked() {
    QStringList names;
    const auto note = [&](const platform::Control& control) {
      if (m_set.fieldMarking.isMarked(control)) {
        names.append(u"%1(%2)"_s.arg(control.name()).arg(control.index()));
      }
    };
    m_screen.mRdo.forEach([&](int, const platform::Control& c) { note(c); });
    m_screen.mTxt.forEach([&](int, const platform::Control& c) { note(c); });
    m_screen.QORVA_DTP1.forEach([&](int, const platform::Control& c) { note(c); });
    return names;
  }

  void markEverything() {
    m_screen.mRdo.forEach([&](int, platform::Control& c) { m_set.fieldMarking.markError(c); });
    m_screen.mTxt.forEach([&](int, platform::Control& c) { m_set.fieldMarking.markError(c); });
    m_screen.QORVA_DTP1.forEach([&](int, platform::Control& c) { m_set.fieldMarking.markError(c); });
  }

  testsupport::ServiceSet m_set;
  Screen m_screen{m_set.services};
};

TEST_F(LicPurchOptTest, LoadsEmptyWithPickersFrom1993AndNothingChanged) {
  Screen screen(m_set.services);
  screen.mTxt[Screen::Plate].setText(u"OLD"_s);  // left from before the screen is shown
  screen.setVisible(true);
  const platform::QORVA_DTP& date = screen.QORVA_DTP1[Screen::DatePurchased];
  const platform::QORVA_DTP& time = screen.QORVA_DTP1[Screen::TimePurchased];
  EXPECT_TRUE(date.isEmpty());
  EXPECT_TRUE(time.isEmpty());
  EXPECT_EQ(time.mode(), platform::QORVA_DTP::Mode::Time);
  EXPECT_EQ(date.minDate(), QDate(1993, 1, 1));
  EXPECT_FALSE(screen.mRdo[Screen::InState].value() || screen.mRdo[Screen::OutOfState].value());
  screen.mTxt.forEach([](int index, const platform::TextBox& box) {
    EXPECT_TRUE(box.text().isEmpty()) << index;
    EXPECT_FALSE(box.isPasteAllowed()) << "paste refused in mTxt(" << index << ")";
  });
  EXPECT_FALSE(screen.isChanged());
  EXPECT_TRUE(screen.CancelClicked());
}

TEST_F(LicPurchOptTest, EachInputOfTheClerkCountsAsAChange) {
  const QList<std::function<bool(Screen&)>> inputs{
      [](Screen& s) { return s.mRdo[Screen::OutOfState].userChoose(); },
      [](Screen& s) {
        return s.QORVA_DTP1[Screen::TimePurchased].userSetDateTime(QDateTime(QDate(1899, 12, 30), kBoughtAt));
      },
      [](Screen& s) { return s.mTxt[Screen::Comments].userType(u"x"_s); },
      [](Screen& s) { return s.mTxt[Screen::Amount].userType(u"5"_s); }};
  for (int input = 0; input < inputs.size(); ++input) {
    Screen screen(m_set.services);
    screen.setVisible(true);
    ASSERT_TRUE(inputs[input](screen));
    EXPECT_TRUE(screen.isChanged()) << "input " << input;
  }
}

// --- CheckEdit --------------------------------------------------------------------------------------------

struct CheckCase {
  const char* name;
  Entry entry;
  QString errors;  // the whole error text, empty when the entry passes
  QStringList marked;
};

Entry with(Entry entry, void (*change)(Entry&)) {
  change(entry);
  return entry;
}

class LicPurchOptCheckEdit : public LicPurchOptTest, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(LicPurchOptCheckEdit, FindsTheErrorsInOrderAndMarksTheirInputs) {
  const CheckCase& c = GetParam();
  enter(c.entry);
  markEverything();  // marks of an earlier check are put back first
  m_set.ui.clearRecord();

  EXPECT_EQ(m_screen.CheckEdit(), c.errors.isEmpty());
  EXPECT_EQ(m_screen.errorText(), c.errors);
  EXPECT_EQ(marked(), c.marked);
  EXPECT_EQ(m_set.ui.boxCount(), 0) << "CheckEdit itself shows nothing";
}

const QString kAllInState =
    u"Plate is required\r\nDate Purchased is required\r\nTime Purchased is required\r\n"
    u"Troop/District is required\r\nWeight is required\r\nAmount required for In-State LPO\r\n"_s;
const QStringList kAllInStateMarks{u"mTxt(0)"_s, u"mTxt(1)"_s, u"mTxt(2)"_s, u"mTxt(4)"_s, u"QORVA_DTP1(0)"_s,
                                   u"QORVA_DTP1(1)"_s};

INSTANTIATE_TEST_SUITE_P(
    Rules, LicPurchOptCheckEdit,
    ::testing::Values(
        CheckCase{"NothingEntered", {},
                  u"In or Out of State is required\r\nEnter a Comment or the In-State Fields\r\n"_s,
                  {u"mRdo(0)"_s, u"mRdo(1)"_s, u"mTxt(3)"_s}},
        CheckCase{"NoOptionButEveryInStateField", with(inStateEntry(), [](Entry& e) { e.option = -1; }),
                  u"In or Out of State is required\r\n"_s, {u"mRdo(0)"_s, u"mRdo(1)"_s}},
        CheckCase{"InStateComplete", inStateEntry(), {}, {}},
        CheckCase{"InStateNothing", chosen(Screen::InState),
                  u"Enter a Comment or the In-State Fields\r\n"_s + kAllInState,
                  QStringList{u"mTxt(0)"_s, u"mTxt(1)"_s, u"mTxt(2)"_s, u"mTxt(3)"_s, u"mTxt(4)"_s,
                              u"QORVA_DTP1(0)"_s, u"QORVA_DTP1(1)"_s}},
        CheckCase{"InStateCommentOnly", chosen(Screen::InState, u"bought at the scale"_s),
                  kAllInState, kAllInStateMarks},
        CheckCase{"InStateAmountZero", with(inStateEntry(), [](Entry& e) { e.amount = u"0.00"_s; }),
                  u"Amount required for In-State LPO\r\n"_s, {u"mTxt(2)"_s}},
        CheckCase{"InStateAmountZeroAsShown", with(inStateEntry(), [](Entry& e) { e.amount = u"$0.00"_s; }),
                  u"Amount required for In-State LPO\r\n"_s, {u"mTxt(2)"_s}},
        CheckCase{"InStateAmountPointOnly", with(inStateEntry(), [](Entry& e) { e.amount = u"."_s; }),
                  u"Amount required for In-State LPO\r\n"_s, {u"mTxt(2)"_s}},
        CheckCase{"InStateAmountNoDollarValue", with(inStateEntry(), [](Entry& e) { e.amount = u"1,2"_s; }),
                  u"Amount must be a dollar value for In-State LPO\r\n"_s, {u"mTxt(2)"_s}},
        CheckCase{"InStateAmountAsShown", with(inStateEntry(), [](Entry& e) { e.amount = u"$1,234.50"_s; }), {}, {}},
        CheckCase{"InStateUnknownPair", with(inStateEntry(), [](Entry& e) { e.troopDistrict = u"A13"_s; }),
                  u"Troop/District is incorrect\r\n"_s, {u"mTxt(4)"_s}},
        CheckCase{"InStateTroopAlone", with(inStateEntry(), [](Entry& e) { e.troopDistrict = u"A"_s; }), {}, {}},
        CheckCase{"InStateMissingWeightAndUnknownPair",
                  with(inStateEntry(),
                       [](Entry& e) {
                         e.weight.clear();
                         e.troopDistrict = u"B7"_s;
                       }),
                  u"Troop/District is incorrect\r\nWeight is required\r\n"_s, {u"mTxt(1)"_s, u"mTxt(4)"_s}},
        CheckCase{"OutOfStateCommentOnly", chosen(Screen::OutOfState, u"bought in Ohio"_s), {}, {}},
        CheckCase{"OutOfStateNothing", chosen(Screen::OutOfState),
                  u"Enter a Comment or the In-State Fields\r\nComment required for Out-of-State LPO\r\n"_s,
                  {u"mTxt(3)"_s}},
        CheckCase{"OutOfStateInStateFieldsWithoutComment", with(inStateEntry(), [](Entry& e) {
                    e.option = Screen::OutOfState;
                    e.troopDistrict = u"Z9"_s;  // in-state fields are not checked out of state
                  }),
                  u"Comment required for Out-of-State LPO\r\n"_s, {u"mTxt(3)"_s}}),
    RowName());

// --- Save and Cancel ------------------------------------------------------------------------------------

TEST_F(LicPurchOptTest, SaveStaysOpenOnErrorsAndHandsBackAValidEntry) {
  Screen screen(m_set.services);
  m_set.ui.queueModal([this](platform::ModalForm& form) {
    auto& lpo = dynamic_cast<Screen&>(form);
    lpo.mRdo[Screen::InState].setValue(true);
    lpo.mTxt[Screen::Amount].setText(u"0.00"_s);
    EXPECT_TRUE(lpo.mCmd[Screen::SaveButton].click());
    EXPECT_TRUE(lpo.isVisible());
    ASSERT_EQ(m_set.ui.boxCount(), 1);
    EXPECT_EQ(m_set.ui.lastBox().text, u"Enter a Comment or the In-State Fields\r\n"_s + kAllInState);
    EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Exclamation);
    EXPECT_EQ(m_set.ui.lastBox().title, u"Adjust Account");
    EXPECT_EQ(m_set.statusBar.text(), u"Error(s) found");

    lpo.mRdo[Screen::OutOfState].setValue(true);
    lpo.mTxt[Screen::Comments].setText(u"bought in Ohio"_s);
    EXPECT_TRUE(lpo.mCmd[Screen::SaveButton].click());
  });
  screen.showModal();
  EXPECT_FALSE(m_set.ui.shownForms().constLast().hiddenByUi);
  EXPECT_FALSE(screen.isVisible());
  EXPECT_FALSE(screen.CancelClicked());
  EXPECT_EQ(m_set.ui.boxCount(), 1);
}

TEST_F(LicPurchOptTest, CancelOnAnUntouchedScreenAsksNothingAndReportsCanceled) {
  Screen screen(m_set.services);
  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& lpo = dynamic_cast<Screen&>(form);
    // Passing through the amount writes "$0.00": the screen's own formatting, not the clerk's change.
    lpo.mTxt[Screen::Amount].userFocusIn();
    lpo.mTxt[Screen::Amount].userFocusOut();
    EXPECT_EQ(lpo.mTxt[Screen::Amount].text(), u"$0.00");
    EXPECT_TRUE(lpo.mCmd[Screen::CancelButton].click());
  });
  screen.showModal();
  EXPECT_FALSE(m_set.ui.shownForms().constLast().hiddenByUi);
  EXPECT_TRUE(screen.CancelClicked());
  EXPECT_EQ(m_set.ui.boxCount(), 0);
}

TEST_F(LicPurchOptTest, AScreenClosedWithoutItsButtonsIsCanceled) {
  Screen screen(m_set.services);
  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& lpo = dynamic_cast<Screen&>(form);
    lpo.mRdo[Screen::OutOfState].setValue(true);
    lpo.mTxt[Screen::Comments].setText(u"bought in Ohio"_s);
  });
  screen.showModal();
  EXPECT_TRUE(m_set.ui.shownForms().constLast().hiddenByUi);
  EXPECT_TRUE(screen.CancelClicked());
}

struct CancelCase {
  const char* name;
  MsgAnswer answer;
  bool validEntry;
  bool staysOpen;
  bool canceled;
  int boxes;  // the question, and the error box when Yes finds errors
};

class LicPurchOptCancel : public LicPurchOptTest, public ::testing::WithParamInterface<CancelCase> {};

TEST_P(LicPurchOptCancel, AChangedScreenAsksWhetherToSave) {
  const CancelCase& c = GetParam();
  Screen screen(m_set.services);
  m_set.ui.queueAnswer(c.answer);
  m_set.ui.queueModal([&](platform::ModalForm& form) {
    auto& lpo = dynamic_cast<Screen&>(form);
    ASSERT_TRUE(lpo.mRdo[Screen::OutOfState].userChoose());
    if (c.validEntry) {
      ASSERT_TRUE(lpo.mTxt[Screen::Comments].userType(u"bought in Ohio"_s));
    }
    EXPECT_TRUE(lpo.mCmd[Screen::CancelButton].click());
    EXPECT_EQ(lpo.isVisible(), c.staysOpen);
  });
  screen.showModal();
  ASSERT_EQ(m_set.ui.boxCount(), c.boxes);
  const platform::ScriptedUi::Box question = m_set.ui.boxes().first();
  EXPECT_EQ(question.text, u"Information has changed. Would you like to save your changes?");
  EXPECT_EQ(question.buttons, MsgButtons::YesNoCancel);
  EXPECT_EQ(question.icon, MsgIcon::Question);
  EXPECT_EQ(question.title, u"Adjust Account");
  if (c.boxes == 2) {
    EXPECT_EQ(m_set.ui.lastBox().text,
              u"Enter a Comment or the In-State Fields\r\nComment required for Out-of-State LPO\r\n"_s);
  }
  EXPECT_EQ(m_set.ui.shownForms().constLast().hiddenByUi, c.staysOpen);
  EXPECT_EQ(screen.CancelClicked(), c.canceled);
  EXPECT_TRUE(m_set.ui.scriptErrors().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Answers, LicPurchOptCancel,
    ::testing::Values(CancelCase{"YesSavesAValidEntry", MsgAnswer::Yes, true, false, false, 1},
                      CancelCase{"YesShowsTheErrorsAndStays", MsgAnswer::Yes, false, true, true, 2},
                      CancelCase{"NoLeavesCanceled", MsgAnswer::No, true, false, true, 1},
                      CancelCase{"CancelStays", MsgAnswer::Cancel, true, true, true, 1}),
    RowName());

// --- keys and texts ------------------------------------------------------------------------------------------

struct KeyCase {
  const char* name;
  int box;
  const char16_t* typed;
  const char16_t* shown;
  int beeps;
};

class LicPurchOptKeys : public LicPurchOptTest, public ::testing::WithParamInterface<KeyCase> {};

TEST_P(LicPurchOptKeys, RefusedKeysBeepAndAreDropped) {
  const KeyCase& c = GetParam();
  ASSERT_TRUE(m_screen.mTxt[c.box].userType(QString::fromUtf16(c.typed)));
  EXPECT_EQ(m_screen.mTxt[c.box].text(), QString::fromUtf16(c.shown));
  EXPECT_EQ(m_set.ui.beepCount(), c.beeps);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, LicPurchOptKeys,
    ::testing::Values(KeyCase{"PlateLettersDigitsAndDash", Screen::Plate, u"ab-1 2/", u"ab-12", 2},
                      KeyCase{"WeightDigitsOnly", Screen::Weight, u"4.5t00", u"4500", 2},
                      KeyCase{"TroopDistrictUpperCased", Screen::TroopDistrict, u"a12", u"A12", 0},
                      KeyCase{"TroopDistrictOneTroopLetter", Screen::TroopDistrict, u"ab1-2", u"A12", 2},
                      KeyCase{"AmountDollarSignAndPoint", Screen::Amount, u"$1,234.50", u"$1,234.50", 0},
                      KeyCase{"AmountTwoDecimals", Screen::Amount, u"12.345", u"12.34", 1},
                      KeyCase{"AmountNoLetters", Screen::Amount, u"1a2", u"12", 1},
                      KeyCase{"AmountAboveTheLargest", Screen::Amount, u"99999999", u"9999999", 1},
                      KeyCase{"AmountTheLargest", Screen::Amount, u"9999999.99", u"9999999.99", 0},
                      KeyCase{"CommentAnything", Screen::Comments, u"a/b $ 1-2", u"a/b $ 1-2", 0}),
    RowName());

TEST_F(LicPurchOptTest, AnAmountThatIsNoAmountIsRevertedWithABeep) {
  platform::TextBox& amount = m_screen.mTxt[Screen::Amount];
  ASSERT_TRUE(amount.userType(u"12"_s));
  EXPECT_TRUE(amount.userSetText(u"10000000"_s));
  EXPECT_EQ(amount.text(), u"12");
  EXPECT_TRUE(amount.userSetText(u"12x"_s));
  EXPECT_EQ(amount.text(), u"12");
  EXPECT_EQ(m_set.ui.beepCount(), 2);
  EXPECT_TRUE(amount.userSetText(u"$9,999,999.99"_s));
  EXPECT_EQ(amount.text(), u"$9,999,999.99");
  EXPECT_EQ(m_set.ui.beepCount(), 2);
}

struct LeaveCase {
  const char* name;
  QString typed;
  QString shown;
};

class LicPurchOptAmountLeft : public LicPurchOptTest, public ::testing::WithParamInterface<LeaveCase> {};

TEST_P(LicPurchOptAmountLeft, LeavingTheAmountShowsItAsMoney) {
  const LeaveCase& c = GetParam();
  platform::TextBox& amount = m_screen.mTxt[Screen::Amount];
  ASSERT_TRUE(amount.userSetText(c.typed));
  amount.userFocusIn();
  amount.userFocusOut();
  EXPECT_EQ(amount.text(), c.shown);
}

INSTANTIATE_TEST_SUITE_P(Texts, LicPurchOptAmountLeft,
                         ::testing::Values(LeaveCase{"Empty", {}, u"$0.00"_s},
                                           LeaveCase{"Cents", u"1234.5"_s, u"$1,234.50"_s},
                                           LeaveCase{"AsShownAlready", u"$12.00"_s, u"$12.00"_s},
                                           LeaveCase{"NoAmountStaysForTheCheck", u"1,2"_s, u"1,2"_s},
                                           LeaveCase{"PointOnlyStaysForTheCheck", u"."_s, u"."_s}),
                         RowName());

// --- troop and district --------------------------------------------------------------------------------------

TEST_F(LicPurchOptTest, LowerCaseTroopDistrictSplitsIntoUpperCaseTroopAndDistrict) {
  platform::TextBox& field = m_screen.mTxt[Screen::TroopDistrict];
  ASSERT_TRUE(field.userType(u"a12"_s));
  EXPECT_EQ(field.text(), u"A12");
  const Screen::TroopAndDistrict parts = m_screen.GetTroopDistrict();
  EXPECT_EQ(parts.troop, u"A");
  EXPECT_EQ(parts.district, u"12");
  EXPECT_EQ(m_screen.StrTroop, u"A");
  EXPECT_EQ(m_screen.StrTroopDistrict, u"12");

  field.setText(u"  B"_s);
  m_screen.TroopDistrictSplit();
  EXPECT_EQ(m_screen.StrTroop, u"B");
  EXPECT_EQ(m_screen.StrTroopDistrict, QString());
  field.setText(QString());
  const Screen::TroopAndDistrict none = m_screen.GetTroopDistrict();
  EXPECT_TRUE(none.troop.isEmpty());
  EXPECT_TRUE(none.district.isEmpty());
}

TEST_F(LicPurchOptTest, LeavingTroopDistrictChecksItAgainstTheTroopTables) {
  platform::TextBox& field = m_screen.mTxt[Screen::TroopDistrict];
  ASSERT_TRUE(field.userType(u"a13"_s));
  field.userFocusIn();
  field.userFocusOut();
  EXPECT_TRUE(m_set.fieldMarking.isMarked(field));
  ASSERT_TRUE(field.userType(u"\b2"_s));
  field.userFocusIn();
  field.userFocusOut();
  EXPECT_FALSE(m_set.fieldMarking.isMarked(field));
  field.setText(QString());
  m_set.fieldMarking.markError(field);
  EXPECT_TRUE(m_screen.TroopDistrictCheck()) << "an empty field is left to CheckEdit";
  EXPECT_FALSE(m_set.fieldMarking.isMarked(field));
}

// The troop tables cannot be read: the check fails and is reported under the screen's old name.
class UnreadableCodes : public platform::CodeLookup {
public:
  QString description(const QString&, const QString&) override { throw std::runtime_error("code tables offline"); }
};

TEST_F(LicPurchOptTest, ErrorsAreReportedUnderTheFormsOldName) {
  UnreadableCodes codes;
  platform::TroopDistricts troops(codes);
  const platform::Services& s = m_set.services;
  platform::Services services{s.ui,          s.hostLink,   s.clock,     s.user,     s.session,
                              s.statusBar,   s.errors,     s.codes,     s.codeTables, s.keyFilters,
                              s.checkDigit,  s.formNumbers, troops,     s.numbers,  s.fieldMarking,
                              s.printing,    s.templates};
  Screen screen(services);
  screen.setVisible(true);
  enterInto(screen, inStateEntry());

  EXPECT_FALSE(screen.CheckEdit());
  EXPECT_EQ(screen.errorText(), u"Troop/District is incorrect\r\n");
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_TRUE(m_set.ui.lastBox().text.endsWith(u"Source: QORVA_LicPurchOptFrm.TroopDistrictCheck"))
      << m_set.ui.lastBox().text.toStdString();
}

// --- what the opener sends --------------------------------------------------------------------------------

struct WireCase {
  const char* name;
  Entry entry;
  LpoRecordValues values;
};

class LicPurchOptRecord : public LicPurchOptTest, public ::testing::WithParamInterface<WireCase> {};

TEST_P(LicPurchOptRecord, AnswersTheEntryInItsWireForm) {
  const WireCase& c = GetParam();
  enter(c.entry);
  EXPECT_EQ(m_screen.recordValues(), c.values);
}

INSTANTIATE_TEST_SUITE_P(
    Entries, LicPurchOptRecord,
    ::testing::Values(
        WireCase{"InState",
                 with(inStateEntry(),
                      [](Entry& e) {
                        e.amount = u"$1,234.50"_s;
                        e.troopDistrict = u" A12 "_s;
                        e.comment = u" paid at the scale "_s;
                      }),
                 {u"0"_s, u"ABC-123"_s, u"2024-03-01"_s, u"14:05"_s, u"A"_s, u"12"_s, u"4500"_s, u"1234.50"_s,
                  u"paid at the scale"_s}},
        WireCase{"AmountGetsItsCents", with(inStateEntry(), [](Entry& e) { e.amount = u"12.5"_s; }),
                 {u"0"_s, u"ABC-123"_s, u"2024-03-01"_s, u"14:05"_s, u"A"_s, u"12"_s, u"4500"_s, u"12.50"_s, {}}},
        WireCase{"OutOfStateCommentOnly", chosen(Screen::OutOfState, u"bought in Ohio"_s),
                 {u"1"_s, {}, {}, {}, {}, {}, {}, {}, u"bought in Ohio"_s}},
        WireCase{"NoOptionNoAmount", with({}, [](Entry& e) { e.amount = u"$"_s; }), {}}),
    RowName());

}  // namespace
}  // namespace adjustacc::ardetail
