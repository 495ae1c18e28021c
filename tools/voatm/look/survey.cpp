#include "look/survey.h"

#include <pwd.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <stdexcept>

#include "devhost/ipc_object.h"
#include "devhost/settings.h"
#include "devhost/system_call.h"
#include "look/locate.h"
#include "look/table_keys.h"
#include "show/finding.h"
#include "show/record_view.h"
#include "verb.h"

namespace {

using devhost::IpcKind;
using devhost::SemaphoreArgument;
using devhost::SystemError;

constexpr int kAsDrivers = 0666;  // they read and write

SegmentState LookAtSegment(int key) {
  SegmentState segment;
  segment.id = shmget(key, 0, 0);
  shmid_ds state{};
  if (segment.id < 0 || shmctl(segment.id, IPC_STAT, &state) < 0) {
    segment.error = errno;
    return segment;
  }
  segment.for_us = shmget(key, 0, kAsDrivers) >= 0;
  segment.bytes = state.shm_segsz;
  segment.attached = state.shm_nattch;
  segment.creator = state.shm_cpid;
  segment.owner = state.shm_perm.uid;
  segment.last = state.shm_ctime;
  return segment;
}

bool AreAllZero(int set, int semaphores) {
  std::vector<unsigned short> values(static_cast<std::size_t>(semaphores));
  SemaphoreArgument argument{};
  argument.values = values.data();
  return semctl(set, 0, GETALL, argument) == 0 &&
         std::all_of(values.begin(), values.end(), [](unsigned short value) { return value == 0; });
}

std::string Describe(const TableState& table, IpcKind kind) {
  return devhost::DescribeIpc(kind, table.record->name, table.key.value_or(0));
}

std::string UserName(uid_t user) {
  const passwd* entry = getpwuid(user);
  return entry == nullptr ? std::to_string(user) : entry->pw_name;
}

// How many slots hold a record; null when the segment went since it was looked at.
Json CountDefined(const TableState& table) try {
  int defined = 0;
  Records(table).ForEach(false, [&](int, const char*) { ++defined; });
  return defined;
} catch (const std::runtime_error&) {
  return nullptr;
}

}  // namespace

SetState LookAtSet(int key) {
  SetState set;
  set.id = semget(key, 0, 0);
  semid_ds state{};
  SemaphoreArgument argument{};
  argument.state = &state;
  if (set.id < 0 || semctl(set.id, 0, IPC_STAT, argument) < 0) {
    set.error = errno;
    return set;
  }
  set.for_us = semget(key, 0, kAsDrivers) >= 0;
  set.semaphores = static_cast<int>(state.sem_nsems);
  set.last = std::max(state.sem_otime, state.sem_ctime);
  // Setting a value leaves the setter's number.
  set.never_initialised =
      state.sem_otime == 0 && semctl(set.id, 0, GETPID) == 0 && AreAllZero(set.id, set.semaphores);
  return set;
}

TableState LookAtTable(const records::RecordTable& record, int slots, std::optional<int> key) {
  TableState table{&record, slots, key, {}, {}};
  if (key.has_value() && *key != IPC_PRIVATE) {
    table.segment = LookAtSegment(*key);
    table.set = LookAtSet(*key);
  } else {
    table.segment.error = table.set.error = ENOENT;
  }
  return table;
}

void TableState::RequireKey() const {
  if (key.has_value()) return;
  throw std::runtime_error(std::string("VoChannelMgr does not know the table ") + record->name);
}

int TableState::ReadableSlots() const {
  return static_cast<int>(std::min(HeldSlots(), static_cast<std::size_t>(slots)));
}

std::string TableState::Shortage() const {
  if (ReadableSlots() == slots) return "";
  return "only " + std::to_string(ReadableSlots()) + " of " + std::to_string(slots) +
         " slots lie in the " + DescribeSegment() + "; see voatm tables";
}

std::string TableState::DescribeSegment() const { return Describe(*this, IpcKind::kSegment); }

std::string TableState::DescribeSet() const { return Describe(*this, IpcKind::kSemaphoreSet); }

Survey SurveyTables(const std::string& home) {
  RequireHome(home);
  Survey survey{devhost::ReadQueueKey(home), {}};
  const Locator locator(survey.queue_key);
  for (const records::RecordTable& record : records::kRecordTables) {
    const int slots = devhost::ReadSlotCount(home, record);
    survey.tables.push_back(LookAtTable(record, slots, locator.Ask(record.name)));
  }
  return survey;
}

TableState SurveyTable(const std::string& home, const records::RecordTable& record) {
  RequireHome(home);
  const int slots = devhost::ReadSlotCount(home, record);
  const int queue_key = devhost::ReadQueueKey(home);
  try {
    return LookAtTable(record, slots, Locator(queue_key).Ask(record.name));
  } catch (const std::runtime_error& error) {
    const RememberedKeys remembered = RecallKeys(home);
    const auto key = remembered.keys.find(&record);
    if (key == remembered.keys.end()) throw;
    Say(error.what() + ("; taking the key of its answer of " + TimeText(remembered.since)));
    return LookAtTable(record, slots, key->second);
  }
}

Json TableJson(const TableState& table) {
  Json json = {{"table", table.record->name},
               {"name", table.record->short_name},
               {"key", nullptr},
               {"slots", table.slots},
               {"segment", nullptr},
               {"set", nullptr}};
  if (table.key.has_value()) json["key"] = *table.key;
  if (table.segment.there()) {
    json["segment"] = {{"id", table.segment.id},
                       {"bytes", table.segment.bytes},
                       {"slots", table.HeldSlots()},
                       {"defined", CountDefined(table)},
                       {"attached", table.segment.attached},
                       {"owner", UserName(table.segment.owner)},
                       {"creator", table.segment.creator}};
  }
  if (table.set.there()) {
    json["set"] = {{"id", table.set.id}, {"semaphores", table.set.semaphores}};
  }
  return json;
}

Records::Records(const TableState& table) : state_(table) {
  state_.RequireKey();
  if (!state_.segment.there()) {
    throw SystemError(state_.segment.error, state_.DescribeSegment());
  }
  const void* address = shmat(state_.segment.id, nullptr, SHM_RDONLY);
  if (reinterpret_cast<std::intptr_t>(address) == -1) {
    const int error = errno;
    throw SystemError(error, "cannot attach the " + state_.DescribeSegment());
  }
  records_ = static_cast<const char*>(address);
}

Records::~Records() { shmdt(records_); }

void Records::ForEach(bool all,
                      const std::function<void(int slot, const char* record)>& take) const {
  std::vector<char> copy;
  for (int slot = 0; slot < slots(); ++slot) {
    copy.assign((*this)[slot], (*this)[slot + 1]);
    if (all || !IsFree(*state_.record, copy.data())) take(slot, copy.data());
  }
}

std::vector<char> CopyRecords(const TableState& table) {
  const Records records(table);
  return {records[0], records[records.slots()]};
}
