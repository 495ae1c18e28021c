// voatm check: what is wrong with the configuration of a home.
#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

#include "devhost/reader_line.h"
#include "home/check_configuration.h"
#include "show/output.h"
#include "verbs/verbs.h"
#include "vocfgutil.h"

namespace {

struct Options {
  DataOptions data;
  bool strict = false;
  bool verbose = false;
};

const char* NameOf(Severity severity) { return severity == Severity::kError ? "error" : "warning"; }

void PrintFinding(const ConfigurationFinding& finding) {
  const bool is_error = finding.severity == Severity::kError;
  PrintLine(finding.path + ":" + std::to_string(finding.line) + ":" +
                std::to_string(finding.column) + ": " + NameOf(finding.severity) + ": " +
                finding.text + " [" + finding.rule + "]",
            is_error ? Tone::kAlarm : Tone::kPlain);
}

Json ReportJson(const ConfigurationReport& report, std::ptrdiff_t errors) {
  Json json = {{"errors", errors},
               {"warnings", static_cast<std::ptrdiff_t>(report.findings.size()) - errors},
               {"findings", Json::array()},
               {"files", report.files}};
  for (const ConfigurationFinding& finding : report.findings) {
    json["findings"].push_back({{"path", finding.path},
                                {"line", finding.line},
                                {"column", finding.column},
                                {"severity", NameOf(finding.severity)},
                                {"text", finding.text},
                                {"rule", finding.rule}});
  }
  return json;
}

// The files are read as the bundled reader reads them, line by line.
void RequireLines() {
  if (devhost::kGivesLines<VoCfgUtil>) return;
  throw std::runtime_error(
      "cannot check: this switch's reader gives no lines, and its files may have a form of its "
      "own");
}

ExitCode Check(const Options& options) {
  RequireLines();
  RequireHome(options.data.home);
  const ConfigurationReport report = CheckConfiguration(options.data.home);
  const auto errors = std::count_if(
      report.findings.begin(), report.findings.end(),
      [](const ConfigurationFinding& finding) { return finding.severity == Severity::kError; });
  if (options.data.json) {
    PrintJson(ReportJson(report, errors));
  } else {
    if (options.verbose) {
      for (const std::string& file : report.files) Say("read " + file);
    }
    for (const ConfigurationFinding& finding : report.findings) PrintFinding(finding);
    Say("errors: " + std::to_string(errors) + ", warnings: " +
        std::to_string(static_cast<std::ptrdiff_t>(report.findings.size()) - errors) +
        ", files read: " + std::to_string(report.files.size()));
  }
  const bool fine = options.strict ? report.findings.empty() : errors == 0;
  return fine ? kDone : kFindings;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddDataOptions(list, &options->data);
  list->Flag("--strict", &options->strict, "Warnings are findings too");
  list->Flag("--verbose", &options->verbose, "Name every file that is read");
  return [options] { return Check(*options); };
}

}  // namespace

const Verb kCheck = {
    "check", "Check the configuration files of a home",
    "Reads cfg/ and inf/ as the library would, and the rows below tables/ as voatm serve would,\n"
    "and prints a line a fault: path:line:column: severity: text [rule]. An error keeps an\n"
    "operation from working or makes it answer something else; a warning is text that nothing\n"
    "reads or that is probably not meant. Needs no tables in memory and changes nothing.\n\n"
    "Exit status: 0 no errors (with --strict: no warnings either), 1 there are, 2 no such home.\n\n"
    "JSON: {errors, warnings, findings: [{path, line, column, severity, text, rule}], files}.",
    "voatm check --strict --home examples/home", Declare};
