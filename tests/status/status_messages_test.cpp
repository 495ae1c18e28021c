#include "devhost/system_call.h"
#include "support/call_fault.h"
#include "support/driver_test.h"

namespace {

class StatusMessagesTest : public DriverTest {
 protected:
  StatusMessagesTest() : DriverTest({1, 1, 1, 1, 5}) {
    const VoAtmStatus statuses[] = {
        {"A1", 'S'}, {"N4", 'N'}, {"C3", 'S'}, {"A1", 'N'}, {"TEN-LONG-1", 'S'}};
    memcpy(util_.AtmStatusPtr, statuses, sizeof statuses);
  }

  void Build(std::string code) { util_.BuiltStatusMsg(rows_, code.data(), message_); }

  char rows_[15][11] = {};
  char message_[101] = "";
};

IN_BOTH_LOCK_MODES(StatusMessagesTest);

TEST_P(StatusMessagesTest, AppendACodeOnceForEachOtherCodeWithin99Characters) {
  const std::string longest = "A1|" + std::string(93, 'x') + "|";
  const struct {
    std::string before;
    const char* code;
    std::string after;
  } cases[] = {{"A1|B2|", "C3", "A1|B2|C3|C3|"},
               {"C3|A1|", "C3", "C3|A1|C3|"},
               {"A1|B2", "C3", "A1|B2C3|"},  // the last one counts only with its '|'
               {"A1|B2|", "N4", "A1|B2|"},
               {"A1|B2|", "XX", "A1|B2|"},
               {"", "C3", ""},
               {"NONE", "A1", ""},
               {"NONE", "C3", ""},
               {"NONE", "XX", ""},
               {"TEN-LONG-1|", "TEN-LONG-1", "TEN-LONG-1|"},
               {"TEN-LONG-1+|", "TEN-LONG-1", "TEN-LONG-1+|"},  // is cut to ten
               {"TEN-LONG-2|", "TEN-LONG-1", "TEN-LONG-2|TEN-LONG-1|"},
               {longest, "C3", longest + "C3|"},
               {"A" + longest, "C3", "A" + longest}};
  for (const auto& c : cases) {
    strcpy(message_, c.before.c_str());
    Build(c.code);
    EXPECT_EQ(message_, c.after) << c.before;
  }
  EXPECT_EQ(trace_.Take(), "");
}

TEST_P(StatusMessagesTest, FillTheArrayThenOverwriteItWhole) {
  const auto code = [](int i) { return "code-" + std::to_string(i); };
  for (int i = 0; i < 15; ++i) Build(code(i));
  memset(rows_[3] + 7, '#', 4);
  Build("code-3");
  EXPECT_EQ(memcmp(rows_[3], "code-3\0\0\0\0", 11), 0);
  for (int i = 0; i < 15; ++i) EXPECT_EQ(rows_[i], code(i));
  for (const char* row : {"a-code-too", "code"}) {
    Build(row + std::string(row[0] == 'a' ? "-long" : ""));
    char expected[11] = {};
    strcpy(expected, row);
    for (const char(&seen)[11] : rows_) EXPECT_EQ(memcmp(seen, expected, 11), 0) << row;
  }
}

TEST_P(StatusMessagesTest, CutACodeAtTenCharactersInAnEmptyRow) {
  memset(rows_, '#', sizeof rows_);
  for (auto& row : rows_) row[0] = '\0';
  for (const char* code : {"0123456789", "0123456789A", "012"}) Build(code);
  EXPECT_EQ(std::string(rows_[0], 33), std::string("0123456789\0"
                                                   "0123456789\0"
                                                   "012\0#######",
                                                   33));
  EXPECT_EQ(std::string(rows_[3], 11), std::string("\0##########", 11));
}

TEST_P(StatusMessagesTest, StayNoneUntilASlotIsVisited) {
  strcpy(message_, "NONE");
  util_.MaxAtmStatus = 0;
  Build("A1");
  EXPECT_STREQ(message_, "NONE");
  util_.MaxAtmStatus = 5;
  memset(message_ + 5, '#', 5);
  const CallFault fault("semop", 1, EIDRM);
  Build("A1");
  EXPECT_EQ(std::string(message_, 10),
            locked() ? std::string("NONE\0#####", 10) : std::string(8, '\0') + "##");
}

TEST_P(StatusMessagesTest, AreClearedWithRowZero) {
  Build("A1");
  Build("B2");
  char code[] = "12345678#";
  strcpy(message_, code);
  EXPECT_EQ(util_.ClearStatus(rows_, code, message_), 1);
  for (const char* text : {rows_[0], code, message_}) EXPECT_EQ(memcmp(text, "NONE\0\0\0", 8), 0);
  EXPECT_EQ(message_[8], '#');
  Build("C3");
  EXPECT_STREQ(rows_[1], "B2");
  EXPECT_STREQ(rows_[2], "C3");
}

TEST_P(StatusMessagesTest, TakeACodeOfWhichTheyHoldAtMost99Characters) {
  const struct {
    int used, len, result;
    const char* added;
  } cases[] = {{95, 5, 0, ""}, {95, 4, 5, "abcd|"}, {0, 99, 100, "abcdef|"}, {0, -1, 0, ""}};
  for (const auto& c : cases) {
    const std::string before(static_cast<std::size_t>(c.used), 'x');
    strcpy(message_, before.c_str());
    EXPECT_EQ(util_.BuiltStatusCode(std::string("abcdef").data(), c.len, message_), c.result);
    EXPECT_EQ(message_, before + c.added);
  }
}

// Of the calls for slot 2, the fifth takes it and the sixth gives it back.
TEST_P(StatusMessagesTest, HoldTheMatchingSlotWhileAppending) {
  for (const int nth : {5, 6}) {
    strcpy(message_, "A1|");
    const CallFault fault("semop", nth, EIDRM);
    Build("C3");
    EXPECT_EQ(fault.calls(), locked() ? nth : 0);
    EXPECT_EQ(semctl(util_.AtmStatusSemid, 2, GETVAL), locked() && nth == 6 ? 0 : 2);
    semctl(util_.AtmStatusSemid, 2, SETVAL, devhost::SemaphoreArgument{devhost::kAtRest});
    EXPECT_STREQ(message_, locked() && nth == 5 ? "A1|" : "A1|C3|");
    EXPECT_EQ(trace_.Take(), locked() ? "2 Error in Semop for AtmStatus" + SysErr(EIDRM) : "");
  }
}

}  // namespace
