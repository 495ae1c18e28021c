// What a line of a log says, when it is one of the library's.
#ifndef TOOLS_VOATM_ASK_TRACE_LINE_H
#define TOOLS_VOATM_ASK_TRACE_LINE_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ask/why_catalogue.h"

// A text of the catalogue that a line holds.
struct TraceMatch {
  const TraceText* row = nullptr;
  std::vector<std::string_view> printed;  // by the text's conversions

  // What the line means, with what was printed.
  std::string Means() const;
};

// A line, blanks at its ends left out and others made one. The views hold until the next Read.
struct TraceLine {
  std::vector<TraceMatch> matches;  // more than one only when nothing tells them apart
  std::string_view time;            // as it stands before the text; empty when there is none
  std::string_view process;         // the same
  std::string_view error_name;      // of the system call that failed; empty when none did
  std::string_view error_number;
};

// Reads lines of any length and with any prefix. Of a long one only the end may be a text, so that
// the time grows with its length only.
class TraceReader {
 public:
  TraceReader();

  // Finds the leftmost text of the catalogue that the line ends with, of several the one whose own
  // words are the most.
  const TraceLine& Read(std::string_view line);

 private:
  struct Piece {
    char conversion;      // s, d or c; 0 for a number with zeros in front
    std::string literal;  // behind it
  };

  // A text of the catalogue, taken apart.
  struct Pattern {
    const TraceText* row;
    std::string head;  // before the first conversion
    std::vector<Piece> pieces;
    std::size_t words;  // characters that are no conversion's
  };

  static Pattern Compile(const TraceText& row);
  static bool Takes(const Pattern& pattern, std::string_view text,
                    std::vector<std::string_view>* printed);
  void SplitError();
  bool FindAt(std::size_t at, bool ends_blank);

  // By their first character, those of the most words first.
  std::array<std::vector<Pattern>, 256> patterns_;
  std::string text_;
  std::string_view said_;  // what the library itself said, up to the system's error
  std::vector<std::string_view> printed_;
  TraceLine line_;
};

#endif  // TOOLS_VOATM_ASK_TRACE_LINE_H
