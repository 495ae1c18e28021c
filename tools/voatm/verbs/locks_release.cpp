// voatm locks release: brings a slot back to rest when nobody can be in the middle of it.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "look/release.h"
#include "look/survey.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verbs/verbs.h"

namespace {

struct ReleaseOptions : DataOptions {
  const records::RecordTable* table = nullptr;
  std::optional<int> slot;
  ReleaseRights rights;
};

// The record of a slot, when there is one that can be read.
std::vector<char> RecordOf(const TableState& table, int slot) {
  if (!table.segment.there() || slot >= table.ReadableSlots()) return {};
  const Records records(table);
  return {records[slot], records[slot + 1]};
}

// What to look at once a slot with a record is free whose holder died: it may have been writing.
std::vector<std::string> Afterwards(const records::RecordTable& table, const Release& release) {
  if (!release.done || !release.lock.has_value() || release.lock->value != kHeld) return {};
  const std::string slot = std::to_string(release.lock->slot);
  std::vector<std::string> next = {std::string("voatm show ") + table.short_name + " " + slot};
  if (table.slots == &VoATMUtil::MaxAtm) {
    next.push_back("restart the driver of this ATM, so that it writes the record whole");
  } else {
    next.emplace_back("have the owner of the table write the row again");
  }
  return next;
}

ExitCode DoRelease(const ReleaseOptions& options) {
  if (!options.slot.has_value() && !options.rights.reset) {
    throw UsageError("SLOT is required, or --reset for a set that was never initialised");
  }
  const TableState table = SurveyTable(options.home, *options.table);
  std::vector<char> record;
  if (options.slot.has_value()) record = RecordOf(table, *options.slot);
  if (!options.json && !record.empty()) PrintWhole(*options.table, *options.slot, record.data());
  Release release = options.slot.has_value() ? ReleaseSlot(table, *options.slot, options.rights)
                                             : InitialiseSet(table, options.rights);
  if (release.lock.has_value() && !record.empty()) {
    release.lock->id = IdText(*options.table, record.data());
  }
  std::vector<std::string> next;
  if (!record.empty()) next = Afterwards(*options.table, release);
  if (options.json) {
    PrintJson({{"released", release.done},
               {"text", release.text},
               {"lock", release.lock.has_value() ? LockJson(*release.lock) : Json()},
               {"record", record.empty() ? Json() : RecordJson(*options.table, record.data())},
               {"next", next}});
  } else if (release.done) {
    PrintLine(release.text);
  } else {
    Say(release.text);
  }
  if (!options.json && !next.empty()) {
    PrintLine("its holder may have died while writing the record above:");
    for (const std::string& step : next) PrintLine("  " + step);
  }
  return release.done ? kDone : kFindings;
}

Action DeclareRelease(OptionList* list) {
  const auto options = std::make_shared<ReleaseOptions>();
  AddTableArgument(list, &options->table);
  list->Number("SLOT", 0, INT_MAX, &options->slot, "The slot's number");
  AddDataOptions(list, options.get());
  list->Flag(
      "--reset", &options->rights.reset,
      "Also of a slot that is neither held nor at rest; without SLOT the slots of a set that "
      "was never initialised");
  list->Flag("--force", &options->rights.force,
             "Assume that a process which cannot be told from here has ended");
  return [options] { return DoRelease(*options); };
}

}  // namespace

const Verb kLocksRelease = {
    "locks release", "Bring back to rest a slot that nobody can be in the middle of",
    "Shows the record and adds the two units that the holder took, if its process is dead and the\n"
    "value is still 0, in one step; one release at a time in a set. A holder may have died while\n"
    "it wrote the record: what to do then is said. A slot of a living process that uses the table\n"
    "stays, whatever is asked. A reused number counts as dead while no other slot of the set was\n"
    "used since the later process started; it is told by the clock, so be careful after setting\n"
    "that forward.\n\n"
    "With --reset a slot whose value is neither 0 nor 2 is brought to 2: from 1 when the process\n"
    "that changed it last is dead; from more than 2, where units are only taken away, always.\n"
    "Without SLOT it initialises a set that nobody ever gave a value, if the process that created\n"
    "the segment is dead. --force stands in for these proofs where the process cannot be told,\n"
    "because it lives in another PID namespace, nobody ever used the slot, or the process with\n"
    "that number does not use the table; for a set, also where the creator lives.\n\n"
    "Exit status: 0 released, 1 not, with the reason.\n\n"
    "JSON: {released, text, lock, record, next: [text]}, lock being as in voatm locks, before the\n"
    "release, and record as in voatm show; either may be null.",
    "voatm locks release atm 3 --home examples/home", DeclareRelease};
