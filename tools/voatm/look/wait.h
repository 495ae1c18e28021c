// Waiting for what another process must do.
#ifndef TOOLS_VOATM_LOOK_WAIT_H
#define TOOLS_VOATM_LOOK_WAIT_H

#include <functional>
#include <string>

// Tries again and again until it succeeds; false when it did not within so many seconds. Once it
// has taken a second, says "waiting for WHAT".
bool WaitFor(const std::string& what, int seconds, const std::function<bool()>& succeeds);

#endif  // TOOLS_VOATM_LOOK_WAIT_H
