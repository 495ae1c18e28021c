#include <algorithm>
#include <csignal>
#include <vector>

#include "faults/locked_operations.h"
#include "support/call_fault.h"
#include "support/child.h"
#include "tools/voatm/look/release.h"

namespace {

class KilledHolderTest : public LockedOperationsTest {
 protected:
  // Runs an operation in a process that is killed at its nth semaphore call. Returns its number.
  pid_t RunKilled(const LockedOperation& o, int nth, int moment) {
    const pid_t driver = fork();
    if (driver == 0) {
      const CallFault fault("semop", nth, moment);
      _exit(o.run(util_));
    }
    int status = 0;
    waitpid(driver, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << o.name;
    return driver;
  }

  // The same operation below the slot, and every operation on another table, go on.
  void ExpectOthersGoOn(const LockedOperation& o, int slot) {
    VoATMUtil below = util_;
    below.MaxAtm = below.MaxFit = below.MaxSecurity = slot;
    below.MaxAtmProperty = below.MaxAtmStatus = slot;
    o.run(below);
    for (const LockedOperation& other : LockedOperations()) {
      if (other.set == o.set) continue;
      EXPECT_EQ(other.run(util_), other.result) << other.name;
    }
  }

  // Only who needs the slot waits; who looks is told the slot and the dead, and gives it back.
  void ExpectReleased(const LockedOperation& o, int slot, pid_t dead) {
    const int set = util_.*o.set;
    Child waiting([&] { return o.run(util_); });
    EXPECT_TRUE(Eventually([&] { return semctl(set, slot, GETNCNT) == 1; }));
    ExpectOthersGoOn(o, slot);
    const auto& tables = records::kRecordTables;
    const TableState table =
        SurveyTable(home_.path(), *std::find_if(tables.begin(), tables.end(),
                                                [&](auto& each) { return each.semid == o.set; }));
    const std::vector<SlotLock> locks = FindLocks(table);
    ASSERT_EQ(locks.size(), 1U) << o.name;
    EXPECT_EQ(locks[0].slot, slot);
    EXPECT_EQ(locks[0].last.id, dead);
    EXPECT_EQ(locks[0].last.state, ProcessState::kDead);
    EXPECT_EQ(locks[0].waiting, 1);
    EXPECT_TRUE(ReleaseSlot(table, slot, {}).done);
    EXPECT_EQ(waiting.Wait(), o.result & 0xff) << o.name;
  }
};

INSTANTIATE_TEST_SUITE_P(, KilledHolderTest, testing::Values(true), LockMode);

// After it took a slot, or before it gives it back, it dies as the holder; else it holds nothing.
TEST_P(KilledHolderTest, KeepsItsSlotUntilItIsReleasedWhereverItDies) {
  for (const LockedOperation& o : LockedOperations()) {
    const int set = util_.*o.set;
    const int calls = CallsOf("semop", [&] { EXPECT_EQ(o.run(util_), o.result) << o.name; });
    for (int nth = 1; nth <= calls; ++nth) {
      const bool taking = nth % 2 == 1;
      for (const int moment : {CallFault::kKilledBefore, CallFault::kKilledAfter}) {
        const pid_t dead = RunKilled(o, nth, moment);
        const int slot = HeldSlot(set);
        EXPECT_EQ(slot >= 0, taking == (moment == CallFault::kKilledAfter)) << o.name << nth;
        if (slot >= 0) ExpectReleased(o, slot, dead);
        ASSERT_EQ(HeldSlot(set), -1) << o.name;
      }
    }
  }
}

}  // namespace
