// How the verbs print: lines, facts and tables for people, JSON for programs, talk beside them.
// Nothing else writes to standard output or standard error, so nothing that a table, a file or a
// log holds reaches a terminal as it is.
//
// On a terminal a long line is folded, and a table's cells are, to the terminal's width, or 80
// when it tells none. Elsewhere a row is a line, however long.
#ifndef TOOLS_VOATM_SHOW_OUTPUT_H
#define TOOLS_VOATM_SHOW_OUTPUT_H

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using Json = nlohmann::ordered_json;

// What is wrong has a colour, on a terminal that has colours, unless NO_COLOR is set.
enum class Tone { kPlain, kAlarm };

// Whether standard output is a terminal that obeys escape sequences.
bool HasControls();

// Whether it is an ASCII character that controls nothing.
constexpr bool IsPlain(char c) { return c >= ' ' && c <= '~'; }

// The text with what is not plain as \xHH.
std::string Readable(std::string_view text);

// Prints a line, made readable; where it is folded it goes on behind `indent` blanks.
void PrintLine(std::string_view text, Tone tone = Tone::kPlain, std::size_t indent = 2);

// Prints a text of our own as it is: help, a script.
void PrintAsIs(const std::string& text);

// Names in a column, each with its value beside it; one without a value is left out. The title
// stands above them and moves them in, unless it is empty.
using NamedTexts = std::vector<std::pair<std::string, std::string>>;
void PrintFacts(const std::string& title, const NamedTexts& facts, Tone title_tone = Tone::kPlain);

// A value in a line, a list or an object as its values with blanks between; of a truth only that
// it is none.
std::string InOneLine(const Json& value);

// A table of objects with the same members, which head the columns, below a title of its own.
// Nothing when there are none.
void PrintRows(const std::string& title, const Json& objects);

// Prints to standard output, in as many lines as it takes to read it, or in one.
void PrintJson(const Json& json);
void PrintJsonLine(const Json& json);

// Prints an array of JSON values, a line each, one after the other, so that none is kept. It is the
// last member, "rows", of the object `head`, or stands alone without one.
class JsonList {
 public:
  explicit JsonList(const Json& head = {});
  void Add(const Json& item);
  void Close();

 private:
  const char* separator_ = "";
  const char* end_ = "]";
};

// Says something beside the data, on standard error, behind the data so far.
void Say(const std::string& text);

// Hands what was printed to the system; throws std::runtime_error when it does not take it.
void FlushOutput();

// A table with headings.
class TextTable {
 public:
  struct Column {
    std::string heading;  // in two lines when it holds a newline
    bool number = false;  // stands to the right
  };

  explicit TextTable(const std::vector<Column>& columns);

  // Adds a row of as many cells as there are columns, made readable; `alarm` colours it.
  void AddRow(const std::vector<std::string>& cells, bool alarm = false);

  // Prints to standard output.
  void Print() const;

 private:
  struct Release {
    void operator()(struct libscols_table* table) const;
  };

  std::unique_ptr<struct libscols_table, Release> table_;
};

// Prints an array of JSON objects as a table, a row each. A column has a heading and the place of
// its value ("/segment/id"); numbers stand to the right, a dash stands for no value. Of an array,
// the values of its members stand in a cell. Coloured is a row of which what stands at `alarm` is
// true, or holds something.
struct JsonColumn {
  std::string heading;
  std::string place;
};
void PrintTable(const Json& rows, const std::vector<JsonColumn>& columns,
                const char* alarm = "/alarm");

#endif  // TOOLS_VOATM_SHOW_OUTPUT_H
