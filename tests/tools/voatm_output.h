// What the command prints about the sample home, and its exit status.
#ifndef TESTS_TOOLS_VOATM_OUTPUT_H
#define TESTS_TOOLS_VOATM_OUTPUT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

struct Golden {
  std::string arguments;
  const char* output;  // data and talk, then the exit status
};

inline void ExpectOutputs(const std::vector<Golden>& goldens) {
  for (const Golden& golden : goldens) {
    const std::string command = "cd " SAMPLE_HOME " && VODIR_HOME=. " BUILD_DIRECTORY "/voatm " +
                                golden.arguments + " 2>&1; echo \"=> $?\"";
    FILE* pipe = popen(command.c_str(), "r");
    std::string text = "\n";
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) text += static_cast<char>(c);
    pclose(pipe);
    EXPECT_EQ(text, golden.output) << golden.arguments;
  }
}

#endif  // TESTS_TOOLS_VOATM_OUTPUT_H
