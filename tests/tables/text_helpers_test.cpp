#include "support/driver_test.h"

namespace {

TEST(TextHelpersTest, CheckIntegerTakesDecimalDigitsOnly) {
  for (const char* text : {"", "0", "007", "0123456789", "99999999999999999999"}) {
    EXPECT_EQ(VoATMUtil().CheckInteger(text), 1) << text;
  }
  for (const char* text : {"-7", "+5", " 7", "7 ", "12a", "F", "/", ":", "1.0", "7\x80", "\xff"}) {
    EXPECT_EQ(VoATMUtil().CheckInteger(text), -1) << text;
  }
}

TEST(TextHelpersTest, IsBitSetNumbersTheBitsOfAByteFromItsLowest) {
  for (const std::string digits : {"0123456789ABCDEF", "0123456789abcdef"}) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      char text[] = {digits[byte / 16], digits[byte % 16], '\0'};
      for (short bit = 1; bit <= 8; ++bit) {
        EXPECT_EQ(VoATMUtil().IsBitSet(text, bit), byte >> (bit - 1) & 1U) << text << ' ' << bit;
      }
    }
  }
}

TEST(TextHelpersTest, IsBitSetOutsideAByteFollowsTheIndexWithinTheText) {
  const struct {
    std::string text;
    short bit;
    int set;
  } cases[] = {{"10", 9, 1},      {"E0", 9, 0},     {"008", 0, 1},  {"007", 0, 0}, {"0001", -7, 1},
               {"0008", -4, 1},   {"80", 0, 0},     {"", 8, 0},     {"FF", 10, 0}, {"00", 10, 0},
               {"90", 10, 0},     {"FF", 11, 0},    {"z0", 10, 1},  {"z0", 11, 1}, {"0z", 4, 1},
               {"0z", 3, 0},      {"FF", 12, 0},    {"FF", 100, 0}, {"8", 8, 1},   {"8", 1, 0},
               {"FF", -32768, 0}, {"FF", 32767, 0}, {"0/", 1, 1},   {"0:", 1, 0},  {"0@", 1, 0},
               {"0G", 1, 1},      {"0`", 1, 0},     {"0g", 1, 1}};
  for (auto c : cases) {
    EXPECT_EQ(VoATMUtil().IsBitSet(c.text.data(), c.bit), c.set) << c.text << ' ' << c.bit;
  }
}

TEST(TextHelpersTest, FieldsAreCountedAndCopiedWithoutATerminator) {
  const struct {
    std::string text;
    std::string seen;  // the number of fields, and what fields 0 to 4 leave in "..."
  } cases[] = {{"", "1 ... ... ... ... ..."},       {"|", "2 ... ... ... ... ..."},
               {"A|BC|D", "3 ... A.. BC. D.. ..."}, {"|A|||B", "5 ... ... A.. ... ..."},
               {"A||D|", "4 ... A.. ... D.. ..."},  {"A#B", "1 ... A#B ... ... ..."}};
  for (auto c : cases) {
    std::string seen = std::to_string(VoATMUtil().GetNTokens(c.text.data(), '|'));
    for (int field = 0; field < 5; ++field) {
      char out[] = " ...";
      EXPECT_EQ(VoATMUtil().ParseToken(c.text.data(), out + 1, field, '|'), 1);
      seen += out;
    }
    EXPECT_EQ(seen, c.seen) << c.text;
  }
}

TEST(TextHelpersTest, StringCopyKeepsTheOldTextForAnEmptyOne) {
  char text[] = "before";
  VoATMUtil().stringCopy(text, std::string().data());
  EXPECT_STREQ(text, "before");
  VoATMUtil().stringCopy(text, std::string("now").data());
  EXPECT_STREQ(text, "now");
}

}  // namespace
