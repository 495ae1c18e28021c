#include "processes.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "devhost/host.h"
#include "support/test_keys.h"

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

ServedHome::ServedHome() : path_(std::filesystem::temp_directory_path() / "voatm-soak.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot create " + path_);
  try {
    std::filesystem::copy(SAMPLE_HOME, path_, std::filesystem::copy_options::recursive);
    std::ofstream(path_ + "/cfg/vokernel.cfg") << "[CHANNEL]\nORGKEY " << NextKeyBase() << '\n';
    setenv("VODIR_HOME", path_.c_str(), 1);
    StartHost();
  } catch (...) {
    std::filesystem::remove_all(path_);
    throw;
  }
}

ServedHome::~ServedHome() {
  kill(host_, SIGTERM);
  waitpid(host_, nullptr, 0);
  std::filesystem::remove_all(path_);
}

void ServedHome::StartHost() {
  int ready[2];
  if (pipe(ready) != 0) throw std::runtime_error("cannot open a pipe");
  host_ = Start(SIGTERM, [&] {
    close(ready[0]);
    devhost::Host host(path_);
    host.Serve([&] {
      if (write(ready[1], "r", 1) != 1) host.Stop();
      close(ready[1]);
    });
    return 0;
  });
  close(ready[1]);
  char answer;
  const bool served = read(ready[0], &answer, 1) == 1;
  close(ready[0]);
  if (served) return;
  waitpid(host_, nullptr, 0);
  throw std::runtime_error("the host does not serve " + path_);
}

pid_t Start(int end_signal, const std::function<int()>& run) {
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("cannot start a process");
  if (process > 0) return process;
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, end_signal);
  if (getppid() != parent) _exit(1);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  int result = 1;
  try {
    result = run();
  } catch (const std::exception& error) {
    fprintf(stderr, "soak: %s\n", error.what());
  }
  _exit(result);
}

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
