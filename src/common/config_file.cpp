#include "common/config_file.h"

#include <cstdlib>

namespace voatm {

const char* HomeDirectory() {
  const char* home = getenv("VODIR_HOME");
  return home != nullptr ? home : "";
}

bool OpenFixedFile(VoCfgUtil& cfg, char (&path)[kFixedPathSize], const FixedFile& file) {
  memset(path, 0, sizeof path);
  const int length =
      snprintf(path, sizeof path, "%s/%s/%s", HomeDirectory(), file.directory, file.name);
  return length < static_cast<int>(sizeof path) && cfg.cfg_open(path) >= 0;
}

}  // namespace voatm
