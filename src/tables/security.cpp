// The security table: one keyed read.
#include "common/field_key.h"
#include "common/slot_scan.h"
#include "voatmutil.h"

using namespace voatm;

namespace {

constexpr LockTexts kSecuritySemop = SameText("Error in Semop for VoSecurity");

template <typename Lock>
int ReadSecurity(VoATMUtil& util, const Lock& lock, const char* id, VoSecurity* record) {
  const Slots<VoSecurity> slots = TableSlots(util.SecurityPtr, util.MaxSecurity);
  const FieldKey key(id, sizeof(VoSecurity::SecurityId));
  Found<VoSecurity, Lock> found;
  const int read = FindSlot(slots, 0, lock, [&](const VoSecurity& security, int slot) {
    if (!key.Is(security.SecurityId)) return false;
    found.Set(security);
    util.LastAtmIndex = slot;  // Intended: shared with the ATM reads.
    return true;
  });
  if (read >= 0) *record = found.value();
  return FoundOrNot(read);
}

}  // namespace

int VoATMUtil::readVoSecurityTable(const char* securityId, VoSecurity* record) {
  return ReadSecurity(*this, NoLock(), securityId, record);
}

int VoATMUtil::ReadVoSecurityTable(const char* securityId, VoSecurity* record) {
  if (!LockFlag) return readVoSecurityTable(securityId, record);
  const SlotLock lock(dptr, SecuritySemid, kSecuritySemop);
  return ReadSecurity(*this, lock, securityId, record);
}
