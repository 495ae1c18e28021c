// voatm completion: scripts with which shells ask voatm complete what may stand at the cursor.
#include <memory>
#include <string>
#include <vector>

#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct Shell {
  const char* name;
  const char* script;
};

// Where voatm knows no word, a file may stand.
constexpr Shell kShells[] = {
    {"bash", R"sh(_voatm() {
  local words
  mapfile -t words < <(voatm complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
  COMPREPLY=("${words[@]%%$'\t'*}")
}
complete -o default -F _voatm voatm
)sh"},
    {"zsh", R"sh(#compdef voatm
_voatm() {
  local -a found
  found=(${(f)"$(voatm complete -- "${(@)words[2,CURRENT]}" 2>/dev/null)"})
  found=(${found/$'\t'/:})
  if (( $#found )); then _describe voatm found; else _files; fi
}
if [[ $funcstack[1] == _voatm ]]; then _voatm "$@"; else compdef _voatm voatm; fi
)sh"},
    {"fish", R"sh(function __voatm_complete
  set -l words (commandline -opc)
  set -l word (commandline -ct)
  set -l found (voatm complete -- $words[2..-1] "$word" 2>/dev/null)
  or set found (__fish_complete_path "$word")
  printf '%s\n' $found
end
complete -c voatm -f -a '(__voatm_complete)'
)sh"},
};

const Verb* FindVerb(const Verb& above, const std::string& word) {
  for (const Verb* verb : kVerbs) {
    if (verb->Is(above, word)) return verb;
  }
  return nullptr;
}

void AddChoices(const OptionRow& row, NamedTexts* words) {
  for (const std::string& choice : row.Choices()) words->emplace_back(choice, row.about);
}

// What may stand behind a verb: verbs, options and the choices of its arguments.
NamedTexts WordsBehind(const Verb& verb, const OptionList& options) {
  NamedTexts words;
  for (const Verb* below : kVerbs) {
    if (below->for_operators && below->Is(verb, below->Word())) {
      words.emplace_back(below->Word(), below->summary);
    }
  }
  for (const OptionRow& row : options.rows()) {
    if (!row.IsArgument()) words.emplace_back(row.name, row.about);
    if (row.IsArgument()) AddChoices(row, &words);
  }
  words.emplace_back("--help", "Print help");
  return words;
}

// What may stand in place of the last word, which is begun.
NamedTexts Candidates(const std::vector<std::string>& words) {
  const Verb* verb = &kVoatm;
  OptionList options;
  verb->declare(&options);
  const OptionRow* waiting = nullptr;  // the option whose value comes next
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const Verb* const below = waiting == nullptr ? FindVerb(*verb, words[i]) : nullptr;
    const OptionRow* const option = waiting == nullptr ? options.Find(words[i]) : nullptr;
    waiting = option != nullptr && !option->IsFlag() ? option : nullptr;
    if (below == nullptr) continue;
    verb = below;
    options = {};
    verb->declare(&options);
  }
  if (waiting == nullptr) return WordsBehind(*verb, options);
  NamedTexts values;
  AddChoices(*waiting, &values);
  return values;
}

ExitCode Complete(const std::vector<std::string>& words) {
  ExitCode exit_code = kFindings;
  const std::string begun = words.empty() ? "" : words.back();
  for (const auto& [word, about] : Candidates(words)) {
    if (word.rfind(begun, 0) != 0) continue;
    PrintAsIs(std::string(word).append("\t").append(about).append("\n"));
    exit_code = kDone;
  }
  return exit_code;
}

Action DeclareCompletion(OptionList* list) {
  const auto name = std::make_shared<std::string>();
  std::vector<std::string> names;
  for (const Shell& shell : kShells) names.emplace_back(shell.name);
  list->Choice("SHELL", names, name.get(), "The shell that is to complete").Required();
  return [name] {
    for (const Shell& shell : kShells) {
      if (*name == shell.name) PrintAsIs(shell.script);
    }
    return kDone;
  };
}

Action DeclareComplete(OptionList* list) {
  const auto words = std::make_shared<std::vector<std::string>>();
  list->Texts("WORD", "", OptionRow::kAnyNumber, words.get(), "The words up to the cursor");
  return [words] { return Complete(*words); };
}

}  // namespace

const Verb kCompletion = {"completion", "Print what a shell needs to complete the command line",
                          "For bash, zsh or fish. Have the shell read it when it starts.",
                          "source <(voatm completion bash)", DeclareCompletion};

const Verb kComplete = {"complete",
                        "Print what may stand in place of the last word",
                        "A word a line, and behind a tab what it is.",
                        "voatm complete -- locks rel",
                        DeclareComplete,
                        nullptr,
                        false};
