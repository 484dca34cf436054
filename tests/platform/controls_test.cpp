// The simple controls: code box, date picker, timer, text box, options, frames, buttons, control arrays.
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/codetablesource.h"
#include "platform/controlarray.h"
#include "platform/datepicker.h"
#include "platform/frame.h"
#include "platform/keyfilters.h"
#include "platform/label.h"
#include "platform/memorycodelookup.h"
#include "platform/optionbutton.h"
#include "platform/textbox.h"
#include "platform/timer.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <ostream>

using adjustacc::messaging::Field;
using adjustacc::messaging::RecordSet;
using adjustacc::messaging::Result;
using adjustacc::platform::Button;
using adjustacc::platform::CodeTableSource;
using adjustacc::platform::ControlArray;
using adjustacc::platform::DatePicker;
using adjustacc::platform::Frame;
using adjustacc::platform::Label;
using adjustacc::platform::OptionButton;
using adjustacc::platform::QORVA_CodesCombo;
using adjustacc::platform::QORVA_DTP;
using adjustacc::platform::TextBox;
using adjustacc::platform::Timer;

namespace {

QString s(const char* text) { return QString::fromUtf8(text); }

// Answers every query with the same code-table rows, or with a failure; remembers the texts it ran.
class FakeCodeTables : public CodeTableSource {
public:
  Result<RecordSet> run(const QString& queryText) override {
    queries.append(queryText);
    if (!failure.isEmpty()) {
      return Result<RecordSet>::failure(failure);
    }
    return rows;
  }
  static RecordSet documentTypes() {
    RecordSet rs(QList<Field>{{s("CD_TBL_ID")}, {s("CD_TBL_CD")}, {s("CD_TBL_DES")}});
    rs.addNew({s("FORMDOC"), s("C"), s("CITATION")});
    rs.addNew({s("FORMDOC"), s("P"), s("PAYMENT PLAN")});
    rs.addNew({s("FORMDOC"), s("K"), s("CHECK NUMBER")});
    return rs;
  }
  RecordSet rows = documentTypes();
  QString failure;
  QStringList queries;
};

// A document-type box filled from the tables above.
class FilledCodesCombo : public ::testing::Test {
protected:
  void SetUp() override {
    box.setSource(&tables);
    ASSERT_TRUE(box.fill(s("q")));
  }
  FakeCodeTables tables;
  QORVA_CodesCombo box{s("mFtcboDocType")};
};

}  // namespace

// --- code box ----------------------------------------------------------------------------------------

TEST(CodesCombo, FillsThroughItsSourceAndChoosesTheDefaultCode) {
  FakeCodeTables tables;
  QORVA_CodesCombo box(s("mFtcboDocType"));
  box.setSource(&tables);
  box.setCodeTable(s("ADJDOC"));
  box.setDefaultCode(s("P"));
  QSignalSpy changes(&box, &QORVA_CodesCombo::textChanged);

  const auto filled = box.fill(s("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE"));
  ASSERT_TRUE(filled) << filled.error().toStdString();
  EXPECT_EQ(filled.value(), 3);
  EXPECT_EQ(tables.queries, QStringList{s("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE")});
  EXPECT_EQ(box.codeAt(2), s("K"));
  EXPECT_EQ(box.descriptionAt(0), s("CITATION"));
  EXPECT_EQ(box.selectedCode(), s("P"));
  EXPECT_EQ(box.description(), s("PAYMENT PLAN"));
  EXPECT_EQ(box.text(), s("PAYMENT PLAN"));
  EXPECT_EQ(changes.count(), 1);
  EXPECT_EQ(box.codeTable(), s("ADJDOC"));
}

TEST_F(FilledCodesCombo, FindsACodeByTheCodeFilterWithoutFilteringTheList) {
  EXPECT_EQ(box.findCode(s("K")), 2);
  EXPECT_EQ(box.findCode(s(" c ")), 0);
  EXPECT_EQ(box.findCode(s("X")), -1);
  EXPECT_EQ(box.findCode(s("D")), -1);  // between two codes: no neighbour may stand in for it
  EXPECT_EQ(box.findCode(s("O'NEIL")), -1);  // a quote in a code cannot break the filter
  EXPECT_EQ(box.rowCount(), 3);

  EXPECT_TRUE(box.setCode(s("K")));
  EXPECT_EQ(box.description(), s("CHECK NUMBER"));
  EXPECT_FALSE(box.setCode(s("Z")));
  EXPECT_TRUE(box.selectedCode().isEmpty());
  EXPECT_TRUE(box.matchesNoCode());
}

struct TypedCase {
  const char* label;
  const char* typed;
  const char* code;  // "" when nothing matches
  bool empty;
  bool noCode;
};

// Named in failure messages by its label.
void PrintTo(const TypedCase& value, std::ostream* out) { *out << value.label; }

class CodesComboTyping : public FilledCodesCombo, public ::testing::WithParamInterface<TypedCase> {};

TEST_P(CodesComboTyping, ATypedTextChoosesTheRowItEqualsOrMatchesNoCode) {
  ASSERT_TRUE(box.userSetText(s(GetParam().typed)));
  EXPECT_EQ(box.selectedCode(), s(GetParam().code));
  EXPECT_EQ(box.isEmpty(), GetParam().empty);
  EXPECT_EQ(box.matchesNoCode(), GetParam().noCode);
  EXPECT_EQ(box.text(), s(GetParam().typed));
}

INSTANTIATE_TEST_SUITE_P(Texts, CodesComboTyping,
                         ::testing::Values(TypedCase{"Description", "payment plan ", "P", false, false},
                                           TypedCase{"Code", "k", "K", false, false},
                                           TypedCase{"Nothing", "", "", true, false},
                                           TypedCase{"Blanks", "   ", "", true, false},
                                           TypedCase{"NoSuchCode", "PAYMENT", "", false, true}),
                         [](const auto& row) { return std::string(row.param.label); });

TEST(CodesCombo, AFailedOrMalformedFillLeavesTheBoxEmptyAndSaysWhy) {
  FakeCodeTables tables;
  QORVA_CodesCombo box(s("mFtcboDocType"));
  EXPECT_FALSE(box.fill(s("q")));  // no source at all

  box.setSource(&tables);
  ASSERT_TRUE(box.fill(s("q")));
  box.setCode(s("C"));
  tables.failure = s("the code table cannot be read");
  const auto failed = box.fill(s("q"));
  ASSERT_FALSE(failed);
  EXPECT_TRUE(failed.error().contains(s("the code table cannot be read")));
  EXPECT_EQ(box.rowCount(), 0);
  EXPECT_TRUE(box.isEmpty());

  tables.failure.clear();
  tables.rows = RecordSet(QList<Field>{{s("CODE")}, {s("TEXT")}});
  tables.rows.addNew({s("C"), s("CITATION")});
  EXPECT_FALSE(box.fill(s("q")));
  EXPECT_EQ(box.rowCount(), 0);
}

TEST_F(FilledCodesCombo, ALockedBoxRefusesThePerson) {
  box.setLocked(true);
  EXPECT_FALSE(box.userChooseRow(1));
  EXPECT_FALSE(box.userSetText(s("C")));
  EXPECT_TRUE(box.isEmpty());
  box.clear();
  EXPECT_TRUE(box.setCode(s("P")));  // the logic still sets it
}

// --- date picker --------------------------------------------------------------------------------------

TEST(DatePicker, StartsEmptyAfterTodayThenClearAndTellsEmptyFromAnyDate) {
  QORVA_DTP picker(s("mDtpDTPicker"));
  QSignalSpy changes(&picker, &DatePicker::valueChanged);
  picker.setToday();
  EXPECT_EQ(picker.date(), QDate::currentDate());
  picker.clear();
  EXPECT_TRUE(picker.isEmpty());
  EXPECT_TRUE(picker.value().isNull());
  EXPECT_FALSE(picker.date().isValid());
  EXPECT_TRUE(picker.text().isEmpty());
  EXPECT_EQ(changes.count(), 2);
  picker.clear();
  EXPECT_EQ(changes.count(), 2);  // no change, no Change
}

TEST(DatePicker, KeepsWithinItsEarliestAndLatestDate) {
  DatePicker picker(s("mDtpDTPicker"));
  ASSERT_TRUE(picker.setMinDate(QDate(1993, 1, 1)));
  ASSERT_TRUE(picker.setMaxDate(QDate(9999, 12, 31)));
  EXPECT_FALSE(picker.setDate(QDate(1992, 12, 31)));
  EXPECT_TRUE(picker.isEmpty());
  EXPECT_TRUE(picker.setDate(QDate(1993, 1, 1)));
  EXPECT_FALSE(picker.setDate(QDate()));
  EXPECT_EQ(picker.date(), QDate(1993, 1, 1));

  ASSERT_TRUE(picker.setMinDate(QDate(1997, 1, 27)));  // a raised floor moves the value onto it
  EXPECT_EQ(picker.date(), QDate(1997, 1, 27));
  EXPECT_FALSE(picker.setMaxDate(QDate(1990, 1, 1)));  // the limits cannot cross
  EXPECT_EQ(picker.maxDate(), QDate(9999, 12, 31));
}

TEST(DatePicker, ShowsDatesAndTimesInItsFormat) {
  DatePicker date(s("QORVA_DTP1"));
  date.setDate(QDate(2006, 1, 2));
  EXPECT_EQ(date.text(), s("01/02/2006"));
  date.setDisplayFormat(s("yyyy-MM-dd"));
  EXPECT_EQ(date.text(), s("2006-01-02"));

  DatePicker time(s("QORVA_DTP1"), DatePicker::Mode::Time);
  time.setDisplayFormat(s("hh:mm"));
  ASSERT_TRUE(time.setTime(QTime(14, 5, 33)));
  EXPECT_EQ(time.text(), s("14:05"));
  EXPECT_EQ(time.value().toTime(), QTime(14, 5, 33));
}

TEST(DatePicker, ThePersonCannotPickInADisabledPicker) {
  DatePicker picker(s("mDtpDTPicker"));
  picker.setEnabled(false);
  EXPECT_FALSE(picker.userSetDateTime(QDateTime(QDate(2020, 5, 1), QTime(0, 0))));
  EXPECT_TRUE(picker.isEmpty());
}

// --- timer ------------------------------------------------------------------------------------------

TEST(Timer, FiresOnlyWhileEnabledWithAnInterval) {
  Timer timer(s("mTimUpdateTimeout"));
  QSignalSpy ticks(&timer, &Timer::tick);
  EXPECT_FALSE(timer.isEnabled());  // created off
  EXPECT_FALSE(timer.fire());
  timer.setEnabled(true);
  EXPECT_FALSE(timer.fire());  // interval 0 never ticks
  EXPECT_TRUE(timer.setInterval(60000));
  EXPECT_FALSE(timer.setInterval(-5));
  EXPECT_EQ(timer.interval(), 60000);
  EXPECT_TRUE(timer.fire());
  timer.setEnabled(false);
  EXPECT_FALSE(timer.fire());
  EXPECT_EQ(ticks.count(), 1);
}

TEST(Timer, TicksOnTheEventLoop) {
  Timer timer(s("mTimUpdateTimeoutNumber"));
  QSignalSpy ticks(&timer, &Timer::tick);
  timer.setInterval(1);
  timer.setEnabled(true);
  EXPECT_TRUE(ticks.wait(5000));
  // A handler that switches the timer off stops further ticks.
  QObject::connect(&timer, &Timer::tick, &timer, [&] { timer.setEnabled(false); });
  ticks.wait(5000);
  const auto seen = ticks.count();
  QTest::qWait(20);
  EXPECT_EQ(ticks.count(), seen);
}

// --- text box ------------------------------------------------------------------------------------------

TEST(TextBox, ThePersonIsHeldToLockAndMaxLengthButTheLogicIsNot) {
  TextBox box(s("mTxtDocNbr"));
  QSignalSpy changes(&box, &TextBox::textChanged);
  box.setMaxLength(7);
  EXPECT_TRUE(box.userSetText(s("123456789")));
  EXPECT_EQ(box.text(), s("1234567"));
  box.setText(s("0000123-4"));  // the screen may write a longer text
  EXPECT_EQ(box.text(), s("0000123-4"));
  box.setLocked(true);
  EXPECT_FALSE(box.userSetText(s("1")));
  EXPECT_EQ(box.text(), s("0000123-4"));
  EXPECT_EQ(changes.count(), 2);
}

// Keys typed in one go meet the box as a keyboard would deliver them: each judged by the screen's filter against
// the text the earlier keys left, each firing Change.
struct TypingCase {
  const char* name;
  adjustacc::platform::KeyRule rule;
  int maxLength;
  const char16_t* typed;
  QStringList changes;  // the text after each key that changed it; the last is the box's text
};

void PrintTo(const TypingCase& c, std::ostream* os) { *os << c.name; }

class TextBoxTyping : public ::testing::TestWithParam<TypingCase> {};

using adjustacc::platform::KeyRule;

TEST_P(TextBoxTyping, EachKeyIsJudgedAgainstTheTextTypedSoFar) {
  using adjustacc::platform::KeyContext;
  using adjustacc::platform::KeyFilters;
  adjustacc::platform::MemoryCodeLookup codes;
  const KeyFilters filters(codes);
  const TypingCase& c = GetParam();
  TextBox box(s("mTxt"));
  box.setMaxLength(c.maxLength);
  int keysSeen = 0;
  box.setKeyPressHandler([&](int& key) {
    ++keysSeen;
    const QChar typed(static_cast<char16_t>(key));
    if (!filters.accepts(c.rule, typed, KeyContext{box.text()})) {
      key = 0;
    } else if (c.rule == KeyRule::TroopDistrict) {
      key = KeyFilters::troopDistrictKey(typed).unicode();
    }
  });
  QSignalSpy changes(&box, &TextBox::textChanged);
  ASSERT_TRUE(box.userType(QString::fromUtf16(c.typed)));
  QStringList seen;
  for (const QList<QVariant>& change : changes) {
    seen.append(change.at(0).toString());
  }
  EXPECT_EQ(seen, c.changes);
  EXPECT_EQ(box.text(), c.changes.value(c.changes.size() - 1));
  EXPECT_EQ(keysSeen, QString::fromUtf16(c.typed).size()) << "the filter sees every key, a full box's too";
}

INSTANTIATE_TEST_SUITE_P(
    Keys, TextBoxTyping,
    ::testing::Values(
        TypingCase{"OneDecimalPoint", KeyRule::Money, 0, u"1.2.3", {s("1"), s("1."), s("1.2"), s("1.23")}},
        TypingCase{"TwoDigitsOfCents", KeyRule::Money, 0, u"$5.678", {s("$"), s("$5"), s("$5."), s("$5.6"), s("$5.67")}},
        TypingCase{"TroopLetterOnlyFirst", KeyRule::TroopDistrict, 0, u"a1b2", {s("A"), s("A1"), s("A12")}},
        TypingCase{"MaximumLength", KeyRule::Numeric, 3, u"12345", {s("1"), s("12"), s("123")}},
        TypingCase{"BackspaceMakesRoom", KeyRule::Numeric, 2, u"123\b4", {s("1"), s("12"), s("1"), s("14")}},
        TypingCase{"BackspaceLetsTheDecimalPointBackIn", KeyRule::Money, 0, u"1.\b.5",
                   {s("1"), s("1."), s("1"), s("1."), s("1.5")}}),
    [](const ::testing::TestParamInfo<TypingCase>& row) { return std::string(row.param.name); });

TEST(TextBox, TypingStopsWhenAChangeLocksTheBoxAndLineKeysNeedAMultiLineBox) {
  TextBox box(s("mTxt"));
  QObject::connect(&box, &TextBox::textChanged, &box, [&box](const QString& text) {
    if (text.size() == 2) {
      box.setLocked(true);  // as a screen locks a box once it holds enough
    }
  });
  EXPECT_FALSE(box.userType(s("abcd")));
  EXPECT_EQ(box.text(), s("ab"));
  EXPECT_FALSE(box.userType(s("e")));

  TextBox single(s("mTxt"));
  EXPECT_TRUE(single.userType(s("a\tb\r\nc\x01")));
  EXPECT_EQ(single.text(), s("abc"));
  TextBox comment(s("mTxtComment"));
  comment.setMultiLine(true);
  EXPECT_TRUE(comment.userType(s("a\tb\r\nc\x01")));
  EXPECT_EQ(comment.text(), s("a\tb\r\nc"));
}

// --- options, frames, buttons, labels ------------------------------------------------------------------

TEST(OptionButton, OptionsOfAGroupAreExclusiveAndClickFiresWhenChosen) {
  OptionButton inState(s("mRdo"), s("In State"));
  OptionButton outOfState(s("mRdo"), s("Out of State"));
  OptionButton unrelated(s("mRdoOther"));
  OptionButton::makeGroup({&inState, &outOfState});
  QSignalSpy outClicks(&outOfState, &OptionButton::clicked);

  inState.setValue(true);
  unrelated.setValue(true);
  EXPECT_TRUE(outOfState.userChoose());
  EXPECT_FALSE(inState.value());
  EXPECT_TRUE(outOfState.value());
  EXPECT_TRUE(unrelated.value());
  EXPECT_EQ(outClicks.count(), 1);

  outOfState.setValue(false);  // "clear both options"
  EXPECT_FALSE(inState.value() || outOfState.value());
}

TEST(Frame, ADisabledOrHiddenFrameMakesItsControlsUnusable) {
  Frame refund(s("mFraRefund"));
  Button save(s("mCmdButton"), s("Save"));
  TextBox warrant(s("mTxt"));
  refund.add(save);
  refund.add(warrant);
  QSignalSpy clicks(&save, &Button::clicked);

  EXPECT_TRUE(save.click());
  refund.setEnabled(false);
  EXPECT_TRUE(save.isEnabled());
  EXPECT_FALSE(save.isEffectivelyEnabled());
  EXPECT_FALSE(save.click());
  EXPECT_FALSE(warrant.userSetText(s("W1")));
  refund.setEnabled(true);
  refund.setVisible(false);
  EXPECT_FALSE(save.click());
  EXPECT_EQ(clicks.count(), 1);
  EXPECT_EQ(refund.controls().size(), 2);

  refund.setContainer(&refund);  // a frame cannot hold itself
  EXPECT_EQ(refund.container(), nullptr);
}

TEST(ControlArray, AddressesSparseIndexesAndSurvivesAMissingOne) {
  ControlArray<Button> buttons(s("mCmdButton"));
  buttons.add(0, s("Account Activity"));
  buttons.add(2, s("Save"));
  buttons.add(3, s("Close"));
  EXPECT_EQ(buttons.indexes(), (QList<int>{0, 2, 3}));
  EXPECT_EQ(buttons[2].caption(), s("Save"));
  EXPECT_EQ(buttons[2].index(), 2);
  EXPECT_EQ(buttons[2].name(), s("mCmdButton"));
  EXPECT_EQ(buttons.find(1), nullptr);

  buttons[1].setEnabled(false);  // a fault in a screen: logged, nothing real changes
  EXPECT_EQ(buttons.count(), 3);
  EXPECT_TRUE(buttons[0].isEnabled() && buttons[2].isEnabled() && buttons[3].isEnabled());

  ControlArray<Label> data(s("mLblData"));
  data.add(5).setCaption(s("1234567"));
  QStringList seen;
  data.forEach([&](int index, Label& label) { seen.append(QString::number(index) + s(":") + label.caption()); });
  EXPECT_EQ(seen, QStringList{s("5:1234567")});
}
