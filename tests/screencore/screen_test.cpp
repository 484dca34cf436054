// The modal screen base as an opener and the Ui port see it, and how a procedure ends on a failed step.
#include "support/screentest.h"
#include "support/serviceset.h"

#include "screencore/modalscreen.h"
#include "screencore/procedure.h"

#include <gtest/gtest.h>

namespace adjustacc::screencore::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

class CountingScreen : public ModalScreen {
public:
  explicit CountingScreen(platform::Services& services)
      : ModalScreen(services, u"QORVA_Counting"_s, u"Counting"_s, nullptr) {}
  void close() { setVisible(false); }
  void Form_Unload() { unload(); }
  QString sourceOf(const char* procedure) const { return source(procedure); }
  int loads = 0;
  int activations = 0;

private:
  void loaded() override { ++loads; }
  void activated() override { ++activations; }
};

TEST(ModalScreen, LoadsOnTheFirstShowingAndActivatesOnEach) {
  testsupport::ServiceSet set;
  CountingScreen screen(set.services);
  set.ui.onModal(u"QORVA_Counting"_s, [&](platform::ModalForm& form) {
    EXPECT_TRUE(form.isVisible());
    screen.close();
  });
  screen.showModal();
  screen.showModal();
  EXPECT_EQ(screen.loads, 1);
  EXPECT_EQ(screen.activations, 2);
  ASSERT_EQ(set.ui.shownForms().size(), 2);
  EXPECT_EQ(set.ui.shownForms().first().caption, u"Counting");
  EXPECT_FALSE(set.ui.shownForms().first().hiddenByUi);  // the screen hid itself
  EXPECT_FALSE(screen.isVisible());

  screen.Form_Unload();
  screen.showModal();
  EXPECT_EQ(screen.loads, 2);
  EXPECT_EQ(screen.sourceOf("Form_Load"), u"QORVA_Counting.Form_Load");
}

// A failed step reaches the clerk with its own text, under the procedure's name, through the error reporter.
TEST(Procedure, AFailedStepEndsTheProcedureWithItsText) {
  testsupport::ServiceSet set;
  const ProcedureNames source(u"QORVA_AccDetail"_s);
  bool ranOn = false;
  const auto outcome = platform::trap(set.services, source("SaveData"), [&] {
    valueOrFail(messaging::Result<int>::failure(u"The amount \"12,5.0\" is not a sum of money: Müller's typo"_s));
    ranOn = true;
  });
  EXPECT_EQ(outcome, platform::TrapOutcome::Failed);
  EXPECT_FALSE(ranOn);
  ASSERT_EQ(set.ui.boxCount(), 1);
  EXPECT_TRUE(set.ui.lastBox().text.contains(u"The amount \"12,5.0\" is not a sum of money: Müller's typo"));
  EXPECT_TRUE(set.ui.lastBox().text.contains(u"QORVA_AccDetail.SaveData"));

  messaging::RecordSet rows = testsupport::section({u"ASSMT_CD"_s}, {});
  platform::trap(set.services, source("mNcsbMessage_DataReady"),
                 [&] { failOn(rows.setSort(u"ASSMT_CD SIDEWAYS"_s), u"Sort"_s); });
  EXPECT_TRUE(set.ui.lastBox().text.startsWith(u"Sort text \"ASSMT_CD SIDEWAYS\""));
  EXPECT_EQ(valueOrFail(messaging::Result<int>(7)), 7);
}

}  // namespace
}  // namespace adjustacc::screencore::testing
