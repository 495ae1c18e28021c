#include "show/output.h"

#include <libsmartcols/libsmartcols.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

namespace {

constexpr const char* kAlarmColor = "\033[31m";
constexpr const char* kPlainColor = "\033[0m";
constexpr int kIndent = 2;
constexpr int kOneLine = -1;

bool UseColor() {
  const char* refused = std::getenv("NO_COLOR");
  return (refused == nullptr || *refused == '\0') && UsesTerminal();
}

// A byte that is no UTF-8 is replaced: the configuration and the tables may hold any.
constexpr auto kReplaced = Json::error_handler_t::replace;

void PrintJsonIn(const Json& json, int indent) {
  std::printf("%s\n", json.dump(indent, ' ', false, kReplaced).c_str());
}

}  // namespace

bool UsesTerminal() { return isatty(STDOUT_FILENO) != 0; }

std::string Alarm(const std::string& text) {
  return UseColor() ? kAlarmColor + text + kPlainColor : text;
}

std::string Readable(std::string_view text) {
  std::string readable;
  for (const char c : text) {
    char escaped[5] = {c};
    if (c < ' ' || c > '~') {
      std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(c));
    }
    readable += escaped;
  }
  return readable;
}

void PrintJson(const Json& json) { PrintJsonIn(json, kIndent); }

void PrintJsonLine(const Json& json) { PrintJsonIn(json, kOneLine); }

JsonList::JsonList(const Json& head) {
  std::string opening = "[";
  if (!head.is_null()) {
    opening = head.dump();
    opening.replace(opening.size() - 1, 1, ",\"rows\":[");
    end_ = "]}";
  }
  std::printf("%s", opening.c_str());
}

void JsonList::Add(const Json& item) {
  std::printf("%s\n  %s", separator_, item.dump(-1, ' ', false, kReplaced).c_str());
  separator_ = ",";
}

void JsonList::Close() { std::printf("%s%s\n", *separator_ == '\0' ? "" : "\n", end_); }

void Say(const std::string& text) {
  std::fflush(stdout);
  std::fprintf(stderr, "voatm: %s\n", text.c_str());
}

void FlushOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw std::runtime_error(std::string(std::strerror(errno)) + ": cannot write standard output");
}

void TextTable::Release::operator()(struct libscols_table* table) const {
  scols_unref_table(table);
}

TextTable::TextTable(const std::vector<Column>& columns) : table_(scols_new_table()) {
  if (table_ == nullptr) throw std::bad_alloc();
  scols_table_enable_colors(table_.get(), UseColor() ? 1 : 0);
  scols_table_enable_noencoding(table_.get(), 1);
  const bool two_lines = std::any_of(columns.begin(), columns.end(), [](const Column& column) {
    return column.heading.find('\n') != std::string::npos;
  });
  scols_table_enable_noheadings(table_.get(), two_lines ? 1 : 0);
  std::vector<std::string> upper, lower;
  for (const Column& column : columns) {
    const std::size_t newline = column.heading.find('\n');
    const bool one_line = newline == std::string::npos;
    upper.push_back(one_line ? "" : column.heading.substr(0, newline));
    lower.push_back(column.heading.substr(one_line ? 0 : newline + 1));
    scols_table_new_column(table_.get(), two_lines ? "" : lower.back().c_str(), 0,
                           column.number ? int{SCOLS_FL_RIGHT} : 0);
  }
  if (!two_lines) return;
  AddRow(upper);
  AddRow(lower);
}

void TextTable::AddRow(const std::vector<std::string>& cells, bool alarm) {
  struct libscols_line* line = scols_table_new_line(table_.get(), nullptr);
  if (line == nullptr) throw std::bad_alloc();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    scols_line_set_data(line, i, Readable(cells[i]).c_str());
  }
  if (alarm) scols_line_set_color(line, kAlarmColor);
}

void TextTable::Print() const { scols_print_table(table_.get()); }
