#include "common/token.h"

namespace voatm {

void CopyToken(const char* text, int field, char delimiter, char* out, std::size_t capacity) {
  int passed = 0;
  std::size_t copied = 0;
  for (; *text != '\0'; ++text) {
    if (*text == delimiter) {
      ++passed;
    } else if (passed == field) {
      return;
    } else if (passed + 1 == field && copied < capacity) {
      out[copied++] = *text;
    }
  }
}

}  // namespace voatm
