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
  ExpectOutputs({
      {"plan --amount 30 " + kConfigured, R"(
configured  01000001: 1 x A (20) + 1 x D (10) = 30, ./cfg/atm/displogic/HARBOUR_displogic.cfg:14
            asks cassette D (10), which cannot be used
outcome     refused, code 302: cassette A (20) stands in the way: its notes are too large
in full     20 50 60
=> 1
)"},
      {"plan --amount 50 " + kCassettes + " --json | tr -d ' \\n'",
       R"(
{"amount":50,"configured":null,"outcome":"paid","code":0,"meaning":"","logic":"00010000",)"
       R"("notes":"1xB(50)=50","nearby":[20,40,100,120]}=> 0
)"},
      {"plan --sweep 20:60:20 " + kConfigured, R"(
voatm: 1 of 3 amounts are not paid in full
FROM TO AMOUNTS PAID CONFIGURED PLANNED
  20 20       1 yes  pays       pays
  40 40       1 no   none       pays
  60 60       1 yes  pays       falls short
=> 1
)"},
      {"plan --amount 60 " + kCassettes + " A:5:978:Y",
       "\nvoatm: cassette \"A:5:978:Y\" is given twice; see voatm --help\n=> 2\n"},
  });
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
      const DenomInfo& cassette = request.cassettes[at];
      const int notes = std::stoi(outcome.logic.substr(2 * at, 2));
      if (cassette.Code == request.currency) sum += notes * cassette.Value;
    }
    const bool paid = outcome.payment == Payment::kPaid;
    EXPECT_TRUE(!paid || sum == amount) << outcome.logic;
    const bool foreign = outcome.meaning == "the logic takes notes of another currency";
    EXPECT_TRUE(outcome.payment != Payment::kFallsShort || sum != amount || foreign);
    EXPECT_EQ(Sweep(library.util, request, logic_of, amount - 1, amount, 1).back().paid, paid);
  }
}

}  // namespace
