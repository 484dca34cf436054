// A clerk's first minutes with the application, through the real widgets on a fresh embedded database with the
// demo set: open an account through Open Account, read both lists, choose rows, then find another account
// through Select Account by customer. Each step is saved as a screenshot under the build tree.
#include "desktopfixture.h"

#include "desktop/adjustaccview.h"
#include "desktop/custselectview.h"
#include "desktop/forminqview.h"
#include "desktop/gridmodel.h"
#include "desktop/gridview.h"
#include "desktop/selectcustforminqview.h"

#include "document/adjustacc.h"
#include "inquiry/forminq.h"
#include "inquiry/selectcustforminq.h"
#include "platform/button.h"
#include "platform/grid.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using document::QORVA_AdjustAcc;
using inquiry::QORVA_FormInq;
using inquiry::QORVA_SelectCustFormInq;

void clickRow(GridView& list, int row) {
  QTableView* table = list.table();
  int column = 0;
  while (column < table->model()->columnCount() && table->isColumnHidden(column)) {
    ++column;
  }
  const QRect cell = table->visualRect(table->model()->index(row, column));
  ASSERT_TRUE(cell.isValid()) << "row " << row << " is not on screen";
  QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.center());
}

void typeInto(QLineEdit& edit, const QString& text) {
  edit.setFocus();
  edit.selectAll();
  QTest::keyClicks(&edit, text);
}

int rowsOf(GridView* list) { return list->table()->model()->rowCount(); }

// Every heading can be read whole and the list needs no horizontal scroll bar.
void expectColumnsFit(GridView& list) {
  QTableView* table = list.table();
  EXPECT_EQ(table->horizontalScrollBar()->maximum(), 0) << table->objectName().toStdString();
  for (int c = 0; c < table->model()->columnCount(); ++c) {
    if (table->isColumnHidden(c)) {
      continue;
    }
    const QString heading = table->model()->headerData(c, Qt::Horizontal).toString();
    const QFont font = table->model()->headerData(c, Qt::Horizontal, Qt::FontRole).value<QFont>();
    EXPECT_GE(table->columnWidth(c), QFontMetrics(font).horizontalAdvance(heading))
        << table->objectName().toStdString() << " " << heading.toStdString();
  }
}

void openAccount(DocumentWindow& window, const QString& type, const QString& number) {
  whenShown<FormInqView>([type, number](FormInqView& view) {
    typeInto(*view.typeBox()->lineEdit(), type);
    typeInto(*view.numberBox(), number);
    QTest::mouseClick(view.button(QORVA_FormInq::OkButton), Qt::LeftButton);
  });
  window.openAccount();
}

class ClerkScenario : public DesktopFixture {};

TEST_F(ClerkScenario, OpensAnAccountReadsItsListsAndFindsAnotherThroughItsCustomer) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_EQ(window().statusText()->text(), u"Ready"_s);
  EXPECT_TRUE(window().windowTitle().contains(u"Avery Lindqvist"_s));
  screenshot(window(), u"01-signed-on"_s);

  // --- Open Account: type and number typed into the dialog, OK --------------------------------------------------
  whenShown<FormInqView>([](FormInqView& view) {
    EXPECT_EQ(view.windowTitle(), u"Open Account"_s);
    typeInto(*view.typeBox()->lineEdit(), u"CITATION ENF001"_s);
    typeInto(*view.numberBox(), u"1000011"_s);
    screenshot(view, u"02-open-account"_s);
    QTest::mouseClick(view.button(QORVA_FormInq::OkButton), Qt::LeftButton);
  });
  window().openAccount();
  QORVA_AdjustAcc* document = window().currentDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->accountType(), u"C"_s);
  // The number as typed, completed with its check digit.
  EXPECT_TRUE(document->accountNumber().startsWith(u"1000011-"_s)) << document->accountNumber().toStdString();
  EXPECT_EQ(document->accountNumber().size(), 9);

  AdjustAccView* view = window().currentView();
  ASSERT_NE(view, nullptr);
  GridView* receivables = view->list(QORVA_AdjustAcc::ReceivablesList);
  GridView* receipts = view->list(QORVA_AdjustAcc::ReceiptsList);
  ASSERT_TRUE(waitFor([&] { return rowsOf(receivables) > 0 && rowsOf(receipts) > 0; }))
      << window().statusText()->text().toStdString();
  EXPECT_EQ(window().statusText()->text(), u"Ready"_s);
  const QAbstractItemModel* arModel = receivables->table()->model();
  EXPECT_EQ(arModel->index(0, 0).data().toString(), u"SMITH TRUCKING LLC"_s);
  EXPECT_EQ(arModel->index(0, 1).data().toString(), u"CITATION ENF001"_s);
  EXPECT_TRUE(arModel->index(0, 5).data().toString().startsWith(u'$'));
  // Dates in the clerk's short date, not as the host sends them.
  EXPECT_EQ(arModel->index(0, 4).data().toString(),
            QLocale().toString(QDate::fromString(arModel->index(0, 4).data(Qt::EditRole).toString(), Qt::ISODate),
                               QLocale::ShortFormat));
  expectColumnsFit(*receivables);
  expectColumnsFit(*receipts);
  screenshot(window(), u"03-account-lists"_s);

  // --- choosing rows: each list's button follows its own selection -----------------------------------------------
  QPushButton* arDetail = view->button(QORVA_AdjustAcc::ArDetailButton);
  QPushButton* receiptDetail = view->button(QORVA_AdjustAcc::ReceiptDetailButton);
  EXPECT_FALSE(arDetail->isEnabled());
  EXPECT_FALSE(receiptDetail->isEnabled());
  clickRow(*receivables, 0);
  EXPECT_TRUE(arDetail->isEnabled());
  EXPECT_FALSE(receiptDetail->isEnabled());
  screenshot(window(), u"04-receivable-chosen"_s);
  clickRow(*receipts, 0);
  EXPECT_TRUE(receiptDetail->isEnabled());
  EXPECT_FALSE(arDetail->isEnabled());
  EXPECT_TRUE(receivables->table()->selectionModel()->selectedRows().isEmpty());
  screenshot(window(), u"05-receipt-chosen"_s);

  // --- Select Account: find a customer, pick one of the customer's citations -----------------------------------
  QString chosenNumber;
  whenShown<FormInqView>([&chosenNumber](FormInqView& openAccount) {
    whenShown<SelectCustFormInqView>([&chosenNumber](SelectCustFormInqView& select) {
      EXPECT_EQ(select.windowTitle(), u"Select Account"_s);
      typeInto(*select.typeBox()->lineEdit(), u"PAID IN FULL"_s);
      CustSelectView* customer = select.customerSelector();
      typeInto(*customer->searchBox(), u"acme"_s);
      QTest::mouseClick(customer->searchButton(), Qt::LeftButton);
      // One customer found: chosen at once, and the customer's accounts paid in full are asked for.
      EXPECT_TRUE(waitFor([&] { return rowsOf(select.accounts()) > 0; }))
          << select.status()->text().toStdString();
      EXPECT_EQ(customer->chosen()->text(), u"100003  ACME HAULING INC"_s);
      EXPECT_TRUE(select.status()->text().startsWith(u"Displaying PAID IN FULLs for ACME HAULING INC"_s))
          << select.status()->text().toStdString();
      auto& form = dynamic_cast<QORVA_SelectCustFormInq&>(select.form());
      int citation = -1;
      for (int row = 0; row < form.mSdgGrid.rows() && citation < 0; ++row) {
        if (form.mSdgGrid.column(u"FORM_TYP_CD"_s).cellValue(row).toString() == u"C"_s) {
          citation = row;
        }
      }
      if (citation < 0) {
        ADD_FAILURE() << "no citation among the customer's accounts";
        QTest::mouseClick(select.button(QORVA_SelectCustFormInq::CancelButton), Qt::LeftButton);
        return;
      }
      chosenNumber = form.mSdgGrid.column(u"FORM_NUMBER"_s).cellValue(citation).toString();
      clickRow(*select.accounts(), citation);
      EXPECT_TRUE(select.button(QORVA_SelectCustFormInq::ConfirmButton)->isEnabled());
      // Money as money in every column, "Original Assessment" too.
      const QAbstractItemModel* accounts = select.accounts()->table()->model();
      EXPECT_TRUE(accounts->index(citation, form.mSdgGrid.columnIndex(u"ORIG_ASSMT_AMT"_s)).data().toString()
                      .startsWith(u'$'));
      expectColumnsFit(*select.accounts());
      screenshot(select, u"06-select-account"_s);
      QTest::mouseClick(select.button(QORVA_SelectCustFormInq::ConfirmButton), Qt::LeftButton);
      if (form.isVisible()) {
        QTest::mouseClick(select.button(QORVA_SelectCustFormInq::CancelButton), Qt::LeftButton);
      }
    });
    QTest::mouseClick(openAccount.button(QORVA_FormInq::SelectAccountButton), Qt::LeftButton);
    // Back in Open Account once Select Account has closed.
    EXPECT_EQ(openAccount.numberBox()->text(), chosenNumber);
    screenshot(openAccount, u"07-open-account-from-customer"_s);
    QTest::mouseClick(openAccount.button(QORVA_FormInq::OkButton), Qt::LeftButton);
  });
  window().openAccount();
  ASSERT_FALSE(chosenNumber.isEmpty());
  EXPECT_EQ(document->accountNumber(), chosenNumber);
  ASSERT_TRUE(waitFor([&] {
    return rowsOf(receivables) > 0 &&
           receivables->table()->model()->index(0, 2).data().toString() == chosenNumber.left(7);
  })) << window().statusText()->text().toStdString();
  EXPECT_FALSE(arDetail->isEnabled());
  EXPECT_FALSE(receiptDetail->isEnabled());
  screenshot(window(), u"08-account-from-customer"_s);
}

TEST_F(ClerkScenario, EnterOrADoubleClickOnARowOpensItAsItsButtonWould) {
  ASSERT_NO_FATAL_FAILURE(start());
  openAccount(window(), u"CITATION ENF001"_s, u"1000011"_s);
  QORVA_AdjustAcc* document = window().currentDocument();
  GridView* receivables = window().currentView()->list(QORVA_AdjustAcc::ReceivablesList);
  GridView* receipts = window().currentView()->list(QORVA_AdjustAcc::ReceiptsList);
  ASSERT_TRUE(waitFor([&] { return rowsOf(receivables) > 0 && rowsOf(receipts) > 0; }));

  // Whatever the detail button shows is closed here: this test is about how the row is opened.
  boxWatch.stop();
  QTimer closer;
  closer.setInterval(20);
  QObject::connect(&closer, &QTimer::timeout, [] {
    if (QWidget* modal = QApplication::activeModalWidget(); modal != nullptr && modal->isVisible()) {
      modal->close();
    }
  });
  closer.start();
  QSignalSpy arDetail(&document->mCmdButton[QORVA_AdjustAcc::ArDetailButton], &platform::Button::clicked);
  QSignalSpy receiptDetail(&document->mCmdButton[QORVA_AdjustAcc::ReceiptDetailButton], &platform::Button::clicked);

  // Keys go to the list only once its window is the active one.
  window().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
  receivables->table()->setFocus();
  // The list's current row reaches the view on the event loop, after the rows.
  ASSERT_TRUE(waitFor([&] { return receivables->table()->currentIndex().isValid(); }));
  QTest::keyClick(receivables->table(), Qt::Key_Return);
  EXPECT_EQ(arDetail.count(), 1);
  EXPECT_EQ(document->mSdgDBGrid[QORVA_AdjustAcc::ReceivablesList].selectedRows(), QList<int>{0});

  QTableView* table = receipts->table();
  const QPoint cell = table->visualRect(table->model()->index(0, 0)).center();
  QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell);
  QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, cell);
  QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, cell);
  EXPECT_EQ(receiptDetail.count(), 1);
  EXPECT_EQ(arDetail.count(), 1);
  closer.stop();
}

}  // namespace
}  // namespace adjustacc::desktop::testing
