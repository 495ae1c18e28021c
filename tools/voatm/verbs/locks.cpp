// voatm locks: who holds a slot.
#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "look/findings.h"
#include "look/slot_locks.h"
#include "look/survey.h"
#include "show/output.h"
#include "show/watch.h"
#include "verbs/verbs.h"

namespace {

constexpr int kWatchSeconds = 1;

struct Options : DataOptions {
  bool watch = false;
};

struct Snapshot {
  std::vector<SlotLock> locks;
  std::vector<Finding> findings;  // of sets that were never initialised
  bool complete = true;           // the sets of all tables could be read

  bool IsSound() const {
    return complete && findings.empty() &&
           std::none_of(locks.begin(), locks.end(),
                        [](const SlotLock& lock) { return lock.IsStuck(); });
  }
};

void AddLocks(const TableState& table, Snapshot* snapshot) {
  try {
    const std::vector<SlotLock> locks = FindLocks(table);
    snapshot->locks.insert(snapshot->locks.end(), locks.begin(), locks.end());
    if (!table.set.never_initialised) return;
    const std::vector<Finding> findings = CheckLocks(table);
    snapshot->findings.insert(snapshot->findings.end(), findings.begin(), findings.end());
  } catch (const std::runtime_error& error) {
    Say(error.what() + std::string("; see voatm tables"));
    snapshot->complete = false;
  }
}

Snapshot TakeSnapshot(const Survey& survey) {
  Snapshot snapshot;
  for (const TableState& table : survey.tables) AddLocks(table, &snapshot);
  return snapshot;
}

Json SnapshotJson(const Snapshot& snapshot) {
  Json locks = Json::array();
  for (const SlotLock& lock : snapshot.locks) locks.push_back(LockJson(lock));
  return {{"complete", snapshot.complete},
          {"locks", std::move(locks)},
          {"findings", FindingsJson(snapshot.findings)}};
}

void PrintText(const Snapshot& snapshot) {
  if (snapshot.locks.empty() && snapshot.IsSound()) PrintLine("every slot is at rest");
  if (!snapshot.locks.empty()) {
    TextTable text({{"TABLE"},
                    {"SLOT", true},
                    {"ID"},
                    {"VALUE", true},
                    {"PROCESS", true},
                    {"STATE"},
                    {"WAITING", true},
                    {"COMMAND"}});
    for (const SlotLock& lock : snapshot.locks) {
      text.AddRow({lock.table->short_name, std::to_string(lock.slot), lock.id,
                   std::to_string(lock.value), std::to_string(lock.last.id),
                   NameOf(lock.last.state), std::to_string(lock.waiting), lock.last.command},
                  lock.IsStuck());
    }
    text.Print();
  }
  PrintFindings(snapshot.findings);
}

// A look of a watch. Whoever is missing now may be back at the next one.
Snapshot LookAgain(const std::string& home) {
  try {
    return TakeSnapshot(SurveyTables(home));
  } catch (const std::runtime_error& error) {
    Say(error.what());
    Snapshot nothing;
    nothing.complete = false;
    return nothing;
  }
}

ExitCode ShowLocks(const Options& options) {
  const Snapshot snapshot = TakeSnapshot(SurveyTables(options.home));
  if (options.watch) {
    Watch(kWatchSeconds, [&] {
      const Snapshot again = LookAgain(options.home);
      options.json ? PrintJsonLine(SnapshotJson(again)) : PrintText(again);
    });
    return kDone;
  }
  options.json ? PrintJson(SnapshotJson(snapshot)) : PrintText(snapshot);
  return snapshot.IsSound() ? kDone : kFindings;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddDataOptions(list, options.get());
  list->Flag("--watch", &options->watch, "Look again every second until q");
  return [options] { return ShowLocks(*options); };
}

}  // namespace

const Verb kLocks = {
    "locks", "Show the slots that are not at rest, and who holds them",
    "Every slot whose semaphore is not at 2. Of a held slot, value 0, PROCESS is the holder:\n"
    "alive, dead, reused when a later process has its number (it started after the set was last\n"
    "used), or unknown when there is no number to go by; WAITING is how many processes wait for\n"
    "the slot. A set that was never initialised is a finding of its own.\n\n"
    "Exit status: 1 when a slot will not come to rest by itself, because its holder is dead or\n"
    "unknown or its value is not 0, or when a set is missing; a living holder is no finding.\n\n"
    "JSON: {complete, locks: [{table, slot, id, value, process, state, command, waiting,\n"
    "last_change, stuck}], findings: [{what, where, since, drivers, next}]}, last_change being\n"
    "the second in which any slot of the set was taken or given back last; with --watch one such\n"
    "line a look.",
    "voatm locks --home examples/home", Declare};
