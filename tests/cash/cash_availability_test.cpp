#include "support/cash_model.h"
#include "support/file_test.h"
#include "support/random_cases.h"

namespace {

class CashAvailabilityTest : public FileTest {};

// Given: model, amount, logic, most notes, value and status of the cassettes of the currency; the
// others are of another one. The first output shows the logic after the call.
TEST_F(CashAvailabilityTest, GivesALogicOrTheCassetteInTheWay) {
  const auto check = [&](const std::string& given) {
    std::istringstream words(given);
    std::string model, amount, logic;
    int max_notes;
    words >> model >> amount >> logic >> max_notes;
    DenomInfo denoms[8];
    for (int i = 0; i < 8; ++i) {
      denoms[i] = {static_cast<char>('A' + i), i, 1, 978, 'Y', 0};
      if (words >> denoms[i].Value >> denoms[i].Status) denoms[i].Code = 840;
    }
    strcpy(Out(0), logic.c_str());
    return util.CheckCashAvailability(model.c_str(), amount.data(), Out(0), 840, denoms, max_notes);
  };
  ExpectDone(R"(
NDC+ATM 250 02010000 40 100Y 50Y => 0 [02010000.] <7 FixDispLogic[02010000]>
 <7 ********Notes[2]...Position[0]> <7 ********Notes[1]...Position[1]>
 <7 ********Notes[0]...Position[2]> <7 ********Notes[0]...Position[3]>
 <7 Coping the Availble denom[0]> <7 Coping the Availble denom[1]>
 <7 Final Disp Logic [ 02010000 ]>
NDC+ATM 170 0201 2 100Y 50Y => 302 [0201.] <2 Config Notes[3] > Maxnotes[2]>
 <2 CheckAmount[250] != ReqAmount[170]> <7 ********Required Dynamic Disp Check********>
 <7 ***Total Available Denom [2]> <7 DispAmount[ 100 ] Count[ 1 ] CurrencyValue[ 100 ]>
 <7 Total NoOfNotes[1]> <- Requested Amount [170]> <- Remaining Amount [70]>
 <7 Remaining Amount[70]> <7 DispAmount[ 50 ] Count[ 1 ] CurrencyValue[ 50 ]>
 <7 Total NoOfNotes[2]> <- Requested Amount [170]> <- Remaining Amount [20]>
 <7 Remaining Amount[20]> <7 Denom Id[ A ] is High>
NDC+ATM 250 02x10000 40 100Y 50Y => 40 [02x10000.] <2 Denom Config Error>)",
             check);
  ExpectDone(R"(
NDC+ATM 250 02010000 40 100Y 50N => 302 [02010000.]
NDC+ATM 170 02010000 40 20Y 50Y 100Y => 302 [02010000.]
NDC+ATM 250 02000000 40 100N 50N => 108 [02000000.]
NDC+ATM 300 02000000 40 100Y 100Y => 0 [03000000.]
NDC+ATM 300 00000300 2 50Y 50Y 100Y => 305 [00000300.]
NDC+ATM 200 01000000 40 0Y 100Y 0Y => 0 [00020000.]
D912ATM 600 0000000000000001 9 1@ 1@ 1@ 1@ 1@ 1@ 1@ 500Y => 316 [0000000000000001.]
D912ATM 100 000000000000000000000099 40 1Y 1Y 1Y 1Y 1Y 1Y 1Y 10Y => 0 [0000000000000010.0000099.])",
             [&](const std::string& given) {
               const int result = check(given);
               trace.Take();
               return result;
             });
  check("D912ATM 2147483647 0000000000000000 9999 1000000Y 1000Y 1Y");
  EXPECT_NE(trace.Take().find("Final Disp Logic [ 2147483647000000000 ]"), std::string::npos)
      << "of the twenty digits of the counts one is cut";
}

TEST_F(CashAvailabilityTest, AgreesWithTheRuleOnRandomCassettes) {
  RandomCases random;
  for (int round = 0; round < 5000 && !HasFailure(); ++round) {
    const char* const model = random.OneOf({"D912ATM", "NDC+ATM", "other"});
    CashModel rule;
    rule.max_notes = random.OneOf<std::size_t>({40, 40, 40, 5, 100, 400});
    int amount = 0;
    for (int i = 0; i < 8; ++i) {
      const int id = random.Below(20) != 0 ? 'A' + i : random.OneOf({'A', 'B', 'a', '@'});
      const int value = random.OneOf({5, 10, 20, 20, 50, 100, 70});
      rule.denoms[i] = {static_cast<char>(id),
                        i,
                        value,
                        random.OneOf({840, 840, 840, 978}),
                        random.OneOf({'Y', 'Y', 'Y', 'N', '@'}),
                        77};
      const int notes = random.OneOf({0, 0, 1, 2, 3, 12});
      if (i >= 4 && model[0] == 'N') continue;
      rule.logic += (notes < 10 ? "0" : "") + std::to_string(notes);
      if (rule.denoms[i].Code == 840) amount += value * notes;
    }
    if (random.Below(2) == 0) amount = random.Below(400) * 5;
    DenomInfo denoms[8];
    memcpy(denoms, rule.denoms, sizeof denoms);
    char logic[17];
    strcpy(logic, rule.logic.c_str());
    const int result = util.CheckCashAvailability(model, std::to_string(amount).data(), logic, 840,
                                                  denoms, static_cast<int>(rule.max_notes));
    EXPECT_EQ(result, rule.Run(model[0] == 'D' ? 8 : 4, amount)) << "round " << round;
    EXPECT_EQ(logic, rule.logic);
    EXPECT_EQ(Done(0), "0" + rule.said.str());
    for (int i = 0; i < 8; ++i) EXPECT_EQ(denoms[i].LastDispNotes, rule.denoms[i].LastDispNotes);
  }
}

}  // namespace
