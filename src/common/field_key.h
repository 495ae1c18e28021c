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
    if (length <= width) {
      SetProbe(std::min(length + 1, width));
    } else {
      probe_ = 1;  // no masked word equals it
    }
  }

  explicit FieldKey(const int& number) : bytes_(reinterpret_cast<const char*>(&number)) {
    SetProbe(sizeof number);
  }

  // Whether the probed bytes are the key's; false means that Is is false.
  bool MayBe(const char* field) const {
    return __builtin_expect((Load(field + offset_) & mask_) == probe_, false);
  }

  bool Is(const char* field) const {
    if (!MayBe(field)) return false;
    for (std::size_t at = 0; at < offset_; at += kProbe) {
      if (Load(field + at) != Load(bytes_ + at)) return false;
    }
    return true;
  }

 private:
  static constexpr std::size_t kProbe = sizeof(std::uint64_t);

  static std::uint64_t Load(const char* bytes) {
    std::uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
  }

  // Probes the last of the bytes that decide: a text and its NUL, at most the field.
  void SetProbe(std::size_t size) {
    const std::size_t probed = std::min(size, kProbe);
    offset_ = size - probed;
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
  std::size_t offset_ = 0;  // of the probe, behind the bytes that it leaves to Is
  std::uint64_t probe_ = 0;
  std::uint64_t mask_ = 0;
};

}  // namespace voatm

#endif  // SRC_COMMON_FIELD_KEY_H
