#include "look/wait.h"

#include <chrono>
#include <thread>

#include "show/output.h"

bool WaitFor(const std::string& what, int seconds, const std::function<bool()>& succeeds) {
  using Clock = std::chrono::steady_clock;
  constexpr auto kPollInterval = std::chrono::microseconds(200);
  constexpr auto kSilence = std::chrono::seconds(1);
  const auto start = Clock::now();
  bool said = false;
  while (!succeeds()) {
    const auto waited = Clock::now() - start;
    if (waited >= std::chrono::seconds(seconds)) return false;
    if (!said && waited >= kSilence) Say("waiting for " + what);
    said = waited >= kSilence;
    std::this_thread::sleep_for(kPollInterval);
  }
  return true;
}
