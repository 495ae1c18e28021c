// The soak's home and processes.
#ifndef SOAK_PROCESSES_H
#define SOAK_PROCESSES_H

#include <sys/types.h>

#include <functional>
#include <string>

// A copy of the sample home with IPC keys of its own, which VODIR_HOME names, and the development
// host that serves it. Both are gone with the object. Throws std::runtime_error.
class ServedHome {
 public:
  ServedHome();
  ~ServedHome();
  ServedHome(const ServedHome&) = delete;
  ServedHome& operator=(const ServedHome&) = delete;

  pid_t host() const { return host_; }

 private:
  void StartHost();

  std::string path_;
  pid_t host_ = 0;
};

// Starts a process that runs a function and ends with it, or by this signal with its parent. The
// signals of a terminal do not reach it.
pid_t Start(int end_signal, const std::function<int()>& run);

// Waits until a process ends, at most so many seconds. Returns its wait status, or -1.
int WaitFor(pid_t process, double seconds);

// What a process holds: memory of its own as it is mapped and as it is used, in KB, and its open
// descriptors.
struct Footprint {
  long data;
  long used;
  long descriptors;
};

Footprint FootprintOf(pid_t process);

#endif  // SOAK_PROCESSES_H
