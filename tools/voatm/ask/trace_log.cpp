#include "ask/trace_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "devhost/system_call.h"

namespace {

constexpr std::size_t kChunk = 256 * 1024;
constexpr std::size_t kLongestLine = 1024 * 1024;
constexpr auto kLookAgain = std::chrono::milliseconds(200);

int Open(const std::string& path) {
  if (path.empty()) return STDIN_FILENO;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    const int error = errno;
    throw devhost::SystemError(error, "cannot open " + path);
  }
  return file;
}

}  // namespace

LogLines::LogLines(const std::string& path) : path_(path), file_(Open(path)), buffer_(kChunk) {}

LogLines::~LogLines() {
  if (!path_.empty()) close(file_);
}

void LogLines::Follow(std::function<void()> before_waiting) {
  before_waiting_ = std::move(before_waiting);
}

std::optional<std::string_view> LogLines::Next() {
  while (true) {
    const char* const start = buffer_.data() + begin_;
    const void* const newline = std::memchr(buffer_.data() + searched_, '\n', end_ - searched_);
    const bool cut = newline == nullptr && end_ - begin_ >= kLongestLine;
    if (newline != nullptr || cut) {
      const auto size = newline == nullptr
                            ? kLongestLine
                            : static_cast<std::size_t>(static_cast<const char*>(newline) - start);
      begin_ += size + (cut ? 0 : 1);
      searched_ = begin_;
      const bool rest = std::exchange(skipping_, cut);
      if (rest) continue;
      return std::string_view(start, size);
    }
    searched_ = end_;
    if (Fill()) continue;
    if (before_waiting_ != nullptr) {
      WaitForMore();
    } else if (begin_ == end_ || skipping_) {
      return std::nullopt;
    } else {
      const std::string_view rest(buffer_.data() + begin_, end_ - begin_);
      begin_ = end_;
      return rest;
    }
  }
}

// Reads behind what is there. Returns false at the end.
bool LogLines::Fill() {
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    searched_ -= begin_;
    begin_ = 0;
  }
  if (buffer_.size() - end_ < kChunk / 2) buffer_.resize(buffer_.size() + kChunk);
  ssize_t size = 0;
  do {
    size = read(file_, buffer_.data() + end_, buffer_.size() - end_);
  } while (size < 0 && errno == EINTR);
  if (size < 0) {
    const int error = errno;
    throw devhost::SystemError(error, "cannot read " + (path_.empty() ? "standard input" : path_));
  }
  end_ += static_cast<std::size_t>(size);
  return size > 0;
}

void LogLines::WaitForMore() {
  before_waiting_();
  std::this_thread::sleep_for(kLookAgain);
  if (!path_.empty()) ReopenIfReplaced();
}

void LogLines::ReopenIfReplaced() {
  struct stat there {
  }, here{};
  if (fstat(file_, &here) < 0 || stat(path_.c_str(), &there) < 0) return;
  if (there.st_ino != here.st_ino || there.st_dev != here.st_dev) {
    const int file = Open(path_);
    close(std::exchange(file_, file));
  } else if (here.st_size < lseek(file_, 0, SEEK_CUR)) {
    lseek(file_, 0, SEEK_SET);
  }
}

void LogMessage::AddProcess(const std::string& process) {
  if (process.empty() || processes.count(process) > 0) return;
  more_processes = processes.size() == kMostProcesses;
  if (!more_processes) processes.insert(process);
}

void LogMessage::AddMeaning(const std::string& meaning) {
  if (std::find(means.begin(), means.end(), meaning) != means.end()) return;
  more_means = means.size() == kMostMeanings;
  if (!more_means) means.push_back(meaning);
}

void LogSummary::Add(const TraceLine& line) {
  ++lines_;
  if (line.matches.empty()) {
    ++unknown_;
    return;
  }
  const TraceMatch& match = line.matches.front();
  // Numbers that no system has would be messages without end.
  const bool known = MeaningOfError(line.error_number) != nullptr;
  LogMessage& message =
      messages_[{match.row, known ? std::string(line.error_number) : std::string()}];
  if (message.count++ == 0) {
    message.row = match.row;
    message.error_number = known ? line.error_number : "";
    message.first = line.time;
  }
  if (!line.time.empty()) message.last = line.time;
  message.AddProcess(std::string(line.process));
  if (!message.more_means) message.AddMeaning(match.Means());
}

std::vector<LogMessage> LogSummary::Messages() const {
  std::vector<LogMessage> messages;
  for (const auto& [key, message] : messages_) messages.push_back(message);
  std::sort(messages.begin(), messages.end(), [](const LogMessage& a, const LogMessage& b) {
    const Weight weight_of_a = a.row->advice->weight;
    const Weight weight_of_b = b.row->advice->weight;
    if (weight_of_a != weight_of_b) return weight_of_a < weight_of_b;
    if (a.count != b.count) return a.count > b.count;
    return std::strcmp(a.row->text, b.row->text) < 0;
  });
  return messages;
}
