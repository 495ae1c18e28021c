// A value to be found among the fields of many records.
#ifndef SRC_COMMON_FIELD_KEY_H
#define SRC_COMMON_FIELD_KEY_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace voatm {

// Ids share long prefixes and differ at their end, so a field is first compared in the eight bytes
// that end at the text's NUL. A field narrower than that is compared with what follows it masked
// out: eight bytes from its begin must lie within its record. The value itself is not copied and
// must outlive the key.
class FieldKey {
 public:
  // A text in a field of this width. One that is wider than the field equals none.
  FieldKey(const char* text, std::size_t width) : bytes_(text) {
    const std::size_t length = strnlen(text, width + 1);
    size_ = std::min(length + 1, width);
    if (length <= width) {
      SetProbe();
    } else {
      probe_ = 1;  // no masked word equals it
    }
  }

  explicit FieldKey(const int& number)
      : bytes_(reinterpret_cast<const char*>(&number)), size_(sizeof number) {
    SetProbe();
  }

  // Whether the probed bytes are the key's; false means that Is is false.
  bool MayBe(const char* field) const { return (Load(field + offset_) & mask_) == probe_; }

  bool Is(const char* field) const { return MayBe(field) && memcmp(field, bytes_, size_) == 0; }

 private:
  static constexpr std::size_t kProbe = sizeof(std::uint64_t);

  static std::uint64_t Load(const char* bytes) {
    std::uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
  }

  void SetProbe() {
    const std::size_t probed = std::min(size_, kProbe);
    offset_ = size_ - probed;
    char probe[kProbe] = {};
    char mask[kProbe] = {};
    for (std::size_t i = 0; i < probed; ++i) {
      probe[i] = bytes_[offset_ + i];
      mask[i] = '\xff';
    }
    probe_ = Load(probe);
    mask_ = Load(mask);
  }

  const char* bytes_;
  std::size_t size_;  // bytes that decide: a text and its NUL, at most the field
  std::size_t offset_ = 0;
  std::uint64_t probe_ = 0;
  std::uint64_t mask_ = 0;
};

}  // namespace voatm

#endif  // SRC_COMMON_FIELD_KEY_H
