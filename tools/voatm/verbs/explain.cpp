// voatm explain: which row or file decides an answer, and why.
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ask/experiment.h"
#include "ask/rows_source.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct Options : DataOptions {
  std::string kind;
  std::vector<std::string> given;
  std::string from;
  bool trace = false;
  bool locks = false;
};

Json FactsJson(const Facts& facts) {
  Json json = Json::object();
  for (const Fact& fact : facts) {
    std::string name = fact.name;
    for (int number = 2; json.contains(name); ++number) {
      name = fact.name + " " + std::to_string(number);
    }
    json[name] = fact.value;
  }
  return json;
}

Json PlacedJson(const std::vector<Placed>& all) {
  Json json = Json::array();
  for (const Placed& each : all) {
    json.push_back({{"where", each.where}, {"answer", FactsJson(each.answer.facts)}});
  }
  return json;
}

Json ExplanationJson(const Question& question, const Explanation& explanation,
                     const Options& options) {
  Json tries = Json::array();
  for (const Try& each : explanation.tries) {
    tries.push_back({{"level", each.level}, {"tried", each.tried}, {"result", each.result}});
  }
  Json json = {{"kind", question.name},
               {"found", explanation.taken.answer.found},
               {"source", explanation.taken.where},
               {"answer", FactsJson(explanation.taken.answer.facts)},
               {"tries", std::move(tries)},
               {"behind", PlacedJson(explanation.behind)},
               {"alone", PlacedJson(explanation.alone)}};
  if (question.note != nullptr) json["note"] = question.note;
  if (options.locks && explanation.cost) {
    json["locks"] = {{"slots", explanation.cost->slots}, {"calls", explanation.cost->calls}};
  }
  if (options.trace) json["trace"] = explanation.trace;
  return json;
}

std::string InOneLine(const Facts& facts) {
  std::string line;
  for (const Fact& fact : facts) line += (line.empty() ? "" : " ") + fact.value;
  return line;
}

void PrintTitle(const std::string& title) {
  PrintLine("");
  PrintLine(title);
}

void PrintAnswer(const Facts& facts) {
  if (facts.empty()) return;
  PrintTitle("Answer");
  TextTable table({{"FIELD"}, {"VALUE"}});
  for (const Fact& fact : facts) table.AddRow({fact.name, fact.value});
  table.Print();
}

void PrintTries(const std::vector<Try>& tries) {
  if (tries.empty()) return;
  PrintTitle("Tries");
  TextTable table({{"LEVEL"}, {"TRIED"}, {"RESULT"}});
  for (const Try& each : tries) table.AddRow({each.level, each.tried, each.result});
  table.Print();
}

void PrintPlaced(const char* title, const std::vector<Placed>& all) {
  if (all.empty()) return;
  PrintTitle(title);
  TextTable table({{"WHERE"}, {"ANSWER"}});
  for (const Placed& each : all) table.AddRow({each.where, InOneLine(each.answer.facts)});
  table.Print();
}

void PrintText(const Question& question, const Explanation& explanation, const Options& options) {
  const Answer& answer = explanation.taken.answer;
  if (question.ground != Ground::kNothing) {
    answer.found ? PrintLine("found: " + explanation.taken.where)
                 : PrintLine("not found", Tone::kAlarm);
  }
  PrintAnswer(answer.facts);
  PrintTries(explanation.tries);
  PrintPlaced("Behind it, each when those before are gone", explanation.behind);
  PrintPlaced("Never reached, though each would do alone", explanation.alone);
  if (question.note != nullptr) PrintTitle("Note: " + std::string(question.note) + ".");
  if (options.locks && explanation.cost) {
    PrintTitle("Under locks: " + std::to_string(explanation.cost->slots) + " slots, " +
               std::to_string(explanation.cost->calls) + " semaphore calls");
  }
  if (!options.trace) return;
  PrintTitle("Trace");
  for (const std::string& line : explanation.trace) PrintLine(line);
  if (explanation.trace.empty()) PrintLine("nothing was traced");
}

Explanation Explain(const Options& options, const Question& question, const Inputs& inputs) {
  if (!options.from.empty() && question.ground != Ground::kRows) {
    throw UsageError("--from is of use where a table answers");
  }
  if (question.ground == Ground::kNothing) return ExplainText(question, inputs);
  if (question.ground != Ground::kRows) {
    RequireHome(options.home);
    setenv("VODIR_HOME", options.home.c_str(), 1);
    return ExplainFiles(question, inputs);
  }
  Rows rows = RowsFrom(options.from, options.home, question.Table());
  return RowsExperiment(question, inputs, &rows).Explain();
}

// Without a decision to make, what is said is the answer.
ExitCode ExitCodeOf(const Question& question, const Explanation& explanation) {
  if (!explanation.unseen.empty()) return kCannotRun;
  const bool yes = question.ground == Ground::kNothing || explanation.taken.answer.found;
  return yes ? kDone : kFindings;
}

ExitCode ExplainAndPrint(const Options& options) {
  const Question& question = *FindQuestion(options.kind);
  const Explanation explanation = Explain(options, question, ReadInputs(question, options.given));
  if (options.json) {
    PrintJson(ExplanationJson(question, explanation, options));
  } else {
    PrintText(question, explanation, options);
  }
  if (!explanation.unseen.empty()) Say(explanation.unseen + ": a driver may see more");
  return ExitCodeOf(question, explanation);
}

std::string Usages() {
  std::string usages = "What can be explained:\n";
  for (const Question* question : AllQuestions()) {
    usages += "\n  " + question->Usage();
    for (const Input& input : question->inputs) {
      const std::string about = input.about;
      if (about.find(':') != std::string::npos) {
        usages += "\n    " + std::string(input.name) + ": " + about;
      }
    }
  }
  return usages;
}

Action DeclareExplain(OptionList* list) {
  const auto options = std::make_shared<Options>();
  std::vector<std::string> kinds;
  for (const Question* question : AllQuestions()) kinds.emplace_back(question->name);
  list->Choice("KIND", kinds, &options->kind, "What is explained").Required();
  list->Texts("INPUT", "", OptionRow::kAnyNumber, &options->given,
              "What the library's operation is given");
  AddDataOptions(list, options.get());
  list->Text("--from", "LIVE|DIR|FILE", &options->from,
             "The tables: those in memory (live), seed files, or a dump");
  list->Flag("--locks", &options->locks, "Say what a driver under locks spends for the answer");
  list->Flag("--trace", &options->trace, "Show what the library traces, of all levels");
  return [options] { return ExplainAndPrint(*options); };
}

}  // namespace

const Verb kExplain = {
    "explain",
    "Say which row or file decides an answer",
    "Asks the library what a driver would be given, and prints the answer, what was tried for it\n"
    "in order, and what stands behind it: the row or file that would answer if the ones before it\n"
    "were gone, with that answer; and rows that are never reached although each would do alone.\n"
    "It knows no rule of the library's: each of these is an answer of the library's own, on a\n"
    "copy of the rows or with a file hidden from it. An input that is left out is named with its\n"
    "meaning. Tables are read without locks, in memory, from a directory of seed files, or from a\n"
    "dump of the table.\n\n"
    "Exit status: 1 when the answer is \"not found\", 2 when something could not be looked at.\n\n"
    "JSON: {kind, found, source, answer: {field: value}, tries: [{level, tried, result}],\n"
    "behind: [{where, answer}], alone: [{where, answer}], note, locks: {slots, calls} with "
    "--locks,\n"
    "trace: [text] with --trace}.",
    "voatm explain property HARBOUR BRANCH ATM00003 10000 0 978 --home examples/home",
    DeclareExplain,
    Usages};
