#include "support/served_home.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "devhost/host.h"
#include "support/test_keys.h"

namespace {

[[noreturn]] void RunHost(const std::string& path, int ready) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  try {
    devhost::Host host(path);
    host.Serve([&] {
      if (write(ready, "r", 1) != 1) _exit(1);
    });
  } catch (const std::exception& error) {
    std::cerr << "host: " << error.what() << '\n';
  }
  _exit(0);
}

pid_t StartHost(const std::string& path) {
  int ready[2];
  if (pipe(ready) != 0) return -1;
  const pid_t host = fork();
  if (host == 0) RunHost(path, ready[1]);
  close(ready[1]);
  char answer;
  EXPECT_EQ(read(ready[0], &answer, 1), 1) << "the host did not start";
  close(ready[0]);
  return host;
}

void WriteKernelFile(const TestHome& home, int key_base) {
  home.Write("cfg/vokernel.cfg", "[CHANNEL]\nORGKEY " + std::to_string(key_base) + "\n");
}

}  // namespace

void TestHome::Remove(const std::string& file) const {
  std::filesystem::remove_all(path() + "/" + file);
}

void WriteStartUpFiles(const TestHome& home, int key_base, const SlotCounts& counts) {
  WriteKernelFile(home, key_base);
  home.Write("cfg/vobusiness.cfg", "[VOBUSINESS]\nMAXATM " + std::to_string(counts.atm) +
                                       "\nMAXFIT " + std::to_string(counts.fit) +
                                       "\nMAXATMPROPERTY " + std::to_string(counts.property) +
                                       "\nMAXATMSTATUS " + std::to_string(counts.status) + "\n");
  home.Write("cfg/vosecurity.cfg", "MAXSECURITY " + std::to_string(counts.security) + "\n");
}

ServedHome::ServedHome(const SlotCounts& counts) : key_base_(NextKeyBase()) {
  WriteStartUpFiles(*this, key_base_, counts);
  host_ = StartHost(path());
}

ServedHome::ServedHome(const char* model) : key_base_(NextKeyBase()) {
  std::filesystem::copy(model, path(), std::filesystem::copy_options::recursive);
  WriteKernelFile(*this, key_base_);
  host_ = StartHost(path());
}

ServedHome::~ServedHome() {
  if (host_ <= 0) return;
  kill(host_, SIGTERM);
  waitpid(host_, nullptr, 0);
}
