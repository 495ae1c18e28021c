// The command line as shells and manual readers see it, from the verbs and their options.
#ifndef TOOLS_VOATM_COMPLETION_MANUAL_H
#define TOOLS_VOATM_COMPLETION_MANUAL_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// The command or one of its verbs.
struct Command {
  std::string path;  // "locks release"; empty for voatm itself
  CLI::App* app;

  std::string Page() const;  // "voatm-locks-release"
};

// voatm, then each of its verbs before those below it. Hidden ones are left out.
std::vector<Command> CommandsOf(CLI::App* voatm);

// The choices of an argument that has fixed ones: those in braces of its type.
std::vector<std::string> ChoicesOf(const CLI::Option* option);

// Returns the manual page of a command, in mdoc.
std::string ManualPage(const Command& command, const std::vector<Command>& all);

#endif  // TOOLS_VOATM_COMPLETION_MANUAL_H
