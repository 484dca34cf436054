// The scripted Ui that screen tests use in place of a person.
#include "platform/scriptedui.h"

#include <gtest/gtest.h>

#include <ostream>

#include <functional>

using adjustacc::platform::ModalForm;
using adjustacc::platform::MsgAnswer;
using adjustacc::platform::MsgButtons;
using adjustacc::platform::MsgIcon;
using adjustacc::platform::Pointer;
using adjustacc::platform::ScriptedUi;

namespace {

QString s(const char* text) { return QString::fromUtf8(text); }

class FakeForm : public ModalForm {
public:
  FakeForm(QString name, QString caption) : m_name(std::move(name)), m_caption(std::move(caption)) {}
  QString formName() const override { return m_name; }
  QString caption() const override { return m_caption; }
  bool isVisible() const override { return m_visible; }
  void setVisible(bool visible) override { m_visible = visible; }
  QString result;

private:
  QString m_name;
  QString m_caption;
  bool m_visible = false;
};

}  // namespace

TEST(ScriptedUi, RecordsEveryBoxAndAnswersFromTheQueueInOrder) {
  ScriptedUi ui;
  ui.queueAnswers({MsgAnswer::No, MsgAnswer::Cancel});
  EXPECT_EQ(ui.messageBox(s("Adjustment data has been changed.  Do you wish to save these changes?"),
                          MsgButtons::YesNoCancel, MsgIcon::Question, s("Adjust Account")),
            MsgAnswer::No);
  EXPECT_EQ(ui.messageBox(s("second"), MsgButtons::YesNoCancel, MsgIcon::Question, s("t")), MsgAnswer::Cancel);
  EXPECT_EQ(ui.messageBox(s("third"), MsgButtons::Ok, MsgIcon::Critical, s("t")), MsgAnswer::Ok);

  ASSERT_EQ(ui.boxCount(), 3);
  const ScriptedUi::Box first = ui.boxes().at(0);
  EXPECT_EQ(first.text, s("Adjustment data has been changed.  Do you wish to save these changes?"));
  EXPECT_EQ(first.buttons, MsgButtons::YesNoCancel);
  EXPECT_EQ(first.icon, MsgIcon::Question);
  EXPECT_EQ(first.title, s("Adjust Account"));
  EXPECT_EQ(ui.lastBox().icon, MsgIcon::Critical);
  EXPECT_EQ(ui.boxTexts().at(1), s("second"));
  EXPECT_TRUE(ui.scriptErrors().isEmpty());
}

struct DefaultCase {
  const char* label;
  MsgButtons buttons;
  MsgAnswer plain;       // with no default configured
  MsgAnswer configured;  // with the default set to No
};

// Named in failure messages by its label.
void PrintTo(const DefaultCase& value, std::ostream* out) { *out << value.label; }

class ScriptedUiDefaults : public ::testing::TestWithParam<DefaultCase> {};

TEST_P(ScriptedUiDefaults, AnEmptyQueueAnswersTheFirstButtonOrTheConfiguredOneWhenOffered) {
  ScriptedUi ui;
  EXPECT_EQ(ui.messageBox(s("x"), GetParam().buttons, MsgIcon::None, s("t")), GetParam().plain);
  ui.setDefaultAnswer(MsgAnswer::No);
  EXPECT_EQ(ui.messageBox(s("x"), GetParam().buttons, MsgIcon::None, s("t")), GetParam().configured);
}

INSTANTIATE_TEST_SUITE_P(
    Buttons, ScriptedUiDefaults,
    ::testing::Values(DefaultCase{"Ok", MsgButtons::Ok, MsgAnswer::Ok, MsgAnswer::Ok},
                      DefaultCase{"OkCancel", MsgButtons::OkCancel, MsgAnswer::Ok, MsgAnswer::Ok},
                      DefaultCase{"YesNo", MsgButtons::YesNo, MsgAnswer::Yes, MsgAnswer::No},
                      DefaultCase{"YesNoCancel", MsgButtons::YesNoCancel, MsgAnswer::Yes, MsgAnswer::No},
                      DefaultCase{"RetryCancel", MsgButtons::RetryCancel, MsgAnswer::Retry, MsgAnswer::Retry},
                      DefaultCase{"AbortRetryIgnore", MsgButtons::AbortRetryIgnore, MsgAnswer::Abort,
                                  MsgAnswer::Abort}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(ScriptedUi, AScriptedAnswerTheBoxDoesNotOfferIsReportedAsAScriptError) {
  ScriptedUi ui;
  ui.queueAnswer(MsgAnswer::Yes);
  EXPECT_EQ(ui.messageBox(s("Select an Excess Fund"), MsgButtons::Ok, MsgIcon::Exclamation, s("t")), MsgAnswer::Ok);
  ASSERT_EQ(ui.scriptErrors().size(), 1);
  EXPECT_TRUE(ui.scriptErrors().at(0).contains(s("Select an Excess Fund")));
  EXPECT_EQ(ui.pendingAnswers(), 0);
}

TEST(ScriptedUi, ShowModalRunsTheCallbackAndReturnsOnlyWhenTheFormIsHidden) {
  ScriptedUi ui;
  FakeForm inquiry(s("QORVA_FormInq"), s("Open Account"));
  FakeForm select(s("QORVA_SelectCustFormInq"), s("Select Account"));
  bool visibleInCallback = false;
  ui.queueModal([&](ModalForm& form) {
    visibleInCallback = form.isVisible();
    ui.showModal(select);  // a dialogue opening another
    inquiry.result = s("Cancel");
    form.setVisible(false);
  });
  ui.onModal(s("QORVA_SelectCustFormInq"), [](ModalForm&) {});  // leaves its form open

  ui.showModal(inquiry);
  EXPECT_TRUE(visibleInCallback);
  EXPECT_EQ(inquiry.result, s("Cancel"));
  EXPECT_FALSE(inquiry.isVisible());
  EXPECT_FALSE(select.isVisible());
  ASSERT_EQ(ui.shownForms().size(), 2);
  EXPECT_EQ(ui.shownForms().at(0).caption, s("Open Account"));
  EXPECT_FALSE(ui.shownForms().at(0).hiddenByUi);
  EXPECT_TRUE(ui.shownForms().at(1).hiddenByUi);

  ui.showModal(inquiry);  // nothing queued, no handler by that name: shown and closed again
  EXPECT_FALSE(inquiry.isVisible());
  EXPECT_TRUE(ui.shownForms().at(2).hiddenByUi);
}

TEST(ScriptedUi, KeepsPointerChangesBeepsAndTheOrderOfEverything) {
  ScriptedUi ui;
  FakeForm form(s("QORVA_LicPurchOpt"), s("License Purchase Option"));
  ui.setPointer(Pointer::Hourglass);
  ui.messageBox(s("Comment is required"), MsgButtons::Ok, MsgIcon::Exclamation, s("t"));
  ui.beep();
  ui.showModal(form);
  ui.setPointer(Pointer::Default);

  EXPECT_EQ(ui.pointer(), Pointer::Default);
  EXPECT_EQ(ui.pointerChanges(), (QList<Pointer>{Pointer::Hourglass, Pointer::Default}));
  EXPECT_EQ(ui.beepCount(), 1);
  EXPECT_EQ(ui.events(), (QStringList{s("pointer: hourglass"), s("box: Comment is required"), s("beep"),
                                      s("form: QORVA_LicPurchOpt"), s("pointer: default")}));
  ui.clearRecord();
  EXPECT_EQ(ui.boxCount(), 0);
  EXPECT_TRUE(ui.events().isEmpty());
}
