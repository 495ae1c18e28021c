// voatm status: what is wrong now, and what to type next.
#include <algorithm>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "look/overview.h"
#include "show/output.h"
#include "show/watch.h"
#include "verbs/verbs.h"

namespace {

struct Options : DataOptions {
  bool all = false;
  std::optional<int> watch;
  TableKeys keys;
};

std::string TimeNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  char text[32];
  localtime_r(&now, &local);
  std::strftime(text, sizeof text, "%F %T", &local);
  return text;
}

std::vector<const SegmentUser*> UsersOf(const Overview& overview, const TableState& table) {
  std::vector<const SegmentUser*> users;
  for (const SegmentUser& user : overview.users) {
    if (table.segment.there() && user.segment == table.segment.id) users.push_back(&user);
  }
  return users;
}

Json OverviewJson(const Options& options, const Overview& overview) {
  Json tables = Json::array();
  for (const TableState& table : overview.tables) {
    Json users = Json::array();
    for (const SegmentUser* user : UsersOf(overview, table)) {
      users.push_back({{"process", user->process.id}, {"command", user->process.command}});
    }
    tables.push_back({{"table", table.record->name},
                      {"key", table.key.has_value() ? Json(*table.key) : Json()},
                      {"slots", table.slots},
                      {"attached", table.segment.attached},
                      {"processes", std::move(users)}});
  }
  return {{"home", options.home},
          {"time", TimeNow()},
          {"sound", overview.findings.empty()},
          {"findings", FindingsJson(overview.findings)},
          {"tables", std::move(tables)}};
}

void PrintTables(const Overview& overview) {
  TextTable text({{"TABLE"}, {"KEY", true}, {"SLOTS", true}, {"ATTACHED", true}, {"PROCESSES"}});
  for (const TableState& table : overview.tables) {
    std::string users;
    for (const SegmentUser* user : UsersOf(overview, table)) {
      users += (users.empty() ? "" : ", ") + std::to_string(user->process.id) + " " +
               user->process.command;
    }
    text.AddRow({table.record->short_name, table.key.has_value() ? std::to_string(*table.key) : "-",
                 std::to_string(table.slots), std::to_string(table.segment.attached), users});
  }
  text.Print();
}

// Marks what was not found the last time, when there was one.
std::vector<Finding> WithChanges(const std::vector<Finding>& findings,
                                 const std::optional<Overview>& before) {
  std::vector<Finding> marked = findings;
  for (Finding& finding : marked) {
    if (!before.has_value()) continue;
    const bool is_new =
        std::none_of(before->findings.begin(), before->findings.end(), [&](const Finding& each) {
          return each.what == finding.what && each.where == finding.where;
        });
    if (is_new) finding.what = "NEW " + finding.what;
  }
  return marked;
}

void PrintText(const Options& options, const Overview& overview,
               const std::optional<Overview>& before) {
  const std::string count = std::to_string(overview.findings.size());
  PrintLine(TimeNow() + " " + options.home + ": " +
            (overview.findings.empty() ? "all is well" : count + " findings"));
  if (options.all) PrintTables(overview);
  PrintFindings(WithChanges(overview.findings, before));
}

ExitCode ShowStatus(const Options& options) {
  std::optional<Overview> before;
  const auto show = [&] {
    Overview overview = LookAtHome(options.home, options.keys);
    if (!options.json) PrintText(options, overview, before);
    const Json json = options.json ? OverviewJson(options, overview) : Json();
    if (options.json) options.watch.has_value() ? PrintJsonLine(json) : PrintJson(json);
    before = std::move(overview);
  };
  options.watch.has_value() ? Watch(*options.watch, show) : show();
  return before->findings.empty() ? kDone : kFindings;
}

void TakeKey(const std::string& text, TableKeys* keys) {
  const std::string name = text.substr(0, text.find('='));
  const auto key = ReadNumber(text.substr(std::min(name.size() + 1, text.size())), 1);
  for (const records::RecordTable& table : records::kRecordTables) {
    if (name != table.short_name || !key.has_value()) continue;
    (*keys)[&table] = *key;
    return;
  }
  throw UsageError("--key cannot be \"" + text + "\": it is like atm=71010");
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
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
    "JSON: {home, time, sound, findings: [{what, where, since, drivers, next}], tables: [{table,\n"
    "key, slots, attached, processes: [{process, command}]}]}; with --watch one such line a look.",
    "voatm status --home examples/home", Declare};
