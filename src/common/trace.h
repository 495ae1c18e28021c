// What the library adds to a trace call.
#ifndef SRC_COMMON_TRACE_H
#define SRC_COMMON_TRACE_H

class VoDebugUtil;

namespace voatm {

// The levels used with VoDebugUtil::trace.
enum TraceLevel { kError = 2, kInformation = 6, kDetail = 7 };

// Traces a failed system call: the text, then the error text and number of errno, at level 2.
// Leaves errno as it was: it tells the caller of the operation why.
void TraceSystemError(VoDebugUtil* trace, const char* text);

}  // namespace voatm

#endif  // SRC_COMMON_TRACE_H
