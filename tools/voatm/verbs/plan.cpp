// voatm plan: what the cassettes pay.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ask/experiment.h"
#include "json_file.h"
#include "show/output.h"
#include "verbs/plan_sweep.h"
#include "verbs/verbs.h"

namespace {

constexpr const char* kPays = "pays";  // the fate of a configured logic that is dispensed

struct PlanOptions : DataOptions {
  std::string model;
  std::optional<int> amount;
  std::optional<int> currency;
  std::optional<int> max_notes;
  std::optional<std::string> logic;
  std::vector<std::string> cassettes;
  std::string logic_name;
  std::vector<std::string> scope;
  std::optional<int> index;
  std::string sweep;
  bool empty = false;
  std::string html;
};

template <typename T>
const T& Required(const std::optional<T>& value, const char* name) {
  if (!value) throw UsageError(std::string(name) + " is required");
  return *value;
}

CashRequest RequestOf(const PlanOptions& options) {
  if (options.model.empty()) throw UsageError("--model is required");
  CashRequest request{options.model,
                      Required(options.currency, "--currency"),
                      Required(options.max_notes, "--max-notes"),
                      {}};
  if (options.cassettes.empty()) throw UsageError("CASSETTE is required");
  SetCassettes(&request, options.cassettes);
  return request;
}

// The answer of the home's dispense logics for an amount.
Placed LookUpLogic(const PlanOptions& options, int amount) {
  Inputs inputs;
  inputs["logic"] = options.logic_name;
  inputs["index"] = std::to_string(options.index.value_or(amount));
  inputs["model"] = options.model;
  const char* const names[] = {"s1", "s2", "s3", "fallback"};
  for (std::size_t i = 0; i < options.scope.size(); ++i) inputs[names[i]] = options.scope[i];
  return AskFiles(*FindQuestion("displogic"), inputs);
}

bool HasLogic(const PlanOptions& options) { return options.logic || !options.logic_name.empty(); }

// Where the configured logic comes from: the home, the command line or the file, or nowhere.
LogicOf LogicSource(const PlanOptions& options, const CashRequest& request) {
  if (options.logic_name.empty()) {
    return [logic = options.logic.value_or(request.NoLogic())](int) { return logic; };
  }
  return [&](int amount) -> std::optional<std::string> {
    const Placed placed = LookUpLogic(options, amount);
    if (!placed.answer.found) return std::nullopt;
    return placed.answer.facts.front().get<std::string>();
  };
}

void CheckLogicOptions(const PlanOptions& options, const CashRequest& request) {
  if (options.logic && options.logic->size() != 2 * request.positions()) {
    throw UsageError("--logic " + *options.logic + " has not " +
                     std::to_string(2 * request.positions()) + " digits");
  }
  if (options.logic_name.empty()) {
    if (!options.scope.empty()) throw UsageError("--scope is of use with --logic-name only");
    if (options.index) throw UsageError("--index is of use with --logic-name only");
    return;
  }
  if (options.logic) throw UsageError("--logic and --logic-name exclude each other");
  if (options.scope.empty()) throw UsageError("--scope is required");
  UseHome(options.home);
}

// One amount: what is configured, what is paid instead, and what else could be asked for.
Json ReportOf(const PlanOptions& options, const CashRequest& request, const LogicOf& logic_of) {
  const int amount = Required(options.amount, "--amount");
  const std::optional<std::string> configured = logic_of(amount);
  const CashOutcome outcome = Pay(request, configured, amount);
  Json json = {{"amount", amount},
               {"configured", nullptr},
               {"outcome", NameOf(outcome.payment)},
               {"code", outcome.code},
               {"meaning", outcome.meaning},
               {"logic", outcome.logic},
               {"notes", outcome.logic.empty() ? "" : DescribeLogic(request, outcome.logic)},
               {"nearby", PaidNearby(request, logic_of, amount)}};
  if (HasLogic(options) && configured) {
    const bool looked_up = !options.logic_name.empty();
    json["configured"] = {{"logic", *configured},
                          {"notes", DescribeLogic(request, *configured)},
                          {"source", looked_up ? LookUpLogic(options, amount).where : ""},
                          {"fate", FateOf(configured, outcome)}};
  }
  return json;
}

// "01000001: 1 x A (20) + 1 x D (10) = 30"
std::string LogicText(const Json& object) {
  const std::string logic = object["logic"];
  return logic.empty() ? "" : logic + ": " + object["notes"].get<std::string>();
}

void PrintPlan(const Json& report) {
  const bool paid = report["outcome"] == NameOf(Payment::kPaid);
  const std::string outcome = report["outcome"], meaning = report["meaning"];
  const std::string code = report["code"] == 0 ? "" : ", code " + InOneLine(report["code"]);
  const Json& configured = report["configured"];
  const std::string nearby = InOneLine(report["nearby"]);
  std::string logic, fate;
  if (configured.is_object()) {
    const std::string source = configured["source"];
    logic = LogicText(configured) + (source.empty() ? "" : ", " + source);
    fate = configured["fate"];
  }
  PrintFacts(
      InOneLine(report["amount"]) + ": " + outcome + code + (meaning.empty() ? "" : ", " + meaning),
      {{"configured", logic},
       {"", fate == kPays ? "" : fate},
       {fate == kPays ? "dispensed" : "planned", LogicText(report)},
       {"in full", nearby.empty() ? "nothing near by" : nearby}},
      paid ? Tone::kPlain : Tone::kAlarm);
}

ExitCode Plan(const PlanOptions& options) {
  const CashRequest request = RequestOf(options);
  CheckLogicOptions(options, request);
  const LogicOf logic_of = LogicSource(options, request);
  if (options.sweep.empty() && options.empty) throw UsageError("--empty needs --sweep");
  if (!options.html.empty() && !options.empty) throw UsageError("--html needs --empty");
  if (!options.sweep.empty()) {
    if (options.amount) throw UsageError("--sweep and an amount exclude each other");
    return (options.empty ? ShowEmptySweep : ShowSweep)(
        request, logic_of, {RangeOf(options.sweep), options.json, HasLogic(options), options.html});
  }
  const Json report = ReportOf(options, request, logic_of);
  options.json ? PrintJson(report) : PrintPlan(report);
  return report["outcome"] == NameOf(Payment::kPaid) ? kDone : kFindings;
}

Action DeclarePlan(OptionList* list) {
  const auto options = std::make_shared<PlanOptions>();
  // Taken first, so that the command line has the last word.
  list->Add({"--file", "FILE", "JSON with what the command line leaves out",
             [list](const auto& values) { TakeFile(values.front(), *list); }});
  list->Texts("CASSETTE", "", OptionRow::kAnyNumber, &options->cassettes,
              "A:20:978:Y: letter, face value, currency, status; @ is outside the logic")
      .Member("cassettes");
  list->Choice("--model", {"NDC+ATM", "D912ATM"}, &options->model,
               "The ATM's model: with cassettes A to D, or A to H")
      .Member("model");
  list->Number("--amount", 1, INT_MAX, &options->amount, "In whole currency units")
      .Member("amount");
  list->Number("--currency", 0, INT_MAX, &options->currency, "Numeric currency code")
      .Member("currency");
  list->Number("--max-notes", 1, INT_MAX, &options->max_notes, "The most notes of one dispense")
      .Member("max_notes");
  list->Text("--logic", "LOGIC", &options->logic, "The configured logic: two digits a cassette")
      .Member("logic");
  list->Text("--logic-name", "NAME", &options->logic_name,
             "Look the configured logic up in the home");
  list->Texts("--scope", "NAME", 4, &options->scope, "Its scopes: three names, then the fallback");
  list->Number("--index", 0, INT_MAX, &options->index,
               "Its amount index, if that is not the amount");
  list->Text("--sweep", "FROM:TO[:STEP]", &options->sweep, "Try every amount of a range");
  list->Flag("--empty", &options->empty, "Sweep with every combination of empty cassettes");
  list->Text("--html", "FILE", &options->html, "Draw what --empty finds, as a page of its own");
  AddDataOptions(list, options.get());
  return [options] { return Plan(*options); };
}

}  // namespace

const Verb kPlan = {
    "plan", "Say what an ATM's cassettes pay",
    "Asks the library what it would dispense: the configured logic when it gives the amount, or a\n"
    "new plan. A logic that the library returns need not add up to the amount; that is said. With\n"
    "--sweep, amounts of a range that fare alike are one row: CONFIGURED is what the configured\n"
    "logic does, PLANNED what a new plan does. With --logic-name an amount without a logic (none)\n"
    "is not paid, as the driver has nothing to ask with; without a logic at all every amount is\n"
    "planned. A cassette's status is Y for usable, N for not, @ for outside the logic.\n\n"
    "With --sweep and --empty each combination of cassettes that ran out is a row: how many of\n"
    "the amounts are paid then, and which ones are lost. --html draws it, for any browser. A\n"
    "sweep looks at a million amounts at most, with --empty at those of all combinations.\n\n"
    "The file is JSON: {model, amount, currency, max_notes, logic, cassettes: [text]}.\n\n"
    "Exit status: 1 when an amount is not paid in full, with --empty by all cassettes together.\n\n"
    "JSON: {amount, configured: {logic, notes, source, fate} or null, outcome, code, meaning,\n"
    "logic, notes, nearby: [amount]}; with --sweep {amounts, unpaid, runs: [{from, to, amounts,\n"
    "paid, configured or null, planned}]}; with --empty {amounts, combinations: [{empty, paid,\n"
    "share, lost: [amount]}]}.",
    "voatm plan --model NDC+ATM --amount 30 --currency 978 --max-notes 40 A:20:978:Y B:50:978:Y",
    DeclarePlan};
