// voatm explain: which row or file decides an answer, and why.
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ask/experiment.h"
#include "ask/side.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct ExplainOptions : DataOptions {
  std::string kind;
  std::vector<std::string> given;
  std::string from;
  bool trace = false;
  bool locks = false;
};

void PrintTitle(const std::string& title) {
  PrintLine("");
  PrintLine(title);
}

void PrintExplain(const Question& question, const Json& json) {
  if (question.ground != Ground::kNothing) {
    json["found"] ? PrintLine("found: " + json["source"].get<std::string>())
                  : PrintLine("not found", Tone::kAlarm);
  }
  Json facts = Json::array();
  for (const auto& [name, value] : json["answer"].items()) {
    facts.push_back({{"field", name}, {"value", value}});
  }
  PrintRows("Answer", facts);
  PrintRows("Tries", json["tries"]);
  PrintRows("Behind it, each when those before are gone", json["behind"]);
  PrintRows("Never reached, though each would do alone", json["alone"]);
  if (json.contains("note")) PrintTitle("Note: " + InOneLine(json["note"]) + ".");
  if (json.contains("locks")) {
    PrintTitle("Under locks: " + InOneLine(json["locks"]["slots"]) + " slots, " +
               InOneLine(json["locks"]["calls"]) + " semaphore calls");
  }
  if (!json.contains("trace")) return;
  PrintTitle(json["trace"].empty() ? "Nothing was traced" : "Trace");
  for (const Json& line : json["trace"]) PrintLine(InOneLine(line));
}

Json Explain(const ExplainOptions& options, const Question& question, const Inputs& inputs) {
  if (question.ground != Ground::kRows && (options.locks || !options.from.empty())) {
    throw UsageError("--from and --locks are of use where a table answers");
  }
  if (question.ground != Ground::kRows) {
    if (question.ground != Ground::kNothing) UseHome(options.home);
    return ExplainFiles(question, inputs);
  }
  Rows rows = RowsFrom(options.from, options.home, *question.table);
  Json json = RowsExperiment(question, inputs, &rows).Explain();
  if (!rows.unseen.empty()) json["unseen"] = rows.unseen;
  return json;
}

ExitCode ExplainAndPrint(const ExplainOptions& options) {
  const Question& question = *FindQuestion(options.kind);
  Json json = {{"kind", question.name}};
  json.update(Explain(options, question, ReadInputs(question, options.given)));
  if (question.note != nullptr) json["note"] = question.note;
  if (!options.locks) json.erase("locks");
  if (!options.trace) json.erase("trace");
  options.json ? PrintJson(json) : PrintExplain(question, json);
  if (json.contains("unseen")) {
    Say(InOneLine(json["unseen"]) + ": a driver may see more");
    return kCannotRun;
  }
  // Without a decision to make, what is said is the answer.
  return question.ground == Ground::kNothing || json["found"] ? kDone : kFindings;
}

std::string Usages() {
  std::string usages = "What can be explained:\n";
  for (const Question* question : AllQuestions()) {
    usages += "\n  " + question->Usage() + question->Forms();
  }
  return usages;
}

Action DeclareExplain(OptionList* list) {
  const auto options = std::make_shared<ExplainOptions>();
  std::vector<std::string> kinds;
  for (const Question* question : AllQuestions()) kinds.emplace_back(question->name);
  list->Choice("KIND", kinds, &options->kind, "What is explained").Required();
  list->Texts("INPUT", "", OptionRow::kAnyNumber, &options->given,
              "What the library's operation is given");
  AddDataOptions(list, options.get());
  list->Text("--from", "LIVE|DIR|FILE", &options->from,
             "The tables: those in memory (live), seed files, or a dump; their slots by --home");
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
    "copy of the rows, or with a file or all entries of a key hidden from it. An input that is\n"
    "left out is named with its meaning. Tables are read without locks, in memory, from a\n"
    "directory of seed files, or from a dump of the table; rows for which the home has no slot\n"
    "are refused.\n\n"
    "Exit status: 1 when the answer is \"not found\", 2 when something could not be looked at.\n\n"
    "JSON: {kind, found, source, answer: {field: value}, tries: [{level, tried, result}],\n"
    "behind: [{where, answer}], alone: [{where, answer}], note, locks: {slots, calls} with "
    "--locks,\n"
    "trace: [text] with --trace, unseen: what could not be looked at}.",
    "voatm explain property HARBOUR BRANCH ATM00003 10000 0 978 --home examples/home",
    DeclareExplain,
    Usages};
