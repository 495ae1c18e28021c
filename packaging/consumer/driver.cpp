// The least driver. Its home lacks the first file that start-up opens and has the other's.
#include <cstdio>

#include "voatmutil.h"
#include "vodebugutil.h"

int main() {
  VoDebugUtil trace;
  VoATMUtil util;
  const int started = util.InitVoATMUtil(&trace, false);
  std::printf("started %d, UTC %d\n", started, util.getUTCFlag());
}
