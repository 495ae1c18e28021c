// Which amounts can still be paid as cassettes run out.
#ifndef TOOLS_VOATM_ASK_EMPTY_SWEEP_H
#define TOOLS_VOATM_ASK_EMPTY_SWEEP_H

#include <string>
#include <vector>

#include "ask/cash_plan.h"

// A combination of empty cassettes.
struct EmptyCase {
  std::string empty;           // their letters; none when all have notes
  std::vector<Payment> fates;  // of the amounts, in their order
  std::vector<int> lost;       // amounts that all cassettes together pay and these do not
  int paid = 0;                // amounts

  double Share() const;  // of the amounts that are paid, 0 to 1
};

struct EmptySweep {
  std::vector<int> amounts;
  std::vector<EmptyCase> cases;  // every combination, those with few empty ones first
};

// Tries the amounts from `from` to `to` with every combination of the usable cassettes of the
// request's currency taken for empty. An empty cassette has status 'N'.
EmptySweep SweepEmpty(const CashRequest& request, const LogicOf& logic_of, int from, int to,
                      int step);

// Amounts `step` apart as people write them: "20-60, 100".
std::string RunsOf(const std::vector<int>& amounts, int step);

#endif  // TOOLS_VOATM_ASK_EMPTY_SWEEP_H
