// Institution flags and cardless keys: single values of files with a fixed place.
#include <strings.h>

#include <cstring>

#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

bool IsYes(const char* value) { return strcasecmp(value, "Yes") == 0; }

}  // namespace

int VoATMUtil::isBadResponsePrintNeeded(const char* instId) {
  VoCfgUtil cfg;
  char path[kFixedPathSize];
  if (!OpenFixedFile(cfg, path, kBusinessFile)) return 0;
  char key[kKeySize];
  FormatText(key, "%s_BADRSP_RCPT_NEEDED", instId);
  char value[kValueSize];
  const bool needed = ReadValue(cfg, key, 2, value) && IsYes(value);
  cfg.cfg_close();
  return needed ? 1 : 0;
}

int VoATMUtil::getUTCFlag() {
  VoCfgUtil cfg;
  char path[kFixedPathSize];
  if (!OpenFixedFile(cfg, path, kBusinessFile)) {
    dptr->trace(kError, "Error in opening file[ %s ]", path);
    return 0;
  }
  char value[kValueSize];
  if (!ReadValue(cfg, "VOBUSINESS#UTCFLAG", 2, value)) {
    // Intended: the message names another key.
    dptr->trace(kError, "Error in Searching VOBUSINESS#MAXATM from file[ %s ]", path);
    cfg.cfg_close();
    return 0;
  }
  return IsYes(value) ? 1 : 0;  // Intended: the file is left to the reader's destructor.
}

int VoATMUtil::getCardlessTrack2Data(const char* opKey, char* track2Data) {
  VoCfgUtil cfg;
  char path[kFixedPathSize];
  if (!OpenFixedFile(cfg, path, kCardlessFile)) {
    dptr->trace(kError, "Error in opening file[ %s ]", path);
    return -1;
  }
  char key[kKeySize];
  FormatText(key, "%s#%s", "OPKEYMAP", opKey);
  char value[kValueSize];
  bool found = ReadValue(cfg, key, 2, value);
  if (!found) {
    // Intended: this text ends in a blank, the next one does not.
    dptr->trace(kError, "Error in Searching cfgparam[%s] from file[ %s ] ", key, path);
    FormatText(key, "%s#%s", "OPKEYMAP", "DEFAULT");
    found = ReadValue(cfg, key, 2, value);
  }
  if (found) {
    strcpy(track2Data, value);
  } else {
    dptr->trace(kError, "Error in Searching cfgparam[%s] from file[ %s ]", key, path);
  }
  cfg.cfg_close();
  return found ? 1 : -1;
}
