#include "home/configuration_kinds.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <regex>

#include "common/config_file.h"
#include "devhost/system_call.h"
#include "records/record_tables.h"
#include "statetable/layered_file.h"
#include "tables/locate.h"

namespace {

constexpr Severity kError = Severity::kError;
constexpr Severity kWarning = Severity::kWarning;
constexpr std::size_t kLongestValue =
    voatm::kKeySize - 1;  // of those that go through a key's buffer

const FieldRule kFits = {
    ".{0," + std::to_string(kLongestValue) + "}", "value-too-long", kError,
    "at most " + std::to_string(kLongestValue) + " characters, the rest is cut off"};
const FieldRule kNotEmpty = {".+", "empty-value", kError, "a text"};
const FieldRule kWhole = {"[0-9]+", "not-a-number", kError, "a whole number"};
const FieldRule kOneOrMore = {"0*[1-9][0-9]*", "no-slots", kError,
                              "1 or more, as a table without slots holds no record"};
const FieldRule kNilOrMore = {"0*[1-9][0-9]*|[Nn][Ii][Ll][Ll]", "note-value", kError,
                              "a whole number above 0, or NILL"};
const FieldRule kYesOrNo = {"[Yy][Ee][Ss]|[Nn][Oo]", "yes-or-no", kWarning,
                            "Yes or No; anything but Yes means no"};
const FieldRule kTxnCode = {"[0-9]{6}", "txn-code", kError, "six digits"};
const FieldRule kCurrency = {"[0-9]{3}", "currency-code", kError, "three digits"};
const FieldRule kFlag = {"[YN]", "flag", kWarning, "Y or N"};
const FieldRule kState = {"[0-9A-Za-z]{3}", "state-number", kError, "three digits or letters"};
const FieldRule kScreen = {"[0-9A-Za-z]{3}", "screen-number", kError, "three digits or letters"};
const FieldRule kNotes = {"[0-9]{1,2}", "note-count", kError,
                          "at most 99, of more only two digits are taken"};
const FieldRule kDigit = {"[0-9]", "control-digit", kError, "one digit"};
const FieldRule kAction = {R"(\$VAR|\$NEXT|\$PREVIOUS|\$CONTINUE|\$CANCEL|[^$0-9].*)", "key-action",
                           kWarning,
                           "$VAR, $NEXT, $PREVIOUS, $CONTINUE, $CANCEL or a word for none"};

// A number that is not above `largest`, which may need words.
FieldRule AtMost(long largest, const char* rule, const char* because = "") {
  return {".*", rule, kError, "at most " + std::to_string(largest) + because, largest};
}

constexpr long kMost = std::numeric_limits<int>::max();
const FieldRule kAtMostInt = AtMost(kMost, "number-too-large");
const FieldRules kInteger = {kWhole, kAtMostInt};
const FieldRules kChannelKey = {kWhole,
                                AtMost(kMost - voatm::kChannelKeyDistance, "number-too-large")};

KeyKind Required(const char* key, const FieldRules& value) {
  return {key, key, Need::kRequired, {1}, {value}};
}

KeyKind Wanted(const char* key, const FieldRules& value) {
  return {key, key, Need::kWanted, {1}, {value}};
}

KeyKind Optional(const char* pattern, const char* shown, const std::vector<FieldRules>& values) {
  return {pattern, shown, Need::kNone, {values.size()}, values};
}

std::vector<KeyKind> TemplateKeys() {
  std::vector<KeyKind> keys = {
      Required("OAR#OAR_TIMEOUT", kInteger), Required("OAR#CONTROL#DISPLAYFLAG", {kDigit}),
      Required("OAR#CONTROL#NUMERICKEYS", {kDigit}), Required("OAR#CONTROL#CANCEL", kInteger),
      Required("OAR#VAR#TOTALVAR", kInteger)};
  for (const char key : {'A', 'B', 'C', 'D', 'F', 'G', 'H', 'I'}) {
    const std::string name = std::string("OAR#VAR#") + key;
    keys.push_back({name, name, Need::kRequired, {2}, {{kFits, kAction}, kInteger}});
  }
  return keys;
}

// What stands in the library's kinds of layered files, in their order.
const std::vector<KeyKind> kLayeredKeys[] = {
    {Optional(R"([^\x23]+_[^\x23]+)", "<key>_<key> before the first group",
              {{kTxnCode}, kInteger, {kCurrency}, {kFlag}, {kFlag}})},
    {Optional("(GOOD|BAD)_RESPONSE#.+_.+",
              "GOOD_RESPONSE#<part>_<part> or BAD_RESPONSE#<part>_<part>", {{kState}, {kScreen}})},
    {Required("ATM_RESERVEDSCREEN#EMPTYSCR", {kScreen})},
    TemplateKeys(),
    {{R"(DISPENCE_LOGIC#[^ ]{0,15}_(0|-?[1-9][0-9]*))",
      "DISPENCE_LOGIC#<up to 15 characters>_<number>",
      Need::kNone,
      {4, 8},
      {{kFits, kWhole, kNotes}}}},
    {Optional("BNA_MAPPING#..", "BNA_MAPPING#<two characters>", {{kNilOrMore, kAtMostInt}})},
};
static_assert(std::size(kLayeredKeys) == voatm::kLayeredKinds,
              "say here what stands in the new kind of file");

// The pattern of a text that stands for itself.
std::string Literal(const std::string& text) {
  return std::regex_replace(text, std::regex("[.]"), "[.]");
}

FileKind Fixed(const voatm::FixedFile& file, Scope scope, Need need,
               const std::vector<KeyKind>& keys) {
  const std::string name = Literal(file.name);
  return {file.directory, name, name, file.name, false, scope, need, keys};
}

FileKind Layered(std::size_t kind) {
  const voatm::FileKind& file = voatm::kFileKinds[kind];
  const std::string end = Literal(file.suffix);
  const bool is_template = kind == voatm::kTemplates;
  const std::string claims = (is_template ? ".+" : ".+_") + end;
  const std::string opens = is_template        ? ".+_.+_(0|-?[1-9][0-9]*)" + end
                            : file.has_default ? claims
                                               : "(?!DEFAULT_" + end + ")" + claims;
  const std::string shown = is_template ? "<scope>_<template>_<number>" : "<scope>_";
  return {
      file.directory,    opens, claims, shown + file.suffix, true, Scope::kEveryKey, Need::kNone,
      kLayeredKeys[kind]};
}

// A file that drivers need to start, with the counts of tables that are read from it.
FileKind StartUpFile(const voatm::FixedFile& file, std::vector<KeyKind> keys) {
  static const FieldRule kOfASet =
      AtMost(devhost::MostSemaphoresOfASet(), "above-semmsl", ", the semaphores of a set (SEMMSL)");
  for (const records::RecordTable& table : records::kRecordTables) {
    const char* const key = table.count.key;
    const bool known = std::any_of(keys.begin(), keys.end(),
                                   [key](const KeyKind& each) { return each.pattern == key; });
    if (!known && std::strcmp(table.count.file, file.name) == 0) {
      keys.push_back(Required(key, {kWhole, kOfASet, kOneOrMore}));
    }
  }
  return Fixed(file, Scope::kKnownKeys, Need::kRequired, keys);
}

std::vector<FileKind> AllKinds() {
  std::vector<FileKind> kinds = {
      StartUpFile(voatm::kKernelFile, {Required("CHANNEL#ORGKEY", kChannelKey)}),
      StartUpFile(
          voatm::kBusinessFile,
          {Wanted("VOBUSINESS#UTCFLAG", {kYesOrNo}),
           Optional(R"([^\x23]+_BADRSP_RCPT_NEEDED)",
                    "<institution>_BADRSP_RCPT_NEEDED before the first group", {{kYesOrNo}})}),
      StartUpFile(voatm::kSecurityFile, {}),
      Fixed(voatm::kCardlessFile, Scope::kEveryKey, Need::kNone,
            {Wanted("OPKEYMAP#DEFAULT", {kNotEmpty}),
             Optional("OPKEYMAP#.+", "OPKEYMAP#<key>", {{kNotEmpty}})}),
      {voatm::kInfDirectory, ".*", "", "any name", false, Scope::kGroupsOnly, Need::kNone, {}},
  };
  for (std::size_t kind = 0; kind < voatm::kLayeredKinds; ++kind) kinds.push_back(Layered(kind));
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

std::size_t FileKind::LongestPath() const {
  return (layered ? voatm::kLayeredPathSize : voatm::kFixedPathSize) - 1;
}

const std::vector<FileKind>& FileKinds() {
  static const std::vector<FileKind> kKinds = AllKinds();
  return kKinds;
}

const FileKind* FileKindOf(const std::string& directory, const std::string& name) {
  const auto& kinds = FileKinds();
  const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const FileKind& each) {
    return directory == each.directory && Matches(each.opens, name);
  });
  return kind == kinds.end() ? nullptr : &*kind;
}
