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
      : key1_(key1, sizeof(AtmFit::MatchKey1)),
        key2_(key2, sizeof(AtmFit::MatchKey2)),
        key3_(key3, sizeof(AtmFit::MatchKey3)) {}

  bool Has(const AtmFit& fit) const { return MissOf(fit) == kNone; }

  // The first selected record from this one on, or end. Records that lie together often miss the
  // same key: while they do, only that one is looked at.
  AtmFit* Next(AtmFit* fit, AtmFit* end) const {
    while (fit < end) {
      const Miss miss = MissOf(*fit);
      if (__builtin_expect(miss == kNone, true)) break;
      fit = NextWith(miss, fit + 1, end);
    }
    return fit;
  }

 private:
  // The key by which a record is not selected.
  enum Miss { kNone, kKey1, kKey2, kKey3 };

  Miss MissOf(const AtmFit& fit) const {
    if (!key1_.Is(fit.MatchKey1)) return kKey1;
    if (FieldIsAny(fit.MatchKey2)) return FieldIsAny(fit.MatchKey3) ? kNone : kKey3;
    if (!key2_.Is(fit.MatchKey2)) return kKey2;
    return FieldIsAny(fit.MatchKey3) || key3_.Is(fit.MatchKey3) ? kNone : kKey3;
  }

  // The first record from this one on that may not miss this key, or end. Out of line, so that
  // records that are all selected are not slowed by it.
  [[gnu::noinline]] AtmFit* NextWith(Miss miss, AtmFit* fit, AtmFit* end) const {
    switch (miss) {
      case kKey1:
        return NextCandidate(
            fit, end, [key = key1_](const AtmFit& next) { return key.MayBe(next.MatchKey1); });
      case kKey2:
        return NextCandidate(fit, end, [key = key2_](const AtmFit& next) {
          return MayBeOrAny(key, next.MatchKey2);
        });
      default:
        return NextCandidate(fit, end, [key = key3_](const AtmFit& next) {
          return MayBeOrAny(key, next.MatchKey3);
        });
    }
  }

  static bool MayBeOrAny(const FieldKey& key, const char* field) {
    return key.MayBe(field) || *field == kAny[0];
  }

  FieldKey key1_;
  FieldKey key2_;
  FieldKey key3_;
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

int FindId(Slots<AtmFit> fits, const SlotLock& lock, const FieldKey& id) {
  return FindSlot(fits, 0, lock, [&](const AtmFit& fit, int) { return id.Is(fit.FitId); });
}

int FindId(Slots<AtmFit> fits, const NoLock&, const FieldKey& id) {
  return FindSlotAmong(
      fits,
      [id](AtmFit* fit, AtmFit* end) {
        return NextCandidate(fit, end, [id](const AtmFit& next) { return id.MayBe(next.FitId); });
      },
      [&](const AtmFit& fit, int) { return id.Is(fit.FitId); });
}

// Intended: the sense is inverted. It answers whether the id is still free.
template <typename Lock>
int VerifyFit(const VoATMUtil& util, const Lock& lock, const char* id) {
  const FieldKey key(id, sizeof(AtmFit::FitId));
  const int slot = FindId(FitSlots(util), lock, key);
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
