// voatm: the operator's command.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "output.h"
#include "verbs.h"

namespace {

constexpr const char* kFooter =
    "It hangs: tables, locks. It answers wrongly: explain, show, check. It does not pay: plan.\n"
    "It left a trace: why. Only serve and locks release write anything.\n\n"
    "Exit status: 0 yes or fine, 1 no or findings, 2 cannot run.\n\n"
    "Example:\n  voatm tables --home examples/home";

// Adds a verb, below another one when its name has two words.
CLI::App* AddApp(CLI::App* voatm, const Verb& verb) {
  const std::string name = verb.name;
  const std::size_t blank = name.find(' ');
  if (blank == std::string::npos) return voatm->add_subcommand(name, verb.summary);
  CLI::App* parent = voatm->get_subcommand(name.substr(0, blank));
  return parent->add_subcommand(name.substr(blank + 1), verb.summary);
}

void AddVerb(CLI::App* voatm, const Verb& verb, ExitCode* exit_code) {
  CLI::App* added = AddApp(voatm, verb);
  added->group("Verbs");
  added->footer(ManualText(verb) + "\n\nExample:\n  " + verb.example);
  const Action action = verb.declare(added);
  added->callback([added, action, exit_code] {
    const bool is_parent = !added->get_subcommands().empty();  // a verb below it has run
    if (!is_parent) *exit_code = action();
  });
}

// The verb whose usage was wrong knows more than voatm itself.
std::string FailureMessage(const CLI::App* app, const CLI::Error& error) {
  std::string command = app->get_name();
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    command += " " + app->get_name();
  }
  return std::string("voatm: ") + error.what() + "; see " + command + " --help\n";
}

int Run(int argc, char** argv) {
  CLI::App voatm("Says what the ATM drivers' shared tables and configuration hold, and why.",
                 "voatm");
  voatm.set_version_flag("--version", "voatm " VOATM_VERSION);
  voatm.get_formatter()->label("SUBCOMMAND", "VERB");
  voatm.failure_message(FailureMessage);
  voatm.footer(kFooter);
  ExitCode exit_code = kDone;
  for (const Verb* verb : kVerbs) AddVerb(&voatm, *verb, &exit_code);
  try {
    voatm.parse(argc, argv);
    if (voatm.get_subcommands().empty()) throw CLI::RequiredError("A verb");
  } catch (const CLI::ParseError& error) {
    return voatm.exit(error) == kDone ? kDone : kCannotRun;
  }
  FlushOutput();
  return exit_code;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    Say(error.what());
    return kCannotRun;
  }
}
