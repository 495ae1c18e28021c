// Dispense logic: the configured note counts of an amount.
#include <cstdlib>
#include <cstring>

#include "cash/cassettes.h"
#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "statetable/layered_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

constexpr std::size_t kLogicNameSize = 16;

// Intended: the name is cut at its first blank.
void FormatDispenseKey(char (&key)[kKeySize], const char* logic_name, int amount_index) {
  char name[kLogicNameSize];
  SetText(name, logic_name);
  name[strcspn(name, " ")] = '\0';
  FormatText(key, "DISPENCE_LOGIC#%s_%d", name, amount_index);
}

}  // namespace

int VoATMUtil::GetDispLogic(const char* logicName, int amountIndex, const char* s1, const char* s2,
                            const char* s3, char* dispLogic, const char* atmModel,
                            const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenLayered(dptr, cfg, kFileKinds[kDispenseLogics], {s1, s2, s3, fallback})) return -1;
  char key[kKeySize];
  FormatDispenseKey(key, logicName, amountIndex);
  ClearOutput(dispLogic);

  const int positions = CassettesOf(atmModel);
  if (positions == kUnknownModel) {
    // Intended: here and for an invalid value the file is left to the reader's destructor.
    dptr->trace(kError, "Unsupported ATM Model[ %c ]", atmModel[0]);
    return -1;
  }
  for (int position = 1; position <= positions; ++position) {
    char value[kKeySize];
    if (!ReadValue(cfg, key, position + 1, value)) {
      dptr->trace(kError, "failed to Search [ %s ]", key);
      cfg.cfg_close();
      return -1;
    }
    if (CheckInteger(value) != 1) {
      dptr->trace(kError, "Denom Config Error");
      return -1;
    }
    // A count of 100 and more contributes its first two digits.
    char digits[kCountSize];
    SetDigits(digits, atoi(value), 2);
    AppendText(dispLogic, digits, 2);
  }
  dptr->trace(kDetail, "Dispense logic[ %s ]", dispLogic);
  cfg.cfg_close();
  return 1;
}

int VoATMUtil::GetDenomination(DenomInfo* denoms, char id, int* value) {
  // Intended: the last of several entries of one letter counts.
  for (int i = 0; i < kMaxCassettes; ++i) {
    if (denoms[i].Id == id) *value = denoms[i].Value;
  }
  return 1;
}

void VoATMUtil::PackDispLogicBuf(char* notes, char id, char* dispBuf) {
  const int position = UpperCase(id) - 'A';
  if (position < 0 || position >= kMaxCassettes) return;
  memcpy(dispBuf + 2 * position, notes, 2);
}
