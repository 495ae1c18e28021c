#include "processes.h"

#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

// Returns the number that follows a name in a file; 0 without one.
long FigureOf(const std::string& path, const char* name) {
  std::ifstream file(path);
  long figure = 0;
  for (std::string word; file >> word;) {
    if (word == name && file >> figure) return figure;
  }
  return 0;
}

}  // namespace

int WaitFor(pid_t process, double seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  int status = 0;
  while (waitpid(process, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) return -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return status;
}

Footprint FootprintOf(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  Footprint footprint{};
  footprint.data = FigureOf(folder + "/status", "VmData:");
  footprint.used = FigureOf(folder + "/smaps_rollup", "Anonymous:");  // exact, unlike VmRSS
  footprint.descriptors = std::distance(std::filesystem::directory_iterator(folder + "/fd"), {});
  return footprint;
}
