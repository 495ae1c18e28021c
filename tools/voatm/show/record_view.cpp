#include "show/record_view.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

using records::FieldKind;
using records::RecordField;
using records::RecordTable;

constexpr std::size_t kShortestRun = 4;  // that is folded

std::string_view BytesOf(const RecordField& field, const char* record) {
  return {record + field.offset, field.size};
}

// The characters before the first NUL.
std::string_view TextOf(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }

std::string_view WithoutZerosAtEnd(std::string_view bytes) {
  return bytes.substr(0, bytes.find_last_not_of('\0') + 1);
}

bool IsPrintable(std::string_view text) { return std::all_of(text.begin(), text.end(), IsPlain); }

std::string HexOf(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  for (const char byte : bytes) {
    hex += kDigits[static_cast<unsigned char>(byte) / 16];
    hex += kDigits[static_cast<unsigned char>(byte) % 16];
  }
  return hex;
}

std::string FoldedHex(std::string_view bytes) {
  std::string folded;
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t end = std::min(bytes.find_first_not_of(bytes[i], i), bytes.size());
    const std::size_t run = end - i >= kShortestRun ? end - i : 1;
    folded += (folded.empty() ? "" : " ") + HexOf(bytes.substr(i, 1));
    if (run > 1) folded += "*" + std::to_string(run);
    i += run;
  }
  return folded;
}

// Between quotes a backslash of the text is told from one of a character that is not printed.
std::string Unambiguous(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    escaped += c == '\\' ? "\\\\" : Readable(std::string_view(&c, 1));
  }
  return escaped;
}

int NumberOf(std::string_view bytes) {
  int number = 0;
  std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

Json HexJson(std::string_view bytes) { return {{"hex", HexOf(WithoutZerosAtEnd(bytes))}}; }

Json TextJson(std::string_view text) {
  return IsPrintable(text) ? Json(std::string(text)) : HexJson(text);
}

Json FieldJson(const RecordField& field, const char* record) {
  const std::string_view bytes = BytesOf(field, record);
  switch (field.kind) {
    case FieldKind::kText:
    case FieldKind::kCharacter:
      return TextJson(TextOf(bytes));
    case FieldKind::kInt32:
      return NumberOf(bytes);
    case FieldKind::kBytes:
      break;
  }
  return HexJson(bytes);
}

// From which the same bytes come back: a text with anything behind its NUL, or without one, in
// hexadecimal.
Json ExactJson(const RecordField& field, const char* record) {
  const std::string_view bytes = BytesOf(field, record);
  const std::string_view used = WithoutZerosAtEnd(bytes);
  const bool whole = used == TextOf(bytes) && used.size() < field.size;
  return field.kind != FieldKind::kText || whole ? FieldJson(field, record) : HexJson(bytes);
}

}  // namespace

bool IsFree(const RecordTable& table, const char* record) {
  return TextOf(BytesOf(table.key(), record)) == records::kFreeSlot;
}

bool IsUntouched(const RecordTable& table, const char* record) {
  const std::vector<char> untouched = table.FreeRecord();
  return std::equal(untouched.begin(), untouched.end(), record);
}

bool IsUnterminated(const RecordField& field, const char* record) {
  return field.kind == FieldKind::kText && TextOf(BytesOf(field, record)).size() == field.size;
}

std::string FieldText(const RecordField& field, const char* record) {
  const std::string_view bytes = BytesOf(field, record);
  switch (field.kind) {
    case FieldKind::kText:
    case FieldKind::kCharacter:
      return std::string(TextOf(bytes));
    case FieldKind::kInt32:
      return std::to_string(NumberOf(bytes));
    case FieldKind::kBytes:
      break;
  }
  return FoldedHex(bytes);
}

std::string MarkedText(const RecordField& field, const char* record, const std::string& quote) {
  const bool marked = IsUnterminated(field, record);
  const std::string text = FieldText(field, record);
  return quote + (quote.empty() ? text : Unambiguous(text)) + quote +
         (marked ? " (unterminated)" : "");
}

std::string IdText(const RecordTable& table, const char* record) {
  return IsFree(table, record) ? records::kFreeSlot : FieldText(table.id(), record);
}

namespace {

std::string WholeText(const RecordTable& table, const RecordField& field, const char* record) {
  const bool text = field.kind == FieldKind::kText || field.kind == FieldKind::kCharacter;
  std::string whole = MarkedText(field, record, text ? "\"" : "");
  if (field.kind != FieldKind::kText || IsUnterminated(field, record)) return whole;
  const std::string_view bytes = BytesOf(field, record);
  const std::string_view tail = bytes.substr(TextOf(bytes).size() + 1);
  if (WithoutZerosAtEnd(tail).empty()) return whole;
  if (table.confidential) return whole + " (and bytes that are not shown)";
  return whole + " then 00 " + FoldedHex(tail);
}

}  // namespace

void PrintWhole(const RecordTable& table, int slot, const char* record) {
  NamedTexts fields;
  for (const RecordField& field : table) {
    fields.emplace_back(field.name, WholeText(table, field, record));
  }
  PrintFacts(
      table.name + (" slot " + std::to_string(slot)) + (IsFree(table, record) ? ", free" : ""),
      fields);
}

Json RecordJson(const RecordTable& table, const char* record) {
  Json json = Json::object();
  for (const RecordField& field : table) json[field.name] = FieldJson(field, record);
  return json;
}

Json SlotsJson(const RecordTable& table, int slots, int readable) {
  return {{"table", table.name}, {"slots", slots}, {"complete", readable == slots}};
}

Json SlotJson(const RecordTable& table, int slot, const char* record) {
  Json unterminated = Json::array();
  for (const RecordField& field : table) {
    if (IsUnterminated(field, record)) unterminated.push_back(field.name);
  }
  return {{"slot", slot},
          {"free", IsFree(table, record)},
          {"unterminated", std::move(unterminated)},
          {"record", RecordJson(table, record)}};
}

Json SeedRow(const RecordTable& table, const char* record) {
  Json row = Json::object();
  for (const RecordField& field : table) {
    const bool is_zero = WithoutZerosAtEnd(BytesOf(field, record)).empty();
    if (is_zero && &field != &table.key()) continue;
    row[field.name] = is_zero ? HexJson("") : ExactJson(field, record);
  }
  return row;
}

Json ChangesJson(const RecordTable& table, const char* before, const char* after) {
  const auto shown = table.confidential ? FieldJson : ExactJson;
  Json changes = Json::array();
  for (const RecordField& field : table) {
    if (BytesOf(field, before) == BytesOf(field, after)) continue;
    changes.push_back(
        {{"field", field.name}, {"before", shown(field, before)}, {"after", shown(field, after)}});
  }
  return changes;
}
