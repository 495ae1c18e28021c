// Device status texts against their rules, said with strings.
#include "support.h"
#include "support/words.h"

namespace {

constexpr std::size_t kRows = 15, kRowSize = 11, kMessageSize = 101, kMaxContent = 99;

using Row = char[kRowSize];

std::string RowText(const char* row) { return {row, strnlen(row, kRowSize)}; }

// Writes a code into a row, zeroed first or not.
void SetRow(char* row, const std::string& code, bool zeroed) {
  if (zeroed) std::memset(row, 0, kRowSize);
  std::strcpy(row, code.substr(0, kRowSize - 1).c_str());
}

void RecordCode(Block& rows, const std::string& code) {
  for (const std::string& wanted : {std::string(), code}) {
    for (std::size_t i = 0; i < kRows; ++i) {
      char* row = rows.data() + i * kRowSize;
      if (RowText(row) == wanted) return SetRow(row, code, !wanted.empty());
    }
  }
  for (std::size_t i = 0; i < kRows; ++i) SetRow(rows.data() + i * kRowSize, code, true);
}

// The message after a code was recorded.
void BuildMessage(Block& message, const std::string& code, const std::vector<VoAtmStatus>& table) {
  if (!table.empty() && message.Text() == "NONE") message.Clear();
  const auto status = std::find_if(table.begin(), table.end(), [&](const VoAtmStatus& each) {
    return RowText(each.StatusCode) == code;
  });
  if (status == table.end() || status->StatusKind != 'S') return;
  const std::size_t count = Words(message.Text(), '|').size();
  for (std::size_t i = 0; i + 1 < count; ++i) {
    const std::string text = message.Text();
    const std::string other = Words(text, '|')[i].substr(0, kRowSize - 1);
    if (other.empty() || other == code || text.size() + code.size() > kMaxContent) continue;
    message.Put(text + code + "|");
  }
}

void CheckAppend(VoATMUtil& util, Block& message, const std::string& code, int length) {
  Block expected = message;
  const std::string before = message.Text();
  const bool fits = length >= 0 && before.size() + static_cast<std::size_t>(length) <= kMaxContent;
  if (fits) expected.Put(before + code.substr(0, static_cast<std::size_t>(length)) + "|");
  const int result = util.BuiltStatusCode(Block(code).data(), length, message.data());
  Require(result == (fits ? length + 1 : 0), "whether the code fits");
  Require(message == expected, "the text with the code appended");
}

// A list of the codes and other texts, or what a cleared message holds.
std::string MessageOf(FuzzedDataProvider& input, const Texts& codes) {
  if (input.ConsumeBool()) return "NONE";
  std::string message;
  for (auto pieces = input.ConsumeIntegralInRange(0, 12); pieces > 0; --pieces) {
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, codes.size());
    message += choice < codes.size() ? codes[choice] : TextOf(input, 12);
    if (input.ConsumeBool()) message += '|';
  }
  return message.substr(0, kMessageSize - 1);
}

}  // namespace

FUZZ_TARGET(status) {
  FuzzedDataProvider input(bytes, size);
  Driver driver;
  std::vector<VoAtmStatus> table(input.ConsumeIntegralInRange<std::size_t>(0, 4));
  driver.util.AtmStatusPtr = table.data();
  driver.util.MaxAtmStatus = static_cast<int>(table.size());
  const int length = input.ConsumeIntegralInRange(-128, 127);
  const Texts codes = {TextOf(input, 12), TextOf(input, 12)};
  Block message(kMessageSize);
  message.Put(MessageOf(input, codes));
  for (VoAtmStatus& status : table) {
    codes[input.ConsumeBool() ? 1 : 0].copy(status.StatusCode, sizeof status.StatusCode);
    status.StatusKind = input.ConsumeBool() ? 'S' : 'T';
  }
  Block rows(kRows * kRowSize);
  input.ConsumeData(rows.data(), kRows * kRowSize);

  for (const std::string& code : codes) {
    Block expected_rows = rows;
    Block expected_message = message;
    RecordCode(expected_rows, code);
    BuildMessage(expected_message, code, table);
    driver.util.BuiltStatusMsg(reinterpret_cast<Row*>(rows.data()), Block(code).data(),
                               message.data());
    Require(rows == expected_rows, "the code in the array");
    Require(message == expected_message, "the message");
  }
  CheckAppend(driver.util, message, codes[0], length);

  Block code(8);
  Block none = code;
  none.Clear();
  none.Put("NONE");
  Require(driver.util.ClearStatus(reinterpret_cast<Row*>(rows.data()), code.data(),
                                  message.data()) == 1,
          "always 1");
  Require(code == none && RowText(rows.data()) == "NONE" && message.Text() == "NONE", "cleared");
  return 0;
}
