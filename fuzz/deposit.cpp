// Deposits against the sum of their groups.
#include <map>
#include <optional>

#include "support.h"

namespace {

constexpr std::size_t kAmountSize = 15, kMapSize = 64;

struct Sum {
  std::string amount;
  std::string map;
};

// Returns nothing where a deposit fails.
std::optional<Sum> SumOf(const std::string& rest, const std::map<std::string, std::string>& types) {
  if (rest.size() > 16 && rest.size() != 20) return std::nullopt;
  const std::size_t group = rest.size() % 4 == 0 && rest.size() != 20 ? 4 : 5;
  Sum sum;
  long long total = 0;
  for (std::size_t at = 0; at + group <= rest.size(); at += group) {
    const auto type = types.find(rest.substr(at, 2));
    if (type == types.end() || atoi(type->second.c_str()) == 0) return std::nullopt;
    const int value = atoi(type->second.c_str());
    const int count = atoi(rest.substr(at + 2, group - 2).c_str());
    total += static_cast<long long>(value) * count;
    if (at != 0) sum.map += '|';
    sum.map.append(std::to_string(value)).append("^").append(std::to_string(count));
  }
  sum.amount = std::to_string(static_cast<int>(total)) + ".00";
  return sum;
}

// One of the characters that stand in a file without quotes.
std::string Plain(FuzzedDataProvider& input, std::size_t length) {
  constexpr char kPlain[] = "0123456789-+NILnilABab";
  std::string text;
  for (std::size_t i = 0; i < length; ++i) {
    text += kPlain[input.ConsumeIntegralInRange<std::size_t>(0, sizeof kPlain - 2)];
  }
  return text;
}

}  // namespace

FUZZ_TARGET(deposit) {
  static InputFile file({"cfg/atm/bnamap/COMMON_bnamap.cfg"});
  FuzzedDataProvider input(bytes, size);
  std::map<std::string, std::string> types;
  std::string text = "[BNA_MAPPING]\n";
  for (auto rows = input.ConsumeIntegralInRange(0, 4); rows > 0; --rows) {
    const std::string id = Plain(input, 2);
    const std::string value = Plain(input, input.ConsumeIntegralInRange<std::size_t>(1, 11));
    types.emplace(id, value);
    text.append(id).append(" ").append(value).append("\n");
  }
  file.Write(text);
  const std::string deposit = RestOf(input);
  const std::optional<Sum> sum = SumOf(deposit.empty() ? deposit : deposit.substr(1), types);

  Driver driver;
  Block amount(kAmountSize);
  Block map(kMapSize);
  Block expected_amount = amount;
  Block expected_map = map;
  if (sum.has_value()) {
    expected_amount.Put(sum->amount);
    expected_map.Clear();
    expected_map.Put(sum->map);
  }
  const int result = driver.util.GetDepositAmount("I", "G", "A", "COMMON", Block(deposit).data(),
                                                  amount.data(), map.data());
  Require(result == (sum.has_value() ? 1 : -1), "whether the deposit is known");
  Require(amount == expected_amount, "the amount");
  if (sum.has_value()) Require(map == expected_map, "value and count of each group");
  return 0;
}
