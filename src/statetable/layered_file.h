// The rule by which an operation finds its configuration file among several scopes.
#ifndef SRC_STATETABLE_LAYERED_FILE_H
#define SRC_STATETABLE_LAYERED_FILE_H

#include <cstddef>

#include "statetable/file_kinds.h"

class VoCfgUtil;
class VoDebugUtil;

namespace voatm {

// Holds the path of a layered file.
inline constexpr std::size_t kLayeredPathSize = 251;

// The scope names, from widest to narrowest, and the fallback name.
struct Scopes {
  const char* s1;
  const char* s2;
  const char* s3;
  const char* fallback;
};

// The candidate paths of a file, narrowest scope first:
//   <home>/<directory>/<s1>_<s2>_<s3>_<suffix>
//   <home>/<directory>/<s1>_<s2>_<suffix>
//   <home>/<directory>/<s1>_<suffix>
//   <home>/<directory>/<fallback>_<suffix>
//   <home>/<directory>/DEFAULT_<suffix>            where the kind has it
class LayeredFile {
 public:
  LayeredFile(const FileKind& kind, const Scopes& scopes) : kind_(kind), scopes_(scopes) {}

  // Goes to the next candidate. Returns false after the last one, whose path then stays.
  bool Next();

  // Opens the current candidate. A path that does not fit does not open.
  bool OpenCurrent(VoCfgUtil& cfg) const;

  // Opens the first candidate that does. When none does, path() is the last one tried.
  bool OpenFirst(VoCfgUtil& cfg);

  int level() const { return level_; }  // of the current candidate, from 1
  const char* path() const { return path_; }

 private:
  int levels() const { return kind_.has_default ? 5 : 4; }
  int PrintPath();

  const FileKind& kind_;
  Scopes scopes_;
  int level_ = 0;
  bool fits_ = false;
  char path_[kLayeredPathSize];
};

// As LayeredFile::OpenFirst, for the operations that trace a failure at level 6.
bool OpenLayered(VoDebugUtil* trace, VoCfgUtil& cfg, const FileKind& kind, const Scopes& scopes);

}  // namespace voatm

#endif  // SRC_STATETABLE_LAYERED_FILE_H
