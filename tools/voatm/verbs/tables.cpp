// voatm tables: the six tables, and what is wrong with them.
#include <pwd.h>

#include <memory>
#include <string>
#include <vector>

#include "look/findings.h"
#include "look/survey.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verbs/verbs.h"

namespace {

int CountDefined(const TableState& table) {
  const Records records(table);
  int defined = 0;
  for (int slot = 0; slot < records.slots(); ++slot) {
    defined += IsFree(*table.record, records[slot]) ? 0 : 1;
  }
  return defined;
}

std::string UserName(uid_t user) {
  const passwd* entry = getpwuid(user);
  return entry == nullptr ? std::to_string(user) : entry->pw_name;
}

Json TableJson(const TableState& table, const std::vector<Finding>& findings) {
  Json json = {{"table", table.record->name},
               {"name", table.record->short_name},
               {"key", nullptr},
               {"slots", table.slots},
               {"segment", nullptr},
               {"set", nullptr},
               {"findings", FindingsJson(findings)}};
  if (table.key.has_value()) json["key"] = *table.key;
  if (table.segment.there()) {
    json["segment"] = {{"id", table.segment.id},
                       {"bytes", table.segment.bytes},
                       {"slots", table.HeldSlots()},
                       {"defined", CountDefined(table)},
                       {"attached", table.segment.attached},
                       {"owner", UserName(table.segment.owner)},
                       {"creator", table.segment.creator}};
  }
  if (table.set.there()) {
    json["set"] = {{"id", table.set.id}, {"semaphores", table.set.semaphores}};
  }
  return json;
}

// A cell of the table: a value of the JSON form, or a dash.
std::string Cell(const Json& object, const char* member) {
  if (!object.is_object() || object[member].is_null()) return "-";
  const Json& value = object[member];
  return value.is_string() ? value.get<std::string>() : value.dump();
}

void PrintText(const Json& tables) {
  TextTable text({{"TABLE"},
                  {"KEY", true},
                  {"SHMID", true},
                  {"SEMID", true},
                  {"SLOTS", true},
                  {"HELD", true},
                  {"SEMS", true},
                  {"DEFINED", true},
                  {"USERS", true},
                  {"OWNER"},
                  {"CREATOR", true}});
  for (const Json& table : tables) {
    const Json& segment = table["segment"];
    const Json& set = table["set"];
    text.AddRow({Cell(table, "name"), Cell(table, "key"), Cell(segment, "id"), Cell(set, "id"),
                 Cell(table, "slots"), Cell(segment, "slots"), Cell(set, "semaphores"),
                 Cell(segment, "defined"), Cell(segment, "attached"), Cell(segment, "owner"),
                 Cell(segment, "creator")},
                !table["findings"].empty());
  }
  text.Print();
}

std::vector<Finding> FindingsOf(const Survey& survey, const TableState& table) {
  std::vector<Finding> findings = CheckTable(survey.tables, table);
  if (!table.set.there()) return findings;
  for (Finding& finding : CheckLocks(table)) findings.push_back(std::move(finding));
  return findings;
}

ExitCode ShowTables(const DataOptions& options) {
  const Survey survey = SurveyTables(options.home);
  Json json = {{"home", survey.home}, {"queue_key", survey.queue_key}, {"tables", Json::array()}};
  std::vector<Finding> all;
  for (const TableState& table : survey.tables) {
    const std::vector<Finding> findings = FindingsOf(survey, table);
    json["tables"].push_back(TableJson(table, findings));
    all.insert(all.end(), findings.begin(), findings.end());
  }
  if (options.json) {
    PrintJson(json);
  } else {
    PrintLine("home " + survey.home + ", queue key " + std::to_string(survey.queue_key));
    PrintText(json["tables"]);
    PrintFindings(all);
  }
  return all.empty() ? kDone : kFindings;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<DataOptions>();
  AddDataOptions(list, options.get());
  return [options] { return ShowTables(*options); };
}

}  // namespace

const Verb kTables = {
    "tables", "Show the six tables and what is wrong with them",
    "Compares the slots that cfg/ gives each table with its segment (HELD) and its semaphore set\n"
    "(SEMS), counts the records and the processes that have the segment attached (USERS), and\n"
    "looks whether a driver of this user may open both and whether its slots come to rest. OWNER\n"
    "and CREATOR are the segment's, as in ipcs. Nothing is changed. A finding says what is wrong,\n"
    "where, since when or by whom, what drivers do then, and what to type or do next.\n\n"
    "Exit status: 0 all is well, 1 there are findings, 2 VoChannelMgr or cfg/ gave no answer.\n\n"
    "JSON: {home, queue_key, tables: [{table, name, key, slots, segment: {id, bytes, slots,\n"
    "defined, attached, owner, creator}, set: {id, semaphores}, findings: [{what, where, since,\n"
    "drivers, next}]}]}; key, segment and set are null when there is none.",
    "voatm tables --home examples/home", Declare};
