// A command on a terminal of its own, as somebody who looks at it and presses keys.
#ifndef TESTS_SUPPORT_WATCHED_H
#define TESTS_SUPPORT_WATCHED_H

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

class Watched {
 public:
  explicit Watched(const std::string& command) {
    process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ > 0) return;
    setenv("TERM", "xterm", 1);
    execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    _exit(127);
  }
  ~Watched() {
    if (process_ > 0) kill(process_, SIGKILL);
    if (process_ > 0) waitpid(process_, nullptr, 0);
    close(terminal_);
  }
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  pid_t process() const { return process_; }

  // Whether the terminal is as a shell's: shows keys as they are pressed, and gives them by lines.
  bool EchoesLines() const {
    termios settings{};
    tcgetattr(terminal_, &settings);
    return (settings.c_lflag & ICANON) != 0 && (settings.c_lflag & ECHO) != 0;
  }

  void Press(char key) const {
    if (write(terminal_, &key, 1) != 1) std::abort();
  }

  // What is shown from the last call on up to this text; empty when it does not come.
  std::string Until(const std::string& text) {
    constexpr int kMost = 10000;  // milliseconds
    char byte;
    pollfd ready{terminal_, POLLIN, 0};
    for (std::string shown; poll(&ready, 1, kMost) > 0 && read(terminal_, &byte, 1) == 1;) {
      shown += byte;
      if (shown.size() >= text.size() &&
          shown.compare(shown.size() - text.size(), text.size(), text) == 0) {
        return shown;
      }
    }
    return "";
  }

  // Waits until the command ends; its exit status, or -1.
  int Code() {
    int status = -1;
    waitpid(process_, &status, 0);
    process_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  int terminal_ = -1;
  pid_t process_ = -1;
};

#endif  // TESTS_SUPPORT_WATCHED_H
