// Where the rows come from that the library is asked about.
#ifndef TOOLS_VOATM_ASK_ROWS_SOURCE_H
#define TOOLS_VOATM_ASK_ROWS_SOURCE_H

#include <string>

#include "ask/experiment.h"

// Copies the rows of a table: of the tables in memory at a home, when `from` is empty or "live";
// else from a directory of seed files, or from one seed file or dump of the table. Throws
// std::runtime_error that names what cannot be had.
Rows RowsFrom(const std::string& from, const std::string& home, const records::RecordTable& table);

#endif  // TOOLS_VOATM_ASK_ROWS_SOURCE_H
