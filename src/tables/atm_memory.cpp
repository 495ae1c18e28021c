// The ATM memory table: one record an ATM.
#include <cstdio>

#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "voatmutil.h"

using namespace voatm;

namespace {

constexpr LockTexts kAtmMemorySemop = SameText("Error in Semop for AtmMemory");

Slots<AtmMemoryTable> AtmSlots(const VoATMUtil& util) {
  return TableSlots(util.AtmMemoryPtr, util.MaxAtm);
}

SlotLock AtmLock(const VoATMUtil& util) {
  return {util.dptr, util.AtmMemorySemid, kAtmMemorySemop};
}

// The ATMs that share a grouping key.
class Group {
 public:
  explicit Group(const char* grouping_key)
      : key_(grouping_key, sizeof(AtmDetailBlock::GroupingKey)),
        free_slot_(kNotDefined, sizeof(AtmMemoryTable::AtmId)) {}

  bool Has(const AtmMemoryTable& atm) const {
    return key_.Is(atm.AtmDetail.GroupingKey) && !free_slot_.Is(atm.AtmId);
  }

 private:
  FieldKey key_;
  FieldKey free_slot_;
};

template <typename Lock>
int ReadAtm(VoATMUtil& util, const Lock& lock, const char* id, AtmMemoryTable* record) {
  const FieldKey key(id, sizeof(AtmMemoryTable::AtmId));
  Found<AtmMemoryTable, Lock> found;
  const int read = FindSlot(AtmSlots(util), 0, lock, [&](const AtmMemoryTable& atm, int slot) {
    if (!key.Is(atm.AtmId)) return false;
    found.Set(atm);
    util.LastAtmIndex = slot;
    return true;
  });
  if (read >= 0) *record = found.value();
  return FoundOrNot(read);
}

template <typename Lock>
int WriteAtm(const VoATMUtil& util, const Lock& lock, const char* id,
             const AtmMemoryTable* record) {
  const FieldKey key(id, sizeof(AtmMemoryTable::AtmId));
  const auto copy_in = [&](AtmMemoryTable& atm, int) {
    if (!key.Is(atm.AtmId)) return false;
    atm = *record;
    return true;
  };
  const Slots<AtmMemoryTable> atms = AtmSlots(util);
  const int last = util.LastAtmIndex;
  int written = kNoSlot;
  // A security read can leave an index beyond this table.
  if (last >= 0 && last < atms.count) {
    const Slots<AtmMemoryTable> up_to_last = {atms.first, last + 1};
    written = FindSlot(up_to_last, last, lock, copy_in);
  }
  if (written == kNoSlot) written = FindSlot(atms, 0, lock, copy_in);
  return FoundOrNot(written);
}

template <typename Lock>
int VerifyAtm(const VoATMUtil& util, const Lock& lock, const char* id) {
  const FieldKey key(id, sizeof(AtmMemoryTable::AtmId));
  return FoundOrNot(FindSlot(AtmSlots(util), 0, lock,
                             [&](const AtmMemoryTable& atm, int) { return key.Is(atm.AtmId); }));
}

template <typename Lock>
int CountAtms(const VoATMUtil& util, const Lock& lock, const char* grouping_key) {
  const Group group(grouping_key);
  return CountSlots(AtmSlots(util), lock,
                    [&](const AtmMemoryTable& atm) { return group.Has(atm); });
}

template <typename Lock>
int AtmIdByOrdinal(const VoATMUtil& util, const Lock& lock, const char* grouping_key, char* id,
                   int ordinal) {
  const Group group(grouping_key);
  Found<decltype(AtmMemoryTable::AtmId), Lock> found;
  int matches = 0;
  const int slot = FindSlot(AtmSlots(util), 0, lock, [&](const AtmMemoryTable& atm, int) {
    if (!group.Has(atm) || ++matches != ordinal) return false;
    found.Set(atm.AtmId);
    return true;
  });
  if (slot >= 0) CopyOut(id, found.value());
  // Intended: the result goes to standard output, but for a semaphore failure.
  if (slot != kLockFailed) printf("retval %d", FoundOrNot(slot));
  return FoundOrNot(slot);
}

}  // namespace

int VoATMUtil::readAtmMemory(const char* atmId, AtmMemoryTable* record) {
  return ReadAtm(*this, NoLock(), atmId, record);
}

int VoATMUtil::ReadAtmMemory(const char* atmId, AtmMemoryTable* record) {
  if (!LockFlag) return readAtmMemory(atmId, record);
  return ReadAtm(*this, AtmLock(*this), atmId, record);
}

int VoATMUtil::writeAtmMemory(const char* atmId, AtmMemoryTable* record) {
  return WriteAtm(*this, NoLock(), atmId, record);
}

int VoATMUtil::WriteAtmMemory(const char* atmId, AtmMemoryTable* record) {
  if (!LockFlag) return writeAtmMemory(atmId, record);
  return WriteAtm(*this, AtmLock(*this), atmId, record);
}

int VoATMUtil::verifyAtmMemory(const char* atmId) { return VerifyAtm(*this, NoLock(), atmId); }

int VoATMUtil::VerifyAtmMemory(const char* atmId) {
  if (!LockFlag) return verifyAtmMemory(atmId);
  return VerifyAtm(*this, AtmLock(*this), atmId);
}

int VoATMUtil::getAtmCount(const char* groupingKey) {
  return CountAtms(*this, NoLock(), groupingKey);
}

int VoATMUtil::GetAtmCount(const char* groupingKey) {
  if (!LockFlag) return getAtmCount(groupingKey);
  return CountAtms(*this, AtmLock(*this), groupingKey);
}

int VoATMUtil::getAtmId(const char* groupingKey, char* atmId, int ordinal) {
  return AtmIdByOrdinal(*this, NoLock(), groupingKey, atmId, ordinal);
}

int VoATMUtil::GetAtmId(const char* groupingKey, char* atmId, int ordinal) {
  if (!LockFlag) return getAtmId(groupingKey, atmId, ordinal);
  return AtmIdByOrdinal(*this, AtmLock(*this), groupingKey, atmId, ordinal);
}
