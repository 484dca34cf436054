#include "platform/errorreporter.h"
#include "platform/errortrap.h"
#include "platform/modmessagetitle.h"
#include "platform/scriptedui.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace adjustacc::platform;

namespace {

class ErrorTrapTest : public ::testing::Test {
protected:
  void SetUp() override { modMessageTitle::setMessageTitle(QStringLiteral("Adjust Account 0001234-4")); }
  void TearDown() override { modMessageTitle::setMessageTitle(QString()); }

  TrapOutcome run(const std::function<void()>& body) {
    return trap(reporter, QStringLiteral("AdjustAcc"), QStringLiteral("QORVA_AccDetail.SaveData"), body);
  }

  ScriptedUi ui;
  ErrorReporter reporter{ui};
};

TEST_F(ErrorTrapTest, LeavingEarlyEndsTheProcedureSilently) {
  bool after = false;
  EXPECT_EQ(run([&] {
              raise(AppError::LeaveEarly);
              after = true;
            }),
            TrapOutcome::LeftEarly);
  EXPECT_FALSE(after);
  EXPECT_EQ(ui.boxCount(), 0);
  EXPECT_EQ(run([&] { raise(AppError::ActivityCheckFailed, QStringLiteral(" Comment must be entered.")); }),
            TrapOutcome::LeftEarly);
  EXPECT_EQ(ui.boxCount(), 0);
}

TEST_F(ErrorTrapTest, AMissingTemplateIsReportedWithItsDescription) {
  EXPECT_EQ(run([&] {
              raise(AppError::MissingPrintTemplate,
                    QStringLiteral("No template file is available for print. Contact your system administrator."));
            }),
            TrapOutcome::Failed);
  ASSERT_EQ(ui.boxCount(), 1);
  const ScriptedUi::Box box = ui.lastBox();
  EXPECT_EQ(box.text, u"No template file is available for print. Contact your system administrator.\r\n\r\n"
                      u"Source: QORVA_AccDetail.SaveData");
  EXPECT_EQ(box.icon, MsgIcon::Critical);
  EXPECT_EQ(box.buttons, MsgButtons::Ok);
  EXPECT_EQ(box.title, u"Adjust Account 0001234-4");
}

TEST_F(ErrorTrapTest, AnyOtherExceptionIsReportedAndTheProcedureEnds) {
  bool after = false;
  EXPECT_EQ(run([&] {
              throw std::overflow_error("Currency overflow in addition");
              after = true;
            }),
            TrapOutcome::Failed);
  EXPECT_FALSE(after);
  ASSERT_EQ(ui.boxCount(), 1);
  EXPECT_TRUE(ui.lastBox().text.startsWith(u"Currency overflow in addition"));
  EXPECT_EQ(run([] { throw 42; }), TrapOutcome::Failed);
  EXPECT_EQ(ui.boxCount(), 2);
}

TEST_F(ErrorTrapTest, NestedProceduresEachEndInTheirOwnTrap) {
  bool outerGoesOn = false;
  EXPECT_EQ(run([&] {
              trap(reporter, QStringLiteral("AdjustAcc"), QStringLiteral("QORVA_AccDetail.CheckEdit"),
                   [] { throw std::runtime_error("inner failure"); });
              outerGoesOn = true;
            }),
            TrapOutcome::Completed);
  EXPECT_TRUE(outerGoesOn);
  ASSERT_EQ(ui.boxCount(), 1);
  EXPECT_TRUE(ui.lastBox().text.endsWith(u"Source: QORVA_AccDetail.CheckEdit"));
}

TEST_F(ErrorTrapTest, WithoutAContainerCaptionTheApplicationNameTitlesTheBox) {
  modMessageTitle::setMessageTitle(QString());
  run([] { throw std::runtime_error("boom"); });
  EXPECT_EQ(ui.lastBox().title, u"AdjustAcc");
}

TEST(ProcedureError, CarriesTheObjectErrorNumbers) {
  EXPECT_EQ(static_cast<quint32>(AppError::LeaveEarly), 0x800403E8u);
  EXPECT_EQ(static_cast<quint32>(AppError::ActivityCheckFailed), 0x800403E9u);
  EXPECT_EQ(static_cast<quint32>(AppError::MissingPrintTemplate), 0x80040001u);
  try {
    raise(AppError::LeaveEarly);
    FAIL() << "raise returned";
  } catch (const ProcedureError& e) {
    EXPECT_EQ(e.number(), 0x800403E8u);
    EXPECT_TRUE(e.isSilent());
    EXPECT_FALSE(e.description().isEmpty());
  }
}

}  // namespace
