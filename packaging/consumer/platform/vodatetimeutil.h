// A switch's own clock.
#ifndef VODATETIMEUTIL_H
#define VODATETIMEUTIL_H

class VoDateTimeUtil {
 public:
  virtual ~VoDateTimeUtil();
  virtual int getSysDate();
  virtual int getSysTime();
};

#endif  // VODATETIMEUTIL_H
