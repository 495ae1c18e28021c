// What voatm plan --sweep --empty shows: a table, JSON, a page.
#ifndef TOOLS_VOATM_VERBS_PLAN_EMPTY_H
#define TOOLS_VOATM_VERBS_PLAN_EMPTY_H

#include <string>

#include "ask/empty_sweep.h"
#include "verb.h"

struct EmptyOutput {
  int step;  // between the amounts
  bool json;
  std::string page;  // the file for the page; empty for none
  std::string model;
  std::string about;  // the request, in a sentence or two
};

// Returns kDone when all cassettes together pay every amount.
ExitCode ShowEmpty(const EmptySweep& sweep, const EmptyOutput& output);

#endif  // TOOLS_VOATM_VERBS_PLAN_EMPTY_H
