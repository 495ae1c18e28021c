// voatm status: what is wrong now, and what to type next.
#include <algorithm>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "show/output.h"
#include "show/watch.h"
#include "verbs/overview.h"
#include "verbs/verbs.h"

namespace {

struct StatusOptions : DataOptions {
  bool all = false;
  std::optional<int> watch;
  TableKeys keys;
};

Json TableStatus(const Overview& overview, const TableState& table) {
  Json users = Json::array();
  for (const SegmentUser& user : overview.users) {
    if (user.segment != table.segment.id) continue;
    users.push_back({{"process", user.process.id}, {"command", user.process.command}});
  }
  const bool readable = table.segment.there();
  return {{"table", table.record->name},
          {"name", table.record->short_name},
          {"key", table.key.has_value() ? Json(*table.key) : Json()},
          {"slots", table.slots},
          {"records", readable ? Json(CountDefined(table)) : Json()},
          {"semaphores", table.set.there() ? Json(table.set.semaphores) : Json()},
          {"attached", table.segment.attached},
          {"processes", std::move(users)}};
}

Json OverviewJson(const StatusOptions& options, const Overview& overview) {
  Json tables = Json::array();
  for (const TableState& table : overview.tables) tables.push_back(TableStatus(overview, table));
  Json locks = Json::array();
  for (const SlotLock& lock : overview.locks) locks.push_back(LockJson(lock));
  return {{"home", options.home},
          {"time", TimeText(std::time(nullptr))},
          {"sound", overview.findings.empty()},
          {"findings", FindingsJson(overview.findings)},
          {"answered", overview.is_answered},
          {"files", overview.files},
          {"tables", std::move(tables)},
          {"locks", std::move(locks)}};
}

// The findings, with what was not found the last time marked.
Json WithNewOnesMarked(Json findings, const Json& before) {
  for (Json& finding : findings) {
    const bool is_new = std::none_of(before.begin(), before.end(), [&](const Json& each) {
      return each["what"] == finding["what"] && each["where"] == finding["where"];
    });
    if (is_new) finding["what"] = "NEW " + finding["what"].get<std::string>();
  }
  return findings;
}

// What is healthy too.
void PrintAll(const Json& now) {
  PrintFacts("", {{"VoChannelMgr", now["answered"] ? "answers" : "does not answer"},
                  {"files", InOneLine(now["files"]) + " read"}});
  PrintTable(now["tables"], {{"TABLE", "/name"},
                             {"KEY", "/key"},
                             {"SLOTS", "/slots"},
                             {"RECORDS", "/records"},
                             {"SEMS", "/semaphores"},
                             {"ATTACHED", "/attached"},
                             {"PROCESSES", "/processes"}});
  if (!now["locks"].empty()) PrintLocks(now["locks"]);
}

// `before` is the look before this one, or null.
void PrintStatus(const StatusOptions& options, const Json& now, const Json& before) {
  const Json& findings = now["findings"];
  PrintLine(now["time"].get<std::string>() + " " + options.home + ": " +
            (findings.empty() ? "all is well" : Counted(findings.size(), "finding")));
  if (options.all) PrintAll(now);
  PrintFindings(before.is_null() ? findings : WithNewOnesMarked(findings, before["findings"]));
}

ExitCode ShowStatus(const StatusOptions& options) {
  Json before;
  const auto show = [&] {
    Json now = OverviewJson(options, LookAtHome(options.home, options.keys));
    if (!options.json) {
      PrintStatus(options, now, before);
    } else {
      options.watch.has_value() ? PrintJsonLine(now) : PrintJson(now);
    }
    before = std::move(now);
  };
  options.watch.has_value() ? Watch(*options.watch, show) : show();
  return before["sound"] ? kDone : kFindings;
}

void TakeKey(const std::string& text, TableKeys* keys) {
  const std::string name = text.substr(0, text.find('='));
  const auto key = ReadNumber(text.substr(std::min(name.size() + 1, text.size())), 1);
  for (const records::RecordTable& table : records::kRecordTables) {
    if (name != table.short_name || !key.has_value()) continue;
    if (keys->emplace(&table, *key).second) return;
    throw UsageError("--key gives " + name + " twice");
  }
  throw UsageError("--key cannot be \"" + text + "\": it is like atm=71010");
}

Action DeclareStatus(OptionList* list) {
  const auto options = std::make_shared<StatusOptions>();
  AddDataOptions(list, options.get());
  list->Flag("--all", &options->all, "Show what is healthy too, and who is attached");
  list->Number("--watch", 1, 86400, &options->watch, "Look again every so many seconds until q");
  list->Add({"--key", "TABLE=KEY", "A table's key, whatever VoChannelMgr says",
             [options](const auto& values) {
               for (const std::string& value : values) TakeKey(value, &options->keys);
             },
             OptionRow::kAnyNumber});
  return [options] { return ShowStatus(*options); };
}

}  // namespace

const Verb kStatus = {
    "status", "Say what is wrong right now, and what to type next",
    "Looks at the start-up files, VoChannelMgr, each segment and set, the slots that do not come\n"
    "to rest, the records, the processes that are attached, the configuration tree and the seed\n"
    "files. Without findings it prints one line. A finding says what is wrong, where, since when\n"
    "or by whom, what drivers do then, and what to type or do next. Rows that never win are found\n"
    "by asking the library. Nothing is changed. While VoChannelMgr does not answer, the keys that\n"
    "it gave the last time count, or those of --key.\n\n"
    "With --watch each look begins with the time, and what is new is marked.\n\n"
    "Exit status: 0 all is well, 1 there are findings, 2 could not look.\n\n"
    "JSON: {home, time, sound, findings: [{what, where, since, drivers, next}], answered: by\n"
    "VoChannelMgr, files: read, tables: [{table, name, key, slots, records, semaphores, attached,\n"
    "processes: [{process, command}]}], locks: as in voatm locks}; with --watch one such line a\n"
    "look.",
    "voatm status --home examples/home", DeclareStatus};
