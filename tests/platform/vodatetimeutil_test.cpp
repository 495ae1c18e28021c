#include "vodatetimeutil.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

// A clock 5:45 east of Greenwich, so that the zone is seen to count.
TEST(VoDateTimeUtil, TellsLocalDateAndTime) {
  setenv("TZ", "EAST-5:45", 1);
  tzset();  // another test may have asked for the time before
  const time_t before = time(nullptr);
  VoDateTimeUtil clock;
  char text[32];
  std::snprintf(text, sizeof text, "%06d %06d", clock.getSysDate(), clock.getSysTime());
  tm seen{};
  ASSERT_NE(strptime(text, "%y%m%d %H%M%S", &seen), nullptr) << text;
  const time_t told = timegm(&seen) - 20700;
  EXPECT_GE(told, before);
  EXPECT_LE(told, time(nullptr));
}
