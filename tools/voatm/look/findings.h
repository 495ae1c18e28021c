// What is wrong with the tables, what it does to drivers, and what helps.
#ifndef TOOLS_VOATM_LOOK_FINDINGS_H
#define TOOLS_VOATM_LOOK_FINDINGS_H

#include <vector>

#include "look/survey.h"
#include "show/finding.h"

// Compares what is configured for a table, one of all, with its segment and set, and its key with
// those of the other ones; then the slots that will not come to rest by themselves, of which those
// next to each other that are alike count as one. Throws std::runtime_error when the set is removed
// meanwhile.
std::vector<Finding> CheckTable(const std::vector<TableState>& all, const TableState& table);

// Of a set that was never initialised.
Finding NeverInitialised(const TableState& table);

#endif  // TOOLS_VOATM_LOOK_FINDINGS_H
