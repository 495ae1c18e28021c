#include <algorithm>
#include <cstddef>
#include <tuple>

#include "support/random_cases.h"
#include "support/served_home.h"
#include "tools/voatm/ask/cash_sweep.h"
#include "tools/voatm/ask/observation.h"
#include "tools/voatm_output.h"
#include "vodebugutil.h"

namespace {

// What counts as paid adds up; a sweep says of each amount what a single request says.
TEST(Plan, PaidMeansTheWholeAmountInASweepToo) {
  Observation::Trace()->to_callback([](void*, int, const char*) {}, nullptr);
  RandomCases random;
  for (int i = 0; i < 1000; ++i) {
    CashRequest request{"NDC+ATM", 978, random.OneOf({5, 40}), {}};
    SetCassettes(&request, random.Row({Words("A:20:978:Y A:50:978:N A:50:978:Y"),
                                       Words("B:50:978:Y B:40:978:Y B:10:840:Y"),
                                       Words("C:100:978:Y C:0:978:Y C:20:978:N")}));
    const char* const logic = random.OneOf({"01010100", "00000000", "02000000", "00010000"});
    const LogicOf logic_of = [&](int) { return logic; };
    const int amount = 10 + 10 * random.Below(50);
    const CashOutcome outcome = Pay(request, logic, amount);
    int sum = 0, foreign = 0;
    for (std::size_t at = 0; at < 3 && !outcome.logic.empty(); ++at) {
      const DenomInfo& cassette = request.cassettes[at];
      const int notes = std::stoi(outcome.logic.substr(2 * at, 2));
      const bool counts = cassette.Code == request.currency && cassette.Value > 0;
      (counts ? sum : foreign) += notes * std::max(cassette.Value, 1);
    }
    const bool paid = outcome.payment == Payment::kPaid;
    EXPECT_EQ(paid, outcome.code == 0 && sum == amount && foreign == 0) << outcome.logic;
    const SweepRun last = Sweep(request, logic_of, {amount - 1, amount, 1}).back();
    EXPECT_EQ(last.paid, paid);
    EXPECT_EQ(last.configured, outcome.logic == logic ? "pays" : "does not pay");
    EXPECT_EQ(last.to, amount);
  }
}

// Each combination says of each amount what a request without these cassettes says.
TEST(Plan, EmptyCassettesPayAsThoseThatCannotBeUsed) {
  RandomCases random;
  for (int i = 0; i < 50; ++i) {
    CashRequest request{"D912ATM", 978, 40, {}};
    SetCassettes(&request, {"A:20:978:Y", "C:10:978:Y", "D:5:840:Y", "E:10:978:N", "H:50:978:Y"});
    const LogicOf logic_of = [](int) { return "0100000000000000"; };
    const int from = 10 * (1 + random.Below(30));
    const AmountRange range = {from, from + 25, 5};
    const std::vector<EmptyCase> cases = SweepEmpty(request, logic_of, range);
    ASSERT_EQ(cases.size(), 8U);
    const EmptyCase& each = cases[static_cast<std::size_t>(random.Below(8))];
    for (const char letter : each.empty) {
      request.cassettes[static_cast<std::size_t>(letter - 'A')].Status = 'N';
    }
    int paid = 0;
    for (std::size_t at = 0; at < 6; ++at) {
      const int amount = range.Amounts()[at];
      const Payment fate = Pay(request, logic_of(amount), amount).payment;
      EXPECT_EQ(each.fates[at], fate) << each.empty << amount;
      paid += fate == Payment::kPaid ? 1 : 0;
      const bool was_paid = cases.front().fates[at] == Payment::kPaid;
      EXPECT_EQ(std::count(each.lost.begin(), each.lost.end(), amount),
                was_paid && fate != Payment::kPaid ? 1 : 0);
    }
    EXPECT_EQ(each.paid, paid);
  }
  EXPECT_EQ(RunsOf({10, 20, 40, 60, 70, 80}, 10), "10, 20, 40, 60-80");
}

TEST(Plan, TheAmountsNearbyAreTheNearestOfAllThatArePaid) {
  RandomCases random;
  for (int i = 0; i < RandomCases::Rounds(10); ++i) {
    CashRequest request{"NDC+ATM", 978, random.OneOf({2, 5}), {}};
    SetCassettes(&request, random.Row({Words("A:20:978:Y A:500:978:Y A:500:840:Y"),
                                       Words("B:50:978:Y B:300:978:Y B:70:978:N")}));
    const LogicOf logic_of = [&](int) { return request.NoLogic(); };
    const int amount = 1 + random.Below(1500);
    std::vector<int> paid;
    for (int each = 1; each < 5000; ++each) {
      const bool is_paid = Pay(request, logic_of(each), each).payment == Payment::kPaid;
      if (is_paid && each != amount) paid.push_back(each);
    }
    const auto above = std::upper_bound(paid.begin(), paid.end(), amount);
    const std::vector<int> nearest(above - std::min<std::ptrdiff_t>(2, above - paid.begin()),
                                   above + std::min<std::ptrdiff_t>(2, paid.end() - above));
    EXPECT_EQ(PaidNearby(request, logic_of, amount), nearest) << amount;
  }
}

TEST(Plan, SaysWhyAnAmountIsNotPaid) {
  for (const auto& [cassettes, logic, amount, meaning] :
       {std::tuple{"A:20:840:Y B:50:978:N", "00000000", 20,
                   "no cassette of currency 978 can be used"},
        {"A:20:978:Y B:50:978:Y", "00000000", 30,
         "cassette A (20) stands in the way: its notes are too large"},
        {"A:20:978:Y B:50:978:Y", "00000000", 50000,
         "cassette B (50) stands in the way: the plan needs too many notes"},
        {"A:20:978:Y", "none", 20, "the configured logic is no whole number"},
        {"A:20:978:Y B:10:840:Y", "01010000", 20,
         "the logic takes notes without a value, or of another currency"},
        {"A:5:978:Y", "00000000", 500,
         "the logic does not add up to the amount: it gives 50 of 500"}}) {
    CashRequest request{"NDC+ATM", 978, 200, {}};
    SetCassettes(&request, Words(cassettes));
    EXPECT_EQ(Pay(request, logic, amount).meaning, meaning) << cassettes;
  }
}

constexpr char kGiven[] = " --model NDC+ATM --max-notes 40 A:20:036:Y B:50:036:Y D:10:36:N";

// Numbers are decimal digits, on the command line and in a file; what cannot count is refused.
TEST(Plan, TakesDecimalNumbersAndWhatGoesTogether) {
  const TestHome home;
  struct Case {
    const char* arguments;
    int code;
  };
  for (const auto& [arguments, code] : {
           Case{"--currency 036 --amount 050", 0},
           {"--currency 36 --amount 70 --logic 01010000", 0},
           {"--currency 36 --amount 30", 1},
           {"--currency 36 --amount 0x46", 2},
           {"--currency 36 --amount -70", 2},
           {"--currency 36 --amount 0", 2},
           {"--currency 36 --amount 4294967366", 2},
           {"--currency 36 --amount 70 --sweep 10:70:10", 2},
           {"--currency 36 --sweep 70:10", 2},
           {"--currency 36 --sweep 1:2000000000", 2},
           {"--currency 36 --amount 70 --empty", 2},
           {"--currency 36 --sweep 20:50:30 --html page", 2},
           {"--currency 36 --sweep 20:50:30 --empty", 0},
           {"--currency 36 --sweep 1:250000 --empty", 1},
           {"--currency 36 --sweep 1:250001 --empty", 2},
           {"--currency 36 --sweep 20:50 --empty", 1},
           {"--currency 36 --sweep 20:50:30", 0},
           {"--currency 36 --amount 70 --scope A B C COMMON", 2},
           {"--currency 36 --amount 70 --index 7", 2},
           {"--currency 36 --amount 20 --logic 01000000 --logic-name CASH --scope A B C D", 2},
           {"--currency 36 --amount 70 --logic 0101", 2},
           {"--amount 70", 2},
       }) {
    const Output output = Voatm("plan " + std::string(arguments) + kGiven);
    EXPECT_EQ(output.code, code) << arguments << output.text;
  }
  const std::string looked_up =
      "plan --currency 978 --amount 100 --max-notes 40 --model NDC+ATM "
      "A:20:978:Y C:100:978:Y --logic-name CASH --scope HARBOUR S S S";
  EXPECT_EQ(
      Shell("VODIR_HOME=none " BUILD_DIRECTORY "/voatm " + looked_up + " --home " SAMPLE_HOME).code,
      0);
  const char* const without = "plan --currency 36 --max-notes 9 --amount 20 ";
  EXPECT_EQ(Voatm(without + std::string("A:20:36:Y")).code, 2);
  for (const char* cassette :
       {"A:20:36", "AB:20:36:Y", "A:20:36:YY", "A:20:36:X", "A::36:Y", "A:20:36:Y:"}) {
    EXPECT_EQ(Voatm(without + std::string("--model NDC+ATM ") + cassette).code, 2) << cassette;
  }
  const char* const eight = "plan --currency 36 --max-notes 9 --amount 90 E:90:36:Y --model ";
  EXPECT_EQ(Voatm(eight + std::string("D912ATM")).code, 0);
  EXPECT_EQ(Voatm(eight + std::string("NDC+ATM")).code, 2);
  for (const auto& [file, code] : {
           Case{R"({"amount": 50, "currency": 36, "max_notes": 40})", 0},
           {R"({"amount": 70.9, "currency": 36, "max_notes": 40})", 2},
           {R"({"amount": 4294967366, "currency": 36, "max_notes": 40})", 2},
           {R"({"amount": true, "currency": 36, "max_notes": 40})", 2},
           {R"({"amount": 7e1, "currency": 36, "max_notes": 40})", 2},
           {R"({"amount": 70, "currency": 36, "max_notes": 40, "notes": 1})", 2},
           {R"([70])", 2},
           {R"({"amount": 70,)", 2},
           {R"({"amount": 70, "currency": 36, "max_notes": 40, "cassettes": [1]})", 2},
       }) {
    home.Write("plan.json", file);
    const bool cassettes = std::string(file).find("cassettes") != std::string::npos;
    const Output output = Voatm("plan --model NDC+ATM --file " + home.path() + "/plan.json" +
                                (cassettes ? "" : " A:20:036:Y B:50:036:Y"));
    EXPECT_EQ(output.code, code) << file << output.text;
    EXPECT_EQ(output.text.find("plan.json") != std::string::npos, code == 2) << output.text;
  }
  for (const auto& [file, said] :
       {std::pair{"{\n ]", "plan.json:2:2"}, {"[70]", "not an object of JSON"}}) {
    home.Write("plan.json", file);
    const std::string text = Voatm("plan --file " + home.path() + "/plan.json").text;
    EXPECT_NE(text.find(said), std::string::npos) << text;
  }
}

}  // namespace
