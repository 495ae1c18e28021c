// voatm dump: a table as a seed file.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "look/survey.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verbs/verbs.h"

namespace {

struct DumpOptions : DataOptions {
  const records::RecordTable* table = nullptr;
};

ExitCode Dump(const DumpOptions& options) {
  const Records records(SurveyTable(options.home, *options.table));
  JsonList list;
  int next = 0;  // the slot of a row that does not say its own
  records.ForEach(true, [&](int slot, const char* record) {
    if (IsUntouched(*options.table, record)) return;  // it needs no row
    Json row = Json::object();
    if (slot != next) row["Slot"] = slot;
    row.update(SeedRow(*options.table, record));
    list.Add(row);
    next = slot + 1;
  });
  const std::string shortage = records.state().Shortage();
  if (shortage.empty()) {
    list.Close();
    return kDone;
  }
  // Without its end nobody takes it for the table.
  PrintAsIs("\n");
  PrintLine("// " + shortage);
  Say(shortage);
  return kFindings;
}

Action DeclareDump(OptionList* list) {
  const auto options = std::make_shared<DumpOptions>();
  AddTableArgument(list, &options->table);
  AddDataOptions(list, options.get());
  return [options] { return Dump(*options); };
}

}  // namespace

const Verb kDump = {
    "dump", "Write the records of a table as voatm serve reads them",
    "Writes a seed file for tables/ of a home. Serving it gives the same table, byte for\n"
    "byte: also the bytes behind a security id, so keep it as secret as the table.\n\n"
    "Exit status: 1 when configured slots lie behind the end of the segment; the file then ends\n"
    "before its ], so that voatm serve refuses it.\n\n"
    "JSON, with --json or without: [{Slot, field: value}], a Slot where the row is not in the\n"
    "slot behind the row before; a value is {hex} when JSON text would not hold its bytes.",
    "voatm dump fit --home examples/home > atm_fit.json", DeclareDump};
