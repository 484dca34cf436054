// The document host window with the real account adjustment document over a scripted host: the tab and its
// caption, the document's toolbar entry, the status bar, Open Account through the real dialog, and closing.
#include "desktop/adjustaccview.h"
#include "desktop/application.h"
#include "desktop/codetablestore.h"
#include "desktop/documentwindow.h"
#include "desktop/forminqview.h"
#include "desktop/gridview.h"
#include "desktop/qtui.h"
#include "desktop/unavailableprinting.h"

#include "support/screentest.h"

#include "document/adjustacc.h"
#include "messaging/scriptedlink.h"
#include "platform/checkdigit.h"
#include "platform/clock.h"
#include "platform/errorreporter.h"
#include "platform/fieldmarking.h"
#include "platform/formnumbervalidator.h"
#include "platform/keyfilters.h"
#include "platform/memorycodelookup.h"
#include "platform/modmessagetitle.h"
#include "platform/nextnumber.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/sqlcodetablesource.h"
#include "platform/statusbar.h"
#include "platform/troopdistricts.h"
#include "platform/user.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using document::QORVA_AdjustAcc;
using testsupport::section;

// The desktop's services around a scripted host link.
struct DesktopServices {
  DesktopServices() : store(u"test.codes.window"_s) {
    session.setSessionFolder(folder.path());
    codes.add(u"REFDOCTYP"_s, u"C"_s, u"CITATION ENF001"_s);
    codes.add(u"CSTATUS"_s, u"U"_s, u"UNPAID"_s);
    codes.add(u"REFUNDTYP"_s, u"O"_s, u"OPEN"_s);
    const auto rows = section({u"CD_TBL_ID"_s, u"CD_TBL_CD"_s, u"CD_TBL_DES"_s, u"EFCTV_DT"_s, u"END_DT"_s, u"REGION"_s},
                              {{u"FORMDOC"_s, u"C"_s, u"CITATION ENF001"_s, u"2020-01-01"_s, QVariant(), u"NE"_s},
                               {u"FORMDOC"_s, u"P"_s, u"PAYMENT PLAN"_s, u"2020-01-01"_s, QVariant(), u"NE"_s}});
    EXPECT_TRUE(store.replaceTable(u"FORMDOC"_s, rows));
    Application::registerViews(ui);
  }

  QTemporaryDir folder;
  QtUi ui;
  messaging::ScriptedLink link;
  platform::Clock clock;
  platform::User user{u"ADMIN01"_s, u"Avery Lindqvist"_s, u"NE"_s};
  platform::SessionSettings session;
  platform::StatusBar statusBar;
  platform::ErrorReporter errors{ui};
  platform::MemoryCodeLookup codes;
  CodeTableStore store;
  platform::SqlCodeTableSource codeTables{store.connectionName(), clock};
  platform::KeyFilters keyFilters{codes};
  platform::CheckDigit checkDigit;
  platform::FormNumberValidator formNumbers{codes};
  platform::TroopDistricts troopDistricts{codes};
  platform::NextNumber numbers{link, session, user};
  platform::FieldMarking fieldMarking;
  UnavailablePrinting printing;
  platform::Services services{ui,           link,          clock,        user,        session,    statusBar,
                              errors,       codes,         codeTables,   keyFilters,  checkDigit, formNumbers,
                              troopDistricts, numbers,     fieldMarking, printing,    printing};
};

class DocumentWindowTest : public ::testing::Test {
protected:
  void SetUp() override {
    window = std::make_unique<DocumentWindow>(s.ui, s.statusBar);
    s.ui.setMainWindow(window.get());
    window->setDocumentFactory([this](document::DocumentContainer& container, document::DocumentHost& host) {
      return std::make_unique<QORVA_AdjustAcc>(s.services, container, host);
    });
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
  }
  void TearDown() override { window.reset(); }

  // Runs `step` on the Open Account dialog once it is shown.
  void whenOpenAccountShows(std::function<void(FormInqView&)> step) {
    auto* poll = new QTimer(window.get());
    poll->setInterval(10);
    QObject::connect(poll, &QTimer::timeout, [poll, step] {
      if (auto* view = qobject_cast<FormInqView*>(QApplication::activeModalWidget()); view && view->isVisible()) {
        poll->stop();
        poll->deleteLater();
        step(*view);
      }
    });
    poll->start();
  }

  DesktopServices s;
  std::unique_ptr<DocumentWindow> window;
};

TEST_F(DocumentWindowTest, ADocumentOpensInATabCaptionedAsItsContainerAndAddsItsToolbarEntry) {
  QORVA_AdjustAcc* document = window->newDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(window->documentCount(), 1);
  EXPECT_EQ(window->tabs()->tabText(0), u"Adjust Account"_s);
  EXPECT_EQ(platform::modMessageTitle::messageTitle(), u"Adjust Account"_s);
  EXPECT_EQ(s.statusBar.containerTag(), DocumentWindow::kTag);
  EXPECT_TRUE(window->hasEntry(QORVA_AdjustAcc::kOpenAccountEntry));
  ASSERT_NE(window->entryAction(QORVA_AdjustAcc::kOpenAccountEntry), nullptr);
  EXPECT_TRUE(window->toolBar()->actions().contains(window->entryAction(QORVA_AdjustAcc::kOpenAccountEntry)));
  EXPECT_EQ(window->statusText()->text(), u"Ready"_s);
  EXPECT_FALSE(document->DataChanged());
  // Both buttons start disabled, and the lists show their captions.
  AdjustAccView* view = window->currentView();
  ASSERT_NE(view, nullptr);
  EXPECT_FALSE(view->button(0)->isEnabled());
  EXPECT_EQ(view->button(0)->text(), u"AR Detail"_s);
  EXPECT_EQ(view->button(1)->text(), u"Receipt Detail"_s);
  EXPECT_EQ(view->list(0)->captionLabel()->text(), u"Account Receivables"_s);
  EXPECT_TRUE(view->list(0)->captionLabel()->font().bold());
}

TEST_F(DocumentWindowTest, ClosingTheDocumentRemovesItsEntryAndItsWorkingFile) {
  QORVA_AdjustAcc* document = window->newDocument();
  ASSERT_NE(document, nullptr);
  QFile work(document->workFilePath());
  ASSERT_TRUE(work.open(QIODevice::WriteOnly));
  work.close();
  window->closeCurrentDocument();
  EXPECT_FALSE(QFile::exists(work.fileName()));
  EXPECT_FALSE(window->hasEntry(QORVA_AdjustAcc::kOpenAccountEntry));
  EXPECT_EQ(window->documentCount(), 0);
  EXPECT_EQ(window->currentDocument(), nullptr);
}

TEST_F(DocumentWindowTest, TheStatusBarShowsTheServicesTextAndABusyIndicator) {
  auto* busy = window->findChild<QProgressBar*>(u"busyIndicator"_s);
  ASSERT_NE(busy, nullptr);
  s.statusBar.setText(u"Searching for CITATION ENF001 number 1000011-4"_s);
  EXPECT_EQ(window->statusText()->text(), u"Searching for CITATION ENF001 number 1000011-4"_s);
  EXPECT_FALSE(busy->isVisible());
  s.ui.setPointer(platform::Pointer::Hourglass);
  EXPECT_TRUE(busy->isVisible());
  s.ui.setPointer(platform::Pointer::Default);
  EXPECT_FALSE(busy->isVisible());
  s.statusBar.setReady(false);
  EXPECT_TRUE(busy->isVisible());
  s.statusBar.setReady(true);
  EXPECT_FALSE(busy->isVisible());
}

TEST_F(DocumentWindowTest, OpenAccountThroughTheDialogAsksTheHostAndFillsTheLists) {
  QORVA_AdjustAcc* document = window->newDocument();
  ASSERT_NE(document, nullptr);
  whenOpenAccountShows([](FormInqView& view) {
    // The type box offers the default type, chosen.
    EXPECT_EQ(view.typeBox()->currentText(), u"CITATION ENF001"_s);
    QTest::keyClicks(view.numberBox(), u"1000011"_s);
    QTest::mouseClick(view.button(0), Qt::LeftButton);
  });
  window->entryAction(QORVA_AdjustAcc::kOpenAccountEntry)->trigger();

  ASSERT_EQ(s.link.requestCount(), 1);
  const messaging::Request request = s.link.lastRequest();
  EXPECT_EQ(request.code, 47);
  EXPECT_EQ(request.param(u"key:REF_TYP_CD"_s), u"C"_s);
  EXPECT_TRUE(request.param(u"key:REF_NBR"_s).startsWith(u"1000011-"_s));
  EXPECT_TRUE(document->requestOutstanding());
  EXPECT_TRUE(window->isBusy());

  s.link.answerLast(testsupport::replyWith(
      {{u"ACNTSRCVBL"_s, section({u"CUST_NAME"_s, u"ACCT_RCVBL_NBR"_s, u"ACCT_RCVBL_TYP_CD"_s, u"ACCT_STTS_CD"_s,
                                   u"ACCT_RCVBL_BAL_AMT"_s},
                                  {{u"SMITH TRUCKING LLC"_s, u"1000011"_s, u"C"_s, u"U"_s, u"512.50"_s}})},
       {u"RECEIPT"_s, section({u"RCPT_DT"_s, u"RCPT_NBR"_s, u"RCPT_STTS_CD"_s, u"TOT_PYMT_AMT"_s},
                               {{u"2024-02-12"_s, u"0004711"_s, u"O"_s, u"150.00"_s},
                                {u"2024-02-20"_s, u"0004712"_s, u"O"_s, u"20.00"_s}})}}));
  AdjustAccView* view = window->currentView();
  ASSERT_TRUE(testsupport::waitFor([&] { return view->list(1)->table()->model()->rowCount() == 2; }));
  EXPECT_EQ(view->list(0)->table()->model()->rowCount(), 1);
  EXPECT_EQ(window->statusText()->text(), u"Ready"_s);
  EXPECT_FALSE(window->isBusy());
  EXPECT_TRUE(document->DataChanged());
  const QAbstractItemModel* receivables = view->list(0)->table()->model();
  EXPECT_EQ(receivables->index(0, 1).data().toString(), u"CITATION ENF001"_s);  // described per row
}

TEST_F(DocumentWindowTest, ClosingTheOpenAccountDialogIsItsCancelAndSendsNothing) {
  window->newDocument();
  whenOpenAccountShows([](FormInqView& view) { QTest::keyClick(&view, Qt::Key_Escape); });
  window->openAccount();
  EXPECT_EQ(s.link.requestCount(), 0);
  EXPECT_FALSE(window->currentDocument()->DataChanged());
}

}  // namespace
}  // namespace adjustacc::desktop
