// The scan over a table's slots, with or without their semaphores.
#ifndef SRC_COMMON_SLOT_SCAN_H
#define SRC_COMMON_SLOT_SCAN_H

#include <cerrno>
#include <cstdint>
#include <cstring>

class VoDebugUtil;

namespace voatm {

// What a scan returns in place of a slot.
inline constexpr int kNoSlot = -1;      // no slot matched
inline constexpr int kLockFailed = -2;  // a semaphore call failed and was traced

template <typename Record>
struct Slots {
  Record* first;
  int count;
};

// The slots of a table; none when it is not attached. Start-up stores the address that shmat
// returns for a failure like any other.
template <typename Record>
Slots<Record> TableSlots(Record* first, int count) {
  const bool attached = first != nullptr && reinterpret_cast<std::intptr_t>(first) != -1;
  return {first, attached ? count : 0};
}

// What is traced, with the system's error, when a semaphore call fails.
struct LockTexts {
  const char* taking;
  const char* giving_after_match;
  const char* giving_otherwise;
};

constexpr LockTexts SameText(const char* text) { return {text, text, text}; }

// Lock policies: a scan takes each slot before it looks and gives it back after. Both say false
// when they failed.

class NoLock {
 public:
  bool Take(int) const { return true; }
  bool Give(int, bool) const { return true; }
};

class SlotLock {
 public:
  SlotLock(VoDebugUtil* trace, int semid, const LockTexts& texts)
      : trace_(trace), semid_(semid), texts_(texts) {}

  bool Take(int slot) const { return Move(slot, -kUnits, texts_.taking); }
  bool Give(int slot, bool matched) const {
    return Move(slot, kUnits, matched ? texts_.giving_after_match : texts_.giving_otherwise);
  }

 private:
  static constexpr short kUnits = 2;

  bool Move(int slot, short units, const char* text) const;

  VoDebugUtil* trace_;
  int semid_;
  const LockTexts& texts_;
};

// Visits the slots from start on until visit(record, slot) returns true. Each slot is held while it
// is visited. Returns the slot, kNoSlot, or kLockFailed.
template <typename Record, typename Lock, typename Visit>
int FindSlot(Slots<Record> slots, int start, const Lock& lock, Visit visit) {
  constexpr int kAhead = 24;
  for (int slot = start; slot < slots.count; ++slot) {
    // Records larger than a page step past what the processor fetches on its own.
    if constexpr (sizeof(Record) > 4096) {
      if (slot + kAhead < slots.count) __builtin_prefetch(&slots.first[slot + kAhead]);
    }
    if (!lock.Take(slot)) return kLockFailed;
    const bool matched = visit(slots.first[slot], slot);
    if (!lock.Give(slot, matched)) return kLockFailed;
    if (matched) return slot;
  }
  return kNoSlot;
}

// The same over unlocked slots that need not all be visited: next(record, end) returns the first
// record from this one on that may match, or end.
template <typename Record, typename Next, typename Visit>
int FindSlotAmong(Slots<Record> slots, Next next, Visit visit) {
  Record* const end = slots.first + slots.count;
  for (Record* record = slots.first;; ++record) {
    record = next(record, end);
    if (record >= end) return kNoSlot;
    const int slot = static_cast<int>(record - slots.first);
    if (visit(*record, slot)) return slot;
  }
}

// The first record from this one on that may match, or end. Where hardly any does, four in a round
// spare most of what the loop itself costs.
template <typename Record, typename MayMatch>
Record* NextCandidate(Record* record, Record* end, MayMatch may_match) {
  for (; end - record >= 4; record += 4) {
    if (may_match(record[0]) || may_match(record[1]) || may_match(record[2]) ||
        may_match(record[3])) {
      break;
    }
  }
  while (record < end && !may_match(*record)) ++record;
  return record;
}

// What a visit found, for the caller who gets it once its slot was given back: until then the
// operation may fail, and the caller's buffer is to stay as it was. It is copied here while the
// slot is held; where nothing locks, it is read where it stands.
template <typename Value, typename Lock>
class Found {
 public:
  void Set(const Value& value) { memcpy(&copy_, &value, sizeof copy_); }
  const Value& value() const { return copy_; }

 private:
  Value copy_;  // not read before it is set
};

template <typename Value>
class Found<Value, NoLock> {
 public:
  void Set(const Value& value) { at_ = &value; }
  const Value& value() const { return *at_; }

 private:
  const Value* at_ = nullptr;
};

// The result of an operation that finds nothing. When it fails, errno is the semaphore call's.
inline int NotFound() {
  errno = ENOENT;
  return -1;
}

// The result of an operation that looks for a slot.
inline int FoundOrNot(int slot) {
  if (slot == kNoSlot) return NotFound();
  return slot >= 0 ? 1 : -1;
}

// Returns in how many slots matches(record) is true, or -1 when a semaphore call failed.
template <typename Record, typename Lock, typename Matches>
int CountSlots(Slots<Record> slots, const Lock& lock, Matches matches) {
  int count = 0;
  const int end = FindSlot(slots, 0, lock, [&](const Record& record, int) {
    if (matches(record)) ++count;
    return false;
  });
  return end == kLockFailed ? -1 : count;
}

}  // namespace voatm

#endif  // SRC_COMMON_SLOT_SCAN_H
