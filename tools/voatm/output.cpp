#include "output.h"

#include <libsmartcols/libsmartcols.h>
#include <unistd.h>

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

bool UseColor() {
  const char* refused = std::getenv("NO_COLOR");
  return (refused == nullptr || *refused == '\0') && UsesTerminal();
}

}  // namespace

bool UsesTerminal() { return isatty(STDOUT_FILENO) != 0; }

std::string Alarm(const std::string& text) {
  return UseColor() ? kAlarmColor + text + kPlainColor : text;
}

// A byte that is no UTF-8 is replaced: the configuration and the tables may hold any.
void PrintJson(const Json& json) {
  const auto replaced = Json::error_handler_t::replace;
  std::printf("%s\n", json.dump(kIndent, ' ', false, replaced).c_str());
}

void Say(const std::string& text) { std::fprintf(stderr, "voatm: %s\n", text.c_str()); }

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
  for (const Column& column : columns) {
    scols_table_new_column(table_.get(), column.heading, 0,
                           column.number ? int{SCOLS_FL_RIGHT} : 0);
  }
}

void TextTable::AddRow(const std::vector<std::string>& cells, bool alarm) {
  struct libscols_line* line = scols_table_new_line(table_.get(), nullptr);
  if (line == nullptr) throw std::bad_alloc();
  for (std::size_t i = 0; i < cells.size(); ++i) scols_line_set_data(line, i, cells[i].c_str());
  if (alarm) scols_line_set_color(line, kAlarmColor);
}

void TextTable::Print() const { scols_print_table(table_.get()); }
