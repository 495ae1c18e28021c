#include "look/process.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <sstream>

#include "devhost/system_call.h"
#include "show/output.h"

namespace {

// In a process's "stat" between its state and its number of threads; its start is the second
// behind.
constexpr int kFieldsBeforeThreads = 16;

// The semaphore set's time has whole seconds, and the two clocks are read one after the other.
constexpr double kClockMargin = 2;

struct Stat {
  char state;
  long threads;
  double started;  // seconds of the system's clock
};

// Empty when it cannot be read, as when the process ends meanwhile.
std::string ReadProc(pid_t id, const char* name) {
  constexpr std::size_t kLongest = 1024;  // a command may be as long as a message
  std::string text;
  if (HasOwnProc()) devhost::ReadFile("/proc/" + std::to_string(id) + "/" + name, &text, kLongest);
  return text;
}

double Now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

std::optional<Stat> ReadStat(pid_t id) {
  const std::string text = ReadProc(id, "stat");
  const std::size_t command_end = text.rfind(')');  // the command itself may hold one
  if (command_end == std::string::npos) return std::nullopt;
  std::istringstream fields(text.substr(command_end));
  Stat stat{};
  std::string skipped;
  fields >> skipped >> stat.state;
  for (int i = 0; i < kFieldsBeforeThreads; ++i) fields >> skipped;
  double start_ticks = 0;
  fields >> stat.threads >> skipped >> start_ticks;
  if (!fields) return std::nullopt;
  stat.started = Now(CLOCK_REALTIME) - Now(CLOCK_BOOTTIME) +
                 start_ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
  return stat;
}

ProcessState StateOf(pid_t id, std::time_t last_change) {
  if (id <= 0) return ProcessState::kUnknown;
  if (!devhost::ProcessExists(id)) return ProcessState::kDead;
  const std::optional<Stat> stat = ReadStat(id);
  if (!stat.has_value()) return ProcessState::kAlive;
  if (stat->started > static_cast<double>(last_change) + kClockMargin) {
    return ProcessState::kReused;
  }
  // Other threads outlive a first one that has ended.
  const bool ended = (stat->state == 'Z' || stat->state == 'X') && stat->threads <= 1;
  if (ended) return ProcessState::kDead;
  return stat->state == 'T' ? ProcessState::kStopped : ProcessState::kAlive;
}

// The words of a text in one line.
std::string Plain(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return !IsPlain(c); }, ' ');
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string CommandOf(pid_t id) {
  const std::string command = Plain(ReadProc(id, "cmdline"));
  return command.empty() ? Plain(ReadProc(id, "comm")) : command;
}

}  // namespace

bool HasOwnProc() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self", error) == std::to_string(getpid());
}

Process LookAt(pid_t id, std::time_t last_change) {
  const ProcessState state = StateOf(id, last_change);
  const bool is_there = state != ProcessState::kUnknown && state != ProcessState::kDead;
  return {id, state, is_there ? CommandOf(id) : ""};
}

const char* NameOf(ProcessState state) {
  constexpr const char* kNames[] = {"unknown", "alive", "stopped", "stranger", "dead", "reused"};
  return kNames[static_cast<int>(state)];
}

std::string DescribeProcess(const Process& process) {
  const std::string text = "process " + std::to_string(process.id);
  const bool is_named = !IsGone(process.state) && !process.command.empty();
  return is_named ? text + " (" + process.command + ")" : text;
}

bool IsGone(ProcessState state) {
  return state == ProcessState::kDead || state == ProcessState::kReused;
}
