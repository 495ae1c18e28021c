#include <vector>

#include "support/file_test.h"
#include "support/random_cases.h"

namespace {

// The rule of cash availability, step by step and as plain as it reads, for currency 840.
struct CashModel {
  std::string logic;
  std::size_t max_notes;
  DenomInfo denoms[8];
  std::ostringstream said;
  int flagged = 0;  // code of the cassette in the way

  template <typename... Parts>
  void Say(const Parts&... parts) {
    ((said << " <") << ... << parts) << '>';
  }

  int NotesAt(std::size_t i) const { return std::stoi(logic.substr(2 * i, 2)); }

  // The cassettes that can pay, in position order.
  std::vector<DenomInfo> Usable(int requested, bool& replan) {
    int notes = 0, amount = 0;
    for (std::size_t i = 0; i < logic.size() / 2; ++i) {
      DenomInfo& denom = denoms[i];
      denom.LastDispNotes = NotesAt(i);
      if ((NotesAt(i) == 0 && denom.Status == '@') || denom.Code != 840) continue;
      notes += NotesAt(i);
      amount += denom.Value * NotesAt(i);
      if (notes <= static_cast<int>(max_notes)) continue;
      Say("2 Config Notes[", notes, "] > Maxnotes[", max_notes, "]");
      replan = true;
    }
    if (amount != requested) {
      Say("2 CheckAmount[", amount, "] != ReqAmount[", requested, "]");
      replan = true;
    }
    const bool fixed = !replan;
    if (fixed) Say("7 FixDispLogic[", logic, "]");
    for (std::size_t i = 0; fixed && i < logic.size() / 2; ++i) {
      Say("7 ********Notes[", NotesAt(i), "]...Position[", i, "]");
    }
    std::vector<DenomInfo> usable;
    const bool pays_nothing = logic.find_first_not_of('0') == std::string::npos;
    for (std::size_t i = 0; i < logic.size() / 2; ++i) {
      if ((fixed && pays_nothing) || denoms[i].Code != 840) continue;
      if (denoms[i].Status == 'Y') {
        if (fixed) Say("7 Coping the Availble denom[", i, "]");
        usable.push_back(denoms[i]);
      } else if (fixed && denoms[i].Status == 'N') {
        Say("7 ********Notes[", NotesAt(i), "]...Position[", i, "]");
        if (NotesAt(i) != 0) replan = true;
      }
    }
    return usable;
  }

  void Flag(char id, const char* kind, int offset) {
    Say("7 Denom Id[ ", id, " ] is ", kind);
    flagged = 300 + 2 * (id - 'A') + offset;
  }

  void FlagHigh(const std::vector<DenomInfo>& usable, int remainder) {
    for (const DenomInfo& denom : usable) {
      if (denom.Value > remainder) return Flag(denom.Id, "High", 2);
    }
  }

  void Plan(int requested, const std::vector<DenomInfo>& usable, std::vector<DenomInfo>& sorted) {
    int remaining = requested, remainder = 0;
    std::size_t total = 0;
    for (DenomInfo& denom : sorted) {
      const bool last = &denom == &sorted.back();
      const int notes = remaining / denom.Value;
      if (notes < 1) {
        Say("7 Count [", notes, "]");
        if (last && requested % denom.Value != 0) FlagHigh(usable, remainder);
        continue;
      }
      denom.LastDispNotes = notes;
      Say("7 DispAmount[ ", denom.Value * notes, " ] Count[ ", notes, " ] CurrencyValue[ ",
          denom.Value, " ]");
      total += static_cast<std::size_t>(notes);
      remaining -= denom.Value * notes;
      remainder = requested % denom.Value;
      Say("7 Total NoOfNotes[", total, "]");
      Say("- Requested Amount [", requested, "]");
      Say("- Remaining Amount [", remainder, "]");
      Say("7 Remaining Amount[", remainder, "]");
      if (remainder == 0 && remaining == 0 && total <= max_notes) {
        return Say("7 Requested Amount [0] is Reached");
      }
      if (last && remainder != 0) FlagHigh(usable, remainder);
      if (total > max_notes) Flag(denom.Id, "Low", 1);
    }
  }

  int Run(std::size_t cassettes, int requested) {
    bool replan = false;
    const std::vector<DenomInfo> usable = Usable(requested, replan);
    std::vector<DenomInfo> sorted = usable;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const DenomInfo& a, const DenomInfo& b) { return a.Value > b.Value; });
    if (replan) {
      Say("7 ********Required Dynamic Disp Check********");
      Say("7 ***Total Available Denom [", sorted.size(), "]");
      for (DenomInfo& denom : sorted) denom.LastDispNotes = 0;
      for (std::size_t i = 0; i < logic.size() / 2; ++i) denoms[i].LastDispNotes = 0;
      if (sorted.empty()) return 108;
      Plan(requested, usable, sorted);
    }
    if (flagged != 0) return flagged >= 301 && flagged <= 316 ? flagged : 0;
    for (std::size_t i = 0; i < logic.size() / 2; ++i) {
      for (const DenomInfo& denom : sorted) {
        if (denoms[i].Id == denom.Id) denoms[i].LastDispNotes = denom.LastDispNotes;
      }
    }
    std::string text;
    for (std::size_t i = 0; i < cassettes; ++i) {
      text += (denoms[i].LastDispNotes < 10 ? "0" : "") + std::to_string(denoms[i].LastDispNotes);
    }
    Say("7 Final Disp Logic [ ", text.substr(0, 19), " ]");
    logic = text.substr(0, 16);
    return 0;
  }
};

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
}

TEST_F(CashAvailabilityTest, AgreesWithTheRuleOnRandomCassettes) {
  RandomCases random;
  for (int round = 0; round < 100000 && !HasFailure(); ++round) {
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
