// What the cassettes pay, as the command shows it and as a sum.
#include "support/driver_test.h"
#include "support/random_cases.h"
#include "tools/voatm/cash_plan.h"
#include "tools/voatm_output.h"

namespace {

const std::string kCassettes =
    "--model NDC+ATM --currency 978 --max-notes 40 A:20:978:Y B:50:978:Y C:100:978:Y D:10:978:N";
const std::string kConfigured =
    kCassettes + " --logic-name CASH --scope HARBOUR BRANCH ATM00001 COMMON";

TEST(PlanCommand, SaysWhatIsPaidAndWhyNot) {
  // clang-format off
  ExpectOutputs({
      {"plan --amount 30 " + kConfigured,
       R"(
configured  01000001: 1 x A (20) + 1 x D (10) = 30, ./cfg/atm/displogic/HARBOUR_displogic.cfg:14
            asks cassette D (10), which cannot be used
outcome     refused, code 302: cassette A (20) stands in the way: its notes are too large
in full     20 50 60
=> 1
)"},
      {"plan --amount 170 " + kConfigured + " --json | tr -s '\\n ' ' '",
       R"(
{ "amount": 170, "configured": { "logic": "01010100", "notes": "1 x A (20) + 1 x B (50) + 1 x C (100) = 170", "source": "./cfg/atm/displogic/HARBOUR_displogic.cfg:20", "fault": "" }, "outcome": "paid", "code": 0, "meaning": "", "logic": "01010100", "notes": "1 x A (20) + 1 x B (50) + 1 x C (100) = 170", "nearby": [ 60, 100, 200, 500 ] } => 0
)"},
      {"plan --amount 60 " + kCassettes,
       R"(
planned     00010000: 1 x B (50) = 50
outcome     falls short: the logic does not add up to the amount: it gives 50 of 60
in full     40 50 100 120
=> 1
)"},
      {"plan --sweep 10:60:10 " + kConfigured,
       R"(
voatm: 3 of 6 amounts are not paid in full
FROM TO AMOUNTS PAID CONFIGURED                                 PLANNED
  10 10       1 no   none                                       refuses, 302: cassette A (20) stands in the way: its notes are too large
  20 20       1 yes  pays                                       pays
  30 30       1 no   asks cassette D (10), which cannot be used refuses, 302: cassette A (20) stands in the way: its notes are too large
  40 40       1 no   none                                       pays
  50 50       1 yes  pays                                       pays
  60 60       1 yes  pays                                       falls short
=> 1
)"},
      {"plan --amount 60 " + kCassettes + " A:5:978:Y",
       R"(
voatm: cassette "A:5:978:Y" is given twice; see voatm --help
=> 2
)"},
  });
  // clang-format on
}

// What counts as paid adds up; a sweep says of each amount what a single request says.
TEST(Plan, PaidMeansTheWholeAmountInASweepToo) {
  Unattached library;
  RandomCases random;
  for (int i = 0; i < 1000; ++i) {
    CashRequest request{"NDC+ATM", 978, random.OneOf({5, 40}), {}};
    const Texts cassettes = random.Row({Words("A:20:978:Y A:50:978:N A:50:978:Y"),
                                        Words("B:50:978:Y B:40:978:Y B:10:840:Y"),
                                        Words("C:100:978:Y C:0:978:Y C:20:978:N")});
    SetCassettes(&request, cassettes);
    const char* const logic = random.OneOf({"01010100", "00000000", "02000000", "00010000"});
    const LogicOf logic_of = [&](int) { return logic; };
    const int amount = 10 + 10 * random.Below(50);
    const CashOutcome outcome = Pay(library.util, request, logic_of, amount);
    int sum = 0;
    for (std::size_t at = 0; at < 3 && !outcome.logic.empty(); ++at) {
      const bool counts = request.cassettes[at].Code == request.currency;
      sum +=
          std::stoi(outcome.logic.substr(2 * at, 2)) * (counts ? request.cassettes[at].Value : 0);
    }
    const bool paid = outcome.payment == Payment::kPaid;
    EXPECT_TRUE(!paid || sum == amount) << outcome.logic;
    const bool foreign = outcome.meaning == "the logic takes notes of another currency";
    EXPECT_TRUE(outcome.payment != Payment::kFallsShort || sum != amount || foreign);
    const auto runs = Sweep(library.util, request, logic_of, amount - 1, amount, 1);
    EXPECT_EQ(runs.back().paid, paid) << amount;
    EXPECT_EQ(runs.front().from, amount - 1);
    EXPECT_EQ(runs.back().to, amount);
  }
}

}  // namespace
