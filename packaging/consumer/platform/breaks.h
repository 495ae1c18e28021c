// Which promise of the platform is to be broken: the one that PLATFORM_BREAKS names. So one build
// shows that voatm_platform_check finds each of them.
#ifndef BREAKS_H
#define BREAKS_H

#include <cstdlib>
#include <cstring>

inline bool Breaks(const char* promise) {
  const char* chosen = std::getenv("PLATFORM_BREAKS");
  return chosen != nullptr && std::strcmp(chosen, promise) == 0;
}

#endif  // BREAKS_H
