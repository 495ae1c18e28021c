#include "verb.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>

namespace {

const devhost::RecordTable& TableNamed(const std::string& name) {
  const auto* const found =
      std::find_if(devhost::kRecordTables.begin(), devhost::kRecordTables.end(),
                   [&](const devhost::RecordTable& table) {
                     return strcasecmp(name.c_str(), table.name) == 0 ||
                            strcasecmp(name.c_str(), table.short_name) == 0;
                   });
  if (found != devhost::kRecordTables.end()) return *found;
  std::string known;
  for (const devhost::RecordTable& table : devhost::kRecordTables) {
    known += std::string(known.empty() ? "" : ", ") + table.short_name + " (" + table.name + ")";
  }
  throw CLI::ValidationError("no table \"" + name + "\"; there are " + known);
}

}  // namespace

void AddHomeOption(CLI::App* verb, std::string* home) {
  verb->add_option("--home", *home, "The configuration tree, with cfg/ and tables/")
      ->envname("VODIR_HOME")
      ->type_name("DIR");
}

void AddDataOptions(CLI::App* verb, DataOptions* options) {
  AddHomeOption(verb, &options->home);
  verb->add_flag("--json", options->json, "Print JSON");
}

void AddTableArgument(CLI::App* verb, const devhost::RecordTable** table) {
  std::string names;
  for (const devhost::RecordTable& each : devhost::kRecordTables) {
    names += (names.empty() ? "{" : ",") + std::string(each.short_name);
  }
  verb->add_option_function<std::string>(
          "TABLE", [table](const std::string& name) { *table = &TableNamed(name); },
          "The table's short name; its name in traces will do")
      ->type_name(names + "}")
      ->required();
}

std::string ManualText(const Verb& verb) {
  return verb.description + (verb.choices == nullptr ? "" : "\n\n" + verb.choices());
}

void RequireHome(const std::string& home) {
  if (home.empty()) throw std::runtime_error("no home: give --home DIR or set VODIR_HOME");
  std::error_code error;
  if (std::filesystem::is_directory(home, error)) return;
  throw std::runtime_error((error ? error.message() : "Not a directory") + ": home " + home);
}
