#include "support/driver_test.h"
#include "support/random_cases.h"
#include "tools/voatm/ask/cash_plan.h"

namespace {

// What counts as paid adds up; a sweep says of each amount what a single request says.
TEST(Plan, PaidMeansTheWholeAmountInASweepToo) {
  Unattached library;
  RandomCases random;
  for (int i = 0; i < 1000; ++i) {
    CashRequest request{"NDC+ATM", 978, random.OneOf({5, 40}), {}};
    SetCassettes(&request, random.Row({Words("A:20:978:Y A:50:978:N A:50:978:Y"),
                                       Words("B:50:978:Y B:40:978:Y B:10:840:Y"),
                                       Words("C:100:978:Y C:0:978:Y C:20:978:N")}));
    const char* const logic = random.OneOf({"01010100", "00000000", "02000000", "00010000"});
    const LogicOf logic_of = [&](int) { return logic; };
    const int amount = 10 + 10 * random.Below(50);
    const CashOutcome outcome = Pay(library.util, request, logic_of, amount);
    int sum = 0, foreign = 0;
    for (std::size_t at = 0; at < 3 && !outcome.logic.empty(); ++at) {
      const DenomInfo& cassette = request.cassettes[at];
      const int notes = std::stoi(outcome.logic.substr(2 * at, 2));
      (cassette.Code == request.currency ? sum : foreign) += notes * cassette.Value;
    }
    const bool paid = outcome.payment == Payment::kPaid;
    EXPECT_EQ(paid, outcome.code == 0 && sum == amount && foreign == 0) << outcome.logic;
    EXPECT_EQ(Sweep(library.util, request, logic_of, amount - 1, amount, 1).back().paid, paid);
  }
}

}  // namespace
