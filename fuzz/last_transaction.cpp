// The last-transaction check against its decision table.
#include "support.h"

namespace {

struct Status {
  std::string text;

  int Number(std::size_t offset, std::size_t size) const {
    return offset < text.size() ? atoi(text.substr(offset, size).c_str()) : 0;
  }

  std::string Logic() const {
    std::string logic;
    for (std::size_t offset = 6; offset < 26; offset += 5) {
      char notes[8];
      std::snprintf(notes, sizeof notes, "%02d", Number(offset, 5));
      logic += notes;
    }
    return logic;
  }
};

bool MustReverse(const VoDevMsg& message, const std::string& logic, const Status& status) {
  const int number = status.Number(1, 4);
  if (status.text[0] != '2' || message.TxnCode < 10000 || message.TxnCode > 19999) return false;
  if (message.MemTraceNo == 0 || number == 0) return false;
  if (message.MemTraceNo != number) return true;
  return status.Logic() != logic && message.MsgType == 420 && message.ReasonCode == 106;
}

// What the first form says last.
std::string LastSaid(const VoDevMsg& message, const std::string& logic, const Status& status) {
  const std::string number = status.text.substr(1, 4);
  const char end = status.text.size() > 5 ? status.text[5] : '\0';
  if (atoi(number.c_str()) != message.TraceNo) return "Last Transaction Trace No[" + number + "]";
  if (end == '0') return "sent none";
  return status.Logic() == logic ? "Test" : "Test 1";
}

}  // namespace

FUZZ_TARGET(last_transaction) {
  FuzzedDataProvider input(bytes, size);
  Driver driver;
  VoDevMsg message;
  std::memset(&message, '#', sizeof message);
  message.TxnCode = input.PickValueInArray({9999, 10000, 19999, 20000});
  message.MsgType = input.PickValueInArray({420, 200});
  message.ReasonCode = input.PickValueInArray({106, 103});
  message.TraceNo = input.ConsumeIntegralInRange(-1, 9999);
  message.MemTraceNo = input.PickValueInArray({message.TraceNo, 0, message.TraceNo + 1});
  const bool same_logic = input.ConsumeBool();
  const std::string other_logic = TextOf(input, 24);
  const Status status = {RestOf(input)};
  const std::string logic = same_logic ? status.Logic() : other_logic;

  VoDevMsg expected = message;
  Require(driver.util.CheckLTS_TVS(&message, Block(logic).data(), Block(status.text).data()) == -1,
          "the first form decides nothing");
  const std::string said = driver.trace.Take();
  const std::string end =
      status.text[0] == '2' ? "- " + LastSaid(message, logic, status) + "\n" : "";
  Require(said.size() >= end.size() && said.substr(said.size() - end.size()) == end,
          "what is said");
  Require(said.empty() == end.empty(), "nothing is said of another status");
  Require(std::memcmp(&message, &expected, sizeof message) == 0, "the first form changes nothing");

  const bool reverse = MustReverse(message, logic, status);
  if (reverse) {
    expected.MsgType = 420;
    expected.ReasonCode = 103;
  }
  const int result = driver.util.CheckLTS_TVS(
      &message, Block(logic).data(), Block(status.text).data(), nullptr, nullptr, nullptr, nullptr);
  Require(result == (reverse ? 1 : -1), "whether to reverse");
  Require(std::memcmp(&message, &expected, sizeof message) == 0, "the reversal, nothing else");
  return 0;
}
