#include "look/findings.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include "devhost/system_call.h"
#include "look/slot_locks.h"

namespace {

constexpr const char* kNoStart = "do not start";
constexpr const char* kStartOwner = "start the process that owns the table, then the drivers";

std::string Configured(const TableState& table) {
  const records::CountSource& count = table.record->count;
  return std::string(count.key) + " in cfg/" + count.file;
}

std::string Count(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Time(std::time_t time) {
  std::tm local{};
  char text[32];
  localtime_r(&time, &local);
  std::strftime(text, sizeof text, "%F %T", &local);
  return text;
}

std::string CreatedBy(const SegmentState& segment) {
  return Time(segment.last) + ", process " + std::to_string(segment.creator);
}

// The findings of one table, as they are found.
class TableCheck {
 public:
  TableCheck(const std::vector<TableState>& all, const TableState& table)
      : all_(all), table_(table) {}

  std::vector<Finding> Run() {
    if (!CheckKey()) return findings_;
    if (table_.segment.error == ENOENT && table_.set.error == ENOENT) {
      findings_.push_back({"it does not exist, nor does its set", table_.DescribeSegment(), "",
                           kNoStart, kStartOwner});
      return findings_;
    }
    if (CheckObject(table_.segment, table_.DescribeSegment())) CheckSegment();
    if (CheckObject(table_.set, table_.DescribeSet())) CheckSet();
    return findings_;
  }

 private:
  // Returns whether there may be anything under the key.
  bool CheckKey() {
    const std::string name = table_.record->name;
    if (!table_.key.has_value()) {
      findings_.push_back({"VoChannelMgr does not know the table", name, "", kNoStart,
                           "define it there, with the key of its segment and set"});
      return false;
    }
    if (*table_.key == IPC_PRIVATE) {
      findings_.push_back({"VoChannelMgr gives the key 0, under which nothing can be shared", name,
                           "", kNoStart, "give the table a key of its own there"});
      return false;
    }
    for (const TableState& other : all_) {
      if (&other == &table_ || other.key != table_.key) continue;
      findings_.push_back(
          {std::string("VoChannelMgr gives ") + other.record->name + " the same key",
           table_.DescribeSegment(), "", "take the records of the one table for those of the other",
           "give each table a key of its own there; restart owner and drivers"});
    }
    return true;
  }

  // Returns whether it is there and may be looked at.
  bool CheckObject(const IpcState& object, const std::string& description) {
    if (object.error == ENOENT) {
      findings_.push_back({"it does not exist", description, "", kNoStart, kStartOwner});
    } else if (!object.there()) {
      findings_.push_back({std::string(std::strerror(object.error)), description, "", "",
                           "look again as the drivers' user"});
    } else if (!object.for_us) {
      findings_.push_back({"this user may not write it", description, "",
                           std::string(kNoStart) + " as this user",
                           "run drivers as its owner; ipcs -m -s shows owner and mode"});
    }
    return object.there();
  }

  void CheckSegment() {
    const auto slots = static_cast<std::size_t>(table_.slots);
    const std::size_t held = table_.HeldSlots();
    const std::string sizes = "it holds " + Count(held, "slot") + " (" +
                              Count(table_.segment.bytes, "byte") + "), " + Configured(table_) +
                              " says " + std::to_string(slots);
    if (held < slots) {
      findings_.push_back({sizes, table_.DescribeSegment(), CreatedBy(table_.segment),
                           "read behind its end",
                           "stop the drivers; have the owner create it with " +
                               Count(slots * table_.record->record_size, "byte")});
    } else if (held > slots && slots > 0) {
      findings_.push_back({sizes, table_.DescribeSegment(), CreatedBy(table_.segment),
                           "do not see the slots from " + std::to_string(slots),
                           "set the count to " + std::to_string(held) +
                               " if the owner fills them, and restart the drivers"});
    }
  }

  void CheckSet() {
    if (table_.set.semaphores >= table_.slots) return;
    const std::string semaphores = std::to_string(table_.set.semaphores);
    findings_.push_back({"it has " + semaphores + " semaphores, " + Configured(table_) + " says " +
                             std::to_string(table_.slots),
                         table_.DescribeSet(), "", "fail to lock a slot from " + semaphores + " on",
                         "stop the drivers; have the owner create it with " +
                             std::to_string(table_.slots) + " semaphores, all at 2"});
  }

  const std::vector<TableState>& all_;
  const TableState& table_;
  std::vector<Finding> findings_;
};

bool AreAlike(const SlotLock& one, const SlotLock& next) {
  return next.slot == one.slot + 1 && next.value == one.value && next.last.id == one.last.id &&
         next.last.state == one.last.state;
}

std::string WhatHolds(const SlotLock& lock) {
  if (lock.value != 0) return "its value is " + std::to_string(lock.value) + ", not 0 or 2";
  if (!IsGone(lock.last.state)) return "it is held by a process that cannot be told from here";
  return "it is held by process " + std::to_string(lock.last.id) + ", which is dead";
}

// What is said of stuck slots that are alike, from the first to the last.
Finding Stuck(const SlotLock& first, const SlotLock& last, int waiting) {
  const std::string slot = std::to_string(first.slot);
  Finding finding{WhatHolds(first), "slot " + slot, "not changed since " + Time(first.last_change),
                  "wait without end in each locked call that reaches it",
                  std::string("voatm locks release ") + first.table->short_name + " " + slot};
  if (first.slot != last.slot) finding.where += " to " + std::to_string(last.slot);
  finding.where += std::string(" of ") + first.table->name;
  if (!first.id.empty()) finding.where += ", " + first.id;
  if (first.value > devhost::kAtRest) finding.effect = "may hold it together and tear its record";
  if (waiting > 0) finding.effect += "; waiting now: " + std::to_string(waiting);
  if (first.value != 0) finding.next += " --reset";
  if (first.last.state == ProcessState::kUnknown) finding.next += " --force, if nobody holds it";
  return finding;
}

Finding NeverInitialised(const TableState& table) {
  return {"its semaphores were never given a value: all are 0", table.DescribeSet(),
          Time(table.set.last), "wait without end in each locked call",
          std::string("restart the owner and the drivers, or: voatm locks release ") +
              table.record->short_name + " --reset"};
}

}  // namespace

std::vector<Finding> CheckTable(const std::vector<TableState>& all, const TableState& table) {
  return TableCheck(all, table).Run();
}

std::vector<Finding> CheckLocks(const TableState& table) {
  if (table.set.never_initialised) return {NeverInitialised(table)};
  std::vector<Finding> findings;
  const std::vector<SlotLock> locks = FindLocks(table);
  for (auto first = locks.begin(); first != locks.end();) {
    auto last = first;
    int waiting = first->waiting;
    for (; last + 1 != locks.end() && AreAlike(*last, *(last + 1)); ++last) {
      waiting += (last + 1)->waiting;
    }
    if (first->IsStuck()) findings.push_back(Stuck(*first, *last, waiting));
    first = last + 1;
  }
  return findings;
}
