// voatm completion and voatm man: the command line for shells and for man, from the verbs.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "show/commands.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

// What may stand at a place of the command line, and what it is.
using Word = std::pair<std::string, std::string>;

std::vector<Word> WordsOf(const Command& command, const std::vector<Command>& all) {
  std::vector<Word> words;
  for (const Command& other : all) {
    if (other.IsBelow(command)) words.emplace_back(other.Name(), other.summary);
  }
  for (const OptionRow& option : command.options.rows()) {
    if (!option.IsArgument()) {
      words.emplace_back(option.name, option.about);
      continue;
    }
    for (const std::string& choice : option.Choices()) words.emplace_back(choice, option.about);
  }
  return words;
}

// The patterns of a case that tells which verb the words before the cursor make.
std::string PathPatterns(const std::vector<Command>& all) {
  std::string patterns;
  for (const Command& command : all) {
    if (command.path.empty()) continue;
    patterns += (patterns.empty() ? "'" : "|'") + command.path + "'";
  }
  return patterns;
}

// In single quotes, for all three shells.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char character : text) {
    quoted += character == '\'' ? "'\\''" : std::string(1, character);
  }
  return quoted + "'";
}

std::string BashScript(const std::vector<Command>& all) {
  std::string script =
      "_voatm() {\n"
      "  local verb='' word words current=${COMP_WORDS[COMP_CWORD]}\n"
      "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
      "    case \"${verb:+$verb }$word\" in\n      " +
      PathPatterns(all) +
      ") verb=\"${verb:+$verb }$word\" ;;\n"
      "    esac\n"
      "  done\n"
      "  case ${COMP_WORDS[COMP_CWORD-1]} in\n"
      "    --home) mapfile -t COMPREPLY < <(compgen -d -- \"$current\"); return ;;\n"
      "  esac\n"
      "  case $verb in\n";
  for (const Command& command : all) {
    script += "    '" + command.path + "') words='";
    for (const Word& word : WordsOf(command, all)) script += word.first + " ";
    script += "' ;;\n";
  }
  return script +
         "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "}\n"
         "complete -o default -F _voatm voatm\n";
}

std::string ZshScript(const std::vector<Command>& all) {
  std::string script =
      "#compdef voatm\n"
      "_voatm() {\n"
      "  local verb='' word\n"
      "  local -a choices\n"
      "  for word in \"${(@)words[2,CURRENT-1]}\"; do\n"
      "    case \"${verb:+$verb }$word\" in\n      (" +
      PathPatterns(all) +
      ") verb=\"${verb:+$verb }$word\" ;;\n"
      "    esac\n"
      "  done\n"
      "  if [[ ${words[CURRENT-1]} == --home ]]; then _files -/; return; fi\n"
      "  case \"$verb\" in\n";
  for (const Command& command : all) {
    script += "    ('" + command.path + "') choices=(";
    for (const Word& word : WordsOf(command, all)) {
      script += Quoted(word.first + ":" + word.second) + " ";
    }
    script += ") ;;\n";
  }
  return script +
         "  esac\n"
         "  _describe -o voatm choices || _files\n"
         "}\n"
         "if [[ $funcstack[1] == _voatm ]]; then _voatm \"$@\"; else compdef _voatm voatm; fi\n";
}

// The condition that the words before the cursor make a command.
std::string FishCondition(const Command& command, const std::vector<Command>& all) {
  std::string condition;
  std::istringstream path(command.path);
  for (std::string word; path >> word;) {
    condition += (condition.empty() ? "" : "; and ");
    condition += "__fish_seen_subcommand_from " + word;
  }
  std::string below;
  for (const Command& other : all) {
    if (other.IsBelow(command)) below += " " + other.Name();
  }
  if (below.empty()) return condition;
  return (condition.empty() ? "" : condition + "; and ") + "not __fish_seen_subcommand_from" +
         below;
}

std::string FishScript(const std::vector<Command>& all) {
  std::string script;
  for (const Command& command : all) {
    const std::string condition = FishCondition(command, all);
    for (const auto& [word, description] : WordsOf(command, all)) {
      const std::size_t dashes = word.find_first_not_of('-');
      constexpr const char* kKinds[] = {" -f -a ", " -s ", " -l "};
      script += "complete -c voatm -n '" + condition + "'" + kKinds[dashes] + word.substr(dashes) +
                " -d " + Quoted(description) + "\n";
    }
  }
  return script;
}

std::vector<Command> AllCommands() {
  return CommandsOf(kSummary, {std::begin(kVerbs), std::end(kVerbs)});
}

ExitCode Complete(const std::string& shell) {
  const std::vector<Command> all = AllCommands();
  PrintAsIs(shell == "bash" ? BashScript(all) : shell == "zsh" ? ZshScript(all) : FishScript(all));
  return kDone;
}

ExitCode WriteManual(const std::string& directory) {
  const std::vector<Command> all = AllCommands();
  for (const Command& command : all) {
    const std::string path = directory + "/" + command.Page() + ".1";
    std::ofstream stream(path);
    stream << ManualPage(command, all);
    if (!stream.flush()) throw std::runtime_error("cannot write " + path);
  }
  return kDone;
}

Action DeclareCompletion(OptionList* list) {
  const auto shell = std::make_shared<std::string>();
  list->Choice("SHELL", {"bash", "zsh", "fish"}, shell.get(), "The shell that is to complete")
      .Required();
  return [shell] { return Complete(*shell); };
}

Action DeclareManual(OptionList* list) {
  const auto directory = std::make_shared<std::string>();
  list->Text("DIR", "", directory.get(), "Where the pages go").Required();
  return [directory] { return WriteManual(*directory); };
}

}  // namespace

const Verb kCompletion = {
    "completion", "Print what a shell needs to complete the command line",
    "Names every verb and option, for bash, zsh or fish. Have the shell read it when it starts.",
    "source <(voatm completion bash)", DeclareCompletion};

const Verb kManual = {"man",
                      "Write the manual pages",
                      "Writes voatm.1 and a page a verb into a directory.",
                      "voatm man build/man",
                      DeclareManual,
                      nullptr,
                      false};
