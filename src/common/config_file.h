// Configuration files with a fixed place, and the values read from any.
#ifndef SRC_COMMON_CONFIG_FILE_H
#define SRC_COMMON_CONFIG_FILE_H

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "common/text_field.h"
#include "vocfgutil.h"

namespace voatm {

// Holds any field of a configuration file and its NUL.
inline constexpr std::size_t kValueSize = 151;
// Holds the path of a fixed file.
inline constexpr std::size_t kFixedPathSize = 151;
// Holds a search key.
inline constexpr std::size_t kKeySize = 51;

// The directory named by VODIR_HOME; an empty text when the variable is not set.
const char* HomeDirectory();

// A file with a fixed place below VODIR_HOME.
struct FixedFile {
  const char* directory;
  const char* name;
};

inline constexpr FixedFile kKernelFile = {"cfg", "vokernel.cfg"};
inline constexpr FixedFile kBusinessFile = {"cfg", "vobusiness.cfg"};
inline constexpr FixedFile kSecurityFile = {"cfg", "vosecurity.cfg"};
inline constexpr FixedFile kCardlessFile = {"cfg/atm", "CARDLESS_TXN.cfg"};
inline constexpr char kInfDirectory[] = "inf";  // of files whose names the caller gives

// Builds <home>/<directory>/<name> in path, zeroed first, and opens it. A path that does not fit is
// cut and does not open.
bool OpenFixedFile(VoCfgUtil& cfg, char (&path)[kFixedPathSize], const FixedFile& file);

// Reads a field of a key into value, cut at its width. Returns false, with value untouched, when
// the key or the field is missing.
template <std::size_t N>
bool ReadValue(VoCfgUtil& cfg, const char* key, int field, char (&value)[N]) {
  char text[kValueSize] = {};
  if (cfg.cfg_search(key, text, field) < 0) return false;
  SetText(value, text);
  return true;
}

}  // namespace voatm

#endif  // SRC_COMMON_CONFIG_FILE_H
