// Record-set sort and filter over account-activity rows, each against its anchor in the same run:
//   sort   - std::stable_sort of row structs that already hold the typed keys (day number, folded text);
//   filter - a hand-written loop with the same predicate over row structs with typed values.
// Prints, last, `ratio recordset_sort_1m` and `ratio recordset_filter_1m` (ours over the anchor).
#include "messaging/recordset.h"

#include <QDate>
#include <QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace adjustacc::messaging;

namespace {

const QString kSort = QStringLiteral("ACTVTY_DT DESC, ACTVTY_TM DESC");
const QString kFilter = QStringLiteral("ACTVTY_CD = 'ADJ' AND AMT > 100");

// The anchor's rows: keys typed once, text folded once, as a hand-written program would keep them.
struct SortRow {
  int day;
  std::string time;
  std::uint32_t row;
};
struct FilterRow {
  std::string code;
  double amount;
};

struct Fixture {
  RecordSet set;
  std::vector<SortRow> sortRows;
  std::vector<FilterRow> filterRows;
  std::size_t textBytes = 0;
};

std::string lower(const QString& s) { return s.toLower().toStdString(); }

Fixture makeFixture(int rows) {
  static const QStringList codes = {QStringLiteral("ADJ"),  QStringLiteral("CALL"), QStringLiteral("LTR"),
                                    QStringLiteral("NOTE"), QStringLiteral("PMT"),  QStringLiteral("REF"),
                                    QStringLiteral("HOLD"), QStringLiteral("LEVY"), QStringLiteral("PLAN"),
                                    QStringLiteral("MAIL")};
  Fixture f;
  f.set = RecordSet({{QStringLiteral("ACTVTY_DT"), FieldType::Date},
                     {QStringLiteral("ACTVTY_TM"), FieldType::Text},
                     {QStringLiteral("ACTVTY_CD"), FieldType::Text},
                     {QStringLiteral("ACTVTY_TXT"), FieldType::Text},
                     {QStringLiteral("OFFCR_ID"), FieldType::Text},
                     {QStringLiteral("AMT"), FieldType::Number},
                     {QStringLiteral("ACCT_RCVBL_NBR"), FieldType::Text},
                     {QStringLiteral("SEQ"), FieldType::Number}});
  f.set.reserve(rows);
  f.sortRows.reserve(static_cast<std::size_t>(rows));
  f.filterRows.reserve(static_cast<std::size_t>(rows));
  std::mt19937 random(20240315);
  const QDate start(2019, 1, 1);
  for (int i = 0; i < rows; ++i) {
    const int day = static_cast<int>(random() % 1826);
    const QString date = start.addDays(day).toString(Qt::ISODate);
    const QString time = QStringLiteral("%1:%2")
                             .arg(7 + random() % 12, 2, 10, QLatin1Char('0'))
                             .arg(random() % 60, 2, 10, QLatin1Char('0'));
    const QString code = codes[static_cast<qsizetype>(random() % codes.size())];
    const double cents = static_cast<double>(random() % 500000) * (random() % 20 == 0 ? -1 : 1);
    const QString amount = QString::number(cents / 100.0, 'f', 2);
    const QList<QVariant> values = {
        date,
        time,
        code,
        QStringLiteral("Contacted taxpayer re %1 no. %2").arg(code).arg(random() % 100000),
        QStringLiteral("OF%1").arg(100 + random() % 60),
        amount,
        QString::number(1000000 + i / 8),
        QString::number(i)};
    for (const auto& v : values) {
      f.textBytes += static_cast<std::size_t>(v.toString().toUtf8().size());
    }
    f.set.addNew(values);
    f.sortRows.push_back({static_cast<int>(start.addDays(day).toJulianDay()), lower(time),
                          static_cast<std::uint32_t>(i)});
    f.filterRows.push_back({lower(code), amount.toDouble()});
  }
  return f;
}

Fixture& fixture(int rows) {
  static std::map<int, Fixture> cache;
  auto it = cache.find(rows);
  if (it == cache.end()) {
    it = cache.emplace(rows, makeFixture(rows)).first;
    Fixture& f = it->second;
    // Both sides must do the same work: check that they agree before timing anything.
    auto sorted = f.sortRows;
    std::stable_sort(sorted.begin(), sorted.end(), [](const SortRow& a, const SortRow& b) {
      return a.day != b.day ? a.day > b.day : b.time < a.time;
    });
    if (f.set.setSort(kSort)) {
      std::fprintf(stderr, "sort text refused\n");
      std::abort();
    }
    for (std::size_t r = 0; r < sorted.size(); ++r) {
      if (f.set.bookmarkAt(static_cast<int>(r)) != sorted[r].row) {
        std::fprintf(stderr, "sort orders differ at row %zu\n", r);
        std::abort();
      }
    }
    f.set.setSort(QString());
    std::size_t passing = 0;
    for (const auto& row : f.filterRows) {
      passing += row.code == "adj" && row.amount > 100 ? 1 : 0;
    }
    f.set.setFilter(kFilter);
    if (static_cast<std::size_t>(f.set.recordCount()) != passing) {
      std::fprintf(stderr, "filters differ: %d against %zu rows\n", f.set.recordCount(), passing);
      std::abort();
    }
    f.set.setFilter(QString());
  }
  return it->second;
}

void recordSetSort(benchmark::State& state) {
  Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(f.set.setSort(kSort));
  }
  f.set.setSort(QString());
}

void recordSetSortCold(benchmark::State& state) {
  // Every pass first changes a cell of each key column, so the column keys are built again.
  Fixture& f = fixture(static_cast<int>(state.range(0)));
  const QVariant date = f.set.valueAt(0, 0);
  const QVariant time = f.set.valueAt(0, 1);
  for (auto _ : state) {
    f.set.updateAt(0, 0, date);
    f.set.updateAt(0, 1, time);
    benchmark::DoNotOptimize(f.set.setSort(kSort));
  }
  f.set.setSort(QString());
}

void anchorSort(benchmark::State& state) {
  Fixture& f = fixture(static_cast<int>(state.range(0)));
  std::vector<SortRow> rows;
  for (auto _ : state) {
    state.PauseTiming();
    rows = f.sortRows;
    state.ResumeTiming();
    std::stable_sort(rows.begin(), rows.end(), [](const SortRow& a, const SortRow& b) {
      return a.day != b.day ? a.day > b.day : b.time < a.time;
    });
    benchmark::DoNotOptimize(rows.data());
  }
}

void recordSetFilter(benchmark::State& state) {
  Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(f.set.setFilter(kFilter));
  }
  f.set.setFilter(QString());
}

void recordSetFilterCold(benchmark::State& state) {
  Fixture& f = fixture(static_cast<int>(state.range(0)));
  const QVariant code = f.set.valueAt(0, 2);
  const QVariant amount = f.set.valueAt(0, 5);
  for (auto _ : state) {
    f.set.updateAt(0, 2, code);
    f.set.updateAt(0, 5, amount);
    benchmark::DoNotOptimize(f.set.setFilter(kFilter));
  }
  f.set.setFilter(QString());
}

void anchorFilter(benchmark::State& state) {
  Fixture& f = fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::vector<std::uint32_t> passing;
    for (std::size_t i = 0; i < f.filterRows.size(); ++i) {
      const FilterRow& row = f.filterRows[i];
      if (row.code == "adj" && row.amount > 100) {
        passing.push_back(static_cast<std::uint32_t>(i));
      }
    }
    benchmark::DoNotOptimize(passing.data());
  }
}

// Keeps each run's time per iteration, by benchmark name, for the ratio lines.
class Capture : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
        times[run.benchmark_name()] = run.GetAdjustedRealTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> times;
};

double ratio(const Capture& c, const std::string& ours, const std::string& anchor) {
  const auto a = c.times.find(ours);
  const auto b = c.times.find(anchor);
  if (a == c.times.end() || b == c.times.end() || b->second <= 0) {
    return -1;
  }
  return a->second / b->second;
}

}  // namespace

int main(int argc, char** argv) {
  for (const int rows : {100000, 1000000}) {
    const auto arg = static_cast<std::int64_t>(rows);
    benchmark::RegisterBenchmark("RecordSet_Sort", recordSetSort)->Arg(arg)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Anchor_StableSort", anchorSort)->Arg(arg)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("RecordSet_SortCold", recordSetSortCold)->Arg(arg)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("RecordSet_Filter", recordSetFilter)->Arg(arg)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Anchor_FilterLoop", anchorFilter)->Arg(arg)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("RecordSet_FilterCold", recordSetFilterCold)
        ->Arg(arg)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  Capture capture;
  benchmark::RunSpecifiedBenchmarks(&capture);
  benchmark::Shutdown();

  // Memory of the million-row set with a sort and a filter in force, against the bytes of its text.
  Fixture& f = fixture(1000000);
  f.set.setSort(kSort);
  f.set.setFilter(kFilter);
  std::printf("memory recordset_1m %.3f\n", static_cast<double>(f.set.storageBytes()) /
                                                static_cast<double>(f.textBytes));
  std::printf("info recordset_sort_cold_1m %.3f\n",
              ratio(capture, "RecordSet_SortCold/1000000", "Anchor_StableSort/1000000"));
  std::printf("info recordset_filter_cold_1m %.3f\n",
              ratio(capture, "RecordSet_FilterCold/1000000", "Anchor_FilterLoop/1000000"));
  std::printf("ratio recordset_sort_1m %.3f\n", ratio(capture, "RecordSet_Sort/1000000", "Anchor_StableSort/1000000"));
  std::printf("ratio recordset_filter_1m %.3f\n",
              ratio(capture, "RecordSet_Filter/1000000", "Anchor_FilterLoop/1000000"));
  return 0;
}
