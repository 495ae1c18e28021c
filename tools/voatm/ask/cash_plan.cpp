#include "ask/cash_plan.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <numeric>
#include <sstream>

#include "ask/observation.h"
#include "options.h"

namespace {

constexpr char kOutsideLogic = '@';

// Holds any logic that the library writes.
using LogicBuffer = char[32];

std::string NameOf(const DenomInfo& cassette) {
  return std::string(1, cassette.Id) + " (" + std::to_string(cassette.Value) + ")";
}

int NotesAt(const std::string& logic, std::size_t position) {
  return 2 * position < logic.size() ? ReadNumber(logic.substr(2 * position, 2)).value_or(0) : 0;
}

// What a logic gives of the request's currency, and whether it takes notes of another one.
struct Sum {
  long long amount = 0;
  bool foreign = false;
};

Sum SumOf(const CashRequest& request, const std::string& logic) {
  Sum sum;
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const int notes = NotesAt(logic, i);
    if (request.cassettes[i].Code == request.currency) {
      sum.amount += static_cast<long long>(notes) * request.cassettes[i].Value;
    } else if (notes > 0) {
      sum.foreign = true;
    }
  }
  return sum;
}

// A returned 0 does not promise the amount: that is the driver's to see, and so ours.
void Judge(const CashRequest& request, int amount, CashOutcome* outcome) {
  const Sum sum = SumOf(request, outcome->logic);
  outcome->payment = Payment::kFallsShort;
  if (sum.foreign) {
    outcome->meaning = "the logic takes notes of another currency";
  } else if (sum.amount != amount) {
    outcome->meaning = "the logic does not add up to the amount: it gives " +
                       std::to_string(sum.amount) + " of " + std::to_string(amount);
  } else {
    outcome->payment = Payment::kPaid;
  }
}

// What the library's result says.
std::string MeaningOf(const CashRequest& request, int code) {
  constexpr int kFirstCassette = 301;  // two codes a cassette
  if (code == 40) return "the configured logic is no whole number";
  if (code == 108) {
    return "no cassette of currency " + std::to_string(request.currency) + " can be used";
  }
  const int offset = code - kFirstCassette;
  if (offset < 0 || offset >= 2 * static_cast<int>(kCassettes)) return "an unknown code";
  const DenomInfo& cassette = request.cassettes[static_cast<std::size_t>(offset / 2)];
  return "cassette " + NameOf(cassette) + " stands in the way: " +
         (offset % 2 == 0 ? "the plan needs too many notes" : "its notes are too large");
}

CashOutcome PayWith(const CashRequest& request, int amount, const std::string& configured) {
  auto cassettes = request.cassettes;
  std::string amount_text = std::to_string(amount);
  LogicBuffer logic = {};
  configured.copy(logic, sizeof logic - 1);
  VoATMUtil util;
  util.dptr = Observation::Trace();
  CashOutcome outcome;
  outcome.code = util.CheckCashAvailability(request.model.c_str(), amount_text.data(), logic,
                                            request.currency, cassettes.data(), request.max_notes);
  if (outcome.code == 0) {
    outcome.logic = logic;
    Judge(request, amount, &outcome);
  } else {
    outcome.payment = Payment::kRefused;
    outcome.meaning = MeaningOf(request, outcome.code);
  }
  return outcome;
}

CashOutcome PayConfigured(const CashRequest& request, const std::optional<std::string>& logic,
                          int amount) {
  if (logic) return PayWith(request, amount, *logic);
  CashOutcome outcome;
  outcome.meaning = "no logic is configured for the amount";
  return outcome;
}

// What all amounts that can be paid are multiples of.
int UnitOf(const CashRequest& request) {
  int unit = 0;
  for (const DenomInfo& cassette : request.cassettes) {
    if (cassette.Status == 'Y' && cassette.Code == request.currency) {
      unit = std::gcd(unit, cassette.Value);
    }
  }
  return std::max(unit, 1);
}

// Without the amounts, which would keep equal runs apart.
std::string PlannedFate(const CashOutcome& outcome) {
  switch (outcome.payment) {
    case Payment::kPaid:
      return "pays";
    case Payment::kRefused:
      return "refuses, " + std::to_string(outcome.code) + ": " + outcome.meaning;
    default:
      return NameOf(outcome.payment);
  }
}

// "A:20:978:Y" in its parts.
std::vector<std::string> PartsOf(const std::string& cassette) {
  std::istringstream stream(cassette);
  std::vector<std::string> parts;
  for (std::string part; std::getline(stream, part, ':');) parts.push_back(part);
  return parts;
}

DenomInfo CassetteOf(const CashRequest& request, const std::string& text) {
  const std::vector<std::string> parts = PartsOf(text);
  const bool complete = parts.size() == 4 && parts[0].size() == 1 && parts[3].size() == 1 &&
                        std::strchr("YN@", parts[3][0]) != nullptr;
  const auto value = complete ? ReadNumber(parts[1]) : std::nullopt;
  const auto currency = complete ? ReadNumber(parts[2]) : std::nullopt;
  if (!value || !currency) {
    throw UsageError("cassette \"" + text + "\" is not like A:20:978:Y");
  }
  const char id = parts[0][0];
  if (id < 'A' || static_cast<std::size_t>(id - 'A') >= request.positions()) {
    throw UsageError("cassette \"" + text + "\": " + request.model + " has no " + id);
  }
  return {id, id - 'A' + 1, *value, *currency, parts[3][0], 0};
}

}  // namespace

void SetCassettes(CashRequest* request, const std::vector<std::string>& cassettes) {
  for (std::size_t i = 0; i < kCassettes; ++i) {
    request->cassettes[i] = {
        static_cast<char>('A' + i), static_cast<int>(i) + 1, 0, 0, kOutsideLogic, 0};
  }
  std::string given;
  for (const std::string& text : cassettes) {
    const DenomInfo cassette = CassetteOf(*request, text);
    if (given.find(cassette.Id) != std::string::npos) {
      throw UsageError("cassette \"" + text + "\" is given twice");
    }
    given += cassette.Id;
    request->cassettes[static_cast<std::size_t>(cassette.Pos - 1)] = cassette;
  }
}

const char* NameOf(Payment payment) {
  switch (payment) {
    case Payment::kPaid:
      return "paid";
    case Payment::kFallsShort:
      return "falls short";
    case Payment::kRefused:
      return "refused";
    default:
      return "not configured";
  }
}

std::string DescribeLogic(const CashRequest& request, const std::string& logic) {
  std::string text;
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const int notes = NotesAt(logic, i);
    if (notes == 0) continue;
    text +=
        (text.empty() ? "" : " + ") + std::to_string(notes) + " x " + NameOf(request.cassettes[i]);
  }
  return (text.empty() ? "no notes" : text) + " = " + std::to_string(SumOf(request, logic).amount);
}

LogicOf NoLogic(const CashRequest& request) {
  return [zeros = std::string(2 * request.positions(), '0')](int) { return zeros; };
}

CashOutcome Pay(const CashRequest& request, const LogicOf& logic_of, int amount) {
  return PayConfigured(request, logic_of(amount), amount);
}

const char* FateOf(const std::optional<std::string>& configured, const CashOutcome& outcome) {
  if (!configured) return "none";
  return outcome.code == 0 && outcome.logic == *configured ? "pays" : "does not pay";
}

std::vector<int> PaidNearby(const CashRequest& request, const LogicOf& logic_of, int amount) {
  constexpr int kSteps = 200;
  constexpr int kWanted = 2;  // on each side
  const int unit = UnitOf(request);
  std::vector<int> paid;
  for (const int direction : {-1, 1}) {
    int wanted = kWanted;
    long long candidate = amount / unit * static_cast<long long>(unit);
    if (direction < 0 && candidate < amount) candidate += unit;
    for (int step = 0; step < kSteps && wanted > 0; ++step) {
      candidate += direction * static_cast<long long>(unit);
      if (candidate <= 0 || candidate > INT_MAX) break;
      const int near = static_cast<int>(candidate);
      if (Pay(request, logic_of, near).payment != Payment::kPaid) continue;
      paid.push_back(near);
      --wanted;
    }
  }
  std::sort(paid.begin(), paid.end());
  return paid;
}

std::vector<SweepRun> Sweep(const CashRequest& request, const LogicOf& logic_of, int from, int to,
                            int step) {
  std::vector<SweepRun> runs;
  for (long long at = from; at <= to; at += step) {
    const int amount = static_cast<int>(at);
    const std::optional<std::string> logic = logic_of(amount);
    const CashOutcome outcome = PayConfigured(request, logic, amount);
    const CashOutcome plan = Pay(request, NoLogic(request), amount);
    SweepRun run = {
        amount,           amount, 1, outcome.payment == Payment::kPaid, FateOf(logic, outcome),
        PlannedFate(plan)};
    if (!runs.empty() && runs.back().FaresAs(run)) {
      runs.back().to = amount;
      ++runs.back().amounts;
    } else {
      runs.push_back(std::move(run));
    }
  }
  return runs;
}
