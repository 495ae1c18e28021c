#include "json_file.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "devhost/system_call.h"
#include "show/output.h"

namespace {

// "2:7": the line and the column of a byte of the text, all counted from 1.
std::string PlaceOf(std::size_t byte, const std::string& text) {
  const std::string before = text.substr(0, byte == 0 ? 0 : byte - 1);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t line_start = before.find_last_of('\n') + 1;  // 0 without a newline
  return std::to_string(line) + ":" + std::to_string(before.size() - line_start + 1);
}

Json ReadJson(const std::string& path) {
  const std::string text = devhost::FileText(path);
  try {
    return Json::parse(text);
  } catch (const Json::parse_error& wrong) {
    throw std::runtime_error("not JSON: " + path + ":" + PlaceOf(wrong.byte, text));
  } catch (const Json::exception&) {
    throw std::runtime_error("a number that is too large: " + path);
  }
}

// A member's value as the command line would give it.
std::vector<std::string> WordsOf(const Json& value, const OptionRow& row) {
  const auto refuse_unless = [&](bool good, const char* wanted) {
    if (!good) throw UsageError("\"" + std::string(row.member) + "\" is not " + wanted);
  };
  if (row.values == OptionRow::kAnyNumber) {
    const bool texts = value.is_array() && std::all_of(value.begin(), value.end(),
                                                       [](auto& each) { return each.is_string(); });
    refuse_unless(texts, "a list of texts");
    return value;
  }
  const bool is_number = row.type == OptionRow::kNumber;
  refuse_unless(is_number ? value.is_number_unsigned() : value.is_string(),
                is_number ? "a whole number" : "a text");
  return {is_number ? InOneLine(value) : value.get<std::string>()};
}

// The option that a member of the file stands for.
const OptionRow& RowOf(const std::string& member, const OptionList& options,
                       const std::string& path) {
  const auto row = std::find_if(
      options.rows().begin(), options.rows().end(),
      [&](const OptionRow& each) { return each.member != nullptr && member == each.member; });
  if (row == options.rows().end()) {
    throw std::runtime_error("unknown member \"" + member + "\": " + path);
  }
  return *row;
}

}  // namespace

void TakeFile(const std::string& path, const OptionList& options) {
  const Json json = ReadJson(path);
  if (!json.is_object()) throw std::runtime_error("not an object of JSON: " + path);
  for (const auto& [name, value] : json.items()) {
    const OptionRow& row = RowOf(name, options, path);
    try {
      row.take(WordsOf(value, row));
    } catch (const UsageError& error) {
      throw std::runtime_error(error.what() + (": " + path));
    }
  }
}
