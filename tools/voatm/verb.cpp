#include "verb.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace {

const records::RecordTable& TableNamed(const std::string& name) {
  const auto* const found =
      std::find_if(records::kRecordTables.begin(), records::kRecordTables.end(),
                   [&](const records::RecordTable& table) {
                     return strcasecmp(name.c_str(), table.name) == 0 ||
                            strcasecmp(name.c_str(), table.short_name) == 0;
                   });
  if (found != records::kRecordTables.end()) return *found;
  std::string known;
  for (const records::RecordTable& table : records::kRecordTables) {
    known += std::string(known.empty() ? "" : ", ") + table.short_name + " (" + table.name + ")";
  }
  throw UsageError("no table \"" + name + "\"; there are " + known);
}

}  // namespace

std::string Verb::Manual() const {
  return description + (choices == nullptr ? "" : "\n\n" + choices());
}

void AddHomeOption(OptionList* options, std::string* home) {
  options->Text("--home", "DIR", home, "The configuration tree, with cfg/ and tables/")
      .environment = "VODIR_HOME";
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
  options
      ->Add({"TABLE", names + "}", "The table's short name; its name in traces will do",
             [table](const auto& values) { *table = &TableNamed(values.front()); }})
      .Required();
}

void RequireHome(const std::string& home) {
  if (home.empty()) throw std::runtime_error("no home: give --home DIR or set VODIR_HOME");
  std::error_code error;
  if (std::filesystem::is_directory(home, error)) return;
  throw std::runtime_error((error ? error.message() : "Not a directory") + ": home " + home);
}
