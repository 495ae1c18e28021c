// A log read line by line, however large it is, and what its lines come to.
#ifndef TOOLS_VOATM_ASK_TRACE_LOG_H
#define TOOLS_VOATM_ASK_TRACE_LOG_H

#include <cstddef>
#include <ext/stdio_filebuf.h>
#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ask/trace_line.h"

// The lines of a file or of standard input, in memory that does not grow with them.
class LogLines {
 public:
  // Reads the file at `path`, or standard input when it is empty. Throws when it does not open.
  explicit LogLines(const std::string& path);

  // At the end, waits for more instead of ending; calls `before_waiting` once it has nothing more.
  // A file that was cut or replaced is read from its new beginning.
  void Follow(std::function<void()> before_waiting) { before_waiting_ = std::move(before_waiting); }

  // The next line without its newline, cut at a megabyte; it holds until the next call. Throws when
  // reading fails.
  std::optional<std::string_view> Next();

 private:
  bool WaitForMore();

  std::string path_;
  std::function<void()> before_waiting_;
  std::vector<char> line_;
  __gnu_cxx::stdio_filebuf<char> file_;
  std::istream stream_;
  bool is_replaced_ = false;
};

// Different texts, up to a number of them.
struct FewTexts {
  std::size_t most;
  std::set<std::string, std::less<>> texts{};
  bool more = false;  // than these

  void Add(std::string_view text);
};

// What a log says of one text of the catalogue.
struct LogMessage {
  const TraceText* row = nullptr;
  std::string error_number;  // of the system call that failed; empty when none did
  std::string error_name;
  std::size_t count = 0;
  std::string first, last;  // as the lines say the time
  FewTexts processes = {100};
  FewTexts means = {4};  // of different values

  Weight weight() const { return row->advice->weight; }
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
