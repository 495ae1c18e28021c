// voatm list: the records of a table, a row each.
#include <algorithm>
#include <memory>
#include <optional>
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

struct ListOptions : DataOptions {
  const RecordTable* table = nullptr;
  bool all = false;
};

// A field, or all one-character fields whose names differ in their number only.
struct Column {
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

std::vector<Column> ColumnsOf(const RecordTable& table) {
  std::vector<Column> columns;
  for (const RecordField& field : table) {
    if (field.kind == FieldKind::kBytes) continue;
    const std::string name = field.name;
    const std::string stem = name.substr(0, name.find_last_not_of("0123456789") + 1);
    auto column = std::find_if(columns.begin(), columns.end(),
                               [&](const Column& each) { return each.Takes(field, stem); });
    if (column == columns.end()) column = columns.insert(column, Column{stem, {}});
    column->fields.push_back(&field);
  }
  return columns;
}

// Headings, the longer ones in two lines when a row would be too wide to read.
std::vector<TextTable::Column> HeadingsOf(const std::vector<Column>& columns) {
  constexpr std::size_t kWidest = 80;
  constexpr std::size_t kShort = 7;
  std::vector<TextTable::Column> headings = {{"SLOT", true}};
  std::size_t width = headings.front().heading.size();
  for (const Column& column : columns) {
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

void PrintJsonRows(const Records& records, bool all) {
  const RecordTable& table = *records.state().record;
  JsonList list(SlotsJson(table, records.state().slots, records.slots()));
  records.ForEach(all,
                  [&](int slot, const char* record) { list.Add(SlotJson(table, slot, record)); });
  list.Close();
}

void PrintTextRows(const Records& records, bool all) {
  const std::vector<Column> columns = ColumnsOf(*records.state().record);
  TextTable text(HeadingsOf(columns));
  records.ForEach(all, [&](int slot, const char* record) {
    std::vector<std::string> cells = {std::to_string(slot)};
    for (const Column& column : columns) cells.push_back(column.Cell(record));
    text.AddRow(cells);
  });
  text.Print();
}

ExitCode List(const ListOptions& options) {
  const Records records(SurveyTable(options.home, *options.table));
  options.json ? PrintJsonRows(records, options.all) : PrintTextRows(records, options.all);
  const std::string shortage = records.state().Shortage();
  if (shortage.empty()) return kDone;
  Say(shortage);
  return kFindings;
}

Action DeclareList(OptionList* list) {
  const auto options = std::make_shared<ListOptions>();
  AddTableArgument(list, &options->table);
  AddDataOptions(list, options.get());
  list->Flag("--all", &options->all, "Show free slots too");
  return [options] { return List(*options); };
}

}  // namespace

const Verb kList = {
    "list", "List the records of a table",
    "One row a record, read without locks. Bytes without a meaning here are left out; voatm show\n"
    "has them. Characters of one name with numbers share a column, a point being none. A text\n"
    "that fills its field without a NUL is marked.\n\n"
    "Exit status: 1 when configured slots lie behind the end of the segment.\n\n"
    "JSON: {table, slots, complete, rows: [{slot, free, unterminated: [field...],\n"
    "record: {field: value}}]}, a row a line; bytes, and texts that cannot be printed, are {hex},\n"
    "without the zeros at their end.",
    "voatm list fit --home examples/home", DeclareList};
