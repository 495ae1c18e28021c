// The semaphores of a table that are not at rest, and giving one back for a holder that is dead.
#ifndef TOOLS_VOATM_LOOK_SLOT_LOCKS_H
#define TOOLS_VOATM_LOOK_SLOT_LOCKS_H

#include <optional>
#include <string>
#include <vector>

#include "look/process.h"
#include "look/survey.h"

struct SlotLock {
  const records::RecordTable* table;
  int slot;
  std::string id;  // of the record, when the segment can be read
  int value;
  Process last;  // the process that changed the semaphore last: of a held slot its holder
  int waiting;   // processes that wait for it

  // Whether it will not come to rest by itself.
  bool IsStuck() const;
};

// The slots of a table that are not at rest, the lowest first. Throws std::runtime_error when there
// is no semaphore set or it cannot be read.
std::vector<SlotLock> FindLocks(const TableState& table);

// What became of an order to give a slot back.
struct Release {
  bool done;
  std::string text;              // why, or why not
  std::optional<SlotLock> lock;  // as it was found; none when it was at rest
};

// Gives a slot back when its value is 0 and its holder is dead, and does nothing else. One process
// at a time does so in a home: else a second one could give away what a driver has taken since.
// Throws std::runtime_error when the slot, or the set, cannot be had.
Release ReleaseSlot(const Survey& survey, const records::RecordTable& record, int slot);

#endif  // TOOLS_VOATM_LOOK_SLOT_LOCKS_H
