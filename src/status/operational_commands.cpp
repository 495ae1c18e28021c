// Operational commands of operators and the ATM manager.
#include <strings.h>

#include <cstddef>

#include "voatmutil.h"

namespace {

// In the order of their codes, which have no gaps.
constexpr const char* kCommands[] = {
    "!INSERVICE",    "!OUTSERVICE",     "!GETCONFIG",   "!CLOSEVSHIELD", "!OPENVSHIELD",
    "!UNLOCKSDOOR",  "!LOCKSDOOR",      "!GETEMG",      "!GETCOUNTERS",  "!CLEARCOUNTERS",
    "!GETECOUNTERS", "!CLEARECOUNTERS", "!RUNSELFTEST", "!SHUTDOWN",     "!GETTALLY",
    "!GETERROR",     "!GETHWCONFIG",    "!GETDATETIME", "!GETEKC"};
constexpr int kFirstCode = 31;
constexpr int kLastCode = 49;

static_assert(sizeof kCommands / sizeof kCommands[0] == kLastCode - kFirstCode + 1);

}  // namespace

int VoATMUtil::GetOpertionalCmd(const char* cmdText) {
  int code = kFirstCode;
  for (const char* command : kCommands) {
    if (strcasecmp(cmdText, command) == 0) return code;
    ++code;
  }
  return -1;
}
