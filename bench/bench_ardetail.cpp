// Opening the account receivable detail, end to end: from "AR Detail" on the chosen receivable until both grids
// hold every assessment and each row was loaded once as a grid view loads it (its amounts formatted) - the
// screen built and loaded, the assessment request through the embedded host link on a SQLite file, the reply
// checked, sorted and added line by line. One receivable with 1,000 assessments.
//
// The anchor, in the same run on the same file: the host's own statement for the same assessments, run raw
// through QSqlQuery reading every value. The ratio line comes last: ours over the anchor.
//
// For the reader of the figures, the same run also times the host link alone (the same inquiry submitted
// through the embedded link until its reply is in, no screen), printed as an information line: it is the
// part of the screen's time that the screen cannot shorten.
#include "documentbench.h"
#include "screenbench.h"

#include "ardetail/accdetail.h"
#include "document/adjustacc.h"
#include "host/embeddedlink.h"
#include "host/handlers.h"
#include "host/syntheticdata.h"
#include "inquiry/forminq.h"
#include "platform/user.h"

#include <QEventLoop>
#include <QUuid>

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

constexpr int kAssessments = 1000;
const QString kRawConnection = QStringLiteral("bench-ardetail-raw");

struct Bench {
  QTemporaryDir dir;
  host::SyntheticAccount account;
  qint64 receivableId = 0;
  QString receivableNumber;  // the receivable's own number and type, as "AR Detail" asks for it
  QString receivableType;
  std::unique_ptr<benchsupport::DocumentBench> desk;
  int loadedRows = 0;  // what the last opening of the detail screen held
};

void run(QSqlQuery& query) {
  if (!query.exec()) {
    die(query.lastError().text());
  }
}

// One receivable of the synthetic generator, given 999 more assessments of mixed codes, dates and states.
void addAssessments(Bench& b) {
  const QSqlDatabase db = QSqlDatabase::database(kRawConnection, false);
  QSqlQuery find(db);
  find.prepare(QStringLiteral("SELECT ACCT_RCVBL_ID, CUST_ID, ACCT_RCVBL_NBR, ACCT_RCVBL_TYP_CD FROM ACCT_RCVBL "
                             "WHERE REF_TYP_CD = ? AND REF_NBR = ?"));
  find.addBindValue(b.account.type);
  find.addBindValue(b.account.number);
  run(find);
  if (!find.next()) {
    die(QStringLiteral("the synthetic receivable is not on file"));
  }
  b.receivableId = find.value(0).toLongLong();
  const QString customer = find.value(1).toString();
  b.receivableNumber = find.value(2).toString();
  b.receivableType = find.value(3).toString();
  QSqlDatabase(db).transaction();
  QSqlQuery insert(db);
  insert.prepare(QStringLiteral(
      "INSERT INTO VLTN_ASSMT (ACCT_RCVBL_ID, CUST_ID, VLTN_ASSMT_SEQ_NBR, TRNSCTN_NBR, ASSMT_CD, ASSMT_TYP_CD, "
      "ASSMT_ISSUE_DT, CL_ASMT_AMT, AC_ASMT_AMT, BAL_DUE_AMT, VLTN_ASSMT_STTS_CD, LIC_PRCHS_OPTN_IND) "
      "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
  static const char* const kCodes[] = {"F01", "F09", "F20", "P01", "P02", "P05", "p04"};
  const QDate first = QDate::currentDate().addYears(-2);
  for (int i = 1; i < kAssessments; ++i) {
    const QString code = QLatin1String(kCodes[i % 7]);
    const qint64 cents = 500 + (i * 37) % 40000;
    const bool active = i % 5 != 0;
    insert.addBindValue(b.receivableId);
    insert.addBindValue(customer);
    insert.addBindValue(i + 1);
    insert.addBindValue(QString::number(700000 + i));
    insert.addBindValue(code);
    insert.addBindValue(code.left(1).toUpper());
    insert.addBindValue(first.addDays(i % 700).toString(Qt::ISODate));
    insert.addBindValue(cents);
    insert.addBindValue(cents);
    insert.addBindValue(active ? cents : 0);
    insert.addBindValue(active ? QStringLiteral("A") : QStringLiteral("I"));
    insert.addBindValue(code.startsWith(u'F') && i % 3 == 0 ? QStringLiteral("Y") : QStringLiteral("N"));
    run(insert);
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
    shape.receivablesPerAccount = 1;
    auto made = host::generateSyntheticData(kRawConnection, shape);
    if (!made.ok() || made->size() != 1) {
      die(made.ok() ? QStringLiteral("no synthetic account") : made.error());
    }
    s->account = made->first();
    addAssessments(*s);
    s->desk = std::make_unique<benchsupport::DocumentBench>(
        kRawConnection, s->dir.path(),
        platform::User(QStringLiteral("ADMIN01"), QStringLiteral("Avery Lindqvist"), QStringLiteral("NE"),
                       {QStringLiteral("ADJUSTAR")}));
    s->desk->ui.onModal(inquiry::QORVA_FormInq::kFormName, [s](platform::ModalForm& form) {
      auto& openAccount = dynamic_cast<inquiry::QORVA_FormInq&>(form);
      openAccount.mFtcboDocType.setCode(s->account.type);
      openAccount.mTxtDocNbr.setText(s->account.number);
      openAccount.mCmdBttn[inquiry::QORVA_FormInq::OkButton].click();
    });
    // The detail screen: wait for its assessments, load every row as its two grid views would, close it.
    s->desk->ui.onModal(ardetail::QORVA_AccDetail::kFormName, [s](platform::ModalForm& form) {
      auto& detail = dynamic_cast<ardetail::QORVA_AccDetail&>(form);
      while (s->desk->document->requestOutstanding()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
      }
      s->loadedRows = 0;
      for (const int index : {0, 1}) {
        platform::Grid& grid = detail.mSdgDBGrid[index];
        const int amount = grid.columnIndex(QStringLiteral("CL_ASMT_AMT"));
        const int due = grid.columnIndex(QStringLiteral("BAL_DUE_AMT"));
        for (int row = 0; row < grid.rows(); ++row) {
          QVariant shown = grid.cellValue(row, amount);
          benchmark::DoNotOptimize(shown);
          shown = grid.cellValue(row, due);
          benchmark::DoNotOptimize(shown);
        }
        s->loadedRows += grid.rows();
      }
      detail.mCmdButton[ardetail::QORVA_AccDetail::CloseButton].click();
    });
    s->desk->showDocument().FileOpen();
    while (s->desk->document->requestOutstanding()) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    if (s->desk->document->mSdgDBGrid[0].rows() != 1) {
      die(QStringLiteral("the synthetic account did not open"));
    }
    return s;
  }();
  return *b;
}

void BM_ArDetail(benchmark::State& state) {
  Bench& b = bench();
  document::QORVA_AdjustAcc& doc = *b.desk->document;
  platform::Grid& receivables = doc.mSdgDBGrid[document::QORVA_AdjustAcc::ReceivablesList];
  receivables.userClickRow(0);
  for (auto _ : state) {
    doc.mCmdButton_Click(document::QORVA_AdjustAcc::ArDetailButton);
    if (b.desk->ui.boxCount() > 0) {
      state.SkipWithError(qPrintable(b.desk->ui.lastBox().text));
      break;
    }
    if (b.loadedRows != kAssessments) {
      state.SkipWithError("the detail screen does not hold the receivable's assessments");
      break;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  state.SetItemsProcessed(state.iterations() * kAssessments);
}

// The document's receivable inquiry, as "AR Detail" sends it, straight through the link.
void BM_HostLink(benchmark::State& state) {
  Bench& b = bench();
  messaging::Request request;
  request.replyTo = QStringLiteral("ADJUSTACC");
  request.version = QStringLiteral("1");
  request.code = 47;
  request.user = b.desk->user.officerId();
  request.params = {
      {QStringLiteral("MARVENTO"), QStringLiteral("key:REF_NBR"), QStringLiteral("="), b.receivableNumber},
      {QStringLiteral("MARVENTO"), QStringLiteral("key:REF_TYP_CD"), QStringLiteral("="), b.receivableType},
      {QStringLiteral("MARVENTO"), QStringLiteral("key:LPO"), QStringLiteral("="), QStringLiteral("NO")}};
  QEventLoop loop;
  messaging::Reply last;
  const auto connection = QObject::connect(b.desk->link.get(), &messaging::HostLink::replyReady, &loop,
                                           [&](const messaging::Reply& reply) {
                                             last = reply;
                                             loop.quit();
                                           });
  for (auto _ : state) {
    request.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    b.desk->link->submit(request);
    loop.exec();
    const messaging::RecordSet* assessments = last.ok() ? last.section(QStringLiteral("ASSESSMENT")) : nullptr;
    if (assessments == nullptr || assessments->recordCount() != kAssessments) {
      state.SkipWithError(last.ok() ? "the reply does not hold the assessments" : qPrintable(last.error));
      break;
    }
  }
  QObject::disconnect(connection);
  state.SetItemsProcessed(state.iterations() * kAssessments);
}

void BM_RawSql(benchmark::State& state) {
  Bench& b = bench();
  const QSqlDatabase db = QSqlDatabase::database(kRawConnection, false);
  for (auto _ : state) {
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(host::assessmentStatement());  // the host's own statement
    query.addBindValue(b.receivableId);
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
    if (rows != kAssessments) {
      state.SkipWithError("the raw query does not find the assessments");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kAssessments);
}


}  // namespace

int main(int argc, char** argv) {
  benchsupport::preferOffscreen();
  QGuiApplication app(argc, argv);
  benchsupport::MedianReporter reporter;
  if (!benchsupport::runBenchmarks(argc, argv,
                                   {{"ardetail_open/screen", &BM_ArDetail},
                                    {"ardetail_open/raw_sql", &BM_RawSql},
                                    {"ardetail_open/host_link", &BM_HostLink}},
                                   reporter)) {
    return 1;
  }
  bench().desk.reset();
  if (const auto link = reporter.ratio("ardetail_open/host_link", "ardetail_open/raw_sql")) {
    std::printf("info ardetail_open_1000 host link alone over the anchor %.3f\n", *link);
  }
  reporter.printRatio("ardetail_open_1000", "ardetail_open/screen", "ardetail_open/raw_sql");
  return 0;
}
