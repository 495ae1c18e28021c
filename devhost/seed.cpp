#include "devhost/seed.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

namespace devhost {
namespace {

using Json = nlohmann::ordered_json;
using Event = Json::parse_event_t;
using Cause = std::optional<std::string>;  // why something is refused

constexpr const char* kSlotMember = "Slot";
constexpr const char* kHexMember = "hex";

// Reads a file whole. Returns nothing when there is none.
std::optional<std::string> ReadFile(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "r"), &std::fclose);
  if (file == nullptr && errno == ENOENT) return std::nullopt;
  std::string text;
  char chunk[4096];
  std::size_t size = 0;
  while (file != nullptr && (size = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) {
    text.append(chunk, size);
  }
  if (file == nullptr || std::ferror(file.get()) != 0) {
    throw std::runtime_error(std::string(std::strerror(errno)) + ": cannot read " + path);
  }
  return text;
}

// Hands a text to the parser and leaves the place of the last character it took, so that the
// parser's events have a place.
class TracingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  TracingIterator(const char* next, const char** taken) : next_(next), taken_(taken) {}
  char operator*() const {
    *taken_ = next_;
    return *next_;
  }
  TracingIterator& operator++() {
    ++next_;
    return *this;
  }
  bool operator==(const TracingIterator& other) const { return next_ == other.next_; }
  bool operator!=(const TracingIterator& other) const { return next_ != other.next_; }

 private:
  const char* next_;
  const char** taken_;
};

// A text of the file as JSON writes it, so that no byte of it ends or splits a message.
std::string Shown(const std::string& text) {
  const std::string quoted = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  return quoted.substr(1, quoted.size() - 2);
}

// A parsed seed file, with the place of every row and of every member of a row.
class SeedFile {
 public:
  SeedFile(std::string path, std::string text) : path_(std::move(path)), text_(std::move(text)) {
    try {
      Parse();
    } catch (const Json::exception& error) {
      const std::string what = error.what();  // "[type and number] cause"
      throw std::runtime_error(what.substr(what.find(']') + 2) + ": " + path_);
    }
    if (!rows_.is_array()) throw std::runtime_error("not an array of objects: " + path_);
  }

  const Json& rows() const { return rows_; }

  // Ends seeding, with the place of a row, or of a member of it.
  [[noreturn]] void Refuse(const std::string& cause, std::size_t row,
                           const std::string& member = "") const {
    const RowPlace& place = places_[row];
    const auto found = place.members.find(member);
    const char* start = found == place.members.end() ? place.start : found->second;
    const auto line = 1 + std::count(text_.data(), start, '\n');
    std::string where = path_ + ":" + std::to_string(line) + ", row " + std::to_string(row + 1);
    if (!member.empty()) where += ", field " + Shown(member);
    throw std::runtime_error(cause + ": " + where);
  }

 private:
  struct RowPlace {
    const char* start;
    std::map<std::string, const char*> members;
  };

  void Parse() {
    const char* taken = text_.data();
    const auto watch = [&](int depth, Event event, Json& parsed) {
      const bool starts = event == Event::object_start || event == Event::array_start;
      if (depth == 1 && (starts || event == Event::value)) places_.push_back({taken, {}});
      if (depth == 2 && starts) value_members_.clear();
      if (event == Event::key) NoteMember(depth, parsed.get<std::string>(), taken);
      return true;
    };
    rows_ = Json::parse(TracingIterator(text_.data(), &taken),
                        TracingIterator(text_.data() + text_.size(), &taken), watch, true, true);
  }

  // The parser keeps one of two members of the same name, so they are found here.
  void NoteMember(int depth, const std::string& name, const char* place) {
    const std::size_t row = places_.size() - 1;
    const bool first = depth == 2   ? places_[row].members.emplace(name, place).second
                       : depth == 3 ? value_members_.insert(name).second
                                    : true;
    if (!first) Refuse("member \"" + Shown(name) + "\" given twice", row);
  }

  std::string path_;
  std::string text_;
  Json rows_;
  std::vector<RowPlace> places_;
  std::set<std::string> value_members_;  // of the object being parsed inside a row
};

int HexDigit(char digit) {
  static constexpr char kDigits[] = "0123456789abcdefABCDEF";
  const char* found = digit == '\0' ? nullptr : std::strchr(kDigits, digit);
  if (found == nullptr) return -1;
  const auto value = static_cast<int>(found - kDigits);
  return value < 16 ? value : value - 6;
}

Cause PutHex(const records::RecordField& field, const Json& value, char* out) {
  if (value.size() != 1 || !value.contains(kHexMember) || !value[kHexMember].is_string()) {
    return "an object must be {\"hex\": \"...\"}";
  }
  const auto digits = value[kHexMember].get<std::string>();
  if (digits.size() % 2 != 0) return "an odd number of hexadecimal digits";
  if (digits.size() / 2 > field.size) {
    return std::to_string(digits.size() / 2) + " bytes do not fit into " +
           std::to_string(field.size);
  }
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const int high = HexDigit(digits[i]);
    const int low = HexDigit(digits[i + 1]);
    if (high < 0 || low < 0) return "not hexadecimal: \"" + Shown(digits.substr(i, 2)) + "\"";
    out[i / 2] = static_cast<char>(high * 16 + low);
  }
  return std::nullopt;
}

Cause PutText(const records::RecordField& field, const Json& value, char* out) {
  if (!value.is_string()) return "not a text";
  const auto text = value.get<std::string>();
  if (text.size() >= field.size) {
    return "a text of " + std::to_string(text.size()) + " characters, " +
           std::to_string(field.size - 1) + " fit";
  }
  if (text.find('\0') != std::string::npos) return "a NUL inside a text";
  text.copy(out, text.size());
  return std::nullopt;
}

Cause PutCharacter(const Json& value, char* out) {
  if (!value.is_string() || value.get_ref<const std::string&>().size() != 1) {
    return "not a text of one character";
  }
  *out = value.get_ref<const std::string&>().front();
  return std::nullopt;
}

// The integer of a JSON value when it lies in int's range.
std::optional<int> IntOf(const Json& value) {
  using Limits = std::numeric_limits<int>;
  if (!value.is_number_integer()) return std::nullopt;
  const bool huge = value.is_number_unsigned() &&
                    value.get<std::uint64_t>() > static_cast<std::uint64_t>(Limits::max());
  const auto number = value.get<std::int64_t>();
  if (huge || number < Limits::min() || number > Limits::max()) return std::nullopt;
  return static_cast<int>(number);
}

Cause PutInt32(const Json& value, char* out) {
  const std::optional<int> number = IntOf(value);
  if (!number.has_value()) return "not a whole number of 32 bits";
  std::memcpy(out, &*number, sizeof *number);
  return std::nullopt;
}

Cause PutField(const records::RecordField& field, const Json& value, char* out) {
  if (value.is_object()) return PutHex(field, value, out);
  switch (field.kind) {
    case records::FieldKind::kText:
      return PutText(field, value, out);
    case records::FieldKind::kCharacter:
      return PutCharacter(value, out);
    case records::FieldKind::kInt32:
      return PutInt32(value, out);
    case records::FieldKind::kBytes:
      break;
  }
  return "bytes are given as {\"hex\": \"...\"}";
}

void FillRecord(const records::RecordTable& table, const SeedFile& file, std::size_t row,
                char* record) {
  for (const auto& [name, value] : file.rows()[row].items()) {
    if (name == kSlotMember) continue;
    const records::RecordField* field = std::find_if(
        table.begin(), table.end(),
        [&wanted = name](const records::RecordField& each) { return wanted == each.name; });
    if (field == table.end()) file.Refuse("unknown field", row, name);
    if (const Cause cause = PutField(*field, value, record + field->offset)) {
      file.Refuse(*cause, row, name);
    }
  }
  const Json& members = file.rows()[row];
  const auto key = members.find(table.key().name);
  if (key == members.end() || (key->is_string() && key->get_ref<const std::string&>().empty())) {
    file.Refuse(std::string("no key text ") + table.key().name, row);
  }
}

}  // namespace

int Seed(const records::RecordTable& table, const std::string& path, char* records, int slots) {
  const std::optional<std::string> text = ReadFile(path);
  if (!text.has_value()) return 0;
  const SeedFile file(path, *text);
  std::set<int> taken;
  int slot = 0;
  for (std::size_t row = 0; row < file.rows().size(); ++row, ++slot) {
    const Json& members = file.rows()[row];
    if (!members.is_object()) file.Refuse("a row must be an object", row);
    if (members.contains(kSlotMember)) {
      const std::optional<int> given = IntOf(members[kSlotMember]);
      if (!given.has_value()) file.Refuse("not a whole number", row, kSlotMember);
      slot = *given;
    }
    if (slot < 0 || slot >= slots) {
      file.Refuse("no slot " + std::to_string(slot) + ", " + table.count.key + " is " +
                      std::to_string(slots),
                  row);
    }
    if (!taken.insert(slot).second) {
      file.Refuse("slot " + std::to_string(slot) + " given twice", row);
    }
    char* record = records + static_cast<std::size_t>(slot) * table.record_size;
    std::memset(record, 0, table.record_size);
    FillRecord(table, file, row, record);
  }
  return static_cast<int>(taken.size());
}

}  // namespace devhost
