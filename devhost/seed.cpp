#include "devhost/seed.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "devhost/field_value.h"
#include "devhost/system_call.h"

namespace devhost {
namespace {

using Json = nlohmann::ordered_json;
using Event = Json::parse_event_t;

constexpr const char* kSlotMember = "Slot";

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

// Puts the rows of a text into a table while the parser goes over it; a row is kept no longer.
class SeedReader {
 public:
  SeedReader(const records::RecordTable& table, const std::string& text, std::optional<int> slots,
             TableImage* image)
      : table_(table),
        text_(text),
        limit_(slots.has_value() ? table.count.key : "SEMMSL of kernel.sem"),
        most_(slots.has_value() ? *slots : MostSemaphoresOfASet()),
        image_(*image),
        taken_(text.data()) {
    Grow(slots.value_or(0));
  }

  void Read() {
    const auto watch = [this](int depth, Event event, Json& parsed) {
      return Take(depth, event, parsed);
    };
    const char* const end = text_.data() + text_.size();
    try {
      [[maybe_unused]] const Json no_rows = Json::parse(
          TracingIterator(text_.data(), &taken_), TracingIterator(end, &taken_), watch, true, true);
    } catch (const Json::parse_error& error) {
      if (error.byte > text_.size()) RefuseText("the text ends too early");
      RefuseText("not JSON from \"" + Quotable({*taken_}) + "\" on");
    } catch (const Json::exception&) {
      RefuseText("a number that is too large");
    }
  }

 private:
  // Returns whether the parser shall keep what it has parsed.
  bool Take(int depth, Event event, const Json& parsed) {
    const bool starts = event == Event::object_start || event == Event::array_start;
    if (depth == 0 && (event == Event::value || event == Event::object_start)) {
      RefuseText("not an array of objects");
    }
    if (depth == 1 && (starts || event == Event::value)) {
      ++image_.rows;
      row_start_ = taken_;
      members_.clear();
      if (event != Event::object_start) Refuse("a row must be an object");
    }
    if (depth == 2 && starts) value_members_.clear();
    if (event == Event::key) NoteMember(depth, parsed.get<std::string>());
    const bool row_ends = depth == 1 && event == Event::object_end;
    if (row_ends) TakeRow(parsed);
    return !row_ends;
  }

  // The parser keeps one of two members of the same name, so they are found here.
  void NoteMember(int depth, const std::string& name) {
    const bool first = depth == 2   ? members_.emplace(name, taken_).second
                       : depth == 3 ? value_members_.insert(name).second
                                    : true;
    if (!first) Refuse("member \"" + Quotable(name) + "\" given twice");
  }

  void TakeRow(const Json& row) {
    if (row.contains(kSlotMember)) {
      const std::optional<int> given = IntOf(row[kSlotMember]);
      if (!given.has_value()) Refuse("not a whole number", kSlotMember);
      next_slot_ = *given;
    }
    const int slot = next_slot_;
    CheckSlot(slot);
    next_slot_ = slot + 1;
    Grow(next_slot_);
    char* record = image_.records.data() + static_cast<std::size_t>(slot) * table_.record_size;
    std::memset(record, 0, table_.record_size);
    FillRecord(row, record);
  }

  void CheckSlot(int slot) {
    if (slot < 0 || slot >= most_) {
      Refuse("no slot " + std::to_string(slot) + ", " + limit_ + " is " + std::to_string(most_));
    }
    if (!slots_taken_.insert(slot).second) {
      Refuse("slot " + std::to_string(slot) + " given twice");
    }
  }

  void Grow(int slots) {
    AddFreeSlots(table_, slots, &image_.records);
    image_.slots = std::max(image_.slots, slots);
  }

  void FillRecord(const Json& row, char* record) const {
    for (const auto& [name, value] : row.items()) {
      if (name == kSlotMember) continue;
      const records::RecordField* const field = table_.Find(name);
      if (field == nullptr) Refuse("unknown field", name);
      if (const auto cause = PutField(*field, value, record)) Refuse(*cause, name);
    }
    const auto key = row.find(table_.key().name);
    if (key == row.end() || (key->is_string() && key->get_ref<const std::string&>().empty())) {
      Refuse(std::string("no key text ") + table_.key().name);
    }
  }

  // Ends reading, with the place of the row, or of a member of it.
  [[noreturn]] void Refuse(const std::string& cause, const std::string& member = "") const {
    std::string row = ", row " + std::to_string(image_.rows);
    if (!member.empty()) row += ", field " + Quotable(member);
    const auto found = members_.find(member);
    RefuseAt(found == members_.end() ? row_start_ : found->second, cause, row);
  }

  // Ends reading, with the place that the parser has come to.
  [[noreturn]] void RefuseText(const std::string& cause) const { RefuseAt(taken_, cause, ""); }

  [[noreturn]] void RefuseAt(const char* place, const std::string& cause,
                             const std::string& row) const {
    const auto line = std::count(text_.data(), place, '\n');
    const auto from = std::make_reverse_iterator(place);
    const auto column = std::find(from, std::make_reverse_iterator(text_.data()), '\n') - from;
    throw SeedError(image_.file, static_cast<std::size_t>(line) + 1,
                    static_cast<std::size_t>(column) + 1, cause, row);
  }

  const records::RecordTable& table_;
  const std::string& text_;
  const char* const limit_;  // what says how many slots there may be
  const int most_;
  TableImage& image_;
  const char* taken_;  // the last character that the parser took
  int next_slot_ = 0;  // of a row that does not say its own
  std::set<int> slots_taken_;

  // Of the row that is being parsed.
  const char* row_start_ = nullptr;
  std::map<std::string, const char*> members_;
  std::set<std::string> value_members_;  // of an object in it
};

}  // namespace

SeedError::SeedError(const std::string& file, std::size_t at_line, std::size_t at_column,
                     const std::string& cause, const std::string& row)
    : std::runtime_error(cause + ": " + file + ":" + std::to_string(at_line) +
                         (row.empty() ? ", column " + std::to_string(at_column) : row)),
      path(file),
      line(at_line),
      column(at_column),
      text(cause + row) {}

void AddFreeSlots(const records::RecordTable& table, int slots, std::vector<char>* bytes) {
  const std::size_t size = static_cast<std::size_t>(slots) * table.record_size;
  const std::vector<char> free = table.FreeRecord();
  while (bytes->size() < size) bytes->insert(bytes->end(), free.begin(), free.end());
}

TableImage ReadSeed(const records::RecordTable& table, const std::string& path,
                    std::optional<int> slots) {
  std::string text;
  const int error = ReadFile(path, &text);
  if (error != 0 && error != ENOENT) {
    throw SeedError(path, 1, 1, std::string("cannot read the file, ") + std::strerror(error), "");
  }
  TableImage image;
  image.file = path;
  image.has_file = error == 0;
  SeedReader(table, image.has_file ? text : "[]", slots, &image).Read();
  return image;
}

std::string SeedPath(const records::RecordTable& table, const std::string& from) {
  std::error_code error;
  const std::filesystem::path path = from;
  const auto type = std::filesystem::status(path, error).type();
  if (error) throw std::runtime_error(error.message() + ": " + from);
  if (type != std::filesystem::file_type::directory) return from;
  const std::filesystem::path tables = path / "tables";
  return (std::filesystem::is_directory(tables, error) ? tables : path) / table.seed_file;
}

}  // namespace devhost
