// The ground of tests of operations that need files at most: a home, an object without tables, and
// tables of calls as text.
#ifndef TESTS_SUPPORT_FILE_TEST_H
#define TESTS_SUPPORT_FILE_TEST_H

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "support/driver_test.h"
#include "support/served_home.h"

class FileTest : public testing::Test, protected Unattached {
 protected:
  FileTest() { memset(outputs_, '#', sizeof outputs_); }

  // The caller's text outputs, filled with '#' before each call of a table.
  char* const* outs() const { return outs_; }
  char* Out(int i) const { return outs_[i]; }

  // What a call did: its result; each output up to its last changed byte, with '.' for NUL; each
  // trace, with '~' for the home. Fills the outputs again.
  std::string Done(int result) {
    std::string done = std::to_string(result);
    std::string unchanged;
    for (char(&output)[kOutput] : outputs_) {
      std::string shown(output, kOutput);
      shown.erase(shown.find_last_not_of('#') + 1);
      std::replace(shown.begin(), shown.end(), '\0', '.');
      unchanged += " [" + shown + "]";
      if (!shown.empty()) done += std::exchange(unchanged, {});
    }
    memset(outputs_, '#', sizeof outputs_);
    std::istringstream traces(trace.Take());
    for (std::string line; std::getline(traces, line);) {
      const std::size_t at = line.find(home_.path());
      if (at != std::string::npos) line.replace(at, home_.path().size(), "~");
      done += " <" + line + ">";
    }
    return done;
  }

  // Makes a call for each line "given => what it does"; a line that begins with a blank goes on.
  template <typename Call>
  void ExpectDone(const char* table, Call call) {
    std::istringstream lines(table);
    for (std::string line, more; std::getline(lines, line);) {
      while (lines.peek() == ' ' && std::getline(lines, more)) line += more;
      const std::size_t arrow = line.find("=> ");
      if (arrow == std::string::npos) continue;
      std::string given = line.substr(0, arrow);
      given.erase(given.find_last_not_of(' ') + 1);
      EXPECT_EQ(Done(call(given)), line.substr(arrow + 3)) << given;
    }
  }

  TestHome home_;

 private:
  static constexpr std::size_t kOutput = 151;

  char outputs_[5][kOutput];
  char* outs_[5] = {outputs_[0], outputs_[1], outputs_[2], outputs_[3], outputs_[4]};
};

#endif  // TESTS_SUPPORT_FILE_TEST_H
