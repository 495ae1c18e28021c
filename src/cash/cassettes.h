// What the cash operations share: the models and the digit pairs of a dispense logic.
#ifndef SRC_CASH_CASSETTES_H
#define SRC_CASH_CASSETTES_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

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

// The note count at a position (from 0) of a dispense logic; 0 behind the text's end.
inline int NotesAt(const char* logic, int position) {
  char digits[3] = {};
  const std::size_t at = 2 * static_cast<std::size_t>(position);
  if (strnlen(logic, at + 1) > at) memcpy(digits, logic + at, logic[at + 1] == '\0' ? 1 : 2);
  return atoi(digits);
}

inline char UpperCase(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

}  // namespace voatm

#endif  // SRC_CASH_CASSETTES_H
