#include "home/configuration_kinds.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <regex>

#include "common/config_file.h"
#include "records/record_tables.h"
#include "statetable/layered_file.h"

namespace {

constexpr Severity kError = Severity::kError;
constexpr Severity kWarning = Severity::kWarning;
constexpr std::size_t kLongestValue =
    voatm::kKeySize - 1;  // of those that go through a key's buffer

const FieldRule kFits = {
    ".{0," + std::to_string(kLongestValue) + "}", "value-too-long", kError,
    "at most " + std::to_string(kLongestValue) + " characters, the rest is cut off"};
const FieldRule kNotEmpty = {".+", "empty-value", kError, "a text"};
const FieldRule kInteger = {"[0-9]+", "not-a-number", kError, "a whole number",
                            Largest::kAnyInteger};
const FieldRule kChannelKey = {"[0-9]+", "not-a-number", kError, "a whole number",
                               Largest::kChannelKey};
const FieldRule kSlots = {"[0-9]+", "not-a-number", kError, "a whole number",
                          Largest::kSemaphoresOfASet};
const FieldRule kAnySlots = {"0*[1-9][0-9]*", "no-slots", kError,
                             "1 or more, as a table without slots holds no record"};
const FieldRule kYesOrNo = {"[Yy][Ee][Ss]|[Nn][Oo]", "yes-or-no", kWarning,
                            "Yes or No; anything but Yes means no"};
const FieldRule kTxnCode = {"[0-9]{6}", "txn-code", kError, "six digits"};
const FieldRule kCurrency = {"[0-9]{3}", "currency-code", kError, "three digits"};
const FieldRule kFlag = {"[YN]", "flag", kWarning, "Y or N"};
const FieldRule kState = {"[0-9A-Za-z]{3}", "state-number", kError, "three digits or letters"};
const FieldRule kScreen = {"[0-9A-Za-z]{3}", "screen-number", kError, "three digits or letters"};
const FieldRule kNotes = {"[0-9]{1,2}", "note-count", kError,
                          "at most 99, of more only two digits are taken"};
const FieldRule kNoteValue = {"0*[1-9][0-9]*|[Nn][Ii][Ll][Ll]", "note-value", kError,
                              "a whole number above 0, or NILL", Largest::kAnyInteger};
const FieldRule kDigit = {"[0-9]", "control-digit", kError, "one digit"};
const FieldRule kAction = {R"(\$VAR|\$NEXT|\$PREVIOUS|\$CONTINUE|\$CANCEL|[^$0-9].*)", "key-action",
                           kWarning,
                           "$VAR, $NEXT, $PREVIOUS, $CONTINUE, $CANCEL or a word for none"};

KeyKind Required(const char* key, const FieldRules& value) {
  return {key, key, Need::kRequired, {1}, {value}};
}

KeyKind FunctionKey(const char* key) {
  return {key, key, Need::kRequired, {2}, {{kFits, kAction}, {kInteger}}};
}

KeyKind Wanted(const char* key, const FieldRules& value) {
  return {key, key, Need::kWanted, {1}, {value}};
}

KeyKind Optional(const char* pattern, const char* shown, const std::vector<FieldRules>& values) {
  return {pattern, shown, Need::kNone, {values.size()}, values};
}

std::vector<KeyKind> TemplateKeys() {
  return {Required("OAR#OAR_TIMEOUT", {kInteger}),
          Required("OAR#CONTROL#DISPLAYFLAG", {kDigit}),
          Required("OAR#CONTROL#NUMERICKEYS", {kDigit}),
          Required("OAR#CONTROL#CANCEL", {kInteger}),
          Required("OAR#VAR#TOTALVAR", {kInteger}),
          FunctionKey("OAR#VAR#A"),
          FunctionKey("OAR#VAR#B"),
          FunctionKey("OAR#VAR#C"),
          FunctionKey("OAR#VAR#D"),
          FunctionKey("OAR#VAR#F"),
          FunctionKey("OAR#VAR#G"),
          FunctionKey("OAR#VAR#H"),
          FunctionKey("OAR#VAR#I")};
}

// What stands in the library's kinds of layered files, in their order.
const std::vector<KeyKind> kLayeredKeys[] = {
    {Optional(R"([^\x23]+_[^\x23]+)", "<key>_<key> before the first group",
              {{kTxnCode}, {kInteger}, {kCurrency}, {kFlag}, {kFlag}})},
    {Optional("(GOOD|BAD)_RESPONSE#.+_.+",
              "GOOD_RESPONSE#<part>_<part> or BAD_RESPONSE#<part>_<part>", {{kState}, {kScreen}})},
    {Required("ATM_RESERVEDSCREEN#EMPTYSCR", {kScreen})},
    TemplateKeys(),
    {{R"(DISPENCE_LOGIC#[^ ]{0,15}_(0|-?[1-9][0-9]*))",
      "DISPENCE_LOGIC#<up to 15 characters>_<number>",
      Need::kNone,
      {4, 8},
      {{kFits, kInteger, kNotes}}}},
    {Optional("BNA_MAPPING#..", "BNA_MAPPING#<two characters>", {{kNoteValue}})},
};
static_assert(std::size(kLayeredKeys) == voatm::kLayeredKinds,
              "say here what stands in the new kind of file");

FileKind Fixed(const voatm::FixedFile& file, Scope scope, Need need,
               const std::vector<KeyKind>& keys) {
  return {file.directory, file.name, Name::kFixed, false, scope, need, keys};
}

// A file that drivers need to start, with the counts of tables that are read from it.
FileKind StartUpFile(const voatm::FixedFile& file, std::vector<KeyKind> keys) {
  for (const records::RecordTable& table : records::kRecordTables) {
    const char* const key = table.count.key;
    const bool known = std::any_of(keys.begin(), keys.end(), [key](const KeyKind& each) {
      return std::strcmp(each.pattern, key) == 0;
    });
    if (!known && std::strcmp(table.count.file, file.name) == 0) {
      keys.push_back(Required(key, {kSlots, kAnySlots}));
    }
  }
  return Fixed(file, Scope::kKnownKeys, Need::kRequired, keys);
}

bool EndsIn(const std::string& text, const std::string& end) {
  return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// <scope>_<template>_<number>
bool NamesTemplate(const std::string& stem) { return Matches(".+_.+_(0|-?[1-9][0-9]*)", stem); }

std::vector<FileKind> AllKinds() {
  std::vector<FileKind> kinds = {
      StartUpFile(voatm::kKernelFile, {Required("CHANNEL#ORGKEY", {kChannelKey})}),
      StartUpFile(
          voatm::kBusinessFile,
          {Wanted("VOBUSINESS#UTCFLAG", {kYesOrNo}),
           Optional(R"([^\x23]+_BADRSP_RCPT_NEEDED)",
                    "<institution>_BADRSP_RCPT_NEEDED before the first group", {{kYesOrNo}})}),
      StartUpFile(voatm::kSecurityFile, {}),
      Fixed(voatm::kCardlessFile, Scope::kEveryKey, Need::kNone,
            {Wanted("OPKEYMAP#DEFAULT", {kNotEmpty}),
             Optional("OPKEYMAP#.+", "OPKEYMAP#<key>", {{kNotEmpty}})}),
      {voatm::kInfDirectory, "", Name::kAny, false, Scope::kGroupsOnly, Need::kNone, {}},
  };
  for (std::size_t i = 0; i < voatm::kLayeredKinds; ++i) {
    const auto& [directory, suffix, has_default] = voatm::kFileKinds[i];
    const Name names = i == voatm::kTemplates ? Name::kTemplate : Name::kScope;
    kinds.push_back(
        {directory, suffix, names, has_default, Scope::kEveryKey, Need::kNone, kLayeredKeys[i]});
  }
  return kinds;
}

}  // namespace

bool Matches(const std::string& pattern, const std::string& text) {
  static std::map<std::string, std::regex> compiled;
  const auto entry = compiled.find(pattern);
  const std::regex& expression =
      entry != compiled.end() ? entry->second : compiled.emplace(pattern, pattern).first->second;
  return std::regex_match(text, expression);
}

bool FileKind::Opens(const std::string& file) const {
  if (names == Name::kFixed) return file == name;
  if (names == Name::kAny) return true;
  if (!Claims(file)) return false;
  const std::string stem = file.substr(0, file.size() - std::strlen(name));
  return names == Name::kTemplate ? NamesTemplate(stem) : has_default || stem != "DEFAULT_";
}

bool FileKind::Claims(const std::string& file) const {
  if (names == Name::kFixed) return file == name;
  if (names == Name::kAny) return false;
  return EndsIn(file, names == Name::kScope ? "_" + std::string(name) : name);
}

std::string FileKind::Shown() const {
  if (names == Name::kFixed) return name;
  if (names == Name::kAny) return "any name";
  return (names == Name::kScope ? "<scope>_" : "<scope>_<template>_<number>") + std::string(name);
}

std::size_t FileKind::LongestPath() const {
  const bool layered = names == Name::kScope || names == Name::kTemplate;
  return (layered ? voatm::kLayeredPathSize : voatm::kFixedPathSize) - 1;
}

const std::vector<FileKind>& FileKinds() {
  static const std::vector<FileKind> kKinds = AllKinds();
  return kKinds;
}
