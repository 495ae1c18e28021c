// voatm plan: what the cassettes pay.
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ask/cash_plan.h"
#include "ask/experiment.h"
#include "json_file.h"
#include "show/output.h"
#include "verbs/plan_empty.h"
#include "verbs/verbs.h"

namespace {

constexpr const char* kPays = "pays";  // the fate of a configured logic that is dispensed
constexpr std::size_t kValues = 12;    // the column of values in a report
constexpr const char* kModels[] = {"NDC+ATM", "D912ATM"};

struct Options : DataOptions {
  std::string file;
  std::optional<std::string> model;
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

// What the command line does not say, the file may.
void ReadFile(Options* options) {
  if (options->file.empty()) return;
  const JsonFile file(options->file,
                      {"model", "amount", "currency", "max_notes", "logic", "cassettes"});
  file.Take("model", &options->model);
  file.Take("amount", 1, &options->amount);
  file.Take("currency", 0, &options->currency);
  file.Take("max_notes", 1, &options->max_notes);
  file.Take("logic", &options->logic);
  file.Take("cassettes", &options->cassettes);
}

template <typename T>
const T& Required(const std::optional<T>& value, const char* name) {
  if (!value) throw UsageError(std::string(name) + " is required");
  return *value;
}

CashRequest RequestOf(const Options& options) {
  CashRequest request;
  request.model = Required(options.model, "--model");
  if (request.model != kModels[0] && request.model != kModels[1]) {
    throw UsageError("--model " + request.model + " is neither NDC+ATM nor D912ATM");
  }
  request.currency = Required(options.currency, "--currency");
  request.max_notes = Required(options.max_notes, "--max-notes");
  if (options.cassettes.empty()) throw UsageError("CASSETTE is required");
  SetCassettes(&request, options.cassettes);
  return request;
}

// The answer of the home's dispense logics for an amount.
Placed LookUpLogic(const Options& options, int amount) {
  Inputs inputs;
  inputs["logic"] = options.logic_name;
  inputs["index"] = std::to_string(options.index.value_or(amount));
  inputs["model"] = *options.model;
  const char* const names[] = {"s1", "s2", "s3", "fallback"};
  for (std::size_t i = 0; i < options.scope.size(); ++i) inputs[names[i]] = options.scope[i];
  return AskFiles(*FindQuestion("displogic"), inputs);
}

// Where the configured logic comes from: the home, the command line or the file, or nowhere.
LogicOf LogicSource(const Options& options, const CashRequest& request) {
  if (!options.logic_name.empty()) {
    return [&](int amount) -> std::optional<std::string> {
      const Placed placed = LookUpLogic(options, amount);
      if (!placed.answer.found) return std::nullopt;
      return placed.answer.facts.front().get<std::string>();
    };
  }
  if (!options.logic) return NoLogic(request);
  return [logic = *options.logic](int) { return logic; };
}

void CheckLogicOptions(const Options& options, const CashRequest& request) {
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
  RequireHome(options.home);
  setenv("VODIR_HOME", options.home.c_str(), 1);
}

// One amount: what is configured, what is paid instead, and what else could be asked for.
struct Report {
  int amount;
  std::optional<std::string> configured;
  std::string source;
  std::string fate;  // of the configured logic
  CashOutcome outcome;
  std::vector<int> nearby;
};

Report ReportOf(const Options& options, const CashRequest& request) {
  const LogicOf logic_of = LogicSource(options, request);
  Report report;
  report.amount = Required(options.amount, "--amount");
  if (options.logic || !options.logic_name.empty()) report.configured = logic_of(report.amount);
  if (!options.logic_name.empty()) report.source = LookUpLogic(options, report.amount).where;
  report.outcome = Pay(request, logic_of, report.amount);
  report.fate = FateOf(report.configured, report.outcome);
  report.nearby = PaidNearby(request, logic_of, report.amount);
  return report;
}

Json ReportJson(const CashRequest& request, const Report& report) {
  const CashOutcome& outcome = report.outcome;
  Json json = {{"amount", report.amount},
               {"configured", nullptr},
               {"outcome", NameOf(outcome.payment)},
               {"code", outcome.code},
               {"meaning", outcome.meaning},
               {"logic", outcome.logic},
               {"notes", outcome.logic.empty() ? "" : DescribeLogic(request, outcome.logic)},
               {"nearby", report.nearby}};
  if (report.configured) {
    json["configured"] = {{"logic", *report.configured},
                          {"notes", DescribeLogic(request, *report.configured)},
                          {"source", report.source},
                          {"fate", report.fate}};
  }
  return json;
}

void PrintReport(const CashRequest& request, const Report& report) {
  const CashOutcome& outcome = report.outcome;
  if (report.configured) {
    const std::string from = report.source.empty() ? "" : ", " + report.source;
    PrintLine("configured  " + *report.configured + ": " +
                  DescribeLogic(request, *report.configured) + from,
              Tone::kPlain, kValues);
    if (report.fate != kPays) PrintLine(std::string(kValues, ' ') + report.fate);
  }
  if (outcome.code == 0 && !outcome.logic.empty()) {
    PrintLine((report.fate == kPays ? "dispensed   " : "planned     ") + outcome.logic + ": " +
                  DescribeLogic(request, outcome.logic),
              Tone::kPlain, kValues);
  }
  const bool paid = outcome.payment == Payment::kPaid;
  const std::string name = NameOf(outcome.payment);
  const std::string code = outcome.code == 0 ? "" : ", code " + std::to_string(outcome.code);
  const std::string why = outcome.meaning.empty() ? "" : ": " + outcome.meaning;
  PrintLine("outcome     " + name + code + why, paid ? Tone::kPlain : Tone::kAlarm, kValues);
  std::string nearby;
  for (const int amount : report.nearby) nearby += " " + std::to_string(amount);
  PrintLine("in full    " + (nearby.empty() ? " nothing near by" : nearby), Tone::kPlain, kValues);
}

struct Range {
  int from;
  int to;
  int step;
};

Range RangeOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::optional<int>> numbers;
  for (std::string part; std::getline(stream, part, ':');) numbers.push_back(ReadNumber(part, 1));
  if (numbers.size() == 2) numbers.emplace_back(1);
  const bool good = numbers.size() == 3 && text.back() != ':' && numbers[0] && numbers[1] &&
                    numbers[2] && *numbers[0] <= *numbers[1];
  if (good) return {*numbers[0], *numbers[1], *numbers[2]};
  throw UsageError("--sweep " + text + " is not like 10:500:10");
}

Json SweepJson(const std::vector<SweepRun>& runs, int amounts, int unpaid) {
  Json rows = Json::array();
  for (const SweepRun& run : runs) {
    rows.push_back({{"from", run.from},
                    {"to", run.to},
                    {"amounts", run.amounts},
                    {"paid", run.paid},
                    {"configured", run.configured},
                    {"planned", run.planned}});
  }
  return {{"amounts", amounts}, {"unpaid", unpaid}, {"runs", rows}};
}

ExitCode SweepAndPrint(const Options& options, const CashRequest& request) {
  const Range range = RangeOf(options.sweep);
  const std::vector<SweepRun> runs =
      Sweep(request, LogicSource(options, request), range.from, range.to, range.step);
  int amounts = 0;
  int unpaid = 0;
  const bool any_logic = options.logic || !options.logic_name.empty();
  TextTable table(
      {{"FROM", true}, {"TO", true}, {"AMOUNTS", true}, {"PAID"}, {"CONFIGURED"}, {"PLANNED"}});
  for (const SweepRun& run : runs) {
    amounts += run.amounts;
    unpaid += run.paid ? 0 : run.amounts;
    table.AddRow({std::to_string(run.from), std::to_string(run.to), std::to_string(run.amounts),
                  run.paid ? "yes" : "no", any_logic ? run.configured : "-", run.planned},
                 !run.paid);
  }
  if (options.json) {
    PrintJson(SweepJson(runs, amounts, unpaid));
  } else {
    table.Print();
  }
  Say(std::to_string(unpaid) + " of " + std::to_string(amounts) + " amounts are not paid in full");
  return unpaid == 0 ? kDone : kFindings;
}

ExitCode SweepAndPrintEmpty(const Options& options, const CashRequest& request) {
  const Range range = RangeOf(options.sweep);
  std::string about = "Cassettes (letter, face value, currency, status):";
  for (const std::string& cassette : options.cassettes) about += " " + cassette;
  about += ". Amounts from " + std::to_string(range.from) + " to " + std::to_string(range.to) +
           " in steps of " + std::to_string(range.step) + ", currency " +
           std::to_string(request.currency) + ", at most " + std::to_string(request.max_notes) +
           " notes.";
  return ShowEmpty(
      SweepEmpty(request, LogicSource(options, request), range.from, range.to, range.step),
      {range.step, options.json, options.html, request.model, about});
}

ExitCode Plan(Options options) {
  ReadFile(&options);
  const CashRequest request = RequestOf(options);
  CheckLogicOptions(options, request);
  if (options.sweep.empty() && options.empty) throw UsageError("--empty needs --sweep");
  if (!options.html.empty() && !options.empty) throw UsageError("--html needs --empty");
  if (!options.sweep.empty()) {
    if (options.amount) throw UsageError("--sweep and an amount exclude each other");
    return options.empty ? SweepAndPrintEmpty(options, request) : SweepAndPrint(options, request);
  }
  const Report report = ReportOf(options, request);
  if (options.json) {
    PrintJson(ReportJson(request, report));
  } else {
    PrintReport(request, report);
  }
  return report.outcome.payment == Payment::kPaid ? kDone : kFindings;
}

Action DeclarePlan(OptionList* list) {
  const auto options = std::make_shared<Options>();
  list->Texts("CASSETTE", "", OptionRow::kAnyNumber, &options->cassettes,
              "A:20:978:Y: letter, face value, currency, status; @ is outside the logic");
  list->Text("--model", "MODEL", &options->model, "NDC+ATM (cassettes A to D) or D912ATM (A to H)");
  list->Number("--amount", 1, INT_MAX, &options->amount, "In whole currency units");
  list->Number("--currency", 0, INT_MAX, &options->currency, "Numeric currency code");
  list->Number("--max-notes", 1, INT_MAX, &options->max_notes, "The most notes of one dispense");
  list->Text("--logic", "LOGIC", &options->logic, "The configured logic: two digits a cassette");
  list->Text("--logic-name", "NAME", &options->logic_name,
             "Look the configured logic up in the home");
  list->Texts("--scope", "NAME", 4, &options->scope, "Its scopes: three names, then the fallback");
  list->Number("--index", 0, INT_MAX, &options->index,
               "Its amount index, if that is not the amount");
  list->Text("--sweep", "FROM:TO[:STEP]", &options->sweep, "Try every amount of a range");
  list->Flag("--empty", &options->empty, "Sweep with every combination of empty cassettes");
  list->Text("--html", "FILE", &options->html, "Draw what --empty finds, as a page of its own");
  list->Text("--file", "FILE", &options->file, "JSON with what the command line leaves out");
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
    "the amounts are paid then, and which ones are lost. --html draws it, for any browser.\n\n"
    "The file is JSON: {model, amount, currency, max_notes, logic, cassettes: [text]}.\n\n"
    "Exit status: 1 when an amount is not paid in full, with --empty by all cassettes together.\n\n"
    "JSON: {amount, configured: {logic, notes, source, fate} or null, outcome, code, meaning,\n"
    "logic, notes, nearby: [amount]}; with --sweep {amounts, unpaid, runs: [{from, to, amounts,\n"
    "paid, configured, planned}]}; with --empty {amounts, combinations: [{empty, paid, share,\n"
    "lost: [amount]}]}.",
    "voatm plan --model NDC+ATM --amount 30 --currency 978 --max-notes 40 A:20:978:Y B:50:978:Y",
    DeclarePlan};
