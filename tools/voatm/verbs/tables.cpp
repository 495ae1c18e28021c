// voatm tables: the six tables, and what is wrong with them.
#include <pwd.h>

#include <cstdio>
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
               {"findings", Json::array()}};
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
  for (const Finding& finding : findings) {
    json["findings"].push_back({{"text", finding.text}, {"remedy", finding.remedy}});
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
                  {"BYTES", true},
                  {"ATTACHED", true},
                  {"OWNER"},
                  {"CREATOR", true}});
  for (const Json& table : tables) {
    const Json& segment = table["segment"];
    const Json& set = table["set"];
    text.AddRow({Cell(table, "table"), Cell(table, "key"), Cell(segment, "id"), Cell(set, "id"),
                 Cell(table, "slots"), Cell(segment, "slots"), Cell(set, "semaphores"),
                 Cell(segment, "defined"), Cell(segment, "bytes"), Cell(segment, "attached"),
                 Cell(segment, "owner"), Cell(segment, "creator")},
                !table["findings"].empty());
  }
  text.Print();
}

void PrintFinding(const std::string& object, const Json& finding) {
  std::printf("%s\n  remedy: %s\n",
              Alarm(object + ": " + finding["text"].get<std::string>()).c_str(),
              finding["remedy"].get_ref<const std::string&>().c_str());
}

ExitCode ShowTables(const DataOptions& options) {
  const Survey survey = SurveyTables(options.home);
  Json json = {{"home", survey.home},
               {"queue_key", survey.queue_key},
               {"tables", Json::array()},
               {"findings", Json::array()}};
  bool sound = true;
  for (const TableState& table : survey.tables) {
    const std::vector<Finding> findings = CheckTable(table);
    sound = sound && findings.empty();
    json["tables"].push_back(TableJson(table, findings));
  }
  if (sound) {
    for (const Finding& finding : CheckStart(survey)) {
      json["findings"].push_back({{"text", finding.text}, {"remedy", finding.remedy}});
    }
    sound = json["findings"].empty();
  }
  if (options.json) {
    PrintJson(json);
    return sound ? kDone : kFindings;
  }
  PrintText(json["tables"]);
  for (const Json& table : json["tables"]) {
    for (const Json& finding : table["findings"]) PrintFinding(Cell(table, "table"), finding);
  }
  for (const Json& finding : json["findings"]) PrintFinding(survey.home, finding);
  return sound ? kDone : kFindings;
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
    "(SEMS), counts the records, and starts the library as a driver does. OWNER and CREATOR are\n"
    "the segment's, as in ipcs. Nothing is changed. Every finding comes with its remedy.\n\n"
    "Exit status: 0 all is well, 1 there are findings, 2 VoChannelMgr or cfg/ gave no answer.\n\n"
    "JSON: {home, queue_key, tables: [{table, name, key, slots, segment: {id, bytes, slots,\n"
    "defined, attached, owner, creator}, set: {id, semaphores}, findings}], findings: [{text,\n"
    "remedy}]}; key, segment and set are null when there is none.",
    "voatm tables --home examples/home", Declare};
