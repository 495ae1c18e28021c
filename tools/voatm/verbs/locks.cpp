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

struct LocksOptions : DataOptions {
  bool watch = false;
};

// What stands there now: {complete, locks, findings}, the findings of sets that were never
// initialised.
Json TakeSnapshot(const std::string& home) {
  Json snapshot = {{"complete", true}, {"locks", Json::array()}, {"findings", Json::array()}};
  std::vector<Finding> findings;
  for (const TableState& table : SurveyTables(home).tables) {
    try {
      for (const SlotLock& lock : FindLocks(table)) snapshot["locks"].push_back(LockJson(lock));
      if (table.set.never_initialised) findings.push_back(NeverInitialised(table));
    } catch (const std::runtime_error& error) {
      Say(error.what() + std::string("; see voatm tables"));
      snapshot["complete"] = false;
    }
  }
  snapshot["findings"] = FindingsJson(findings);
  return snapshot;
}

bool IsSound(const Json& snapshot) {
  return snapshot["complete"] && snapshot["findings"].empty() &&
         std::none_of(snapshot["locks"].begin(), snapshot["locks"].end(),
                      [](const Json& lock) { return lock["stuck"].get<bool>(); });
}

void PrintSnapshot(const Json& snapshot) {
  if (!snapshot["locks"].empty()) {
    PrintLocks(snapshot["locks"]);
  } else if (IsSound(snapshot)) {
    PrintLine("every slot is at rest");
  }
  PrintFindings(snapshot["findings"]);
}

// A look of a watch. Whoever is missing now may be back at the next one.
Json LookAgain(const std::string& home) {
  try {
    return TakeSnapshot(home);
  } catch (const std::runtime_error& error) {
    Say(error.what());
    return {{"complete", false}, {"locks", Json::array()}, {"findings", Json::array()}};
  }
}

ExitCode ShowLocks(const LocksOptions& options) {
  const Json snapshot = TakeSnapshot(options.home);
  if (options.watch) {
    Watch(kWatchSeconds, [&] {
      const Json again = LookAgain(options.home);
      options.json ? PrintJsonLine(again) : PrintSnapshot(again);
    });
    return kDone;
  }
  options.json ? PrintJson(snapshot) : PrintSnapshot(snapshot);
  return IsSound(snapshot) ? kDone : kFindings;
}

Action DeclareLocks(OptionList* list) {
  const auto options = std::make_shared<LocksOptions>();
  AddDataOptions(list, options.get());
  list->Flag("--watch", &options->watch, "Look again every second until q");
  return [options] { return ShowLocks(*options); };
}

}  // namespace

const Verb kLocks = {
    "locks", "Show the slots that are not at rest, and who holds them",
    "Every slot whose semaphore is not at 2. Of a held slot, value 0, PROCESS is the holder:\n"
    "alive, stopped, dead, reused when a later process has its number (it started after the set\n"
    "was last used), stranger when the process with its number does not use the table, or unknown\n"
    "when there is no number to go by; WAITING is how many processes wait for the slot. A set\n"
    "that was never initialised is a finding of its own.\n\n"
    "Exit status: 1 when a slot will not come to rest by itself, because its holder is not alive\n"
    "or its value is not 0, or when a set is missing; a living holder is no finding.\n\n"
    "JSON: {complete, locks: [{table, name, slot, id, value, process, state, command,\n"
    "waiting, last_change, stuck}], findings: [{what, where, since, drivers, next}]}, last_change "
    "being\n"
    "the second in which any slot of the set was taken or given back last; with --watch one such\n"
    "line a look.",
    "voatm locks --home examples/home", DeclareLocks};
