// The cash plan against its rule, and the texts around a dispense logic.
#include "support.h"
#include "support/cash_model.h"
#include "support/words.h"

namespace {

// Cassettes within the rule's bounds, or with anything in their fields.
void FillCassettes(FuzzedDataProvider& input, bool bounded, DenomInfo (&denoms)[8]) {
  int position = 0;
  for (DenomInfo& denom : denoms) {
    denom.Id = static_cast<char>('A' + position);
    if (input.ConsumeIntegral<unsigned char>() % 8 == 0) {
      denom.Id = static_cast<char>(input.ConsumeIntegralInRange<int>('?', 'j'));
    }
    denom.Pos = ++position;
    denom.Value = bounded ? input.ConsumeIntegralInRange(1, 1000) : input.ConsumeIntegral<int>();
    denom.Code = input.PickValueInArray({840, 840, 840, 978});
    denom.Status = input.PickValueInArray({'Y', 'Y', 'N', '@'});
    denom.LastDispNotes =
        bounded ? input.ConsumeIntegral<unsigned char>() : input.ConsumeIntegral<int>();
  }
}

// What was said, as the rule shows it.
std::string Shown(const std::string& traces) {
  std::string shown;
  for (const std::string& line : Words(traces, '\n'))
    shown += line.empty() ? "" : " <" + line + ">";
  return shown;
}

void CheckAgainstRule(Driver& driver, CashModel& rule, const char* model, int amount) {
  DenomInfo denoms[8];
  std::memcpy(denoms, rule.denoms, sizeof denoms);
  Block logic(17);
  Block expected = logic;
  logic.Put(rule.logic);
  expected.Put(rule.logic);
  const int result =
      driver.util.CheckCashAvailability(model, Block(std::to_string(amount)).data(), logic.data(),
                                        840, denoms, static_cast<int>(rule.max_notes));
  Require(result == rule.Run(model[0] == 'D' ? 8 : 4, amount), "the result");
  if (result == 0 && rule.flagged == 0) expected.Clear();
  expected.Put(rule.logic);
  Require(logic == expected, "the logic");
  const auto same = [](const DenomInfo& a, const DenomInfo& b) {
    return a.LastDispNotes == b.LastDispNotes && a.Status == b.Status;
  };
  Require(std::equal(std::begin(denoms), std::end(denoms), rule.denoms, same), "the cassettes");
  Require(Shown(driver.trace.Take()) == rule.said.str(), "what is said");
}

// Outside the rule's bounds a result is still one of those stated.
void CheckResults(Driver& driver, FuzzedDataProvider& input, DenomInfo* denoms, const char* model) {
  const std::string text = TextOf(input, 40);
  Block logic(std::max<std::size_t>(text.size() + 1, 17));
  logic.Put(text);
  const Block before = logic;
  const int result =
      driver.util.CheckCashAvailability(model, Block(TextOf(input, 12)).data(), logic.data(), 840,
                                        denoms, input.ConsumeIntegral<int>());
  const bool whole = text.find_first_not_of("0123456789") == std::string::npos;
  Require(whole == (result != 40), "a logic of digits");
  Require(result == 0 || result == 40 || result == 108 || (result >= 301 && result <= 316),
          "a result that is stated");
  Require(
      result == 0 ? logic.Text().size() <= std::max<std::size_t>(text.size(), 16) : logic == before,
      "the logic changes on 0 only");
}

// The record of the notes: a count of 0 leaves the old one.
void CheckDetails(Driver& driver, const std::string& logic, const char* model, int number) {
  const std::size_t positions = model[0] == 'D' ? 8 : model[0] == 'N' ? 4 : 0;
  AtmDenomStatusMsg message;
  std::memset(&message, '#', sizeof message);
  AtmDenomStatusMsg expected = message;
  const int result = driver.util.LoadDenomDetails(Block(logic).data(), "three", "two",
                                                  Block(logic).data(), model, number, 1, &message);
  Require(result == (positions != 0 ? 1 : -1), "whether the model is known");
  for (std::size_t i = 0; i < positions && 2 * i < logic.size(); ++i) {
    const int notes = atoi(logic.substr(2 * i, 2).c_str());
    if (notes != 0) expected.DenomNotes[i] = notes;
  }
  Require(std::memcmp(message.DenomNotes, expected.DenomNotes, sizeof message.DenomNotes) == 0,
          "the notes");
  Require(message.DenomText1 == logic.substr(0, 16), "the text, cut");
  char digits[12];
  std::snprintf(digits, sizeof digits, "%06d", number);
  if (positions != 0) Require(std::string(digits).substr(0, 7) == message.DenomNum1, "six digits");
}

}  // namespace

FUZZ_TARGET(cash) {
  FuzzedDataProvider input(bytes, size);
  Driver driver;
  const char* const model = input.PickValueInArray({"NDC+ATM", "D912ATM", "other"});
  const bool bounded = input.ConsumeBool();
  CashModel rule;
  std::memset(rule.denoms, 0, sizeof rule.denoms);
  FillCassettes(input, bounded, rule.denoms);
  const int amount =
      bounded ? input.ConsumeIntegralInRange(0, 40000) : input.ConsumeIntegral<int>();
  if (bounded) {
    rule.max_notes = input.ConsumeIntegral<unsigned char>();
    for (auto length = input.ConsumeIntegralInRange(0, 16); length > 0; --length) {
      rule.logic += static_cast<char>(input.ConsumeIntegralInRange<int>('0', '9'));
    }
    CheckAgainstRule(driver, rule, model, amount);
  } else {
    CheckResults(driver, input, rule.denoms, model);
  }
  CheckDetails(driver, TextOf(input, 20), model, amount);
  return 0;
}
