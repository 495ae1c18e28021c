// Bringing slots back to rest.
//
// Look, prove, give back: a slot is given back only when its last process, who holds it, is proved
// to have ended, and only if it is still as that process left it, in one step. One process at a
// time does so for a set: else a second one could give away what a driver has taken since.
#ifndef TOOLS_VOATM_LOOK_RELEASE_H
#define TOOLS_VOATM_LOOK_RELEASE_H

#include <optional>
#include <string>

#include "look/slot_locks.h"

// The one releaser of a semaphore set while it exists: it alone has the socket with the set's name,
// which lies in no directory and goes with its process.
class OnlyReleaser {
 public:
  // Waits so many seconds for another one; throws std::runtime_error.
  explicit OnlyReleaser(int set, int seconds = 5);
  ~OnlyReleaser();
  OnlyReleaser(const OnlyReleaser&) = delete;
  OnlyReleaser& operator=(const OnlyReleaser&) = delete;

 private:
  int socket_;
};

// Gives a semaphore of a table's set the value of rest in the same step that finds it at `value`,
// and at no other; returns whether it did. Throws as ReleaseSlot does.
bool BringToRest(const TableState& table, int slot, int value);

// What may be done beyond giving back what a dead process holds.
struct ReleaseRights {
  bool reset = false;  // a slot may be neither held nor at rest
  bool force = false;  // of a process that cannot be told it is assumed that it has ended
};

struct Release {
  bool done;
  std::string text;              // why, or why not
  std::optional<SlotLock> lock;  // of one slot, as it was found
};

// Brings a slot to rest if nobody can be in the middle of it. Throws std::runtime_error when there
// is no such slot, it cannot be had, or another release takes long.
Release ReleaseSlot(const TableState& table, int slot, const ReleaseRights& rights);

// Brings to rest the slots of a set to which nobody ever gave a value, if its owner cannot be about
// to. Throws as ReleaseSlot does.
Release InitialiseSet(const TableState& table, const ReleaseRights& rights);

#endif  // TOOLS_VOATM_LOOK_RELEASE_H
