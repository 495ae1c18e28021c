// voatm: the operator's command.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "output.h"
#include "verbs.h"

namespace {

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
  added->footer(std::string(verb.description) + "\n\nExample:\n  " + verb.example);
  const Action action = verb.declare(added);
  added->callback([added, action, exit_code] {
    const bool is_parent = !added->get_subcommands().empty();  // a verb below it has run
    if (!is_parent) *exit_code = action();
  });
}

int Run(int argc, char** argv) {
  CLI::App voatm("Shows and serves the shared tables of the ATM drivers.", "voatm");
  voatm.set_version_flag("--version", "voatm " VOATM_VERSION);
  voatm.require_subcommand(1);
  voatm.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("voatm: ") + error.what() + "; see voatm --help\n";
  });
  voatm.footer(
      "Exit status: 0 yes or fine, 1 no or findings, 2 cannot run.\n\n"
      "Example:\n  voatm tables --home examples/home");
  ExitCode exit_code = kDone;
  for (const Verb* verb : kVerbs) AddVerb(&voatm, *verb, &exit_code);
  try {
    voatm.parse(argc, argv);
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
