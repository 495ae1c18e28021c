#include "support/semop_fault.h"

#include <gtest/gtest.h>
#include <sys/sem.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace {

int calls_to_failure = 0;
int failed_set = -1;
sembuf failed_move;

}  // namespace

extern "C" [[gnu::visibility("default")]] int semop(int semid, sembuf* moves,
                                                    size_t count) noexcept {
  if (calls_to_failure > 0 && --calls_to_failure == 0) {
    failed_set = semid;
    failed_move = moves[0];
    errno = EIDRM;
    return -1;
  }
  return static_cast<int>(syscall(SYS_semtimedop, semid, moves, count, nullptr));
}

SemopFault WithFailingSemop(int nth, const std::function<int()>& operation) {
  failed_set = -1;
  calls_to_failure = nth;
  const int result = operation();
  calls_to_failure = 0;
  if (failed_set == -1) return {result, -1, -1, false};
  const bool giving = failed_move.sem_op > 0;
  EXPECT_EQ(semctl(failed_set, failed_move.sem_num, GETVAL), giving ? 0 : 2);
  semctl(failed_set, failed_move.sem_num, SETVAL, 2);
  return {result, failed_set, failed_move.sem_num, giving};
}
