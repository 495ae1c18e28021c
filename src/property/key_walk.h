// The walk that settles the keys of a request level by level, for both property tables.
#ifndef SRC_PROPERTY_KEY_WALK_H
#define SRC_PROPERTY_KEY_WALK_H

#include <cstddef>

#include "common/slot_scan.h"
#include "common/text_field.h"

namespace voatm {

// A level of a walk has a number of choices, tried in order: the caller's value, then ever wider
// ones. choices[level] is the one a level has settled on or is trying; a level whose choice equals
// its number of choices has none left.
//
// Walks the levels. find(level, choices, start) looks from slot start on for a row that agrees with
// the choices up to this level and returns as FindSlot does; each level starts at the slot that the
// one before found. miss(level, choices) says that a choice found nothing. A settled level is not
// not reconsidered. Returns the slot found at the last level, kNoSlot, or kLockFailed.
template <std::size_t Levels, typename Find, typename Keys>
int WalkLevels(const int (&level_choices)[Levels], Find find, const Keys& keys) {
  int choices[Levels] = {};
  int slot = 0;
  for (std::size_t level = 0; level < Levels; ++level) {
    int found = find(level, choices, slot);
    while (found == kNoSlot) {
      keys.TraceMiss(level, choices);
      if (++choices[level] == level_choices[level]) return kNoSlot;
      found = find(level, choices, slot);
    }
    if (found == kLockFailed) return kLockFailed;
    slot = found;
  }
  return slot;
}

// The row that a walk over unlocked rows ends at, found in one pass. A walk settles each level on
// the first choice that some row agrees with, given the choices before. So of all rows it finds the
// one whose choices, compared level by level, are the smallest, and of equal ones the first.
template <std::size_t Levels, typename Keys>
class BestRow {
 public:
  template <typename Row>
  BestRow(const int (&level_choices)[Levels], const Keys& keys, Slots<Row> rows)
      : level_choices_(level_choices), keys_(keys) {
    choices_[0] = level_choices[0];
    for (int slot = 0; slot < rows.count; ++slot) {
      if (!Improve(rows.first[slot])) continue;
      slot_ = slot;
      if (IsPerfect()) break;
    }
  }

  int choice(std::size_t level) const { return choices_[level]; }
  int slot() const { return slot_; }

 private:
  // Takes the row's choices when they are smaller than those so far. Choices behind a level that
  // has none left are never looked at.
  template <typename Row>
  bool Improve(const Row& row) {
    bool better = false;
    for (std::size_t level = 0; level < Levels; ++level) {
      const int none = level_choices_[level];
      const int choice = ChoiceOf(row, level, better ? none : choices_[level]);
      if (!better && choice > choices_[level]) return false;
      better = better || choice < choices_[level];
      choices_[level] = choice;
      if (choice == none) break;
    }
    return better;
  }

  // The first choice of a level, up to limit, that the row agrees with.
  template <typename Row>
  int ChoiceOf(const Row& row, std::size_t level, int limit) const {
    const int none = level_choices_[level];
    for (int choice = 0; choice <= limit && choice < none; ++choice) {
      if (keys_.Matches(row, level, choice)) return choice;
    }
    return none;
  }

  bool IsPerfect() const {
    for (const int choice : choices_) {
      if (choice != 0) return false;
    }
    return true;
  }

  const int (&level_choices_)[Levels];
  const Keys& keys_;
  int choices_[Levels] = {};
  int slot_ = kNoSlot;
};

// The two ways to walk a table's rows: by scanning for each choice, every visited slot held, and
// over unlocked rows from one pass, with the same result and the same misses.
// Keys::Matches(row, level, choice) compares one column; Keys::TraceMiss(level, choices) says a
// miss.

template <std::size_t Levels, typename Keys, typename Row>
int Walk(const int (&level_choices)[Levels], const Keys& keys, Slots<Row> rows,
         const SlotLock& lock) {
  const auto find = [&](std::size_t level, const int(&choices)[Levels], int start) {
    return FindSlot(rows, start, lock, [&](const Row& row, int) {
      for (std::size_t column = 0; column <= level; ++column) {
        if (!keys.Matches(row, column, choices[column])) return false;
      }
      return true;
    });
  };
  return WalkLevels(level_choices, find, keys);
}

template <std::size_t Levels, typename Keys, typename Row>
int Walk(const int (&level_choices)[Levels], const Keys& keys, Slots<Row> rows, const NoLock&) {
  const BestRow<Levels, Keys> best(level_choices, keys, rows);
  const auto find = [&](std::size_t level, const int(&choices)[Levels], int) {
    return choices[level] == best.choice(level) ? best.slot() : kNoSlot;
  };
  return WalkLevels(level_choices, find, keys);
}

}  // namespace voatm

#endif  // SRC_PROPERTY_KEY_WALK_H
