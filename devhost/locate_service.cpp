#include "devhost/locate_service.h"

#include <sys/msg.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <thread>
#include <utility>

#include "devhost/system_call.h"
#include "tables/locate.h"

namespace devhost {
namespace {

constexpr auto kRetryInterval = std::chrono::milliseconds(10);

// A reply of the requests' type would come back as a request.
bool CanBeAnswered(const LocateMemoryMsg& request) {
  return request.ProcessId > voatm::kLocateRequestType;
}

}  // namespace

LocateService::LocateService(int queue, std::map<std::string, int> keys)
    : queue_(queue), keys_(std::move(keys)) {}

int LocateService::Run() {
  LocateMemoryMsg message{};
  while (true) {
    SendReplies();
    const int error = Receive(&message);
    if (error == ENOMSG) std::this_thread::sleep_for(kRetryInterval);
    if (error == ENOMSG || error == EINTR || error == EBADMSG) continue;
    if (error != 0) return error;
    const auto found = keys_.find(
        std::string(message.MemoryName, strnlen(message.MemoryName, sizeof message.MemoryName)));
    message.MessageType = message.ProcessId;
    message.ChannelKeyId = found == keys_.end() ? 0 : found->second;
    message.LocateStatus = found == keys_.end() ? -1 : 0;
    replies_.push_back(message);
  }
}

// Takes one message of the requests' type, waiting unless replies wait for room. Returns 0, EBADMSG
// for one that is no request, or the call's error. A message that is too long is cut: left in the
// queue it would be met again for ever.
int LocateService::Receive(LocateMemoryMsg* request) {
  const int flags = MSG_NOERROR | (replies_.empty() ? 0 : IPC_NOWAIT);
  const ssize_t size =
      msgrcv(queue_, request, voatm::kLocateBodySize, voatm::kLocateRequestType, flags);
  if (size < 0) return errno;
  return size == static_cast<ssize_t>(voatm::kLocateBodySize) && CanBeAnswered(*request) ? 0
                                                                                         : EBADMSG;
}

// Sweeps first, room or not: in a full queue no request would arrive to cause it.
void LocateService::SendReplies() {
  if (!replies_.empty()) SweepReplies();
  while (!replies_.empty()) {
    const LocateMemoryMsg& reply = replies_.front();
    if (msgsnd(queue_, &reply, voatm::kLocateBodySize, IPC_NOWAIT) == 0) {
      answered_.insert(reply.ProcessId);
    } else if (errno == EAGAIN && ProcessExists(reply.ProcessId)) {
      return;
    }
    replies_.pop_front();
  }
}

// Takes out what processes that have ended left behind.
void LocateService::SweepReplies() {
  for (auto process = answered_.begin(); process != answered_.end();) {
    if (ProcessExists(*process)) {
      ++process;
      continue;
    }
    LocateMemoryMsg reply{};
    while (msgrcv(queue_, &reply, voatm::kLocateBodySize, *process, IPC_NOWAIT) >= 0) {
    }
    process = answered_.erase(process);
  }
}

}  // namespace devhost
