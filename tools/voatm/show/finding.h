// What is wrong, as the verbs that look say it.
#ifndef TOOLS_VOATM_SHOW_FINDING_H
#define TOOLS_VOATM_SHOW_FINDING_H

#include <string>
#include <vector>

#include "show/output.h"

// Any part but what and where may be empty.
struct Finding {
  std::string what;
  std::string where;
  std::string since;   // or by whom
  std::string effect;  // what drivers do then
  std::string next;    // the command to type, or what to do
};

Json FindingsJson(const std::vector<Finding>& findings);

// Prints each with its parts in lines of their own.
void PrintFindings(const std::vector<Finding>& findings);

#endif  // TOOLS_VOATM_SHOW_FINDING_H
