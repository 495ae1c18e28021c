// What the library would pay of an amount.
#ifndef TOOLS_VOATM_ASK_CASH_PLAN_H
#define TOOLS_VOATM_ASK_CASH_PLAN_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "voatmutil.h"

constexpr std::size_t kCassettes = 8;
constexpr char kOutsideLogic = '@';  // the status of a cassette that takes no part

struct CashRequest {
  std::string model;
  int currency;
  int max_notes;
  std::array<DenomInfo, kCassettes> cassettes{};  // those that are not given are outside the logic

  // Pairs of digits in a logic of the model.
  std::size_t positions() const { return model == "D912ATM" ? kCassettes : kCassettes / 2; }

  // A logic without notes: what is paid then is planned.
  std::string NoLogic() const { return std::string(2 * positions(), '0'); }

  // Whether a cassette can pay the request's currency.
  bool CanUse(const DenomInfo& cassette) const {
    return cassette.Status == 'Y' && cassette.Code == currency;
  }
};

// Puts cassettes such as "A:20:978:Y" (letter, face value, currency, status) in their places.
// Throws UsageError that names the one that is wrong.
void SetCassettes(CashRequest* request, const std::vector<std::string>& cassettes);

enum class Payment { kPaid, kFallsShort, kRefused, kNotConfigured };

const char* NameOf(Payment payment);

struct CashOutcome {
  Payment payment = Payment::kNotConfigured;
  int code = 0;         // the library's
  std::string logic;    // to dispense, when the code is 0
  std::string meaning;  // of a refusal, and of a logic that does not add up
};

// "1 x A (20) + 2 x C (100) = 220"
std::string DescribeLogic(const CashRequest& request, const std::string& logic);

// Asks the library; `logic` is the one that is configured for the amount, if one is.
CashOutcome Pay(const CashRequest& request, const std::optional<std::string>& logic, int amount);

// Whether the library takes the configured logic as it is: "pays", "none", or "does not pay".
const char* FateOf(const std::optional<std::string>& configured, const CashOutcome& outcome);

#endif  // TOOLS_VOATM_ASK_CASH_PLAN_H
