// voatm status: what is wrong now, and what to type next.
#include <algorithm>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ask/dead_rows.h"
#include "devhost/settings.h"
#include "home/check_configuration.h"
#include "look/findings.h"
#include "look/locate.h"
#include "look/row_faults.h"
#include "look/slot_locks.h"
#include "look/table_keys.h"
#include "look/users.h"
#include "show/output.h"
#include "show/watch.h"
#include "verbs/verbs.h"

namespace {

using records::RecordTable;

struct StatusOptions : DataOptions {
  bool all = false;
  std::optional<int> watch;
  TableKeys keys;
};

Json TableStatus(const TableState& table, const std::vector<SegmentUser>& users) {
  Json json = TableJson(table);
  json["processes"] = Json::array();
  for (const SegmentUser& user : users) {
    if (user.segment != table.segment.id) continue;
    json["processes"].push_back({{"process", user.process.id}, {"command", user.process.command}});
  }
  return json;
}

// All that stands at a home, and what is wrong with it. What cannot be looked at is a finding and
// keeps nothing else from being seen.
class HomeLook {
 public:
  // The given keys count before what VoChannelMgr answers, the remembered ones when it does not.
  HomeLook(const std::string& home, const TableKeys& given)
      : home_(home),
        given_(given),
        json_{{"home", home},
              {"time", TimeText(std::time(nullptr))},
              {"sound", true},
              {"findings", Json::array()},
              {"answered", false},
              {"files", 0},
              {"tables", Json::array()},
              {"locks", Json::array()}} {}

  // As voatm status --json shows it.
  Json Run() {
    FindKeys();
    for (const RecordTable& record : records::kRecordTables) LookAt(record);
    const std::vector<SegmentUser> users = FindSegmentUsers();
    for (const TableState& table : tables_) Judge(table, users);
    Try({"", home_, "", "", "voatm check --home " + home_}, [&] { JudgeConfiguration(); });
    json_["sound"] = findings_.empty();
    json_["findings"] = FindingsJson(findings_);
    return std::move(json_);
  }

 private:
  void Add(const std::vector<Finding>& findings) {
    findings_.insert(findings_.end(), findings.begin(), findings.end());
  }

  // Does something. What it throws is a finding, whose other parts are those of `failed`.
  void Try(const Finding& failed, const std::function<void()>& act) {
    try {
      act();
    } catch (const std::runtime_error& error) {
      Finding finding = failed;
      finding.what = error.what();
      const auto is_same = [&](const Finding& each) { return each.what == finding.what; };
      if (std::none_of(findings_.begin(), findings_.end(), is_same)) findings_.push_back(finding);
    }
  }

  void FindKeys() {
    const RememberedKeys remembered = RecallKeys(home_);
    Finding silent{"", "VoChannelMgr", "", "do not start",
                   "correct the file that is named, or start it; if it runs: ipcs -q"};
    if (remembered.keys.empty()) {
      silent.next += "; give --key TABLE=KEY to look at the tables meanwhile";
    } else {
      silent.since = "looked with the keys of its last answer, " +
                     std::to_string(std::time(nullptr) - remembered.since) + " seconds ago";
    }
    Try(silent, [&] {
      const Locator locator(devhost::ReadQueueKey(home_));
      for (const RecordTable& record : records::kRecordTables) {
        if (const auto key = locator.Ask(record.name)) keys_[&record] = *key;
      }
      json_["answered"] = true;
    });
    if (json_["answered"]) {
      RememberKeys(home_, keys_);
    } else {
      keys_ = remembered.keys;
    }
    for (const auto& [record, key] : given_) keys_[record] = key;
  }

  void LookAt(const RecordTable& record) {
    const auto key = keys_.find(&record);
    const bool is_known = key != keys_.end();
    if (!is_known && !json_["answered"]) return;
    TableState table =
        LookAtTable(record, 0, is_known ? std::optional<int>(key->second) : std::nullopt);
    table.slots = static_cast<int>(table.HeldSlots());  // unless the count can be read
    Try({"", record.name, "", "do not start", "correct it; see voatm check"},
        [&] { table.slots = devhost::ReadSlotCount(home_, record); });
    tables_.push_back(table);
  }

  void Judge(const TableState& table, const std::vector<SegmentUser>& users) {
    json_["tables"].push_back(TableStatus(table, users));
    const RecordTable& record = *table.record;
    const Finding failed{"", record.name, "", "", "look again as the drivers' user"};
    Try(failed, [&] { Add(CheckTable(tables_, table)); });
    if (table.set.there()) {
      Try(failed, [&] {
        for (const SlotLock& lock : FindLocks(table)) json_["locks"].push_back(LockJson(lock));
      });
    }
    Add(JudgeUsers(table, users));
    if (!table.segment.there()) return;
    Try(failed, [&] {
      Rows rows{&record, CopyRecords(table)};
      Add(JudgeRecords(record, rows.bytes.data(), rows.count()));
      Add(FindDeadRows(&rows));
    });
  }

  void JudgeConfiguration() {
    const Json report = CheckConfiguration(home_);
    json_["files"] = report["files"].size();
    const int errors = report["errors"];
    if (errors == 0) return;
    const Json& findings = report["findings"];
    const Json& first = *std::find_if(findings.begin(), findings.end(),
                                      [](const Json& each) { return each["severity"] == "error"; });
    Add({{InOneLine(first["text"]) +
              (errors > 1 ? ", and " + Counted(static_cast<std::size_t>(errors) - 1, "more error")
                          : ""),
          InOneLine(first["path"]) + ":" + InOneLine(first["line"]), "",
          first["rule"] == "seed-refused" ? "" : "read it as it stands",
          "voatm check --home " + home_}});
  }

  const std::string& home_;
  const TableKeys& given_;
  TableKeys keys_;
  std::vector<TableState> tables_;  // whose keys are known
  std::vector<Finding> findings_;
  Json json_;
};

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
                             {"RECORDS", "/segment/defined"},
                             {"SEMS", "/set/semaphores"},
                             {"ATTACHED", "/segment/attached"},
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
  RequireHome(options.home);
  Json before;
  const auto show = [&] {
    Json now = HomeLook(options.home, options.keys).Run();
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
    "VoChannelMgr, files: read, tables: as in voatm tables but for the findings, with processes:\n"
    "[{process, command}], locks: as in voatm locks}; with --watch one such line a look.",
    "voatm status --home examples/home", DeclareStatus};
