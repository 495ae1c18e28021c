#include "ask/cash_plan.h"

#include <cstring>

#include "ask/observation.h"
#include "options.h"

namespace {

// Holds any logic that the library writes.
using LogicBuffer = char[32];

std::string CassetteName(const DenomInfo& cassette) {
  return std::string(1, cassette.Id) + " (" + std::to_string(cassette.Value) + ")";
}

int NotesAt(const std::string& logic, std::size_t position) {
  return 2 * position < logic.size() ? ReadNumber(logic.substr(2 * position, 2)).value_or(0) : 0;
}

// What a logic gives of the request's currency, and whether it takes notes that do not count.
struct Sum {
  long long amount = 0;
  bool foreign = false;
};

Sum SumOf(const CashRequest& request, const std::string& logic) {
  Sum sum;
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const int notes = NotesAt(logic, i);
    const DenomInfo& cassette = request.cassettes[i];
    if (cassette.Code == request.currency && cassette.Value > 0) {
      sum.amount += static_cast<long long>(notes) * cassette.Value;
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
    outcome->meaning = "the logic takes notes without a value, or of another currency";
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
  const auto offset = static_cast<std::size_t>(code - kFirstCassette);
  if (offset >= 2 * kCassettes) return "an unknown code";
  const DenomInfo& cassette = request.cassettes[offset / 2];
  return "cassette " + CassetteName(cassette) + " stands in the way: " +
         (offset % 2 == 0 ? "the plan needs too many notes" : "its notes are too large");
}

DenomInfo CassetteOf(const CashRequest& request, const std::string& text) {
  const std::vector<std::string> parts = Split(text, ':');
  const bool complete = parts.size() == 4 && text.back() != ':' && parts[0].size() == 1 &&
                        parts[3].size() == 1 && std::strchr("YN@", parts[3][0]) != nullptr;
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
  constexpr const char* kNames[] = {"paid", "falls short", "refused", "not configured"};
  return kNames[static_cast<std::size_t>(payment)];
}

std::string DescribeLogic(const CashRequest& request, const std::string& logic) {
  std::vector<std::string> parts;
  for (std::size_t i = 0; i < request.positions(); ++i) {
    const int notes = NotesAt(logic, i);
    if (notes == 0) continue;
    parts.push_back(std::to_string(notes) + " x " + CassetteName(request.cassettes[i]));
  }
  return (parts.empty() ? "no notes" : Joined(parts, " + ")) + " = " +
         std::to_string(SumOf(request, logic).amount);
}

CashOutcome Pay(const CashRequest& request, const std::optional<std::string>& logic, int amount) {
  CashOutcome outcome;
  if (!logic) {
    outcome.meaning = "no logic can be read for the amount; see voatm explain displogic";
    return outcome;
  }
  auto cassettes = request.cassettes;
  std::string amount_text = std::to_string(amount);
  LogicBuffer buffer = {};
  logic->copy(buffer, sizeof buffer - 1);
  VoATMUtil util;
  util.dptr = Observation::Trace();
  outcome.code = util.CheckCashAvailability(request.model.c_str(), amount_text.data(), buffer,
                                            request.currency, cassettes.data(), request.max_notes);
  if (outcome.code == 0) {
    outcome.logic = buffer;
    Judge(request, amount, &outcome);
  } else {
    outcome.payment = Payment::kRefused;
    outcome.meaning = MeaningOf(request, outcome.code);
  }
  return outcome;
}

const char* FateOf(const std::optional<std::string>& configured, const CashOutcome& outcome) {
  if (!configured) return "none";
  return outcome.code == 0 && outcome.logic == *configured ? "pays" : "does not pay";
}
