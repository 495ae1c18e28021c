// Records what the library traces, a line a call: the level (or '-'), a blank, the text.
#ifndef TESTS_SUPPORT_TRACE_RECORDER_H
#define TESTS_SUPPORT_TRACE_RECORDER_H

#include <string>
#include <utility>

#include "vodebugutil.h"

class TraceRecorder {
 public:
  TraceRecorder() {
    debug_.set_level(7);
    debug_.to_callback(
        [](void* self, int level, const char* text) {
          std::string& lines = static_cast<TraceRecorder*>(self)->lines_;
          lines += (level == VoDebugUtil::kNoLevel ? "-" : std::to_string(level)) + " " + text;
          lines += '\n';
        },
        this);
  }

  VoDebugUtil* debug() { return &debug_; }

  // The lines since the last call, each with its newline.
  std::string Take() { return std::exchange(lines_, {}); }

 private:
  VoDebugUtil debug_;
  std::string lines_;
};

#endif  // TESTS_SUPPORT_TRACE_RECORDER_H
