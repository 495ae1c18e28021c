#include "verb.h"

#include <strings.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

std::string Verb::Manual() const {
  return description + (choices == nullptr ? "" : "\n\n" + choices());
}

bool Verb::Is(const Verb& above, const std::string& word) const {
  const std::string before = above.name;
  return !word.empty() && name == before + (before.empty() ? "" : " ") + word;
}

std::string Verb::Word() const {
  const std::string words = name;
  return words.substr(words.find_last_of(' ') + 1);
}

void AddHomeOption(OptionList* options, std::string* home) {
  const char* const usual = std::getenv("VODIR_HOME");
  if (usual != nullptr) *home = usual;
  options->Text("--home", "DIR", home,
                "The configuration tree, with cfg/ and tables/, instead of that of VODIR_HOME");
}

void AddDataOptions(OptionList* options, DataOptions* data) {
  AddHomeOption(options, &data->home);
  options->Flag("--json", &data->json, "Print JSON");
}

void AddTableArgument(OptionList* options, const records::RecordTable** table) {
  std::string names;
  for (const records::RecordTable& each : records::kRecordTables) {
    names += (names.empty() ? "{" : ",") + std::string(each.short_name);
  }
  names += "}";
  const auto take = [names, table](const std::vector<std::string>& values) {
    const char* const name = values.front().c_str();
    for (const records::RecordTable& each : records::kRecordTables) {
      const bool named = strcasecmp(name, each.name) == 0 || strcasecmp(name, each.short_name) == 0;
      if (named) *table = &each;
    }
    if (*table != nullptr) return;
    throw UsageError("no table \"" + values.front() + "\"; there are " + names);
  };
  options->Add({"TABLE", names, "The table's short name; its name in traces will do", take})
      .Required();
}

void RequireHome(const std::string& home) {
  if (home.empty()) throw std::runtime_error("no home: give --home DIR or set VODIR_HOME");
  std::error_code error;
  if (std::filesystem::is_directory(home, error)) return;
  throw std::runtime_error((error ? error.message() : "Not a directory") + ": home " + home);
}

void UseHome(const std::string& home) {
  RequireHome(home);
  setenv("VODIR_HOME", home.c_str(), 1);
}
