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
