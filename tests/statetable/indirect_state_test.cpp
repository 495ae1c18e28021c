#include <strings.h>

#include <cerrno>

#include "support/driver_test.h"
#include "support/random_cases.h"

namespace {

constexpr int kSlots = 6;

class IndirectStateTest : public DriverTest {
 protected:
  // Fills a slot. A pattern of eleven characters has no NUL, a shorter one has more behind it.
  void Put(int slot, const std::string& id, const std::string& key1, const std::string& pattern) {
    AtmFit& fit = util_.AtmFitPtr[slot];
    fit = {};
    id.copy(fit.FitId, sizeof fit.FitId);
    key1.copy(fit.MatchKey1, sizeof fit.MatchKey1);
    memset(fit.CardPrefix, '4', sizeof fit.CardPrefix);
    (pattern + '\0').copy(fit.CardPrefix, sizeof fit.CardPrefix);
    fit.IndirectNextState = static_cast<char>('0' + slot);
  }

  static std::string PatternOf(const AtmFit& fit) {
    return std::string(fit.CardPrefix, strnlen(fit.CardPrefix, sizeof fit.CardPrefix));
  }

  // The rule, prefix by prefix. Returns the slot, or -1.
  int Expected(const std::string& key1, const std::string& card) const {
    for (std::size_t length = 10; length > 0; --length) {
      std::string pattern = card.substr(0, length);
      pattern.resize(length, '\0');
      pattern.resize(10, 'F');
      pattern.resize(strlen(pattern.data()));  // compared as text
      for (int slot = 0; slot < kSlots; ++slot) {
        const AtmFit& fit = util_.AtmFitPtr[slot];
        if (strcmp(fit.FitId, "NOTDEFINED") == 0 || key1 != fit.MatchKey1) continue;
        if (PatternOf(fit) == pattern) return slot;
      }
    }
    for (int slot = 0; slot < kSlots; ++slot) {
      const std::string pattern = PatternOf(util_.AtmFitPtr[slot]);
      if (strcasecmp(pattern.c_str(), "FFFFFFFFFF") == 0) return slot;
    }
    return -1;
  }

  // The slot whose state was given, or -1.
  int Given(const std::string& key1, const std::string& card) {
    char state[9] = "########";
    errno = 0;
    const int result = util_.ReadIndirectState(key1.c_str(), "K2", card.c_str(), state);
    EXPECT_TRUE(result != -1 || errno == ENOENT);
    const std::string cleared(7, '\0');
    EXPECT_EQ(std::string(state + 1, 7), result == 1 ? cleared : "#######");
    return result == 1 ? state[0] - '0' : -1;
  }
};

IN_BOTH_LOCK_MODES(IndirectStateTest);

TEST_P(IndirectStateTest, TakesTheLongestPrefixThenTheCatchAll) {
  Put(0, "F1", "K1", "45FFFFFFFF");
  Put(1, "F1", "K1", "4567FFFFFF");
  Put(2, "F1", "K1", "4567FFFFFF");
  Put(3, "F1", "K2", "45678FFFFF");
  Put(4, "NOTDEFINED", "K1", "456789FFFF");
  EXPECT_EQ(Given("K1", "4567890123456789"), 1);
  EXPECT_EQ(Given("K1", "4568"), 0);
  EXPECT_EQ(Given("K1", "5"), -1);
  Put(4, "NOTDEFINED", "K9", "ffffFfffff");
  EXPECT_EQ(Given("K1", "5"), 4);
  EXPECT_EQ(Given("K1", "ffff"), 4);
  RemoveSet(util_.AtmFitSemid);
  EXPECT_EQ(Given("K1", "4567"), 1);
  EXPECT_EQ(trace_.Take(), "");
}

TEST_P(IndirectStateTest, AgreesWithTheRuleOnRandomTables) {
  RandomCases random;
  const auto text = [&](int size) {
    std::string digits;
    while (size-- > 0) digits += random.OneOf({'4', '4', '4', '4', '5', 'F', 'f'});
    return digits;
  };
  for (int round = 0; round < 5000 && !HasFailure(); ++round) {
    for (int slot = 0; slot < kSlots; ++slot) {
      std::string pattern = text(random.Below(12));
      const std::size_t filled = random.Below(8) == 0 ? 11 : 10;
      if (random.Below(4) != 0) pattern.resize(filled, random.Below(9) == 0 ? 'f' : 'F');
      Put(slot, random.Below(5) == 0 ? "NOTDEFINED" : "F1", random.OneOf({"K", "K1", "K1"}),
          pattern);
    }
    const std::string card = text(random.Below(14));
    EXPECT_EQ(Given("K1", card), Expected("K1", card)) << "card " << card << " round " << round;
  }
}

}  // namespace
