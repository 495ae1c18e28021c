// What the library traced, for people.
#ifndef TOOLS_VOATM_ASK_SAID_H
#define TOOLS_VOATM_ASK_SAID_H

#include <vector>

#include "ask/observation.h"
#include "show/output.h"

// The traces among the events, a list of "7 text", '-' being a line without a level.
Json Said(const std::vector<Event>& events);

// What the traces name: "LTS Trace No[4711]" is a fact; a line that names nothing is one without a
// name.
Json SaidFacts(const std::vector<Event>& events);

#endif  // TOOLS_VOATM_ASK_SAID_H
