// Messages that somebody kept: what the library packed is told back, and no bytes are read behind
// the end of what is none.
#include <stdexcept>

#include "support.h"
#include "tools/voatm/ask/question.h"

namespace {

// A packed message and some of what it was made of, by field.
struct Packed {
  std::string bytes;
  std::vector<std::pair<const char*, std::string>> told;
};

template <typename Message>
std::string BytesOf(const Message& message) {
  return {reinterpret_cast<const char*>(&message), sizeof message};
}

// A text of letters that fits a field of this size.
std::string Letters(FuzzedDataProvider& input, std::size_t size) {
  std::string text = input.ConsumeRandomLengthString(size - 1);
  for (char& c : text) c = static_cast<char>('a' + static_cast<unsigned char>(c) % 26);
  return text;
}

Packed Pack(FuzzedDataProvider& input, VoATMUtil& util) {
  const std::string atm = Letters(input, sizeof AtmStatusPayload::AtmId);
  const std::string text = Letters(input, sizeof AtmStatusPayload::StatusText);
  const int number = input.ConsumeIntegralInRange(0, 999999);
  VoAtmMgrQMsg message{};
  AtmDenomStatusMsg denom{};
  VoAlertMgrMsg alert{};
  VoMsgLayout kept{};
  switch (input.ConsumeIntegralInRange(0, 5)) {
    case 0:
      util.PackAtmStatusMsg(atm.c_str(), text.c_str(), "", &message);
      return {BytesOf(message), {{"AtmId", atm}, {"StatusText", text}}};
    case 1:
      util.PackAtmLogMsg(atm.c_str(), text.c_str(), 'L', &message);
      return {BytesOf(message), {{"AtmId", atm}, {"LogText", text}, {"LogFlag", "L"}}};
    case 2:
      util.PackAtmTraceNoMsg(atm.c_str(), number, &message);
      return {BytesOf(message), {{"AtmId", atm}, {"TraceNo", std::to_string(number)}}};
    case 3:
      denom.DenomNotes[7] = number;
      util.PackAtmDenomMsg(atm.c_str(), &denom, &message);
      return {BytesOf(message), {{"AtmId", atm}, {"DenomNotes H", std::to_string(number)}}};
    case 4:
      util.PackAtmAlertMsg(atm.c_str(), text.c_str(), &alert);
      return {BytesOf(alert), {{"AlertSource", atm}, {"AlertText", text}}};
    default:
      kept.TraceNo = number;
      return {BytesOf(kept), {{"TraceNo", std::to_string(number)}}};
  }
}

// Whether the bytes are told apart; the answer is what is said of them.
bool IsToldApart(const std::string& bytes, Answer* answer) {
  static InputFile file;
  static Driver driver;
  file.Write(bytes);
  const Question& question = *FindQuestion("message");
  try {
    *answer = question.ask(driver.util, ReadInputs(question, {InputFile::kPath}));
  } catch (const std::runtime_error&) {
    return false;
  }
  return true;
}

}  // namespace

FUZZ_TARGET(message) {
  static Driver driver;
  FuzzedDataProvider input(bytes, size);
  Packed packed = Pack(input, driver.util);
  Answer answer;
  Require(IsToldApart(packed.bytes, &answer) && answer.found, "a message of the library is known");
  for (const auto& [field, value] : packed.told) {
    Require(answer.facts.contains(field) && answer.facts[field] == value,
            "what it was made of is told");
  }
  while (input.ConsumeBool()) {
    const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(0, packed.bytes.size() - 1);
    packed.bytes[at] = input.ConsumeIntegral<char>();
  }
  packed.bytes.resize(input.ConsumeIntegralInRange<std::size_t>(0, packed.bytes.size() + 9));
  IsToldApart(packed.bytes, &answer);
  IsToldApart(input.ConsumeRemainingBytesAsString(), &answer);
  return 0;
}
