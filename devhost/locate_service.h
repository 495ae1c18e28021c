// VoChannelMgr's part in a driver's start-up.
#ifndef DEVHOST_LOCATE_SERVICE_H
#define DEVHOST_LOCATE_SERVICE_H

#include <deque>
#include <map>
#include <set>
#include <string>

#include "voatmutil.h"

namespace devhost {

// Answers locate requests: the reply is the request with the table's key, or with LocateStatus -1
// when the table is unknown. Never waits for room in the queue: a reply that finds none is kept
// until there is some, and replies left behind by processes that have ended are taken out.
class LocateService {
 public:
  // The queue is not owned.
  LocateService(int queue, std::map<std::string, int> keys);

  // Answers until the queue is gone or fails. Returns the error number of that.
  int Run();

 private:
  int Receive(LocateMemoryMsg* request);
  void SendReplies();
  void SweepReplies();

  int queue_;
  std::map<std::string, int> keys_;      // of the tables, by name
  std::deque<LocateMemoryMsg> replies_;  // not yet in the queue
  std::set<int> answered_;               // processes that may have left a reply in the queue
};

}  // namespace devhost

#endif  // DEVHOST_LOCATE_SERVICE_H
