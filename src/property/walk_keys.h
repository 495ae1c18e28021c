// The key columns that both property tables share, and the values tried for them.
#ifndef SRC_PROPERTY_WALK_KEYS_H
#define SRC_PROPERTY_WALK_KEYS_H

#include <cstddef>

#include "common/text_field.h"

namespace voatm {

// A key for a column of N bytes; a text that does not fit with its NUL is cut.
template <std::size_t N>
TextKey<N> ColumnKey(const char* text) {
  char column[N];
  SetText(column, text);
  return TextKey<N>(column);
}

// The first three levels of a walk: the ATM, each column by its own value, then by any.
struct AtmKeys {
  AtmKeys(const char* inst_terminal_group, const char* atm_logical_group, const char* atm_id)
      : caller_inst(inst_terminal_group),
        inst{ColumnKey<17>(inst_terminal_group), TextKey<17>(kAny)},
        logical{ColumnKey<17>(atm_logical_group), TextKey<17>(kAny)},
        atm{ColumnKey<17>(atm_id), TextKey<17>(kAny)} {}

  template <typename Row>
  bool Matches(const Row& row, std::size_t level, int choice) const {
    switch (level) {
      case 0:
        return inst[choice].Is(row.InstTerminalGroup);
      case 1:
        return logical[choice].Is(row.AtmLogicalGroup);
      default:
        return atm[choice].Is(row.AtmId);
    }
  }

  // What a miss of the first level shows. Intended: its first try shows the caller's own text.
  const char* InstShown(int choice) const {
    return choice == 0 ? caller_inst : inst[choice].text();
  }

  const char* caller_inst;
  TextKey<17> inst[2];
  TextKey<17> logical[2];
  TextKey<17> atm[2];
};

// A transaction code as rows hold it, narrowest first: six digits, the two of its class, any.
struct TxnCodeKeys {
  explicit TxnCodeKeys(int txn_code) {
    char digits[7];
    FormatText(digits, "%06d", txn_code);
    choices[0] = TextKey<7>(digits);
    FormatText(digits, "%02d", txn_code / 10000);
    choices[1] = TextKey<7>(digits);
    choices[2] = TextKey<7>(kAny);
  }

  TextKey<7> choices[3];
};

}  // namespace voatm

#endif  // SRC_PROPERTY_WALK_KEYS_H
