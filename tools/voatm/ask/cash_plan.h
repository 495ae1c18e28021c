// What the library would pay: single amounts, those near by, and whole ranges.
#ifndef TOOLS_VOATM_ASK_CASH_PLAN_H
#define TOOLS_VOATM_ASK_CASH_PLAN_H

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "voatmutil.h"

constexpr std::size_t kCassettes = 8;

struct CashRequest {
  std::string model;
  int currency = 0;
  int max_notes = 0;
  std::array<DenomInfo, kCassettes> cassettes{};  // those that are not given have status '@'

  // Pairs of digits in a logic of the model.
  std::size_t positions() const { return model == "D912ATM" ? kCassettes : kCassettes / 2; }
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

// The logic that is configured for an amount, if one is.
using LogicOf = std::function<std::optional<std::string>(int amount)>;

// A logic without notes, for any amount: what is paid then is planned.
LogicOf NoLogic(const CashRequest& request);

// Asks the library.
CashOutcome Pay(const CashRequest& request, const LogicOf& logic_of, int amount);

// Whether the library takes the configured logic as it is: "pays", "none", or "does not pay".
const char* FateOf(const std::optional<std::string>& configured, const CashOutcome& outcome);

// The two amounts below and the two above that are nearest and paid in full, in ascending order.
std::vector<int> PaidNearby(const CashRequest& request, const LogicOf& logic_of, int amount);

// Amounts one after the other that fare alike.
struct SweepRun {
  int from;
  int to;
  int amounts;
  bool paid;               // in full, by the configured logic or, where there is one, a new plan
  std::string configured;  // the fate of the configured logic
  std::string planned;     // "pays", or what becomes of a new plan

  bool FaresAs(const SweepRun& other) const {
    return paid == other.paid && configured == other.configured && planned == other.planned;
  }
};

std::vector<SweepRun> Sweep(const CashRequest& request, const LogicOf& logic_of, int from, int to,
                            int step);

#endif  // TOOLS_VOATM_ASK_CASH_PLAN_H
