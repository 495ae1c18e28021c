#include <sys/shm.h>

#include <cerrno>

#include "support/driver_test.h"

namespace {

class AtmMemoryTest : public DriverTest {
 protected:
  // Slots: A1 in EAST, A2 in WEST, free (but EAST), A3 in EAST.
  AtmMemoryTest() {
    Put(0, "A1", "EAST");
    Put(1, "A2", "WEST");
    Put(2, "NOTDEFINED", "EAST");
    Put(3, "A3", "EAST");
  }

  void Put(int slot, const char* id, const char* group) {
    AtmMemoryTable& atm = util_.AtmMemoryPtr[slot];
    strcpy(atm.AtmId, id);
    strcpy(atm.AtmDetail.GroupingKey, group);
    memset(atm.Rest, 'a' + slot, sizeof atm.Rest);
  }

  char RestOf(int slot) const { return util_.AtmMemoryPtr[slot].Rest[6835]; }

  AtmMemoryTable record_ = {};
};

IN_BOTH_LOCK_MODES(AtmMemoryTest);

TEST_P(AtmMemoryTest, ReadsTheLowestSlotOfAnIdExactly) {
  Put(1, "A3", "WEST");
  util_.LastAtmIndex = 7;
  EXPECT_EQ(util_.ReadAtmMemory("a3", &record_), -1);
  EXPECT_EQ(util_.ReadAtmMemory("A", &record_), -1);
  EXPECT_EQ(util_.ReadAtmMemory("A33", &record_), -1);
  EXPECT_EQ(record_.AtmId[0], '\0');
  EXPECT_EQ(util_.LastAtmIndex, 7);
  EXPECT_EQ(util_.ReadAtmMemory("A3", &record_), 1);
  EXPECT_EQ(memcmp(&record_, &util_.AtmMemoryPtr[1], sizeof record_), 0);
  EXPECT_EQ(util_.LastAtmIndex, 1);
  EXPECT_EQ(util_.ReadAtmMemory("NOTDEFINED", &record_), 1);
  EXPECT_EQ(util_.LastAtmIndex, 2);
  EXPECT_EQ(util_.VerifyAtmMemory("A1"), 1);
  EXPECT_EQ(util_.VerifyAtmMemory("A9"), -1);
  EXPECT_EQ(util_.LastAtmIndex, 2);
  EXPECT_EQ(trace_.Take(), "");
}

TEST_P(AtmMemoryTest, WritesTheLastSlotReadElseTheLowest) {
  Put(3, "A1", "EAST");
  strcpy(record_.AtmId, "NEW");
  memset(record_.Rest, 'x', sizeof record_.Rest);
  const struct {
    int last;
    const char* id;
    int written;  // slot, or -1
  } cases[] = {{3, "A1", 3},  {0, "A1", 0},  {2, "A1", 0},    {1, "A1", 0},
               {-1, "A1", 0}, {99, "A2", 1}, {0, "NONE", -1}, {2, "NOTDEFINED", 2}};
  for (const auto& c : cases) {
    for (const char* id : {"A1", "A2"}) Put(id[1] - '1', id, "EAST");
    Put(2, "NOTDEFINED", "EAST");
    Put(3, "A1", "EAST");
    util_.LastAtmIndex = c.last;
    EXPECT_EQ(util_.WriteAtmMemory(c.id, &record_), c.written >= 0 ? 1 : -1) << c.id;
    for (int slot = 0; slot < util_.MaxAtm; ++slot) {
      EXPECT_EQ(RestOf(slot), slot == c.written ? 'x' : 'a' + slot) << c.id << " last " << c.last;
    }
    EXPECT_EQ(util_.LastAtmIndex, c.last);
  }
}

TEST_P(AtmMemoryTest, CountsAndListsDefinedSlotsOfAGroup) {
  EXPECT_EQ(util_.GetAtmCount("EAST"), 2);
  EXPECT_EQ(util_.GetAtmCount("NORTH"), 0);
  const struct {
    int ordinal;
    const char* id;
    const char* printed;
  } cases[] = {{1, "A1", "retval 1"},
               {2, "A3", "retval 1"},
               {3, "", "retval -1"},
               {0, "", "retval -1"},
               {-1, "", "retval -1"}};
  for (const auto& c : cases) {
    char id[21] = "";
    testing::internal::CaptureStdout();
    EXPECT_EQ(util_.GetAtmId("EAST", id, c.ordinal), c.id[0] != '\0' ? 1 : -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.printed);
    EXPECT_STREQ(id, c.id);
  }
}

TEST_P(AtmMemoryTest, BoundsUnterminatedIdsAndUnattachedTables) {
  memset(util_.AtmMemoryPtr[1].AtmId, 'Z', 20);
  EXPECT_EQ(util_.VerifyAtmMemory("ZZZZZZZZZZZZZZZZZZZZ"), 1);
  EXPECT_EQ(util_.VerifyAtmMemory("ZZZZZZZZZZZZZZZZZZZZEAST"), -1);
  char id[21];
  testing::internal::CaptureStdout();
  EXPECT_EQ(util_.GetAtmId("WEST", id, 1), 1);
  testing::internal::GetCapturedStdout();
  EXPECT_STREQ(id, "ZZZZZZZZZZZZZZZZZZZZ");
  AtmMemoryTable* const table = util_.AtmMemoryPtr;
  void* const failed = shmat(-1, nullptr, 0);  // the error address
  for (void* nowhere : {static_cast<void*>(nullptr), failed}) {
    util_.AtmMemoryPtr = static_cast<AtmMemoryTable*>(nowhere);
    EXPECT_EQ(util_.WriteAtmMemory("A1", &record_), -1);
    EXPECT_EQ(util_.GetAtmCount("EAST"), 0);
  }
  util_.AtmMemoryPtr = table;
  util_.MaxAtm = 0;
  util_.LastAtmIndex = 0;
  testing::internal::CaptureStdout();
  EXPECT_EQ(util_.GetAtmId("EAST", id, 1), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "retval -1");
  EXPECT_EQ(util_.GetAtmCount("EAST"), 0);
  for (const int result : {util_.ReadAtmMemory("A1", &record_),
                           util_.WriteAtmMemory("A1", &record_), util_.VerifyAtmMemory("A1")}) {
    EXPECT_EQ(result, -1);
  }
  EXPECT_EQ(util_.LastAtmIndex, 0);
}

TEST_P(AtmMemoryTest, SaysWhenTheSetIsGone) {
  RemoveSet(util_.AtmMemorySemid);
  char id[21] = "";
  testing::internal::CaptureStdout();
  const int results[] = {util_.ReadAtmMemory("A1", &record_), util_.WriteAtmMemory("A1", &record_),
                         util_.VerifyAtmMemory("A1"), util_.GetAtmCount("EAST"),
                         util_.GetAtmId("EAST", id, 1)};
  EXPECT_EQ(testing::internal::GetCapturedStdout(), locked() ? "" : "retval 1");
  std::string said;
  for (const int result : results) {
    EXPECT_EQ(result == -1, locked());
    if (locked()) said += "2 Error in Semop for AtmMemory" + SysErr(EINVAL);
  }
  EXPECT_EQ(trace_.Take(), said);
}

}  // namespace
