#include "show/output.h"

#include <libsmartcols/libsmartcols.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sstream>
#include <stdexcept>

namespace {

constexpr const char* kAlarmColor = "\033[31m";
constexpr const char* kPlainColor = "\033[0m";
constexpr std::size_t kUsualWidth = 80;
constexpr std::size_t kNarrowest = 20;  // a width that leaves room behind an indent
constexpr int kIndent = 2;
constexpr int kOneLine = -1;

bool IsSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool UsesTerminal() {
  static const bool is_terminal = isatty(STDOUT_FILENO) != 0;
  return is_terminal;
}

bool UseColor() { return HasControls() && !IsSet("NO_COLOR"); }

// The characters of a line; 0 when there is no limit.
std::size_t Width() {
  if (!UsesTerminal()) return 0;
  winsize size{};
  const bool told = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return told ? std::max<std::size_t>(size.ws_col, kNarrowest) : kUsualWidth;
}

// Breaks a line at blanks, or where there is none, so that no part is wider than `width`.
std::string Folded(std::string line, std::size_t width, std::size_t indent) {
  std::string folded;
  indent = std::min(indent, width / 2);
  while (width > 0 && line.size() > width) {
    const std::size_t blank = line.find_last_of(' ', width);
    const bool has_blank =
        blank != std::string::npos && blank > indent && line.find_first_not_of(' ') < blank;
    const std::size_t end = has_blank ? blank : width;
    folded += line.substr(0, end) + "\n";
    line = std::string(indent, ' ') + line.substr(has_blank ? end + 1 : end);
  }
  return folded + line;
}

// In ASCII, for a terminal obeys other characters too. A byte that is no UTF-8 is replaced: the
// configuration and the tables may hold any.
std::string Dumped(const Json& json, int indent) {
  return json.dump(indent, ' ', true, Json::error_handler_t::replace);
}

const Json& ValueAt(const Json& row, const std::string& place) {
  static const Json kNone;
  const Json::json_pointer pointer(place);
  return row.contains(pointer) ? row.at(pointer) : kNone;
}

}  // namespace

bool HasControls() {
  return UsesTerminal() && IsSet("TERM") && std::strcmp(std::getenv("TERM"), "dumb") != 0;
}

std::string Readable(std::string_view text) {
  std::string readable;
  for (auto at = text.begin(); at != text.end();) {
    const auto end = std::find_if_not(at, text.end(), IsPlain);
    readable.append(at, end);
    if (end == text.end()) break;
    char escaped[5];
    std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(*end));
    readable += escaped;
    at = end + 1;
  }
  return readable;
}

void PrintLine(std::string_view text, Tone tone, std::size_t indent) {
  std::string line = Readable(text);
  if (UsesTerminal()) line = Folded(line, Width(), indent);
  if (tone == Tone::kAlarm && UseColor()) line = kAlarmColor + line + kPlainColor;
  PrintAsIs(line += '\n');
}

void PrintAsIs(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void PrintFacts(const std::string& title, const NamedTexts& facts, Tone title_tone) {
  if (!title.empty()) PrintLine(title, title_tone);
  const std::string before(title.empty() ? 0 : kIndent, ' ');
  std::size_t widest = 0;
  for (const auto& [name, value] : facts) widest = std::max(widest, name.size());
  for (const auto& [name, value] : facts) {
    if (value.empty()) continue;
    const std::string start = before + name + std::string(widest - name.size() + kIndent, ' ');
    PrintLine(start + value, Tone::kPlain, start.size());
  }
}

std::string InOneLine(const Json& value) {
  if (value.is_boolean()) return value.get<bool>() ? "" : "none";
  if (!value.is_structured()) return value.is_string() ? value.get<std::string>() : value.dump();
  std::string line;
  for (const Json& each : value) {
    const std::string text = InOneLine(each);
    line += (line.empty() || text.empty() ? "" : " ") + text;
  }
  return line;
}

void PrintRows(const std::string& title, const Json& objects) {
  if (objects.empty()) return;
  std::vector<JsonColumn> columns;
  for (const auto& [name, value] : objects.front().items()) {
    columns.push_back({name, "/" + name});
    for (char& c : columns.back().heading) c = static_cast<char>(std::toupper(c));
  }
  PrintLine("");
  PrintLine(title);
  PrintTable(objects, columns);
}

void PrintJson(const Json& json) { PrintAsIs(Dumped(json, kIndent) + "\n"); }

void PrintJsonLine(const Json& json) { PrintAsIs(Dumped(json, kOneLine) + "\n"); }

JsonList::JsonList(const Json& head) {
  std::string opening = "[";
  if (!head.is_null()) {
    opening = Dumped(head, kOneLine);
    opening.replace(opening.size() - 1, 1, ",\"rows\":[");
    end_ = "]}";
  }
  PrintAsIs(opening);
}

void JsonList::Add(const Json& item) {
  PrintAsIs(separator_ + ("\n  " + Dumped(item, kOneLine)));
  separator_ = ",";
}

void JsonList::Close() { PrintAsIs((*separator_ == '\0' ? "" : "\n") + std::string(end_) + "\n"); }

void Say(const std::string& text) {
  std::fflush(stdout);
  std::istringstream lines(text);
  std::string said;
  for (std::string line; std::getline(lines, line);) said += Readable(line) + "\n";
  std::fprintf(stderr, "voatm: %s", said.c_str());
}

void FlushOutput() {
  std::fflush(stdout);
  if (std::ferror(stdout) == 0) return;
  throw std::runtime_error(std::string(std::strerror(errno)) + ": cannot write standard output");
}

void TextTable::Release::operator()(struct libscols_table* table) const {
  scols_unref_table(table);
}

TextTable::TextTable(const std::vector<Column>& columns) : table_(scols_new_table()) {
  if (table_ == nullptr) throw std::bad_alloc();
  const std::size_t width = Width();
  scols_table_set_termforce(table_.get(),
                            width > 0 ? SCOLS_TERMFORCE_ALWAYS : SCOLS_TERMFORCE_NEVER);
  if (width > 0) scols_table_set_termwidth(table_.get(), width);
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
                           column.number ? int{SCOLS_FL_RIGHT} : int{SCOLS_FL_WRAP});
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

void PrintTable(const Json& rows, const std::vector<JsonColumn>& columns, const char* alarm) {
  std::vector<TextTable::Column> headings;
  for (const auto& [heading, place] : columns) {
    const bool number = std::any_of(rows.begin(), rows.end(), [&place = place](const Json& row) {
      return ValueAt(row, place).is_number();
    });
    headings.push_back({heading, number});
  }
  TextTable table(headings);
  for (const Json& row : rows) {
    std::vector<std::string> cells;
    for (const auto& [heading, place] : columns) {
      const Json& value = ValueAt(row, place);
      cells.push_back(value.is_null() ? "-" : InOneLine(value));
    }
    const Json& wrong = ValueAt(row, alarm);
    table.AddRow(cells, wrong.is_boolean() ? wrong.get<bool>() : !wrong.empty());
  }
  table.Print();
}
