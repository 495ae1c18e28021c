// The configuration reader against its format, read slowly from a whole text.
#include <optional>
#include <string_view>

#include "support.h"
#include "vocfgutil.h"

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kLongest = VoCfgUtil::kMaxField;
constexpr std::size_t kReaderBuffer = 16384;
constexpr std::size_t kFarthest = 64;  // where a text may begin before that buffer's end
constexpr std::string_view kBlanks = " \t\r";

struct Entry {
  std::string key;
  int line = 0;
  Texts fields = {};
  bool readable = true;
};

struct Model {
  std::vector<Entry> entries;
  Texts groups;
};

bool EndsField(const std::string& line, std::size_t at) {
  return at == line.size() || kBlanks.find(line[at]) != std::string_view::npos;
}

// Moves the field that begins here from the line's rest to field. Returns false when it is broken.
bool TakeField(std::string& rest, std::string& field) {
  const bool quoted = rest[0] == '"';
  std::size_t at = quoted ? 1 : 0;
  field.clear();
  for (; quoted ? at < rest.size() && rest[at] != '"' : !EndsField(rest, at); ++at) {
    const char next = at + 1 < rest.size() ? rest[at + 1] : ' ';
    if (quoted && rest[at] == '\\' && (next == '"' || next == '\\')) ++at;
    field += rest[at];
  }
  if (quoted && (at == rest.size() || !EndsField(rest, ++at))) return false;
  rest.erase(0, std::min(rest.find_first_not_of(kBlanks, at), rest.size()));
  return true;
}

void AddEntry(Model& model, const std::string& scope, std::string rest, int line) {
  Entry entry = {"", line};
  std::string field;
  while (entry.readable && !rest.empty()) {
    const bool whole = TakeField(rest, field);
    if (!whole && entry.fields.empty()) return;
    entry.fields.push_back(field);
    entry.readable = whole && field.size() <= kLongest;
  }
  entry.key = scope + entry.fields[0];
  model.entries.push_back(entry);
}

// Returns a header's group, or nothing when it has no name.
std::optional<std::string> GroupOf(const std::string& header) {
  const std::size_t end = header.find(']');
  if (end == std::string::npos) return std::nullopt;
  std::string name = header.substr(1, end - 1);
  name.erase(0, std::min(name.find_first_not_of(kBlanks), name.size()));
  name.erase(name.find_last_not_of(kBlanks) + 1);
  if (name.size() > kLongest) return std::nullopt;
  return UpToNul(name);
}

Model ModelOf(const std::string& text) {
  Model model;
  std::optional<std::string> scope = "";
  std::size_t start = 0;
  for (int number = 1; start <= text.size(); ++number) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    std::string line = text.substr(start, end - start);
    start = end + 1;
    line.erase(0, std::min(line.find_first_not_of(kBlanks), line.size()));
    if (line.empty() || line[0] == '#') continue;
    if (line[0] != '[') {
      if (scope.has_value()) AddEntry(model, *scope, line, number);
      continue;
    }
    scope = GroupOf(line);
    if (!scope.has_value()) continue;
    model.groups.push_back(*scope);
    *scope += '#';
  }
  return model;
}

void CheckSearch(VoCfgUtil& reader, const Model& model, const std::string& key, int field) {
  const auto entry = std::find_if(model.entries.begin(), model.entries.end(),
                                  [&](const Entry& each) { return each.key == key; });
  const bool found = entry != model.entries.end();
  const bool present = found && entry->readable && field >= 1 &&
                       static_cast<std::size_t>(field) <= entry->fields.size();
  Block value(kLongest + 1);
  Block expected = value;
  if (present) expected.Put(entry->fields[static_cast<std::size_t>(field) - 1]);
  Require(reader.cfg_search(key.c_str(), value.data(), field) == (present ? 0 : -1), "found");
  Require(value == expected, "the field, and nothing behind it");
  Require(reader.line() == (found ? entry->line : 0), "the line");
}

void CheckGroup(VoCfgUtil& reader, const Model& model, const std::string& name) {
  const auto count = std::count(model.groups.begin(), model.groups.end(), name);
  Require(reader.cfg_group_count(name.c_str()) == count, "how many headers");
}

}  // namespace

FUZZ_TARGET(reader) {
  static InputFile file;
  FuzzedDataProvider input(bytes, size);
  const auto ahead = input.ConsumeIntegral<unsigned char>();
  const auto start = input.ConsumeIntegral<unsigned char>();
  const auto length = input.ConsumeIntegral<unsigned char>();
  const int field = input.ConsumeIntegralInRange(-128, 127);
  std::string text = input.ConsumeRemainingBytesAsString();
  const std::string part = UpToNul(text.substr(std::min<std::size_t>(start, text.size()), length));
  if (ahead >= 1 && ahead <= kFarthest)
    text.insert(0, std::string(kReaderBuffer - ahead, '#') + "\n");
  file.Write(text);
  const Model model = ModelOf(text);

  VoCfgUtil reader;
  Require(reader.cfg_open(InputFile::kPath) == 0, "the file opens");
  for (std::size_t i = 0; i < model.entries.size(); i += 1 + model.entries.size() / 8) {
    const std::string key = UpToNul(model.entries[i].key);
    for (const int each : {1, 2, 3, field}) CheckSearch(reader, model, key, each);
    CheckSearch(reader, model, key + "#", 1);
  }
  for (std::size_t i = 0; i < model.groups.size(); i += 1 + model.groups.size() / 8) {
    CheckGroup(reader, model, model.groups[i]);
  }
  CheckSearch(reader, model, part, field);
  CheckGroup(reader, model, part);
  reader.cfg_close();
  CheckSearch(reader, {}, part, field);
  Require(reader.cfg_group_count(part.c_str()) == -1, "nothing is counted in a closed file");
  return 0;
}
