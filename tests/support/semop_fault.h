// Makes a semaphore call of this process fail: the tests' semop stands before the system's.
#ifndef TESTS_SUPPORT_SEMOP_FAULT_H
#define TESTS_SUPPORT_SEMOP_FAULT_H

#include <functional>

struct SemopFault {
  int result;   // of the operation
  int set;      // on which the call failed
  int slot;     // on which it failed; -1 when the operation makes fewer calls
  bool giving;  // the slot back; it must be taken still, and is then set at rest
};

// Runs an operation whose nth semaphore call fails with EIDRM and moves nothing.
SemopFault WithFailingSemop(int nth, const std::function<int()>& operation);

#endif  // TESTS_SUPPORT_SEMOP_FAULT_H
