// A switch's own clock. What stands inline needs the C++ runtime.
#ifndef VODATETIMEUTIL_H
#define VODATETIMEUTIL_H

#include <string>

class VoDateTimeUtil {
 public:
  virtual ~VoDateTimeUtil() = default;
  virtual int getSysDate();
  virtual int getSysTime();

 private:
  std::string zone_ = "a text that does not lie within the object";
};

#endif  // VODATETIMEUTIL_H
