// How long calls take, for tables of figures.
#ifndef BENCH_MEASURE_H
#define BENCH_MEASURE_H

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <functional>
#include <vector>

namespace bench {

using Call = std::function<void()>;

// A value by rank: 0 the smallest, 0.5 the median, 1 the largest.
template <typename Value>
Value Rank(std::vector<Value>& values, double rank) {
  const auto at =
      values.begin() + static_cast<std::ptrdiff_t>(rank * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

// The seconds that a number of calls take by this clock.
inline double SecondsOf(int times, const Call& call, clockid_t clock) {
  timespec start, end;
  clock_gettime(clock, &start);
  for (int i = 0; i < times; ++i) call();
  clock_gettime(clock, &end);
  return static_cast<double>(end.tv_sec - start.tv_sec) +
         static_cast<double>(end.tv_nsec - start.tv_nsec) * 1e-9;
}

// The processor's seconds of one of each of these calls: medians of repetitions in which all take
// their turn, so that a busy machine slows all alike.
inline std::vector<double> SecondsOfEach(const std::vector<Call>& calls) {
  constexpr int kRepetitions = 15;
  constexpr double kSlice = 0.002;
  std::vector<int> times;
  for (const Call& call : calls) {
    const double once = SecondsOf(1, call, CLOCK_THREAD_CPUTIME_ID);
    times.push_back(std::max(1, static_cast<int>(kSlice / std::max(once, 1e-9))));
  }
  std::vector<std::vector<double>> taken(calls.size());
  for (int repetition = 0; repetition < kRepetitions; ++repetition) {
    for (std::size_t i = 0; i < calls.size(); ++i) {
      taken[i].push_back(SecondsOf(times[i], calls[i], CLOCK_THREAD_CPUTIME_ID) / times[i]);
    }
  }
  std::vector<double> seconds;
  for (std::vector<double>& of_call : taken) seconds.push_back(Rank(of_call, 0.5));
  return seconds;
}

}  // namespace bench

#endif  // BENCH_MEASURE_H
