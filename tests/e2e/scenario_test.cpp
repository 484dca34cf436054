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
#include "platform/grid.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
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

}  // namespace
}  // namespace adjustacc::desktop::testing
