// Commands as an operator runs them.
#ifndef TESTS_SUPPORT_SHELL_H
#define TESTS_SUPPORT_SHELL_H

#include <sys/wait.h>

#include <cstdio>
#include <stdexcept>
#include <string>

struct Output {
  int code;
  std::string text;  // what it wrote to standard output
};

inline Output Shell(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");  // NOLINT(bugprone-command-processor)
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::string text;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) text += static_cast<char>(c);
  const int status = pclose(pipe);
  return {WEXITSTATUS(status), text};
}

#endif  // TESTS_SUPPORT_SHELL_H
