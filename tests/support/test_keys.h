// IPC keys of a test's own.
#ifndef TESTS_SUPPORT_TEST_KEYS_H
#define TESTS_SUPPORT_TEST_KEYS_H

#include <unistd.h>

#include <cstdlib>
#include <fstream>

// Returns the first of sixteen keys that no other process, and no other home of this one, uses. It
// is added to the file that the environment variable VOATM_TEST_KEYS names, if it names one.
inline int NextKeyBase() {
  static int taken = 0;
  const int base = 0x20000000 + ((getpid() & 0xffff) << 12) + 16 * (taken++ & 0xff);
  if (const char* list = getenv("VOATM_TEST_KEYS"))
    std::ofstream(list, std::ios::app) << base << '\n';
  return base;
}

#endif  // TESTS_SUPPORT_TEST_KEYS_H
