#include "verbs/plan_sweep.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <vector>

#include "devhost/system_call.h"
#include "show/output.h"

namespace {

// Each payment has a pattern of its own beside its colour: full, hatched, dotted, empty.
constexpr const char* kPageHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<title>What the cassettes pay as they run out</title>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
:root { color-scheme: light dark; --ink: #1d2430; --paper: #fff; --line: #8a94a3; --s0: #1b7f79;
  --s1: #b97f00; --s2: #c2413b; }
@media (prefers-color-scheme: dark) { :root { --ink: #e8ebf0; --paper: #14181f; --s0: #3fb3ab;
  --s1: #e0a11b; --s2: #ef7d76; } }
body { font: 16px/1.5 system-ui, sans-serif; color: var(--ink); background: var(--paper);
  max-width: 72rem; margin: 0 auto; padding: 1rem; }
h1 { font-size: 1.5rem; }
.row { display: grid; grid-template-columns: 5rem 1fr 3rem; gap: .5rem; align-items: center;
  margin: 2px 0; font-size: .85rem; }
.row > :last-child { text-align: right; }
.bar, .ticks { display: flex; justify-content: space-between; }
.bar { height: 1.5rem; border: 1px solid var(--line); }
.axis { position: sticky; top: 0; background: var(--paper); }
i { min-width: 0; print-color-adjust: exact; }
.s0 { background: var(--s0); }
.s1 { background: repeating-linear-gradient(45deg, var(--s1) 0 4px, transparent 4px 8px); }
.s2 { background: radial-gradient(circle, var(--s2) 1.5px, transparent 2px) 0 0 / 7px 7px; }
.legend { display: flex; flex-wrap: wrap; gap: .4rem 1.2rem; padding: 0; list-style: none; }
.legend i { display: inline-block; width: 2.2rem; height: 1rem; border: 1px solid var(--line);
  vertical-align: -2px; margin-right: .4rem; }
table { border-collapse: collapse; width: 100%; margin-top: 1.5rem; }
th, td { text-align: left; padding: .25rem .5rem; border-bottom: 1px solid var(--line);
  vertical-align: top; }
td:last-child { width: 100%; }
td:nth-child(2) { white-space: nowrap; }
</style>
</head>
<body>
<h1>What the cassettes pay as they run out</h1>
<p>Each row takes some cassettes for empty; the amounts go from left to right. A pointer that rests
on a piece shows its amounts.</p>
)";

std::string LabelOf(const EmptyCase& each) { return each.empty.empty() ? "none" : each.empty; }

double ShareOf(const EmptyCase& each) {
  return static_cast<double>(each.paid) / static_cast<double>(each.fates.size());
}

std::string PercentOf(const EmptyCase& each) {
  return std::to_string(100LL * each.paid / static_cast<long long>(each.fates.size())) + " %";
}

std::string Swatch(Payment payment, const std::string& attributes) {
  return "<i class=\"s" + std::to_string(static_cast<int>(payment)) + "\"" + attributes + "></i>";
}

std::string Row(const std::string& kind, const std::string& label, const std::string& middle,
                const std::string& end) {
  return "<div class=\"row\"><span>" + label + "</span><div class=\"" + kind + "\">" + middle +
         "</div><span>" + end + "</span></div>\n";
}

// What is asked, in a paragraph.
std::string AboutRequest(const CashRequest& request, const AmountRange& range) {
  std::string text = "<p>" + request.model + ", cassettes (letter, face value, currency, status):";
  for (const DenomInfo& each : request.cassettes) {
    if (each.Status == kOutsideLogic) continue;
    text += std::string(" ") + each.Id + ":" + std::to_string(each.Value) + ":" +
            std::to_string(each.Code) + ":" + each.Status;
  }
  return text + ". Amounts from " + std::to_string(range.from) + " to " + std::to_string(range.to) +
         " in steps of " + std::to_string(range.step) + ", currency " +
         std::to_string(request.currency) + ", at most " + std::to_string(request.max_notes) +
         " notes.</p>\n";
}

std::string Legend() {
  std::string items;
  for (const Payment payment :
       {Payment::kPaid, Payment::kFallsShort, Payment::kRefused, Payment::kNotConfigured}) {
    items += "<li>" + Swatch(payment, "") + NameOf(payment) + "</li>\n";
  }
  return "<ul class=\"legend\">" + items + "</ul>\n";
}

std::string Axis(const std::vector<int>& amounts) {
  constexpr std::size_t kRoom = 5;  // on a narrow screen
  const std::size_t last = std::min(kRoom, amounts.size()) - 1;
  std::string ticks;
  for (std::size_t tick = 0; tick <= last; ++tick) {
    const int amount = last == 0 ? amounts[0] : amounts[(amounts.size() - 1) * tick / last];
    ticks += "<span>" + std::to_string(amount) + "</span>";
  }
  return "<div class=\"axis\">" + Row("ticks", "Empty", ticks, "Paid") + "</div>\n";
}

// Amounts beside each other that fare alike are one piece.
std::string Bar(const EmptyCase& each, const std::vector<int>& amounts) {
  std::string pieces;
  auto amount = amounts.begin();
  for (auto fate = each.fates.begin(); fate != each.fates.end();) {
    const auto end =
        std::find_if(fate, each.fates.end(), [=](Payment next) { return next != *fate; });
    const auto size = end - fate;
    const std::string last = size > 1 ? " to " + std::to_string(amount[size - 1]) : "";
    pieces += Swatch(*fate, " style=\"flex:" + std::to_string(size) + "\" title=\"" +
                                std::to_string(*amount) + last + ": " + NameOf(*fate) + "\"");
    fate = end;
    amount += size;
  }
  return Row("bar", LabelOf(each), pieces, PercentOf(each));
}

std::string PageOf(const CashRequest& request, const std::vector<EmptyCase>& cases,
                   const AmountRange& range) {
  const std::vector<int> amounts = range.Amounts();
  std::string page = kPageHead + AboutRequest(request, range) + Legend() + Axis(amounts);
  std::string rows = "<tr><th>Empty</th><th>Paid</th><th>Amounts lost</th></tr>\n";
  for (const EmptyCase& each : cases) {
    page += Bar(each, amounts);
    rows += "<tr><td>" + LabelOf(each) + "</td><td>" + PercentOf(each) + "</td><td>" +
            RunsOf(each.lost, range.step) + "</td></tr>\n";
  }
  return page + "<table>\n" + rows + "</table>\n</body>\n</html>\n";
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream stream(path);
  stream << text;
  if (stream.flush()) return;
  const int error = errno;
  throw devhost::SystemError(error, "cannot write " + path);
}

ExitCode SayUnpaid(int unpaid, int amounts, const char* by) {
  Say(std::to_string(unpaid) + " of " + std::to_string(amounts) + " amounts are not paid in full" +
      by);
  return unpaid == 0 ? kDone : kFindings;
}

}  // namespace

AmountRange RangeOf(const std::string& text) {
  std::vector<std::optional<int>> numbers;
  for (const std::string& part : Split(text, ':')) numbers.push_back(ReadNumber(part, 1));
  if (numbers.size() == 2) numbers.emplace_back(1);
  const bool good = numbers.size() == 3 && text.back() != ':' && numbers[0] && numbers[1] &&
                    numbers[2] && *numbers[0] <= *numbers[1];
  if (!good) throw UsageError("--sweep " + text + " is not like 10:500:10");
  if (static_cast<std::size_t>((*numbers[1] - *numbers[0]) / *numbers[2]) >= kMostAmounts) {
    throw UsageError("--sweep " + text + " has more than " + std::to_string(kMostAmounts) +
                     " amounts");
  }
  return {*numbers[0], *numbers[1], *numbers[2]};
}

ExitCode ShowSweep(const CashRequest& request, const LogicOf& logic_of,
                   const SweepOptions& options) {
  Json rows = Json::array();
  TextTable table(
      {{"FROM", true}, {"TO", true}, {"AMOUNTS", true}, {"PAID"}, {"CONFIGURED"}, {"PLANNED"}});
  int amounts = 0, unpaid = 0;
  for (const SweepRun& run : Sweep(request, logic_of, options.range)) {
    amounts += run.amounts;
    unpaid += run.paid ? 0 : run.amounts;
    table.AddRow({std::to_string(run.from), std::to_string(run.to), std::to_string(run.amounts),
                  run.paid ? "yes" : "no", options.any_logic ? run.configured : "-", run.planned},
                 !run.paid);
    rows.push_back({{"from", run.from},
                    {"to", run.to},
                    {"amounts", run.amounts},
                    {"paid", run.paid},
                    {"configured", options.any_logic ? Json(run.configured) : Json()},
                    {"planned", run.planned}});
  }
  if (options.json) {
    PrintJson({{"amounts", amounts}, {"unpaid", unpaid}, {"runs", rows}});
  } else {
    table.Print();
  }
  return SayUnpaid(unpaid, amounts, "");
}

ExitCode ShowEmptySweep(const CashRequest& request, const LogicOf& logic_of,
                        const SweepOptions& options) {
  const std::vector<EmptyCase> cases = SweepEmpty(request, logic_of, options.range);
  Json rows = Json::array();
  TextTable table({{"EMPTY"}, {"PAID", true}, {"SHARE", true}, {"LOST"}});
  for (const EmptyCase& each : cases) {
    table.AddRow({LabelOf(each), std::to_string(each.paid), PercentOf(each),
                  RunsOf(each.lost, options.range.step)},
                 each.paid == 0);
    rows.push_back({{"empty", each.empty},
                    {"paid", each.paid},
                    {"share", ShareOf(each)},
                    {"lost", each.lost}});
  }
  if (!options.page.empty()) WriteFile(options.page, PageOf(request, cases, options.range));
  if (options.json) {
    PrintJson({{"amounts", options.range.Amounts()}, {"combinations", rows}});
  } else {
    table.Print();
  }
  const int amounts = static_cast<int>(cases.front().fates.size());
  return SayUnpaid(amounts - cases.front().paid, amounts, " by all cassettes together");
}
