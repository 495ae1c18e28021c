// Runs the benchmarks and prints each operation beside its baseline of the same run.
//
// A benchmark is a pair: "<name>/op", the operation, and "<name>/base", the least that could do its
// work. The two run one right after the other, many times over. Each such repetition gives a ratio;
// their median counts, so that a machine that is busy with something else disturbs it least.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kRepetitions = 15;

// A ratio that is only shown has no bound and is not judged.
enum class Limit { kAtMost, kAtLeastFaster, kMoreNanoseconds, kShown };

struct Target {
  const char* name;
  const char* operation;
  const char* baseline;
  Limit limit;
  double bound;
};

constexpr Target kTargets[] = {
    {"atm_warm_10k", "ATM lookup, 10,000 slots, last, warm", "8 bytes of each slot", Limit::kAtMost,
     1.05},
    {"atm_warm_32k", "ATM lookup, 32,000 slots, last, warm", "8 bytes of each slot", Limit::kAtMost,
     1.05},
    {"atm_cold_10k", "ATM lookup, 10,000 slots, last, cold", "8 bytes of each slot", Limit::kAtMost,
     1.35},
    {"atm_cold_32k", "ATM lookup, 32,000 slots, last, cold", "8 bytes of each slot", Limit::kAtMost,
     1.35},
    {"property_1k", "property lookup, 1,000 rows", "thirteen strcmp scans", Limit::kAtLeastFaster,
     5},
    {"property_10k", "property lookup, 10,000 rows", "thirteen strcmp scans", Limit::kAtLeastFaster,
     5},
    {"property_30k", "property lookup, 30,000 rows", "thirteen strcmp scans", Limit::kAtLeastFaster,
     5},
    {"property_first", "property lookup, hit in slot 0", "thirteen strcmp scans", Limit::kAtMost,
     1},
    {"locked_atm", "locked ATM lookup, 64 slots", "64 bare semop pairs", Limit::kAtMost, 1.05},
    {"fit_verify", "verifyAtmFit, the last of 10,000", "8 bytes of each row", Limit::kAtMost, 1.5},
    {"fit_read", "readFitMemory, the last of 10,000", "8 bytes of each row", Limit::kAtMost, 1.5},
    {"fit_count_key1", "getFitCount, key 1 of the last only", "8 bytes of each row", Limit::kAtMost,
     1.5},
    {"fit_count_key2", "getFitCount, key 2 of the last only", "8 bytes of each row", Limit::kAtMost,
     1.5},
    {"fit_count_key3", "getFitCount, key 3 of the last only", "8 bytes of each row", Limit::kAtMost,
     1.5},
    {"fit_count_all", "getFitCount, all by two wildcards", "8 bytes of each row", Limit::kAtMost,
     3},
    // Not judged: a first key of eight characters and more takes two looks at each row.
    {"fit_count_long", "the same, a first key of 12 characters", "8 bytes of each row",
     Limit::kShown, 0},
    {"card_prefix", "indirect state, prefix in the last row", "8 bytes of each row", Limit::kAtMost,
     1.5},
    {"card_catch_all", "indirect state, catch-all in the last", "8 bytes of each row",
     Limit::kAtMost, 1.5},
    {"card_mixed", "indirect state, cards all over a table", "8 bytes of each row", Limit::kAtMost,
     1.5},
    {"cash_plan", "CheckCashAvailability, traces filtered", "greedy plan and one snprintf",
     Limit::kAtMost, 1.5},
    {"pack_status", "PackAtmStatusMsg", "memset, memcpy, date and time", Limit::kAtMost, 1.25},
    {"pack_log", "PackAtmLogMsg", "memset, memcpy, date and time", Limit::kAtMost, 1.25},
    {"pack_trace", "PackAtmTraceNoMsg", "memset and memcpy", Limit::kAtMost, 1.5},
    {"pack_denom", "PackAtmDenomMsg", "memset and memcpy", Limit::kAtMost, 1.5},
    {"config_4k", "one key at the end of a 4 KB file", "open, read, close", Limit::kAtMost, 1.35},
    {"config_64k", "one key at the end of a 64 KB file", "open, read, close", Limit::kAtMost, 4},
    {"trace_filtered", "filtered trace call", "empty call", Limit::kMoreNanoseconds, 2.5},
};

// Keeps the times of every benchmark, in nanoseconds, repetition by repetition.
class Times : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
        failed_ = true;
        continue;
      }
      // A benchmark that times its calls itself gives that time as its real time.
      const bool own_time = run.benchmark_name().find("manual_time") != std::string::npos;
      times_[run.run_name.function_name].push_back(own_time ? run.GetAdjustedRealTime()
                                                            : run.GetAdjustedCPUTime());
    }
  }

  bool failed() const { return failed_; }

  // None when the benchmark did not run.
  std::vector<double> Of(const std::string& name) const {
    const auto entry = times_.find(name);
    return entry != times_.end() ? entry->second : std::vector<double>();
  }

 private:
  std::map<std::string, std::vector<double>> times_;
  bool failed_ = false;
};

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::string Time(double nanoseconds) {
  const char* unit = "ns";
  if (nanoseconds >= 1e4) {
    nanoseconds /= 1e3;
    unit = "us";
  }
  char text[32];
  snprintf(text, sizeof text, "%.1f %s", nanoseconds, unit);
  return text;
}

// What a repetition says of an operation, in the unit of its target's bound.
double Figure(Limit limit, double op, double base) {
  switch (limit) {
    case Limit::kAtLeastFaster:
      return base / op;
    case Limit::kMoreNanoseconds:
      return op - base;
    default:
      return op / base;
  }
}

bool IsMet(const Target& target, double figure) {
  return target.limit == Limit::kAtLeastFaster ? figure >= target.bound : figure <= target.bound;
}

std::string Text(Limit limit, double figure) {
  char text[32];
  snprintf(text, sizeof text, "%.2f", figure);
  switch (limit) {
    case Limit::kAtLeastFaster:
      return std::string("1/") + text;
    case Limit::kMoreNanoseconds:
      return std::string(text) + " ns more";
    default:
      return text;
  }
}

// Prints a line for each target whose pair was run. Returns whether there was one and all were met.
bool PrintTable(const Times& times) {
  int judged = 0;
  int missed = 0;
  printf("%-40s %12s  %-30s %12s %12s %15s  %s\n", "operation", "time", "baseline", "time", "ratio",
         "target", "met");
  for (const Target& target : kTargets) {
    const std::vector<double> op = times.Of(std::string(target.name) + "/op");
    const std::vector<double> base = times.Of(std::string(target.name) + "/base");
    if (op.empty() || op.size() != base.size()) continue;
    std::vector<double> figures;
    for (std::size_t i = 0; i < op.size(); ++i) {
      figures.push_back(Figure(target.limit, op[i], base[i]));
    }
    const double figure = Median(figures);
    const bool shown_only = target.limit == Limit::kShown;
    const bool met = shown_only || IsMet(target, figure);
    if (!shown_only) ++judged;
    if (!met) ++missed;
    printf("%-40s %12s  %-30s %12s %12s %15s  %s\n", target.operation, Time(Median(op)).c_str(),
           target.baseline, Time(Median(base)).c_str(), Text(target.limit, figure).c_str(),
           shown_only ? "-" : ("<= " + Text(target.limit, target.bound)).c_str(),
           shown_only ? "-" : (met ? "yes" : "NO"));
  }
  printf("%d of %d targets met\n", judged - missed, judged);
  return judged > 0 && missed == 0;
}

}  // namespace

// Ends with 1 when a target is missed, when a benchmark failed, or when none was run.
int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  std::string own[] = {"--benchmark_min_time=0.03"};
  for (std::string& argument : own) arguments.insert(arguments.begin() + 1, argument.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  Times times;
  for (int i = 0; i < kRepetitions; ++i) {
    const bool any = benchmark::RunSpecifiedBenchmarks(&times) > 0;
    if (!any || times.failed()) return 1;  // which was said
  }
  return PrintTable(times) ? 0 : 1;
}
