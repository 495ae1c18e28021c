// voatm show: a record of a table whole.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "look/table_reader.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verbs/verbs.h"

namespace {

using records::RecordField;
using records::RecordTable;

struct Options : DataOptions {
  const RecordTable* table = nullptr;
  std::string wanted;
  bool is_id = false;
  bool all = false;

  // The slot that is wanted, else it is an id.
  std::optional<int> Slot() const { return is_id ? std::nullopt : ReadNumber(wanted); }
};

void PrintWhole(const RecordTable& table, int slot, const char* record) {
  NamedTexts fields;
  for (const RecordField& field : table) {
    fields.emplace_back(field.name, WholeText(table, field, record));
  }
  PrintFacts(
      table.name + (" slot " + std::to_string(slot)) + (IsFree(table, record) ? ", free" : ""),
      fields);
}

std::vector<int> FindId(TableReader& table, const Options& options) {
  std::vector<int> slots;
  for (int slot = 0; slot < table.readable(); ++slot) {
    const char* record = table.Read(slot);
    if (!options.all && IsFree(table.table(), record)) continue;
    if (IdText(table.table(), record) == options.wanted) slots.push_back(slot);
  }
  return slots;
}

void Print(TableReader& table, const std::vector<int>& slots, bool json) {
  std::optional<JsonList> list;
  if (json) list.emplace(SlotsJson(table.table(), table.slots(), table.complete()));
  for (const int slot : slots) {
    const char* record = table.Read(slot);
    json ? list->Add(SlotJson(table.table(), slot, record))
         : PrintWhole(table.table(), slot, record);
  }
  if (json) list->Close();
}

// Says why there is nothing to show in a slot; nothing when there is something.
std::string WhyNothing(TableReader& table, int slot, bool all) {
  const std::string name = table.table().name;
  const std::string number = std::to_string(slot);
  if (slot >= table.slots()) {
    return "no slot " + number + " in " + name + ", which has " + std::to_string(table.slots()) +
           "; --id if it is an id";
  }
  const bool hidden = !all && IsFree(table.table(), table.Read(slot));
  return hidden ? "slot " + number + " of " + name + " is free; --all shows it" : "";
}

ExitCode ShowSlot(TableReader& table, int slot, const Options& options) {
  if (slot < table.slots() && slot >= table.readable()) {
    throw std::runtime_error("cannot read slot " + std::to_string(slot) + ": " + table.Shortage());
  }
  const std::string why_nothing = WhyNothing(table, slot, options.all);
  const bool found = why_nothing.empty();
  Print(table, found ? std::vector<int>{slot} : std::vector<int>{}, options.json);
  if (!found) Say(why_nothing);
  return found ? kDone : kFindings;
}

ExitCode Show(const Options& options) {
  TableReader table(options.home, *options.table);
  if (const auto slot = options.Slot()) return ShowSlot(table, *slot, options);
  const std::vector<int> slots = FindId(table, options);
  Print(table, slots, options.json);
  if (slots.empty()) Say("no record " + options.wanted + " in " + options.table->name);
  if (!table.complete()) Say(table.Shortage());
  return slots.empty() || !table.complete() ? kFindings : kDone;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
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
    "voatm show atm ATM00003 --home examples/home", Declare};
