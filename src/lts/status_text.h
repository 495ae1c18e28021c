// The last-transaction status, a text that the ATM sends.
#ifndef SRC_LTS_STATUS_TEXT_H
#define SRC_LTS_STATUS_TEXT_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace voatm {

inline constexpr char kLastTransactionStatus = '2';  // the mark of one
inline constexpr std::size_t kStatusCassettes = 4;
inline constexpr std::size_t kDepositGroupSize = 20;
inline constexpr std::size_t kMaxDepositText = 119;

// Where the fields of a status text lie.
struct StatusField {
  std::size_t offset;
  std::size_t size;
};

inline constexpr StatusField kStatusMark = {0, 1};
inline constexpr StatusField kTraceNumber = {1, 4};
inline constexpr StatusField kEnd = {5, 1};
inline constexpr StatusField kNotes = {6, 5};  // of cassette A; B, C and D follow
inline constexpr StatusField kCoinAmount = {26, 5};
inline constexpr StatusField kCoinStatus = {31, 20};
inline constexpr StatusField kDepositMark = {51, 1};
inline constexpr StatusField kDepositGroups = {52, kMaxDepositText};
inline constexpr StatusField kDepositNotes = {0, 5};  // within a group

static_assert(kNotes.offset + kStatusCassettes * kNotes.size == kCoinAmount.offset);

// A last-transaction status as the ATM sent it. Fields behind the text's end read as empty.
class StatusText {
 public:
  explicit StatusText(const char* text) : text_(text), length_(strlen(text)) {}

  // One field as a text of its own.
  struct Value {
    char text[kMaxDepositText + 1] = {};

    int Number() const { return atoi(text); }
  };

  Value Text(StatusField field) const {
    Value value;
    if (field.offset < length_) {
      memcpy(value.text, text_ + field.offset, strnlen(text_ + field.offset, field.size));
    }
    return value;
  }

  char Char(StatusField field) const { return Text(field).text[0]; }
  int Number(StatusField field) const { return Text(field).Number(); }

  bool IsLastTransactionStatus() const { return Char(kStatusMark) == kLastTransactionStatus; }

 private:
  const char* text_;
  std::size_t length_;
};

}  // namespace voatm

#endif  // SRC_LTS_STATUS_TEXT_H
