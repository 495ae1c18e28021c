// The ground of most tests: a served home, and a driver's object attached to its tables.
#ifndef TESTS_SUPPORT_DRIVER_TEST_H
#define TESTS_SUPPORT_DRIVER_TEST_H

#include <gtest/gtest.h>
#include <sys/sem.h>

#include <cstring>
#include <string>

#include "support/served_home.h"
#include "support/trace_recorder.h"
#include "voatmutil.h"

// An object for operations that need files at most, not tables.
struct Unattached {
  Unattached() { util.dptr = trace.debug(); }

  TraceRecorder trace;
  VoATMUtil util;
};

// A test body runs once with LockFlag and once without. After it every semaphore must be at rest.
class DriverTest : public testing::TestWithParam<bool> {
 protected:
  explicit DriverTest(const SlotCounts& counts = {}) : home_(counts) {
    EXPECT_EQ(util_.InitVoATMUtil(trace_.debug(), GetParam()), 1) << trace_.Take();
    trace_.Take();
  }

  void TearDown() override {
    ExpectAtRest(util_.AtmMemorySemid, util_.MaxAtm);
    ExpectAtRest(util_.AtmFitSemid, util_.MaxFit);
    ExpectAtRest(util_.SecuritySemid, util_.MaxSecurity);
    ExpectAtRest(util_.AtmPropertySemid, util_.MaxAtmProperty);
    ExpectAtRest(util_.AtmActionPropertySemid, util_.MaxAtmProperty);
    ExpectAtRest(util_.AtmStatusSemid, util_.MaxAtmStatus);
  }

  bool locked() const { return util_.LockFlag; }

  // Removes a semaphore set, so that the next locked visit fails. The test ends unlocked.
  static void RemoveSet(int semid) { EXPECT_EQ(semctl(semid, 0, IPC_RMID), 0); }

  ServedHome home_;
  TraceRecorder trace_;
  VoATMUtil util_;

 private:
  static void ExpectAtRest(int semid, int slots) {
    for (int slot = 0; slot < slots; ++slot) {
      const int value = semctl(semid, slot, GETVAL);
      if (value == -1) return;  // the test removed the set
      EXPECT_EQ(value, 2) << "slot " << slot << " of set " << semid;
    }
  }
};

inline std::string LockMode(const testing::TestParamInfo<bool>& info) {
  return info.param ? "locked" : "unlocked";
}

#define IN_BOTH_LOCK_MODES(test) INSTANTIATE_TEST_SUITE_P(, test, testing::Bool(), LockMode)

// The system's part of a trace, as the library writes it.
inline std::string SysErr(int error) {
  return std::string(" SysErr[ ") + strerror(error) + " ] ErrNo[ " + std::to_string(error) + " ]\n";
}

#endif  // TESTS_SUPPORT_DRIVER_TEST_H
