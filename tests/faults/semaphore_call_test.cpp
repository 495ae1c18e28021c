#include <cerrno>
#include <sstream>

#include "devhost/system_call.h"
#include "faults/locked_operations.h"
#include "support/call_fault.h"

namespace {

class SemaphoreCallTest : public LockedOperationsTest {
 protected:
  std::string LastTrace() {
    std::string traces = trace_.Take();
    return traces.substr(traces.rfind('\n', traces.size() - 2) + 1);
  }
};

IN_BOTH_LOCK_MODES(SemaphoreCallTest);

// Calls come in pairs: taking a slot, then giving it back, which leaves it held when it fails. The
// caller gets nothing then, but a slot that was found is remembered.
TEST_P(SemaphoreCallTest, ThatFailsEndsItsOperationWithThePlacesWords) {
  for (const LockedOperation& o : LockedOperations()) {
    std::string taking, giving[2];  // otherwise, after a match
    std::istringstream(o.said) >> taking >> giving[1] >> giving[0];
    if (giving[0].empty()) giving[0] = giving[1] = taking;
    const int calls = CallsOf("semop", [&] { EXPECT_EQ(o.run(util_), o.result) << o.name; });
    EXPECT_EQ(calls >= 4, locked()) << o.name;
    const int set = util_.*o.set;
    for (int nth = 1; nth <= calls; ++nth) {
      for (const int error : ErrorsOf("semop")) {
        Paint();
        util_.LastAtmIndex = 9;
        const CallFault fault("semop", nth, error);
        errno = 0;
        EXPECT_EQ(o.run(util_), -1) << o.name << " call " << nth;
        EXPECT_EQ(errno, error) << o.name << " call " << nth;
        const int held = HeldSlot(set);
        EXPECT_EQ(held >= 0, nth % 2 == 0) << o.name << " call " << nth;
        const std::string& said = held < 0 ? taking : giving[held];
        EXPECT_TRUE(IsPainted()) << o.name << " call " << nth;
        EXPECT_EQ(util_.LastAtmIndex == 1, o.remembers && held == 1) << o.name << " call " << nth;
        EXPECT_EQ(LastTrace(), "2 Error in Semop for " + said + SysErr(error)) << o.name;
        if (held >= 0) semctl(set, held, SETVAL, devhost::SemaphoreArgument{devhost::kAtRest});
      }
    }
  }
}

// Where nothing is found errno says so; where an id is taken, that.
TEST_P(SemaphoreCallTest, ThatSucceedsLeavesItToErrnoToSayWhatWasNotFound) {
  VoATMUtil none = util_;
  none.MaxAtm = none.MaxFit = none.MaxSecurity = none.MaxAtmProperty = none.MaxAtmStatus = 0;
  for (const LockedOperation& o : LockedOperations()) {
    const std::string name = o.name;
    errno = 0;
    if (o.run(none) != -1) continue;  // a count, or an id that is free
    EXPECT_EQ(errno, name == "BuiltStatusMsg" ? 0 : ENOENT) << name;
  }
  for (const char* taken : {"NOTDEFINED", "X"}) {
    errno = 0;
    EXPECT_EQ(util_.VerifyAtmFit(taken), -1);
    EXPECT_EQ(errno, EEXIST) << taken;
  }
}

}  // namespace
