// VoDebugUtil: the switch's trace facility.
#ifndef VODEBUGUTIL_H
#define VODEBUGUTIL_H

#include <cstdarg>

// Writes trace lines to one destination: standard error (the start value), a file, or a callback.
// Levels are those of syslog: 2 critical, 6 information, 7 detail. A line whose level is above the
// threshold is dropped at the price of one comparison; a line without a level is always written.
//
// A line carries date, time to the microsecond, process id and level, and is one write, so that
// the lines of several processes in one file never mix:
//
//   2026-11-21 09:30:05.123456 [12345] 7 text          '-' in place of the level when it has none
//
// Control characters of a text, tabs aside, are written as escapes (a newline as \n, others as
// \xHH), so that one call is one line. A text is cut at kMaxText, and a line at 4096 bytes, what a
// pipe takes as a whole; one that cannot be formatted gives way to its format. A line that cannot
// be written is lost. Tracing leaves errno alone.
class [[gnu::visibility("default")]] VoDebugUtil {
 public:
  static constexpr int kNoLevel = -1;    // what a callback is given for a line without a level
  static constexpr int kMaxText = 3800;  // bytes of a formatted text that reach the destination

  // Takes each line that passes the threshold: the context given with it, the level (or kNoLevel)
  // and the formatted text as it is, NUL-terminated, without date and without escapes.
  using Sink = void (*)(void* context, int level, const char* text);

  VoDebugUtil() = default;
  ~VoDebugUtil();  // closes the file, if one is open
  VoDebugUtil(const VoDebugUtil&) = delete;
  VoDebugUtil& operator=(const VoDebugUtil&) = delete;

  // Lines of a level up to this one are written. Starts at 6.
  void set_level(int threshold) { threshold_ = threshold; }

  // Sends the lines that follow to the file, which is created when absent and always appended to.
  // Returns 0, or -1 with errno set when it cannot be opened; the destination then stays.
  int to_file(const char* path);
  void to_stderr();
  void to_callback(Sink sink, void* context);

  // Writes a line, printf-style, when the level is at most the threshold.
  [[gnu::format(printf, 3, 4)]] void trace(int level, const char* format, ...);

  // Writes a line without a level, printf-style, whatever the threshold.
  [[gnu::format(printf, 2, 3)]] void trace(const char* format, ...);

 private:
  [[gnu::format(printf, 3, 0)]] void Write(int level, const char* format, va_list arguments);
  void CloseFile();

  int threshold_ = 6;
  int file_ = -1;  // none: standard error
  Sink sink_ = nullptr;
  void* context_ = nullptr;
};

#endif  // VODEBUGUTIL_H
