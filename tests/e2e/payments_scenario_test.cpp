// Receipts through the real widgets on a fresh embedded database with the demo set: a clerk backs a payment out of
// a demo receipt and sees the account read again with the amount owed once more; an excess fund is transferred
// in part to another receivable (after the clerk first tried more than the fund holds and read why not), and
// both the fund and the receiving receivable show it. Each step is saved as a screenshot under the build tree.
#include "desktopfixture.h"

#include "desktop/adjustaccview.h"
#include "desktop/dateedit.h"
#include "desktop/forminqview.h"
#include "desktop/gridview.h"
#include "desktop/paydetailview.h"
#include "desktop/paymententry.h"
#include "desktop/transpaymentview.h"
#include "desktop/worksheetview.h"

#include "document/adjustacc.h"
#include "inquiry/forminq.h"
#include "payments/paydetail.h"
#include "payments/transpayment.h"
#include "refunds/worksheet.h"
#include "platform/checkdigit.h"
#include "platform/currency.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableView>
#include <QTableWidget>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;
using document::QORVA_AdjustAcc;
using payments::QORVA_PayDetail;
using payments::QORVA_TransPayment;

int rowsOf(GridView* list) { return list->table()->model()->rowCount(); }

int columnOf(GridView* grid, const QString& caption) {
  QAbstractItemModel* model = grid->table()->model();
  for (int column = 0; column < model->columnCount(); ++column) {
    if (model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString() == caption) {
      return column;
    }
  }
  return -1;
}

int rowWith(GridView* grid, const QString& caption, const QString& text) {
  const int column = columnOf(grid, caption);
  QAbstractItemModel* model = grid->table()->model();
  for (int row = 0; column >= 0 && row < model->rowCount(); ++row) {
    if (model->index(row, column).data().toString().trimmed() == text) {
      return row;
    }
  }
  return -1;
}

void clickRow(GridView* grid, int row) {
  grid->table()->selectRow(row);
  QTest::mouseClick(grid->table()->viewport(), Qt::LeftButton, {},
                    grid->table()->visualRect(grid->table()->model()->index(row, 0)).center());
}

class PaymentsScenario : public DesktopFixture {
protected:
  // Opens the account `number` of the type described `type` (empty: the default, citation).
  void openAccount(const QString& type, const QString& number) {
    whenShown<FormInqView>([type, number](FormInqView& dialog) {
      if (!type.isEmpty()) {
        dialog.typeBox()->setCurrentIndex(dialog.typeBox()->findText(type));
      }
      dialog.numberBox()->setFocus();
      QTest::keyClicks(dialog.numberBox(), number);
      QTest::mouseClick(dialog.button(inquiry::QORVA_FormInq::OkButton), Qt::LeftButton);
    });
    window().openAccount();
    view = window().currentView();
    ASSERT_NE(view, nullptr);
    ASSERT_TRUE(waitFor([&] { return rowsOf(view->list(QORVA_AdjustAcc::ReceiptsList)) > 0; }))
        << window().statusText()->text().toStdString();
  }
  // Chooses receipt `number` in the list and opens its detail; `step` is the clerk at the Receipt Detail dialog.
  void openReceipt(const QString& number, const std::function<void(PayDetailView&)>& step) {
    GridView* receipts = view->list(QORVA_AdjustAcc::ReceiptsList);
    const int row = rowWith(receipts, u"Receipt #"_s, number);
    ASSERT_GE(row, 0);
    clickRow(receipts, row);
    whenShown<PayDetailView>(step);
    QTest::mouseClick(view->button(QORVA_AdjustAcc::ReceiptDetailButton), Qt::LeftButton);
  }
  QString amountDue(const QString& receivable) {
    GridView* receivables = view->list(QORVA_AdjustAcc::ReceivablesList);
    const int row = rowWith(receivables, u"Account #"_s, receivable);
    return row < 0 ? QString()
                   : receivables->table()->model()->index(row, columnOf(receivables, u"Amount Due"_s)).data().toString();
  }

  AdjustAccView* view = nullptr;
};

TEST_F(PaymentsScenario, AClerkBacksAPaymentOutAndTheAccountShowsItOwedAgain) {
  ASSERT_NO_FATAL_FAILURE(start());
  ASSERT_NO_FATAL_FAILURE(openAccount({}, u"1000011"_s));
  const QString before = amountDue(u"1000011"_s);
  ASSERT_FALSE(before.isEmpty());
  screenshot(window(), u"payments-01-account"_s);
  ASSERT_NO_FATAL_FAILURE(openReceipt(u"8000001"_s, [&](PayDetailView& detail) {
    auto& form = dynamic_cast<QORVA_PayDetail&>(detail.form());
    GridView* payments = detail.grid(QORVA_PayDetail::PaymentsGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(payments) == 2; })) << rowsOf(payments);
    EXPECT_EQ(detail.windowTitle(), u"Receipt Detail"_s);
    EXPECT_EQ(detail.dataLabel(QORVA_PayDetail::ConfirmationLabel)->text(), u"CNF-55102"_s);
    EXPECT_EQ(detail.dataLabel(QORVA_PayDetail::PaymentAmountLabel)->text(), u"$200.00"_s);
    EXPECT_EQ(window().statusText()->text(), u"Ready"_s);
    screenshot(detail, u"payments-02-receipt-detail"_s);
    const int row = rowWith(payments, u"AR #"_s, u"1000011"_s);
    ASSERT_GE(row, 0);
    QAbstractItemModel* model = payments->table()->model();
    ASSERT_TRUE(model->setData(model->index(row, columnOf(payments, u"Action"_s)), u"BACKOUT"_s, Qt::EditRole));
    detail.dateEdit()->setDate(QDate::currentDate());
    detail.commentBox()->setFocus();
    QTest::keyClicks(detail.commentBox(), u"Check returned unpaid"_s);
    screenshot(detail, u"payments-03-payment-marked"_s);
    QTest::mouseClick(detail.button(QORVA_PayDetail::SaveButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return form.SaveState().isEmpty() && form.AccountChanged() && rowsOf(payments) == 2; }))
        << window().statusText()->text().toStdString();
    ASSERT_TRUE(waitFor([&] { return window().statusText()->text() == u"Ready"_s; }));
    EXPECT_EQ(model->index(row, columnOf(payments, u"Status"_s)).data().toString(), u"BACKOUT"_s);
    EXPECT_TRUE(detail.commentBox()->text().isEmpty());
    screenshot(detail, u"payments-04-payment-backed-out"_s);
    QTest::mouseClick(detail.button(QORVA_PayDetail::CloseButton), Qt::LeftButton);
  }));
  ASSERT_TRUE(waitFor([&] { return amountDue(u"1000011"_s) != before; })) << before.toStdString();
  EXPECT_EQ(platform::Currency::parse(amountDue(u"1000011"_s)).value(),
            platform::Currency::parse(before).value() + platform::Currency::fromCents(15000));
  screenshot(window(), u"payments-05-account-read-again"_s);
}

// What the host holds, read beside the running desktop: the next refund number of the series, and the refund
// worksheets filed under a receipt.
class HostFiles {
public:
  explicit HostFiles(const QString& file) : m_name(u"payments-scenario-check"_s) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name);
    db.setDatabaseName(file);
    m_open = db.open();
  }
  ~HostFiles() {
    QSqlDatabase::database(m_name, false).close();
    QSqlDatabase::removeDatabase(m_name);
  }
  bool isOpen() const { return m_open; }
  qint64 nextRefundNumber() const {
    QSqlQuery query(QSqlDatabase::database(m_name));
    query.exec(u"SELECT NEXT_NBR FROM NBR_SEQ WHERE NBR_TYP_CD = 'F'"_s);
    return query.next() ? query.value(0).toLongLong() : -1;
  }
  QStringList worksheetsOf(const QString& receipt) const {
    QSqlQuery query(QSqlDatabase::database(m_name));
    query.prepare(u"SELECT RFND_NBR FROM RFND_WRKSHT WHERE RCPT_NBR = ? ORDER BY RFND_NBR"_s);
    query.addBindValue(receipt);
    query.exec();
    QStringList numbers;
    while (query.next()) {
      numbers.append(query.value(0).toString().trimmed());
    }
    return numbers;
  }

private:
  QString m_name;
  bool m_open = false;
};

// Create Refund asks the host first and shows the worksheet prepared from its answer. The refund is prepared
// under one number: the one shown, the one the host files it under and the one printed, and the refund series
// gives exactly one number for it.
TEST_F(PaymentsScenario, CreateRefundPreparesOneWorksheetUnderOneRefundNumber) {
  using refunds::QORVA_WorkSheet;
  ASSERT_NO_FATAL_FAILURE(start());
  HostFiles host(data.filePath(u"adjustacc.sqlite"_s));
  ASSERT_TRUE(host.isOpen());
  const qint64 nextBefore = host.nextRefundNumber();
  ASSERT_GT(nextBefore, 0);
  const QStringList filedBefore = host.worksheetsOf(u"8000002"_s);
  ASSERT_NO_FATAL_FAILURE(openAccount(u"OVERWEIGHT CITATION ENF003"_s, u"1000028"_s));
  QString shownNumber;
  QString printed;
  int worksheetsShown = 0;
  ASSERT_NO_FATAL_FAILURE(openReceipt(u"8000002"_s, [&](PayDetailView& detail) {
    auto& receipt = dynamic_cast<QORVA_PayDetail&>(detail.form());
    GridView* excess = detail.grid(QORVA_PayDetail::ExcessGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(excess) == 1; }));
    clickRow(excess, 0);
    ASSERT_TRUE(detail.button(QORVA_PayDetail::CreateRefundButton)->isEnabled());
    whenShown<WorkSheetView>([&](WorkSheetView& sheet) {
      ++worksheetsShown;
      auto& form = dynamic_cast<QORVA_WorkSheet&>(sheet.form());
      EXPECT_EQ(sheet.dataLabel(QORVA_WorkSheet::ReceiptNumberLabel)->text(), u"8000002"_s);
      EXPECT_EQ(sheet.dataLabel(QORVA_WorkSheet::RefundAmountLabel)->text(), u"$150.00"_s);
      EXPECT_FALSE(sheet.dataLabel(QORVA_WorkSheet::NameLabel)->text().isEmpty());
      EXPECT_EQ(form.CustomerID(), u"100001"_s);
      // A new refund: the worksheet takes its number from the refund series as it loads.
      ASSERT_TRUE(waitFor([&] { return !form.NumberPending(); }));
      shownNumber = sheet.dataLabel(QORVA_WorkSheet::RefundNumberLabel)->text().trimmed();
      EXPECT_NE(shownNumber.toLongLong(), 0);
      EXPECT_EQ(form.RefundNumber(), shownNumber);
      screenshot(sheet, u"payments-10-refund-worksheet-handed-over"_s);
      QRadioButton* taxpayer = sheet.option(QORVA_WorkSheet::ToTaxpayer);
      QTest::mouseClick(taxpayer, Qt::LeftButton, {}, QPoint(8, taxpayer->height() / 2));
      sheet.commentBox(QORVA_WorkSheet::HeadquartersComment)->setFocus();
      QTest::keyClicks(sheet.commentBox(QORVA_WorkSheet::HeadquartersComment), u"Overpaid at the counter"_s);
      QTest::mouseClick(sheet.button(QORVA_WorkSheet::SaveButton), Qt::LeftButton);
      ASSERT_TRUE(waitFor([&] { return form.SaveSent() && form.SaveState().isEmpty(); }))
          << window().statusText()->text().toStdString();
      EXPECT_TRUE(form.GetSavedVoidedFlag());
      EXPECT_EQ(sheet.dataLabel(QORVA_WorkSheet::RefundNumberLabel)->text().trimmed(), shownNumber);
      printed = form.GetWorkSheetforPrint();
      QTest::mouseClick(sheet.button(QORVA_WorkSheet::CloseButton), Qt::LeftButton);
    });
    QTest::mouseClick(detail.button(QORVA_PayDetail::CreateRefundButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return worksheetsShown > 0; }));
    // The refund completed: the receipt is read again and its fund is on the worksheet.
    const platform::Grid& funds = receipt.mSdgDBGrid[QORVA_PayDetail::ExcessGrid];
    ASSERT_TRUE(waitFor([&] {
      return funds.rows() == 1 && funds.column(u"RFND_NBR"_s).cellValue(0).toString().trimmed() == shownNumber;
    })) << funds.column(u"RFND_NBR"_s).cellValue(0).toString().toStdString();
    QTest::mouseClick(detail.button(QORVA_PayDetail::CloseButton), Qt::LeftButton);
  }));
  EXPECT_EQ(worksheetsShown, 1);
  ASSERT_FALSE(shownNumber.isEmpty());
  EXPECT_TRUE(printed.contains(u"<REFUNDNO>"_s + shownNumber + u"</REFUNDNO>"_s)) << printed.toStdString();
  QStringList filed = host.worksheetsOf(u"8000002"_s);
  for (const QString& before : filedBefore) {
    filed.removeOne(before);
  }
  EXPECT_EQ(filed, QStringList{shownNumber});
  EXPECT_EQ(host.nextRefundNumber(), nextBefore + 1) << "one number of the refund series for one refund";
}

TEST_F(PaymentsScenario, AnExcessFundOnAWorksheetOpensItWhereItStands) {
  using refunds::QORVA_WorkSheet;
  ASSERT_NO_FATAL_FAILURE(start());
  ASSERT_NO_FATAL_FAILURE(openAccount({}, u"1300001"_s));
  bool shown = false;
  ASSERT_NO_FATAL_FAILURE(openReceipt(u"8000005"_s, [&](PayDetailView& detail) {
    GridView* excess = detail.grid(QORVA_PayDetail::ExcessGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(excess) == 9; })) << rowsOf(excess);
    whenShown<WorkSheetView>([&](WorkSheetView& sheet) {
      auto& form = dynamic_cast<QORVA_WorkSheet&>(sheet.form());
      EXPECT_TRUE(form.LoadedFromOutSide());
      EXPECT_EQ(form.RefundNumber(), u"3000002"_s);
      // The worksheet is read from the host where it stands.
      EXPECT_TRUE(waitFor([&] { return sheet.dataLabel(QORVA_WorkSheet::RefundAmountLabel)->text() == u"$100.00"_s; }))
          << sheet.dataLabel(QORVA_WorkSheet::RefundAmountLabel)->text().toStdString();
      screenshot(sheet, u"payments-11-worksheet-opened-from-its-excess-fund"_s);
      shown = true;
      form.setVisible(false);
    });
    QTableView* table = excess->table();
    const QPoint cell = table->visualRect(table->model()->index(2, 0)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, cell);
    ASSERT_TRUE(waitFor([&] { return shown; }));
    whenShown<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
    boxWatch.stop();
    QTest::mouseClick(detail.button(QORVA_PayDetail::CloseButton), Qt::LeftButton);
  }));
  boxWatch.start();
  EXPECT_TRUE(shown);
}

TEST_F(PaymentsScenario, PartOfAnExcessFundIsTransferredButNeverMoreThanItHolds) {
  ASSERT_NO_FATAL_FAILURE(start());
  ASSERT_NO_FATAL_FAILURE(openAccount({}, u"1000011"_s));
  const QString targetBefore = amountDue(u"1000011"_s);
  ASSERT_NO_FATAL_FAILURE(openAccount(u"OVERWEIGHT CITATION ENF003"_s, u"1000028"_s));
  const QString digit = platform::CheckDigit().compute(u"1000011"_s).value();
  QString refusal;
  ASSERT_NO_FATAL_FAILURE(openReceipt(u"8000002"_s, [&](PayDetailView& detail) {
    auto& form = dynamic_cast<QORVA_PayDetail&>(detail.form());
    GridView* excess = detail.grid(QORVA_PayDetail::ExcessGrid);
    ASSERT_TRUE(waitFor([&] { return rowsOf(excess) == 1; }));
    EXPECT_FALSE(detail.button(QORVA_PayDetail::TransferButton)->isEnabled());
    clickRow(excess, 0);
    ASSERT_TRUE(detail.button(QORVA_PayDetail::TransferButton)->isEnabled());
    screenshot(detail, u"payments-06-excess-fund-chosen"_s);
    bool transferred = false;
    whenShown<TransPaymentView>([&](TransPaymentView& transfer) {
      auto& screen = dynamic_cast<QORVA_TransPayment&>(transfer.form());
      QTableWidget* lines = transfer.entry()->table();
      ASSERT_EQ(lines->rowCount(), 1);
      lines->item(0, 0)->setText(u"C"_s);
      lines->item(0, 1)->setText(u"1000011-"_s + digit);
      lines->item(0, 2)->setText(u"150.01"_s);
      // More than the fund holds: the entry says why, in a box the clerk reads and closes.
      boxWatch.stop();
      whenShown<QMessageBox>([&refusal](QMessageBox& box) {
        refusal = box.text();
        screenshot(box, u"payments-07-more-than-the-excess"_s);
        box.accept();
      });
      QTest::mouseClick(transfer.button(QORVA_TransPayment::SaveButton), Qt::LeftButton);
      ASSERT_TRUE(waitFor([&] { return !refusal.isEmpty(); }));
      boxWatch.start();
      EXPECT_TRUE(screen.SaveState().isEmpty());
      lines->item(0, 2)->setText(u"100.00"_s);
      screenshot(transfer, u"payments-08-transfer-entered"_s);
      QTest::mouseClick(transfer.button(QORVA_TransPayment::SaveButton), Qt::LeftButton);
      ASSERT_TRUE(waitFor([&] { return screen.SaveState().isEmpty() && screen.AccountChanged(); }))
          << window().statusText()->text().toStdString();
      transferred = true;
      QTest::mouseClick(transfer.button(QORVA_TransPayment::CloseButton), Qt::LeftButton);
    });
    QTest::mouseClick(detail.button(QORVA_PayDetail::TransferButton), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return transferred; }));
    // The receipt read again: the fund split into the part moved and the part still open.
    ASSERT_TRUE(waitFor([&] { return rowsOf(excess) == 2; }));
    EXPECT_GE(rowWith(excess, u"Status"_s, u"TRANSFERRED"_s), 0);
    const int open = rowWith(excess, u"Status"_s, u"OPEN"_s);
    ASSERT_GE(open, 0);
    EXPECT_EQ(excess->table()->model()->index(open, columnOf(excess, u"Amount"_s)).data().toString(), u"$50.00"_s);
    EXPECT_TRUE(form.AccountChanged());
    screenshot(detail, u"payments-09-excess-fund-split"_s);
    whenShown<QMessageBox>([](QMessageBox& box) {
      // "There are Excess Funds remaining": the clerk leaves all the same.
      box.button(QMessageBox::Yes)->click();
    });
    boxWatch.stop();
    QTest::mouseClick(detail.button(QORVA_PayDetail::CloseButton), Qt::LeftButton);
  }));
  boxWatch.start();
  EXPECT_EQ(refusal.trimmed(), u"The transfer of $150.01 is more than the excess fund of $150.00"_s);
  // The receiving receivable owes the amount less.
  ASSERT_NO_FATAL_FAILURE(openAccount({}, u"1000011"_s));
  ASSERT_TRUE(waitFor([&] { return !amountDue(u"1000011"_s).isEmpty(); }));
  EXPECT_EQ(platform::Currency::parse(amountDue(u"1000011"_s)).value(),
            platform::Currency::parse(targetBefore).value() - platform::Currency::fromCents(10000));
  screenshot(window(), u"payments-10-receiving-account"_s);
}

}  // namespace
}  // namespace adjustacc::desktop::testing
