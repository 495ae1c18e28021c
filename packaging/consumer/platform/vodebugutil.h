// A switch's own trace.
#ifndef VODEBUGUTIL_H
#define VODEBUGUTIL_H

class VoDebugUtil {
 public:
  virtual ~VoDebugUtil();
  void trace(int level, const char* format, ...);
  void trace(const char* format, ...);
};

#endif  // VODEBUGUTIL_H
