// Opening an existing refund worksheet, end to end: LoadMe on demo worksheet 3000006 (mailed) until every
// control is set from the host's answer - the screen built, the worksheet request through the embedded host link
// on a SQLite file, the reply checked and shown. The anchor, in the same run on the same file: the host's own
// statement for the same worksheet, run raw through QSqlQuery reading every value. The ratio line comes last:
// ours over the anchor. Rendering the same worksheet to a PDF through the shipped template is timed as well
// (in milliseconds; no target yet).
#include "documentbench.h"
#include "screenbench.h"

#include "desktop/templateprinting.h"
#include "host/handlers.h"
#include "host/hostsystem.h"
#include "platform/ui.h"
#include "refunds/worksheet.h"

#include <QApplication>
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
using refunds::QORVA_WorkSheet;

const QString kRawConnection = QStringLiteral("bench-worksheet-raw");
const QString kNumber = QStringLiteral("3000006");
const QString kCustomer = QStringLiteral("100003");

struct Bench {
  QTemporaryDir dir;
  std::unique_ptr<benchsupport::DocumentBench> desk;
  QString printDocument;
};

Bench& bench() {
  static Bench* b = [] {
    auto* s = new Bench;
    host::DatabaseOptions options;
    options.databaseName = s->dir.filePath(QStringLiteral("adjustacc.sqlite"));
    benchsupport::openHostDatabase(options, kRawConnection);
    if (auto loaded = host::loadDemoData(kRawConnection, QDate::currentDate()); !loaded.ok()) {
      die(loaded.error());
    }
    s->desk = std::make_unique<benchsupport::DocumentBench>(
        kRawConnection, s->dir.path(),
        platform::User(QStringLiteral("FISCAL01"), QStringLiteral("Taylor Brandt"), QStringLiteral("NE"),
                       {QStringLiteral("CREATEREFUND")}));
    return s;
  }();
  return *b;
}

// Opens the worksheet as its opener does and waits until the host's answer is shown; the refund amount shown.
QString openWorksheet(Bench& b, QString* printDocument = nullptr) {
  QORVA_WorkSheet sheet(*b.desk->services);
  sheet.SetLoadedFromOutSide(true);
  sheet.LoadMe(kCustomer, QStringLiteral("5"), kNumber, QString());
  sheet.setVisible(true);
  while (b.desk->link->pending() > 0 || b.desk->ui.pointer() != platform::Pointer::Default) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  if (printDocument) {
    *printDocument = sheet.GetWorkSheetforPrint();
  }
  return sheet.mLblData[QORVA_WorkSheet::RefundAmountLabel].caption();
}

void BM_Worksheet(benchmark::State& state) {
  Bench& b = bench();
  for (auto _ : state) {
    const QString amount = openWorksheet(b);
    if (b.desk->ui.boxCount() > 0) {
      state.SkipWithError(qPrintable(b.desk->ui.lastBox().text));
      break;
    }
    if (amount.isEmpty()) {
      state.SkipWithError("the worksheet was not shown");
      break;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

void BM_RawSql(benchmark::State& state) {
  const QSqlDatabase db = QSqlDatabase::database(kRawConnection, false);
  for (auto _ : state) {
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(host::worksheetStatement());  // the host's own statement
    query.addBindValue(kNumber);
    if (!query.exec()) {
      die(query.lastError().text());
    }
    const int columns = query.record().count();
    int rows = 0;
    while (query.next()) {
      for (int i = 0; i < columns; ++i) {
        QVariant value = query.value(i);
        benchmark::DoNotOptimize(value);
      }
      ++rows;
    }
    if (rows != 1) {
      state.SkipWithError("the raw query does not find the worksheet");
      break;
    }
  }
}

void BM_Pdf(benchmark::State& state) {
  Bench& b = bench();
  if (b.printDocument.isEmpty()) {
    openWorksheet(b, &b.printDocument);
  }
  desktop::TemplatePrintComponent component;
  component.setTemplatePath(QStringLiteral(ADJUSTACC_SOURCE_DIR "/src/desktop/templates/template-36.html"));
  component.setDocumentText(b.printDocument);
  const QString pdf = b.dir.filePath(QStringLiteral("worksheet.pdf"));
  for (auto _ : state) {
    if (const QString problem = component.savePdf(pdf); !problem.isEmpty()) {
      state.SkipWithError(qPrintable(problem));
      break;
    }
  }
}


}  // namespace

int main(int argc, char** argv) {
  benchsupport::preferOffscreen();
  QApplication app(argc, argv);
  benchsupport::MedianReporter reporter;
  if (!benchsupport::runBenchmarks(argc, argv,
                                   {{"worksheet_open/screen", &BM_Worksheet},
                                    {"worksheet_open/raw_sql", &BM_RawSql},
                                    {"worksheet_pdf", &BM_Pdf}},
                                   reporter)) {
    return 1;
  }
  bench().desk.reset();
  if (const auto pdf = reporter.seconds("worksheet_pdf")) {
    std::printf("time worksheet_pdf_ms %.1f\n", *pdf * 1000.0);
  }
  reporter.printRatio("worksheet_open", "worksheet_open/screen", "worksheet_open/raw_sql");
  return 0;
}
