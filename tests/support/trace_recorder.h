// Records what the library traces, a line a call: the level (or '-'), a blank, the text.
#ifndef TESTS_SUPPORT_TRACE_RECORDER_H
#define TESTS_SUPPORT_TRACE_RECORDER_H

#include "voatmutil_testing.h"

using TraceRecorder = voatmutil_testing::Traces;

#endif  // TESTS_SUPPORT_TRACE_RECORDER_H
