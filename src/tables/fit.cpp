// The FIT table: card ranges, selected by three keys.
#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "voatmutil.h"

using namespace voatm;

namespace {

// Intended: each operation has its own wordings, and verifying names the ATM memory table once.
constexpr LockTexts kVerifySemop = {"Error in Semop for AtmFitMemory",
                                    "Error in Semop for AtmMemory", "Error in Semop for AtmFit"};
constexpr LockTexts kSelectSemop = {"Error in Semop for AtmFitMemory", "Error in Semop for AtmFit",
                                    "Error in Semop for AtmFit"};

Slots<AtmFit> FitSlots(const VoATMUtil& util) { return TableSlots(util.AtmFitPtr, util.MaxFit); }

SlotLock FitLock(const VoATMUtil& util, const LockTexts& texts) {
  return {util.dptr, util.AtmFitSemid, texts};
}

// Selects records by key; a record may leave the third key open, or the second and third. One that
// leaves only the second open is never selected.
class Selection {
 public:
  Selection(const char* key1, const char* key2, const char* key3)
      : key1_(key1, sizeof(AtmFit::MatchKey1)),
        key2_(key2, sizeof(AtmFit::MatchKey2)),
        key3_(key3, sizeof(AtmFit::MatchKey3)) {}

  bool Has(const AtmFit& fit) const {
    if (!key1_.Is(fit.MatchKey1)) return false;
    const bool any3 = FieldIs(fit.MatchKey3, kAny);
    if (FieldIs(fit.MatchKey2, kAny)) return any3;
    return key2_.Is(fit.MatchKey2) && (any3 || key3_.Is(fit.MatchKey3));
  }

 private:
  FieldKey key1_;
  FieldKey key2_;
  FieldKey key3_;
};

// Intended: the sense is inverted. It answers whether the id is still free.
template <typename Lock>
int VerifyFit(const VoATMUtil& util, const Lock& lock, const char* id) {
  const FieldKey key(id, sizeof(AtmFit::FitId));
  const int slot =
      FindSlot(FitSlots(util), 0, lock, [&](const AtmFit& fit, int) { return key.Is(fit.FitId); });
  return slot == kNoSlot ? 1 : -1;
}

template <typename Lock>
int CountFits(const VoATMUtil& util, const Lock& lock, const Selection& selection) {
  return CountSlots(FitSlots(util), lock, [&](const AtmFit& fit) { return selection.Has(fit); });
}

template <typename Lock>
int ReadFit(const VoATMUtil& util, const Lock& lock, const Selection& selection, AtmFit* record,
            int ordinal) {
  Found<AtmFit, Lock> found;
  int matches = 0;
  const int slot = FindSlot(FitSlots(util), 0, lock, [&](const AtmFit& fit, int) {
    if (!selection.Has(fit) || ++matches != ordinal) return false;
    found.Set(fit);
    return true;
  });
  if (slot >= 0) *record = found.value();
  return FoundOrNot(slot);
}

}  // namespace

int VoATMUtil::verifyAtmFit(const char* fitId) { return VerifyFit(*this, NoLock(), fitId); }

int VoATMUtil::VerifyAtmFit(const char* fitId) {
  if (!LockFlag) return verifyAtmFit(fitId);
  return VerifyFit(*this, FitLock(*this, kVerifySemop), fitId);
}

int VoATMUtil::getFitCount(const char* key1, const char* key2, const char* key3) {
  return CountFits(*this, NoLock(), {key1, key2, key3});
}

int VoATMUtil::GetFitCount(const char* key1, const char* key2, const char* key3) {
  if (!LockFlag) return getFitCount(key1, key2, key3);
  return CountFits(*this, FitLock(*this, kSelectSemop), {key1, key2, key3});
}

int VoATMUtil::readFitMemory(const char* key1, const char* key2, const char* key3, AtmFit* record,
                             int ordinal) {
  return ReadFit(*this, NoLock(), {key1, key2, key3}, record, ordinal);
}

int VoATMUtil::ReadFitMemory(const char* key1, const char* key2, const char* key3, AtmFit* record,
                             int ordinal) {
  if (!LockFlag) return readFitMemory(key1, key2, key3, record, ordinal);
  return ReadFit(*this, FitLock(*this, kSelectSemop), {key1, key2, key3}, record, ordinal);
}
