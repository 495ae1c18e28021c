// The FIT table: selections and the indirect state of a card beside loading eight bytes of each
// row.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench/support.h"

namespace {

constexpr int kRows = 10000;
constexpr char kInst[] = "HARBOUR";
constexpr char kGroup[] = "BRANCHES_0001";
constexpr char kAtm[] = "BRANCHATM0000001";

using Table = PrivateTable<AtmFit>;

// The driver of a table of card ranges, all for one ATM.
class FitDriver : public QuietDriver {
 public:
  FitDriver() : table(kRows) {
    for (int slot = 0; slot < kRows; ++slot) {
      AtmFit& fit = table[slot];
      fit = {};
      SetId(fit.FitId, slot);
      strcpy(fit.MatchKey1, kInst);
      strcpy(fit.MatchKey2, kGroup);
      strcpy(fit.MatchKey3, kAtm);
      snprintf(fit.CardPrefix, sizeof fit.CardPrefix, "4%05uFFFF", static_cast<unsigned>(slot));
      fit.IndirectNextState = '5';
    }
    util.AtmFitPtr = table.records();
    util.MaxFit = kRows;
  }

  AtmFit& last() { return table[kRows - 1]; }
  int Count() { return util.getFitCount(kInst, kGroup, kAtm); }

  Table table;
};

// Times call(driver) on a table that prepare(driver) changed; each call has to answer as expected.
template <typename Prepare, typename Call>
void Time(benchmark::State& state, int expected, Prepare prepare, Call call) {
  FitDriver driver;
  prepare(driver);
  for (auto _ : state) {
    if (call(driver) != expected) {
      state.SkipWithError("another answer was expected");
      return;
    }
  }
}

void LoadRows(benchmark::State& state) {
  const FitDriver driver;
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (int slot = 0; slot < kRows; ++slot) {
      std::uint64_t bytes;
      memcpy(&bytes, driver.table[slot].CardPrefix, sizeof bytes);
      sum += bytes;
    }
    benchmark::DoNotOptimize(sum);
  }
}

void Verify(benchmark::State& state) {
  const auto verify = [](FitDriver& driver) {
    return driver.util.verifyAtmFit(driver.last().FitId);
  };
  Time(
      state, -1, [](FitDriver&) {}, verify);
}

// Gives a key of all rows but the last another value of equal length.
template <std::size_t N>
void Differ(FitDriver& driver, char (AtmFit::*key)[N]) {
  for (int slot = 0; slot < kRows - 1; ++slot) {
    char* const field = driver.table[slot].*key;
    char digits[8];
    snprintf(digits, sizeof digits, "%04u", static_cast<unsigned>(slot) + 2);
    memcpy(field + strlen(field) - 4, digits, 4);
  }
}

template <std::size_t N>
void CountLast(benchmark::State& state, char (AtmFit::*key)[N]) {
  Time(
      state, 1, [&](FitDriver& driver) { Differ(driver, key); },
      [](FitDriver& driver) { return driver.Count(); });
}

void Count1(benchmark::State& state) { CountLast(state, &AtmFit::MatchKey1); }
void Count2(benchmark::State& state) { CountLast(state, &AtmFit::MatchKey2); }
void Count3(benchmark::State& state) { CountLast(state, &AtmFit::MatchKey3); }

void ReadLast(benchmark::State& state) {
  AtmFit record;
  Time(
      state, 1, [&](FitDriver& driver) { Differ(driver, &AtmFit::MatchKey1); },
      [&](FitDriver& driver) {
        return driver.util.readFitMemory(kInst, kGroup, kAtm, &record, 1);
      });
}

// All rows are selected, by their first key alone.
void CountOpen(benchmark::State& state, const char* key1) {
  const auto open_keys = [key1](FitDriver& driver) {
    for (int slot = 0; slot < kRows; ++slot) {
      strcpy(driver.table[slot].MatchKey1, key1);
      strcpy(driver.table[slot].MatchKey2, "*");
      strcpy(driver.table[slot].MatchKey3, "*");
    }
  };
  Time(state, kRows, open_keys,
       [key1](FitDriver& driver) { return driver.util.getFitCount(key1, kGroup, kAtm); });
}

void CountAll(benchmark::State& state) { CountOpen(state, kInst); }
void CountAllLong(benchmark::State& state) { CountOpen(state, "HARBOUR_EAST"); }

int StateOf(FitDriver& driver, const char* card) {
  char indirect_state[8];
  return driver.util.readIndirectState(kInst, "*", card, indirect_state);
}

void PrefixInLast(benchmark::State& state) {
  Time(
      state, 1, [](FitDriver&) {},
      [](FitDriver& driver) { return StateOf(driver, "4099991234567890"); });
}

void CatchAllInLast(benchmark::State& state) {
  Time(
      state, 1, [](FitDriver& driver) { strcpy(driver.last().CardPrefix, "FFFFFFFFFF"); },
      [](FitDriver& driver) { return StateOf(driver, "4999991234567890"); });
}

// Two institutions in turn, each of whose prefixes stands in the table several times.
void Mixed(benchmark::State& state) {
  const auto share = [](FitDriver& driver) {
    for (int slot = 0; slot < kRows; ++slot) {
      AtmFit& fit = driver.table[slot];
      if (slot % 2 == 0) strcpy(fit.MatchKey1, "ISLAND");
      snprintf(fit.CardPrefix, sizeof fit.CardPrefix, "456%03uFFFF",
               static_cast<unsigned>(slot) % 1000);
    }
  };
  unsigned next = 0;
  Time(state, 1, share, [&](FitDriver& driver) {
    char card[17];
    snprintf(card, sizeof card, "456%03u9912345678", next++ % 16 * 62 + 1);
    return StateOf(driver, card);
  });
}

BENCHMARK(Verify)->Name("fit_verify/op");
BENCHMARK(LoadRows)->Name("fit_verify/base");
BENCHMARK(ReadLast)->Name("fit_read/op");
BENCHMARK(LoadRows)->Name("fit_read/base");
BENCHMARK(Count1)->Name("fit_count_key1/op");
BENCHMARK(LoadRows)->Name("fit_count_key1/base");
BENCHMARK(Count2)->Name("fit_count_key2/op");
BENCHMARK(LoadRows)->Name("fit_count_key2/base");
BENCHMARK(Count3)->Name("fit_count_key3/op");
BENCHMARK(LoadRows)->Name("fit_count_key3/base");
BENCHMARK(CountAll)->Name("fit_count_all/op");
BENCHMARK(LoadRows)->Name("fit_count_all/base");
BENCHMARK(CountAllLong)->Name("fit_count_long/op");
BENCHMARK(LoadRows)->Name("fit_count_long/base");
BENCHMARK(PrefixInLast)->Name("card_prefix/op");
BENCHMARK(LoadRows)->Name("card_prefix/base");
BENCHMARK(CatchAllInLast)->Name("card_catch_all/op");
BENCHMARK(LoadRows)->Name("card_catch_all/base");
BENCHMARK(Mixed)->Name("card_mixed/op");
BENCHMARK(LoadRows)->Name("card_mixed/base");

}  // namespace
