// The other side of a driver's tables: owns them, fills them, and answers where they are.
#ifndef DEVHOST_HOST_H
#define DEVHOST_HOST_H

#include <functional>
#include <string>
#include <vector>

#include "devhost/ipc_object.h"
#include "devhost/plan.h"
#include "devhost/stop_order.h"

namespace devhost {

struct HostOptions {
  bool replace = false;                     // removes objects that are there already
  int mode = 0600;                          // the rights to what is created
  pid_t exit_with = StopOrder::kNoProcess;  // the process whose end stops the host
};

// Stands for VoChannelMgr and for the tables' owner. From construction to destruction the queue,
// the six segments and the six semaphore sets exist, every semaphore at 2, every slot without a row
// at "NOTDEFINED"; the signals of StopOrder are held back meanwhile. Construct and destroy it on
// one thread; serve there, or on a thread started in between.
class Host {
 public:
  // Creates what is planned for the home; existing objects are removed first when the options say
  // so. Throws std::runtime_error with all refusals of the plan, one a line, or with what failed;
  // nothing that was created is then left.
  explicit Host(const std::string& home, const HostOptions& options = {});
  ~Host() = default;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  const HostPlan& plan() const { return plan_; }  // but for the records, which are let go

  // Answers locate requests until a signal, the end of the process to exit with, or Stop; then
  // removes the queue and returns. Calls `ready` once requests are answered; what that throws ends
  // serving as well. Throws std::runtime_error when somebody else removed the queue, or when it
  // fails. Serves once.
  void Serve(const std::function<void()>& ready);

  // Ends Serve, or the one to come. For any thread.
  void Stop() const { stop_.Give(); }

 private:
  void ClearTheWay() const;
  int Create(const PlannedObject& object);
  void CreateTable(PlannedTable* table);

  const HostOptions options_;
  HostPlan plan_;   // made while a signal still ends the process: a seed file may be a FIFO
  StopOrder stop_;  // from here on it stops the host in order
  std::vector<IpcObject> objects_;  // as planned
};

}  // namespace devhost

#endif  // DEVHOST_HOST_H
