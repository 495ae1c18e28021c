// The cash plan: a check that confirms the configured logic beside the bare arithmetic and one
// snprintf. A check that plans anew also traces lines without a level, which no threshold filters.
#include <benchmark/benchmark.h>

#include "bench/support.h"

namespace {

constexpr int kCassettes = 4;

// A request for 380 that the configured logic pays.
struct Request {
  char amount[8] = "380";
  char logic[17] = "01010301";
  DenomInfo cassettes[8] = {{'A', 1, 20, 978, 'Y', 0},  {'B', 2, 50, 978, 'Y', 0},
                            {'C', 3, 100, 978, 'Y', 0}, {'D', 4, 10, 978, 'Y', 0},
                            {'E', 5, 0, 0, '@', 0},     {'F', 6, 0, 0, '@', 0},
                            {'G', 7, 0, 0, '@', 0},     {'H', 8, 0, 0, '@', 0}};
};

void Check(benchmark::State& state) {
  QuietDriver driver;
  for (auto _ : state) {
    Request request;
    benchmark::DoNotOptimize(request);
    const int result = driver.util.CheckCashAvailability("NDC+ATM", request.amount, request.logic,
                                                         978, request.cassettes, 40);
    if (result != 0) {
      state.SkipWithError("not payable");
      return;
    }
    benchmark::DoNotOptimize(request);
  }
}

void GreedyPlan(benchmark::State& state) {
  for (auto _ : state) {
    Request request;
    benchmark::DoNotOptimize(request);
    const int order[kCassettes] = {2, 1, 0, 3};
    int remaining = atoi(request.amount);
    int notes[kCassettes] = {};
    for (const int position : order) {
      const DenomInfo& cassette = request.cassettes[position];
      if (cassette.Status != 'Y' || cassette.Code != 978) continue;
      notes[position] = remaining / cassette.Value;
      remaining -= notes[position] * cassette.Value;
    }
    snprintf(request.logic, sizeof request.logic, "%02d%02d%02d%02d", notes[0], notes[1], notes[2],
             notes[3]);
    benchmark::DoNotOptimize(request);
  }
}

BENCHMARK(Check)->Name("cash_plan/op");
BENCHMARK(GreedyPlan)->Name("cash_plan/base");

}  // namespace
