#include "verbs/overview.h"

#include <algorithm>
#include <ctime>
#include <functional>
#include <stdexcept>
#include <utility>

#include "ask/dead_rows.h"
#include "devhost/settings.h"
#include "home/check_configuration.h"
#include "look/findings.h"
#include "look/locate.h"
#include "look/row_faults.h"
#include "verb.h"

namespace {

using records::RecordTable;

class HomeLook {
 public:
  HomeLook(const std::string& home, const TableKeys& given) : home_(home), given_(given) {}

  Overview Run() {
    FindKeys();
    for (const RecordTable& record : records::kRecordTables) LookAt(record);
    overview_.users = FindSegmentUsers();
    for (const TableState& table : overview_.tables) Judge(table);
    JudgeConfiguration();
    return std::move(overview_);
  }

 private:
  void Add(std::vector<Finding> findings) {
    for (Finding& finding : findings) overview_.findings.push_back(std::move(finding));
  }

  // Does something; what it throws is a finding, which the others parts are of.
  void Try(const Finding& failed, const std::function<void()>& act) {
    try {
      act();
    } catch (const std::runtime_error& error) {
      Finding finding = failed;
      finding.what = error.what();
      const auto is_same = [&](const Finding& each) { return each.what == finding.what; };
      const auto& found = overview_.findings;
      if (std::none_of(found.begin(), found.end(), is_same)) Add({finding});
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
      overview_.is_answered = true;
    });
    if (overview_.is_answered) RememberKeys(home_, keys_);
    if (!overview_.is_answered) keys_ = remembered.keys;
    for (const auto& [record, key] : given_) keys_[record] = key;
  }

  void LookAt(const RecordTable& record) {
    const auto key = keys_.find(&record);
    const bool is_known = key != keys_.end();
    if (!is_known && !overview_.is_answered) return;
    TableState table =
        LookAtTable(record, 0, is_known ? std::optional<int>(key->second) : std::nullopt);
    table.slots = static_cast<int>(table.HeldSlots());  // unless the count can be read
    Try({"", record.name, "", "do not start", "correct it; see voatm check"},
        [&] { table.slots = devhost::ReadSlotCount(home_, record); });
    overview_.tables.push_back(table);
  }

  void Judge(const TableState& table) {
    const RecordTable& record = *table.record;
    const Finding failed{"", record.name, "", "", "look again as the drivers' user"};
    Try(failed, [&] { Add(CheckTable(overview_.tables, table)); });
    if (table.set.there()) {
      Try(failed, [&] {
        for (SlotLock& lock : FindLocks(table)) overview_.locks.push_back(std::move(lock));
      });
    }
    Add(JudgeUsers(table, overview_.users));
    if (!table.segment.there()) return;
    Try(failed, [&] {
      Rows rows{&record, CopyRecords(table)};
      Add(JudgeRecords(record, rows.bytes.data(), rows.count()));
      Add(FindDeadRows(&rows));
    });
  }

  void JudgeConfiguration() {
    const Json report = CheckConfiguration(home_);
    overview_.files = report["files"].size();
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
  Overview overview_;
};

}  // namespace

Overview LookAtHome(const std::string& home, const TableKeys& given) {
  RequireHome(home);
  return HomeLook(home, given).Run();
}
