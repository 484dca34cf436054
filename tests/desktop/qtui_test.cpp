// The Qt Ui: message boxes titled and iconed as asked and answered with the button the person pressed; modal
// forms shown through their registered view until the form hides itself; the hourglass.
#include "desktop/formview.h"
#include "desktop/qtui.h"

#include <QApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <functional>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using platform::MsgAnswer;
using platform::MsgButtons;
using platform::MsgIcon;

// Runs `step` on the next modal widget that appears (a box or a dialog), from the event loop.
void whenModal(std::function<void(QWidget&)> step) {
  auto* poll = new QTimer;
  poll->setInterval(10);
  QObject::connect(poll, &QTimer::timeout, [poll, step] {
    if (QWidget* modal = QApplication::activeModalWidget(); modal != nullptr && modal->isVisible()) {
      poll->stop();
      poll->deleteLater();
      step(*modal);
    }
  });
  poll->start();
}

struct BoxSeen {
  QString title;
  QString text;
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  QList<QMessageBox::StandardButton> buttons;
};

// Answers the next box by pressing `press` and records what it showed.
void pressInNextBox(QMessageBox::StandardButton press, BoxSeen& seen) {
  whenModal([press, &seen](QWidget& modal) {
    auto* box = qobject_cast<QMessageBox*>(&modal);
    if (box == nullptr) {
      modal.close();
      return;
    }
    seen.title = box->windowTitle();
    seen.text = box->text();
    seen.icon = box->icon();
    for (QAbstractButton* button : box->buttons()) {
      seen.buttons.append(box->standardButton(button));
    }
    std::sort(seen.buttons.begin(), seen.buttons.end());
    if (QAbstractButton* button = box->button(press)) {
      button->click();
    } else {
      box->close();
    }
  });
}

struct BoxCase {
  const char* name;
  MsgButtons buttons;
  MsgIcon icon;
  QMessageBox::StandardButton press;
  MsgAnswer answer;
  QMessageBox::Icon shownIcon;
  QList<QMessageBox::StandardButton> shownButtons;
};

class MessageBoxTest : public ::testing::TestWithParam<BoxCase> {};

TEST_P(MessageBoxTest, ShowsWhatWasAskedAndAnswersWithThePressedButton) {
  const BoxCase& c = GetParam();
  QtUi ui;
  BoxSeen seen;
  pressInNextBox(c.press, seen);
  const MsgAnswer answer = ui.messageBox(u"Account Type is required\r\nAccount Number is required\r\n"_s, c.buttons,
                                         c.icon, u"Adjust Account"_s);
  EXPECT_EQ(answer, c.answer);
  EXPECT_EQ(seen.title, u"Adjust Account"_s);
  EXPECT_EQ(seen.text, u"Account Type is required\nAccount Number is required\n"_s);
  EXPECT_EQ(seen.icon, c.shownIcon);
  auto expected = c.shownButtons;
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(seen.buttons, expected);
}

using B = QMessageBox::StandardButton;
INSTANTIATE_TEST_SUITE_P(
    Boxes, MessageBoxTest,
    ::testing::Values(
        BoxCase{"OkCritical", MsgButtons::Ok, MsgIcon::Critical, B::Ok, MsgAnswer::Ok, QMessageBox::Critical, {B::Ok}},
        BoxCase{"OkCancelCancelled", MsgButtons::OkCancel, MsgIcon::Exclamation, B::Cancel, MsgAnswer::Cancel,
                QMessageBox::Warning, {B::Ok, B::Cancel}},
        BoxCase{"YesNoNo", MsgButtons::YesNo, MsgIcon::Question, B::No, MsgAnswer::No, QMessageBox::Question,
                {B::Yes, B::No}},
        BoxCase{"AbortRetryIgnoreIgnore", MsgButtons::AbortRetryIgnore, MsgIcon::None, B::Ignore, MsgAnswer::Ignore,
                QMessageBox::NoIcon, {B::Abort, B::Retry, B::Ignore}},
        // Closed without a button: the box's way out.
        BoxCase{"YesNoCancelClosed", MsgButtons::YesNoCancel, MsgIcon::Question, B::NoButton, MsgAnswer::Cancel,
                QMessageBox::Question, {B::Yes, B::No, B::Cancel}}),
    [](const ::testing::TestParamInfo<BoxCase>& param) { return std::string(param.param.name); });

// --- modal forms -----------------------------------------------------------------------------------------------------

class FakeForm : public platform::ModalForm {
public:
  QString formName() const override { return u"QORVA_Fake"_s; }
  QString caption() const override { return u"Fake Form"_s; }
  bool isVisible() const override { return visible; }
  void setVisible(bool value) override {
    if (value) {
      ++shown;
    }
    visible = value;
  }
  bool visible = false;
  int shown = 0;
  int cancels = 0;
};

class FakeView : public FormView {
public:
  FakeView(FakeForm& form, QWidget* parent) : FormView(form, parent), m_form(form) {
    auto* layout = new QVBoxLayout(this);
    done = new QPushButton(u"Done"_s, this);
    layout->addWidget(done);
    connect(done, &QPushButton::clicked, this, [this] { m_form.setVisible(false); });
  }
  QPushButton* done;

protected:
  void closeRequested() override {
    ++m_form.cancels;
    if (m_form.cancels > 1) {
      m_form.setVisible(false);  // the second attempt is let through
    }
  }

private:
  FakeForm& m_form;
};

TEST(QtUiModalTest, ShowsTheFormsViewUntilTheFormHidesItself) {
  QtUi ui;
  ui.registerView<FakeForm, FakeView>(u"QORVA_Fake"_s);
  FakeForm form;
  QSignalSpy opened(&ui, &QtUi::viewOpened);
  QSignalSpy closed(&ui, &QtUi::viewClosed);
  QString title;
  whenModal([&title](QWidget& modal) {
    title = modal.windowTitle();
    if (auto* view = dynamic_cast<FakeView*>(&modal)) {
      QTest::mouseClick(view->done, Qt::LeftButton);
    }
  });
  ui.showModal(form);
  EXPECT_EQ(form.shown, 1);
  EXPECT_FALSE(form.visible);
  EXPECT_EQ(title, u"Fake Form"_s);
  EXPECT_EQ(opened.count(), 1);
  EXPECT_EQ(closed.count(), 1);
  EXPECT_TRUE(ui.openViews().isEmpty());
}

TEST(QtUiModalTest, ClosingTheDialogAsksTheFormWhichMayRefuse) {
  QtUi ui;
  ui.registerView<FakeForm, FakeView>(u"QORVA_Fake"_s);
  FakeForm form;
  bool stillOpenAfterFirst = false;
  whenModal([&](QWidget& modal) {
    QTest::keyClick(&modal, Qt::Key_Escape);  // refused by the form: the dialog stays
    QCoreApplication::processEvents();
    stillOpenAfterFirst = modal.isVisible();
    QTest::keyClick(&modal, Qt::Key_Escape);
  });
  ui.showModal(form);
  EXPECT_TRUE(stillOpenAfterFirst);
  EXPECT_EQ(form.cancels, 2);
  EXPECT_FALSE(form.visible);
}

TEST(QtUiModalTest, AFormThatHidesWhileLoadingShowsNoDialog) {
  class HidingForm : public FakeForm {
  public:
    // Its loading finds nothing to show and hides it again at once.
    void setVisible(bool) override { visible = false; }
  };
  QtUi ui;
  ui.registerView<FakeForm, FakeView>(u"QORVA_Fake"_s);
  HidingForm form;
  QSignalSpy closed(&ui, &QtUi::viewClosed);
  ui.showModal(form);  // would hang here if the dialog ran
  EXPECT_EQ(closed.count(), 1);
}

TEST(QtUiModalTest, AFormWithoutAViewIsReportedAndNotShown) {
  QtUi ui;
  FakeForm form;
  BoxSeen seen;
  pressInNextBox(B::Ok, seen);
  ui.showModal(form);
  EXPECT_EQ(form.shown, 0);
  EXPECT_TRUE(seen.text.contains(u"Fake Form"_s)) << seen.text.toStdString();
  EXPECT_EQ(seen.icon, QMessageBox::Information);
}

TEST(QtUiTest, TheHourglassIsTheApplicationsOverrideCursor) {
  QtUi ui;
  QSignalSpy changes(&ui, &QtUi::pointerChanged);
  ASSERT_EQ(QGuiApplication::overrideCursor(), nullptr);
  ui.setPointer(platform::Pointer::Hourglass);
  ui.setPointer(platform::Pointer::Hourglass);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  EXPECT_EQ(ui.pointer(), platform::Pointer::Hourglass);
  ui.setPointer(platform::Pointer::Default);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(changes.count(), 2);
}

}  // namespace
}  // namespace adjustacc::desktop
