// The semaphores of a table that are not at rest, and who holds them.
#ifndef TOOLS_VOATM_LOOK_SLOT_LOCKS_H
#define TOOLS_VOATM_LOOK_SLOT_LOCKS_H

#include <ctime>
#include <string>
#include <vector>

#include "look/process.h"
#include "look/survey.h"
#include "show/output.h"

constexpr int kHeld = 0;  // units of a held slot's semaphore

struct SlotLock {
  const records::RecordTable* table;
  int slot;
  std::string id;  // of the record, when the segment can be read
  int value;
  Process last;  // the process that changed the semaphore last: of a held slot its holder
  int waiting;   // processes that wait for it
  std::time_t last_change;  // of any semaphore of the set

  // Whether it will not come to rest by itself, as far as can be told.
  bool IsStuck() const;
};

// Throws std::runtime_error unless the table's semaphore set can be looked at.
void RequireSet(const TableState& table);

// The slots of a table that are not at rest, the lowest first; none of a set that was never
// initialised. Throws std::runtime_error when there is no set or it cannot be read.
std::vector<SlotLock> FindLocks(const TableState& table);

// One slot, at rest or not. Throws as FindLocks does.
SlotLock LookAtSlot(const TableState& table, int slot);

Json LockJson(const SlotLock& lock);

// Prints an array of such.
void PrintLocks(const Json& locks);

#endif  // TOOLS_VOATM_LOOK_SLOT_LOCKS_H
