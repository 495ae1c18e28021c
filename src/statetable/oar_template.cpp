// OAR templates: what the function keys beside an interactive screen do.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/text_field.h"
#include "common/trace.h"
#include "statetable/template_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

constexpr char kKeyLetters[] = "ABCDFGHI";  // Intended: there is no key E.
constexpr int kKeys = sizeof kKeyLetters - 1;

static_assert(sizeof(OARDetails::Keys) / sizeof(OARKeyEntry) == kKeys);

struct KeyAction {
  const char* text;
  int type;
};

constexpr KeyAction kKeyActions[] = {
    {"$VAR", 1}, {"$NEXT", 2}, {"$PREVIOUS", 3}, {"$CONTINUE", 4}, {"$CANCEL", 5}};

void SetKeyType(VoDebugUtil* trace, const char* action, OARKeyEntry& entry) {
  for (const KeyAction& known : kKeyActions) {
    if (strcmp(action, known.text) == 0) {
      entry.KeyType = known.type;
      return;
    }
  }
  // Intended: a number is unsupported and keeps the type; any other text is type 0.
  if (atoi(action) != 0) {
    trace->trace(kInformation, "Unsupported Template[ %s ]", action);
  } else {
    entry.KeyType = 0;
  }
}

// The first characters of the eight flags in decimal.
void PrintKeyFlags(const OARDetails& details, char (&flags)[kKeys + 1]) {
  for (int i = 0; i < kKeys; ++i) {
    char digits[12];
    FormatText(digits, "%d", details.Keys[i].KeyFlag);
    flags[i] = digits[0];
  }
  flags[kKeys] = '\0';
}

}  // namespace

int VoATMUtil::LoadOARTemplate(const char* s1, const char* s2, const char* s3,
                               const char* templateName, int templateNo, OARDetails* details,
                               const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenTemplate(dptr, cfg, templateName, templateNo, {s1, s2, s3, fallback})) return -1;
  for (int i = 0; i < kKeys; ++i) {
    OARKeyEntry& entry = details->Keys[i];
    char key[kKeySize];
    FormatText(key, "OAR#VAR#%c", kKeyLetters[i]);
    entry.KeyId = kKeyLetters[i];
    char value[kKeySize];
    if (!SearchTemplate(dptr, kInformation, cfg, key, 2, value)) return -1;
    SetKeyType(dptr, value, entry);
    if (!SearchTemplate(dptr, kInformation, cfg, key, 3, value)) return -1;
    entry.KeyValue = atoi(value);
  }
  cfg.cfg_close();
  return 1;
}

int VoATMUtil::PackKeyDetails(const char* s1, const char* s2, const char* s3,
                              const char* templateName, int templateNo, char* keyDetails,
                              OARDetails* details, const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenTemplate(dptr, cfg, templateName, templateNo, {s1, s2, s3, fallback})) return -1;

  // Intended: the flags go to fixed places, whatever their number of digits.
  char value[kKeySize];
  if (!SearchTemplate(dptr, kError, cfg, "OAR#CONTROL#DISPLAYFLAG", 2, value)) return -1;
  sprintf(keyDetails, "%d", atoi(value));
  if (!SearchTemplate(dptr, kError, cfg, "OAR#CONTROL#NUMERICKEYS", 2, value)) return -1;
  sprintf(keyDetails + 1, "%d", atoi(value));
  if (!SearchTemplate(dptr, kError, cfg, "OAR#CONTROL#CANCEL", 2, value)) return -1;
  const int cancel = atoi(value);
  dptr->trace(kInformation, "Cancel< %d >", cancel);

  char flags[kKeys + 1];
  PrintKeyFlags(*details, flags);
  AppendText(keyDetails + 2, flags, 4);
  sprintf(keyDetails + 6, "%d", cancel);
  AppendText(keyDetails + 6, flags + 4, 4);
  cfg.cfg_close();
  return 1;
}

int VoATMUtil::GetOARTimeOut(const char* s1, const char* s2, const char* s3,
                             const char* templateName, int templateNo, char* timeOut,
                             const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenTemplate(dptr, cfg, templateName, templateNo, {s1, s2, s3, fallback})) return -1;
  constexpr char kKey[] = "OAR#OAR_TIMEOUT";
  if (cfg.cfg_search(kKey, timeOut, 2) < 0) {
    dptr->trace(kInformation, "failed to search[ %s ]", kKey);
    cfg.cfg_close();
    return -1;
  }
  cfg.cfg_close();
  return 1;
}
