// VoDateTimeUtil: the switch's date and time.
#ifndef VODATETIMEUTIL_H
#define VODATETIMEUTIL_H

// Answers the local date and time as numbers whose decimal digits read as the date and the time.
// Each call asks the clock anew. One object may serve several threads.
class [[gnu::visibility("default")]] VoDateTimeUtil {
 public:
  VoDateTimeUtil() = default;
  ~VoDateTimeUtil() = default;

  // Returns today's local date as the number YYMMDD: 261121 is 21 November 2026. Dates of a year
  // that ends in 00 to 09 have fewer than six digits; "%06d" prints all alike.
  int getSysDate();

  // Returns the local time of day as the number HHMMSS: 93005 is 09:30:05.
  int getSysTime();
};

#endif  // VODATETIMEUTIL_H
