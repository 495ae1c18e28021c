// Drivers at work on one set of tables, killed at random and replaced, until the time is over.
//
//   voatm_soak SECONDS PROCESSES              with locks: no record may be torn
//   voatm_soak SECONDS PROCESSES --unlocked   without, and nobody is killed: ends at a torn record,
//                                             and fails when there is none
//
// The first two drivers are never killed: their memory and descriptors, and the host's, must stay.
// What a dead driver held is released with the operator's command. A record that it left
// half-written is torn by right; it is made whole before its slot is given back, while nobody else
// can read it.
#include <sys/mman.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "driver.h"
#include "processes.h"
#include "support/child.h"
#include "support/served_home.h"
#include "support/shell.h"
#include "vodebugutil.h"

namespace {

using Clock = std::chrono::steady_clock;
using json = nlohmann::ordered_json;

constexpr int kSurvivors = 2;
constexpr long kWarmUp = 2000;               // operations of each survivor before it is measured
constexpr double kPatience = 20;             // seconds to warm up, or to stop
constexpr Footprint kMayGain = {64, 32, 1};  // one descriptor: the file that it reads just then

volatile std::sig_atomic_t interrupted = 0;

void Interrupt(int) { interrupted = 1; }

// Runs the operator's command and returns what it prints.
std::string Voatm(const std::string& arguments) { return Shell(VOATM " " + arguments).text; }

json Locks() {
  const json answer = json::parse(Voatm("locks --json"), nullptr, false);
  if (answer.is_discarded()) throw std::runtime_error("no answer of voatm locks");
  return answer["locks"];
}

class Soak {
 public:
  Soak(pid_t host, double seconds, int processes, bool lock)
      : host_(host), seconds_(seconds), lock_(lock), drivers_(static_cast<std::size_t>(processes)) {
    void* const memory =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("cannot share memory");
    board_ = new (memory) Board{};
    trace_.set_level(0);
    if (util_.InitVoATMUtil(&trace_, false) != 1) throw std::runtime_error("cannot attach");
    for (int slot = 0; slot < util_.MaxAtm; ++slot) Fill(&util_.AtmMemoryPtr[slot], 0);
    for (int place = 0; place < processes; ++place) StartDriver(place);
  }
  ~Soak() {
    for (const pid_t driver : drivers_) {
      if (driver == 0) continue;
      kill(driver, SIGKILL);
      waitpid(driver, nullptr, 0);
    }
    munmap(board_, sizeof(Board));
  }
  Soak(const Soak&) = delete;
  Soak& operator=(const Soak&) = delete;

  // Returns whether all went as it must.
  bool Run() {
    const auto start = Clock::now();
    WarmUp();
    Measure(-1);
    while (Seconds(start) < seconds_ && interrupted == 0 &&
           (lock_ || Sum(&Board::Place::torn) == 0)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(Below(20)));
      if (lock_) Replace(kSurvivors + Below(static_cast<int>(drivers_.size()) - kSurvivors));
    }
    if (interrupted != 0) throw std::runtime_error("interrupted");
    Measure(+1);
    StopDrivers();
    Print(Seconds(start));
    return Judge();
  }

 private:
  static double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
  }

  int Below(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  long Sum(std::atomic<long> Board::Place::*figure) const {
    long sum = 0;
    for (const Board::Place& place : board_->places) sum += place.*figure;
    return sum;
  }

  void StartDriver(int place) {
    drivers_[static_cast<std::size_t>(place)] =
        StartProcess(SIGKILL, [=] { return Drive(*board_, place, lock_); });
  }

  void Fail(const std::string& why) {
    fprintf(stderr, "soak: %s\n", why.c_str());
    ++failures_;
  }

  void WarmUp() {
    const auto start = Clock::now();
    for (int place = 0; place < kSurvivors; ++place) {
      while (lock_ && board_->places[place].operations < kWarmUp && interrupted == 0) {
        if (Seconds(start) > kPatience) throw std::runtime_error("the drivers do not get on");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    }
  }

  // Adds to each growth what its process holds now, or takes it away.
  void Measure(int sign) {
    if (!lock_) return;  // it is over too soon
    for (const pid_t process : {drivers_[0], drivers_[1], host_}) {
      const Footprint now = FootprintOf(process);
      Footprint& growth = growths_[process];
      growth.data += sign * now.data;
      growth.used += sign * now.used;
      growth.descriptors += sign * now.descriptors;
    }
  }

  void Replace(int place) {
    pid_t& driver = drivers_[static_cast<std::size_t>(place)];
    kill(driver, SIGKILL);
    int status = 0;
    waitpid(driver, &status, 0);
    driver = 0;
    if (!WIFSIGNALED(status)) Fail("a driver had ended");
    ++kills_;
    for (const json& lock : Locks()) {
      if (lock["stuck"]) Release(lock);
    }
    StartDriver(place);
  }

  void Release(const json& lock) {
    const std::string table = lock["table"];
    const int slot = lock["slot"];
    AtmMemoryTable& atm = util_.AtmMemoryPtr[slot];
    if (table == "ATMMEMORY" && !IsWhole(atm)) {
      Fill(&atm, 0);
      ++repairs_;
    }
    const std::string order = "locks release " + table + " " + std::to_string(slot) + " --json";
    if (Voatm(order).find("\"released\": true") == std::string::npos) Fail("not done: " + order);
    ++releases_;
  }

  void StopDrivers() {
    board_->stop = true;
    for (pid_t& driver : drivers_) {
      const int status = WaitFor(driver, kPatience);
      if (status != 0) Fail(status == -1 ? "a driver hangs" : "a driver failed");
      if (status != -1) driver = 0;
    }
    if (!Locks().empty()) Fail("a slot is not at rest");
  }

  void Print(double seconds) const {
    printf(
        "%s: %zu processes, %.1f s, %ld operations, %d kills, %d releases, %d half-written "
        "records made whole, %ld torn\n",
        lock_ ? "with locks" : "without locks", drivers_.size(), seconds,
        Sum(&Board::Place::operations), kills_, releases_, repairs_, Sum(&Board::Place::torn));
    for (const auto& [process, growth] : growths_) {
      printf("  %-8s data %+ld KB, used %+ld KB, descriptors %+ld\n",
             process == host_ ? "host" : "survivor", growth.data, growth.used, growth.descriptors);
    }
  }

  bool Judge() {
    const long torn = Sum(&Board::Place::torn);
    if (lock_ && torn > 0) Fail("records are torn in spite of locks");
    if (lock_ && releases_ == 0) Fail("nobody died as a holder: run it longer");
    if (!lock_ && torn == 0) Fail("no record is torn without locks: nothing is shown");
    for (const auto& [process, growth] : growths_) {
      if (growth.data > kMayGain.data || growth.used > kMayGain.used ||
          growth.descriptors > kMayGain.descriptors) {
        Fail("a process grows");
      }
    }
    return failures_ == 0;
  }

  const pid_t host_;
  const double seconds_;
  const bool lock_;
  std::vector<pid_t> drivers_;  // by place; 0: none
  Board* board_ = nullptr;
  VoDebugUtil trace_;
  VoATMUtil util_;
  std::mt19937 random_{std::random_device()()};
  std::map<pid_t, Footprint> growths_;
  int kills_ = 0;
  int releases_ = 0;
  int repairs_ = 0;
  int failures_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? atof(argv[1]) : 0;
  const int processes = argc > 2 ? atoi(argv[2]) : 0;
  const bool lock = argc < 4 || strcmp(argv[3], "--unlocked") != 0;
  if (!(seconds > 0) || processes <= kSurvivors || processes > kMaxProcesses || argc > 4) {
    fprintf(stderr, "usage: voatm_soak SECONDS PROCESSES [--unlocked]; 3 to %d processes\n",
            kMaxProcesses);
    return 2;
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, Interrupt);
  try {
    const ServedHome home(SAMPLE_HOME);
    Soak soak(home.host(), seconds, processes, lock);
    return soak.Run() ? 0 : 1;
  } catch (const std::exception& error) {
    fprintf(stderr, "soak: %s\n", error.what());
    return 1;
  }
}
