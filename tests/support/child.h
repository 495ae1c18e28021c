// A second process of a test, and waiting for what it or a thread does.
#ifndef TESTS_SUPPORT_CHILD_H
#define TESTS_SUPPORT_CHILD_H

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

// Starts a process that runs a function and ends with it, or by this signal with its parent. The
// signals of a terminal do not reach it. Throws std::runtime_error.
inline pid_t StartProcess(int end_signal, const std::function<int()>& run) {
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("cannot start a process");
  if (process > 0) return process;
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, end_signal);
  if (getppid() != parent) _exit(1);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  int result = 1;
  try {
    result = run();
  } catch (const std::exception& error) {
    fprintf(stderr, "process %d: %s\n", getpid(), error.what());
  }
  _exit(result);
}

// Runs a function in a process of its own, which ends with the object at the latest.
class Child {
 public:
  explicit Child(const std::function<int()>& run) : pid_(StartProcess(SIGKILL, run)) {}
  ~Child() { Kill(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Kill() {
    if (pid_ > 0) kill(pid_, SIGKILL);
    Wait();
  }

  pid_t id() const { return pid_; }

  // Returns what the function returned, or 0 when it was killed.
  int Wait() {
    int status = 0;
    if (pid_ > 0) waitpid(pid_, &status, 0);
    pid_ = 0;
    return WEXITSTATUS(status);
  }

 private:
  pid_t pid_;
};

// Waits until something holds; gives up after ten seconds.
inline bool Eventually(const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!holds() && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  return holds();
}

// Whether this process's main thread is blocked in a system call.
inline bool MainThreadSleeps() {
  std::string skipped, state;
  std::ifstream stat("/proc/self/task/" + std::to_string(getpid()) + "/stat");
  stat >> skipped >> skipped >> state;
  return state == "S";
}

#endif  // TESTS_SUPPORT_CHILD_H
