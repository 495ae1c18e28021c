// voatm list, show and dump: the records of a table.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "look/survey.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verbs/verbs.h"

namespace {

using records::FieldKind;
using records::RecordField;
using records::RecordTable;

struct Options : DataOptions {
  const RecordTable* table = nullptr;
  std::string wanted;  // a slot or an id
  bool is_id = false;
  bool all = false;
};

constexpr const char* kUnterminatedMark = " (unterminated)";

// A table with its records, once they are known to be readable.
struct OpenTable {
  explicit OpenTable(const Options& options)
      : survey(SurveyTables(options.home)),
        state(survey.Of(*options.table)),
        record(*options.table),
        records(state) {
    if (records.slots() < state.slots) {
      Say("only " + std::to_string(records.slots()) + " of " + std::to_string(state.slots) +
          " slots lie in the " + state.DescribeSegment() + "; see voatm tables");
    }
  }

  bool Free(int slot) const { return IsFree(record, records[slot]); }

  Survey survey;
  const TableState& state;
  const RecordTable& record;
  Records records;
};

Json RowJson(const OpenTable& table, int slot) {
  const char* record = table.records[slot];
  Json unterminated = Json::array();
  for (const RecordField& field : table.record) {
    if (IsUnterminated(field, record)) unterminated.push_back(field.name);
  }
  return {{"slot", slot},
          {"free", table.Free(slot)},
          {"unterminated", std::move(unterminated)},
          {"record", RecordJson(table.record, record)}};
}

void PrintRowsJson(const OpenTable& table, const std::vector<int>& slots) {
  Json rows = Json::array();
  for (const int slot : slots) rows.push_back(RowJson(table, slot));
  PrintJson({{"table", table.record.name}, {"slots", table.state.slots}, {"rows", rows}});
}

std::string MarkedText(const RecordField& field, const char* record) {
  return FieldText(field, record) + (IsUnterminated(field, record) ? kUnterminatedMark : "");
}

// A column of a list: a field, or all one-character fields whose names differ in their number only.
struct ListColumn {
  std::string stem;
  std::vector<const RecordField*> fields;

  bool Takes(const RecordField& field, const std::string& field_stem) const {
    return field.kind == FieldKind::kCharacter && stem == field_stem && stem != field.name;
  }

  std::string Heading() const {
    if (fields.size() == 1) return fields.front()->name;
    return fields.front()->name + ("-" + std::string(fields.back()->name).substr(stem.size()));
  }

  std::string Cell(const char* record) const {
    if (fields.size() == 1) return MarkedText(*fields.front(), record);
    std::string cell;
    for (const RecordField* field : fields) {
      const std::string text = FieldText(*field, record);
      cell += text.empty() ? "." : text;
    }
    return cell;
  }
};

std::vector<ListColumn> ListColumnsOf(const RecordTable& table) {
  std::vector<ListColumn> columns;
  for (const RecordField& field : table) {
    if (field.kind == FieldKind::kBytes) continue;
    const std::string name = field.name;
    const std::string stem = name.substr(0, name.find_last_not_of("0123456789") + 1);
    auto column = std::find_if(columns.begin(), columns.end(),
                               [&](const ListColumn& each) { return each.Takes(field, stem); });
    if (column == columns.end()) column = columns.insert(column, ListColumn{stem, {}});
    column->fields.push_back(&field);
  }
  return columns;
}

// Headings, the longer ones in two lines when a row would be too wide to read.
std::vector<TextTable::Column> HeadingsOf(const std::vector<ListColumn>& columns) {
  constexpr std::size_t kWidest = 80;
  constexpr std::size_t kShort = 7;
  std::vector<TextTable::Column> headings = {{"SLOT", true}};
  std::size_t width = headings.front().heading.size();
  for (const ListColumn& column : columns) {
    headings.push_back({column.Heading(), column.fields.front()->kind == FieldKind::kInt32});
    width += 1 + headings.back().heading.size();
  }
  for (TextTable::Column& column : headings) {
    std::string& heading = column.heading;
    if (width <= kWidest || heading.size() <= kShort) continue;
    heading.insert(heading.find_last_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ"), "\n");
  }
  return headings;
}

void PrintRows(const OpenTable& table, const std::vector<int>& slots) {
  const std::vector<ListColumn> columns = ListColumnsOf(table.record);
  TextTable text(HeadingsOf(columns));
  for (const int slot : slots) {
    std::vector<std::string> cells = {std::to_string(slot)};
    for (const ListColumn& column : columns) cells.push_back(column.Cell(table.records[slot]));
    text.AddRow(cells);
  }
  text.Print();
}

ExitCode List(const Options& options) {
  const OpenTable table(options);
  std::vector<int> slots;
  for (int slot = 0; slot < table.records.slots(); ++slot) {
    if (options.all || !table.Free(slot)) slots.push_back(slot);
  }
  options.json ? PrintRowsJson(table, slots) : PrintRows(table, slots);
  return kDone;
}

std::string WholeText(const RecordTable& table, const RecordField& field, const char* record) {
  std::string text = MarkedText(field, record);
  if (field.kind == FieldKind::kText || field.kind == FieldKind::kCharacter) {
    text = '"' + FieldText(field, record) + '"';
    if (IsUnterminated(field, record)) text += kUnterminatedMark;
  }
  const std::string tail = TailText(field, record);
  if (tail.empty()) return text;
  return text + (table.confidential ? " (and bytes that are not shown)" : " then 00 " + tail);
}

void PrintWhole(const OpenTable& table, int slot) {
  const char* record = table.records[slot];
  std::printf("%s slot %d%s\n", table.record.name, slot, table.Free(slot) ? ", free" : "");
  for (const RecordField& field : table.record) {
    std::printf("  %-18s %s\n", field.name, WholeText(table.record, field, record).c_str());
  }
}

std::vector<int> FindSlots(const OpenTable& table, const Options& options) {
  const std::optional<int> number = ReadNumber(options.wanted);
  if (number.has_value() && !options.is_id) {
    if (*number >= table.records.slots()) return {};
    return {*number};
  }
  std::vector<int> slots;
  for (int slot = 0; slot < table.records.slots(); ++slot) {
    const bool considered = options.all || !table.Free(slot);
    if (considered && IdText(table.record, table.records[slot]) == options.wanted) {
      slots.push_back(slot);
    }
  }
  return slots;
}

std::string WhyNothing(const OpenTable& table, const Options& options, bool hidden) {
  const std::string name = table.record.name;
  if (hidden) return "slot " + options.wanted + " of " + name + " is free; --all shows it";
  if (options.is_id || !ReadNumber(options.wanted)) {
    return "no record " + options.wanted + " in " + name;
  }
  return "no slot " + options.wanted + " in " + name + ", which has " +
         std::to_string(table.records.slots()) + "; --id if it is an id";
}

ExitCode Show(const Options& options) {
  const OpenTable table(options);
  std::vector<int> slots = FindSlots(table, options);
  const bool hidden = slots.size() == 1 && !options.all && table.Free(slots.front());
  if (hidden) slots.clear();
  if (options.json) PrintRowsJson(table, slots);
  if (slots.empty()) {
    Say(WhyNothing(table, options, hidden));
    return kFindings;
  }
  for (const int slot : slots) {
    if (!options.json) PrintWhole(table, slot);
  }
  return kDone;
}

// Whether a slot is as the development host creates it, so that no row is needed for it.
bool IsUntouched(const OpenTable& table, int slot) {
  std::string fresh(table.record.record_size, '\0');
  fresh.replace(table.record.key().offset, std::strlen(records::kFreeSlot), records::kFreeSlot);
  return std::memcmp(fresh.data(), table.records[slot], fresh.size()) == 0;
}

ExitCode Dump(const Options& options) {
  const OpenTable table(options);
  const char* separator = "[";
  int next = 0;  // the slot of a row that does not say its own
  for (int slot = 0; slot < table.records.slots(); ++slot) {
    if (IsUntouched(table, slot)) continue;
    Json row = Json::object();
    if (slot != next) row["Slot"] = slot;
    row.update(SeedRow(table.record, table.records[slot]));
    std::printf("%s\n  %s", separator, row.dump().c_str());
    separator = ",";
    next = slot + 1;
  }
  std::printf("%s]\n", *separator == '[' ? "[" : "\n");
  return kDone;
}

Action DeclareList(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddTableArgument(list, &options->table);
  AddDataOptions(list, options.get());
  list->Flag("--all", &options->all, "Show free slots too");
  return [options] { return List(*options); };
}

Action DeclareShow(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddTableArgument(list, &options->table);
  list->Text("SLOT|ID", "", &options->wanted, "A slot's number, or the id of a record").Required();
  AddDataOptions(list, options.get());
  list->Flag("--id", &options->is_id, "What is given is an id, even when it is a number");
  list->Flag("--all", &options->all, "Show free slots too");
  return [options] { return Show(*options); };
}

Action DeclareDump(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddTableArgument(list, &options->table);
  AddDataOptions(list, options.get());
  return [options] { return Dump(*options); };
}

}  // namespace

const Verb kList = {
    "list", "List the records of a table",
    "One row a record, read without locks. Bytes without a meaning here are left out; voatm show\n"
    "has them. Characters of one name with numbers share a column, a point being none. A text "
    "that\n"
    "fills its field without a NUL is marked.\n\n"
    "JSON: {table, slots, rows: [{slot, free, unterminated: [field...], record: {field: "
    "value}}]};\n"
    "bytes, and texts that cannot be printed, are {hex}, without the zeros at their end.",
    "voatm list fit --home examples/home", DeclareList};

const Verb kShow = {
    "show", "Show a record whole",
    "Every field of the record in a slot, or of each record with an id: the text of the table's\n"
    "first field, or its number. A number is a slot unless --id is given. Bytes are hexadecimal,\n"
    "00*33 being 33 times 00. What stands behind a security id is not shown; voatm dump has it.\n\n"
    "Exit status: 1 when there is no such record, or the slot is free and --all was not given.\n\n"
    "JSON: as that of voatm list.",
    "voatm show atm ATM00003 --home examples/home", DeclareShow};

const Verb kDump = {
    "dump", "Write the records of a table as voatm serve reads them",
    "Writes a seed file for tables/ of a home. Serving it gives the same table, byte for\n"
    "byte: also the bytes behind a security id, so keep it as secret as the table.\n\n"
    "JSON, with --json or without: [{Slot, field: value}], a Slot where the row is not in the\n"
    "slot behind the row before; a value is {hex} when JSON text would not hold its bytes.",
    "voatm dump fit --home examples/home > atm_fit.json", DeclareDump};
