// voatm locks, and locks release: who holds a slot, and giving back what a dead process holds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "look/slot_locks.h"
#include "look/survey.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

constexpr auto kWatchInterval = std::chrono::seconds(1);
constexpr const char* kClearScreen = "\033[H\033[2J";

struct LocksOptions : DataOptions {
  bool watch = false;
};

struct ReleaseOptions : DataOptions {
  const records::RecordTable* table = nullptr;
  int slot = 0;
};

struct Snapshot {
  std::vector<SlotLock> locks;
  bool complete = true;  // the sets of all tables could be read
};

Snapshot TakeSnapshot(const Survey& survey) {
  Snapshot snapshot;
  for (const TableState& table : survey.tables) {
    try {
      const std::vector<SlotLock> locks = FindLocks(table);
      snapshot.locks.insert(snapshot.locks.end(), locks.begin(), locks.end());
    } catch (const std::runtime_error& error) {
      Say(error.what() + std::string("; see voatm tables"));
      snapshot.complete = false;
    }
  }
  return snapshot;
}

Json LockJson(const SlotLock& lock) {
  return {
      {"table", lock.table->name},    {"slot", lock.slot},       {"id", lock.id},
      {"value", lock.value},          {"process", lock.last.id}, {"state", NameOf(lock.last.state)},
      {"command", lock.last.command}, {"waiting", lock.waiting}, {"stuck", lock.IsStuck()}};
}

Json SnapshotJson(const Snapshot& snapshot) {
  Json locks = Json::array();
  for (const SlotLock& lock : snapshot.locks) locks.push_back(LockJson(lock));
  return {{"complete", snapshot.complete}, {"locks", std::move(locks)}};
}

void PrintText(const Snapshot& snapshot) {
  if (snapshot.locks.empty()) {
    if (snapshot.complete) std::printf("every slot is at rest\n");
    return;
  }
  TextTable text({{"TABLE"},
                  {"SLOT", true},
                  {"ID"},
                  {"VALUE", true},
                  {"PROCESS", true},
                  {"STATE"},
                  {"WAITING", true},
                  {"COMMAND"}});
  for (const SlotLock& lock : snapshot.locks) {
    text.AddRow({lock.table->name, std::to_string(lock.slot), lock.id, std::to_string(lock.value),
                 std::to_string(lock.last.id), NameOf(lock.last.state),
                 std::to_string(lock.waiting), lock.last.command},
                lock.IsStuck());
  }
  text.Print();
}

// Prints until a signal ends the process.
[[noreturn]] void Watch(const Survey& survey, bool json) {
  while (true) {
    const Snapshot snapshot = TakeSnapshot(survey);
    if (json) {
      PrintJsonLine(SnapshotJson(snapshot));
    } else {
      if (UsesTerminal()) std::printf("%s", kClearScreen);
      PrintText(snapshot);
    }
    FlushOutput();
    std::this_thread::sleep_for(kWatchInterval);
  }
}

ExitCode ShowLocks(const LocksOptions& options) {
  const Survey survey = SurveyTables(options.home);
  if (options.watch) Watch(survey, options.json);
  const Snapshot snapshot = TakeSnapshot(survey);
  options.json ? PrintJson(SnapshotJson(snapshot)) : PrintText(snapshot);
  const bool stuck = std::any_of(snapshot.locks.begin(), snapshot.locks.end(),
                                 [](const SlotLock& lock) { return lock.IsStuck(); });
  return stuck || !snapshot.complete ? kFindings : kDone;
}

ExitCode DoRelease(const ReleaseOptions& options) {
  const Release release = ReleaseSlot(SurveyTables(options.home), *options.table, options.slot);
  if (options.json) {
    PrintJson({{"released", release.done},
               {"text", release.text},
               {"lock", release.lock.has_value() ? LockJson(*release.lock) : Json()}});
  } else if (release.done) {
    std::printf("%s\n", release.text.c_str());
  } else {
    Say(release.text);
  }
  return release.done ? kDone : kFindings;
}

Action DeclareLocks(OptionList* list) {
  const auto options = std::make_shared<LocksOptions>();
  AddDataOptions(list, options.get());
  list->Flag("--watch", &options->watch, "Look again every second until interrupted");
  return [options] { return ShowLocks(*options); };
}

Action DeclareRelease(OptionList* list) {
  const auto options = std::make_shared<ReleaseOptions>();
  AddTableArgument(list, &options->table);
  list->Number("SLOT", 0, INT_MAX, &options->slot, "The slot's number").Required();
  AddDataOptions(list, options.get());
  return [options] { return DoRelease(*options); };
}

}  // namespace

const Verb kLocks = {
    "locks", "Show the slots that are not at rest, and who holds them",
    "Every slot whose semaphore is not at 2. Of a held slot, value 0, PROCESS is the holder:\n"
    "alive, dead, or reused when a later process has its number (it started after the set was\n"
    "last used); WAITING is how many processes wait for the slot.\n\n"
    "Exit status: 1 when a slot will not come to rest by itself, because its holder is dead or\n"
    "its value is not 0, or when a set is missing; a living holder is no finding.\n\n"
    "JSON: {complete, locks: [{table, slot, id, value, process, state, command, waiting,\n"
    "stuck}]}, state being alive, dead, reused or unknown; with --watch one such line a look.",
    "voatm locks --home examples/home", DeclareLocks};

const Verb kLocksRelease = {
    "locks release", "Give back a slot whose holder is dead",
    "Adds the two units that the holder took, if its process is dead and the value is still 0,\n"
    "in one step; one release at a time in a home. A slot of a living process stays. A reused\n"
    "number counts as dead; it is told by the clock, so be careful after setting that forward.\n\n"
    "Exit status: 0 released, 1 not, with the reason.\n\n"
    "JSON: {released, text, lock}, lock being as in voatm locks, before the release, or null.",
    "voatm locks release atm 3 --home examples/home", DeclareRelease};
