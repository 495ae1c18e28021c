#include "options.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

namespace {

std::string Braced(const std::vector<std::string>& choices) {
  return "{" + Joined(choices, ",") + "}";
}

}  // namespace

std::vector<std::string> Split(const std::string& text, char separator) {
  std::istringstream stream(text);
  std::vector<std::string> parts;
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

std::string Joined(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
  return text;
}

std::optional<int> ReadNumber(const std::string& text, int least, int most) {
  unsigned number = 0;  // whose reader takes no sign
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  const bool whole = error == std::errc() && rest == end && number <= INT_MAX;
  const int given = whole ? static_cast<int>(number) : -1;
  if (!whole || given < least || given > most) return std::nullopt;
  return given;
}

int RequireNumber(const std::string& name, const std::string& text, int least, int most) {
  if (const auto number = ReadNumber(text, least, most)) return *number;
  const std::string end = most == INT_MAX ? "" : " to " + std::to_string(most);
  throw UsageError(name + " cannot be \"" + text + "\": it takes a whole number from " +
                   std::to_string(least) + end);
}

std::vector<std::string> OptionRow::Choices() const {
  if (type.empty() || type.front() != '{') return {};
  return Split(type.substr(1, type.find('}') - 1), ',');
}

OptionRow& OptionList::Add(OptionRow row) {
  rows_.push_back(std::move(row));
  return rows_.back();
}

OptionRow& OptionList::Flag(const std::string& name, bool* value, const std::string& about) {
  return Add({name, "", about, [value](const auto&) { *value = true; }, 0});
}

OptionRow& OptionList::Texts(const std::string& name, const std::string& type, int number,
                             std::vector<std::string>* values, const std::string& about) {
  return Add({name, type, about, [values](const auto& given) { *values = given; }, number});
}

OptionRow& OptionList::Choice(const std::string& name, const std::vector<std::string>& choices,
                              std::string* value, const std::string& about) {
  const auto take = [name, choices, value](const std::vector<std::string>& values) {
    *value = values.front();
    if (std::find(choices.begin(), choices.end(), *value) != choices.end()) return;
    throw UsageError(name + " cannot be \"" + *value + "\": it is one of " + Braced(choices));
  };
  return Add({name, Braced(choices), about, take});
}

const OptionRow* OptionList::Find(const std::string& name) const {
  const auto row = std::find_if(rows_.begin(), rows_.end(),
                                [&](const OptionRow& each) { return each.name == name; });
  return row == rows_.end() ? nullptr : &*row;
}
