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

std::string CreatedBy(const SegmentState& segment) {
  return TimeText(segment.last) + ", process " + std::to_string(segment.creator);
}

using Findings = std::vector<Finding>;

// Adds what is wrong with a table's key; returns whether there may be anything under it.
bool CheckKey(const std::vector<TableState>& all, const TableState& table, Findings* findings) {
  const std::string name = table.record->name;
  if (!table.key.has_value()) {
    findings->push_back({"VoChannelMgr does not know the table", name, "", kNoStart,
                         "define it there, with the key of its segment and set"});
    return false;
  }
  if (*table.key == IPC_PRIVATE) {
    findings->push_back({"VoChannelMgr gives the key 0, under which nothing can be shared", name,
                         "", kNoStart, "give the table a key of its own there"});
    return false;
  }
  for (const TableState& other : all) {
    if (&other == &table || other.key != table.key) continue;
    findings->push_back(
        {std::string(other.record->name) + " has the same key", table.DescribeSegment(), "",
         "take the records of the one table for those of the other",
         "give each table a key of its own in VoChannelMgr; restart owner and drivers"});
  }
  return true;
}

// Adds why drivers cannot open it; returns whether it is there and may be looked at.
bool CheckObject(const IpcState& object, const std::string& description, Findings* findings) {
  if (object.error == ENOENT) {
    findings->push_back({"it does not exist", description, "", kNoStart, kStartOwner});
  } else if (!object.there()) {
    findings->push_back(
        {std::strerror(object.error), description, "", "", "look again as the drivers' user"});
  } else if (!object.for_us) {
    findings->push_back({"this user may not write it", description, "",
                         std::string(kNoStart) + " as this user",
                         "run drivers as its owner; ipcs -m -s shows owner and mode"});
  }
  return object.there();
}

void CheckSegment(const TableState& table, Findings* findings) {
  const auto slots = static_cast<std::size_t>(table.slots);
  const std::size_t held = table.HeldSlots();
  const std::string sizes = "it holds " + Counted(held, "slot") + " (" +
                            Counted(table.segment.bytes, "byte") + "), " + Configured(table) +
                            " says " + std::to_string(slots);
  if (held < slots) {
    findings->push_back({sizes, table.DescribeSegment(), CreatedBy(table.segment),
                         "read behind its end",
                         "stop the drivers; have the owner create it with " +
                             Counted(slots * table.record->record_size, "byte")});
  } else if (held > slots && slots > 0) {
    findings->push_back({sizes, table.DescribeSegment(), CreatedBy(table.segment),
                         "do not see the slots from " + std::to_string(slots),
                         "set the count to " + std::to_string(held) +
                             " if the owner fills them, and restart the drivers"});
  }
}

void CheckSet(const TableState& table, Findings* findings) {
  if (table.set.semaphores >= table.slots) return;
  const std::string semaphores = std::to_string(table.set.semaphores);
  const std::string slots = std::to_string(table.slots);
  findings->push_back(
      {"it has " + semaphores + " semaphores, " + Configured(table) + " says " + slots,
       table.DescribeSet(), "", "fail to lock a slot from " + semaphores + " on",
       "stop the drivers; have the owner create it with " + slots + " semaphores, all at 2"});
}

bool AreAlike(const SlotLock& one, const SlotLock& next) {
  return next.slot == one.slot + 1 && next.value == one.value && next.last.id == one.last.id &&
         next.last.state == one.last.state;
}

std::string WhatHolds(const SlotLock& lock) {
  if (lock.value != 0) return "its value is " + std::to_string(lock.value) + ", not 0 or 2";
  const std::string process = DescribeProcess(lock.last);
  switch (lock.last.state) {
    case ProcessState::kUnknown:
      return "it is held by a process that cannot be told from here";
    case ProcessState::kStranger:
      return process + " has its holder's number and does not use the table";
    case ProcessState::kStopped:
      return "it is held by " + process + ", which is stopped";
    default:
      return "it is held by " + process + ", which is dead";
  }
}

// What is said of stuck slots that are alike, from the first to the last.
Finding Stuck(const SlotLock& first, const SlotLock& last, int waiting) {
  const std::string slot = std::to_string(first.slot);
  Finding finding{WhatHolds(first), "slot " + slot,
                  "not changed since " + TimeText(first.last_change),
                  "wait without end in each locked call that reaches it",
                  std::string("voatm locks release ") + first.table->short_name + " " + slot};
  if (first.slot != last.slot) finding.where += " to " + std::to_string(last.slot);
  finding.where += std::string(" of ") + first.table->name;
  if (!first.id.empty()) finding.where += ", " + first.id;
  if (first.value > devhost::kAtRest) finding.effect = "may hold it together and tear its record";
  if (waiting > 0) finding.effect += "; waiting now: " + std::to_string(waiting);
  if (first.value != 0) finding.next += " --reset";
  const ProcessState state = first.last.state;
  if (state == ProcessState::kUnknown || state == ProcessState::kStranger) {
    finding.next += " --force, if nobody holds it";
  }
  if (first.value == kHeld && state == ProcessState::kStopped) {
    finding.next = "kill -CONT " + std::to_string(first.last.id);
  }
  return finding;
}

void CheckLocks(const TableState& table, Findings* findings) {
  if (table.set.never_initialised) findings->push_back(NeverInitialised(table));
  const std::vector<SlotLock> locks = FindLocks(table);
  for (auto first = locks.begin(); first != locks.end();) {
    auto last = first;
    int waiting = first->waiting;
    for (; last + 1 != locks.end() && AreAlike(*last, *(last + 1)); ++last) {
      waiting += (last + 1)->waiting;
    }
    if (first->IsStuck()) findings->push_back(Stuck(*first, *last, waiting));
    first = last + 1;
  }
}

}  // namespace

Finding NeverInitialised(const TableState& table) {
  return {"its semaphores were never given a value: all are 0", table.DescribeSet(),
          TimeText(table.set.last), "wait without end in each locked call",
          std::string("restart the owner and the drivers, or: voatm locks release ") +
              table.record->short_name + " --reset, with --force while the owner lives"};
}

std::vector<Finding> CheckTable(const std::vector<TableState>& all, const TableState& table) {
  Findings findings;
  if (!CheckKey(all, table, &findings)) return findings;
  const std::string segment = table.DescribeSegment();
  if (table.segment.error == ENOENT && table.set.error == ENOENT) {
    findings.push_back({"it does not exist, nor does its set", segment, "", kNoStart, kStartOwner});
    return findings;
  }
  if (CheckObject(table.segment, segment, &findings)) CheckSegment(table, &findings);
  if (!CheckObject(table.set, table.DescribeSet(), &findings)) return findings;
  CheckSet(table, &findings);
  CheckLocks(table, &findings);
  return findings;
}
