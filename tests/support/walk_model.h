// The walk over a property table said slowly: a scan of all rows for every value tried.
#ifndef TESTS_SUPPORT_WALK_MODEL_H
#define TESTS_SUPPORT_WALK_MODEL_H

#include <algorithm>
#include <string>
#include <vector>

#include "support/words.h"

inline std::string WithZeros(const std::string& number, std::size_t width) {
  return std::string(width - number.size(), '0') + number;
}

// "InstTerminalGroup[G1] AtmLogicalGroup[L1]" and so on, for as many values as there are.
inline std::string Named(const Texts& values) {
  static const char* const kNames[] = {"InstTerminalGroup[", " AtmLogicalGroup[", " AtmId[",
                                       " TxnCode[",          " RespCode[",        " CurrencyCode["};
  std::string text;
  for (std::size_t i = 0; i < values.size(); ++i) text += kNames[i] + values[i] + "]";
  return text;
}

// Finds the first row whose columns begin with these keys, from a slot on; or -1.
inline int SlowScan(const std::vector<Texts>& rows, const Texts& keys) {
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (std::equal(keys.begin(), keys.end(), rows[row].begin())) return static_cast<int>(row);
  }
  return -1;
}

// Returns the slot of the row found, or -1, and appends what is said for each try without a row.
// tries[level] are the values tried for a column.
inline int SlowWalk(const std::vector<Texts>& rows, const std::vector<Texts>& tries,
                    const std::string& table, std::string* said) {
  Texts keys;
  int slot = 0;
  for (const Texts& values : tries) {
    keys.emplace_back();
    slot = -1;
    for (std::size_t i = 0; slot < 0 && i < values.size(); ++i) {
      keys.back() = values[i];
      slot = SlowScan(rows, keys);
      if (slot >= 0) break;
      const bool error = table == "VoAtmProperty" && keys.size() == 1 && i == 1;
      const std::string what = keys.size() == 6 ? "CurrencyCode[" + values[i] + "]" : Named(keys);
      said->append(error ? "2" : "7").append(" Error in Searching ").append(what);
      said->append(" in ").append(table).append(" Table\n");
    }
    if (slot < 0) break;
  }
  return slot;
}

#endif  // TESTS_SUPPORT_WALK_MODEL_H
