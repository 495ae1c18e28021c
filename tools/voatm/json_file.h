// A file of JSON that a person wrote, for a verb that takes one.
#ifndef TOOLS_VOATM_JSON_FILE_H
#define TOOLS_VOATM_JSON_FILE_H

#include <optional>
#include <string>
#include <vector>

#include "show/output.h"

// An object whose members stand in for options. What is wrong throws std::runtime_error with the
// member, the file and, where it is no JSON, line and column.
class JsonFile {
 public:
  // `known` are the members that it may have.
  JsonFile(const std::string& path, const std::vector<std::string>& known);

  // Each takes a member, when there is one and *value has none yet.
  void Take(const char* name, std::optional<std::string>* value) const;
  void Take(const char* name, int least, std::optional<int>* value) const;
  void Take(const char* name, std::vector<std::string>* values) const;

 private:
  std::string Text(const Json& value, const char* name) const;
  [[noreturn]] void Refuse(const char* name, const std::string& wanted) const;

  std::string path_;
  Json json_;
};

#endif  // TOOLS_VOATM_JSON_FILE_H
