#include "home/configuration_kinds.h"

namespace {

constexpr Severity kError = Severity::kError;
constexpr Severity kWarning = Severity::kWarning;

constexpr FieldRule kFits = {".{0,50}", "value-too-long", kError,
                             "at most 50 characters, the rest is cut off"};
constexpr FieldRule kNotEmpty = {".+", "empty-value", kError, "a text"};
constexpr FieldRule kInteger = {"[0-9]+", "not-a-number", kError, "a whole number",
                                Largest::kAnyInteger};
constexpr FieldRule kSlots = {"[0-9]+", "not-a-number", kError, "a whole number",
                              Largest::kSemaphoresOfASet};
constexpr FieldRule kYesOrNo = {"[Yy][Ee][Ss]|[Nn][Oo]", "yes-or-no", kWarning,
                                "Yes or No; anything but Yes means no"};
constexpr FieldRule kTxnCode = {"[0-9]{6}", "txn-code", kError, "six digits"};
constexpr FieldRule kCurrency = {"[0-9]{3}", "currency-code", kError, "three digits"};
constexpr FieldRule kFlag = {"[YN]", "flag", kWarning, "Y or N"};
constexpr FieldRule kState = {"[0-9A-Za-z]{3}", "state-number", kError, "three digits or letters"};
constexpr FieldRule kScreen = {"[0-9A-Za-z]{3}", "screen-number", kError,
                               "three digits or letters"};
constexpr FieldRule kNotes = {"[0-9]{1,2}", "note-count", kError,
                              "at most 99, of more only two digits are taken"};
constexpr FieldRule kNoteValue = {"0*[1-9][0-9]*|[Nn][Ii][Ll][Ll]", "note-value", kError,
                                  "a whole number above 0, or NILL", Largest::kAnyInteger};
constexpr FieldRule kDigit = {"[0-9]", "control-digit", kError, "one digit"};
constexpr FieldRule kAction = {R"(\$VAR|\$NEXT|\$PREVIOUS|\$CONTINUE|\$CANCEL|[^$0-9].*)",
                               "key-action", kWarning,
                               "$VAR, $NEXT, $PREVIOUS, $CONTINUE, $CANCEL or a word for none"};

KeyKind Required(const char* key, const FieldRules& value) {
  return {key, key, Need::kRequired, {1}, {value}};
}

KeyKind FunctionKey(const char* key) {
  return {key, key, Need::kRequired, {2}, {{kFits, kAction}, {kInteger}}};
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

KeyKind Wanted(const char* key, const FieldRules& value) {
  return {key, key, Need::kWanted, {1}, {value}};
}

KeyKind Optional(const char* pattern, const char* shown, const std::vector<FieldRules>& values) {
  return {pattern, shown, Need::kNone, {values.size()}, values};
}

FileKind StartUpFile(const char* pattern, const char* name, const std::vector<KeyKind>& keys) {
  return {"cfg", pattern, name, nullptr, Scope::kKnownKeys, Need::kRequired, Place::kFixed, keys};
}

FileKind Layered(const char* directory, const char* pattern, const char* shown, const char* suffix,
                 const std::vector<KeyKind>& keys) {
  return {directory, pattern, shown, suffix, Scope::kEveryKey, Need::kNone, Place::kLayered, keys};
}

}  // namespace

const std::vector<FileKind>& FileKinds() {
  static const std::vector<FileKind> kKinds = {
      StartUpFile(R"(vokernel\.cfg)", "vokernel.cfg", {Required("CHANNEL#ORGKEY", {kInteger})}),
      StartUpFile(
          R"(vobusiness\.cfg)", "vobusiness.cfg",
          {Required("VOBUSINESS#MAXATM", {kSlots}), Required("VOBUSINESS#MAXFIT", {kSlots}),
           Required("VOBUSINESS#MAXATMPROPERTY", {kSlots}),
           Required("VOBUSINESS#MAXATMSTATUS", {kSlots}), Wanted("VOBUSINESS#UTCFLAG", {kYesOrNo}),
           Optional(R"([^\x23]+_BADRSP_RCPT_NEEDED)",
                    "<institution>_BADRSP_RCPT_NEEDED before the first group", {{kYesOrNo}})}),
      StartUpFile(R"(vosecurity\.cfg)", "vosecurity.cfg", {Required("MAXSECURITY", {kSlots})}),
      {"cfg/atm",
       R"(CARDLESS_TXN\.cfg)",
       "CARDLESS_TXN.cfg",
       "CARDLESS_TXN.cfg",
       Scope::kEveryKey,
       Need::kNone,
       Place::kFixed,
       {Wanted("OPKEYMAP#DEFAULT", {kNotEmpty}),
        Optional("OPKEYMAP#.+", "OPKEYMAP#<key>", {{kNotEmpty}})}},
      Layered("cfg/atm/statetable/opkey", R"((?!DEFAULT_opk).+_opk\.cfg)", "<scope>_opk.cfg",
              "_opk.cfg",
              {Optional(R"([^\x23]+_[^\x23]+)", "<key>_<key> before the first group",
                        {{kTxnCode}, {kInteger}, {kCurrency}, {kFlag}, {kFlag}})}),
      Layered("cfg/atm/statetable/resptable", R"((?!DEFAULT_resp).+_resp\.cfg)", "<scope>_resp.cfg",
              "_resp.cfg",
              {Optional("(GOOD|BAD)_RESPONSE#.+_.+",
                        "GOOD_RESPONSE#<part>_<part> or BAD_RESPONSE#<part>_<part>",
                        {{kState}, {kScreen}})}),
      Layered("cfg/atm/statetable/screen", R"(.+_screen\.cfg)", "<scope>_screen.cfg", "_screen.cfg",
              {Required("ATM_RESERVEDSCREEN#EMPTYSCR", {kScreen})}),
      Layered("cfg/atm/templates", R"(.+_.+_(0|-?[1-9][0-9]*)\.oar)",
              "<scope>_<template>_<number>.oar", ".oar", TemplateKeys()),
      Layered("cfg/atm/displogic", R"((?!DEFAULT_displogic).+_displogic\.cfg)",
              "<scope>_displogic.cfg", "_displogic.cfg",
              {{R"(DISPENCE_LOGIC#[^ ]{0,15}_(0|-?[1-9][0-9]*))",
                "DISPENCE_LOGIC#<up to 15 characters>_<number>",
                Need::kNone,
                {4, 8},
                {{kFits, kInteger, kNotes}}}}),
      Layered("cfg/atm/bnamap", R"((?!DEFAULT_bnamap).+_bnamap\.cfg)", "<scope>_bnamap.cfg",
              "_bnamap.cfg",
              {Optional("BNA_MAPPING#..", "BNA_MAPPING#<two characters>", {{kNoteValue}})}),
      {"inf", ".+", "any name", nullptr, Scope::kGroupsOnly, Need::kNone, Place::kFixed, {}},
  };
  return kKinds;
}
