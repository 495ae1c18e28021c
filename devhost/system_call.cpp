#include "devhost/system_call.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
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

int ReadFile(const std::string& path, std::string* text, std::size_t most) {
  // Opening is not to wait for a writer; reading is.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return errno;
  fcntl(file, F_SETFL, 0);
  char chunk[16384];
  ssize_t size = 1;
  while (size > 0 && text->size() < most) {
    size = read(file, chunk, std::min(sizeof chunk, most - text->size()));
    if (size > 0) text->append(chunk, static_cast<std::size_t>(size));
  }
  const int error = size < 0 ? errno : 0;
  close(file);
  return text->size() == kLargestFile ? EFBIG : error;
}

std::string FileText(const std::string& path) {
  std::string text;
  const int error = ReadFile(path, &text);
  if (error != 0) throw SystemError(error, "cannot read " + path);
  return text;
}

bool ProcessExists(pid_t id) { return kill(id, 0) == 0 || errno != ESRCH; }

}  // namespace devhost
