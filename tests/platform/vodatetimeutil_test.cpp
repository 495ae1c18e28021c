#include "vodatetimeutil.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

// A clock 5:45 east of Greenwich, so that the zone is seen to count. The test's own reading is
// taken on both sides of the object's, since a second may pass between them.
TEST(VoDateTimeUtil, TellsLocalDateAndTime) {
  setenv("TZ", "EAST-5:45", 1);
  tzset();
  const auto now = [] {
    const time_t shifted = time(nullptr) + 20700;
    char text[16] = "";
    tm utc{};
    strftime(text, sizeof text, "%Y%m%d %H%M%S", gmtime_r(&shifted, &utc));
    return std::string(text + 2);
  };
  VoDateTimeUtil clock;
  char seen[32];
  const std::string before = now();
  std::snprintf(seen, sizeof seen, "%06d %06d", clock.getSysDate(), clock.getSysTime());
  const std::string after = now();
  EXPECT_LE(before, seen);
  EXPECT_GE(after, seen);
}
