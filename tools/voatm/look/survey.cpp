#include "look/survey.h"

#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "devhost/ipc_object.h"
#include "devhost/settings.h"
#include "devhost/system_call.h"
#include "look/locate.h"
#include "verb.h"

namespace {

using devhost::IpcKind;

SegmentState LookAtSegment(int key) {
  SegmentState segment;
  segment.id = shmget(key, 0, 0);
  shmid_ds state{};
  if (segment.id < 0 || shmctl(segment.id, IPC_STAT, &state) < 0) {
    segment.error = errno;
    return segment;
  }
  segment.bytes = state.shm_segsz;
  segment.attached = state.shm_nattch;
  segment.creator = state.shm_cpid;
  segment.owner = state.shm_perm.uid;
  return segment;
}

SetState LookAtSet(int key) {
  SetState set;
  set.id = semget(key, 0, 0);
  semid_ds state{};
  devhost::SemaphoreArgument argument{};
  argument.state = &state;
  if (set.id < 0 || semctl(set.id, 0, IPC_STAT, argument) < 0) {
    set.error = errno;
    return set;
  }
  set.semaphores = static_cast<int>(state.sem_nsems);
  return set;
}

std::string Describe(const TableState& table, IpcKind kind) {
  return devhost::DescribeIpc(kind, table.record->name, table.key.value_or(0));
}

std::runtime_error NoSegment(const TableState& table) {
  if (!table.key.has_value()) {
    return std::runtime_error(std::string("VoChannelMgr does not know the table ") +
                              table.record->name);
  }
  return std::runtime_error(std::string(std::strerror(table.segment.error)) + ": " +
                            table.DescribeSegment());
}

}  // namespace

int TableState::ReadableSlots() const {
  const std::size_t whole = segment.bytes / record->record_size;
  return static_cast<int>(std::min(whole, static_cast<std::size_t>(slots)));
}

std::string TableState::DescribeSegment() const { return Describe(*this, IpcKind::kSegment); }

std::string TableState::DescribeSet() const { return Describe(*this, IpcKind::kSemaphoreSet); }

const TableState& Survey::Of(const records::RecordTable& record) const {
  return tables[static_cast<std::size_t>(&record - records::kRecordTables.data())];
}

Survey SurveyTables(const std::string& home) {
  RequireHome(home);
  const devhost::Settings settings = devhost::ReadSettings(home);
  Survey survey{home, settings.queue_key, {}};
  const Locator locator(settings.queue_key);
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    const records::RecordTable& record = records::kRecordTables[i];
    TableState& table = survey.tables[i];
    table = {&record, settings.tables[i].slots, locator.Ask(record.name), {}, {}};
    if (table.key.has_value()) {
      table.segment = LookAtSegment(*table.key);
      table.set = LookAtSet(*table.key);
    } else {
      table.segment.error = table.set.error = ENOENT;
    }
  }
  return survey;
}

Records::Records(const TableState& table)
    : record_size_(table.record->record_size), slots_(table.ReadableSlots()) {
  if (!table.segment.there()) throw NoSegment(table);
  const void* address = shmat(table.segment.id, nullptr, SHM_RDONLY);
  if (reinterpret_cast<std::intptr_t>(address) == -1) {
    const std::string cause = std::strerror(errno);
    throw std::runtime_error(cause + ": cannot attach the " + table.DescribeSegment());
  }
  records_ = static_cast<const char*>(address);
}

Records::~Records() { shmdt(records_); }
