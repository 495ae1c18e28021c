// A log read line by line, however large it is, and what its lines come to.
#ifndef TOOLS_VOATM_ASK_TRACE_LOG_H
#define TOOLS_VOATM_ASK_TRACE_LOG_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ask/trace_line.h"

// The lines of a file or of standard input. It takes as much memory as the longest line does, and a
// megabyte at most.
class LogLines {
 public:
  // Reads the file at `path`, or standard input when it is empty. Throws when it does not open.
  explicit LogLines(const std::string& path);
  LogLines(const LogLines&) = delete;
  LogLines& operator=(const LogLines&) = delete;
  ~LogLines();

  // At the end, waits for more instead of ending; calls `before_waiting` once it has nothing more.
  // A file that was cut or replaced is read from its new beginning.
  void Follow(std::function<void()> before_waiting);

  // The next line without its newline, cut at a megabyte; it holds until the next call. Throws when
  // reading fails.
  std::optional<std::string_view> Next();

 private:
  bool Fill();
  void WaitForMore();
  void ReopenIfReplaced();

  std::string path_;
  int file_;
  std::function<void()> before_waiting_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of what was not given yet
  std::size_t end_ = 0;
  std::size_t searched_ = 0;  // there is no newline before it
  bool skipping_ = false;     // the rest of a line that was cut
};

// What a log says of one text of the catalogue.
struct LogMessage {
  const TraceText* row = nullptr;
  std::string error_number;  // of the system call that failed; empty when none did
  std::size_t count = 0;
  std::string first, last;          // as the lines say the time
  std::set<std::string> processes;  // up to kMostProcesses
  std::vector<std::string> means;   // up to kMostMeanings, of different values
  bool more_processes = false, more_means = false;

  static constexpr std::size_t kMostProcesses = 100;
  static constexpr std::size_t kMostMeanings = 4;

  void AddProcess(const std::string& process);
  void AddMeaning(const std::string& meaning);
};

// Counts lines by their text and their system error, in memory that does not grow with them.
class LogSummary {
 public:
  void Add(const TraceLine& line);

  std::size_t lines() const { return lines_; }
  std::size_t unknown() const { return unknown_; }  // that are no text of the library

  // What matters most first, and of that what is said most often.
  std::vector<LogMessage> Messages() const;

 private:
  std::size_t lines_ = 0;
  std::size_t unknown_ = 0;
  std::map<std::pair<const TraceText*, std::string>, LogMessage> messages_;
};

#endif  // TOOLS_VOATM_ASK_TRACE_LOG_H
