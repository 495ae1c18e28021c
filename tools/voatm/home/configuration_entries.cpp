#include "home/configuration_entries.h"

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "common/config_file.h"
#include "devhost/system_call.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxField = voatm::kValueSize - 1;
const std::string kTooLong = "more than " + std::to_string(kMaxField) + " characters ";

const EntryFault kUnclosedQuote = {
    "unclosed-quote", "the quote that begins here is not closed; the entry is unreadable"};
const EntryFault kTextAfterQuote = {
    "text-after-quote", "text straight after a closing quote makes the entry unreadable"};
const EntryFault kFieldTooLong = {"field-too-long", kTooLong + "make the entry unreadable"};
const EntryFault kNulCharacter = {"nul-character", "a NUL cuts off what follows it"};
const EntryFault kOpenHeader = {"open-header",
                                "a group header without ] hides the entries below it"};
const EntryFault kHeaderTooLong = {"header-too-long",
                                   kTooLong + "of a group's name hide the entries below it"};

constexpr std::string_view kBlanks = " \t\r";

bool EndsField(char character) { return kBlanks.find(character) != std::string_view::npos; }

// One line, walked from its first character that is not blank.
class Line {
 public:
  Line(const std::string& text, std::size_t number) : text_(text), number_(number) { SkipBlanks(); }

  bool IsEmpty() const { return AtEnd() || text_[at_] == '#'; }
  bool IsHeader() const { return text_[at_] == '['; }

  ConfigurationEntry ReadHeader() {
    ConfigurationEntry header = Begin();
    header.is_header = true;
    const std::size_t close = text_.find(']', at_);
    if (close == std::string::npos) SetFault(header, &kOpenHeader, at_);
    std::string name = text_.substr(at_ + 1, close - at_ - 1);
    name.erase(0, name.find_first_not_of(kBlanks));
    name.erase(name.find_last_not_of(kBlanks) + 1);
    if (name.size() > kMaxField) SetFault(header, &kHeaderTooLong, at_);
    header.group = std::move(name);
    LookForNul(header);
    return header;
  }

  ConfigurationEntry ReadEntry() {
    ConfigurationEntry entry = Begin();
    for (; !AtEnd() && entry.fault == nullptr; SkipBlanks()) {
      ConfigurationField field = {{}, at_ + 1};
      const EntryFault* const fault =
          text_[at_] == '"' ? ReadQuoted(field.text) : ReadPlain(field.text);
      if (fault != nullptr) SetFault(entry, fault, field.column - 1);
      entry.fields.push_back(std::move(field));
      entry.end = at_ + 1;
    }
    LookForNul(entry);
    return entry;
  }

 private:
  bool AtEnd() const { return at_ == text_.size(); }

  void SkipBlanks() {
    while (!AtEnd() && EndsField(text_[at_])) ++at_;
  }

  ConfigurationEntry Begin() const {
    ConfigurationEntry entry;
    entry.line = number_;
    entry.column = at_ + 1;
    return entry;
  }

  void LookForNul(ConfigurationEntry& entry) const {
    const std::size_t nul = text_.find('\0');
    if (nul != std::string::npos) SetFault(entry, &kNulCharacter, nul);
  }

  static void SetFault(ConfigurationEntry& entry, const EntryFault* fault, std::size_t at) {
    entry.fault = fault;
    entry.fault_column = at + 1;
  }

  const EntryFault* ReadPlain(std::string& field) {
    while (!AtEnd() && !EndsField(text_[at_])) field += text_[at_++];
    return Fitting(field);
  }

  const EntryFault* ReadQuoted(std::string& field) {
    for (++at_; !AtEnd(); ++at_) {
      if (text_[at_] == '"') {
        ++at_;
        return AtEnd() || EndsField(text_[at_]) ? Fitting(field) : &kTextAfterQuote;
      }
      const char next = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
      if (text_[at_] == '\\' && (next == '"' || next == '\\')) ++at_;
      field += text_[at_];
    }
    return &kUnclosedQuote;
  }

  static const EntryFault* Fitting(const std::string& field) {
    return field.size() <= kMaxField ? nullptr : &kFieldTooLong;
  }

  const std::string& text_;
  std::size_t number_;
  std::size_t at_ = 0;
};

// Nothing finds an entry whose first field's quoting is wrong.
bool IsNameless(const ConfigurationEntry& entry) {
  return entry.fields.size() == 1 &&
         (entry.fault == &kUnclosedQuote || entry.fault == &kTextAfterQuote);
}

// Where it has been, so that it does not follow a link back there.
class Walk {
 public:
  explicit Walk(const std::string& home) : home_(home) {}

  void Into(const std::string& directory) {
    const std::string path = home_ + "/" + directory;
    std::error_code error;
    if (!fs::is_directory(path, error)) return;
    const std::string folder = fs::canonical(path, error);
    if (!walking_.insert(folder).second) return;
    const fs::directory_iterator entries(path, error);
    if (error) files_.push_back({directory, "", true, error.message()});
    for (const fs::directory_entry& entry : entries) {
      const std::string name = entry.path().filename();
      const bool is_directory = entry.is_directory(error);
      files_.push_back({directory, name, is_directory});
      if (is_directory) Into(std::string(directory).append("/").append(name));
    }
    walking_.erase(folder);
  }

  std::vector<TreeFile> Take() { return std::move(files_); }

 private:
  const std::string& home_;
  std::set<std::string> walking_;  // folders
  std::vector<TreeFile> files_;
};

}  // namespace

std::vector<TreeFile> WalkTree(const std::string& home) {
  Walk walk(home);
  walk.Into(voatm::kKernelFile.directory);
  walk.Into(voatm::kInfDirectory);
  return walk.Take();
}

std::vector<ConfigurationEntry> ReadEntries(const std::string& text) {
  std::vector<ConfigurationEntry> entries;
  std::string group;
  bool grouped = false;
  bool hidden = false;
  std::size_t number = 0;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t newline = text.find('\n', begin);
    const std::string content = text.substr(begin, newline - begin);
    begin = newline == std::string::npos ? text.size() : newline + 1;
    Line line(content, ++number);
    if (line.IsEmpty()) continue;
    ConfigurationEntry entry = line.IsHeader() ? line.ReadHeader() : line.ReadEntry();
    if (entry.is_header) {
      grouped = true;
      group = entry.group;
      hidden = entry.fault != nullptr;
    } else {
      entry.group = group;
      entry.hidden = hidden;
      if (!IsNameless(entry)) {
        entry.key = (grouped ? group + "#" : "") + entry.fields.front().text;
      }
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::vector<ConfigurationEntry> ReadEntriesOf(const std::string& path) {
  return ReadEntries(devhost::FileText(path));
}
