// The user-interface thread never waits on the host. With every reply of the embedded host held back, opening
// an account returns to the event loop at once: the request is still outstanding when FileOpen has returned,
// the event loop keeps delivering timer ticks while it is, and the reply fills the lists later.
#include "desktopfixture.h"

#include "desktop/adjustaccview.h"
#include "desktop/forminqview.h"
#include "desktop/gridview.h"

#include "document/adjustacc.h"
#include "host/embeddedlink.h"
#include "inquiry/forminq.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using document::QORVA_AdjustAcc;

class Responsiveness : public DesktopFixture {};

TEST_F(Responsiveness, TheEventLoopRunsWhileTheAccountRequestIsOutstanding) {
  ASSERT_NO_FATAL_FAILURE(start(300));
  host::EmbeddedLink* link = app->embeddedLink();
  ASSERT_NE(link, nullptr);

  whenShown<FormInqView>([](FormInqView& view) {
    view.numberBox()->setFocus();
    QTest::keyClicks(view.numberBox(), u"1000011"_s);
    QTest::mouseClick(view.button(inquiry::QORVA_FormInq::OkButton), Qt::LeftButton);
  });
  window().openAccount();  // shows Open Account, sends the request and returns

  QORVA_AdjustAcc* document = window().currentDocument();
  ASSERT_NE(document, nullptr);
  GridView* receivables = window().currentView()->list(QORVA_AdjustAcc::ReceivablesList);
  // FileOpen has returned, and the reply has not come yet.
  EXPECT_TRUE(document->requestOutstanding());
  EXPECT_GE(link->pending(), 1);
  EXPECT_EQ(receivables->table()->model()->rowCount(), 0);
  EXPECT_TRUE(window().statusText()->text().startsWith(u"Searching for CITATION ENF001 number 1000011-"_s))
      << window().statusText()->text().toStdString();
  EXPECT_TRUE(window().isBusy());

  int ticks = 0;
  int ticksWhileOutstanding = 0;
  QTimer ticker;
  ticker.setInterval(10);
  QObject::connect(&ticker, &QTimer::timeout, [&] {
    ++ticks;
    if (document->requestOutstanding()) {
      ++ticksWhileOutstanding;
    }
  });
  ticker.start();
  ASSERT_TRUE(waitFor([&] { return receivables->table()->model()->rowCount() > 0; }));
  ticker.stop();

  // The event loop went round many times while the host was working: nothing waited for it.
  EXPECT_GE(ticksWhileOutstanding, 3) << "ticks while outstanding: " << ticksWhileOutstanding << " of " << ticks;
  EXPECT_FALSE(document->requestOutstanding());
  EXPECT_EQ(link->pending(), 0);
  EXPECT_EQ(window().statusText()->text(), u"Ready"_s);
  EXPECT_FALSE(window().isBusy());
}

}  // namespace
}  // namespace adjustacc::desktop::testing
