// voatm: the operator's command. The one file that knows the library which takes command lines
// apart.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "show/output.h"
#include "verbs/verbs.h"

namespace {

constexpr int kMany = CLI::detail::expected_max_vector_size;

// A verb as the parser sees it.
class ParsedVerb {
 public:
  // `above` is the verb that it stands behind; voatm itself has none.
  ParsedVerb(CLI::App* app, const ParsedVerb* above, const Verb& verb)
      : verb_(verb), above_(above), action_(verb.declare(&options_)), app_(app) {
    app_->group(verb.for_operators ? "Verbs" : "");
    app_->require_subcommand(0, 1);  // behind a verb no word is one, whatever it says
    app_->footer(verb.Manual() + "\n\nExample:\n  " + verb.example);
    for (const OptionRow& row : options_.rows()) parsed_.push_back(AddOption(row));
  }
  ParsedVerb(const ParsedVerb&) = delete;
  ParsedVerb& operator=(const ParsedVerb&) = delete;

  const Verb& verb() const { return verb_; }
  CLI::App* app() const { return app_; }

  // Whether the command line ends with this verb.
  bool IsMeant() const { return app_->parsed() && app_->get_subcommands().empty(); }

  ExitCode Run() const {
    Take(options_);
    return action_();
  }

 private:
  CLI::Option* AddOption(const OptionRow& row) const {
    if (row.IsFlag()) return app_->add_flag(row.name, row.about)->disable_flag_override();
    const auto keep = [](const CLI::results_t&) { return true; };
    CLI::Option* const option = app_->add_option(row.name, keep, row.about);
    option->required(row.required)->type_name(row.type);
    if (row.values == OptionRow::kAnyNumber) return option->expected(1, kMany)->allow_extra_args();
    option->expected(row.values);
    if (row.more == 0) return option;
    option->type_size(row.values, row.values + row.more);
    option->inject_separator();
    return option->expected(1, kMany);
  }

  // Takes what was given behind this verb's name as `options`, which are its own or those of a verb
  // below: what stands before the second word counts as what stands behind it.
  void Take(const OptionList& options) const {
    if (above_ != nullptr) above_->Take(options);
    for (std::size_t i = 0; i < parsed_.size(); ++i) {
      if (parsed_[i]->count() == 0) continue;
      const std::string& name = options_.rows()[i].name;
      const OptionRow* const row = options.Find(name);
      if (row == nullptr) throw UsageError(name + " is of no use here");
      TakeEach(*row, parsed_[i]->results());
    }
  }

  // The parser puts empty texts between the values of one occurrence and of the next.
  static void TakeEach(const OptionRow& row, const std::vector<std::string>& given) {
    std::vector<std::string> values;
    for (const std::string& value : given) {
      if (!value.empty() || row.more == 0) {
        values.push_back(value);
      } else if (!values.empty()) {
        row.take(std::exchange(values, {}));
      }
    }
    if (!values.empty()) row.take(values);
  }

  const Verb& verb_;
  const ParsedVerb* above_;
  OptionList options_;
  Action action_;
  CLI::App* app_;
  std::vector<CLI::Option*> parsed_;  // of each row of the options
};

using ParsedVerbs = std::vector<std::unique_ptr<ParsedVerb>>;

ParsedVerbs AddVerbs(CLI::App* voatm) {
  ParsedVerbs verbs;
  for (const Verb* verb : kVerbs) {
    const auto above = std::find_if(verbs.begin(), verbs.end(), [&](const auto& other) {
      return verb->Is(other->verb(), verb->Word());
    });
    const ParsedVerb* const parent = above == verbs.end() ? nullptr : above->get();
    CLI::App* const app =
        parent == nullptr ? voatm : parent->app()->add_subcommand(verb->Word(), verb->summary);
    verbs.push_back(std::make_unique<ParsedVerb>(app, parent, *verb));
  }
  return verbs;
}

// The verb whose usage was wrong knows more than voatm itself.
ExitCode RefuseUsage(const CLI::App* app, const std::string& cause) {
  std::string command = app->get_name();
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    command += " " + app->get_name();
  }
  Say(cause + "; see " + command + " --help");
  return kCannotRun;
}

ExitCode Run(CLI::App* voatm, const ParsedVerbs& verbs, int argc, char** argv) {
  try {
    voatm->parse(argc, argv);
    for (const auto& verb : verbs) {
      if (verb->IsMeant()) return verb->Run();
    }
  } catch (const CLI::CallForHelp&) {
    PrintAsIs(voatm->help());
  } catch (const CLI::ParseError& error) {
    return RefuseUsage(voatm, error.what());
  } catch (const UsageError& error) {
    return RefuseUsage(voatm, error.what());
  }
  return kDone;
}

int RunAndFlush(int argc, char** argv) {
  CLI::App voatm(kVoatm.summary, "voatm");
  voatm.get_formatter()->label("SUBCOMMAND", "VERB");
  const ParsedVerbs verbs = AddVerbs(&voatm);
  const ExitCode exit_code = Run(&voatm, verbs, argc, argv);
  FlushOutput();
  return exit_code;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return RunAndFlush(argc, argv);
  } catch (const std::exception& error) {
    Say(error.what());
    return kCannotRun;
  }
}
