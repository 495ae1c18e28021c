#include "vodebugutil.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <ctime>

namespace {

// A line under construction. Its size is what a pipe takes in one piece, so that lines sent to a
// standard error that is a pipe do not mix either.
struct Line {
  char text[PIPE_BUF];
  std::size_t length = 0;
};

constexpr std::size_t kLongestEscape = 4;  // \xHH

void AddStamp(Line& line, int level) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  line.length = strftime(line.text, sizeof line.text, "%Y-%m-%d %H:%M:%S", &local);

  char level_text[16] = "-";
  if (level != VoDebugUtil::kNoLevel) std::snprintf(level_text, sizeof level_text, "%d", level);
  const int added = std::snprintf(line.text + line.length, sizeof line.text - line.length,
                                  ".%06ld [%d] %s ", now.tv_nsec / 1000, getpid(), level_text);
  line.length += static_cast<std::size_t>(added);
}

void AddEscaped(Line& line, unsigned char character) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  line.text[line.length++] = '\\';
  if (character == '\n') {
    line.text[line.length++] = 'n';
    return;
  }
  line.text[line.length++] = 'x';
  line.text[line.length++] = kDigits[character / 16];
  line.text[line.length++] = kDigits[character % 16];
}

bool IsControl(unsigned char character) {
  return (character < ' ' && character != '\t') || character == 0x7f;
}

void AddText(Line& line, const char* text) {
  constexpr std::size_t kLimit = sizeof line.text - kLongestEscape - 1;  // 1: the newline
  for (; *text != '\0' && line.length <= kLimit; ++text) {
    const auto character = static_cast<unsigned char>(*text);
    if (IsControl(character)) {
      AddEscaped(line, character);
    } else {
      line.text[line.length++] = *text;
    }
  }
  line.text[line.length++] = '\n';
}

void WriteLine(int file, int level, const char* text) {
  Line line;
  AddStamp(line, level);
  AddText(line, text);
  while (write(file, line.text, line.length) < 0 && errno == EINTR) {
  }
}

}  // namespace

VoDebugUtil::~VoDebugUtil() { CloseFile(); }

int VoDebugUtil::to_file(const char* path) {
  const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640);
  if (file < 0) return -1;
  to_stderr();
  file_ = file;
  return 0;
}

void VoDebugUtil::to_stderr() { to_callback(nullptr, nullptr); }

void VoDebugUtil::to_callback(Sink sink, void* context) {
  CloseFile();
  sink_ = sink;
  context_ = context;
}

// A line that is filtered out would pay for guarding an argument list that it never starts. Write,
// which holds the buffers, keeps its guard.
__attribute__((no_stack_protector)) void VoDebugUtil::trace(int level, const char* format, ...) {
  if (level > threshold_) return;
  va_list arguments;
  va_start(arguments, format);
  Write(level, format, arguments);
  va_end(arguments);
}

void VoDebugUtil::trace(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Write(kNoLevel, format, arguments);
  va_end(arguments);
}

void VoDebugUtil::Write(int level, const char* format, va_list arguments) {
  const int saved_errno = errno;
  char text[kMaxText + 1];
  if (std::vsnprintf(text, sizeof text, format, arguments) < 0) {
    std::snprintf(text, sizeof text, "%s", format);
  }
  if (sink_ != nullptr) {
    sink_(context_, level, text);
  } else {
    WriteLine(file_ < 0 ? STDERR_FILENO : file_, level, text);
  }
  errno = saved_errno;
}

void VoDebugUtil::CloseFile() {
  if (file_ >= 0) close(file_);
  file_ = -1;
}
