// voatm: the operator's command. The one file that knows the library which takes command lines
// apart.
#include <CLI/CLI.hpp>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "show/output.h"
#include "verbs/verbs.h"

namespace {

constexpr const char* kFooter =
    "First: status. It hangs: tables, locks. It answers wrongly: explain, show, check.\n"
    "It does not pay: plan. It left a trace: why. What changed: diff. Only serve and locks\n"
    "release write anything.\n\n"
    "Exit status: 0 yes or fine, 1 no or findings, 2 could not look.\n\n"
    "Example:\n  voatm tables --home examples/home";

// A verb as the parser sees it.
class ParsedVerb {
 public:
  // `above` is the verb whose name is the first word of this one's, or none.
  ParsedVerb(CLI::App* voatm, ParsedVerb* above, const Verb& verb)
      : verb_(verb), above_(above), action_(verb.declare(&options_)) {
    const std::string name = verb.name;
    CLI::App* const parent = above != nullptr ? above->app_ : voatm;
    app_ = parent->add_subcommand(name.substr(name.find(' ') + 1), verb.summary);
    app_->group(verb.for_operators ? "Verbs" : "");
    app_->footer(verb.Manual() + "\n\nExample:\n  " + verb.example);
    values_.resize(options_.rows().size());
    for (std::size_t i = 0; i < values_.size(); ++i) AddOption(options_.rows()[i], &values_[i]);
  }
  ParsedVerb(const ParsedVerb&) = delete;
  ParsedVerb& operator=(const ParsedVerb&) = delete;

  const char* name() const { return verb_.name; }

  // Whether the command line ends with this verb.
  bool IsMeant() const { return app_->parsed() && app_->get_subcommands().empty(); }

  ExitCode Run() const {
    if (above_ != nullptr) above_->HandDownTo(options_);
    Take(options_);
    return action_();
  }

 private:
  struct Value {
    CLI::Option* option = nullptr;
    std::vector<std::string> texts;
    bool set = false;
  };

  void AddOption(const OptionRow& row, Value* value) {
    if (row.IsFlag()) {
      value->option = app_->add_flag(row.name, value->set, row.about);
      return;
    }
    value->option = app_->add_option(row.name, value->texts, row.about)
                        ->required(row.required)
                        ->type_name(row.type);
    if (row.values != OptionRow::kAnyNumber) {
      value->option->expected(row.values)->allow_extra_args(false);
    }
    if (row.more > 0) {
      value->option->type_size(row.values, row.values + row.more);
      value->option->expected(1, CLI::detail::expected_max_vector_size);
      value->option->inject_separator(true);
    }
    if (row.environment != nullptr) value->option->envname(row.environment);
  }

  void Take(const OptionList& options) const {
    for (std::size_t i = 0; i < values_.size(); ++i) {
      if (values_[i].option->count() > 0) TakeEach(options.rows()[i], *values_[i].option);
    }
  }

  // The parser puts empty texts between the values of one occurrence and of the next.
  static void TakeEach(const OptionRow& row, const CLI::Option& option) {
    std::vector<std::string> values;
    for (const std::string& value : option.results()) {
      if (!value.empty() || row.more == 0) {
        values.push_back(value);
      } else if (!values.empty()) {
        row.take(std::exchange(values, {}));
      }
    }
    if (!values.empty()) row.take(values);
  }

  // What stands before the second word of a verb counts as what stands behind it.
  void HandDownTo(const OptionList& below) const {
    for (std::size_t i = 0; i < values_.size(); ++i) {
      if (values_[i].option->count() == 0) continue;
      const OptionRow* const row = below.Find(options_.rows()[i].name);
      if (row == nullptr) throw UsageError(options_.rows()[i].name + " is of no use here");
      TakeEach(*row, *values_[i].option);
    }
  }

  const Verb& verb_;
  ParsedVerb* above_;
  OptionList options_;
  Action action_;
  CLI::App* app_;
  std::vector<Value> values_;
};

using ParsedVerbs = std::vector<std::unique_ptr<ParsedVerb>>;

ParsedVerbs AddVerbs(CLI::App* voatm) {
  ParsedVerbs added;
  for (const Verb* verb : kVerbs) {
    const std::string name = verb->name;
    const std::size_t blank = name.find(' ');
    ParsedVerb* above = nullptr;
    for (const auto& other : added) {
      if (blank != std::string::npos && name.substr(0, blank) == other->name()) above = other.get();
    }
    added.push_back(std::make_unique<ParsedVerb>(voatm, above, *verb));
  }
  return added;
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
    throw UsageError("a verb is required");
  } catch (const CLI::CallForHelp&) {
    PrintAsIs(voatm->help());
  } catch (const CLI::CallForVersion& version) {
    PrintLine(version.what());
  } catch (const CLI::ParseError& error) {
    return RefuseUsage(voatm, error.what());
  } catch (const UsageError& error) {
    return RefuseUsage(voatm, error.what());
  }
  return kDone;
}

int RunAndFlush(int argc, char** argv) {
  CLI::App voatm(kSummary, "voatm");
  voatm.set_version_flag("--version", "voatm " VOATM_VERSION);
  voatm.get_formatter()->label("SUBCOMMAND", "VERB");
  voatm.footer(kFooter);
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
