// Where the tables' keys come from when VoChannelMgr does not answer.
#ifndef TOOLS_VOATM_LOOK_TABLE_KEYS_H
#define TOOLS_VOATM_LOOK_TABLE_KEYS_H

#include <ctime>
#include <map>
#include <string>

#include "records/record_tables.h"

using TableKeys = std::map<const records::RecordTable*, int>;

struct RememberedKeys {
  TableKeys keys;
  std::time_t since = 0;
};

// Keeps the keys of a home for later looks, below XDG_STATE_HOME or ~/.local/state. Where that
// cannot be written they are forgotten.
void RememberKeys(const std::string& home, const TableKeys& keys);

// Returns no keys when none were kept.
RememberedKeys RecallKeys(const std::string& home);

#endif  // TOOLS_VOATM_LOOK_TABLE_KEYS_H
