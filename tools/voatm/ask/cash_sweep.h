// What the library would pay of many amounts: those near by, a range, and a range as cassettes run
// out.
#ifndef TOOLS_VOATM_ASK_CASH_SWEEP_H
#define TOOLS_VOATM_ASK_CASH_SWEEP_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ask/cash_plan.h"

// The most that one sweep looks at.
constexpr std::size_t kMostAmounts = 1000000;

// The logic that is configured for an amount, if one is.
using LogicOf = std::function<std::optional<std::string>(int amount)>;

// The two amounts below and the two above that are nearest and paid in full, in ascending order.
std::vector<int> PaidNearby(const CashRequest& request, const LogicOf& logic_of, int amount);

struct AmountRange {
  int from;
  int to;
  int step;

  std::vector<int> Amounts() const;
};

// Amounts one after the other that fare alike.
struct SweepRun {
  int from;
  int to;
  int amounts;
  bool paid;               // in full, by the configured logic or, where there is one, a new plan
  std::string configured;  // the fate of the configured logic
  std::string planned;     // "pays", or what becomes of a new plan
};

std::vector<SweepRun> Sweep(const CashRequest& request, const LogicOf& logic_of,
                            const AmountRange& range);

// A combination of empty cassettes.
struct EmptyCase {
  std::string empty;           // their letters; none when all have notes
  std::vector<Payment> fates;  // of the amounts, in their order
  std::vector<int> lost;       // amounts that all cassettes together pay and these do not
  int paid = 0;                // amounts
};

// Tries the amounts with every combination of the usable cassettes of the request's currency taken
// for empty, those with few empty ones first. An empty cassette has status 'N'.
std::vector<EmptyCase> SweepEmpty(const CashRequest& request, const LogicOf& logic_of,
                                  const AmountRange& range);

// Amounts `step` apart as people write them: "20-60, 100".
std::string RunsOf(const std::vector<int>& amounts, int step);

#endif  // TOOLS_VOATM_ASK_CASH_SWEEP_H
