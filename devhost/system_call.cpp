#include "devhost/system_call.h"

#include <cerrno>
#include <csignal>
#include <cstring>

namespace devhost {

std::runtime_error SystemError(int error, const std::string& failed) {
  return std::runtime_error(std::string(std::strerror(error)) + ": " + failed);
}

int MostSemaphoresOfASet() {
  struct seminfo limits {};
  SemaphoreArgument argument{};
  argument.limits = &limits;
  if (semctl(0, 0, IPC_INFO, argument) < 0) {
    throw SystemError(errno, "cannot read the limits of semaphores");
  }
  return limits.semmsl;
}

bool ProcessExists(pid_t id) { return kill(id, 0) == 0 || errno != ESRCH; }

}  // namespace devhost
