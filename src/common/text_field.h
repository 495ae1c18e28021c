// Fixed-width text: char arrays whose size the compiler knows, so that no length is ever typed.
#ifndef SRC_COMMON_TEXT_FIELD_H
#define SRC_COMMON_TEXT_FIELD_H

#include <cassert>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace voatm {

inline constexpr char kNotDefined[] = "NOTDEFINED";  // key text of a slot that holds no record
inline constexpr char kAny[] = "*";                  // wildcard of a key column

// Zero-fills the field and copies the text into it, cut so that the last byte stays NUL.
template <std::size_t N>
void SetText(char (&field)[N], const char* text) {
  const std::size_t length = strnlen(text, N - 1);
  memcpy(field, text, length);
  memset(field + length, 0, N - length);
}

// Copies the text into a field that is zero, cut as above.
template <std::size_t N>
void PutText(char (&field)[N], const char* text) {
  memcpy(field, text, strnlen(text, N - 1));
}

// Zero-fills the field and prints into it, cut so that the last byte stays NUL.
template <std::size_t N>
[[gnu::format(printf, 2, 3)]] void FormatText(char (&field)[N], const char* format, ...) {
  memset(field, 0, N);
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(field, N, format, arguments);
  va_end(arguments);
}

// Zero-fills the field and prints a number as "%0*d" does with this width, cut as above.
template <std::size_t N>
void SetDigits(char (&field)[N], int number, std::size_t width) {
  assert(width < N);
  memset(field, 0, N);
  unsigned rest = static_cast<unsigned>(number);
  for (std::size_t at = width; at > 0; --at) {
    field[at - 1] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  // Negative and longer numbers are no one's normal case.
  if (rest != 0 || number < 0) FormatText(field, "%0*d", static_cast<int>(width), number);
}

// Whether the field's text, up to its NUL or its width, is exactly this text. Each byte of the
// field is read once: it may lie in shared memory and change meanwhile.
template <std::size_t N>
bool FieldIs(const char (&field)[N], const char* text) {
  for (const char c : field) {
    if (c != *text) return false;
    if (c == '\0') return true;
    ++text;
  }
  return *text == '\0';
}

// Whether the field holds the wildcard.
template <std::size_t N>
bool FieldIsAny(const char (&field)[N]) {
  return memcmp(field, kAny, sizeof kAny) == 0;
}

// Copies the field's text, up to its NUL or its width, and a NUL to out.
template <std::size_t N>
void CopyOut(char* out, const char (&field)[N]) {
  const std::size_t length = strnlen(field, N);
  memcpy(out, field, length);
  out[length] = '\0';
}

// Appends at most size characters of a text to a text in a buffer that holds both.
inline void AppendText(char* out, const char* text, std::size_t size) {
  const std::size_t length = strnlen(text, size);
  out += strlen(out);
  memcpy(out, text, length);
  out[length] = '\0';
}

// Clears a caller's text output: its first 8 bytes, the least size of any.
inline void ClearOutput(char* out) { memset(out, 0, 8); }

}  // namespace voatm

#endif  // SRC_COMMON_TEXT_FIELD_H
