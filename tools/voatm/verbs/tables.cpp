// voatm tables: the six tables, and what is wrong with them.
#include <memory>
#include <string>
#include <vector>

#include "look/findings.h"
#include "look/survey.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

void PrintTables(const Json& json) {
  PrintLine("home " + json["home"].get<std::string>() + ", queue key " +
            InOneLine(json["queue_key"]));
  PrintTable(json["tables"],
             {{"TABLE", "/name"},
              {"KEY", "/key"},
              {"SHMID", "/segment/id"},
              {"SEMID", "/set/id"},
              {"SLOTS", "/slots"},
              {"HELD", "/segment/slots"},
              {"SEMS", "/set/semaphores"},
              {"DEFINED", "/segment/defined"},
              {"USERS", "/segment/attached"},
              {"OWNER", "/segment/owner"},
              {"CREATOR", "/segment/creator"}},
             "/findings");
  for (const Json& table : json["tables"]) PrintFindings(table["findings"]);
}

ExitCode ShowTables(const DataOptions& options) {
  const Survey survey = SurveyTables(options.home);
  Json json = {{"home", options.home}, {"queue_key", survey.queue_key}, {"tables", Json::array()}};
  bool is_sound = true;
  for (const TableState& table : survey.tables) {
    const std::vector<Finding> findings = CheckTable(survey.tables, table);
    json["tables"].push_back(TableJson(table));
    json["tables"].back()["findings"] = FindingsJson(findings);
    is_sound = is_sound && findings.empty();
  }
  options.json ? PrintJson(json) : PrintTables(json);
  return is_sound ? kDone : kFindings;
}

Action DeclareTables(OptionList* list) {
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
    "voatm tables --home examples/home", DeclareTables};
