#include "devhost/stop_order.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <string>

#include "devhost/system_call.h"

namespace devhost {
namespace {

sigset_t Stops() {
  sigset_t stops;
  sigemptyset(&stops);
  for (const int signal : {SIGINT, SIGTERM, SIGQUIT}) sigaddset(&stops, signal);
  struct sigaction hangup {};
  sigaction(SIGHUP, nullptr, &hangup);
  if (hangup.sa_handler != SIG_IGN) sigaddset(&stops, SIGHUP);
  return stops;
}

// A descriptor that can be read once the process has ended, or -1 with errno.
int OpenProcess(pid_t id) { return static_cast<int>(syscall(SYS_pidfd_open, id, 0)); }

}  // namespace

StopOrder::StopOrder(pid_t leader) : before_() {
  const sigset_t stops = Stops();
  signals_ = signalfd(-1, &stops, SFD_CLOEXEC);
  event_ = eventfd(0, EFD_CLOEXEC);
  if (leader != kNoProcess) leader_ = OpenProcess(leader);
  const int error = errno;
  if (signals_ < 0 || event_ < 0 || (leader != kNoProcess && leader_ < 0)) {
    Close();
    const bool no_leader = leader != kNoProcess && leader_ < 0;
    throw SystemError(error, no_leader ? "process " + std::to_string(leader)
                                       : "cannot open descriptors to wait for an order to stop");
  }
  pthread_sigmask(SIG_BLOCK, &stops, &before_);
}

StopOrder::~StopOrder() {
  Close();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void StopOrder::Close() const {
  for (const int descriptor : {signals_, event_, leader_}) {
    if (descriptor >= 0) close(descriptor);
  }
}

void StopOrder::Wait() const {
  // A descriptor below zero is passed over.
  pollfd sources[] = {{signals_, POLLIN, 0}, {event_, POLLIN, 0}, {leader_, POLLIN, 0}};
  while (poll(sources, std::size(sources), -1) < 0 && errno == EINTR) {
  }
  signalfd_siginfo seen{};
  while (poll(sources, 1, 0) > 0 && read(signals_, &seen, sizeof seen) > 0) {
  }
}

void StopOrder::Give() const { eventfd_write(event_, 1); }

}  // namespace devhost
