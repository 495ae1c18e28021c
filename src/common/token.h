// Lists of codes in a text, separated by a delimiter.
#ifndef SRC_COMMON_TOKEN_H
#define SRC_COMMON_TOKEN_H

#include <cstddef>

namespace voatm {

// Copies field number field (from 1), at most capacity characters of it, to out, without a
// terminator. An empty or absent field copies nothing, and so does field 0.
void CopyToken(const char* text, int field, char delimiter, char* out, std::size_t capacity);

}  // namespace voatm

#endif  // SRC_COMMON_TOKEN_H
