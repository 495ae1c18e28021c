// The soak's processes.
#ifndef SOAK_PROCESSES_H
#define SOAK_PROCESSES_H

#include <sys/types.h>

// Waits until a process ends, at most so many seconds. Returns its wait status, or -1.
int WaitFor(pid_t process, double seconds);

// What a process holds: memory of its own as it is mapped and as it is used, in KB, and its open
// descriptors.
struct Footprint {
  long data;
  long used;
  long descriptors;
};

Footprint FootprintOf(pid_t process);

#endif  // SOAK_PROCESSES_H
