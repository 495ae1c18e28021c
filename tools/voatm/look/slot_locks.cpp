#include "look/slot_locks.h"

#include <sys/sem.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "devhost/system_call.h"
#include "look/users.h"
#include "show/record_view.h"

namespace {

using devhost::kAtRest;
using devhost::SemaphoreArgument;
using devhost::SystemError;

int Ask(const TableState& table, int slot, int command, SemaphoreArgument argument = {}) {
  const int answer = semctl(table.set.id, slot, command, argument);
  if (answer < 0) throw SystemError(errno, table.DescribeSet());
  return answer;
}

// When a semaphore of the set was changed last, by an operation or by setting it.
std::time_t LastChange(const TableState& table) {
  semid_ds state{};
  SemaphoreArgument argument{};
  argument.state = &state;
  Ask(table, 0, IPC_STAT, argument);
  return std::max(state.sem_otime, state.sem_ctime);
}

// As it was told by its number and the time. Who holds a slot has the table attached.
ProcessState StateIn(const TableState& table, const SlotLock& lock) {
  const ProcessState told = lock.last.state;
  const bool holds = lock.value == kHeld && told != ProcessState::kUnknown && !IsGone(told);
  return holds && !MayUse(table, lock.last.id) ? ProcessState::kStranger : told;
}

}  // namespace

void RequireSet(const TableState& table) {
  table.RequireKey();
  if (!table.set.there()) throw SystemError(table.set.error, table.DescribeSet());
}

bool SlotLock::IsStuck() const { return value != kHeld || last.state != ProcessState::kAlive; }

// Number and value are read before and behind the process's state: a dead one is the holder only if
// the slot stayed as that process left it. The time comes behind both, or a process that started
// after it could have taken the slot since. One that is handed on all the while is used by the
// living. verify/release.pml shows that this is enough, and that each of these reads is needed.
SlotLock LookAtSlot(const TableState& table, int slot) {
  constexpr int kLooks = 8;
  RequireSet(table);
  SlotLock lock{table.record, slot, "", kAtRest, {}, Ask(table, slot, GETNCNT), 0};
  for (int look = 0; look < kLooks; ++look) {
    const pid_t number = Ask(table, slot, GETPID);
    lock.value = Ask(table, slot, GETVAL);
    lock.last_change = LastChange(table);
    lock.last = LookAt(number, lock.last_change);
    const bool stayed = Ask(table, slot, GETVAL) == lock.value;
    if (!stayed || Ask(table, slot, GETPID) != number) continue;
    lock.last.state = StateIn(table, lock);
    return lock;
  }
  lock.last.state = ProcessState::kAlive;
  return lock;
}

std::vector<SlotLock> FindLocks(const TableState& table) {
  RequireSet(table);
  if (table.set.never_initialised) return {};
  std::vector<unsigned short> values(static_cast<std::size_t>(table.set.semaphores));
  SemaphoreArgument argument{};
  argument.values = values.data();
  Ask(table, 0, GETALL, argument);
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

Json LockJson(const SlotLock& lock) {
  return {{"table", lock.table->name},
          {"name", lock.table->short_name},
          {"slot", lock.slot},
          {"id", lock.id},
          {"value", lock.value},
          {"process", lock.last.id},
          {"state", NameOf(lock.last.state)},
          {"command", lock.last.command},
          {"waiting", lock.waiting},
          {"last_change", lock.last_change},
          {"stuck", lock.IsStuck()}};
}

void PrintLocks(const Json& locks) {
  PrintTable(locks,
             {{"TABLE", "/name"},
              {"SLOT", "/slot"},
              {"ID", "/id"},
              {"VALUE", "/value"},
              {"PROCESS", "/process"},
              {"STATE", "/state"},
              {"WAITING", "/waiting"},
              {"COMMAND", "/command"}},
             "/stuck");
}
