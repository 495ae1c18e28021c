// The ATM memory table: what a lookup costs beside touching every slot once, and under locks.
#include <benchmark/benchmark.h>
#include <emmintrin.h>
#include <sys/sem.h>

#include <cstdint>
#include <ctime>

#include "bench/support.h"

namespace {

using Table = PrivateTable<AtmMemoryTable>;

constexpr int kSlots = 32000;

// One table for all, of which a benchmark uses the first slots: to fill it takes long.
const Table& Atms() {
  static const Table table(kSlots);
  static const bool filled = [] {
    for (int slot = 0; slot < kSlots; ++slot) SetId(table[slot].AtmId, slot);
    return true;
  }();
  static_cast<void>(filled);
  return table;
}

// Puts every slot's first bytes out of all caches.
void Cool(const Table& table, int slots) {
  for (int slot = 0; slot < slots; ++slot) {
    _mm_clflush(&table[slot]);
    _mm_clflush(table[slot].AtmId + sizeof table[slot].AtmId - 1);
  }
  _mm_mfence();
}

double CpuSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Times one call a pass, after `prepare`, which is not timed.
template <typename Prepare, typename Call>
void TimeCalls(benchmark::State& state, Prepare prepare, Call call) {
  for (auto _ : state) {
    prepare();
    const double start = CpuSeconds();
    call();
    state.SetIterationTime(CpuSeconds() - start);
  }
}

void Lookup(benchmark::State& state, int slots, bool cold) {
  const Table& table = Atms();
  QuietDriver driver;
  driver.util.AtmMemoryPtr = table.records();
  driver.util.MaxAtm = slots;
  char last[20];
  SetId(last, slots - 1);
  TimeCalls(
      state,
      [&] {
        if (cold) Cool(table, slots);
      },
      [&] { benchmark::DoNotOptimize(driver.util.verifyAtmMemory(last)); });
  if (driver.util.verifyAtmMemory(last) != 1) state.SkipWithError("the ATM was not found");
}

void TouchSlots(benchmark::State& state, int slots, bool cold) {
  const Table& table = Atms();
  TimeCalls(
      state,
      [&] {
        if (cold) Cool(table, slots);
      },
      [&] {
        std::uint64_t sum = 0;
        for (int slot = 0; slot < slots; ++slot) {
          std::uint64_t bytes;
          memcpy(&bytes, table[slot].AtmId, sizeof bytes);
          sum += bytes;
        }
        benchmark::DoNotOptimize(sum);
      });
}

BENCHMARK_CAPTURE(Lookup, w10, 10000, false)->Name("atm_warm_10k/op")->UseManualTime();
BENCHMARK_CAPTURE(TouchSlots, w10, 10000, false)->Name("atm_warm_10k/base")->UseManualTime();
BENCHMARK_CAPTURE(Lookup, w32, 32000, false)->Name("atm_warm_32k/op")->UseManualTime();
BENCHMARK_CAPTURE(TouchSlots, w32, 32000, false)->Name("atm_warm_32k/base")->UseManualTime();
BENCHMARK_CAPTURE(Lookup, c10, 10000, true)->Name("atm_cold_10k/op")->UseManualTime();
BENCHMARK_CAPTURE(TouchSlots, c10, 10000, true)->Name("atm_cold_10k/base")->UseManualTime();
BENCHMARK_CAPTURE(Lookup, c32, 32000, true)->Name("atm_cold_32k/op")->UseManualTime();
BENCHMARK_CAPTURE(TouchSlots, c32, 32000, true)->Name("atm_cold_32k/base")->UseManualTime();

constexpr int kLockedSlots = 64;

void LockedLookup(benchmark::State& state) {
  const Table& table = Atms();
  const PrivateSet set(kLockedSlots);
  QuietDriver driver;
  driver.util.LockFlag = true;
  driver.util.AtmMemoryPtr = table.records();
  driver.util.AtmMemorySemid = set.id();
  driver.util.MaxAtm = kLockedSlots;
  char last[20];
  SetId(last, kLockedSlots - 1);
  for (auto _ : state) benchmark::DoNotOptimize(driver.util.VerifyAtmMemory(last));
  if (driver.util.VerifyAtmMemory(last) != 1) state.SkipWithError("the ATM was not found");
}

void BarePairs(benchmark::State& state) {
  const PrivateSet set(kLockedSlots);
  for (auto _ : state) {
    for (int slot = 0; slot < kLockedSlots; ++slot) {
      for (const short units : {short{-2}, short{2}}) {
        sembuf move = {static_cast<unsigned short>(slot), units, 0};
        if (semop(set.id(), &move, 1) != 0) state.SkipWithError("semop failed");
      }
    }
  }
}

BENCHMARK(LockedLookup)->Name("locked_atm/op");
BENCHMARK(BarePairs)->Name("locked_atm/base");

}  // namespace
