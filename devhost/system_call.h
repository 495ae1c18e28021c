// What System V calls leave to their callers, and how a failed one is said.
#ifndef DEVHOST_SYSTEM_CALL_H
#define DEVHOST_SYSTEM_CALL_H

#include <sys/sem.h>
#include <sys/types.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace devhost {

// "No such file or directory: cannot open x": the error's text, then what failed.
std::runtime_error SystemError(int error, const std::string& failed);

// semctl's fourth argument, whose declaration the system leaves to the caller.
union SemaphoreArgument {
  int value;
  semid_ds* state;
  unsigned short* values;
  struct seminfo* limits;
};

constexpr int kAtRest = 2;  // units of a slot's semaphore that nobody holds; a holder takes all

// The most semaphores of a set (SEMMSL of kernel.sem). Throws std::runtime_error.
int MostSemaphoresOfASet();

// One that never ends is refused before it takes all memory.
constexpr std::size_t kLargestFile = std::size_t{1} << 30;

// Reads a file, or its first `most` bytes. Returns 0, or errno of what failed, a folder's and that
// of kLargestFile among them. A FIFO to which nobody writes is empty.
int ReadFile(const std::string& path, std::string* text, std::size_t most = kLargestFile);

// A file's text. Throws std::runtime_error that names the file.
std::string FileText(const std::string& path);

// Whether there is a process, be it another user's.
bool ProcessExists(pid_t id);

}  // namespace devhost

#endif  // DEVHOST_SYSTEM_CALL_H
