// The FIT table: card ranges, selected by three keys.
#include <cerrno>

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
      : keys_{{key1, sizeof(AtmFit::MatchKey1)},
              {key2, sizeof(AtmFit::MatchKey2)},
              {key3, sizeof(AtmFit::MatchKey3)}} {}

  bool Has(const AtmFit& fit) const {
    return keys_[0].Is(fit.MatchKey1) && (IsOpen(fit) || MissedKey(fit) == kNone);
  }

  // The first selected record from this one on, or end. Records that lie together often miss the
  // same key: while they do, only that one is looked at.
  AtmFit* Next(AtmFit* fit, AtmFit* end) const {
    for (; fit < end; ++fit) {
      if (!keys_[0].Is(fit->MatchKey1)) continue;
      if (__builtin_expect(IsOpen(*fit), true)) break;
      const int missed = MissedKey(*fit);
      if (missed == kNone) break;
      fit = NextWith(missed, fit + 1, end) - 1;
    }
    return fit;
  }

 private:
  static constexpr int kNone = 0;

  static bool IsOpen(const AtmFit& fit) {
    return FieldIsAny(fit.MatchKey2) && FieldIsAny(fit.MatchKey3);
  }

  // The key behind the first by which a record that is not open is not selected, or kNone. Out of
  // line, as the next, so that the loop above has its words in registers.
  [[gnu::noinline]] int MissedKey(const AtmFit& fit) const {
    if (FieldIsAny(fit.MatchKey2) || !keys_[1].Is(fit.MatchKey2)) return 1;
    return FieldIsAny(fit.MatchKey3) || keys_[2].Is(fit.MatchKey3) ? kNone : 2;
  }

  // The first record from this one on whose field may hold the key or any, or end.
  [[gnu::noinline]] AtmFit* NextWith(int key, AtmFit* fit, AtmFit* end) const {
    const FieldKey wanted = keys_[key];
    const std::size_t column = key == 1 ? offsetof(AtmFit, MatchKey2) : offsetof(AtmFit, MatchKey3);
    for (; fit < end; ++fit) {
      const char* field = reinterpret_cast<const char*>(fit) + column;
      // Two looks at a record ask for more than the processor fetches on its own.
      __builtin_prefetch(field + 16 * sizeof(AtmFit));
      if (wanted.MayBe(field) || *field == kAny[0]) break;
    }
    return fit;
  }

  FieldKey keys_[3];
};

template <typename Visit>
int FindSelected(Slots<AtmFit> fits, const SlotLock& lock, const Selection& selection,
                 Visit visit) {
  return FindSlot(fits, 0, lock,
                  [&](const AtmFit& fit, int) { return selection.Has(fit) && visit(fit); });
}

template <typename Visit>
int FindSelected(Slots<AtmFit> fits, const NoLock&, const Selection& selection, Visit visit) {
  return FindSlotAmong(
      fits, [&](AtmFit* fit, AtmFit* end) { return selection.Next(fit, end); },
      [&](const AtmFit& fit, int) { return visit(fit); });
}

// Intended: the sense is inverted. It answers whether the id is still free.
template <typename Lock>
int VerifyFit(const VoATMUtil& util, const Lock& lock, const char* id) {
  const FieldKey key(id, sizeof(AtmFit::FitId));
  const int slot =
      FindSlot(FitSlots(util), 0, lock, [&](const AtmFit& fit, int) { return key.Is(fit.FitId); });
  if (slot == kNoSlot) return 1;
  if (slot >= 0) errno = EEXIST;
  return -1;
}

template <typename Lock>
int CountFits(const VoATMUtil& util, const Lock& lock, const Selection& selection) {
  int count = 0;
  const int end = FindSelected(FitSlots(util), lock, selection, [&](const AtmFit&) {
    ++count;
    return false;
  });
  return end == kLockFailed ? -1 : count;
}

template <typename Lock>
int ReadFit(const VoATMUtil& util, const Lock& lock, const Selection& selection, AtmFit* record,
            int ordinal) {
  Found<AtmFit, Lock> found;
  int matches = 0;
  const int slot = FindSelected(FitSlots(util), lock, selection, [&](const AtmFit& fit) {
    if (++matches != ordinal) return false;
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
