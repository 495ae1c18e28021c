// The command as an operator runs it: on the home of the test, or else on the sample home.
#ifndef TESTS_TOOLS_VOATM_OUTPUT_H
#define TESTS_TOOLS_VOATM_OUTPUT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

struct Answer {
  int code;
  std::string text;  // data and talk
};

inline Answer Shell(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");  // NOLINT(bugprone-command-processor)
  std::string text;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) text += static_cast<char>(c);
  const int status = pclose(pipe);
  return {WEXITSTATUS(status), text};
}

// What the arguments redirect is not in the text.
inline Answer Voatm(const std::string& arguments) {
  return Shell("cd " SAMPLE_HOME "; VODIR_HOME=${VODIR_HOME:-.} " BUILD_DIRECTORY "/voatm 2>&1 " +
               arguments);
}

struct Golden {
  std::string arguments;
  const char* output;  // a newline, the text and the exit status
};

inline void ExpectOutputs(const std::vector<Golden>& goldens) {
  for (const Golden& golden : goldens) {
    const Answer answer = Voatm(golden.arguments);
    EXPECT_EQ("\n" + answer.text + "=> " + std::to_string(answer.code) + "\n", golden.output)
        << golden.arguments;
  }
}

#endif  // TESTS_TOOLS_VOATM_OUTPUT_H
