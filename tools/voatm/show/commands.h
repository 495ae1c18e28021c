// The command line as shells and manual readers see it, from the verbs and what they take.
#ifndef TOOLS_VOATM_SHOW_COMMANDS_H
#define TOOLS_VOATM_SHOW_COMMANDS_H

#include <string>
#include <vector>

#include "verb.h"

// The command or one of its verbs.
struct Command {
  std::string path;  // "locks release"; empty for voatm itself
  std::string summary;
  const Verb* verb;  // none for voatm itself
  OptionList options;

  std::string Page() const;  // "voatm-locks-release"
  std::string Name() const;  // the last word of its path

  // Whether the command stands straight below another one.
  bool IsBelow(const Command& other) const;
};

// voatm, then each of its verbs before those below it, without those that are not for operators.
std::vector<Command> CommandsOf(const std::string& summary, const std::vector<const Verb*>& verbs);

// Returns the manual page of a command, in mdoc.
std::string ManualPage(const Command& command, const std::vector<Command>& all);

#endif  // TOOLS_VOATM_SHOW_COMMANDS_H
