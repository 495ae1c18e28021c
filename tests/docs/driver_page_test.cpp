// The snippets of docs/driver.md, as tests against the sample home.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "support/served_home.h"
#include "voatmutil.h"
#include "voatmutil_testing.h"

namespace {

bool Holds(const char* text, const char* expected) { return strcmp(text, expected) == 0; }
template <typename Value>
bool Holds(Value value, Value expected) {
  return value == expected;
}

class DriverPage : public testing::Test {
 protected:
  DriverPage() { EXPECT_EQ(util.InitVoATMUtil(traces_.debug(), true), 1) << traces_.text(); }

  void ExpectResult(int result, int expected) {
    last_errno = errno;
    EXPECT_EQ(result, expected);
  }

  const ServedHome home_{SAMPLE_HOME};
  voatmutil_testing::Traces traces_;

  // What the snippets take for given.
  VoATMUtil util;
  const char* const inst = "HARBOUR";
  const char* const group = "BRANCH";
  const char* const id = "ATM00001";
  char statuses[15][11] = {};
  char code[11] = "CARDJAM";
  char message[101] = "";

  int last_errno = 0;
};

#include "snippets/driver.inc"

}  // namespace
