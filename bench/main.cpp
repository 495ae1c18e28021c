// Runs the benchmarks and prints each operation beside its baseline of the same run.
//
// A benchmark is a pair: "<name>/op", the operation, and "<name>/base", the least that could do its
// work. Both run many times, interleaved; the best run of each counts, so that a busy machine
// disturbs the ratio least.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

enum class Limit { kAtMost, kAtLeastFaster, kMoreNanoseconds };

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
    {"indirect_10k", "indirect state, 10,000 FIT rows", "each row's key once", Limit::kAtMost, 1.4},
    {"cash_plan", "CheckCashAvailability, traces filtered", "greedy plan and one snprintf",
     Limit::kAtMost, 1.5},
    {"pack_status", "PackAtmStatusMsg", "memset, memcpy, date and time", Limit::kAtMost, 1.5},
    {"pack_log", "PackAtmLogMsg", "memset, memcpy, date and time", Limit::kAtMost, 1.5},
    {"pack_trace", "PackAtmTraceNoMsg", "memset and memcpy", Limit::kAtMost, 1.5},
    {"pack_denom", "PackAtmDenomMsg", "memset and memcpy", Limit::kAtMost, 1.5},
    {"config_4k", "one key at the end of a 4 KB file", "open, read, close", Limit::kAtMost, 1.35},
    {"config_64k", "one key at the end of a 64 KB file", "open, read, close", Limit::kAtMost, 4},
    {"trace_filtered", "filtered trace call", "empty call", Limit::kMoreNanoseconds, 2.5},
};

// Keeps the best time of each benchmark, in nanoseconds.
class BestTimes : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      if (run.error_occurred) {
        fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
        continue;
      }
      // A benchmark that times its calls itself gives that time as its real time.
      const bool own_time = run.benchmark_name().find("manual_time") != std::string::npos;
      const double time = own_time ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
      const auto [entry, added] = times_.try_emplace(run.run_name.function_name, time);
      if (!added) entry->second = std::min(entry->second, time);
    }
  }

  // The best time, or NaN when the benchmark did not run.
  double Of(const std::string& name) const {
    const auto entry = times_.find(name);
    return entry != times_.end() ? entry->second : std::numeric_limits<double>::quiet_NaN();
  }

 private:
  std::map<std::string, double> times_;
};

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

struct Verdict {
  std::string figure;
  std::string target;
  bool met;
};

Verdict Judge(const Target& target, double op, double base) {
  char figure[32];
  char bound[32];
  double value = op / base;
  bool met = value <= target.bound;
  switch (target.limit) {
    case Limit::kAtMost:
      snprintf(figure, sizeof figure, "%.2f", value);
      snprintf(bound, sizeof bound, "<= %.2f", target.bound);
      break;
    case Limit::kAtLeastFaster:
      value = base / op;
      met = value >= target.bound;
      snprintf(figure, sizeof figure, "1/%.1f", value);
      snprintf(bound, sizeof bound, "<= 1/%.0f", target.bound);
      break;
    case Limit::kMoreNanoseconds:
      value = op - base;
      met = value <= target.bound;
      snprintf(figure, sizeof figure, "%+.2f ns", value);
      snprintf(bound, sizeof bound, "<= +%.1f ns", target.bound);
      break;
  }
  return {figure, bound, met};
}

void PrintTable(const BestTimes& times) {
  printf("%-40s %12s  %-30s %12s %10s %11s  %s\n", "operation", "time", "baseline", "time", "ratio",
         "target", "met");
  for (const Target& target : kTargets) {
    const double op = times.Of(std::string(target.name) + "/op");
    const double base = times.Of(std::string(target.name) + "/base");
    if (!(op > 0 && base > 0)) continue;
    const Verdict verdict = Judge(target, op, base);
    printf("%-40s %12s  %-30s %12s %10s %11s  %s\n", target.operation, Time(op).c_str(),
           target.baseline, Time(base).c_str(), verdict.figure.c_str(), verdict.target.c_str(),
           verdict.met ? "yes" : "NO");
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  std::string own[] = {"--benchmark_repetitions=15", "--benchmark_min_time=0.05",
                       "--benchmark_enable_random_interleaving=true"};
  for (std::string& argument : own) arguments.insert(arguments.begin() + 1, argument.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  BestTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);
  PrintTable(times);
  return 0;
}
