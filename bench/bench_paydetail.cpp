// Opening the receipt detail, end to end: from "Receipt Detail" on the chosen receipt until the three grids hold
// the receipt's funds, its payments and its excess funds, and each row was loaded once as a grid view loads it
// (descriptions looked up, amounts formatted) - the screen built and loaded, the receipt request through the
// embedded host link on a SQLite file, the reply checked and bound. One receipt that paid 1,000 receivables.
//
// The anchor, in the same run on the same file: the host's own statements for the same rows, run raw through
// QSqlQuery reading every value. The ratio line comes last: ours over the anchor.
#include "documentbench.h"
#include "screenbench.h"

#include "document/adjustacc.h"
#include "host/syntheticdata.h"
#include "inquiry/forminq.h"
#include "payments/paydetail.h"
#include "platform/user.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>

using namespace adjustacc;

namespace {

using benchsupport::die;
using payments::QORVA_PayDetail;

constexpr int kPayments = 1000;
const QString kReceipt = QStringLiteral("9000001");
const QString kRawConnection = QStringLiteral("bench-paydetail-raw");

// The host's statements for the receipt detail (the receipt detail sections' own texts).
const QString kReceiptSql[] = {
    QStringLiteral("SELECT r.RCPT_DT, r.RCPT_NBR, r.RCPT_STTS_CD, r.TOT_PYMT_AMT, "
                   "(SELECT SUM(o.OVR_PYMT_AMT) FROM OVR_PYMT o WHERE o.RCPT_NBR = r.RCPT_NBR), "
                   "r.CUST_ID, r.CNFRMTN_NBR, r.ROW_VRSN_NBR FROM RCPT r WHERE r.RCPT_NBR = ?"),
    QStringLiteral("SELECT FUND_RFRNC_NBR, FUND_AMT, FUND_TYP_CD, RCPT_NBR, EXPRTN_MO_DT, "
                   "EXPRTN_DY_DT, EXPRTN_YR_DT FROM FUND WHERE RCPT_NBR = ? ORDER BY FUND_SEQ_NBR"),
    QStringLiteral("SELECT a.CUST_ID, c.CUST_NM, a.ACCT_RCVBL_NBR, a.ACCT_RCVBL_DUE_DT, p.CL_PYMT_AMT, "
                   "p.ADJSTMT_DT, p.ACTVTY_STTS_CD, p.TRNSCTN_NBR, p.TRNSCTN_DT, p.PYMT_DT, p.PYMT_NBR, p.STTS_CD, "
                   "a.ACCT_RCVBL_CK_NBR, a.ACCT_RCVBL_TYP_CD, p.RCPT_NBR, a.ACCT_STTS_CD, a.ACTV_STTS_CD, "
                   "a.ASSMT_PP_TYP_CD, a.INSTLMT_NBR, p.ROW_VRSN_NBR FROM PYMT p "
                   "JOIN ACCT_RCVBL a ON a.ACCT_RCVBL_ID = p.ACCT_RCVBL_ID JOIN CUSTOMER c ON c.CUST_ID = a.CUST_ID "
                   "WHERE p.RCPT_NBR = ? ORDER BY p.PYMT_NBR, p.TRNSCTN_NBR"),
    QStringLiteral("SELECT c.CUST_NM, o.OVR_PYMT_DT, o.OVR_PYMT_TM, o.DSTNTN_RCPT_NBR, "
                   "o.OVR_PYMT_AMT, o.CUST_ID, c.ADDR_1, c.ADDR_2, c.CITY, c.STATE, c.ZIP, "
                   "o.OVR_PYMT_STTS_CD, o.ROW_VRSN_NBR FROM OVR_PYMT o "
                   "JOIN CUSTOMER c ON c.CUST_ID = o.CUST_ID WHERE o.RCPT_NBR = ? ORDER BY o.OVR_PYMT_SEQ_NBR"),
};

struct Bench {
  QTemporaryDir dir;
  host::SyntheticAccount account;
  std::unique_ptr<benchsupport::DocumentBench> desk;
  int loadedRows = 0;  // payments the last opening of the receipt screen held
};

void run(QSqlQuery& query) {
  if (!query.exec()) {
    die(query.lastError().text());
  }
}

// One receipt paying one part of each of the account's receivables, with two funds and an excess already moved.
void addReceipt(Bench& b) {
  const QSqlDatabase db = QSqlDatabase::database(kRawConnection, false);
  QSqlQuery find(db);
  find.prepare(QStringLiteral("SELECT ACCT_RCVBL_ID, CUST_ID FROM ACCT_RCVBL WHERE REF_TYP_CD = ? AND REF_NBR = ? "
                              "ORDER BY ACCT_RCVBL_ID"));
  find.addBindValue(b.account.type);
  find.addBindValue(b.account.number);
  run(find);
  QList<qint64> receivables;
  QString customer;
  while (find.next()) {
    receivables.append(find.value(0).toLongLong());
    customer = find.value(1).toString();
  }
  if (receivables.size() != kPayments) {
    die(QStringLiteral("the synthetic account has %1 receivables, not %2").arg(receivables.size()).arg(kPayments));
  }
  const QString today = QDate::currentDate().toString(Qt::ISODate);
  QSqlDatabase(db).transaction();
  QSqlQuery insert(db);
  insert.prepare(QStringLiteral("INSERT INTO RCPT (RCPT_NBR, CUST_ID, RCPT_DT, RCPT_STTS_CD, CNFRMTN_NBR, "
                                "TOT_PYMT_AMT) VALUES (?, ?, ?, 'O', 'CNF-BENCH', ?)"));
  insert.addBindValue(kReceipt);
  insert.addBindValue(customer);
  insert.addBindValue(today);
  insert.addBindValue(qint64(kPayments) * 100 + 5000);
  run(insert);
  for (int sequence = 1; sequence <= 2; ++sequence) {
    QSqlQuery fund(db);
    fund.prepare(QStringLiteral("INSERT INTO FUND (RCPT_NBR, FUND_SEQ_NBR, FUND_TYP_CD, FUND_RFRNC_NBR, FUND_AMT, "
                                "EXPRTN_MO_DT, EXPRTN_DY_DT, EXPRTN_YR_DT) VALUES (?, ?, ?, ?, ?, '12', '31', '2030')"));
    fund.addBindValue(kReceipt);
    fund.addBindValue(sequence);
    fund.addBindValue(sequence == 1 ? QStringLiteral("R") : QStringLiteral("K"));
    fund.addBindValue(QStringLiteral("REF%1").arg(sequence));
    fund.addBindValue(qint64(kPayments) * 50 + 2500);
    run(fund);
  }
  QSqlQuery excess(db);
  excess.prepare(QStringLiteral("INSERT INTO OVR_PYMT (RCPT_NBR, OVR_PYMT_SEQ_NBR, CUST_ID, OVR_PYMT_DT, OVR_PYMT_TM, "
                                "OVR_PYMT_AMT, OVR_PYMT_STTS_CD, DSTNTN_RCPT_NBR) VALUES (?, 1, ?, ?, '10:00', 5000, "
                                "'T', '0')"));
  excess.addBindValue(kReceipt);
  excess.addBindValue(customer);
  excess.addBindValue(today);
  run(excess);
  QSqlQuery payment(db);
  payment.prepare(QStringLiteral("INSERT INTO PYMT (RCPT_NBR, ACCT_RCVBL_ID, PYMT_NBR, TRNSCTN_NBR, TRNSCTN_DT, "
                                 "PYMT_DT, CL_PYMT_AMT, STTS_CD) VALUES (?, ?, ?, ?, ?, ?, 100, 'A')"));
  for (int i = 0; i < kPayments; ++i) {
    payment.addBindValue(kReceipt);
    payment.addBindValue(receivables[i]);
    payment.addBindValue(i + 1);
    payment.addBindValue(QString::number(900000 + i));
    payment.addBindValue(today);
    payment.addBindValue(today);
    run(payment);
  }
  QSqlDatabase(db).commit();
}

Bench& bench() {
  static Bench* b = [] {
    auto* s = new Bench;
    host::DatabaseOptions options;
    options.databaseName = s->dir.filePath(QStringLiteral("adjustacc.sqlite"));
    benchsupport::openHostDatabase(options, kRawConnection);
    host::SyntheticShape shape;
    shape.customers = 1;
    shape.accountsPerCustomer = 1;
    shape.receivablesPerAccount = kPayments;
    auto made = host::generateSyntheticData(kRawConnection, shape);
    if (!made.ok() || made->size() != 1) {
      die(made.ok() ? QStringLiteral("no synthetic account") : made.error());
    }
    s->account = made->first();
    addReceipt(*s);
    s->desk = std::make_unique<benchsupport::DocumentBench>(
        kRawConnection, s->dir.path(),
        platform::User(QStringLiteral("ADMIN01"), QStringLiteral("Avery Lindqvist"), QStringLiteral("NE"),
                       {QStringLiteral("ADJUSTRECEIPT"), QStringLiteral("CREATEREFUND")}));
    s->desk->ui.onModal(inquiry::QORVA_FormInq::kFormName, [s](platform::ModalForm& form) {
      auto& openAccount = dynamic_cast<inquiry::QORVA_FormInq&>(form);
      openAccount.mFtcboDocType.setCode(s->account.type);
      openAccount.mTxtDocNbr.setText(s->account.number);
      openAccount.mCmdBttn[inquiry::QORVA_FormInq::OkButton].click();
    });
    // The receipt screen: wait for its three grids, load every row as the grid views would, close it.
    s->desk->ui.onModal(QORVA_PayDetail::kFormName, [s](platform::ModalForm& form) {
      auto& detail = dynamic_cast<QORVA_PayDetail&>(form);
      platform::Grid& payments = detail.mSdgDBGrid[QORVA_PayDetail::PaymentsGrid];
      while (detail.mSdgDBGrid[QORVA_PayDetail::ExcessGrid].rows() == 0 && s->desk->ui.boxCount() == 0) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
      }
      s->loadedRows = payments.rows();
      for (const int index : {QORVA_PayDetail::FundsGrid, QORVA_PayDetail::PaymentsGrid, QORVA_PayDetail::ExcessGrid}) {
        platform::Grid& grid = detail.mSdgDBGrid[index];
        for (int row = 0; row < grid.rows(); ++row) {
          for (int column = 0; column < grid.columnCount(); ++column) {
            if (grid.column(column).isVisible()) {
              QString shown = grid.displayText(row, column);
              benchmark::DoNotOptimize(shown);
            }
          }
        }
      }
      detail.mCmdButton[QORVA_PayDetail::CloseButton].click();
    });
    s->desk->showDocument().FileOpen();
    while (s->desk->document->requestOutstanding()) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return s;
  }();
  return *b;
}

void BM_PayDetail(benchmark::State& state) {
  Bench& b = bench();
  document::QORVA_AdjustAcc& doc = *b.desk->document;
  platform::Grid& receipts = doc.mSdgDBGrid[document::QORVA_AdjustAcc::ReceiptsList];
  int chosen = -1;
  for (int row = 0; row < receipts.rows(); ++row) {
    if (receipts.column(QStringLiteral("RCPT_NBR")).cellValue(row).toString().trimmed() == kReceipt) {
      chosen = row;
    }
  }
  if (chosen < 0) {
    state.SkipWithError("the receipt is not in the account's list");
    return;
  }
  receipts.userClickRow(chosen);
  for (auto _ : state) {
    doc.mCmdButton_Click(document::QORVA_AdjustAcc::ReceiptDetailButton);
    if (b.desk->ui.boxCount() > 0) {
      state.SkipWithError(qPrintable(b.desk->ui.lastBox().text));
      break;
    }
    if (b.loadedRows != kPayments) {
      state.SkipWithError("the receipt screen does not hold the receipt's payments");
      break;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  state.SetItemsProcessed(state.iterations() * kPayments);
}

void BM_RawSql(benchmark::State& state) {
  bench();
  const QSqlDatabase db = QSqlDatabase::database(kRawConnection, false);
  for (auto _ : state) {
    int payments = 0;
    for (const QString& text : kReceiptSql) {
      QSqlQuery query(db);
      query.setForwardOnly(true);
      query.prepare(text);
      query.addBindValue(kReceipt);
      run(query);
      const int columns = query.record().count();
      int rows = 0;
      while (query.next()) {
        for (int i = 0; i < columns; ++i) {
          QVariant value = query.value(i);
          benchmark::DoNotOptimize(value);
        }
        ++rows;
      }
      payments = std::max(payments, rows);
    }
    if (payments != kPayments) {
      state.SkipWithError("the raw query does not find the payments");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kPayments);
}


}  // namespace

int main(int argc, char** argv) {
  benchsupport::preferOffscreen();
  QGuiApplication app(argc, argv);
  benchsupport::MedianReporter reporter;
  if (!benchsupport::runBenchmarks(
          argc, argv, {{"receipt_open/screen", &BM_PayDetail}, {"receipt_open/raw_sql", &BM_RawSql}}, reporter)) {
    return 1;
  }
  bench().desk.reset();
  reporter.printRatio("receipt_open_1000", "receipt_open/screen", "receipt_open/raw_sql");
  return 0;
}
