// The text helpers against plain strings.
#include <sstream>

#include "support.h"
#include "support/words.h"

namespace {

void CheckFields(VoATMUtil& util, Block text, char delimiter, int field) {
  const Texts fields = Words(text.Text(), delimiter);
  const bool present = field >= 1 && static_cast<std::size_t>(field) <= fields.size();
  const std::string value = present ? fields[static_cast<std::size_t>(field) - 1] : "";
  Require(util.GetNTokens(text.data(), delimiter) == static_cast<int>(fields.size()), "count");
  Block expected(value.size() + 1);
  Block out = expected;
  if (!value.empty()) std::copy(value.begin(), value.end(), expected.data());
  Require(util.ParseToken(text.data(), out.data(), field, delimiter) == 1, "always 1");
  Require(out == expected, "the field without a terminator");
}

void CheckBits(VoATMUtil& util, unsigned char byte, Block text, short bit) {
  char digits[3];
  std::snprintf(digits, sizeof digits, bit % 2 == 0 ? "%02x" : "%02X", byte);
  Block hex{std::string(digits)};
  for (short each = 1; each <= 8; ++each) {
    Require(util.IsBitSet(hex.data(), each) == (byte >> (each - 1) & 1), "a bit of a byte");
  }
  const int any = util.IsBitSet(text.data(), bit);
  Require(any == 0 || any == 1, "a bit is 0 or 1");
}

void CheckCopy(VoATMUtil& util, Block source, const std::string& old) {
  const std::size_t size = std::max(old.size(), source.Text().size()) + 1;
  Block expected(size);
  expected.Put(old);
  Block destination = expected;
  if (!source.Text().empty()) expected.Put(source.Text());
  util.stringCopy(destination.data(), source.data());
  Require(destination == expected, "a text replaces, an empty one does not");
}

}  // namespace

FUZZ_TARGET(tokens) {
  FuzzedDataProvider input(bytes, size);
  VoATMUtil util;
  const auto delimiter = static_cast<char>(input.ConsumeIntegral<unsigned char>());
  const int field = input.ConsumeIntegralInRange(-128, 127);
  const auto byte = input.ConsumeIntegral<unsigned char>();
  const auto bit = input.ConsumeIntegral<short>();
  const std::string old = TextOf(input, 20);
  const std::string text = RestOf(input);

  CheckFields(util, Block(text), delimiter, field);
  CheckBits(util, byte, Block(text), bit);
  CheckCopy(util, Block(text), old);
  const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
  Require(util.CheckInteger(Block(text).data()) == (digits ? 1 : -1), "digits only");
  const int code = util.GetOpertionalCmd(Block(text).data());
  Require(code == -1 || (code >= 31 && code <= 49 && text[0] == '!'), "the code of a command");
  return 0;
}
