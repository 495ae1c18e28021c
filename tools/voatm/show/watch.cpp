#include "show/watch.h"

#include <poll.h>
#include <stdio_ext.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "show/output.h"

namespace {

// While it exists, keys are read as they are pressed, and a screen of its own is shown.
class Screen {
 public:
  Screen() : has_keys_(IsOurs() && tcgetattr(STDIN_FILENO, &before_) == 0) {
    termios keys = before_;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    if (has_keys_) tcsetattr(STDIN_FILENO, TCSANOW, &keys);
    if (is_shown_) std::printf("\033[?1049h");
  }
  ~Screen() {
    if (is_shown_) std::printf("\033[?1049l");
    std::fflush(stdout);
    if (has_keys_) tcsetattr(STDIN_FILENO, TCSANOW, &before_);
  }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void Clear() const {
    if (is_shown_) PrintAsIs("\033[H\033[2J");
  }

  // Waits so many seconds at most, less when a key is pressed; true when that is q, the input ends
  // or a signal comes.
  bool IsToEnd(int seconds, int signals) const {
    pollfd sources[] = {{signals, POLLIN, 0}, {has_keys_ ? STDIN_FILENO : -1, POLLIN, 0}};
    if (poll(sources, 2, seconds * 1000) <= 0) return false;
    char key = 0;
    return sources[0].revents != 0 || read(STDIN_FILENO, &key, 1) <= 0 || key == 'q';
  }

 private:
  // Who has it in the background is stopped when it asks.
  static bool IsOurs() { return tcgetpgrp(STDIN_FILENO) == getpgrp(); }

  termios before_ = {};
  bool has_keys_;
  bool is_shown_ = HasControls();
};

// Returns false when the reader has gone away, which ends a watch as q does.
bool TryToFlush() {
  if (std::fflush(stdout) != 0 && errno == EPIPE) {
    __fpurge(stdout);
    std::clearerr(stdout);
    return false;
  }
  FlushOutput();
  return true;
}

}  // namespace

void Watch(int seconds, const std::function<void()>& show_frame) {
  sigset_t ends;
  sigemptyset(&ends);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGPIPE}) {
    sigaddset(&ends, signal);
  }
  sigprocmask(SIG_BLOCK, &ends, nullptr);
  const int signals = signalfd(-1, &ends, SFD_CLOEXEC);
  const Screen screen;
  do {
    screen.Clear();
    show_frame();
    if (!TryToFlush()) break;
  } while (!screen.IsToEnd(seconds, signals));
  close(signals);
}
