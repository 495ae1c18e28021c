#include "common/trace.h"

#include <cerrno>
#include <cstring>

#include "vodebugutil.h"

namespace voatm {

void TraceSystemError(VoDebugUtil* trace, const char* text) {
  const int error = errno;
  trace->trace(kError, "%s SysErr[ %s ] ErrNo[ %d ]", text, strerror(error), error);
  errno = error;
}

}  // namespace voatm
