#include "common/slot_scan.h"

#include <sys/sem.h>

#include "common/trace.h"

namespace voatm {

bool SlotLock::Move(int slot, short units, const char* text) const {
  sembuf move = {static_cast<unsigned short>(slot), units, 0};
  if (semop(semid_, &move, 1) == 0) return true;
  TraceSystemError(trace_, text);
  return false;
}

}  // namespace voatm
