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

  std::size_t positions() const { return model == "D912ATM" ? kCassettes : kCassettes / 2; }
};

// Puts cassettes such as "A:20:978:Y" (letter, face value, currency, status) in their places.
// Throws std::invalid_argument that names the one that is wrong.
void SetCassettes(CashRequest* request, const std::vector<std::string>& cassettes);

enum class Payment { kPaid, kFallsShort, kRefused, kNotConfigured };

const char* NameOf(Payment payment);

struct CashOutcome {
  Payment payment = Payment::kNotConfigured;
  int code = 0;         // the library's
  std::string logic;    // to dispense, when the code is 0
  std::string meaning;  // of the code, and of a logic that does not add up
};

// What a configured logic is at fault with, so that a new plan is made; empty when it pays.
std::string FaultOf(const CashRequest& request, int amount, const std::string& logic);

// "1 x A (20) + 2 x C (100) = 220"
std::string DescribeLogic(const CashRequest& request, const std::string& logic);

// The logic that is configured for an amount, if one is.
using LogicOf = std::function<std::optional<std::string>(int amount)>;

// A logic without notes, for any amount: what is paid then is planned.
LogicOf NoLogic(const CashRequest& request);

// Asks the library. Its object needs a trace object only.
CashOutcome Pay(VoATMUtil& util, const CashRequest& request, const LogicOf& logic_of, int amount);

// The two amounts below and the two above that are nearest and paid in full, in ascending order.
std::vector<int> PaidNearby(VoATMUtil& util, const CashRequest& request, const LogicOf& logic_of,
                            int amount);

// Amounts one after the other that fare alike.
struct SweepRun {
  int from;
  int to;
  int amounts;
  bool paid;               // in full, by the configured logic or, where there is one, a new plan
  std::string configured;  // "pays", "none", or the fault
  std::string planned;     // "pays", or the meaning
};

std::vector<SweepRun> Sweep(VoATMUtil& util, const CashRequest& request, const LogicOf& logic_of,
                            int from, int to, int step);

#endif  // TOOLS_VOATM_ASK_CASH_PLAN_H
