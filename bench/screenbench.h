#pragma once
// How the screen benchmarks run and report: each benchmark repeated five times, ours and the anchor
// registered one after the other so that a busy moment of the machine weighs on both alike, the median of the
// repetitions kept per benchmark, and the figures printed as lines a script can read ("ratio NAME VALUE",
// "time NAME VALUE", "info ...") after the benchmark library's own table.
#include <QByteArray>
#include <QLoggingCategory>
#include <QString>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace adjustacc::benchsupport {

class MedianReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median" && !run.error_occurred &&
          run.iterations > 0) {
        m_seconds[run.run_name.function_name] = run.real_accumulated_time / static_cast<double>(run.iterations);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Median real time of one iteration, when the benchmark ran without error.
  std::optional<double> seconds(const std::string& name) const {
    const auto found = m_seconds.find(name);
    return found == m_seconds.end() ? std::nullopt : std::optional<double>(found->second);
  }

  std::optional<double> ratio(const std::string& ours, const std::string& anchor) const {
    const auto a = seconds(ours);
    const auto b = seconds(anchor);
    if (!a || !b || *b <= 0) {
      return std::nullopt;
    }
    return *a / *b;
  }

  // The ratio line; "skipped" when either side did not run.
  void printRatio(const char* label, const std::string& ours, const std::string& anchor) const {
    if (const auto r = ratio(ours, anchor)) {
      std::printf("ratio %s %.3f\n", label, *r);
    } else {
      std::printf("ratio %s skipped\n", label);
    }
  }

private:
  std::map<std::string, double> m_seconds;
};

using BenchFunction = void (*)(benchmark::State&);

struct NamedBench {
  const char* name;
  BenchFunction function;
  int iterations = 0;  // per repetition; 0: as many as the library finds it needs
};

// Before the application object is made: offscreen unless the caller chose a platform.
inline void preferOffscreen() {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
}

// Runs the named benchmarks in the order given, five repetitions each, in milliseconds of real time; false
// when the command line held arguments the benchmark library does not know.
inline bool runBenchmarks(int& argc, char** argv, std::initializer_list<NamedBench> benches, MedianReporter& reporter) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return false;
  }
  QLoggingCategory::setFilterRules(QStringLiteral("adjustacc.host.*.info=false\nadjustacc.trap.debug=false"));
  for (const NamedBench& bench : benches) {
    auto* registered = benchmark::RegisterBenchmark(bench.name, bench.function)
                           ->UseRealTime()
                           ->Repetitions(5)
                           ->ReportAggregatesOnly(true)
                           ->Unit(benchmark::kMillisecond);
    if (bench.iterations > 0) {
      registered->Iterations(bench.iterations);
    }
  }
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return true;
}

}  // namespace adjustacc::benchsupport
