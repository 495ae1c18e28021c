#include "support/served_home.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "devhost/host.h"
#include "support/child.h"
#include "support/test_keys.h"

namespace {

pid_t StartHost(const std::string& path) {
  int ready[2];
  if (pipe(ready) != 0) throw std::runtime_error("cannot open a pipe");
  const pid_t process = StartProcess(SIGTERM, [&] {
    close(ready[0]);
    devhost::Host host(path);
    host.Serve([&] {
      if (write(ready[1], "r", 1) != 1) host.Stop();
      close(ready[1]);
    });
    return 0;
  });
  close(ready[1]);
  char answer;
  const bool serves = read(ready[0], &answer, 1) == 1;
  close(ready[0]);
  if (serves) return process;
  waitpid(process, nullptr, 0);
  throw std::runtime_error("the host does not serve " + path);
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
