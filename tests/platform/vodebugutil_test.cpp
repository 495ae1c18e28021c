#include "vodebugutil.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

void Collect(void* context, int level, const char* text) {
  static_cast<Lines*>(context)->push_back(std::to_string(level) + " " + text);
}

// Traces to a file of its own.
class VoDebugUtilFile : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, trace_.to_file(path_.c_str())); }
  void TearDown() override { unlink(path_.c_str()); }

  // The file's lines from the level on; what precedes it must have the form of a stamp.
  Lines Read() const {
    std::ifstream file(path_);
    Lines lines;
    for (std::string line; std::getline(file, line);) {
      const std::size_t level = line.find("] ") + 2;
      std::string form = line.substr(0, level);
      std::replace_if(form.begin(), form.end(), isdigit, '9');
      EXPECT_EQ("9999-99-99 99:99:99.999999 [9", form.substr(0, 29)) << line;
      lines.push_back(line.substr(level));
    }
    return lines;
  }

  std::string path_ = testing::TempDir() + "vodebugutil." + std::to_string(getpid());
  VoDebugUtil trace_;
};

TEST(VoDebugUtil, ThresholdDecidesAndTheCallbackGetsTheTextAsItIs) {
  Lines lines;
  VoDebugUtil trace;
  trace.to_callback(Collect, &lines);
  trace.trace(6, "slot %d of %s", 3, "ATM");
  trace.trace(7, "dropped");
  trace.set_level(2);
  trace.trace(6, "dropped");
  trace.trace(2, "two\nlines");
  trace.trace("no level %c", 'x');
  EXPECT_EQ((Lines{"6 slot 3 of ATM", "2 two\nlines", "-1 no level x"}), lines);
}

TEST_F(VoDebugUtilFile, OneCallIsOneLineWhateverItsText) {
  trace_.trace(2, "a\nb\r\tc\x01\x7f\xc3\xa9\\");
  trace_.trace("%s", std::string(9000, 'x').c_str());
  trace_.trace("not in this locale: %ls", L"\u20ac");
  EXPECT_EQ((Lines{"2 a\\nb\\x0D\tc\\x01\\x7F\xc3\xa9\\",
                   "- " + std::string(VoDebugUtil::kMaxText, 'x'), "- not in this locale: %ls"}),
            Read());
}

TEST_F(VoDebugUtilFile, LineIsCutBetweenItsEscapes) {
  const std::string escapes(3000, '\x02');
  for (int shift = 0; shift < 4; ++shift) trace_.trace("%.*s%s", shift, "abc", escapes.c_str());
  const std::size_t stamp = 30 + std::to_string(getpid()).size();
  std::size_t longest = 0;
  for (const std::string& line : Read()) {
    EXPECT_EQ("\\x02", line.substr(line.size() - 4));
    longest = std::max(longest, stamp + line.size() + 1);
  }
  EXPECT_EQ(4096U, longest);
}

TEST_F(VoDebugUtilFile, DestinationChangesOnlyWhenItOpens) {
  Lines lines;
  trace_.to_callback(Collect, &lines);
  EXPECT_EQ(-1, trace_.to_file("/absent/trace"));
  EXPECT_EQ(ENOENT, errno);
  trace_.trace("callback");
  const int lowest_free = dup(0);
  close(lowest_free);
  ASSERT_EQ(0, trace_.to_file(path_.c_str()));
  trace_.trace("file");
  testing::internal::CaptureStderr();
  trace_.to_stderr();
  trace_.trace(6, "standard error");
  const std::string head = "[" + std::to_string(getpid()) + "] 6 standard error\n";
  EXPECT_EQ(27U, testing::internal::GetCapturedStderr().find(head));
  EXPECT_EQ(Lines{"-1 callback"}, lines);
  EXPECT_EQ(Lines{"- file"}, Read());
  EXPECT_EQ(-1, fcntl(lowest_free, F_GETFD)) << "the file is closed";
}

TEST_F(VoDebugUtilFile, LostLineLeavesErrnoAlone) {
  ASSERT_EQ(0, trace_.to_file("/dev/full"));
  errno = EIDRM;
  trace_.trace("lost");
  EXPECT_EQ(EIDRM, errno);
}

TEST_F(VoDebugUtilFile, LinesOfSeveralProcessesDoNotMix) {
  const std::string letters = "abcd";
  for (const char letter : letters) {
    if (fork() != 0) continue;
    VoDebugUtil own;
    own.to_file(path_.c_str());
    for (int line = 0; line < 500; ++line) own.trace("%s", std::string(2000, letter).c_str());
    _exit(0);
  }
  while (wait(nullptr) > 0) {
  }
  std::map<std::string, int> expected, seen;
  for (const char letter : letters) expected["- " + std::string(2000, letter)] = 500;
  for (const std::string& line : Read()) ++seen[line];
  EXPECT_EQ(expected, seen);
}

}  // namespace
