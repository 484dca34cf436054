// The document host window around the real document: the tab captioned as its container, the document's toolbar
// entry, the status bar and its busy indicator, the open account named where a clerk looks for it, Open Account
// closed with Escape, and closing the document.
#include "desktopfixture.h"

#include "desktop/adjustaccview.h"
#include "desktop/forminqview.h"
#include "desktop/gridview.h"

#include "document/adjustacc.h"
#include "host/embeddedlink.h"
#include "inquiry/forminq.h"
#include "platform/modmessagetitle.h"
#include "platform/statusbar.h"

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QToolBar>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using document::QORVA_AdjustAcc;

class DocumentWindowTest : public DesktopFixture {
protected:
  void SetUp() override {
    DesktopFixture::SetUp();
    ASSERT_NO_FATAL_FAILURE(start());
    document = window().currentDocument();
    ASSERT_NE(document, nullptr);
  }
  QORVA_AdjustAcc* document = nullptr;
};

TEST_F(DocumentWindowTest, TheDocumentIsInATabCaptionedAsItsContainerWithItsToolbarEntry) {
  EXPECT_EQ(window().documentCount(), 1);
  EXPECT_EQ(window().tabs()->tabText(0), u"Adjust Account"_s);
  EXPECT_EQ(platform::modMessageTitle::messageTitle(), u"Adjust Account"_s);
  EXPECT_EQ(app->statusBar().containerTag(), DocumentWindow::kTag);
  QAction* entry = window().entryAction(QORVA_AdjustAcc::kOpenAccountEntry);
  ASSERT_NE(entry, nullptr);
  EXPECT_TRUE(window().toolBar()->actions().contains(entry));
  EXPECT_FALSE(document->DataChanged());
  AdjustAccView* view = window().currentView();
  EXPECT_FALSE(view->button(QORVA_AdjustAcc::ArDetailButton)->isEnabled());
  EXPECT_EQ(view->button(QORVA_AdjustAcc::ReceiptDetailButton)->text(), u"Receipt Detail"_s);
  EXPECT_EQ(view->list(QORVA_AdjustAcc::ReceivablesList)->captionLabel()->text(), u"Account Receivables"_s);
}

TEST_F(DocumentWindowTest, TheStatusBarShowsTheServicesTextAndABusyIndicator) {
  auto* busy = window().findChild<QProgressBar*>(u"busyIndicator"_s);
  ASSERT_NE(busy, nullptr);
  app->statusBar().setText(u"Searching for CITATION ENF001 number 1000011-4"_s);
  EXPECT_EQ(window().statusText()->text(), u"Searching for CITATION ENF001 number 1000011-4"_s);
  EXPECT_FALSE(busy->isVisible());
  app->ui().setPointer(platform::Pointer::Hourglass);
  EXPECT_TRUE(busy->isVisible());
  app->ui().setPointer(platform::Pointer::Default);
  EXPECT_FALSE(busy->isVisible());
  app->statusBar().setReady(false);
  EXPECT_TRUE(busy->isVisible());
  app->statusBar().setReady(true);
  EXPECT_FALSE(busy->isVisible());
}

TEST_F(DocumentWindowTest, TheOpenAccountIsNamedInTheTitleTheTabAndTheStatusBar) {
  // No account yet: the title names the officer; the window system adds the application's name.
  EXPECT_FALSE(window().windowTitle().contains(QGuiApplication::applicationDisplayName()))
      << window().windowTitle().toStdString();
  EXPECT_FALSE(window().openAccountLabel()->isVisible());

  whenShown<FormInqView>([](FormInqView& view) {
    for (const auto& [edit, text] : {std::pair{view.typeBox()->lineEdit(), u"CITATION ENF001"_s},
                                     std::pair{view.numberBox(), u"1000011"_s}}) {
      edit->setFocus();
      edit->selectAll();
      QTest::keyClicks(edit, text);
    }
    QTest::mouseClick(view.button(inquiry::QORVA_FormInq::OkButton), Qt::LeftButton);
  });
  window().openAccount();
  const QString number = document->accountNumber();
  ASSERT_TRUE(number.startsWith(u"1000011-"_s)) << number.toStdString();
  // Named as soon as it is asked for; the customer follows with the lists.
  EXPECT_TRUE(window().windowTitle().contains(u"CITATION ENF001 "_s + number)) << window().windowTitle().toStdString();
  ASSERT_TRUE(waitFor([&] { return window().windowTitle().contains(u"SMITH TRUCKING LLC"_s); }))
      << window().windowTitle().toStdString();

  const QString account = u"CITATION ENF001 "_s + number + u" \u2014 SMITH TRUCKING LLC"_s;
  EXPECT_EQ(window().windowTitle(), account);
  EXPECT_EQ(window().tabs()->tabToolTip(0), account);
  EXPECT_TRUE(window().openAccountLabel()->isVisible());
  EXPECT_EQ(window().openAccountLabel()->text(), account);
  // The container keeps its caption, which titles every message box.
  EXPECT_EQ(window().tabs()->tabText(0), u"Adjust Account"_s);
  EXPECT_EQ(platform::modMessageTitle::messageTitle(), u"Adjust Account"_s);
  screenshot(window(), u"09-account-named"_s);

  window().closeCurrentDocument();
  EXPECT_FALSE(window().openAccountLabel()->isVisible());
  EXPECT_FALSE(window().windowTitle().contains(number));
}

TEST_F(DocumentWindowTest, LongStatusTextsGiveWayRatherThanWidenTheWindow) {
  const QString path = u"/srv/adjustacc/regional-offices/north-east/clerks/shared-workstations/"_s.repeated(3) +
                       u"adjustacc.sqlite"_s;
  window().setSignedOn(u"Avery Lindqvist-Montgomery-Fairweather (ADMIN01, region NE)"_s, u"Local data: "_s + path);
  app->statusBar().setText(u"Searching for CITATION ENF001 number 1000011-5 "_s.repeated(4));
  window().resize(1280, 760);
  QCoreApplication::processEvents();
  EXPECT_LE(window().minimumSizeHint().width(), 1280);
  EXPECT_EQ(window().width(), 1280);
  auto* host = window().findChild<QLabel*>(u"host"_s);
  ASSERT_NE(host, nullptr);
  EXPECT_EQ(host->text(), u"Local data: "_s + path);  // whole, for its tooltip
  EXPECT_LT(host->width(), host->sizeHint().width());
  screenshot(window(), u"10-long-status"_s);
}

TEST_F(DocumentWindowTest, ClosingOpenAccountIsItsCancelAndAsksTheHostNothing) {
  whenShown<FormInqView>([](FormInqView& view) { QTest::keyClick(&view, Qt::Key_Escape); });
  window().entryAction(QORVA_AdjustAcc::kOpenAccountEntry)->trigger();
  EXPECT_EQ(app->embeddedLink()->pending(), 0);
  EXPECT_FALSE(document->DataChanged());
  EXPECT_FALSE(document->requestOutstanding());
}

TEST_F(DocumentWindowTest, ClosingTheDocumentRemovesItsEntryAndItsWorkingFile) {
  QFile work(document->workFilePath());
  ASSERT_TRUE(work.open(QIODevice::WriteOnly));
  work.close();
  window().closeCurrentDocument();
  EXPECT_FALSE(QFile::exists(work.fileName()));
  EXPECT_FALSE(window().hasEntry(QORVA_AdjustAcc::kOpenAccountEntry));
  EXPECT_EQ(window().documentCount(), 0);
}

}  // namespace
}  // namespace adjustacc::desktop::testing
