// Record-set sort and filter over account-activity rows, each against its anchor in the same run.
//
// The ratios measure what a clerk waits for: the first sort or the first filter on a record set just
// received, whose comparison keys are not built yet. Every timed pass works on a fresh copy of the same
// rows with storage of its own, made while the clock is stopped (so building the set is not timed, and no
// keys are left over from the pass before). The anchors start from the same rows as a host reply
// delivers them, one struct of std::string fields per row, and do the same work by hand:
//   sort   - read each row's date into a day number and fold its time once, into a key vector, then
//            std::stable_sort that vector (newest first, as the record set is asked to);
//   filter - one loop that compares each row's code case-insensitively and, for the matching ones,
//            reads the amount and tests it.
// Before the ratios, for information: the same operations once the keys are built (warm), against the
// hand-written versions over structs that already hold typed keys.
//
// Times are CPU times of the benchmark thread: the machine is shared, and both sides are single-threaded.
// Prints, last, `ratio recordset_sort_1m` and `ratio recordset_filter_1m` (ours over the anchor).
#include "messaging/recordset.h"

#include <QDate>
#include <QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace adjustacc::messaging;

namespace {

const QString kSort = QStringLiteral("ACTVTY_DT DESC, ACTVTY_TM DESC");
const QString kFilter = QStringLiteral("ACTVTY_CD = 'ADJ' AND AMT > 100");

// A row as the host reply delivers it: text.
struct TextRow {
  std::string date;
  std::string time;
  std::string code;
  std::string text;
  std::string officer;
  std::string amount;
  std::string account;
  std::string seq;
};

// Rows with typed keys made ahead, for the warm comparison.
struct TypedSortRow {
  int day;
  std::string time;
  std::uint32_t row;
};
struct TypedFilterRow {
  std::string code;
  double amount;
};

struct Fixture {
  std::size_t rows = 0;
  RecordSet pristine;  // never sorted nor filtered: its storage never holds keys
  RecordSet warm;      // storage of its own, keys kept between passes
  std::size_t pristineBytes = 0;
  std::vector<TextRow> textRows;
  std::vector<TypedSortRow> typedSortRows;
  std::vector<TypedFilterRow> typedFilterRows;
  std::size_t textBytes = 0;
};

std::string toStd(const QString& s) { return s.toStdString(); }

// --- the anchors' own reading of the text --------------------------------------------------------------------

// "yyyy-mm-dd" as a day number (the rows are written so).
int dayNumber(std::string_view text) {
  int y = 0;
  int m = 0;
  int d = 0;
  std::from_chars(text.data(), text.data() + 4, y);
  std::from_chars(text.data() + 5, text.data() + 7, m);
  std::from_chars(text.data() + 8, text.data() + 10, d);
  y -= m <= 2 ? 1 : 0;
  const int era = (y >= 0 ? y : y - 399) / 400;
  const int yoe = y - era * 400;
  const int doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  return era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy;
}

std::string_view trimEnd(std::string_view text) {
  while (!text.empty() && text.back() == ' ') {
    text.remove_suffix(1);
  }
  return text;
}

std::string folded(std::string_view text) {
  text = trimEnd(text);
  std::string out(text);
  for (auto& c : out) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
  return out;
}

// Case-insensitive equality with a lower-case word, trailing blanks ignored.
bool equalsFolded(std::string_view text, std::string_view lowerWord) {
  text = trimEnd(text);
  if (text.size() != lowerWord.size()) {
    return false;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
    if (c != lowerWord[i]) {
      return false;
    }
  }
  return true;
}

bool amountAbove(std::string_view text, double limit) {
  double value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && end == text.data() + text.size() && value > limit;
}

struct TextSortKey {
  int day;
  std::string time;
  std::uint32_t row;
};

void sortKeysNewestFirst(std::vector<TextSortKey>& keys) {
  std::stable_sort(keys.begin(), keys.end(), [](const TextSortKey& a, const TextSortKey& b) {
    return a.day != b.day ? a.day > b.day : b.time < a.time;
  });
}

std::vector<TextSortKey> anchorSortOnce(const std::vector<TextRow>& rows) {
  std::vector<TextSortKey> keys;
  keys.reserve(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    keys.push_back({dayNumber(rows[i].date), folded(rows[i].time), static_cast<std::uint32_t>(i)});
  }
  sortKeysNewestFirst(keys);
  return keys;
}

std::vector<std::uint32_t> anchorFilterOnce(const std::vector<TextRow>& rows) {
  std::vector<std::uint32_t> passing;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (equalsFolded(rows[i].code, "adj") && amountAbove(rows[i].amount, 100)) {
      passing.push_back(static_cast<std::uint32_t>(i));
    }
  }
  return passing;
}

// --- fixture ---------------------------------------------------------------------------------------------------

// A copy of the set with storage of its own: nothing it builds reaches the pristine set.
RecordSet freshCopy(const Fixture& f) {
  RecordSet copy = f.pristine;
  copy.reserve(static_cast<int>(f.rows));  // a write: the copy takes its own storage
  return copy;
}

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "bench_recordset: %s\n", what);
  std::abort();
}

void checkAgreement(const Fixture& f) {
  // Both sides must do the same work: the same order and the same rows, before anything is timed.
  RecordSet set = freshCopy(f);
  if (set.setSort(kSort)) {
    fail("sort text refused");
  }
  const auto keys = anchorSortOnce(f.textRows);
  for (std::size_t r = 0; r < keys.size(); ++r) {
    if (set.bookmarkAt(static_cast<int>(r)) != keys[r].row) {
      fail("sort orders differ");
    }
  }
  set.setSort(QString());
  if (set.setFilter(kFilter)) {
    fail("filter text refused");
  }
  const auto passing = anchorFilterOnce(f.textRows);
  if (static_cast<std::size_t>(set.recordCount()) != passing.size()) {
    fail("filters differ in count");
  }
  for (std::size_t r = 0; r < passing.size(); ++r) {
    if (set.bookmarkAt(static_cast<int>(r)) != passing[r]) {
      fail("filters differ");
    }
  }
}

Fixture makeFixture(std::size_t rows) {
  static const QStringList codes = {QStringLiteral("ADJ"),  QStringLiteral("CALL"), QStringLiteral("LTR"),
                                    QStringLiteral("NOTE"), QStringLiteral("PMT"),  QStringLiteral("REF"),
                                    QStringLiteral("HOLD"), QStringLiteral("LEVY"), QStringLiteral("PLAN"),
                                    QStringLiteral("MAIL")};
  Fixture f;
  f.rows = rows;
  f.pristine = RecordSet({{QStringLiteral("ACTVTY_DT"), FieldType::Date},
                          {QStringLiteral("ACTVTY_TM"), FieldType::Text},
                          {QStringLiteral("ACTVTY_CD"), FieldType::Text},
                          {QStringLiteral("ACTVTY_TXT"), FieldType::Text},
                          {QStringLiteral("OFFCR_ID"), FieldType::Text},
                          {QStringLiteral("AMT"), FieldType::Number},
                          {QStringLiteral("ACCT_RCVBL_NBR"), FieldType::Text},
                          {QStringLiteral("SEQ"), FieldType::Number}});
  f.pristine.reserve(static_cast<int>(rows));
  f.textRows.reserve(rows);
  f.typedSortRows.reserve(rows);
  f.typedFilterRows.reserve(rows);
  std::mt19937 random(20240315);
  const QDate start(2019, 1, 1);
  for (std::size_t i = 0; i < rows; ++i) {
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
    f.pristine.addNew(values);
    f.textRows.push_back({toStd(date), toStd(time), toStd(code), toStd(values[3].toString()),
                          toStd(values[4].toString()), toStd(amount), toStd(values[6].toString()),
                          toStd(values[7].toString())});
    f.typedSortRows.push_back({dayNumber(f.textRows.back().date), folded(f.textRows.back().time),
                               static_cast<std::uint32_t>(i)});
    f.typedFilterRows.push_back({folded(f.textRows.back().code), amount.toDouble()});
  }
  f.pristine.moveFirst();
  f.pristineBytes = f.pristine.storageBytes();
  f.warm = freshCopy(f);
  checkAgreement(f);
  return f;
}

Fixture& fixture(std::int64_t rows) {
  static std::map<std::int64_t, Fixture> cache;
  auto it = cache.find(rows);
  if (it == cache.end()) {
    it = cache.emplace(rows, makeFixture(static_cast<std::size_t>(rows))).first;
  }
  return it->second;
}

// --- first sort and filter (cold) ----------------------------------------------------------------------------

template <typename Operation>
void coldPasses(benchmark::State& state, Operation operation) {
  const Fixture& f = fixture(state.range(0));
  std::optional<RecordSet> set;
  for (auto _ : state) {
    state.PauseTiming();
    set.reset();
    set.emplace(freshCopy(f));
    state.ResumeTiming();
    operation(*set);
  }
}

void recordSetSortCold(benchmark::State& state) {
  coldPasses(state, [](RecordSet& set) { benchmark::DoNotOptimize(set.setSort(kSort)); });
}

void recordSetFilterCold(benchmark::State& state) {
  coldPasses(state, [](RecordSet& set) { benchmark::DoNotOptimize(set.setFilter(kFilter)); });
}

void anchorSortText(benchmark::State& state) {
  const Fixture& f = fixture(state.range(0));
  std::vector<TextSortKey> keys;
  for (auto _ : state) {
    state.PauseTiming();
    keys = {};
    state.ResumeTiming();
    keys = anchorSortOnce(f.textRows);
    benchmark::DoNotOptimize(keys.data());
  }
}

void anchorFilterText(benchmark::State& state) {
  const Fixture& f = fixture(state.range(0));
  for (auto _ : state) {
    auto passing = anchorFilterOnce(f.textRows);
    benchmark::DoNotOptimize(passing.data());
  }
}

// --- again, with the keys built (warm) --------------------------------------------------------------------------

void recordSetSortWarm(benchmark::State& state) {
  Fixture& f = fixture(state.range(0));
  f.warm.setSort(kSort);
  for (auto _ : state) {
    benchmark::DoNotOptimize(f.warm.setSort(kSort));
  }
  f.warm.setSort(QString());
}

void recordSetFilterWarm(benchmark::State& state) {
  Fixture& f = fixture(state.range(0));
  f.warm.setFilter(kFilter);
  for (auto _ : state) {
    benchmark::DoNotOptimize(f.warm.setFilter(kFilter));
  }
  f.warm.setFilter(QString());
}

void anchorSortTyped(benchmark::State& state) {
  const Fixture& f = fixture(state.range(0));
  std::vector<TypedSortRow> rows;
  for (auto _ : state) {
    state.PauseTiming();
    rows = f.typedSortRows;
    state.ResumeTiming();
    std::stable_sort(rows.begin(), rows.end(), [](const TypedSortRow& a, const TypedSortRow& b) {
      return a.day != b.day ? a.day > b.day : b.time < a.time;
    });
    benchmark::DoNotOptimize(rows.data());
  }
}

void anchorFilterTyped(benchmark::State& state) {
  const Fixture& f = fixture(state.range(0));
  for (auto _ : state) {
    std::vector<std::uint32_t> passing;
    for (std::size_t i = 0; i < f.typedFilterRows.size(); ++i) {
      const TypedFilterRow& row = f.typedFilterRows[i];
      if (row.code == "adj" && row.amount > 100) {
        passing.push_back(static_cast<std::uint32_t>(i));
      }
    }
    benchmark::DoNotOptimize(passing.data());
  }
}

// Keeps each run's CPU time per iteration, by benchmark name, for the ratio lines.
class Capture : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
        times[run.benchmark_name()] = run.GetAdjustedCPUTime();
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
  for (const std::int64_t rows : {100000, 1000000}) {
    const auto add = [rows](const char* name, void (*function)(benchmark::State&)) {
      benchmark::RegisterBenchmark(name, function)->Arg(rows)->Unit(benchmark::kMillisecond);
    };
    add("RecordSet_SortCold", recordSetSortCold);
    add("Anchor_SortText", anchorSortText);
    add("RecordSet_FilterCold", recordSetFilterCold);
    add("Anchor_FilterText", anchorFilterText);
    add("RecordSet_SortWarm", recordSetSortWarm);
    add("Anchor_SortTyped", anchorSortTyped);
    add("RecordSet_FilterWarm", recordSetFilterWarm);
    add("Anchor_FilterTyped", anchorFilterTyped);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  Capture capture;
  benchmark::RunSpecifiedBenchmarks(&capture);
  benchmark::Shutdown();

  Fixture& f = fixture(1000000);
  if (f.pristine.storageBytes() != f.pristineBytes) {
    fail("keys reached the pristine set: the first-pass figures are not first passes");
  }
  // Memory of the million-row set with the sort and the filter in force (their keys included), against
  // the bytes of its text; then with the keys of every column built.
  RecordSet set = freshCopy(f);
  set.setSort(kSort);
  set.setFilter(kFilter);
  const auto text = static_cast<double>(f.textBytes);
  std::printf("memory recordset_1m %.3f\n", static_cast<double>(set.storageBytes()) / text);
  for (const auto& field : set.fields()) {
    const QString above = field.type == FieldType::Number ? QStringLiteral("0")
                          : field.type == FieldType::Text ? QStringLiteral("'0'")
                                                          : QStringLiteral("#1900-01-01#");
    if (set.setSort(field.name) || set.setFilter(QStringLiteral("[%1] > %2").arg(field.name, above))) {
      fail("a key-building text was refused");
    }
  }
  std::printf("info memory_recordset_1m_all_keys %.3f\n", static_cast<double>(set.storageBytes()) / text);
  std::printf("info recordset_sort_warm_1m %.3f\n",
              ratio(capture, "RecordSet_SortWarm/1000000", "Anchor_SortTyped/1000000"));
  std::printf("info recordset_filter_warm_1m %.3f\n",
              ratio(capture, "RecordSet_FilterWarm/1000000", "Anchor_FilterTyped/1000000"));
  std::printf("ratio recordset_sort_1m %.3f\n",
              ratio(capture, "RecordSet_SortCold/1000000", "Anchor_SortText/1000000"));
  std::printf("ratio recordset_filter_1m %.3f\n",
              ratio(capture, "RecordSet_FilterCold/1000000", "Anchor_FilterText/1000000"));
  return 0;
}
