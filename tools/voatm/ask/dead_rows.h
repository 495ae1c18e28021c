// Rows of which the library never makes use, or not as they are meant; found by asking it.
#ifndef TOOLS_VOATM_ASK_DEAD_ROWS_H
#define TOOLS_VOATM_ASK_DEAD_ROWS_H

#include <vector>

#include "ask/experiment.h"
#include "show/finding.h"

// Asks for each row the request that it was made for: its own values, and where it takes any, one
// that no row has. Changes what no search compares in `rows`. Of tables whose rows are found by
// their id there are no findings.
std::vector<Finding> FindDeadRows(Rows* rows);

#endif  // TOOLS_VOATM_ASK_DEAD_ROWS_H
