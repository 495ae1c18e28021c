// What the cash operations share: the models and the digit pairs of a dispense logic.
#ifndef SRC_CASH_CASSETTES_H
#define SRC_CASH_CASSETTES_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "common/text_field.h"

namespace voatm {

inline constexpr int kMaxCassettes = 8;
inline constexpr std::size_t kMaxDispenseLogic = 2 * kMaxCassettes;

enum CassetteCount { kUnknownModel = 0, kFourCassettes = 4, kEightCassettes = kMaxCassettes };

// How many cassettes an ATM model has.
inline CassetteCount CassettesOf(const char* atm_model) {
  if (strcmp(atm_model, "D912ATM") == 0) return kEightCassettes;
  if (strcmp(atm_model, "NDC+ATM") == 0) return kFourCassettes;
  return kUnknownModel;
}

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

inline constexpr std::size_t kCountSize = 12;  // holds any count as "%02d" prints it

// The note count that a pair of a dispense logic begins with, read as atoi reads it.
inline int NotesOf(const char* pair) {
  if (IsDigit(pair[0]) && IsDigit(pair[1])) return 10 * (pair[0] - '0') + (pair[1] - '0');
  char text[3];
  SetText(text, pair);
  return atoi(text);
}

inline char UpperCase(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

}  // namespace voatm

#endif  // SRC_CASH_CASSETTES_H
