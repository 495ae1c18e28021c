// What the library traced, for people.
#ifndef TOOLS_VOATM_ASK_SAID_H
#define TOOLS_VOATM_ASK_SAID_H

#include <string>
#include <vector>

#include "ask/observation.h"
#include "ask/question.h"

// The traces among the events: "7 text", '-' being a line without a level.
std::vector<std::string> Said(const std::vector<Event>& events);

// What the traces name: "LTS Trace No[4711]" is a fact; a line that names nothing is one without a
// name.
Facts SaidFacts(const std::vector<Event>& events);

#endif  // TOOLS_VOATM_ASK_SAID_H
