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

struct CheckOptions : DataOptions {
  bool strict = false;
  bool verbose = false;
};

void PrintCheck(const Json& report, bool verbose) {
  if (verbose) {
    for (const Json& file : report["files"]) Say("read " + InOneLine(file));
  }
  for (const Json& finding : report["findings"]) {
    const auto part = [&](const char* name) { return InOneLine(finding[name]); };
    PrintLine(part("path") + ":" + part("line") + ":" + part("column") + ": " + part("severity") +
                  ": " + part("text") + " [" + part("rule") + "]",
              finding["severity"] == "error" ? Tone::kAlarm : Tone::kPlain);
  }
  Say("errors: " + InOneLine(report["errors"]) + ", warnings: " + InOneLine(report["warnings"]) +
      ", files read: " + std::to_string(report["files"].size()));
}

// The files are read as the bundled reader reads them, line by line.
void RequireLines() {
  if (devhost::kGivesLines<VoCfgUtil>) return;
  throw std::runtime_error(
      "cannot check: this switch's reader gives no lines, and its files may have a form of its "
      "own");
}

ExitCode Check(const CheckOptions& options) {
  RequireLines();
  RequireHome(options.home);
  const Json report = CheckConfiguration(options.home);
  options.json ? PrintJson(report) : PrintCheck(report, options.verbose);
  const Json& wrong = report[options.strict ? "findings" : "errors"];
  return wrong.empty() || wrong == 0 ? kDone : kFindings;
}

Action DeclareCheck(OptionList* list) {
  const auto options = std::make_shared<CheckOptions>();
  AddDataOptions(list, options.get());
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
    "voatm check --strict --home examples/home", DeclareCheck};
