// What the verbs of `voatm` have in common. Each verb is a file that adds its subcommand.
#ifndef TOOLS_VOATM_VERB_H
#define TOOLS_VOATM_VERB_H

#include <CLI/CLI.hpp>
#include <stdexcept>
#include <string>

// Data goes to standard output, talk to standard error.
enum ExitCode {
  kDone = 0,
  kCannotRun = 2,  // wrong usage, or what the verb needs is not there
};

// Adds --home to a verb. What it stores: the option's value, else VODIR_HOME's.
inline void AddHomeOption(CLI::App* verb, std::string* home) {
  verb->add_option("--home", *home, "The configuration tree, with cfg/ and tables/")
      ->envname("VODIR_HOME")
      ->type_name("DIR");
}

// Throws when neither gave a home.
inline void RequireHome(const std::string& home) {
  if (home.empty()) throw std::runtime_error("no home: give --home DIR or set VODIR_HOME");
}

// Add a verb: its options, and what it does. A verb that cannot run throws.
void AddServe(CLI::App* voatm);

#endif  // TOOLS_VOATM_VERB_H
