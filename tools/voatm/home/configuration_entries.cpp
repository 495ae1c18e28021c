#include "home/configuration_entries.h"

#include <utility>

#include "common/config_file.h"

namespace {

constexpr std::size_t kMaxField = voatm::kValueSize - 1;
constexpr const char* kBlanks = " \t\r";

bool IsBlank(char character) { return character == ' ' || character == '\t' || character == '\r'; }

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
    if (close == std::string::npos) SetFault(header, EntryFault::kOpenHeader, at_);
    std::string name = text_.substr(at_ + 1, close - at_ - 1);
    name.erase(0, name.find_first_not_of(kBlanks));
    name.erase(name.find_last_not_of(kBlanks) + 1);
    if (name.size() > kMaxField) SetFault(header, EntryFault::kHeaderTooLong, at_);
    header.group = std::move(name);
    LookForNul(header);
    return header;
  }

  ConfigurationEntry ReadEntry() {
    ConfigurationEntry entry = Begin();
    for (; !AtEnd() && entry.fault == EntryFault::kNone; SkipBlanks()) {
      ConfigurationField field = {{}, at_ + 1};
      const EntryFault fault = text_[at_] == '"' ? ReadQuoted(field.text) : ReadPlain(field.text);
      if (fault != EntryFault::kNone) SetFault(entry, fault, field.column - 1);
      entry.fields.push_back(std::move(field));
      entry.end = at_ + 1;
    }
    LookForNul(entry);
    return entry;
  }

 private:
  bool AtEnd() const { return at_ == text_.size(); }

  void SkipBlanks() {
    while (!AtEnd() && IsBlank(text_[at_])) ++at_;
  }

  ConfigurationEntry Begin() const {
    ConfigurationEntry entry;
    entry.line = number_;
    entry.column = at_ + 1;
    return entry;
  }

  void LookForNul(ConfigurationEntry& entry) const {
    const std::size_t nul = text_.find('\0');
    if (nul != std::string::npos) SetFault(entry, EntryFault::kNulCharacter, nul);
  }

  static void SetFault(ConfigurationEntry& entry, EntryFault fault, std::size_t at) {
    entry.fault = fault;
    entry.fault_column = at + 1;
  }

  EntryFault ReadPlain(std::string& field) {
    while (!AtEnd() && !IsBlank(text_[at_])) field += text_[at_++];
    return Fitting(field);
  }

  EntryFault ReadQuoted(std::string& field) {
    for (++at_; !AtEnd(); ++at_) {
      if (text_[at_] == '"') {
        ++at_;
        return AtEnd() || IsBlank(text_[at_]) ? Fitting(field) : EntryFault::kTextAfterQuote;
      }
      const char next = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
      if (text_[at_] == '\\' && (next == '"' || next == '\\')) ++at_;
      field += text_[at_];
    }
    return EntryFault::kUnclosedQuote;
  }

  static EntryFault Fitting(const std::string& field) {
    return field.size() <= kMaxField ? EntryFault::kNone : EntryFault::kFieldTooLong;
  }

  const std::string& text_;
  std::size_t number_;
  std::size_t at_ = 0;
};

// Nothing finds an entry whose first field's quoting is wrong.
bool IsNameless(const ConfigurationEntry& entry) {
  return entry.fields.size() == 1 &&
         (entry.fault == EntryFault::kUnclosedQuote || entry.fault == EntryFault::kTextAfterQuote);
}

}  // namespace

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
      hidden = entry.fault != EntryFault::kNone;
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
