#include "ask/cash_plan.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <sstream>
#include <stdexcept>

namespace {

constexpr char kOutsideLogic = '@';
constexpr int kFirstCassetteCode = 301;
constexpr int kLastCassetteCode = 316;

// Holds any logic that the library writes.
using LogicBuffer = char[32];

int NotesAt(const std::string& logic, std::size_t position) {
  return 2 * position < logic.size() ? atoi(logic.substr(2 * position, 2).c_str()) : 0;
}

// What a logic gives of the request's currency, and whether it takes notes of another one.
struct Sum {
  long long amount = 0;
  long long notes = 0;
  bool foreign = false;
};

Sum SumOf(const CashRequest& request, const std::string& logic) {
  Sum sum;
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const int notes = NotesAt(logic, i);
    if (request.cassettes[i].Code == request.currency) {
      sum.notes += notes;
      sum.amount += static_cast<long long>(notes) * request.cassettes[i].Value;
    } else if (notes > 0) {
      sum.foreign = true;
    }
  }
  return sum;
}

std::string CassetteName(const DenomInfo& cassette) {
  return std::string(1, cassette.Id) + " (" + std::to_string(cassette.Value) + ")";
}

std::string MeaningOf(const CashRequest& request, int code) {
  if (code == 40) return "the configured logic is no whole number";
  if (code == 108) {
    return "no cassette of currency " + std::to_string(request.currency) + " can be used";
  }
  if (code < kFirstCassetteCode || code > kLastCassetteCode) {
    return "unknown code " + std::to_string(code);
  }
  const int offset = code - kFirstCassetteCode;
  return "cassette " + CassetteName(request.cassettes[static_cast<std::size_t>(offset / 2)]) +
         " stands in the way: " +
         (offset % 2 == 0 ? "the plan needs too many notes" : "its notes are too large");
}

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

CashOutcome PayWith(VoATMUtil& util, const CashRequest& request, int amount,
                    const std::string& configured) {
  auto cassettes = request.cassettes;
  std::string amount_text = std::to_string(amount);
  LogicBuffer logic = {};
  configured.copy(logic, sizeof logic - 1);
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

std::string Cause(const CashOutcome& outcome) {
  switch (outcome.payment) {
    case Payment::kPaid:
      return "pays";
    case Payment::kRefused:
      return "refuses, " + std::to_string(outcome.code) + ": " + outcome.meaning;
    default:
      return NameOf(outcome.payment);  // amounts would keep equal runs apart
  }
}

}  // namespace

void SetCassettes(CashRequest* request, const std::vector<std::string>& cassettes) {
  for (std::size_t i = 0; i < kCassettes; ++i) {
    request->cassettes[i] = {
        static_cast<char>('A' + i), static_cast<int>(i) + 1, 0, 0, kOutsideLogic, 0};
  }
  for (const std::string& text : cassettes) {
    std::istringstream stream(text);
    char id, status;
    char colons[3];
    int value, currency;
    stream >> id >> colons[0] >> value >> colons[1] >> currency >> colons[2] >> status;
    if (!stream || stream.peek() != EOF || memcmp(colons, ":::", 3) != 0 || value < 0 ||
        strchr("YN@", status) == nullptr) {
      throw std::invalid_argument("cassette \"" + text + "\" is not like A:20:978:Y");
    }
    const auto position = static_cast<std::size_t>(id - 'A');
    if (id < 'A' || position >= request->positions()) {
      throw std::invalid_argument("cassette \"" + text + "\": " + request->model + " has no " + id);
    }
    DenomInfo& cassette = request->cassettes[position];
    if (cassette.Value != 0)
      throw std::invalid_argument("cassette \"" + text + "\" is given twice");
    cassette.Value = value;
    cassette.Code = currency;
    cassette.Status = status;
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

std::string FaultOf(const CashRequest& request, int amount, const std::string& logic) {
  const Sum sum = SumOf(request, logic);
  if (sum.amount != amount) return "gives another amount";
  if (sum.notes > request.max_notes) return "has too many notes";
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const DenomInfo& cassette = request.cassettes[i];
    if (cassette.Status == 'N' && cassette.Code == request.currency && NotesAt(logic, i) > 0) {
      return "asks cassette " + CassetteName(cassette) + ", which cannot be used";
    }
  }
  return "";
}

std::string DescribeLogic(const CashRequest& request, const std::string& logic) {
  std::string text;
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const int notes = NotesAt(logic, i);
    if (notes == 0) continue;
    text += (text.empty() ? "" : " + ") + std::to_string(notes) + " x " +
            CassetteName(request.cassettes[i]);
  }
  return (text.empty() ? "no notes" : text) + " = " + std::to_string(SumOf(request, logic).amount);
}

LogicOf NoLogic(const CashRequest& request) {
  return [zeros = std::string(2 * request.positions(), '0')](int) { return zeros; };
}

CashOutcome Pay(VoATMUtil& util, const CashRequest& request, const LogicOf& logic_of, int amount) {
  const std::optional<std::string> logic = logic_of(amount);
  if (logic) return PayWith(util, request, amount, *logic);
  CashOutcome outcome;
  outcome.meaning = "no logic is configured for the amount";
  return outcome;
}

std::vector<int> PaidNearby(VoATMUtil& util, const CashRequest& request, const LogicOf& logic_of,
                            int amount) {
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
      if (Pay(util, request, logic_of, near).payment != Payment::kPaid) continue;
      paid.push_back(near);
      --wanted;
    }
  }
  std::sort(paid.begin(), paid.end());
  return paid;
}

std::vector<SweepRun> Sweep(VoATMUtil& util, const CashRequest& request, const LogicOf& logic_of,
                            int from, int to, int step) {
  std::vector<SweepRun> runs;
  for (long long at = from; at <= to; at += step) {
    const int amount = static_cast<int>(at);
    std::optional<std::string> logic = logic_of(amount);
    const std::string fault = logic ? FaultOf(request, amount, *logic) : "none";
    const CashOutcome answer = Pay(
        util, request, [&](int) { return logic; }, amount);
    const bool paid = answer.payment == Payment::kPaid;
    const std::string configured = fault.empty() ? Cause(answer) : fault;
    const std::string planned = Cause(Pay(util, request, NoLogic(request), amount));
    if (!runs.empty() && runs.back().paid == paid && runs.back().configured == configured &&
        runs.back().planned == planned) {
      runs.back().to = amount;
      ++runs.back().amounts;
    } else {
      runs.push_back({amount, amount, 1, paid, configured, planned});
    }
  }
  return runs;
}
