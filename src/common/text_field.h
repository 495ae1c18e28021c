// Fixed-width text: char arrays whose size the compiler knows, so that no length is ever typed.
#ifndef SRC_COMMON_TEXT_FIELD_H
#define SRC_COMMON_TEXT_FIELD_H

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

// Zero-fills the field and prints into it, cut so that the last byte stays NUL.
template <std::size_t N>
[[gnu::format(printf, 2, 3)]] void FormatText(char (&field)[N], const char* format, ...) {
  memset(field, 0, N);
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(field, N, format, arguments);
  va_end(arguments);
}

// Whether the field's text, up to its NUL or its width, is exactly this text.
template <std::size_t N>
bool FieldIs(const char (&field)[N], const char* text) {
  const std::size_t length = strnlen(field, N);
  return strncmp(field, text, length) == 0 && text[length] == '\0';
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

// A text to be found among many fields of N bytes. Ids share long prefixes and differ at their end,
// so the eight bytes that end at the text's NUL are compared before the rest.
template <std::size_t N>
class TextKey {
 public:
  explicit TextKey(const char* text = "") {
    const std::size_t length = strnlen(text, N + 1);
    fits_ = length <= N;
    compared_ = length < N ? length + 1 : N;
    memcpy(text_, text, fits_ ? length : N);
    probe_offset_ = compared_ > kProbe ? compared_ - kProbe : 0;
    const std::size_t probed = compared_ - probe_offset_;
    memset(&probe_mask_, 0xff, probed);
    memcpy(&probe_bits_, text_ + probe_offset_, probed);
  }

  bool Is(const char (&field)[N]) const {
    std::uint64_t bits = 0;
    memcpy(&bits, field + probe_offset_, kProbe);
    return (bits & probe_mask_) == probe_bits_ && fits_ && memcmp(field, text_, compared_) == 0;
  }

  const char* text() const { return text_; }

 private:
  static constexpr std::size_t kProbe = N < 8 ? N : 8;

  char text_[N + 1] = {};
  std::size_t compared_;  // bytes that decide: the text and its NUL, at most the field
  std::size_t probe_offset_;
  std::uint64_t probe_bits_ = 0;
  std::uint64_t probe_mask_ = 0;
  bool fits_;  // a longer text equals no field
};

}  // namespace voatm

#endif  // SRC_COMMON_TEXT_FIELD_H
