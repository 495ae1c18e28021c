// The walk that settles the keys of a request level by level, for both property tables.
#ifndef SRC_PROPERTY_KEY_WALK_H
#define SRC_PROPERTY_KEY_WALK_H

#include <algorithm>
#include <cassert>
#include <cstddef>

#include "common/field_key.h"
#include "common/slot_scan.h"

namespace voatm {

// A value that a key column may have: where the column stands in its row, and the value.
class ColumnKey {
 public:
  ColumnKey(std::size_t column, const FieldKey& key) : column_(column), key_(key) {}

  template <typename Row>
  bool MayBe(const Row& row) const {
    return key_.MayBe(Column(row));
  }

  template <typename Row>
  bool Is(const Row& row) const {
    return key_.Is(Column(row));
  }

 private:
  template <typename Row>
  const char* Column(const Row& row) const {
    return reinterpret_cast<const char*>(&row) + column_;
  }

  std::size_t column_;
  FieldKey key_;
};

constexpr int kMaxChoices = 3;

// A level of a walk: the choices for one column, in the order in which they are tried.
struct WalkLevel {
  const ColumnKey* choices;
  int count;
};

// Where a walk stands: the choice that each level has settled on or is trying.
template <std::size_t Levels>
using Choices = int[Levels];

// Walks the levels. find(level, choices, start) looks from slot start on for a row that agrees with
// the choices up to this level and returns as FindSlot does; each level starts at the slot that the
// one before found. miss(level, choices) says that a choice found nothing. A settled level is not
// reconsidered. Returns the slot found at the last level, kNoSlot, or kLockFailed.
template <std::size_t Levels, typename Find, typename Miss>
int SettleLevels(const WalkLevel (&levels)[Levels], Find find, Miss miss) {
  Choices<Levels> choices = {};
  int slot = 0;
  for (std::size_t level = 0; level < Levels; ++level) {
    int found = find(level, choices, slot);
    while (found == kNoSlot) {
      miss(level, choices);
      if (++choices[level] == levels[level].count) return kNoSlot;
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
template <std::size_t Levels, typename Row>
class BestRow {
 public:
  BestRow(const WalkLevel (&levels)[Levels], Slots<Row> rows) : levels_(levels), rows_(rows) {
    choices_[0] = levels[0].count;
    for (int slot = NextCandidate(0); slot < rows.count; slot = NextCandidate(slot + 1)) {
      assert(slot >= 0);
      if (IsBetter(rows.first[slot])) Take(slot);
    }
  }

  int choice(std::size_t level) const { return choices_[level]; }
  int slot() const { return slot_; }

 private:
  // The next slot whose row may be better: its column of the filter level may hold a choice that is
  // not worse than the best.
  int NextCandidate(int slot) const {
    if (settled_ == Levels) return rows_.count;
    switch (std::min(choices_[filter_] + 1, levels_[filter_].count)) {
      case 1:
        return NextWith<1>(slot);
      case 2:
        return NextWith<2>(slot);
      default:
        return NextWith<kMaxChoices>(slot);
    }
  }

  template <int Allowed>
  int NextWith(int slot) const {
    const ColumnKey* const choices = levels_[filter_].choices;
    const ColumnKey first = choices[0];
    const ColumnKey second = choices[Allowed > 1 ? 1 : 0];
    const ColumnKey third = choices[Allowed > 2 ? 2 : 0];
    for (; slot < rows_.count; ++slot) {
      const Row& row = rows_.first[slot];
      if (first.MayBe(row) || (Allowed > 1 && second.MayBe(row)) ||
          (Allowed > 2 && third.MayBe(row))) {
        break;
      }
    }
    return slot;
  }

  // Whether the row's choices are smaller than the best. A worse choice there makes a level the
  // filter, as long as all levels before it are settled: rows that lie together fail alike.
  bool IsBetter(const Row& row) {
    for (std::size_t level = 0; level < Levels; ++level) {
      const int choice = ChoiceOf(row, level, choices_[level]);
      if (choice < choices_[level]) return true;
      if (choice > choices_[level] || choice == levels_[level].count) {
        if (level <= settled_) filter_ = level;
        return false;
      }
    }
    return false;
  }

  // Makes the row's choices the best ones. Those behind a level that has none are never looked at.
  void Take(int slot) {
    slot_ = slot;
    for (std::size_t level = 0; level < Levels; ++level) {
      choices_[level] = ChoiceOf(rows_.first[slot], level, levels_[level].count);
      if (choices_[level] == levels_[level].count) break;
    }
    settled_ = 0;
    while (settled_ < Levels && choices_[settled_] == 0) ++settled_;
    filter_ = settled_;
  }

  // The first choice of a level, up to limit, that the row agrees with; the level's count if none.
  int ChoiceOf(const Row& row, std::size_t level, int limit) const {
    const WalkLevel& all = levels_[level];
    for (int choice = 0; choice <= limit && choice < all.count; ++choice) {
      if (all.choices[choice].Is(row)) return choice;
    }
    return all.count;
  }

  const WalkLevel (&levels_)[Levels];
  Slots<Row> rows_;
  Choices<Levels> choices_ = {};
  std::size_t settled_ = 0;  // how many levels, from the first, are on their first choice
  std::size_t filter_ = 0;   // at most settled_: the level that rules most rows out
  int slot_ = kNoSlot;
};

// The two ways to walk a table's rows: by scanning for each choice, every visited slot held, and
// over unlocked rows from one pass, with the same result and the same misses.

template <std::size_t Levels, typename Row, typename Miss>
int Walk(const WalkLevel (&levels)[Levels], Slots<Row> rows, const SlotLock& lock, Miss miss) {
  const auto find = [&](std::size_t level, const Choices<Levels>& choices, int start) {
    return FindSlot(rows, start, lock, [&](const Row& row, int) {
      for (std::size_t column = 0; column <= level; ++column) {
        if (!levels[column].choices[choices[column]].Is(row)) return false;
      }
      return true;
    });
  };
  return SettleLevels(levels, find, miss);
}

template <std::size_t Levels, typename Row, typename Miss>
int Walk(const WalkLevel (&levels)[Levels], Slots<Row> rows, const NoLock&, Miss miss) {
  const BestRow<Levels, Row> best(levels, rows);
  const auto find = [&](std::size_t level, const Choices<Levels>& choices, int) {
    return choices[level] == best.choice(level) ? best.slot() : kNoSlot;
  };
  return SettleLevels(levels, find, miss);
}

}  // namespace voatm

#endif  // SRC_PROPERTY_KEY_WALK_H
