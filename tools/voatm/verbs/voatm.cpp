// voatm itself: what stands before its verbs.
#include <memory>

#include "show/output.h"
#include "verbs/verbs.h"

namespace {

Action DeclareVoatm(OptionList* list) {
  const auto version = std::make_shared<bool>();
  list->Flag("--version", version.get(), "Print the version");
  return [version] {
    if (!*version) throw UsageError("a verb is required");
    PrintLine("voatm " VOATM_VERSION);
    return kDone;
  };
}

}  // namespace

const Verb kVoatm = {
    "", "Says what the ATM drivers' shared tables and configuration hold, and why",
    "First: status. It hangs: tables, locks. It answers wrongly: explain, show, check.\n"
    "It does not pay: plan. It left a trace: why. What changed: diff. Only serve and locks\n"
    "release write anything. Data goes to standard output, talk to standard error.\n\n"
    "Exit status: 0 yes or fine, 1 no or findings, 2 could not look.",
    "voatm tables --home examples/home", DeclareVoatm};
