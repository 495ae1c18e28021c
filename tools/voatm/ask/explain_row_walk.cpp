#include "ask/explain_row_walk.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "show/record_view.h"

using records::FieldKind;
using records::RecordField;
using records::RecordTable;

namespace {

int FindRow(const Rows& rows, int start, const Facts& columns) {
  for (int slot = start; slot < rows.count(); ++slot) {
    if (std::all_of(columns.begin(), columns.end(), [&](const Fact& column) {
          return rows.Text(slot, column.name.c_str()) == column.value;
        })) {
      return slot;
    }
  }
  return kNoRow;
}

}  // namespace

Rows::Rows(const char* short_name, const void* first, int count)
    : table_(*std::find_if(
          records::kRecordTables.begin(), records::kRecordTables.end(),
          [&](const RecordTable& table) { return strcmp(table.short_name, short_name) == 0; })),
      first_(static_cast<const char*>(first)),
      // Start-up stores what shmat returns for a failure like any other address.
      count_(first == nullptr || reinterpret_cast<std::intptr_t>(first) == -1 ? 0 : count) {}

std::string Rows::Text(int slot, const char* name) const {
  const RecordField& field =
      *std::find_if(table_.begin(), table_.end(),
                    [&](const RecordField& each) { return strcmp(each.name, name) == 0; });
  const char* const bytes = Row(slot) + field.offset;
  if (field.kind != FieldKind::kInt32) return {bytes, strnlen(bytes, field.size)};
  int number;
  memcpy(&number, bytes, sizeof number);
  return std::to_string(number);
}

std::string Rows::Name(int slot) const {
  return std::string(table_.name) + " slot " + std::to_string(slot);
}

Facts Rows::All(int slot) const {
  Facts facts;
  for (const RecordField& field : table_) {
    if (field.kind != FieldKind::kBytes) facts.push_back({field.name, FieldText(field, Row(slot))});
  }
  return facts;
}

std::string SlotOrNone(int slot) {
  return slot == kNoRow ? "none" : "slot " + std::to_string(slot);
}

int Walk(const Rows& rows, const Levels& levels, int start, Explanation* explanation) {
  Facts settled;
  int slot = start;
  for (const Level& level : levels) {
    settled.push_back({level.column, ""});
    int found = kNoRow;
    for (const std::string& key : level.keys) {
      settled.back().value = key;
      found = FindRow(rows, slot, settled);
      explanation->tries.push_back({level.column, key, SlotOrNone(found)});
      if (found != kNoRow) break;
    }
    if (found == kNoRow) return kNoRow;
    slot = found;
  }
  return slot;
}

bool HasAnyKey(const Rows& rows, int slot, const Levels& levels) {
  return std::all_of(levels.begin(), levels.end(), [&](const Level& level) {
    const std::string text = rows.Text(slot, level.column);
    return std::find(level.keys.begin(), level.keys.end(), text) != level.keys.end();
  });
}

void AddShadow(const Rows& rows, int slot, Explanation* explanation) {
  std::string text;
  for (const Fact& fact : rows.All(slot)) text += (text.empty() ? "" : " ") + fact.value;
  explanation->shadowed.push_back({rows.Name(slot), text});
}

void AddShadows(const Rows& rows, int winner, const Levels& levels, Explanation* explanation) {
  for (int slot = 0; winner != kNoRow && slot < rows.count(); ++slot) {
    if (slot != winner && HasAnyKey(rows, slot, levels)) AddShadow(rows, slot, explanation);
  }
}
