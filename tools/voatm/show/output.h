// How the verbs print: tables for people, JSON for programs, talk beside them.
#ifndef TOOLS_VOATM_SHOW_OUTPUT_H
#define TOOLS_VOATM_SHOW_OUTPUT_H

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

using Json = nlohmann::ordered_json;

// Whether standard output is a terminal.
bool UsesTerminal();

// The text in the colour of what is wrong; without colour when standard output is no terminal, or
// when NO_COLOR is set.
std::string Alarm(const std::string& text);

// The text with what is no ASCII character, or controls a terminal, as \xHH.
std::string Readable(std::string_view text);

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

#endif  // TOOLS_VOATM_SHOW_OUTPUT_H
