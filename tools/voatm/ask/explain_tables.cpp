// The requests that shared tables answer.
#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "ask/explain_core.h"
#include "ask/explain_row_walk.h"
#include "records/record_tables.h"

namespace {

// A number as a column of this width holds it.
std::string Digits(int number, int width, std::size_t column_size) {
  char text[16];
  snprintf(text, sizeof text, "%0*d", width, number);
  return std::string(text).substr(0, column_size - 1);
}

Levels AtmLevels(const Inputs& inputs) {
  const auto cut = [&](const char* name) {
    return inputs.Text(name).substr(0, sizeof(VoAtmProperty::AtmId) - 1);
  };
  return {{"InstTerminalGroup", {cut("inst"), kAny}},
          {"AtmLogicalGroup", {cut("group"), kAny}},
          {"AtmId", {cut("atm"), kAny}}};
}

Level TxnLevel(const Inputs& inputs) {
  const int code = inputs.Number("txn");
  constexpr std::size_t kSize = sizeof(VoAtmProperty::TxnCode);
  return {"TxnCode", {Digits(code, 6, kSize), Digits(code / 10000, 2, kSize), kAny}};
}

void ExplainProperty(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const Rows rows("property", util.AtmPropertyPtr, util.MaxAtmProperty);
  Levels levels = AtmLevels(inputs);
  levels.push_back(TxnLevel(inputs));
  const int response = inputs.Number("resp");
  levels.push_back({"RespCode", {Digits(response, 3, sizeof(VoAtmProperty::RespCode)), kAny}});
  levels.push_back({"CurrencyCode", {std::to_string(inputs.Number("currency")), "0"}});

  const int slot = Walk(rows, levels, 0, explanation);
  AddShadows(rows, slot, levels, explanation);
  if (slot != kNoRow) explanation->source = rows.Name(slot);

  VoAtmProperty record{};
  const bool found =
      util.readAtmProperty(inputs.Chars("inst"), inputs.Chars("group"), inputs.Chars("atm"),
                           inputs.Number("txn"), response, inputs.Number("currency"), &record) == 1;
  Conclude(explanation, found, found ? Rows("property", &record, 1).All(0) : Facts(),
           slot != kNoRow, slot != kNoRow ? rows.All(slot) : Facts());
}

// The codes of a list; what stands behind the last separator is not one.
std::vector<std::string> StatusCodes(const std::string& list) {
  std::vector<std::string> codes;
  std::istringstream terminated(list.substr(0, list.rfind('|') + 1));
  for (std::string code; std::getline(terminated, code, '|');) {
    if (!code.empty()) codes.push_back(code.substr(0, sizeof(VoAtmActionProperty::StatusCode) - 1));
  }
  return codes;
}

// Goes on from the ATM's row with each status. Returns the row of the last one that has one.
int WalkStatuses(const Rows& rows, const Levels& atm, int start, const Inputs& inputs,
                 const char* flag, Explanation* explanation) {
  int winner = kNoRow;
  Levels wanted;
  for (const std::string& code : StatusCodes(inputs.Text("statuses"))) {
    const Levels levels = {{"StatusCode", {code}}, {flag, {"Y"}}};
    const int found = Walk(rows, levels, start, explanation);
    if (found == kNoRow) continue;
    start = winner = found;
    wanted = levels;
  }
  wanted.insert(wanted.end(), atm.begin(), atm.end());
  AddShadows(rows, winner, wanted, explanation);
  return winner;
}

void ExplainAction(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const Rows rows("action", util.AtmActionPropertyPtr, util.MaxAtmProperty);
  const bool by_txn = inputs.Text("search") == "value";
  const Levels atm = AtmLevels(inputs);
  int slot = Walk(rows, atm, 0, explanation);
  if (slot != kNoRow) {
    slot = WalkStatuses(rows, atm, slot, inputs, by_txn ? "TxnFlag" : "ActionFlag", explanation);
  }
  if (slot != kNoRow && by_txn) {
    slot = Walk(rows, {TxnLevel(inputs)}, slot, explanation);
    if (slot != kNoRow && rows.Text(slot, "TxnFlag") != "Y") {
      explanation->tries.push_back({"TxnFlag", "Y", "none: " + rows.Name(slot) + " has it off"});
      slot = kNoRow;
    }
  }
  Facts expected;
  if (slot != kNoRow) {
    explanation->source = rows.Name(slot);
    if (!HasAnyKey(rows, slot, atm)) {
      explanation->notes.emplace_back(
          "the row is another ATM's: from the ATM's first row on, the search looks at status and "
          "transaction only");
    }
    expected = by_txn
                   ? Facts{{"TxnValue", std::to_string(atoi(rows.Text(slot, "TxnValue").c_str()))}}
                   : Facts{{"ActionText", rows.Text(slot, "ActionText")}};
  }
  char action[sizeof(VoAtmActionProperty::ActionText)] = {};
  int value = 0;
  std::string statuses = inputs.Text("statuses");
  const bool found =
      util.readAtmActionProperty(inputs.Chars("inst"), inputs.Chars("group"), inputs.Chars("atm"),
                                 statuses.data(), inputs.Number("txn"), action, &value,
                                 by_txn ? TXN_VALUE : STATUS_ACTION) == 1;
  const Fact answer = by_txn ? Fact{"TxnValue", std::to_string(value)} : Fact{"ActionText", action};
  Conclude(explanation, found, found ? Facts{answer} : Facts(), slot != kNoRow, expected);
}

std::string ShownFit(const Rows& rows, int slot) {
  return rows.Text(slot, "FitId") + ": " + rows.Text(slot, "MatchKey1") + " " +
         rows.Text(slot, "MatchKey2") + " " + rows.Text(slot, "MatchKey3") + " " +
         rows.Text(slot, "CardPrefix");
}

void AddFitTry(const Rows& rows, int slot, const std::string& result, Explanation* explanation) {
  explanation->tries.push_back({SlotOrNone(slot), ShownFit(rows, slot), result});
}

bool IsSelected(const Rows& rows, int slot, const Inputs& inputs) {
  const std::string key2 = rows.Text(slot, "MatchKey2");
  const std::string key3 = rows.Text(slot, "MatchKey3");
  if (key2 == kAny) return key3 == kAny;
  return key2 == inputs.Text("key2") && (key3 == inputs.Text("key3") || key3 == kAny);
}

void ExplainFit(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const Rows rows("fit", util.AtmFitPtr, util.MaxFit);
  const int ordinal = inputs.Number("ordinal");
  int matches = 0;
  int slot = kNoRow;
  for (int at = 0; at < rows.count(); ++at) {
    if (rows.Text(at, "MatchKey1") != inputs.Text("key1")) continue;
    const bool selected = IsSelected(rows, at, inputs);
    if (selected) ++matches;
    if (selected && matches > ordinal && slot != kNoRow) {
      AddShadow(rows, at, explanation);
      continue;
    }
    if (slot != kNoRow) continue;
    AddFitTry(rows, at, selected ? "selected, number " + std::to_string(matches) : "none",
              explanation);
    if (selected && matches == ordinal) slot = at;
  }
  if (explanation->tries.empty()) {
    explanation->tries.push_back({"MatchKey1", inputs.Text("key1"), "none"});
  }
  if (slot != kNoRow) explanation->source = rows.Name(slot);

  AtmFit record{};
  const bool found = util.readFitMemory(inputs.Chars("key1"), inputs.Chars("key2"),
                                        inputs.Chars("key3"), &record, ordinal) == 1;
  Conclude(explanation, found, found ? Rows("fit", &record, 1).All(0) : Facts(), slot != kNoRow,
           slot != kNoRow ? rows.All(slot) : Facts());
}

constexpr std::size_t kPrefixLength = 10;
constexpr char kCatchAll[] = "FFFFFFFFFF";

// How many characters of the card number a prefix pattern has, 0 when it does not match.
std::size_t PrefixOf(const std::string& card_number, const std::string& pattern) {
  const std::string card = card_number.substr(0, kPrefixLength);
  if (card.size() < kPrefixLength && pattern == card) return kPrefixLength;
  if (pattern.size() != kPrefixLength) return 0;
  const auto differ = std::mismatch(card.begin(), card.end(), pattern.begin());
  const bool filled =
      std::all_of(differ.second, pattern.end(), [](char letter) { return letter == 'F'; });
  return filled ? static_cast<std::size_t>(differ.first - card.begin()) : 0;
}

int FindCatchAll(const Rows& rows) {
  for (int slot = 0; slot < rows.count(); ++slot) {
    if (strcasecmp(rows.Text(slot, "CardPrefix").c_str(), kCatchAll) == 0) return slot;
  }
  return kNoRow;
}

// The slot with the longest prefix, and every candidate as a try.
int FindLongestPrefix(const Rows& rows, const Inputs& inputs, Explanation* explanation) {
  std::size_t longest = 0;
  int winner = kNoRow;
  std::vector<int> matching;
  for (int slot = 0; slot < rows.count(); ++slot) {
    if (rows.Text(slot, "MatchKey1") != inputs.Text("key1") ||
        rows.Text(slot, "FitId") == records::kFreeSlot) {
      continue;
    }
    const std::size_t prefix = PrefixOf(inputs.Text("card"), rows.Text(slot, "CardPrefix"));
    AddFitTry(rows, slot, prefix == 0 ? "none" : std::to_string(prefix) + " characters agree",
              explanation);
    if (prefix > 0) matching.push_back(slot);
    if (prefix > longest) {
      longest = prefix;
      winner = slot;
    }
  }
  for (const int slot : matching) {
    if (slot != winner) AddShadow(rows, slot, explanation);
  }
  return winner;
}

void ExplainIndirectState(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const Rows rows("fit", util.AtmFitPtr, util.MaxFit);
  int slot = FindLongestPrefix(rows, inputs, explanation);
  const int catch_all = FindCatchAll(rows);
  if (slot == kNoRow) {
    explanation->tries.push_back({"CardPrefix", kCatchAll, SlotOrNone(catch_all)});
    slot = catch_all;
  } else if (catch_all != kNoRow) {
    AddShadow(rows, catch_all, explanation);
  }
  Facts expected;
  if (slot != kNoRow) {
    explanation->source = rows.Name(slot);
    expected = {{"IndirectNextState", rows.Text(slot, "IndirectNextState")}};
  }
  char state[8] = {};
  const bool found = util.readIndirectState(inputs.Chars("key1"), inputs.Chars("key2"),
                                            inputs.Chars("card"), state) == 1;
  Conclude(explanation, found, found ? Facts{{"IndirectNextState", state}} : Facts(),
           slot != kNoRow, expected);
}

constexpr Input kInst = {"inst", "institution terminal group"};
constexpr Input kGroup = {"group", "logical group"};
constexpr Input kAtm = {"atm", "ATM id"};
constexpr Input kKey1 = {"key1", "first selection key"};
constexpr Input kKey2 = {"key2", "second selection key"};

}  // namespace

const std::array<ExplainKind, kTableKinds> kExplainTables = {{
    {"property",
     true,
     ExplainProperty,
     {kInst,
      kGroup,
      kAtm,
      {"txn", "transaction code", kWholeNumber},
      {"resp", "response code", kWholeNumber},
      {"currency", "currency code", kWholeNumber}}},
    {"action",
     true,
     ExplainAction,
     {Input{"search", "what is looked for: an action, or the number of a transaction",
            "action value"},
      kInst,
      kGroup,
      kAtm,
      {"statuses", "status codes, each followed by |"},
      {"txn", "transaction code, for value", kWholeNumber, "0"}}},
    {"fit",
     true,
     ExplainFit,
     {kKey1,
      kKey2,
      {"key3", "third selection key"},
      {"ordinal", "which of the selected records, from 1", kWholeNumber, "1"}}},
    {"indirect-state",
     true,
     ExplainIndirectState,
     {kKey1, kKey2, {"card", "card number; its first ten digits are enough"}}},
}};
