// What voatm plan --sweep shows: a table or JSON, and with --empty a page too.
#ifndef TOOLS_VOATM_VERBS_PLAN_SWEEP_H
#define TOOLS_VOATM_VERBS_PLAN_SWEEP_H

#include <string>

#include "ask/cash_sweep.h"
#include "verb.h"

struct SweepOptions {
  AmountRange range{};
  bool json = false;
  bool any_logic = false;  // whether one is configured
  std::string page;        // the file for the page; empty for none
};

// "10:500:10"; throws UsageError.
AmountRange RangeOf(const std::string& text);

// Both return kDone when all cassettes together pay every amount.
ExitCode ShowSweep(const CashRequest& request, const LogicOf& logic_of,
                   const SweepOptions& options);
ExitCode ShowEmptySweep(const CashRequest& request, const LogicOf& logic_of,
                        const SweepOptions& options);

#endif  // TOOLS_VOATM_VERBS_PLAN_SWEEP_H
