// Response tables: the next state and screen after an authorisation response.
#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "statetable/layered_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

bool OpenGoodResponseFile(VoDebugUtil* trace, VoCfgUtil& cfg, const Scopes& scopes) {
  LayeredFile file(kFileKinds[kResponseStates], scopes);
  while (file.Next()) {
    if (file.OpenCurrent(cfg)) return true;
    // Intended: the third miss is not traced.
    if (file.level() <= 2) {
      trace->trace(kInformation, "LoadGoodResponseState : Failed to open file [ %s ]", file.path());
    }
  }
  trace->trace(kInformation, "Failed to open file [ %s ]", file.path());
  return false;
}

}  // namespace

// Intended: the good and the bad form differ in their messages, levels and cleared outputs.

int VoATMUtil::LoadGoodResponseState(const char* keyPart1, const char* keyPart2, char* stateNo,
                                     char* screenNo, const char* s1, const char* s2, const char* s3,
                                     const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenGoodResponseFile(dptr, cfg, {s1, s2, s3, fallback})) return -1;
  char key[kKeySize];
  FormatText(key, "GOOD_RESPONSE#%s_%s", keyPart1, keyPart2);
  if (cfg.cfg_search(key, stateNo, 2) < 0) {
    dptr->trace(kError, "Failed to search StateNo SearchId[ %s ]", key);
    cfg.cfg_close();
    return -1;
  }
  if (cfg.cfg_search(key, screenNo, 3) < 0) {
    dptr->trace(kInformation, "Failed to search ScreenNo SearchId[ %s ]", key);
    cfg.cfg_close();
    return -1;
  }
  dptr->trace(kInformation, "SearchId[ %s ] StateNo[ %s ] ScreenNo[ %s ]", key, stateNo, screenNo);
  cfg.cfg_close();
  return 1;
}

int VoATMUtil::LoadBadResponseState(const char* keyPart1, const char* keyPart2, char* stateNo,
                                    char* screenNo, const char* s1, const char* s2, const char* s3,
                                    const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenLayered(dptr, cfg, kFileKinds[kResponseStates], {s1, s2, s3, fallback})) return -1;
  char key[kKeySize];
  FormatText(key, "BAD_RESPONSE#%s_%s", keyPart1, keyPart2);
  ClearOutput(stateNo);
  if (cfg.cfg_search(key, stateNo, 2) < 0) {
    dptr->trace(kError, "Failed to search[ %s ] for StateNo", key);
    cfg.cfg_close();
    return -1;
  }
  ClearOutput(screenNo);
  if (cfg.cfg_search(key, screenNo, 3) < 0) {
    dptr->trace(kError, "Failed to search[ %s ] for ScreenNo", key);
    cfg.cfg_close();
    return -1;
  }
  cfg.cfg_close();
  return 1;
}
