#include "bench/processes.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <vector>

#include "bench/measure.h"

namespace bench {

namespace {

constexpr int kMostTimes = 200000;

// What a process leaves behind: the seconds of its operations.
struct Report {
  int count;
  float seconds[kMostTimes];
};

struct Signals {
  std::atomic<int> ready;
  std::atomic<bool> start;
  std::atomic<bool> stop;
};

// Memory, all zero, that child processes share.
template <typename T>
class Shared {
 public:
  explicit Shared(int count) : size_(static_cast<std::size_t>(count) * sizeof(T)) {
    void* const memory = mmap(nullptr, size_, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("cannot share memory");
    first_ = static_cast<T*>(memory);
  }
  ~Shared() { munmap(first_, size_); }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;

  T& operator[](int i) { return first_[i]; }

 private:
  std::size_t size_;
  T* first_;
};

void Work(Signals& signals, Report& report, const std::function<void()>& operation) {
  ++signals.ready;
  while (!signals.start) usleep(100);
  while (!signals.stop && report.count < kMostTimes) {
    report.seconds[report.count] = static_cast<float>(SecondsOf(1, operation, CLOCK_MONOTONIC));
    ++report.count;
  }
}

// Starts a process that ends with its parent.
pid_t Start(const std::function<void()>& run) {
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("cannot start a process");
  if (process > 0) return process;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  try {
    run();
  } catch (const std::exception& error) {
    fprintf(stderr, "%s\n", error.what());
    _exit(1);
  }
  _exit(0);
}

bool AllSucceed(const std::vector<pid_t>& processes) {
  bool all = true;
  for (const pid_t process : processes) {
    int status = 0;
    waitpid(process, &status, 0);
    all = all && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  return all;
}

}  // namespace

Throughput RunProcesses(int processes, double seconds,
                        const std::function<std::function<void()>(int)>& prepare) {
  Shared<Signals> signals(1);
  Shared<Report> reports(processes);
  std::vector<pid_t> started;
  for (int i = 0; i < processes; ++i) {
    started.push_back(Start([&, i] {
      try {
        Work(signals[0], reports[i], prepare(i));
      } catch (...) {
        ++signals[0].ready;
        throw;
      }
    }));
  }
  while (signals[0].ready < processes) usleep(100);
  signals[0].start = true;
  const double passed = SecondsOf(
      1, [=] { usleep(static_cast<useconds_t>(seconds * 1e6)); }, CLOCK_MONOTONIC);
  signals[0].stop = true;
  if (!AllSucceed(started)) throw std::runtime_error("a process failed");
  std::vector<float> all;
  for (int i = 0; i < processes; ++i) {
    all.insert(all.end(), reports[i].seconds, reports[i].seconds + reports[i].count);
  }
  if (all.empty()) throw std::runtime_error("no operation was done in time");
  return {static_cast<double>(all.size()) / passed, Rank(all, 0.5), Rank(all, 0.99)};
}

}  // namespace bench
