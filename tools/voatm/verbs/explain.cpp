// voatm explain: which row or file decided an answer, and why.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ask/explain_core.h"
#include "ask/library.h"
#include "look/findings.h"
#include "look/survey.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct Options : DataOptions {
  std::string kind;
  std::vector<std::string> given;
  bool trace = false;
};

Json FactsJson(const Facts& facts) {
  Json json = Json::object();
  for (const Fact& fact : facts) json[fact.name] = fact.value;
  return json;
}

Json ExplanationJson(const ExplainKind& kind, const Explanation& explanation, bool trace) {
  Json tries = Json::array();
  for (const Try& each : explanation.tries) {
    tries.push_back({{"level", each.level}, {"tried", each.tried}, {"result", each.result}});
  }
  Json shadowed = Json::array();
  for (const Fact& fact : explanation.shadowed) {
    shadowed.push_back({{"where", fact.name}, {"what", fact.value}});
  }
  Json json = {{"kind", kind.name},
               {"found", explanation.found},
               {"source", explanation.source},
               {"answer", FactsJson(explanation.answer)},
               {"tries", std::move(tries)},
               {"shadowed", std::move(shadowed)},
               {"notes", explanation.notes}};
  if (trace) json["trace"] = explanation.trace;
  return json;
}

void PrintFacts(const char* title, const Facts& facts, const char* name, const char* value) {
  if (facts.empty()) return;
  std::printf("\n%s\n", title);
  TextTable table({{name}, {value}});
  for (const Fact& fact : facts) table.AddRow({fact.name, fact.value});
  table.Print();
}

// An entry's place without the path, which stands above it.
void PrintTries(const std::vector<Try>& tries) {
  std::printf("\nTries\n");
  TextTable table({{"LEVEL"}, {"TRIED"}, {"RESULT"}});
  std::string file;
  for (const Try& each : tries) {
    if (each.level == "file") file = each.tried + ":";
    const bool below = !file.empty() && each.result.compare(0, file.size(), file) == 0;
    const std::string place = "line " + each.result.substr(below ? file.size() : 0);
    table.AddRow({each.level, each.tried, below ? place : each.result});
  }
  table.Print();
}

void PrintText(const Explanation& explanation, bool trace) {
  if (explanation.found) {
    std::printf("found: %s\n", explanation.source.c_str());
  } else {
    std::printf("%s\n", Alarm("not found").c_str());
  }
  PrintFacts("Answer", explanation.answer, "FIELD", "VALUE");
  PrintTries(explanation.tries);
  PrintFacts("Shadowed", explanation.shadowed, "WHERE", "WHAT");
  for (const std::string& note : explanation.notes) std::printf("\nNote: %s.\n", note.c_str());
  if (!trace) return;
  std::printf("\nTrace\n");
  for (const std::string& line : explanation.trace) std::printf("%s\n", Readable(line).c_str());
  if (explanation.trace.empty()) std::printf("nothing was traced\n");
}

Explanation ExplainAt(const std::string& home, const ExplainKind& kind, const Inputs& inputs) {
  RequireHome(home);
  if (!kind.needs_tables) {
    setenv("VODIR_HOME", home.c_str(), 1);
    VoATMUtil util;
    return Explain(util, kind, inputs);
  }
  const Survey survey = SurveyTables(home);
  for (const TableState& table : survey.tables) {
    const std::vector<Finding> findings = CheckTable(survey, table);
    if (!findings.empty()) throw std::runtime_error(findings.front().what + "; see voatm tables");
  }
  Library library(survey);
  return Explain(library.util(), kind, inputs);
}

template <typename Take>
void ForEachKind(Take take) {
  for (const ExplainKind& kind : kExplainTables) take(kind);
  for (const ExplainKind& kind : kExplainFiles) take(kind);
}

const ExplainKind& KindNamed(const std::string& name) {
  const ExplainKind* found = nullptr;
  ForEachKind([&](const ExplainKind& kind) {
    if (name == kind.name) found = &kind;
  });
  if (found == nullptr) throw UsageError("no kind \"" + name + "\" to explain");
  return *found;
}

// "action action|value inst group atm statuses [txn]"
std::string Usage(const ExplainKind& kind) {
  std::string usage = kind.name;
  for (const Input& input : kind.inputs) {
    if (input.name == nullptr) break;
    const bool words = input.values != nullptr && std::string(input.values) != kWholeNumber;
    std::string name = words ? input.values : input.name;
    std::replace(name.begin(), name.end(), ' ', '|');
    usage += input.standard == nullptr ? " " + name : " [" + name + "]";
  }
  return usage;
}

std::string Usages() {
  std::string usages = "What can be explained:\n";
  ForEachKind([&](const ExplainKind& kind) { usages += "\n  " + Usage(kind); });
  return usages;
}

[[noreturn]] void Refuse(const ExplainKind& kind, const std::string& cause) {
  throw UsageError(cause + ": explain " + Usage(kind));
}

bool IsAllowed(const std::string& value, const char* values) {
  if (values == nullptr) return true;
  if (std::string(values) == kWholeNumber) return ReadNumber(value).has_value();
  std::istringstream words(values);
  for (std::string word; words >> word;) {
    if (word == value) return true;
  }
  return false;
}

Inputs ReadInputs(const ExplainKind& kind, const std::vector<std::string>& given) {
  Inputs inputs;
  std::size_t used = 0;
  for (const Input& input : kind.inputs) {
    if (input.name == nullptr) break;
    if (used == given.size() && input.standard == nullptr) {
      Refuse(kind, std::string("no ") + input.name + " (" + input.about + ")");
    }
    const std::string& value = used < given.size() ? given[used++] : input.standard;
    if (!IsAllowed(value, input.values)) {
      Refuse(kind, std::string(input.name) + " cannot be \"" + value + "\"");
    }
    inputs[input.name] = value;
  }
  if (used < given.size()) Refuse(kind, "too much: \"" + given[used] + "\"");
  return inputs;
}

ExitCode ExplainAndPrint(const Options& options) {
  const ExplainKind& kind = KindNamed(options.kind);
  const Explanation explanation = ExplainAt(options.home, kind, ReadInputs(kind, options.given));
  if (options.json) {
    PrintJson(ExplanationJson(kind, explanation, options.trace));
  } else {
    PrintText(explanation, options.trace);
  }
  if (explanation.disagreement.empty()) return explanation.found ? kDone : kFindings;
  Say(explanation.disagreement + "; what is read may have changed meanwhile: try again");
  return kCannotRun;
}

Action DeclareExplain(OptionList* list) {
  const auto options = std::make_shared<Options>();
  std::vector<std::string> kinds;
  ForEachKind([&](const ExplainKind& kind) { kinds.emplace_back(kind.name); });
  list->Choice("KIND", kinds, &options->kind, "What is explained").Required();
  list->Texts("INPUT", "", OptionRow::kAnyNumber, &options->given,
              "What the library's operation is given");
  AddDataOptions(list, options.get());
  list->Flag("--trace", &options->trace, "Show what the library traces, of all levels");
  return [options] { return ExplainAndPrint(*options); };
}

}  // namespace

const Verb kExplain = {
    "explain",
    "Say which row or file decides an answer",
    "Asks the library what a driver would be given, and prints the answer, every key or path that\n"
    "is tried for it in order, and what the answer hides: other rows that would do, files at "
    "later\n"
    "levels, defaults. The tables are read without locks. An input that is left out is named with\n"
    "its meaning.\n\n"
    "Exit status: 1 when the answer is \"not found\"; 2 also when the library's answer is not "
    "where\n"
    "the tries lead.\n\n"
    "JSON: {kind, found, source, answer: {field: value}, tries: [{level, tried, result}],\n"
    "shadowed: [{where, what}], notes: [text], trace: [text] with --trace}.",
    "voatm explain property HARBOUR BRANCH ATM00003 10000 0 978 --home examples/home",
    DeclareExplain,
    Usages};
