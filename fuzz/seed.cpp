// Seed rows of the development host: refused with their place, or loaded as their text says.
#include "devhost/seed.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

#include "support.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kSlots = 3;

// Whether a refusal ends as it should behind its path: ":line, row number", or a column.
bool IsPlace(const std::string& rest, const std::string& text) {
  int line = 0, number = 0;
  if (std::sscanf(rest.c_str(), ":%d, row %d", &line, &number) != 2 &&
      std::sscanf(rest.c_str(), ":%d, column %d", &line, &number) != 2) {
    return false;
  }
  return number >= 1 && line >= 1 && line <= 1 + std::count(text.begin(), text.end(), '\n');
}

// The path may stand in the text as well, so any of those said may be the place.
void CheckRefusal(const std::string& said, const std::string& text) {
  const std::string path = std::string(": ") + InputFile::kPath;
  bool placed = false;
  for (std::size_t at = said.find(path, 1); at != std::string::npos; at = said.find(path, at + 1)) {
    placed = placed || IsPlace(said.substr(at + path.size()), text);
  }
  Require(placed, "a refusal has a cause, a path, a line and a row or column");
}

// The bytes that a field's value stands for.
std::string BytesOf(const records::RecordField& field, const Json& value) {
  std::string bytes;
  if (value.is_number()) {
    const int number = value;
    bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
    Require(value == number, "a number that an int holds");
  } else if (value.is_object()) {
    const std::string digits = value["hex"];
    for (std::size_t i = 0; i < digits.size(); i += 2) {
      bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
  } else {
    bytes = value;
    const bool character = field.kind == records::FieldKind::kCharacter;
    Require(character ? bytes.size() == 1 : bytes.size() < field.size, "a text with its end");
  }
  Require(bytes.size() <= field.size, "a value fits its field");
  bytes.resize(field.size);
  return bytes;
}

void PutFree(const records::RecordTable& table, char* record) {
  std::memset(record, 0, table.record_size);
  std::strcpy(record + table.key().offset, records::kFreeSlot);
}

// Each row stands in its slot, and the slots without a row are free.
void CheckRows(const records::RecordTable& table, const Json& rows, devhost::TableImage image) {
  int slot = -1;
  for (const Json& row : rows) {
    slot = row.value("Slot", slot + 1);
    Require(slot >= 0 && slot < image.slots, "a slot of the table");
    char* record = image.records.data() + static_cast<std::size_t>(slot) * table.record_size;
    for (const records::RecordField& field : table) {
      const std::string bytes = row.contains(field.name) ? BytesOf(field, row[field.name])
                                                         : std::string(field.size, '\0');
      Require(std::memcmp(record + field.offset, bytes.data(), bytes.size()) == 0, "a field");
    }
    PutFree(table, record);
  }
  std::vector<char> free(image.records.size());
  for (std::size_t at = 0; at < free.size(); at += table.record_size) PutFree(table, &free[at]);
  Require(image.records == free, "the other slots are free");
}

}  // namespace

FUZZ_TARGET(seed) {
  static InputFile file;
  FuzzedDataProvider input(bytes, size);
  const auto chosen = input.ConsumeIntegralInRange<std::size_t>(0, 2 * records::kTableCount - 1);
  const records::RecordTable& table = records::kRecordTables[chosen % records::kTableCount];
  const bool bounded = chosen < records::kTableCount;
  const std::string text = input.ConsumeRemainingBytesAsString();
  file.Write(text);
  try {
    const std::optional<int> slots = bounded ? std::optional<int>(kSlots) : std::nullopt;
    devhost::TableImage image = devhost::ReadSeed(table, InputFile::kPath, slots);
    const Json parsed = Json::parse(text, nullptr, true, true);
    Require(parsed.is_array() && parsed.size() == static_cast<std::size_t>(image.rows),
            "a row an object");
    Require(!bounded || image.slots == kSlots, "as many slots as were given");
    CheckRows(table, parsed, std::move(image));
  } catch (const std::runtime_error& refusal) {
    CheckRefusal(refusal.what(), text);
  }
  return 0;
}
