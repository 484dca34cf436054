// Opening an account in the document, end to end: from OK in Open Account (FileOpen with the dialogue answered at
// once) until both lists are filled - the request through the embedded host link on a SQLite file, the reply
// checked, the record sets built, bound and sorted, and every row loaded once as a list view loads it (its
// descriptions looked up). Accounts of 10, 1,000 and 50,000 receivables from the synthetic data generator.
//
// The anchor, in the same run on the same file: the host's own statements for the same rows, run raw through
// QSqlQuery reading every value. The ratio lines come last: ours over the anchor.
#include "documentbench.h"

#include "document/adjustacc.h"
#include "host/embeddedlink.h"
#include "host/hostsystem.h"
#include "host/syntheticdata.h"
#include "inquiry/forminq.h"
#include "platform/user.h"

#include <QCoreApplication>
#include <QElapsedTimer>
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
#include <vector>

using namespace adjustacc;

namespace {

using benchsupport::die;
using benchsupport::kAccountSizes;
using benchsupport::kReceiptsSql;
using benchsupport::kReceivablesSql;

const QString kRawConnection = QStringLiteral("bench-fileopen-raw");

// The database with one synthetic account per size, and the document over the embedded link.
struct Bench {
  QTemporaryDir dir;
  std::map<int, host::SyntheticAccount> accounts;
  std::unique_ptr<benchsupport::DocumentBench> desk;
  int openSize = 0;  // the account Open Account answers with
};

Bench& bench() {
  static Bench* b = [] {
    auto* s = new Bench;
    host::DatabaseOptions options;
    options.databaseName = s->dir.filePath(QStringLiteral("adjustacc.sqlite"));
    benchsupport::openHostDatabase(options, kRawConnection);
    for (int size : kAccountSizes) {
      host::SyntheticShape shape;
      shape.customers = 1;
      shape.accountsPerCustomer = 1;
      shape.receivablesPerAccount = size;
      auto made = host::generateSyntheticData(kRawConnection, shape);
      if (!made.ok() || made->size() != 1) {
        die(made.ok() ? QStringLiteral("no synthetic account") : made.error());
      }
      s->accounts[size] = made->first();
    }
    s->desk = std::make_unique<benchsupport::DocumentBench>(
        kRawConnection, s->dir.path(),
        platform::User(QStringLiteral("ADMIN01"), QStringLiteral("Avery Lindqvist"), QStringLiteral("NE")));
    // The clerk's answer in Open Account: the account of the size being measured, then OK.
    s->desk->ui.onModal(inquiry::QORVA_FormInq::kFormName, [s](platform::ModalForm& form) {
      auto& openAccount = dynamic_cast<inquiry::QORVA_FormInq&>(form);
      const host::SyntheticAccount& account = s->accounts.at(s->openSize);
      openAccount.mFtcboDocType.setCode(account.type);
      openAccount.mTxtDocNbr.setText(account.number);
      openAccount.mCmdBttn[inquiry::QORVA_FormInq::OkButton].click();
    });
    s->desk->showDocument();
    return s;
  }();
  return *b;
}

// Reads one cell of every row, as a list view does when it first draws the row: RowLoaded runs for each.
int loadEveryRow(platform::Grid& grid, int column) {
  const int rows = grid.rows();
  for (int row = 0; row < rows; ++row) {
    QVariant value = grid.cellValue(row, column);
    benchmark::DoNotOptimize(value);
  }
  return rows;
}

void BM_FileOpen(benchmark::State& state) {
  Bench& b = bench();
  const int size = static_cast<int>(state.range(0));
  b.openSize = size;
  document::QORVA_AdjustAcc& doc = *b.desk->document;
  platform::Grid& receivables = doc.mSdgDBGrid[document::QORVA_AdjustAcc::ReceivablesList];
  platform::Grid& receipts = doc.mSdgDBGrid[document::QORVA_AdjustAcc::ReceiptsList];
  const int receivableDescription = receivables.columnIndex(QStringLiteral("FORM_DESC"));
  const int receiptDescription = receipts.columnIndex(QStringLiteral("STTS_DESC"));
  // Where the time goes: the dialogue and sending, waiting for the reply and handling it, loading the rows.
  qint64 opening = 0;
  qint64 answering = 0;
  qint64 loading = 0;
  qint64 handling = 0;
  QElapsedTimer clock;
  QElapsedTimer sinceReply;
  // The link hands the reply over first; the document's handler runs after this.
  const QMetaObject::Connection arrived =
      QObject::connect(b.desk->link.get(), &messaging::HostLink::replyReady, [&sinceReply] { sinceReply.start(); });
  for (auto _ : state) {
    clock.start();
    doc.FileOpen();
    opening += clock.nsecsElapsed();
    clock.start();
    while (doc.requestOutstanding()) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    answering += clock.nsecsElapsed();
    handling += sinceReply.nsecsElapsed();
    if (b.desk->ui.boxCount() > 0) {
      state.SkipWithError(qPrintable(b.desk->ui.lastBox().text));
      break;
    }
    clock.start();
    const int filled = loadEveryRow(receivables, receivableDescription);
    const int receiptRows = loadEveryRow(receipts, receiptDescription);
    loading += clock.nsecsElapsed();
    if (filled != size || receiptRows != b.accounts.at(size).receipts) {
      state.SkipWithError("the lists do not hold the account's rows");
      break;
    }
    // The application's event loop deletes the previous account's request once the open is over; the
    // benchmark runs outside any event loop, so it does the same here (untimed).
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  QObject::disconnect(arrived);
  state.SetItemsProcessed(state.iterations() * size);
  if (state.iterations() > 0) {
    state.counters["handle_ms"] = static_cast<double>(handling) / (1e6 * static_cast<double>(state.iterations()));
    const double perIteration = 1e6 * static_cast<double>(state.iterations());
    state.counters["open_ms"] = static_cast<double>(opening) / perIteration;
    state.counters["reply_ms"] = static_cast<double>(answering) / perIteration;
    state.counters["rows_ms"] = static_cast<double>(loading) / perIteration;
  }
}

void BM_RawSql(benchmark::State& state) {
  Bench& b = bench();
  const int size = static_cast<int>(state.range(0));
  const host::SyntheticAccount& account = b.accounts.at(size);
  const QSqlDatabase db = QSqlDatabase::database(kRawConnection, false);
  for (auto _ : state) {
    int rows = 0;
    for (const QString& sql : {kReceivablesSql, kReceiptsSql}) {
      QSqlQuery query(db);
      query.setForwardOnly(true);
      query.prepare(sql);
      for (const QString& value : {account.type, account.number, account.type, account.number}) {
        query.addBindValue(value);
      }
      if (!query.exec()) {
        die(query.lastError().text());
      }
      const int columns = query.record().count();
      while (query.next()) {
        for (int i = 0; i < columns; ++i) {
          QVariant value = query.value(i);
          benchmark::DoNotOptimize(value);
        }
        if (sql == kReceivablesSql) {
          ++rows;
        }
      }
    }
    if (rows != size) {
      state.SkipWithError("the raw query does not find the account's receivables");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * size);
}

// Ours and the anchor alternate size by size, each repeated, so that a busy moment of the machine weighs on
// both alike; the ratios compare medians.
constexpr int kRepetitions = 5;

void registerBenchmarks() {
  for (const int size : kAccountSizes) {
    for (const auto& [name, function] : {std::pair{"file_open/document", &BM_FileOpen},
                                         std::pair{"file_open/raw_sql", &BM_RawSql}}) {
      benchmark::RegisterBenchmark(name, function)
          ->Arg(size)
          ->UseRealTime()
          ->Repetitions(kRepetitions)
          ->ReportAggregatesOnly(true)
          ->Unit(benchmark::kMillisecond);
    }
  }
}

// Keeps the median real time per iteration of every benchmark, for the ratio lines.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median" && !run.error_occurred &&
          run.iterations > 0) {
        m_seconds[run.run_name.function_name + "/" + run.run_name.args] =
            run.real_accumulated_time / static_cast<double>(run.iterations);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::optional<double> ratio(int size) const {
    const auto ours = m_seconds.find("file_open/document/" + std::to_string(size));
    const auto anchor = m_seconds.find("file_open/raw_sql/" + std::to_string(size));
    if (ours == m_seconds.end() || anchor == m_seconds.end() || anchor->second <= 0) {
      return std::nullopt;
    }
    return ours->second / anchor->second;
  }

private:
  std::map<std::string, double> m_seconds;
};

void printRatio(const RecordingReporter& reporter, int size) {
  if (const auto r = reporter.ratio(size)) {
    std::printf("ratio file_open_%d %.3f\n", size, *r);
  } else {
    std::printf("ratio file_open_%d skipped\n", size);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QGuiApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  QLoggingCategory::setFilterRules(QStringLiteral("adjustacc.host.*.info=false\nadjustacc.document.info=false"));
  registerBenchmarks();
  RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  bench().desk.reset();

  // Ratio lines last; the 1,000-row account's last of all.
  printRatio(reporter, 10);
  printRatio(reporter, 50000);
  printRatio(reporter, 1000);
  return 0;
}
