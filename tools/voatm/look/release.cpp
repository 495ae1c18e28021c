#include "look/release.h"

#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "devhost/system_call.h"
#include "look/wait.h"

namespace {

using devhost::kAtRest;
using devhost::SystemError;

// Why a slot must not be brought to rest; nothing when it may. Of a value above rest units are only
// taken away, which harms no holder: nothing is to be proved.
std::optional<std::string> Refusal(const SlotLock& lock, const ReleaseRights& rights) {
  if (lock.value != kHeld && !rights.reset) {
    return "its value is " + std::to_string(lock.value) + ", and only 0 is a held slot; --reset " +
           "brings it to rest";
  }
  if (lock.value > kAtRest || IsGone(lock.last.state)) return std::nullopt;
  const std::string process = DescribeProcess(lock.last);
  const bool stopped = lock.last.state == ProcessState::kStopped;
  if (stopped || lock.last.state == ProcessState::kAlive) {
    return (lock.value == kHeld ? "it is held by " : "it was last changed by ") + process +
           ", which is " + NameOf(lock.last.state);
  }
  if (rights.force) return std::nullopt;
  if (lock.last.state == ProcessState::kStranger) {
    return process +
           " has its holder's number and does not use the table; --force assumes that "
           "it was given the number since";
  }
  return "its holder cannot be told from here: it may live in another PID namespace; --force "
         "assumes that it is dead";
}

std::string WhyReleased(const SlotLock& lock) {
  if (lock.value != kHeld) return "its value was " + std::to_string(lock.value);
  if (IsGone(lock.last.state)) return "its holder, " + DescribeProcess(lock.last) + ", is dead";
  if (lock.last.state == ProcessState::kStranger) {
    return "assuming that " + DescribeProcess(lock.last) + " was given its holder's number since";
  }
  return "assuming that its holder, which cannot be told from here, is dead";
}

// Why the owner may be in the middle of giving the set its values; nothing when it cannot be.
std::optional<std::string> OwnerAtWork(const TableState& table) {
  if (!table.segment.there()) return "who owns it cannot be told";
  const Process owner = LookAt(table.segment.creator, table.segment.last);
  if (IsGone(owner.state)) return std::nullopt;
  return DescribeProcess(owner) + ", which created the segment, may be about to do so";
}

}  // namespace

OnlyReleaser::OnlyReleaser(int set, int seconds)
    : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  if (socket_ < 0) throw SystemError(errno, "cannot make the socket that keeps others out");
  // Sets of other namespaces have the same numbers.
  std::error_code unknown;
  const std::string name = "voatm locks release, set " + std::to_string(set) + " of " +
                           std::filesystem::read_symlink("/proc/self/ns/ipc", unknown).string();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  int error = 0;
  WaitFor("another release of slots of the set " + std::to_string(set), seconds, [&] {
    error = bind(socket_, reinterpret_cast<sockaddr*>(&address), size) == 0 ? 0 : errno;
    return error != EADDRINUSE;
  });
  if (error == 0) return;
  close(socket_);
  throw SystemError(error, "another release is at work in the set " + std::to_string(set));
}

OnlyReleaser::~OnlyReleaser() { close(socket_); }

bool BringToRest(const TableState& table, int slot, int value) {
  const auto number = static_cast<unsigned short>(slot);
  std::array<sembuf, 3> steps = {sembuf{number, static_cast<short>(-value), IPC_NOWAIT},
                                 sembuf{number, 0, IPC_NOWAIT},
                                 sembuf{number, kAtRest, IPC_NOWAIT}};
  if (semop(table.set.id, steps.data(), steps.size()) == 0) return true;
  if (errno == EAGAIN) return false;
  throw SystemError(errno, table.DescribeSet());
}

Release ReleaseSlot(const TableState& table, int slot, const ReleaseRights& rights) {
  RequireSet(table);
  const std::string name = "slot " + std::to_string(slot) + " of " + table.record->name;
  if (slot < 0 || slot >= table.set.semaphores) {
    throw std::runtime_error("there is no " + name + ", whose set has " +
                             std::to_string(table.set.semaphores) + " semaphores");
  }
  const OnlyReleaser only_releaser(table.set.id);
  const SlotLock lock = LookAtSlot(table, slot);
  if (lock.value == kAtRest) return {false, name + " is at rest: there is nothing to release", {}};
  if (const auto refusal = Refusal(lock, rights)) {
    return {false, "did not release " + name + ": " + *refusal, lock};
  }
  if (!BringToRest(table, slot, lock.value)) {
    return {false, "did not release " + name + ": somebody else changed it", lock};
  }
  return {true, "released " + name + ": " + WhyReleased(lock), lock};
}

// A slot whose semaphore has neither a value nor a last process was never given any. Such a slot in
// a set that others use was left by a reset that was killed, or is held in another PID namespace.
Release InitialiseSet(const TableState& table, const ReleaseRights& rights) {
  RequireSet(table);
  const std::string name = "the " + table.DescribeSet();
  const OnlyReleaser only_releaser(table.set.id);
  if (!rights.force) {
    if (!LookAtSet(*table.key).never_initialised) {
      return {false, name + " was initialised: name a slot", {}};
    }
    if (const auto at_work = OwnerAtWork(table)) {
      return {false, "did not initialise " + name + ": " + *at_work + "; --force assumes not", {}};
    }
  }
  int given = 0;
  for (int slot = 0; slot < table.set.semaphores; ++slot) {
    const bool never_given =
        semctl(table.set.id, slot, GETVAL) == kHeld && semctl(table.set.id, slot, GETPID) == 0;
    given += never_given && BringToRest(table, slot, kHeld) ? 1 : 0;
  }
  return {given > 0,
          "gave the value of rest to " + std::to_string(given) + " of " +
              std::to_string(table.set.semaphores) + " semaphores of " + name,
          {}};
}
