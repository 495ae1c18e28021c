// voatm set: fields of a record.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "devhost/field_value.h"
#include "verbs/served_table.h"
#include "verbs/verbs.h"

namespace {

using records::RecordField;
using records::RecordTable;

struct Options : ChangeOptions {
  int slot = 0;
  std::vector<std::string> assignments;  // FIELD=VALUE
};

const RecordField& FieldNamed(const RecordTable& table, const std::string& name) {
  if (const RecordField* const field = table.Find(name)) return *field;
  std::string known;
  for (const RecordField& field : table) {
    known += (known.empty() ? "" : ", ") + std::string(field.name);
  }
  throw UsageError("no field \"" + name + "\" in " + table.name + "; there are " + known);
}

// The value as a seed file would have it.
Json ValueOf(const RecordField& field, const std::string& text) {
  if (!text.empty() && text.front() == '{') return Json::parse(text, nullptr, false);
  const auto number = ReadNumber(text);
  if (field.kind == records::FieldKind::kInt32 && number.has_value()) return *number;
  return text;
}

void Assign(const RecordTable& table, const std::string& assignment, char* record) {
  const std::size_t equals = assignment.find('=');
  if (equals == std::string::npos) throw UsageError("\"" + assignment + "\" is not FIELD=VALUE");
  const RecordField& field = FieldNamed(table, assignment.substr(0, equals));
  std::memset(record + field.offset, 0, field.size);
  const auto cause =
      devhost::PutField(field, ValueOf(field, assignment.substr(equals + 1)), record);
  if (cause.has_value()) throw UsageError(assignment + ": " + *cause);
}

ExitCode Set(const Options& options) {
  const RecordTable& table = *options.table;
  ServedTable served(options);
  if (options.slot >= served.slots()) {
    throw Refusal("no slot " + std::to_string(options.slot) + " in " + table.name + ", which has " +
                  std::to_string(served.slots()));
  }
  served.Change(options.slot, [&](char* record) {
    if (IsFree(table, record)) {
      throw Refusal("slot " + std::to_string(options.slot) + " of " + table.name +
                    " is free; voatm load fills it");
    }
    for (const std::string& assignment : options.assignments) Assign(table, assignment, record);
    if (record[table.key().offset] == '\0')
      throw UsageError(std::string("no key text ") + table.key().name);
  });
  served.Report();
  return kDone;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddTableArgument(list, &options->table);
  list->Number("SLOT", 0, INT_MAX, &options->slot, "The number of the record's slot").Required();
  list->Texts("FIELD=VALUE", "", OptionRow::kAnyNumber, &options->assignments,
              "A field by its name, and what it is to hold")
      .Required();
  AddChangeOptions(list, options.get());
  return [options] { return RunUnlessRefused([&] { return Set(*options); }); };
}

}  // namespace

const Verb kSet = {
    "set", "Set fields of a record in a table of voatm serve",
    "Takes the slot as a driver does, writes the fields and gives the slot back; shows each field\n"
    "before and after. A text is given as it is, a number in decimal digits, and bytes of any "
    "field\n"
    "as {\"hex\": \"...\"}. The tables of a live switch are never written to.\n\n"
    "Exit status: 1 when the slot is free, stays held, or is not voatm "
    "serve's.\n\n"
    "JSON: {table, dry_run, rows: [{slot, changes: [{field, before, after}]}]}, no row without a\n"
    "change.",
    "voatm set atm 2 GroupingKey=MALL --home examples/home", Declare};
