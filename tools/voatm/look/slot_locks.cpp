#include "look/slot_locks.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "devhost/system_call.h"
#include "show/record_view.h"

namespace {

using devhost::kAtRest;
using devhost::SemaphoreArgument;
using devhost::SystemError;

constexpr int kHeld = 0;

void RequireSet(const TableState& table) {
  if (!table.key.has_value()) {
    throw std::runtime_error(std::string("VoChannelMgr does not know the table ") +
                             table.record->name);
  }
  if (!table.set.there()) throw SystemError(table.set.error, table.DescribeSet());
}

int AskSlot(const TableState& table, int slot, int command) {
  const int answer = semctl(table.set.id, slot, command);
  if (answer < 0) throw SystemError(errno, table.DescribeSet());
  return answer;
}

// When a semaphore of the set was changed last, by an operation or by setting it.
std::time_t LastChange(const TableState& table) {
  semid_ds state{};
  SemaphoreArgument argument{};
  argument.state = &state;
  if (semctl(table.set.id, 0, IPC_STAT, argument) < 0) {
    throw SystemError(errno, table.DescribeSet());
  }
  return std::max(state.sem_otime, state.sem_ctime);
}

// The value is read behind the process's state: a dead one is the holder only if the slot is still
// as that process left it. Of a slot that is handed on all the while nobody can be told.
SlotLock LookAtSlot(const TableState& table, int slot) {
  constexpr int kLooks = 8;
  SlotLock lock{table.record, slot, "", kAtRest, {}, AskSlot(table, slot, GETNCNT)};
  for (int look = 0; look < kLooks; ++look) {
    lock.last = LookAt(AskSlot(table, slot, GETPID), LastChange(table));
    lock.value = AskSlot(table, slot, GETVAL);
    if (AskSlot(table, slot, GETPID) == lock.last.id) return lock;
  }
  lock.last.state = ProcessState::kUnknown;
  return lock;
}

// The one releaser of a home while it exists: a lock on the file that the tables' keys come from.
class OnlyReleaser {
 public:
  explicit OnlyReleaser(const std::string& home) {
    const std::string path = home + "/cfg/vokernel.cfg";
    file_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0 || flock(file_, LOCK_EX) < 0) {
      const int error = errno;
      close(file_);
      throw SystemError(error, "cannot lock " + path);
    }
  }
  ~OnlyReleaser() { close(file_); }
  OnlyReleaser(const OnlyReleaser&) = delete;
  OnlyReleaser& operator=(const OnlyReleaser&) = delete;

 private:
  int file_;
};

std::string DescribeProcess(const Process& process) {
  std::string text = "process " + std::to_string(process.id);
  if (process.state == ProcessState::kAlive) text += " (" + process.command + ")";
  return text;
}

// Why a slot must not be given back; nothing when it may.
std::optional<std::string> Refusal(const SlotLock& lock) {
  if (lock.value != kHeld) {
    return "its value is " + std::to_string(lock.value) + ", and only 0 is a held slot";
  }
  if (lock.last.state == ProcessState::kUnknown) return "its holder cannot be told from here";
  if (!IsGone(lock.last.state)) {
    return "it is held by " + DescribeProcess(lock.last) + ", which is alive";
  }
  return std::nullopt;
}

// Adds two units in the same step that finds none. Returns false when there are some.
bool GiveBack(const TableState& table, int slot) {
  const auto number = static_cast<unsigned short>(slot);
  std::array<sembuf, 2> steps = {sembuf{number, kHeld, IPC_NOWAIT},
                                 sembuf{number, kAtRest, IPC_NOWAIT}};
  if (semop(table.set.id, steps.data(), steps.size()) == 0) return true;
  if (errno == EAGAIN) return false;
  throw SystemError(errno, table.DescribeSet());
}

}  // namespace

bool SlotLock::IsStuck() const { return value != kHeld || IsGone(last.state); }

std::vector<SlotLock> FindLocks(const TableState& table) {
  RequireSet(table);
  std::vector<unsigned short> values(static_cast<std::size_t>(table.set.semaphores));
  SemaphoreArgument argument{};
  argument.values = values.data();
  if (semctl(table.set.id, 0, GETALL, argument) < 0) {
    throw SystemError(errno, table.DescribeSet());
  }
  std::vector<SlotLock> locks;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] == kAtRest) continue;
    const SlotLock lock = LookAtSlot(table, static_cast<int>(i));
    if (lock.value != kAtRest) locks.push_back(lock);
  }
  if (locks.empty() || !table.segment.there()) return locks;
  const Records records(table);
  for (SlotLock& lock : locks) {
    if (lock.slot < records.slots()) lock.id = IdText(*table.record, records[lock.slot]);
  }
  return locks;
}

Release ReleaseSlot(const Survey& survey, const records::RecordTable& record, int slot) {
  const TableState& table = survey.Of(record);
  RequireSet(table);
  const std::string name = "slot " + std::to_string(slot) + " of " + record.name;
  if (slot < 0 || slot >= table.set.semaphores) {
    throw std::runtime_error("there is no " + name + ", whose set has " +
                             std::to_string(table.set.semaphores) + " semaphores");
  }
  const OnlyReleaser only_releaser(survey.home);
  const SlotLock lock = LookAtSlot(table, slot);
  if (lock.value == kAtRest) return {false, name + " is at rest: there is nothing to release", {}};
  if (const auto refusal = Refusal(lock)) {
    return {false, "did not release " + name + ": " + *refusal, lock};
  }
  if (!GiveBack(table, slot)) {
    return {false, "did not release " + name + ": somebody else gave it back", lock};
  }
  return {true, "released " + name + ": its holder, " + DescribeProcess(lock.last) + ", is dead",
          lock};
}
