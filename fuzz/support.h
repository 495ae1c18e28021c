// What the fuzz targets share: checks, memory of exact size, the input as a file.
#ifndef FUZZ_SUPPORT_H
#define FUZZ_SUPPORT_H

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/trace_recorder.h"
#include "voatmutil.h"

// The one function of a target; it gets an input and may be called any number of times.
using FuzzTarget = int (*)(const unsigned char* bytes, std::size_t size);

// The program is all targets: it is the one by whose name it is called.
bool AddTarget(const char* name, FuzzTarget target);

// FUZZ_TARGET(name) { what is done with `size` of `bytes`; returns 0 }
#define FUZZ_TARGET(name)                                                          \
  static int Fuzz_##name(const unsigned char* bytes, std::size_t size);            \
  [[maybe_unused]] static const bool added_##name = AddTarget(#name, Fuzz_##name); \
  static int Fuzz_##name(const unsigned char* bytes, std::size_t size)

// Ends the run when something that must hold does not.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

// A caller's buffer or text in a heap block of exactly its size, so that the sanitizer sees a step
// behind it. Two blocks are equal when all their bytes are.
class Block {
 public:
  // An output, filled with '#'.
  explicit Block(std::size_t size) : bytes_(size, '#') {}
  // A text up to its NUL, and nothing behind it.
  explicit Block(const std::string& text) : bytes_(text.c_str(), text.c_str() + TextSize(text)) {}

  char* data() { return bytes_.data(); }
  std::size_t size() const { return bytes_.size(); }
  template <typename Record>
  Record* As() {
    return reinterpret_cast<Record*>(data());
  }
  bool operator==(const Block& other) const { return bytes_ == other.bytes_; }

  std::string Text() const {
    const auto end = std::find(bytes_.begin(), bytes_.end(), '\0');
    Require(end != bytes_.end(), "a text ends within its buffer");
    return {bytes_.begin(), end};
  }

  // What an operation is expected to do.
  void Clear() { std::fill_n(bytes_.begin(), 8, '\0'); }
  void Put(const std::string& text, std::size_t at = 0) {
    std::copy_n(text.c_str(), TextSize(text), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
  }

 private:
  static std::size_t TextSize(const std::string& text) { return std::strlen(text.c_str()) + 1; }

  std::vector<char> bytes_;
};

// A driver's object without tables.
struct Driver {
  Driver() { util.dptr = trace.debug(); }

  TraceRecorder trace;
  VoATMUtil util;
};

inline std::string UpToNul(const std::string& text) { return text.substr(0, text.find('\0')); }

// Texts of the input, without NULs: its next one, and all that is left of it.
inline std::string TextOf(FuzzedDataProvider& input, std::size_t longest) {
  return UpToNul(input.ConsumeRandomLengthString(longest));
}
inline std::string RestOf(FuzzedDataProvider& input) {
  return UpToNul(input.ConsumeRemainingBytesAsString());
}

// A file in memory. It has the same path in every process and leaves nothing behind.
class InputFile {
 public:
  // It also appears below VODIR_HOME, by these names.
  explicit InputFile(const std::vector<const char*>& names = {}) {
    Require(dup2(memfd_create("input", 0), kDescriptor) == kDescriptor, "a file can be made");
    setenv("VODIR_HOME", FUZZ_HOME, 1);
    for (const char* name : names) {
      const std::filesystem::path place = std::string(FUZZ_HOME) + "/" + name;
      std::error_code exists;
      std::filesystem::create_directories(place.parent_path());
      std::filesystem::create_symlink(kPath, place, exists);
    }
  }

  void Write(const std::string& text) {
    const auto size = static_cast<ssize_t>(text.size());
    Require(ftruncate(kDescriptor, 0) == 0, "the file can be emptied");
    Require(pwrite(kDescriptor, text.data(), text.size(), 0) == size, "the file can be written");
  }

  static constexpr const char* kPath = "/proc/self/fd/100";

 private:
  static constexpr int kDescriptor = 100;
};

#endif  // FUZZ_SUPPORT_H
