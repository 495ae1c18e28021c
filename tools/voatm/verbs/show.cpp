// voatm show: a record of a table whole.
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "look/survey.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verbs/verbs.h"

namespace {

using records::RecordField;
using records::RecordTable;

struct ShowOptions : DataOptions {
  const RecordTable* table = nullptr;
  std::string wanted;
  bool is_id = false;
  bool all = false;

  // The slot that is wanted, else it is an id.
  std::optional<int> Slot() const { return is_id ? std::nullopt : ReadNumber(wanted); }

  // A number's leading zeros mean nothing.
  bool IsId(const std::string& id) const {
    const bool is_number = table->id().kind == records::FieldKind::kInt32;
    const auto number = is_number ? ReadNumber(wanted) : std::nullopt;
    return id == (number ? std::to_string(*number) : wanted);
  }
};

// Why there is nothing to show.
std::string WhyNothing(const ShowOptions& options, int slots) {
  const std::string name = options.table->name;
  const auto slot = options.Slot();
  if (!slot) return "no record " + options.wanted + " in " + name;
  const std::string number = std::to_string(*slot);
  if (*slot < slots) return "slot " + number + " of " + name + " is free; --all shows it";
  return "no slot " + number + " in " + name + ", which has " + std::to_string(slots) +
         "; --id if it is an id";
}

ExitCode Show(const ShowOptions& options) {
  const RecordTable& table = *options.table;
  const Records records(SurveyTable(options.home, table));
  const int slots = records.state().slots;
  const std::string shortage = records.state().Shortage();
  const auto slot = options.Slot();
  if (slot && *slot < slots && *slot >= records.slots()) {
    throw std::runtime_error("cannot read slot " + std::to_string(*slot) + ": " + shortage);
  }
  std::optional<JsonList> list;
  if (options.json) list.emplace(SlotsJson(table, slots, records.slots()));
  bool found = false;
  records.ForEach(options.all, [&](int at, const char* record) {
    if (slot ? at != *slot : !options.IsId(IdText(table, record))) return;
    found = true;
    list ? list->Add(SlotJson(table, at, record)) : PrintWhole(table, at, record);
  });
  if (list) list->Close();
  if (!found) Say(WhyNothing(options, slots));
  const bool looked_at_all = slot || shortage.empty();
  if (!looked_at_all) Say(shortage);
  return found && looked_at_all ? kDone : kFindings;
}

Action DeclareShow(OptionList* list) {
  const auto options = std::make_shared<ShowOptions>();
  AddTableArgument(list, &options->table);
  list->Text("SLOT|ID", "", &options->wanted, "A slot's number, or the id of a record").Required();
  AddDataOptions(list, options.get());
  list->Flag("--id", &options->is_id, "What is given is an id, even when it is a number");
  list->Flag("--all", &options->all, "Show free slots too");
  return [options] { return Show(*options); };
}

}  // namespace

const Verb kShow = {
    "show", "Show a record whole",
    "Every field of the record in a slot, or of each record with an id: the text of the table's\n"
    "first field, or its number. A number is a slot unless --id is given. Bytes are hexadecimal,\n"
    "00*33 being 33 times 00. What stands behind a security id is not shown; voatm dump has it.\n\n"
    "Exit status: 1 when there is no such record, when the slot is free and --all was not given, "
    "or\n"
    "when an id was looked for and slots lie behind the end of the segment.\n\n"
    "JSON: as that of voatm list.",
    "voatm show atm ATM00003 --home examples/home", DeclareShow};
