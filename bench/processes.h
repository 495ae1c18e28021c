// Processes that do the same work at the same time.
#ifndef BENCH_PROCESSES_H
#define BENCH_PROCESSES_H

#include <functional>

namespace bench {

struct Throughput {
  double operations;  // a second, of all processes
  double median;      // seconds that an operation took
  double p99;
};

// Starts so many processes. Each calls prepare(process) once, and then, for so many seconds, what
// that returned, an operation a call. Throws std::runtime_error when a process failed.
Throughput RunProcesses(int processes, double seconds,
                        const std::function<std::function<void()>(int)>& prepare);

}  // namespace bench

#endif  // BENCH_PROCESSES_H
