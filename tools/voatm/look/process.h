// What the system knows about the process that last changed a semaphore.
#ifndef TOOLS_VOATM_LOOK_PROCESS_H
#define TOOLS_VOATM_LOOK_PROCESS_H

#include <sys/types.h>

#include <ctime>
#include <string>

enum class ProcessState {
  kUnknown,   // no number to go by
  kAlive,     // or nothing more can be told of it
  kStopped,   // it goes on when it is told to
  kStranger,  // alive, but it does not use the table: it may have been given the number since
  kDead,      // none of this number, or one that has ended and only waits for its parent
  kReused,    // a later process has the number, so the one that is meant is dead
};

struct Process {
  pid_t id;
  ProcessState state;
  std::string command;  // of the living process that has the number
};

// Whether /proc numbers processes as the system calls of this process do. One that was mounted
// outside this PID namespace tells of others.
bool HasOwnProc();

// Says what became of the process that was at work at `last_change` at the latest. What cannot
// be told counts as alive. A reused number is told by the clock: one that was set forward since
// makes an old process look young.
Process LookAt(pid_t id, std::time_t last_change);

const char* NameOf(ProcessState state);

// "process 4711 (voatm list atm)"
std::string DescribeProcess(const Process& process);

// Whether it is certain that the process cannot go on.
bool IsGone(ProcessState state);

#endif  // TOOLS_VOATM_LOOK_PROCESS_H
