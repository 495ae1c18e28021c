// What is wrong, as the verbs that look say it.
#ifndef TOOLS_VOATM_SHOW_FINDING_H
#define TOOLS_VOATM_SHOW_FINDING_H

#include <ctime>
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

// [{what, where, since, drivers, next}]
Json FindingsJson(const std::vector<Finding>& findings);

// Prints each of such an array with its parts in lines of their own.
void PrintFindings(const Json& findings);

// "1 slot", "2 slots"
std::string Counted(std::size_t count, const char* what);

// "2026-11-22 03:00:00", as a finding and a frame say when.
std::string TimeText(std::time_t time);

#endif  // TOOLS_VOATM_SHOW_FINDING_H
