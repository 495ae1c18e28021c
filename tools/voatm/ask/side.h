// One side of a comparison: a home, a dump, seed files, or the tables in memory.
#ifndef TOOLS_VOATM_ASK_SIDE_H
#define TOOLS_VOATM_ASK_SIDE_H

#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "ask/experiment.h"

// The entries of a configuration tree that can be found: by file below the home and key, their
// fields behind the key and the line.
struct Entry {
  std::string fields;  // as text, a blank between two
  std::size_t count;
  std::size_t line;
};
using Entries = std::map<std::pair<std::string, std::string>, Entry>;

struct Side {
  std::string name;                                              // as it was given
  std::string home;                                              // empty: it has no configuration
  std::array<std::optional<Rows>, records::kTableCount> tables;  // those that it has
  Entries entries;

  Rows* TableOf(const records::RecordTable& table);
};

// Reads a side whole. `given` is "live" (the tables in memory and the configuration of
// `live_home`), a home, a directory of seed files, or a dump of one table. Throws
// std::runtime_error that names what cannot be read.
Side ReadSide(const std::string& given, const std::string& live_home);

#endif  // TOOLS_VOATM_ASK_SIDE_H
