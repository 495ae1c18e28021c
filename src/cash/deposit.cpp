// Deposits: the amount of the notes that an ATM accepted.
#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "statetable/layered_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

constexpr std::size_t kIdSize = 2;
constexpr std::size_t kLongestRest = 16;  // but for kFourLongGroups
constexpr std::size_t kFourLongGroups = 20;

// How the groups of a deposit text lie: how many, and how many characters a count has.
struct GroupLayout {
  std::size_t groups;
  std::size_t count_size;
};

// Returns false for a length that has no layout. Intended: 20 is four groups of five.
bool LayoutOf(std::size_t length, GroupLayout& layout) {
  if (length > kLongestRest && length != kFourLongGroups) return false;
  const bool short_counts = length % 4 == 0 && length != kFourLongGroups;
  const std::size_t count_size = short_counts ? 2 : 3;
  layout = {length / (kIdSize + count_size), count_size};
  return true;
}

// One group: a note type's id and how many notes of it.
struct Group {
  char id[kIdSize + 1] = {};
  char count[4] = {};

  Group(const char* text, std::size_t count_size) {
    memcpy(id, text, kIdSize);
    memcpy(count, text + kIdSize, count_size);
  }
};

// Reads what one note of a type is worth. Returns 0 when that is nothing, traced.
int NoteValue(VoDebugUtil* trace, VoCfgUtil& cfg, const Group& group) {
  char key[kKeySize];
  FormatText(key, "BNA_MAPPING#%s", group.id);
  char value[kValueSize];
  if (!ReadValue(cfg, key, 2, value)) {
    cfg.cfg_close();
    trace->trace(kError, "Failed to search[ %s ] ", key);
    return 0;
  }
  if (strcasecmp(value, "NILL") == 0) {
    trace->trace("Id[ %s ] configured as NILL", key);
    cfg.cfg_close();
    return 0;
  }
  if (atoi(value) == 0) {
    trace->trace("Currency Value configured as 0 for Id[ %s ]", key);
    cfg.cfg_close();
    return 0;
  }
  trace->trace("Map[%s][%s][%s]", group.id, group.count, value);
  return atoi(value);
}

}  // namespace

int VoATMUtil::GetDepositAmount(const char* s1, const char* s2, const char* s3,
                                const char* fallback, char* depositBuf, char* amountOut,
                                char* mapOut) {
  VoCfgUtil cfg;
  if (!OpenLayered(dptr, cfg, kFileKinds[kNoteMappings], {s1, s2, s3, fallback})) return -1;
  const char* rest = depositBuf[0] != '\0' ? depositBuf + 1 : depositBuf;
  const std::size_t length = strlen(rest);
  dptr->trace("the length [ %d ] and string[ %s ]", static_cast<int>(length), rest);
  GroupLayout layout;
  if (!LayoutOf(length, layout)) return -1;

  long long total = 0;
  char* end = mapOut;
  ClearOutput(mapOut);
  for (std::size_t i = 0; i < layout.groups; ++i) {
    const Group group(rest + i * (kIdSize + layout.count_size), layout.count_size);
    const int value = NoteValue(dptr, cfg, group);
    if (value == 0) return -1;
    const int count = atoi(group.count);
    total += static_cast<long long>(value) * count;
    end += sprintf(end, "%d^%d", value, count);
    if (i + 1 < layout.groups) end += sprintf(end, "|");
  }
  const int amount = static_cast<int>(total);
  dptr->trace("Amount[ %d ] Buffer[ %s ]", amount, mapOut);
  sprintf(amountOut, "%d.00", amount);
  cfg.cfg_close();
  return 1;
}
