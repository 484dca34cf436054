// Filtering the account activity log: 10,000 rows of one receivable on the Account Activity screen, filtered
// by a date range and an activity code (FilterActivityGrid, as the clerk's filter fields set it) and the result
// shown: every row that passes read as the list's view reads it (RowLoaded, the displayed texts).
//
// The anchor, in the same run over the same rows: a hand loop with the same predicate over the rows kept in a
// plain vector, copying the same texts of every row that passes. The ratio line comes last: ours over the anchor.
// It times the clerk filtering a log the screen already shows, as the anchor's rows are already in hand; an
// information line before it gives the first filter after loading, when the list has made no text yet.
#include "documentbench.h"
#include "screenbench.h"

#include "activity/activity.h"
#include "host/demodata.h"
#include "messaging/reply.h"
#include "messaging/sections.h"
#include "platform/user.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace adjustacc;

namespace {

using benchsupport::die;

constexpr int kRows = 10000;
const QDate kFirstDay(2021, 1, 4);
const QDate kFrom(2022, 3, 1);
const QDate kTo(2023, 9, 30);
const QString kCode = QStringLiteral("PMT");
const std::array<QString, 5> kCodes = {QStringLiteral("ISS"), QStringLiteral("ADJ"), QStringLiteral("PMT"),
                                       QStringLiteral("CAL"), QStringLiteral("LTR")};

struct Row {
  QDate day;
  QString time;
  QString code;
  QString amount;
  QString balance;
  QString officer;
  QString comment;
};

std::vector<Row> makeRows() {
  std::vector<Row> rows;
  rows.reserve(kRows);
  for (int i = 0; i < kRows; ++i) {
    rows.push_back({kFirstDay.addDays(i % 1100), QStringLiteral("%1:%2").arg(8 + i % 9, 2, 10, QChar(u'0')).arg(i % 60, 2, 10, QChar(u'0')),
                    kCodes[static_cast<std::size_t>(i % 5)], QString::number(25 + i % 400) + QStringLiteral(".00"),
                    QString::number(5000 - i % 4000) + QStringLiteral(".50"), QStringLiteral("ADMIN01"),
                    QStringLiteral("Entry %1 of the log").arg(i)});
  }
  return rows;
}

messaging::Reply activityReply(const std::vector<Row>& rows) {
  const messaging::SectionLayout* layout = messaging::sections::layout(QStringLiteral("ACCOUNTACTIVITY"));
  if (layout == nullptr) {
    die(QStringLiteral("no ACCOUNTACTIVITY layout"));
  }
  messaging::RecordSet set(layout->fields);
  int sequence = 0;
  for (const Row& row : rows) {
    QList<QVariant> values(layout->fields.size());
    const auto put = [&](const char* field, const QVariant& value) { values[layout->fieldIndex(QLatin1String(field))] = value; };
    put("ACTVTY_SEQ_NBR", QString::number(++sequence));
    put("ACTVTY_DT", row.day.toString(Qt::ISODate));
    put("ACTVTY_TM", row.time);
    put("ACCT_ACTVTY_CD", row.code);
    put("ACTVTY_AMT", row.amount);
    put("ACTVTY_BAL_AMT", row.balance);
    put("LST_UPDT_USER_ID", row.officer);
    put("ACTVTY_CMMT_TXT", row.comment);
    put("ACCT_RCVBL_NBR", QStringLiteral("1000011"));
    put("ACCT_CK_DGT_NBR", QStringLiteral("5"));
    put("ACCT_RCVBL_TYP_CD", QStringLiteral("C"));
    put("ROW_VRSN_NBR", QStringLiteral("1"));
    set.addNew(values);
  }
  set.moveFirst();
  messaging::Reply reply;
  reply.sections.insert(QStringLiteral("ACCOUNTACTIVITY"), set);
  return reply;
}

struct Bench {
  QTemporaryDir dir;
  std::vector<Row> rows = makeRows();
  std::unique_ptr<benchsupport::DocumentBench> desk;
  std::unique_ptr<activity::QORVA_Activity> screen;
  int expected = 0;
};

Bench& bench() {
  static Bench b = [] {
    Bench made;
    const QString connection = QStringLiteral("bench-activity");
    host::DatabaseOptions options;
    options.databaseName = made.dir.filePath(QStringLiteral("adjustacc.sqlite"));
    if (!host::openDatabase(options, connection).ok() || !host::createSchema(connection).ok() ||
        !host::loadDemoData(connection, QDate::currentDate()).ok()) {
      die(QStringLiteral("the demo database could not be made"));
    }
    made.desk = std::make_unique<benchsupport::DocumentBench>(
        connection, made.dir.path(),
        platform::User(host::demo::Admin, QStringLiteral("Bench"), QStringLiteral("NE"), {}));
    return made;
  }();
  return b;
}

// The clerk's filter, set and applied as Search applies it, then every shown cell of every row that passed read
// as the list's view reads it; the number of rows shown.
int filterAndShow(activity::QORVA_Activity& screen) {
  using A = activity::QORVA_Activity;
  screen.mDtpActivity[A::FromDate].setDate(kFrom);
  screen.mDtpActivity[A::ToDate].setDate(kTo);
  if (!screen.mFtcboFilterCode.setCode(kCode)) {
    die(QStringLiteral("the filter code is not in the code box"));
  }
  screen.FilterActivityGrid();
  const platform::Grid& grid = screen.mSdgActivity;
  qsizetype characters = 0;
  for (int row = 0; row < grid.rows(); ++row) {
    for (int column = 0; column < grid.columnCount(); ++column) {
      if (grid.column(column).isVisible()) {
        characters += grid.displayText(row, column).size();
      }
    }
  }
  benchmark::DoNotOptimize(characters);
  return grid.rows();
}

void makeScreen(Bench& b) {
  if (!b.screen) {
    b.screen = std::make_unique<activity::QORVA_Activity>(*b.desk->services);
    b.screen->Form_Load();
    b.screen->LoadActivity(activityReply(b.rows));
  }
}

// The clerk filtering a log the screen already shows, again and again: what the list made of the cells it
// showed before is kept while the rows stay as they are.
void BM_Screen(benchmark::State& state) {
  Bench& b = bench();
  makeScreen(b);
  for (auto _ : state) {
    if (filterAndShow(*b.screen) != b.expected) {
      state.SkipWithError("the screen's filter does not agree with the hand loop");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

// The first filter after the log was loaded (the load itself not timed): nothing made before to draw on.
void BM_FirstFilter(benchmark::State& state) {
  Bench& b = bench();
  makeScreen(b);
  for (auto _ : state) {
    state.PauseTiming();
    b.screen->LoadActivity(activityReply(b.rows));  // a set of its own, sorted anew
    state.ResumeTiming();
    if (filterAndShow(*b.screen) != b.expected) {
      state.SkipWithError("the screen's filter does not agree with the hand loop");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

void BM_HandLoop(benchmark::State& state) {
  Bench& b = bench();
  for (auto _ : state) {
    std::vector<const Row*> passed;
    qsizetype characters = 0;
    for (const Row& row : b.rows) {
      if (row.code == kCode && row.day >= kFrom && row.day <= kTo) {
        passed.push_back(&row);
        for (const QString* text : {&row.time, &row.code, &row.amount, &row.balance, &row.officer, &row.comment}) {
          characters += QString(*text).size();
        }
        characters += row.day.toString(QStringLiteral("MM/dd/yyyy")).size();
      }
    }
    benchmark::DoNotOptimize(characters);
    b.expected = static_cast<int>(passed.size());
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}


}  // namespace

int main(int argc, char** argv) {
  benchsupport::preferOffscreen();
  QGuiApplication app(argc, argv);
  benchsupport::MedianReporter reporter;
  // The hand loop first: it tells the screen's run how many rows must pass.
  if (!benchsupport::runBenchmarks(argc, argv,
                                   {{"activity_filter/hand_loop", &BM_HandLoop},
                                    {"activity_filter/screen", &BM_Screen},
                                    {"activity_filter/first_filter", &BM_FirstFilter, 20}},
                                   reporter)) {
    return 1;
  }
  bench().screen.reset();
  bench().desk.reset();
  if (const auto first = reporter.ratio("activity_filter/first_filter", "activity_filter/hand_loop")) {
    std::printf("info activity_filter_10000 first filter after loading over the anchor %.3f\n", *first);
  }
  reporter.printRatio("activity_filter_10000", "activity_filter/screen", "activity_filter/hand_loop");
  return 0;
}
