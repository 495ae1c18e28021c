#include "vodebugutil.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <regex>

#include "support/call_fault.h"
#include "support/child.h"
#include "support/served_home.h"
#include "support/words.h"

namespace {

// Lines with '*' for date, time and process id.
std::string Starred(const std::string& lines) {
  const std::regex stamp(R"([-\d]{10} [:\d]{8}\.\d{6} \[)" + std::to_string(getpid()) + "\\]");
  return std::regex_replace(lines, stamp, "*");
}

TEST(VoDebugUtil, ThresholdDecidesAndALostLineLeavesErrnoAlone) {
  testing::internal::CaptureStderr();
  const int file = dup(0);  // the lowest that is free
  close(file);
  VoDebugUtil trace;
  trace.trace(7, "dropped");
  trace.trace(6, "slot %d", 3);
  ASSERT_EQ(trace.to_file("/dev/full"), 0);
  errno = EIDRM;
  trace.trace("lost");
  EXPECT_EQ(errno, EIDRM);
  trace.to_stderr();
  trace.trace("%ls here", L"\u20ac");
  EXPECT_EQ(Starred(testing::internal::GetCapturedStderr()), "* 6 slot 3\n* - %ls here\n");
  EXPECT_EQ(close(file), -1) << "closed already";
}

TEST(VoDebugUtil, OneCallIsOneLineWhateverItsText) {
  const TestHome home;
  VoDebugUtil trace;
  ASSERT_EQ(trace.to_file((home.path() + "/text").c_str()), 0);
  EXPECT_EQ(trace.to_file("/absent/trace"), -1) << "and the destination stays";
  trace.trace(2, "a\nb\r\tc\x01\x7f\xc3\xa9\\");
  trace.trace("%s", std::string(9000, 'x').c_str());
  const std::string cut(VoDebugUtil::kMaxText, 'x');
  EXPECT_EQ(Starred(home.Read("text")), "* 2 a\\nb\\x0D\tc\\x01\\x7F\xc3\xa9\\\n* - " + cut + "\n");

  // A line is cut between its escapes of four bytes: one of four lines is full.
  ASSERT_EQ(trace.to_file((home.path() + "/escapes").c_str()), 0);
  const std::string escapes(3000, '\x02');
  for (const char* shift : {"", "a", "ab", "abc"}) trace.trace("%s%s", shift, escapes.c_str());
  EXPECT_EQ(home.Read("escapes").size(), 4096U + 4095 + 4094 + 4093);
}

TEST(VoDebugUtil, ALineThatTheSystemRefusesIsLostAloneAndAnInterruptedOneIsNot) {
  const TestHome home;
  const std::string file = home.path() + "/trace";
  const long open = OpenDescriptors();
  for (const int error : ErrorsOf("write")) {
    for (const int nth : {1, 2, 3}) {
      VoDebugUtil trace;
      ASSERT_EQ(trace.to_file(file.c_str()), 0);
      const CallFault fault("write", nth, error);
      errno = EDOM;
      for (const char* line : {"1", "2", "3"}) trace.trace(2, "%s", line);
      EXPECT_EQ(errno, EDOM);
      std::string expected = "* 2 1\n* 2 2\n* 2 3\n";
      if (error != EINTR) expected.erase(6 * static_cast<std::size_t>(nth - 1), 6);
      EXPECT_EQ(Starred(home.Read("trace")), expected) << error;
      home.Remove("trace");
    }
  }
  for (const int error : ErrorsOf("open")) {
    VoDebugUtil trace;
    const CallFault fault("open", 1, error);
    EXPECT_EQ(trace.to_file(file.c_str()), -1);
    EXPECT_EQ(errno, error);
  }
  for (const int error : ErrorsOf("close")) {
    VoDebugUtil trace;
    trace.to_file(file.c_str());
    const CallFault fault("close", 1, error);
    trace.to_stderr();
  }
  EXPECT_EQ(OpenDescriptors(), open);
}

TEST(VoDebugUtil, LinesOfTwoProcessesDoNotMix) {
  const TestHome home;
  const std::string text(200, 'x');
  const auto write = [&] {
    VoDebugUtil trace;
    trace.to_file((home.path() + "/trace").c_str());
    for (int line = 0; line < 10000; ++line) trace.trace("%s", text.c_str());
    return 0;
  };
  Child other(write);
  write();
  other.Wait();
  int whole = 0;
  for (const std::string& line : Words(home.Read("trace"), '\n')) {  // 27 is behind the time
    if (line.find('[') == 27 && line.find(" - " + text) == line.find(']') + 1) ++whole;
  }
  EXPECT_EQ(whole, 20000);
}

}  // namespace
