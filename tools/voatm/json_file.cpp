#include "json_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "devhost/system_call.h"
#include "options.h"

namespace {

// "file:2:7" of a byte of the text, counted from 1.
std::string PlaceOf(const std::string& path, const std::string& text, std::size_t byte) {
  const std::string before = text.substr(0, byte == 0 ? 0 : byte - 1);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t newline = before.rfind('\n');
  const std::size_t column = before.size() - (newline == std::string::npos ? 0 : newline + 1) + 1;
  return path + ":" + std::to_string(line) + ":" + std::to_string(column);
}

std::runtime_error Unknown(const std::string& member, const std::string& path) {
  return std::runtime_error("unknown member \"" + member + "\": " + path);
}

Json ReadJson(const std::string& path) {
  std::ifstream stream(path);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (!stream.is_open() || stream.bad()) {
    throw devhost::SystemError(errno != 0 ? errno : EIO, "cannot read " + path);
  }
  try {
    return Json::parse(text);
  } catch (const Json::parse_error& error) {
    throw std::runtime_error("not JSON: " + PlaceOf(path, text, error.byte));
  } catch (const Json::exception&) {
    throw std::runtime_error("a number that is too large: " + path);
  }
}

}  // namespace

JsonFile::JsonFile(const std::string& path, const std::vector<std::string>& known)
    : path_(path), json_(ReadJson(path)) {
  if (!json_.is_object()) throw std::runtime_error("not an object of JSON: " + path);
  for (const auto& [name, value] : json_.items()) {
    if (std::find(known.begin(), known.end(), name) != known.end()) continue;
    throw Unknown(name, path);
  }
}

void JsonFile::Take(const char* name, std::optional<std::string>* value) const {
  if (!value->has_value() && json_.contains(name)) *value = Text(json_.at(name), name);
}

void JsonFile::Take(const char* name, int least, std::optional<int>* value) const {
  if (value->has_value() || !json_.contains(name)) return;
  const Json& given = json_.at(name);
  if (given.is_number_unsigned()) *value = ReadNumber(given.dump(), least);
  if (!value->has_value()) Refuse(name, RangeText(least, INT_MAX));
}

void JsonFile::Take(const char* name, std::vector<std::string>* values) const {
  if (!values->empty() || !json_.contains(name)) return;
  if (!json_.at(name).is_array()) Refuse(name, "a list of texts");
  for (const Json& each : json_.at(name)) values->push_back(Text(each, name));
}

std::string JsonFile::Text(const Json& value, const char* name) const {
  if (!value.is_string()) Refuse(name, "a text");
  return value.get<std::string>();
}

void JsonFile::Refuse(const char* name, const std::string& wanted) const {
  throw std::runtime_error(std::string("\"") + name + "\" is not " + wanted + ": " + path_);
}
