// The requests that shared tables answer.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>

#include "ask/question.h"
#include "options.h"
#include "show/record_view.h"

namespace {

using records::kRecordTables;

Json RecordFacts(const records::RecordTable& table, const void* record) {
  Json facts = Json::object();
  for (const records::RecordField& field : table) {
    const char* const bytes = static_cast<const char*>(record) + field.offset;
    const bool is_zero = std::all_of(bytes, bytes + field.size, [](char c) { return c == 0; });
    if (field.kind == records::FieldKind::kBytes && is_zero) continue;
    facts[field.name] = FieldText(field, static_cast<const char*>(record));
  }
  return facts;
}

Answer AskProperty(VoATMUtil& util, const Inputs& inputs) {
  VoAtmProperty row{};
  const int result =
      util.ReadAtmProperty(inputs["inst"], inputs["group"], inputs["atm"], inputs.Number("txn"),
                           inputs.Number("resp"), inputs.Number("currency"), &row);
  return AnswerWhen(result == 1, RecordFacts(kRecordTables[records::kProperty], &row));
}

Answer AskAction(VoATMUtil& util, const Inputs& inputs) {
  const bool by_txn = inputs.Is("search", "value");
  if (by_txn && inputs.Is("txn", "")) throw UsageError("no txn (transaction code) of the value");
  std::string statuses = inputs["statuses"];
  char text[sizeof(VoAtmActionProperty::ActionText) + 1] = {};
  int value = 0;
  const int result = util.ReadAtmActionProperty(inputs["inst"], inputs["group"], inputs["atm"],
                                                statuses.data(), inputs.Number("txn"), text, &value,
                                                by_txn ? TXN_VALUE : STATUS_ACTION);
  if (by_txn) return AnswerWhen(result == 1, {{"TxnValue", std::to_string(value)}});
  return AnswerWhen(result == 1, {{"ActionText", text}});
}

Answer AskFit(VoATMUtil& util, const Inputs& inputs) {
  AtmFit record{};
  const int result = util.ReadFitMemory(inputs["match1"], inputs["match2"], inputs["match3"],
                                        &record, inputs.Number("ordinal"));
  return AnswerWhen(result == 1, RecordFacts(kRecordTables[records::kFit], &record));
}

// A state is one character.
Answer AskIndirectState(VoATMUtil& util, const Inputs& inputs) {
  AtmFit record{};
  char state[16] = {};
  const int result =
      util.ReadIndirectState(inputs["match1"], inputs["match2"], inputs["card"], state);
  record.IndirectNextState = state[0];
  const records::RecordTable& fit = kRecordTables[records::kFit];
  const records::RecordField& field = *fit.Find("IndirectNextState");
  return AnswerWhen(result == 1,
                    {{field.name, FieldText(field, reinterpret_cast<const char*>(&record))}});
}

constexpr std::size_t kStatusRows = 15;
constexpr std::size_t kStatusSize = 11;

// A terminal's status texts, as the inputs say they are.
struct Terminal {
  explicit Terminal(const Inputs& inputs) {
    Require("code", std::strlen(inputs["code"]), kStatusSize - 1, "characters");
    Require("message", std::strlen(inputs["message"]), sizeof message / 2, "characters");
    std::istringstream codes(inputs["array"]);
    std::size_t row = 0;
    for (std::string each; std::getline(codes, each, '|'); ++row) {
      Require("array", row + 1, kStatusRows, "codes");
      Require("a code of array", each.size(), kStatusSize - 1, "characters");
      each.copy(array[row], kStatusSize - 1);
    }
    snprintf(message, sizeof message, "%s", inputs["message"]);
    snprintf(code, sizeof code, "%s", inputs["code"]);
  }

  static void Require(const char* name, std::size_t has, std::size_t most, const char* what) {
    if (has <= most) return;
    throw UsageError(name + (" has more than " + std::to_string(most)) + " " + what);
  }

  char array[kStatusRows][kStatusSize] = {};
  char code[64] = {};
  char message[201] = {};
};

// What a step makes of a text.
std::string Became(const char* before, const char* after) {
  const auto shown = [](const char* text) { return std::string(*text == '\0' ? "(empty)" : text); };
  return strcmp(before, after) == 0 ? "as it was" : shown(before) + " -> " + shown(after);
}

// What the library does with a code, step by step, and whether the table has the code.
Answer AskStatus(VoATMUtil& util, const Inputs& inputs) {
  const Terminal before(inputs);
  Terminal after = before;
  util.BuiltStatusMsg(after.array, after.code, after.message);
  Answer answer = {util.verifyAtmStatusMemory(after.code) == 1};
  for (std::size_t row = 0; row < kStatusRows; ++row) {
    if (memcmp(before.array[row], after.array[row], kStatusSize) == 0) continue;
    answer.facts["row " + std::to_string(row)] = Became(before.array[row], after.array[row]);
  }
  if (answer.facts.empty()) answer.facts["rows"] = "as they were";
  answer.facts["message"] = Became(before.message, after.message);
  return answer;
}

}  // namespace

const std::vector<Question>& TableQuestions() {
  static const std::vector<Question> kQuestions = {
      {"property",
       Ground::kRows,
       "inst group atm txn resp currency",
       AskProperty,
       nullptr,
       &kRecordTables[records::kProperty],
       {INT_MAX, {"RecordId"}}},
      {"action",
       Ground::kRows,
       "search=action|value inst group atm statuses [txn]",
       AskAction,
       nullptr,
       &kRecordTables[records::kAction],
       {1000, {"ActionText", "TxnValue"}}},
      {"fit",
       Ground::kRows,
       "match1 match2 match3 [ordinal]",
       AskFit,
       nullptr,
       &kRecordTables[records::kFit],
       {1000000000, {"CardPrefix"}}},
      {"indirect-state",
       Ground::kRows,
       "match1 match2 card",
       AskIndirectState,
       "no lock is taken for this answer, whatever LockFlag says",
       &kRecordTables[records::kFit],
       {10, {"IndirectNextState"}}},
      {"status", Ground::kRows, "code [message] [array]", AskStatus, nullptr,
       &kRecordTables[records::kStatus]},
  };
  return kQuestions;
}
