#include "ask/trace_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <limits>
#include <thread>

#include "devhost/system_call.h"

namespace {

constexpr std::size_t kBuffer = 256 * 1024;
constexpr std::size_t kLongestLine = 1024 * 1024;
constexpr auto kLookAgain = std::chrono::milliseconds(200);

using FileBuffer = __gnu_cxx::stdio_filebuf<char>;

FileBuffer Open(const std::string& path) {
  const int file = path.empty() ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file >= 0) return {file, std::ios::in, kBuffer};
  const int error = errno;
  throw devhost::SystemError(error, "cannot open " + path);
}

}  // namespace

LogLines::LogLines(const std::string& path)
    : path_(path), line_(kLongestLine + 1), file_(Open(path)), stream_(&file_) {}

std::optional<std::string_view> LogLines::Next() {
  std::size_t size = 0;
  do {
    stream_.clear();
    stream_.getline(line_.data() + size, static_cast<std::streamsize>(line_.size() - size));
    size += static_cast<std::size_t>(stream_.gcount());
    if (stream_.good()) return std::string_view(line_.data(), size - 1);  // less its newline
    if (stream_.bad()) {
      const int error = errno;
      throw devhost::SystemError(error,
                                 "cannot read " + (path_.empty() ? "standard input" : path_));
    }
    if (!stream_.eof()) {  // the line is longer than the buffer
      stream_.clear();
      stream_.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
      return std::string_view(line_.data(), size);
    }
  } while (before_waiting_ != nullptr && (WaitForMore() || size == 0));
  if (size == 0) return std::nullopt;
  return std::string_view(line_.data(), size);
}

// Returns whether what comes next goes on with what was read, which it does not in a file that was
// cut or replaced. What the old one gained meanwhile is read first.
bool LogLines::WaitForMore() {
  before_waiting_();
  if (is_replaced_) {
    is_replaced_ = false;
    file_ = Open(path_);
    return false;
  }
  std::this_thread::sleep_for(kLookAgain);
  struct stat there = {}, here = {};
  if (fstat(file_.fd(), &here) < 0 || stat(path_.c_str(), &there) < 0) return true;
  is_replaced_ = there.st_ino != here.st_ino || there.st_dev != here.st_dev;
  if (is_replaced_ || here.st_size >= file_.pubseekoff(0, std::ios::cur)) return true;
  file_.pubseekpos(0);
  return false;
}

void FewTexts::Add(std::string_view text) {
  if (text.empty() || texts.find(text) != texts.end()) return;
  more = texts.size() == most;
  if (!more) texts.emplace(text);
}

void LogSummary::Add(const TraceLine& line) {
  ++lines_;
  if (line.matches.empty()) {
    ++unknown_;
    return;
  }
  const TraceMatch& match = line.matches.front();
  // Numbers that no system has would be messages without end.
  constexpr std::size_t kDigits = 3, kLongestName = 100;
  const bool possible = line.error_number.size() <= kDigits;
  const std::string number(possible ? line.error_number : "");
  LogMessage& message = messages_[{match.row, number}];
  ++message.count;
  message.row = match.row;
  message.error_number = number;
  if (possible) message.error_name = line.error_name.substr(0, kLongestName);
  if (message.first.empty()) message.first = line.time;
  if (!line.time.empty()) message.last = line.time;
  message.processes.Add(line.process);
  if (!message.means.more) message.means.Add(match.Means());
}

std::vector<LogMessage> LogSummary::Messages() const {
  std::vector<LogMessage> messages;
  for (const auto& [key, message] : messages_) messages.push_back(message);
  std::sort(messages.begin(), messages.end(), [](const LogMessage& a, const LogMessage& b) {
    if (a.weight() != b.weight()) return a.weight() < b.weight();
    if (a.count != b.count) return a.count > b.count;
    return std::strcmp(a.row->text, b.row->text) < 0;
  });
  return messages;
}
