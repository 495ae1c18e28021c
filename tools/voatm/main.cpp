// voatm: the operator's command.
#include <cstdio>
#include <exception>
#include <string>

#include "verb.h"

namespace {

using AddVerb = void (*)(CLI::App* voatm);

constexpr AddVerb kVerbs[] = {
    AddServe,
};

int Run(int argc, char** argv) {
  CLI::App voatm("Serves the shared tables of the ATM drivers.", "voatm");
  voatm.set_version_flag("--version", "voatm " VOATM_VERSION);
  voatm.require_subcommand(1);
  voatm.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("voatm: ") + error.what() + "; see voatm --help\n";
  });
  voatm.footer("Example:\n  voatm serve --home examples/home");
  for (const AddVerb add : kVerbs) add(&voatm);
  try {
    voatm.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return voatm.exit(error) == kDone ? kDone : kCannotRun;
  }
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "voatm: %s\n", error.what());
    return kCannotRun;
  }
}
