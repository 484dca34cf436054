// The widget binders, both ways: what the logic sets shows in the widget, and what a person does with the
// widget reaches the control through its user...() setters and fires the screen's events.
#include "desktop/binders.h"
#include "desktop/dateedit.h"
#include "desktop/taborder.h"

#include "messaging/recordset.h"
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/datepicker.h"
#include "platform/frame.h"
#include "platform/label.h"
#include "platform/optionbutton.h"
#include "platform/textbox.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLocale>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;

// A shown, active window holding the widgets under test, so that focus and key events behave as on a desk.
class Window {
public:
  Window() {
    window.resize(400, 300);
    layout = new QVBoxLayout(&window);
  }
  template <typename W>
  W& add() {
    auto* widget = new W(&window);
    layout->addWidget(widget);
    return *widget;
  }
  void show() {
    window.show();
    QApplication::setActiveWindow(&window);
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
  }
  QWidget window;
  QVBoxLayout* layout;
};

// --- text box ------------------------------------------------------------------------------------------------------

TEST(TextBoxBinder, TypedKeysGoThroughTheKeyPressFilterWhichMayRefuseOrChangeThem) {
  Window w;
  auto& edit = w.add<QLineEdit>();
  platform::TextBox box(u"mTxtTroop"_s);
  QStringList seen;
  // Refuses "x", upper-cases the other letters.
  box.setKeyPressHandler([&seen](int& key) {
    seen.append(QString(QChar(key)));
    if (key == 'x') {
      key = 0;
    } else if (key >= 'a' && key <= 'z') {
      key -= 'a' - 'A';
    }
  });
  bindTextBox(box, edit);
  QSignalSpy changes(&box, &platform::TextBox::textChanged);
  w.show();
  QTest::keyClicks(&edit, u"a1x2"_s);
  EXPECT_EQ(box.text(), u"A12"_s);
  EXPECT_EQ(edit.text(), u"A12"_s);
  EXPECT_EQ(changes.count(), 3);
  EXPECT_EQ(seen, (QStringList{u"a"_s, u"1"_s, u"x"_s, u"2"_s}));
}

TEST(TextBoxBinder, TheMaximumLengthAndTheFilterApplyToTypedAndPastedText) {
  Window w;
  auto& edit = w.add<QLineEdit>();
  platform::TextBox box(u"mTxtDocNbr"_s);
  box.setMaxLength(6);
  // Digits only; control keys (paste among them) pass, as the shared key filters let them.
  box.setKeyPressHandler([](int& key) {
    if (key >= 0x20 && (key < '0' || key > '9')) {
      key = 0;
    }
  });
  bindTextBox(box, edit);
  w.show();
  QTest::keyClicks(&edit, u"12ab345678"_s);
  EXPECT_EQ(box.text(), u"123456"_s);
  // Pastes over the whole text; the box and the widget must agree afterwards.
  const auto paste = [&](const QString& text) {
    edit.selectAll();
    QApplication::clipboard()->setText(text);
    QTest::keySequence(&edit, QKeySequence::Paste);
    EXPECT_EQ(edit.text(), box.text());
    return box.text();
  };
  EXPECT_EQ(paste(u"12-ab34"_s), u"1234"_s);
  EXPECT_EQ(paste(u"987654321"_s), u"987654"_s);
  box.setPasteAllowed(false);
  EXPECT_EQ(paste(u"1"_s), u"987654"_s);
}

TEST(TextBoxBinder, ShowsTheScreensTextWholeAndALockedBoxRefusesTyping) {
  Window w;
  auto& edit = w.add<QLineEdit>();
  platform::TextBox box(u"mTxtAmount"_s);
  box.setMaxLength(4);
  bindTextBox(box, edit);
  box.setText(u"$1,234.50"_s);  // longer than a person may type, kept whole
  EXPECT_EQ(edit.text(), u"$1,234.50"_s);
  box.setLocked(true);
  EXPECT_TRUE(edit.isReadOnly());
  QSignalSpy changes(&box, &platform::TextBox::textChanged);
  w.show();
  QTest::keyClicks(&edit, u"xyz"_s);
  EXPECT_EQ(box.text(), u"$1,234.50"_s);
  EXPECT_EQ(changes.count(), 0);
}

TEST(TextBoxBinder, EnterRefusedByTheFilterDoesNotPressTheDialogsDefaultButton) {
  for (const bool refuse : {true, false}) {
    SCOPED_TRACE(refuse ? "refused" : "passed");
    QDialog dialog;
    auto* layout = new QVBoxLayout(&dialog);
    auto* edit = new QLineEdit(&dialog);
    auto* ok = new QPushButton(u"OK"_s, &dialog);
    ok->setDefault(true);
    layout->addWidget(edit);
    layout->addWidget(ok);
    platform::TextBox box(u"mTxtSearch"_s);
    int enters = 0;
    box.setKeyPressHandler([&](int& key) {
      if (key == '\r') {
        ++enters;
        if (refuse) {
          key = 0;
        }
      }
    });
    bindTextBox(box, *edit);
    QSignalSpy pressed(ok, &QPushButton::clicked);
    dialog.show();
    QApplication::setActiveWindow(&dialog);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(enters, 1);
    EXPECT_EQ(pressed.count(), refuse ? 0 : 1);
  }
}

// --- what every control has ---------------------------------------------------------------------------------------

TEST(ControlBinder, EnabledVisibleColoursAndFocusFollowTheControl) {
  Window w;
  auto& edit = w.add<QLineEdit>();
  auto& other = w.add<QLineEdit>();
  platform::TextBox box(u"mTxtComment"_s);
  bindTextBox(box, edit);
  w.show();

  for (const bool on : {false, true}) {
    box.setEnabled(on);
    box.setVisible(on);
    EXPECT_EQ(edit.isEnabled(), on);
    EXPECT_EQ(edit.isVisible(), on);
  }

  const QColor error(255, 204, 204);
  box.setBackColor(error);
  EXPECT_EQ(edit.palette().color(QPalette::Base), error);
  box.setBackColor(QColor());
  EXPECT_EQ(edit.palette().color(QPalette::Base), other.palette().color(QPalette::Base));

  QSignalSpy got(&box, &platform::Control::gotFocus);
  QSignalSpy lost(&box, &platform::Control::lostFocus);
  box.setFocus();
  EXPECT_TRUE(QTest::qWaitFor([&] { return edit.hasFocus(); }, 2000));
  EXPECT_EQ(got.count(), 1);
  EXPECT_TRUE(box.hasFocus());
  other.setFocus();
  EXPECT_TRUE(QTest::qWaitFor([&] { return other.hasFocus(); }, 2000));
  EXPECT_EQ(lost.count(), 1);
  EXPECT_FALSE(box.hasFocus());
}

// --- buttons, labels, options, frames ----------------------------------------------------------------------------

TEST(ButtonAndLabelBinder, AClickIsTheControlsClickAndCaptionsShowAsPlainText) {
  Window w;
  auto& widget = w.add<QPushButton>();
  platform::Button button(u"mCmdButton"_s, u"AR Detail"_s);
  bindButton(button, widget);
  QSignalSpy clicks(&button, &platform::Button::clicked);
  w.show();
  EXPECT_EQ(widget.text(), u"AR Detail"_s);
  QTest::mouseClick(&widget, Qt::LeftButton);
  EXPECT_EQ(clicks.count(), 1);
  button.setEnabled(false);
  QTest::mouseClick(&widget, Qt::LeftButton);
  EXPECT_EQ(clicks.count(), 1);
  button.setCaption(u"Receipt Detail"_s);
  EXPECT_EQ(widget.text(), u"Receipt Detail"_s);

  auto& text = w.add<QLabel>();
  platform::Label label(u"mLblStatus"_s, u"<b>Ready</b>"_s);
  bindLabel(label, text);
  EXPECT_EQ(text.text(), u"<b>Ready</b>"_s);
  EXPECT_EQ(text.textFormat(), Qt::PlainText);

  // A day is shown in the clerk's short date, whatever form it came in; anything else as it is.
  auto& day = w.add<QLabel>();
  platform::Label paid(u"mLblData"_s, u"2024-02-01"_s);
  bindDateLabel(paid, day);
  EXPECT_EQ(day.text(), QLocale().toString(QDate(2024, 2, 1), QLocale::ShortFormat));
  paid.setCaption(u"not known"_s);
  EXPECT_EQ(day.text(), u"not known"_s);
}

TEST(OptionBinder, ChoosingAnOptionClearsTheOthersOfItsGroupInControlsAndWidgets) {
  Window w;
  auto& byName = w.add<QRadioButton>();
  auto& byId = w.add<QRadioButton>();
  platform::OptionButton name(u"mRdoSearchBy"_s, u"Name"_s);
  platform::OptionButton id(u"mRdoSearchBy"_s, u"Customer ID"_s);
  platform::OptionButton::makeGroup({&name, &id});
  name.setValue(true);
  bindOptionButton(name, byName);
  bindOptionButton(id, byId);
  QSignalSpy idClicks(&id, &platform::OptionButton::clicked);
  w.show();
  EXPECT_TRUE(byName.isChecked());
  // On the option's circle: a wide radio button only answers clicks on its circle and caption.
  const QPoint circle(8, byId.height() / 2);
  QTest::mouseClick(&byId, Qt::LeftButton, {}, circle);
  EXPECT_TRUE(id.value());
  EXPECT_FALSE(name.value());
  EXPECT_TRUE(byId.isChecked());
  EXPECT_FALSE(byName.isChecked());
  EXPECT_EQ(idClicks.count(), 1);
  // A click on the chosen option leaves it chosen.
  QTest::mouseClick(&byId, Qt::LeftButton, {}, circle);
  EXPECT_TRUE(byId.isChecked());
  EXPECT_TRUE(id.value());
}

TEST(FrameBinder, ADisabledFrameDisablesTheWidgetsInsideIt) {
  Window w;
  auto& group = w.add<QGroupBox>();
  auto* inner = new QLineEdit(&group);
  platform::Frame frame(u"mFraRefund"_s, u"Refund"_s);
  platform::TextBox box(u"mTxtAmount"_s);
  frame.add(box);
  bindFrame(frame, group);
  bindTextBox(box, *inner);
  w.show();
  EXPECT_EQ(group.title(), u"Refund"_s);
  frame.setEnabled(false);
  EXPECT_FALSE(inner->isEnabled());
  EXPECT_TRUE(box.isEnabled());
  frame.setEnabled(true);
  EXPECT_TRUE(inner->isEnabled());
}

// --- code box ------------------------------------------------------------------------------------------------------

messaging::RecordSet accountTypes() {
  messaging::RecordSet rows({{u"CD_TBL_ID"_s, messaging::FieldType::Text},
                             {u"CD_TBL_CD"_s, messaging::FieldType::Text},
                             {u"CD_TBL_DES"_s, messaging::FieldType::Text}});
  rows.addNew({u"FORMDOC"_s, u"C"_s, u"CITATION ENF001"_s});
  rows.addNew({u"FORMDOC"_s, u"P"_s, u"PAYMENT PLAN"_s});
  rows.addNew({u"FORMDOC"_s, u"A"_s, u"ALERT"_s});
  return rows;
}

TEST(CodesComboBinder, TypingADescriptionOrACodeChoosesItsRowAndOtherTextMatchesNoCode) {
  Window w;
  auto& combo = w.add<QComboBox>();
  platform::CodesCombo box(u"mFtcboDocType"_s);
  bindCodesCombo(box, combo);
  ASSERT_TRUE(box.setRows(accountTypes()));
  w.show();
  QSignalSpy changes(&box, &platform::CodesCombo::textChanged);
  combo.lineEdit()->selectAll();
  QTest::keyClicks(combo.lineEdit(), u"payment plan"_s);
  EXPECT_EQ(box.selectedCode(), u"P"_s);
  EXPECT_GT(changes.count(), 0);
  combo.lineEdit()->selectAll();
  QTest::keyClicks(combo.lineEdit(), u"a"_s);
  EXPECT_EQ(box.selectedCode(), u"A"_s);
  EXPECT_EQ(combo.currentText(), u"a"_s);  // what the person typed stays as typed
  combo.lineEdit()->selectAll();
  QTest::keyClicks(combo.lineEdit(), u"zzz"_s);
  EXPECT_TRUE(box.matchesNoCode());
}

TEST(CodesComboBinder, ListsTheDescriptionsAndAPickChoosesThatRowUnlessLocked) {
  Window w;
  auto& combo = w.add<QComboBox>();
  platform::CodesCombo box(u"mFtcboDocType"_s);
  bindCodesCombo(box, combo);
  box.setDefaultCode(u"C"_s);
  ASSERT_TRUE(box.setRows(accountTypes()));
  ASSERT_EQ(combo.count(), 3);
  EXPECT_EQ(combo.itemText(1), u"PAYMENT PLAN"_s);
  EXPECT_EQ(combo.currentText(), u"CITATION ENF001"_s);
  box.setCode(u"A"_s);
  EXPECT_EQ(combo.currentIndex(), 2);
  w.show();
  combo.setCurrentIndex(1);
  Q_EMIT combo.activated(1);
  EXPECT_EQ(box.selectedCode(), u"P"_s);
  box.setLocked(true);
  EXPECT_TRUE(combo.lineEdit()->isReadOnly());
  combo.setCurrentIndex(2);
  Q_EMIT combo.activated(2);
  EXPECT_EQ(box.selectedCode(), u"P"_s);
  EXPECT_EQ(combo.currentText(), u"PAYMENT PLAN"_s);
}

// --- date picker ------------------------------------------------------------------------------------------------------

TEST(DatePickerBinder, ShowsTheDateOrTimeOrABlankWhenEmpty) {
  Window w;
  auto& edit = w.add<DateEdit>();
  platform::DatePicker picker(u"mDtpAdjustDate"_s);
  bindDatePicker(picker, edit);
  EXPECT_TRUE(edit.isEmpty());
  EXPECT_EQ(edit.shownText(), QString());
  ASSERT_TRUE(picker.setDate(QDate(2024, 3, 7)));
  EXPECT_FALSE(edit.isEmpty());
  EXPECT_EQ(edit.shownText(), u"03/07/2024"_s);
  picker.setDisplayFormat(u"yyyy-MM-dd"_s);
  EXPECT_EQ(edit.shownText(), u"2024-03-07"_s);
  picker.clear();
  EXPECT_TRUE(edit.isEmpty());
  EXPECT_EQ(edit.shownText(), QString());

  platform::DatePicker time(u"mDtpTime"_s, platform::DatePicker::Mode::Time);
  auto& timeEdit = w.add<DateEdit>();
  ASSERT_TRUE(time.setTime(QTime(14, 5)));
  bindDatePicker(time, timeEdit);
  EXPECT_EQ(timeEdit.shownText(), u"14:05"_s);
  timeEdit.setTime(QTime(9, 30));
  EXPECT_EQ(time.time(), QTime(9, 30));
}

TEST(DatePickerBinder, ThePersonEmptiesWithDeleteAndTypingIntoABlankStartsADate) {
  Window w;
  auto& edit = w.add<DateEdit>();
  platform::DatePicker picker(u"mDtpAdjustDate"_s);
  ASSERT_TRUE(picker.setDate(QDate(2024, 3, 7)));
  bindDatePicker(picker, edit);
  QSignalSpy changes(&picker, &platform::DatePicker::valueChanged);
  w.show();
  edit.setFocus();
  QTest::keyClick(&edit, Qt::Key_Delete);
  EXPECT_TRUE(picker.isEmpty());
  EXPECT_TRUE(edit.isEmpty());
  EXPECT_EQ(changes.count(), 1);
  QTest::keyClick(&edit, Qt::Key_Up);
  EXPECT_FALSE(picker.isEmpty());
  EXPECT_EQ(picker.date(), QDate::currentDate());
}

TEST(DatePickerBinder, APickedDateReachesTheControlWithinItsLimitsAndARefusedOneIsPutBack) {
  Window w;
  auto& edit = w.add<DateEdit>();
  platform::DatePicker picker(u"mDtpAdjustDate"_s);
  ASSERT_TRUE(picker.setMaxDate(QDate(2024, 12, 31)));
  ASSERT_TRUE(picker.setDate(QDate(2024, 3, 7)));
  bindDatePicker(picker, edit);
  edit.setDate(QDate(2025, 2, 1));  // beyond the latest date: the widget stops at it
  EXPECT_EQ(picker.date(), QDate(2024, 12, 31));
  w.show();
  edit.setDate(QDate(2024, 3, 9));  // as the calendar sets it
  EXPECT_EQ(picker.date(), QDate(2024, 3, 9));
  picker.setEnabled(false);
  edit.setEnabled(true);  // even if the widget let it through, the control decides
  edit.setDate(QDate(2024, 3, 12));
  EXPECT_EQ(picker.date(), QDate(2024, 3, 9));
  EXPECT_EQ(edit.value().date(), QDate(2024, 3, 9));
}

// --- keyboard order -------------------------------------------------------------------------------------------------

TEST(TabOrderTest, TabVisitsTheWidgetsByTheControlsTabIndexesAndFollowsChanges) {
  Window w;
  auto& first = w.add<QLineEdit>();
  auto& second = w.add<QLineEdit>();
  auto& third = w.add<QPushButton>();
  platform::TextBox a(u"a"_s);
  platform::TextBox b(u"b"_s);
  platform::Button c(u"c"_s);
  a.setTabIndex(2);
  b.setTabIndex(0);
  c.setTabIndex(1);
  TabOrder order;
  order.add(a, first);
  order.add(b, second);
  order.add(c, third);
  order.apply();
  w.show();
  EXPECT_EQ(order.chain(), (QList<QWidget*>{&second, &third, &first}));
  const auto visits = [&w](QWidget& start) {
    start.setFocus();
    QList<QWidget*> seen{QApplication::focusWidget()};
    for (int i = 0; i < 2; ++i) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      seen.append(QApplication::focusWidget());
    }
    return seen;
  };
  EXPECT_EQ(visits(second), (QList<QWidget*>{&second, &third, &first}));

  a.setTabIndex(0);
  b.setTabIndex(5);
  c.setTabStop(false);
  QCoreApplication::processEvents();  // the order is applied again from the event loop
  EXPECT_EQ(order.chain(), (QList<QWidget*>{&first, &third, &second}));
  EXPECT_FALSE(third.focusPolicy() & Qt::TabFocus);
  EXPECT_TRUE(third.focusPolicy() & Qt::ClickFocus);
  // The button without a tab stop is passed over.
  EXPECT_EQ(visits(first), (QList<QWidget*>{&first, &second, &first}));
}

}  // namespace
}  // namespace adjustacc::desktop
