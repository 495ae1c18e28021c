#include "ask/cash_sweep.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <numeric>

#include "options.h"
#include "show/finding.h"

namespace {

// What all amounts that can be paid are multiples of.
int UnitOf(const CashRequest& request) {
  int unit = 0;
  for (const DenomInfo& cassette : request.cassettes) {
    if (request.CanUse(cassette)) unit = std::gcd(unit, cassette.Value);
  }
  return std::max(unit, 1);
}

// Without the amounts, which would keep equal runs apart.
std::string PlannedFate(const CashOutcome& outcome) {
  if (outcome.payment == Payment::kPaid) return "pays";
  if (outcome.payment != Payment::kRefused) return NameOf(outcome.payment);
  return "refuses, " + std::to_string(outcome.code) + ": " + outcome.meaning;
}

// The combinations of some letters, those of few letters first, each in alphabetical order.
std::vector<std::string> CombinationsOf(const std::string& letters) {
  std::vector<std::string> all = {""};
  for (const char letter : letters) {
    const std::vector<std::string> without = all;
    for (const std::string& combination : without) all.push_back(combination + letter);
  }
  std::sort(all.begin(), all.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return all;
}

CashRequest Without(const std::string& empty, CashRequest request) {
  for (DenomInfo& cassette : request.cassettes) {
    if (empty.find(cassette.Id) != std::string::npos) cassette.Status = 'N';
  }
  return request;
}

}  // namespace

std::vector<int> PaidNearby(const CashRequest& request, const LogicOf& logic_of, int amount) {
  constexpr int kLooks = 200;  // on each side
  constexpr int kWanted = 2;
  const long long unit = UnitOf(request);
  std::vector<int> paid;
  const auto look_from = [&](long long first, long long step) {
    int wanted = kWanted;
    for (int look = 0; look < kLooks && wanted > 0; ++look) {
      const long long candidate = first + look * step;
      if (candidate <= 0 || candidate > INT_MAX) return;
      const int near = static_cast<int>(candidate);
      if (Pay(request, logic_of(near), near).payment != Payment::kPaid) continue;
      paid.push_back(near);
      --wanted;
    }
  };
  look_from((amount - 1) / unit * unit, -unit);
  look_from((amount / unit + 1) * unit, unit);
  std::sort(paid.begin(), paid.end());
  return paid;
}

std::vector<int> AmountRange::Amounts() const {
  std::vector<int> amounts;
  for (long long amount = from; amount <= to; amount += step) {
    amounts.push_back(static_cast<int>(amount));
  }
  return amounts;
}

std::vector<SweepRun> Sweep(const CashRequest& request, const LogicOf& logic_of,
                            const AmountRange& range) {
  std::vector<SweepRun> runs;
  for (const int amount : range.Amounts()) {
    const std::optional<std::string> logic = logic_of(amount);
    const CashOutcome outcome = Pay(request, logic, amount);
    const bool paid = outcome.payment == Payment::kPaid;
    const char* const configured = FateOf(logic, outcome);
    const std::string planned = PlannedFate(Pay(request, request.NoLogic(), amount));
    const bool alike = !runs.empty() && runs.back().paid == paid &&
                       runs.back().configured == configured && runs.back().planned == planned;
    if (!alike) runs.push_back({amount, amount, 0, paid, configured, planned});
    runs.back().to = amount;
    ++runs.back().amounts;
  }
  return runs;
}

std::vector<EmptyCase> SweepEmpty(const CashRequest& request, const LogicOf& logic_of,
                                  const AmountRange& range) {
  const std::vector<int> amounts = range.Amounts();
  std::string usable;
  for (const DenomInfo& cassette : request.cassettes) {
    if (request.CanUse(cassette)) usable += cassette.Id;
  }
  const std::vector<std::string> combinations = CombinationsOf(usable);
  if (amounts.size() > kMostAmounts / combinations.size()) {
    throw UsageError(Counted(combinations.size(), "combination") + " of " +
                     Counted(amounts.size(), "amount") + " are more than " +
                     std::to_string(kMostAmounts));
  }
  std::vector<std::optional<std::string>> logics;  // looked up once, as files may hold them
  std::transform(amounts.begin(), amounts.end(), std::back_inserter(logics), logic_of);
  std::vector<EmptyCase> cases;
  for (const std::string& empty : combinations) {
    const CashRequest left = Without(empty, request);
    EmptyCase each = {empty, {}, {}, 0};
    for (std::size_t i = 0; i < amounts.size(); ++i) {
      each.fates.push_back(Pay(left, logics[i], amounts[i]).payment);
      const bool is_paid = each.fates[i] == Payment::kPaid;
      const bool is_lost = !is_paid && !empty.empty() && cases.front().fates[i] == Payment::kPaid;
      each.paid += is_paid ? 1 : 0;
      if (is_lost) each.lost.push_back(amounts[i]);
    }
    cases.push_back(std::move(each));
  }
  return cases;
}

std::string RunsOf(const std::vector<int>& amounts, int step) {
  std::string text;
  for (auto first = amounts.begin(); first != amounts.end();) {
    auto end =
        std::adjacent_find(first, amounts.end(), [=](int a, int b) { return b - a != step; });
    if (end != amounts.end()) ++end;
    text += (text.empty() ? "" : ", ") + std::to_string(*first);
    const auto size = end - first;
    if (size > 1) text += (size == 2 ? ", " : "-") + std::to_string(*std::prev(end));
    first = end;
  }
  return text;
}
