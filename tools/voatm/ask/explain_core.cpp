#include "ask/explain_core.h"

#include <utility>

#include "vodebugutil.h"

namespace {

constexpr int kAllLevels = 7;

std::string Shown(bool found, const Facts& facts) {
  if (!found && facts.empty()) return "not found";
  std::string text;
  for (const Fact& fact : facts) text += " " + fact.name + "[" + fact.value + "]";
  return (found ? "found" : "not found") + text;
}

}  // namespace

void Conclude(Explanation* explanation, bool found, const Facts& answer, bool expected_found,
              const Facts& expected) {
  explanation->found = found;
  explanation->answer = answer;
  if (found == expected_found && answer == expected) return;
  explanation->disagreement = "the library answers: " + Shown(found, answer) +
                              "; the tries lead to: " + Shown(expected_found, expected);
}

Explanation Explain(VoATMUtil& util, const ExplainKind& kind, const Inputs& inputs) {
  Explanation explanation;
  VoDebugUtil trace;
  trace.set_level(kAllLevels);
  trace.to_callback(
      [](void* lines, int level, const char* text) {
        const std::string shown = level == VoDebugUtil::kNoLevel ? "-" : std::to_string(level);
        static_cast<std::vector<std::string>*>(lines)->push_back(shown + " " + text);
      },
      &explanation.trace);
  VoDebugUtil* const usual = std::exchange(util.dptr, &trace);
  kind.explain(util, inputs, &explanation);
  util.dptr = usual;
  return explanation;
}
