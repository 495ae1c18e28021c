#include "statetable/layered_file.h"

#include <cstdio>
#include <cstring>

#include "common/config_file.h"
#include "common/trace.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

namespace voatm {

bool LayeredFile::Next() {
  if (level_ == levels()) return false;
  ++level_;
  memset(path_, 0, sizeof path_);
  fits_ = PrintPath() < static_cast<int>(sizeof path_);
  return true;
}

int LayeredFile::PrintPath() {
  const char* home = HomeDirectory();
  const char* names[] = {scopes_.s1, scopes_.fallback, "DEFAULT"};
  switch (level_) {
    case 1:
      return snprintf(path_, sizeof path_, "%s/%s/%s_%s_%s_%s", home, kind_.directory, scopes_.s1,
                      scopes_.s2, scopes_.s3, kind_.suffix);
    case 2:
      return snprintf(path_, sizeof path_, "%s/%s/%s_%s_%s", home, kind_.directory, scopes_.s1,
                      scopes_.s2, kind_.suffix);
    default:
      return snprintf(path_, sizeof path_, "%s/%s/%s_%s", home, kind_.directory, names[level_ - 3],
                      kind_.suffix);
  }
}

bool LayeredFile::OpenCurrent(VoCfgUtil& cfg) const { return fits_ && cfg.cfg_open(path_) >= 0; }

bool LayeredFile::OpenFirst(VoCfgUtil& cfg) {
  while (Next()) {
    if (OpenCurrent(cfg)) return true;
  }
  return false;
}

bool OpenLayered(VoDebugUtil* trace, VoCfgUtil& cfg, const FileKind& kind, const Scopes& scopes) {
  LayeredFile file(kind, scopes);
  if (file.OpenFirst(cfg)) return true;
  trace->trace(kInformation, "Failed to open file [ %s ]", file.path());
  return false;
}

}  // namespace voatm
