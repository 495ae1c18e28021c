// Drivers that do whole withdrawals against `voatm serve`: what one costs in slots visited, and how
// many a host carries. Prints the tables of docs/operating.md.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <random>

#include "bench/measure.h"
#include "bench/processes.h"
#include "bench/withdrawals/driver.h"
#include "bench/withdrawals/home.h"

namespace {

constexpr int kAtms[] = {100, 1000, 10000};
constexpr int kDrivers[] = {1, 2, 8};
constexpr double kSeconds = 3;

struct Order {
  const char* name;
  RowOrder order;
};

constexpr Order kOrders[] = {{"own row first", RowOrder::kOwnFirst},
                             {"by group", RowOrder::kByGroup},
                             {"by transaction", RowOrder::kByTransaction}};

// What a withdrawal costs, means of many ATMs.
struct Cost {
  Visits visits;
  double slots;
  double processor;  // seconds, the system's included
};

Cost CostOf(RowOrder order, int atms) {
  WithdrawalDriver driver;
  // Only the first ATM of a group has a row of its own.
  const int step = order == RowOrder::kOwnFirst ? kAtmsOfGroup : std::max(1, atms / 100 - 1);
  Visits sum = {};
  int count = 0;
  const auto withdraw_everywhere = [&] {
    for (int atm = 0; atm < atms; atm += step, ++count) {
      driver.Withdraw(atm);
      const Visits& visits = driver.visits();
      sum.atm_read += visits.atm_read;
      sum.property += visits.property;
      sum.status += visits.status;
      sum.atm_write += visits.atm_write;
    }
  };
  const double seconds = bench::SecondsOf(1, withdraw_everywhere, CLOCK_PROCESS_CPUTIME_ID);
  const Visits mean = {sum.atm_read / count, sum.property / count, sum.status / count,
                       sum.atm_write / count};
  return {mean, mean.atm_read + mean.property + mean.status + mean.atm_write, seconds / count};
}

bench::Throughput Load(RowOrder order, int atms, int drivers) {
  return bench::RunProcesses(drivers, kSeconds, [=](int place) -> std::function<void()> {
    const auto driver = std::make_shared<WithdrawalDriver>();
    const auto random = std::make_shared<std::minstd_rand>(static_cast<unsigned>(place) + 1);
    const int step = order == RowOrder::kOwnFirst ? kAtmsOfGroup : 1;
    return [=] {
      const auto atm = (*random)() % static_cast<unsigned>(atms / step);
      driver->Withdraw(static_cast<int>(atm) * step);
    };
  });
}

void Measure(int atms, const Order& order) {
  const ManyAtms home(atms, order.order);
  const Cost cost = CostOf(order.order, atms);
  printf("| %d | %d | %s | %.0f | %.0f | %.0f | %.0f | %.0f | %.0f | %.2f ms |", atms,
         home.property_rows(), order.name, cost.visits.atm_read, cost.visits.property,
         cost.visits.status, cost.visits.atm_write, cost.slots, 2 * cost.slots,
         cost.processor * 1e3);
  for (const int drivers : kDrivers) {
    const bench::Throughput load = Load(order.order, atms, drivers);
    printf(" %.0f, %.1f ms |", load.operations, load.p99 * 1e3);
    fflush(stdout);
  }
  printf("\n");
}

}  // namespace

int main() {
  printf(
      "Means of a withdrawal: slots visited by table and in all, semaphore calls, processor time.\n"
      "Then withdrawals a second and the 99th percentile of one, by number of drivers.\n\n"
      "| ATMs | Property rows | Order | Read | Property | Status | Write | Slots | Calls | "
      "Processor |");
  for (const int drivers : kDrivers) printf(" %d |", drivers);
  printf("\n|---|---|---|---|---|---|---|---|---|---|---|---|---|\n");
  try {
    for (const int atms : kAtms) {
      for (const Order& order : kOrders) Measure(atms, order);
    }
  } catch (const std::exception& error) {
    fprintf(stderr, "voatm_withdrawals: %s\n", error.what());
    return 1;
  }
  return 0;
}
