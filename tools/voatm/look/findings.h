// What is wrong with a table, and what helps.
#ifndef TOOLS_VOATM_LOOK_FINDINGS_H
#define TOOLS_VOATM_LOOK_FINDINGS_H

#include <string>
#include <vector>

#include "look/survey.h"

struct Finding {
  std::string text;
  std::string remedy;
};

// Compares what is configured for a table with its segment and set.
std::vector<Finding> CheckTable(const TableState& table);

// Starts the library as a driver does. Give it a survey whose tables have no findings.
std::vector<Finding> CheckStart(const Survey& survey);

#endif  // TOOLS_VOATM_LOOK_FINDINGS_H
