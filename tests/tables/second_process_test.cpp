#include "devhost/system_call.h"
#include "support/child.h"
#include "support/driver_test.h"

namespace {

class SecondProcessTest : public DriverTest {
 protected:
  SecondProcessTest() { Fill(&util_.AtmMemoryPtr[0], 'o'); }

  static void Fill(AtmMemoryTable* atm, int byte) {
    memset(atm, byte, sizeof *atm);
    strcpy(atm->AtmId, "A1");
  }

  // Returns what the record is filled with, or '?' when it is torn.
  char ReadFill() {
    AtmMemoryTable atm;
    EXPECT_EQ(util_.ReadAtmMemory("A1", &atm), 1);
    const std::size_t size = sizeof atm.Rest - 1;
    return memcmp(atm.Rest, atm.Rest + 1, size) == 0 ? atm.Rest[0] : '?';
  }

  int Semaphore(int command) const {
    return semctl(util_.AtmMemorySemid, 0, command, devhost::SemaphoreArgument{devhost::kAtRest});
  }
};

IN_BOTH_LOCK_MODES(SecondProcessTest);

TEST_P(SecondProcessTest, AHolderThatDiesKeepsItsSlotAndLockedReadersWait) {
  Child holder([&] {
    sembuf take = {0, -2, 0};
    semop(util_.AtmMemorySemid, &take, 1);
    return pause();
  });
  ASSERT_TRUE(Eventually([&] { return Semaphore(GETVAL) == 0; }));
  holder.Kill();
  EXPECT_EQ(Semaphore(GETVAL), 0);
  Child reader([&] { return ReadFill(); });
  const int seen_at_once = locked() ? 'n' : reader.Wait();
  EXPECT_TRUE(Eventually([&] { return Semaphore(GETNCNT) == (locked() ? 1 : 0); }));
  Fill(&util_.AtmMemoryPtr[0], 'n');
  sembuf give = {0, 2, 0};
  EXPECT_EQ(semop(util_.AtmMemorySemid, &give, 1), 0);
  EXPECT_EQ(locked() ? reader.Wait() : seen_at_once, locked() ? 'n' : 'o');
}

TEST_P(SecondProcessTest, OnlyLocksKeepRecordsWhole) {
  const auto write = [&](char byte) {
    AtmMemoryTable atm;
    Fill(&atm, byte);
    while (util_.WriteAtmMemory("A1", &atm) == 1) continue;
    return 1;
  };
  const auto read = [&] {
    char seen = 'o';
    for (int n = 0; n < (locked() ? 10000 : 10000000) && seen != '?'; ++n) seen = ReadFill();
    return seen;
  };
  Child first([&] { return write('1'); });
  Child second([&] { return write('2'); });
  Child reader(read);
  EXPECT_EQ(read() == '?', !locked());
  EXPECT_EQ(reader.Wait() == '?', !locked());
  first.Kill();
  second.Kill();
  Semaphore(SETVAL);  // one may have held the slot
}

}  // namespace
