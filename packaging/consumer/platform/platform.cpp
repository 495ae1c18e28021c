#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "vocfgutil.h"
#include "vodatetimeutil.h"
#include "vodebugutil.h"

VoCfgUtil::VoCfgUtil() : places_(), open_(false) {}
VoCfgUtil::~VoCfgUtil() = default;

int VoCfgUtil::cfg_open(const char* path) {
  open_ = std::strstr(path, "vobusiness.cfg") != nullptr;
  return open_ ? 0 : -1;
}

int VoCfgUtil::cfg_search(const char* key, char* out, int field) {
  if (!open_ || field != 2 || std::strcmp(key, "VOBUSINESS#UTCFLAG") != 0) return -1;
  std::strcpy(out, "Yes");
  return 0;
}

int VoCfgUtil::cfg_group_count(const char*) { return 0; }
void VoCfgUtil::cfg_close() { open_ = false; }

VoDebugUtil::~VoDebugUtil() = default;

void VoDebugUtil::trace(int level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::fprintf(stderr, "the switch's own trace %d: ", level);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}

void VoDebugUtil::trace(const char*, ...) {}

int VoDateTimeUtil::getSysDate() { return 261121; }
int VoDateTimeUtil::getSysTime() { return 93005; }
