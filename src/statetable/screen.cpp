// Screens: the number of the reserved empty one.
#include "common/trace.h"
#include "statetable/layered_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

constexpr char kEmptyScreenKey[] = "ATM_RESERVEDSCREEN#EMPTYSCR";

}  // namespace

int VoATMUtil::GetEmptyScreen(const char* s1, const char* s2, const char* s3, char* screenNo,
                              const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenLayered(dptr, cfg, kFileKinds[kScreens], {s1, s2, s3, fallback})) return -1;
  if (cfg.cfg_search(kEmptyScreenKey, screenNo, 2) < 0) {
    dptr->trace(kInformation, "Search Id [ %s ]", kEmptyScreenKey);
    cfg.cfg_close();
    return -1;
  }
  cfg.cfg_close();
  return 1;
}
