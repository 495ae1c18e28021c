#include "devhost/stop_order.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace devhost {

StopOrder::StopOrder() : before_() {
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  signals_ = signalfd(-1, &stops, SFD_CLOEXEC);
  event_ = eventfd(0, EFD_CLOEXEC);
  if (signals_ < 0 || event_ < 0) {
    const std::string cause = std::strerror(errno);
    close(signals_);
    close(event_);
    throw std::runtime_error(cause + ": cannot open descriptors to wait for signals");
  }
  pthread_sigmask(SIG_BLOCK, &stops, &before_);
}

StopOrder::~StopOrder() {
  close(signals_);
  close(event_);
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void StopOrder::Wait() const {
  pollfd sources[] = {{signals_, POLLIN, 0}, {event_, POLLIN, 0}};
  while (poll(sources, 2, -1) < 0 && errno == EINTR) {
  }
  signalfd_siginfo seen{};
  while (poll(sources, 1, 0) > 0 && read(signals_, &seen, sizeof seen) > 0) {
  }
}

void StopOrder::Give() const { eventfd_write(event_, 1); }

}  // namespace devhost
