#include "vodatetimeutil.h"

#include <ctime>

namespace {

tm LocalTime() {
  const time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  return local;
}

}  // namespace

int VoDateTimeUtil::getSysDate() {
  const tm local = LocalTime();
  return local.tm_year % 100 * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
}

int VoDateTimeUtil::getSysTime() {
  const tm local = LocalTime();
  return local.tm_hour * 10000 + local.tm_min * 100 + local.tm_sec;
}
