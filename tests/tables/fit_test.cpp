#include <cerrno>
#include <string_view>

#include "support/driver_test.h"
#include "support/random_cases.h"
#include "support/words.h"

namespace {

class FitTest : public DriverTest {
 protected:
  void Put(int slot, const char* key1, const char* key2, const char* key3) {
    AtmFit& fit = util_.AtmFitPtr[slot];
    memset(&fit, 'a' + slot, sizeof fit);
    strcpy(fit.FitId, "F1");
    SetField(fit.MatchKey1, key1);
    SetField(fit.MatchKey2, key2);
    SetField(fit.MatchKey3, key3);
  }
};

IN_BOTH_LOCK_MODES(FitTest);

TEST_P(FitTest, VerifySaysWhetherAnIdIsStillFree) {
  Put(2, "A", "B", "C");
  EXPECT_EQ(util_.VerifyAtmFit("F1"), -1);
  for (const char* free_id : {"f1", "F", "F11", ""}) EXPECT_EQ(util_.VerifyAtmFit(free_id), 1);
  util_.MaxFit = 2;
  EXPECT_EQ(util_.VerifyAtmFit("F1"), 1);
  Put(0, "A", "B", "C");
  errno = 0;
  EXPECT_EQ(util_.VerifyAtmFit("F1"), -1);
  EXPECT_EQ(errno, EEXIST);
}

TEST_P(FitTest, SelectsAsTheRulesSayOnRandomTables) {
  RandomCases random;
  AtmFit record = {};
  for (int round = 0; round < RandomCases::Rounds(locked() ? 5000 : 100000); ++round) {
    Put(random.Below(util_.MaxFit), random.OneOf({"A", "B"}), random.OneOf({"A", "B", "*", "AB"}),
        random.OneOf({"A", "B", "*", ""}));
    const char* const keys[] = {random.OneOf({"A", "B", "*"}), random.OneOf({"A", "B", "*", ""}),
                                random.OneOf({"A", "B", "*", "C"})};
    const int ordinal = random.Below(6);
    AtmFit expected = record;
    int count = 0;
    for (int slot = 0; slot < util_.MaxFit; ++slot) {
      const AtmFit& fit = util_.AtmFitPtr[slot];
      const std::string_view key1 = fit.MatchKey1, key2 = fit.MatchKey2, key3 = fit.MatchKey3;
      const bool exact = key2 == keys[1] && key3 == keys[2] && key2 != "*";
      const bool open = (key2 == keys[1] || key2 == "*") && key3 == "*";
      if (key1 == keys[0] && (exact || open) && ++count == ordinal) expected = fit;
    }
    const int read = util_.ReadFitMemory(keys[0], keys[1], keys[2], &record, ordinal);
    ASSERT_EQ(util_.GetFitCount(keys[0], keys[1], keys[2]), count) << "round " << round;
    ASSERT_EQ(read, ordinal >= 1 && ordinal <= count ? 1 : -1) << "round " << round;
    ASSERT_EQ(memcmp(&record, &expected, sizeof record), 0) << "round " << round;
  }
  EXPECT_EQ(trace_.Take(), "");
}

}  // namespace
