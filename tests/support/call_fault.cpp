#include "support/call_fault.h"

#include <sys/sem.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <map>

namespace {

thread_local CallFault* current = nullptr;

template <typename... Arguments>
long Call(const char* function, long number, Arguments... arguments) {
  const int fate = current != nullptr ? current->Count(function) : CallFault::kNothing;
  if (fate == CallFault::kKilledBefore) raise(SIGKILL);
  const bool fails = fate > 0;
  const long result = fails && number != SYS_close ? -1 : syscall(number, arguments...);
  if (fate == CallFault::kKilledAfter) raise(SIGKILL);
  if (fails) errno = fate;
  return fails ? -1 : result;
}

}  // namespace

// The functions have other names in C++, since their headers may define them inline.
#define STAND_BEFORE(result, name, number, parameters, ...)                                       \
  extern "C" [[gnu::visibility("default")]] result Tested_##name parameters asm(#name);           \
  extern "C" result Tested_##name parameters { return (result)Call(#name, number, __VA_ARGS__); } \
  static_assert(true)

STAND_BEFORE(int, msgget, SYS_msgget, (key_t key, int flags), key, flags);
STAND_BEFORE(int, msgsnd, SYS_msgsnd, (int id, const void* text, size_t size, int flags), id, text,
             size, flags);
STAND_BEFORE(ssize_t, msgrcv, SYS_msgrcv, (int id, void* text, size_t size, long type, int flags),
             id, text, size, type, flags);
STAND_BEFORE(int, semget, SYS_semget, (key_t key, int count, int flags), key, count, flags);
STAND_BEFORE(int, semop, SYS_semtimedop, (int id, sembuf* moves, size_t count), id, moves, count,
             nullptr);
STAND_BEFORE(int, shmget, SYS_shmget, (key_t key, size_t size, int flags), key, size, flags);
// NOLINTNEXTLINE(performance-no-int-to-ptr)
STAND_BEFORE(void*, shmat, SYS_shmat, (int id, const void* place, int flags), id, place, flags);
STAND_BEFORE(int, open, SYS_openat, (const char* path, int flags, mode_t mode), -100, path, flags,
             mode);
STAND_BEFORE(ssize_t, pread, SYS_pread64, (int file, void* text, size_t size, off_t offset), file,
             text, size, offset);
STAND_BEFORE(ssize_t, write, SYS_write, (int file, const void* text, size_t size), file, text,
             size);
STAND_BEFORE(int, close, SYS_close, (int file), file);

CallFault::CallFault(const char* function, int nth, int error)
    : function_(function), nth_(nth), error_(error) {
  current = this;
}

CallFault::~CallFault() { current = nullptr; }

int CallFault::Count(const char* function) {
  return function_ == function && ++calls_ == nth_ ? error_ : kNothing;
}

int CallsOf(const char* function, const std::function<void()>& operation) {
  const CallFault counted(function);
  operation();
  return counted.calls();
}

std::set<int> SomeOf(int calls) {
  return calls > 0 ? std::set<int>{1, (calls + 1) / 2, calls} : std::set<int>();
}

const std::vector<int>& ErrorsOf(const std::string& function) {
  static const std::map<std::string, std::vector<int>> errors = {
      {"msgget", {EACCES, EEXIST, ENOENT, ENOMEM, ENOSPC}},
      {"msgsnd", {EACCES, EAGAIN, EFAULT, EIDRM, EINTR, EINVAL, ENOMEM}},
      {"msgrcv", {E2BIG, EACCES, EFAULT, EIDRM, EINTR, EINVAL, ENOMSG}},
      {"semget", {EACCES, EEXIST, EINVAL, ENOENT, ENOMEM, ENOSPC}},
      {"semop", {E2BIG, EACCES, EAGAIN, EFAULT, EFBIG, EIDRM, EINTR, EINVAL, ENOMEM, ERANGE}},
      {"shmget", {EACCES, EEXIST, EINVAL, ENFILE, ENOENT, ENOMEM, ENOSPC, EPERM}},
      {"shmat", {EACCES, EIDRM, EINVAL, ENOMEM}},
      {"open", {EACCES, EBUSY,   EDQUOT, EEXIST,       EFAULT, EFBIG,  EINTR,   EINVAL,
                EISDIR, ELOOP,   EMFILE, ENAMETOOLONG, ENFILE, ENODEV, ENOENT,  ENOMEM,
                ENOSPC, ENOTDIR, ENXIO,  EOVERFLOW,    EPERM,  EROFS,  ETXTBSY, EAGAIN}},
      {"pread", {EAGAIN, EBADF, EFAULT, EINTR, EINVAL, EIO, EISDIR, ENXIO, EOVERFLOW, ESPIPE}},
      {"write", {EAGAIN, EBADF, EDQUOT, EFAULT, EFBIG, EINVAL, EIO, ENOSPC, EPERM, EINTR}},
      {"close", {EINTR, EIO, ENOSPC, EDQUOT}}};
  return errors.at(function);
}

long OpenDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}
