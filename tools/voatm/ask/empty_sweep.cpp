#include "ask/empty_sweep.h"

#include <algorithm>
#include <optional>

namespace {

// The combinations of some letters, those of few letters first, each in alphabetical order.
std::vector<std::string> CombinationsOf(const std::string& letters) {
  std::vector<std::string> all = {""};
  for (const char letter : letters) {
    const std::vector<std::string> without = all;
    for (const std::string& combination : without) all.push_back(combination + letter);
  }
  std::sort(all.begin(), all.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return all;
}

CashRequest Without(const CashRequest& request, const std::string& empty) {
  CashRequest left = request;
  for (DenomInfo& cassette : left.cassettes) {
    if (empty.find(cassette.Id) != std::string::npos) cassette.Status = 'N';
  }
  return left;
}

}  // namespace

double EmptyCase::Share() const {
  return fates.empty() ? 0 : static_cast<double>(paid) / static_cast<double>(fates.size());
}

EmptySweep SweepEmpty(const CashRequest& request, const LogicOf& logic_of, int from, int to,
                      int step) {
  EmptySweep sweep;
  std::vector<std::optional<std::string>> logics;  // looked up once, as files may hold them
  for (long long at = from; at <= to; at += step) {
    sweep.amounts.push_back(static_cast<int>(at));
    logics.push_back(logic_of(sweep.amounts.back()));
  }
  std::string usable;
  for (const DenomInfo& cassette : request.cassettes) {
    if (cassette.Status == 'Y' && cassette.Code == request.currency) usable += cassette.Id;
  }
  for (const std::string& empty : CombinationsOf(usable)) {
    const CashRequest left = Without(request, empty);
    EmptyCase each = {empty, {}, {}, 0};
    for (std::size_t i = 0; i < sweep.amounts.size(); ++i) {
      const auto logic = [&](int) { return logics[i]; };
      const Payment fate = Pay(left, logic, sweep.amounts[i]).payment;
      const bool is_paid = fate == Payment::kPaid;
      const bool is_lost =
          !is_paid && !empty.empty() && sweep.cases.front().fates[i] == Payment::kPaid;
      each.fates.push_back(fate);
      each.paid += is_paid ? 1 : 0;
      if (is_lost) each.lost.push_back(sweep.amounts[i]);
    }
    sweep.cases.push_back(std::move(each));
  }
  return sweep;
}

std::string RunsOf(const std::vector<int>& amounts, int step) {
  std::string text;
  for (std::size_t i = 0; i < amounts.size();) {
    std::size_t last = i;
    while (last + 1 < amounts.size() && amounts[last + 1] - amounts[last] == step) ++last;
    text += (text.empty() ? "" : ", ") + std::to_string(amounts[i]);
    if (last > i) text += (last == i + 1 ? ", " : "-") + std::to_string(amounts[last]);
    i = last + 1;
  }
  return text;
}
