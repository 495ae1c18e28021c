// The indirect state of a card: a lookup beside loading each row's key once.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench/support.h"

namespace {

constexpr int kRows = 10000;
constexpr int kCards = 16;

using Table = PrivateTable<AtmFit>;

// Card ranges of two groups; prefixes of six digits that share their first three.
void Fill(const Table& table) {
  for (int slot = 0; slot < kRows; ++slot) {
    AtmFit& fit = table[slot];
    fit = {};
    SetId(fit.FitId, slot);
    snprintf(fit.MatchKey1, sizeof fit.MatchKey1, "HARBOUR%04u", static_cast<unsigned>(slot) % 2);
    strcpy(fit.MatchKey2, "*");
    strcpy(fit.MatchKey3, "*");
    snprintf(fit.CardPrefix, sizeof fit.CardPrefix, "456%03uFFFF",
             static_cast<unsigned>(slot) % 1000);
    fit.IndirectNextState = '5';
  }
}

void Lookup(benchmark::State& state) {
  const Table table(kRows);
  Fill(table);
  QuietDriver driver;
  driver.util.AtmFitPtr = table.records();
  driver.util.MaxFit = kRows;
  char cards[kCards][17];
  for (unsigned i = 0; i < kCards; ++i) {
    snprintf(cards[i], sizeof cards[i], "456%03u9912345678", i * 62 % 1000 + 1);
  }
  char indirect_state[8];
  unsigned next = 0;
  for (auto _ : state) {
    const char* card = cards[next++ % kCards];
    if (driver.util.readIndirectState("HARBOUR0001", "*", card, indirect_state) != 1) {
      state.SkipWithError("no state was found");
      return;
    }
    benchmark::DoNotOptimize(indirect_state);
  }
}

void LoadKeys(benchmark::State& state) {
  const Table table(kRows);
  Fill(table);
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (int slot = 0; slot < kRows; ++slot) {
      std::uint64_t bytes;
      memcpy(&bytes, table[slot].MatchKey1, sizeof bytes);
      sum += bytes;
    }
    benchmark::DoNotOptimize(sum);
  }
}

BENCHMARK(Lookup)->Name("indirect_10k/op");
BENCHMARK(LoadKeys)->Name("indirect_10k/base");

}  // namespace
