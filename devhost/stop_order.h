// The order to stop: SIGINT, SIGTERM, or a call.
#ifndef DEVHOST_STOP_ORDER_H
#define DEVHOST_STOP_ORDER_H

#include <csignal>

namespace devhost {

// While it exists, the two signals do not strike the thread that constructed it and the threads
// that this one starts: they wait to be read by Wait. Destroy it on the thread that constructed it.
class StopOrder {
 public:
  StopOrder();  // throws std::runtime_error
  ~StopOrder();
  StopOrder(const StopOrder&) = delete;
  StopOrder& operator=(const StopOrder&) = delete;

  // Waits for a signal or for Give, whether it comes or has come. Signals seen are used up.
  void Wait() const;

  // For any thread.
  void Give() const;

 private:
  sigset_t before_;
  int signals_;
  int event_;
};

}  // namespace devhost

#endif  // DEVHOST_STOP_ORDER_H
