// The order to stop: a signal, the end of another process, or a call.
#ifndef DEVHOST_STOP_ORDER_H
#define DEVHOST_STOP_ORDER_H

#include <sys/types.h>

#include <csignal>

namespace devhost {

// The signals are SIGINT, SIGTERM, SIGQUIT and SIGHUP, the last unless it is ignored, as below
// nohup. While the object exists they do not strike the thread that constructed it and the threads
// that this one starts: they wait to be read by Wait. Destroy it on the thread that constructed it.
class StopOrder {
 public:
  static constexpr pid_t kNoProcess = 0;

  // `leader` is the process whose end is the order as well. Throws std::runtime_error, also when
  // there is no such process.
  explicit StopOrder(pid_t leader = kNoProcess);
  ~StopOrder();
  StopOrder(const StopOrder&) = delete;
  StopOrder& operator=(const StopOrder&) = delete;

  // Waits for the order, whether it comes or has come. Signals seen are used up.
  void Wait() const;

  // For any thread.
  void Give() const;

 private:
  void Close() const;

  sigset_t before_;
  int signals_ = -1;
  int event_ = -1;
  int leader_ = -1;
};

}  // namespace devhost

#endif  // DEVHOST_STOP_ORDER_H
