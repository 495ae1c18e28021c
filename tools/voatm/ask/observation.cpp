#include "ask/observation.h"

#include "vodebugutil.h"

namespace {

Observation* current = nullptr;

}  // namespace

Observation::Observation() { current = this; }

Observation::~Observation() { current = nullptr; }

Observation* Observation::Current() { return current; }

VoDebugUtil* Observation::Trace() {
  static VoDebugUtil trace;
  return &trace;
}

Json TracesOf(const std::vector<Event>& events) {
  Json lines = Json::array();
  for (const Event& event : events) {
    if (event.kind != Event::Kind::kTrace) continue;
    const std::string level = event.number == Event::kNoLevel ? "-" : std::to_string(event.number);
    lines.push_back(level + " " + event.text);
  }
  return lines;
}
