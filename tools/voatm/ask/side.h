// What the library is asked about, and one side of a comparison: a home, a dump, seed files, or the
// tables in memory.
#ifndef TOOLS_VOATM_ASK_SIDE_H
#define TOOLS_VOATM_ASK_SIDE_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ask/experiment.h"

// Copies the rows of a table: of the tables in memory at a home, when `from` is empty or "live";
// else from a directory of seed files, or from one seed file or dump of the table, into as many
// slots as the home configures, if it does: more rows than that are refused. Throws
// std::runtime_error that names what cannot be had.
Rows RowsFrom(const std::string& from, const std::string& home, const records::RecordTable& table);

// The entries of a configuration tree that can be found: by file below the home and key, the
// fields behind the key.
using Entries = std::map<std::pair<std::string, std::string>, std::vector<std::string>>;

// In place of the fields of an entry that is found and cannot be read.
inline const std::vector<std::string> kUnreadable = {"(unreadable)"};

struct Side {
  std::string home;                                    // empty: it has no configuration
  std::map<const records::RecordTable*, Rows> tables;  // those that it has
  Entries entries;
};

// Reads a side whole. `given` is "live" (the tables in memory and the configuration of
// `live_home`), a home, a directory of seed files, or a dump of one table. Throws
// std::runtime_error that names what cannot be read.
Side ReadSide(const std::string& given, const std::string& live_home);

#endif  // TOOLS_VOATM_ASK_SIDE_H
