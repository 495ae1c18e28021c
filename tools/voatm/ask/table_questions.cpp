// The requests that shared tables answer.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ask/question.h"
#include "show/record_view.h"

namespace {

Facts RecordFacts(const char* table, const void* record) {
  Facts facts;
  for (const records::RecordField& field : FindQuestion(table)->Table()) {
    if (field.kind == records::FieldKind::kBytes) continue;
    facts.push_back({field.name, FieldText(field, static_cast<const char*>(record))});
  }
  return facts;
}

bool ReadProperty(VoATMUtil& util, const Inputs& inputs, VoAtmProperty* row) {
  return util.ReadAtmProperty(inputs.Chars("inst"), inputs.Chars("group"), inputs.Chars("atm"),
                              inputs.Number("txn"), inputs.Number("resp"),
                              inputs.Number("currency"), row) == 1;
}

Answer AskProperty(VoATMUtil& util, const Inputs& inputs) {
  VoAtmProperty row{};
  if (!ReadProperty(util, inputs, &row)) return {};
  return {true, RecordFacts("property", &row)};
}

void MarkProperty(void* row, int digit) { static_cast<VoAtmProperty*>(row)->RecordId = digit; }

int PropertyMark(VoATMUtil& util, const Inputs& inputs) {
  VoAtmProperty row{};
  return ReadProperty(util, inputs, &row) ? row.RecordId : -1;
}

struct Action {
  bool found;
  bool by_txn;
  char text[sizeof(VoAtmActionProperty::ActionText) + 1];
  int value;
};

Action FindAction(VoATMUtil& util, const Inputs& inputs) {
  Action action = {false, inputs.Text("search") == "value", {}, 0};
  std::string statuses = inputs.Text("statuses");
  action.found =
      util.ReadAtmActionProperty(inputs.Chars("inst"), inputs.Chars("group"), inputs.Chars("atm"),
                                 statuses.data(), inputs.Number("txn"), action.text, &action.value,
                                 action.by_txn ? TXN_VALUE : STATUS_ACTION) == 1;
  return action;
}

Answer AskAction(VoATMUtil& util, const Inputs& inputs) {
  const Action action = FindAction(util, inputs);
  if (!action.found) return {};
  if (action.by_txn) return {true, {{"TxnValue", std::to_string(action.value)}}};
  return {true, {{"ActionText", action.text}}};
}

// A number of three digits is what both answers can bring along.
constexpr int kActionMarks = 1000;

void MarkAction(void* row, int digit) {
  auto* const action = static_cast<VoAtmActionProperty*>(row);
  memset(action->TxnValue, 0, sizeof action->TxnValue);
  snprintf(action->ActionText, sizeof action->ActionText, "%d", digit);
  std::to_string(digit).copy(action->TxnValue, sizeof action->TxnValue);
}

int ActionMark(VoATMUtil& util, const Inputs& inputs) {
  const Action action = FindAction(util, inputs);
  if (!action.found) return -1;
  return action.by_txn ? action.value : atoi(action.text);
}

bool ReadFit(VoATMUtil& util, const Inputs& inputs, AtmFit* record) {
  return util.ReadFitMemory(inputs.Chars("key1"), inputs.Chars("key2"), inputs.Chars("key3"),
                            record, inputs.Number("ordinal")) == 1;
}

Answer AskFit(VoATMUtil& util, const Inputs& inputs) {
  AtmFit record{};
  if (!ReadFit(util, inputs, &record)) return {};
  return {true, RecordFacts("fit", &record)};
}

void MarkFit(void* row, int digit) {
  memcpy(static_cast<AtmFit*>(row)->Uninterpreted, &digit, sizeof digit);
}

int FitMark(VoATMUtil& util, const Inputs& inputs) {
  AtmFit record{};
  if (!ReadFit(util, inputs, &record)) return -1;
  int digit;
  memcpy(&digit, record.Uninterpreted, sizeof digit);
  return digit;
}

// Empty when there is none. A state is one character, be it NUL.
std::string IndirectState(VoATMUtil& util, const Inputs& inputs) {
  char state[16] = {};
  const int result = util.ReadIndirectState(inputs.Chars("key1"), inputs.Chars("key2"),
                                            inputs.Chars("card"), state);
  return result == 1 ? std::string(1, state[0]) : "";
}

Answer AskIndirectState(VoATMUtil& util, const Inputs& inputs) {
  const std::string state = IndirectState(util, inputs);
  if (state.empty()) return {};
  return {true, {{"IndirectNextState", state.substr(0, state.find('\0'))}}};
}

void MarkIndirectState(void* row, int digit) {
  static_cast<AtmFit*>(row)->IndirectNextState = static_cast<char>(digit);
}

int IndirectStateMark(VoATMUtil& util, const Inputs& inputs) {
  const std::string state = IndirectState(util, inputs);
  return state.empty() ? -1 : static_cast<unsigned char>(state[0]);
}

constexpr int kStatusRows = 15;
constexpr int kStatusSize = 11;

// A terminal's status texts, as the inputs say they are.
struct Terminal {
  explicit Terminal(const VoATMUtil& util, const Inputs& inputs) {
    std::string list = inputs.Text("array");
    VoATMUtil helper = util;
    for (int row = 0; row < kStatusRows; ++row) {
      char token[256] = {};
      if (list.size() < sizeof token) helper.ParseToken(list.data(), token, row + 1, '|');
      snprintf(array[row], kStatusSize, "%.10s", token);
    }
    snprintf(message, sizeof message, "%s", inputs.Chars("message"));
    snprintf(code, sizeof code, "%s", inputs.Chars("code"));
  }

  char array[kStatusRows][kStatusSize] = {};
  char code[64] = {};
  char message[201] = {};
};

// What the library does with a code, as what it changes, and whether the table has the code.
Answer AskStatus(VoATMUtil& util, const Inputs& inputs) {
  const Terminal before(util, inputs);
  Terminal after = before;
  util.BuiltStatusMsg(after.array, after.code, after.message);
  Answer answer = {util.verifyAtmStatusMemory(after.code) == 1, {}};
  for (int row = 0; row < kStatusRows; ++row) {
    if (memcmp(before.array[row], after.array[row], kStatusSize) == 0) continue;
    answer.facts.push_back({"row " + std::to_string(row), after.array[row]});
  }
  if (answer.facts.empty()) answer.facts.push_back({"rows", "as they were"});
  const bool changed = strcmp(before.message, after.message) != 0;
  answer.facts.push_back({"message", changed ? after.message : "as it was"});
  return answer;
}

constexpr Input kInst = {"inst", "institution terminal group"};
constexpr Input kGroup = {"group", "logical group"};
constexpr Input kAtm = {"atm", "ATM id"};
constexpr Input kKey1 = {"key1", "first selection key"};
constexpr Input kKey2 = {"key2", "second selection key"};

}  // namespace

const std::vector<Question>& TableQuestions() {
  static const std::vector<Question> kQuestions = {
      {"property",
       Ground::kRows,
       "property",
       {kInst,
        kGroup,
        kAtm,
        {"txn", "transaction code", kWholeNumber},
        {"resp", "response code", kWholeNumber},
        {"currency", "currency code", kWholeNumber}},
       AskProperty,
       {INT_MAX, MarkProperty, PropertyMark}},
      {"action",
       Ground::kRows,
       "action",
       {{"search", "what is looked for: an action, or the number of a transaction", "action value"},
        kInst,
        kGroup,
        kAtm,
        {"statuses", "status codes, each followed by |, the last one too: PAPEROUT|CASHLOW|"},
        {"txn", "transaction code, for value", kWholeNumber, "0"}},
       AskAction,
       {kActionMarks, MarkAction, ActionMark}},
      {"fit",
       Ground::kRows,
       "fit",
       {kKey1,
        kKey2,
        {"key3", "third selection key"},
        {"ordinal", "which of the selected records, from 1", kWholeNumber, "1"}},
       AskFit,
       {INT_MAX, MarkFit, FitMark}},
      {"indirect-state",
       Ground::kRows,
       "fit",
       {kKey1, kKey2, {"card", "card number; its first ten digits are enough"}},
       AskIndirectState,
       {UCHAR_MAX + 1, MarkIndirectState, IndirectStateMark},
       "no lock is taken for this answer, whatever LockFlag says"},
      {"status",
       Ground::kRows,
       "status",
       {{"code", "the code that the ATM reports"},
        {"message", "the status message so far: codes, each followed by |, or NONE", nullptr,
         "NONE"},
        {"array", "the codes in the fifteen rows so far, separated by |", nullptr, ""}},
       AskStatus},
  };
  return kQuestions;
}
