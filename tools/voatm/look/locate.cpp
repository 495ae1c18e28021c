#include "look/locate.h"

#include <sys/msg.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "devhost/ipc_object.h"
#include "devhost/system_call.h"
#include "look/wait.h"
#include "tables/locate.h"
#include "voatmutil.h"

namespace {

using devhost::SystemError;

std::runtime_error NoAnswer(const std::string& why) {
  return std::runtime_error("VoChannelMgr does not answer: " + why);
}

}  // namespace

Locator::Locator(int queue_key, int seconds)
    : seconds_(seconds),
      queue_(msgget(queue_key, 0)),
      description_(devhost::DescribeIpc(devhost::IpcKind::kQueue, "VoChannelMgr", queue_key)) {
  if (queue_ >= 0) return;
  throw std::runtime_error("VoChannelMgr is not running: there is no " + description_);
}

// Whether a request of a process that has ended lies in the queue, which is looked at message by
// message without taking any. Where the system cannot do that there seems to be none.
bool Locator::HoldsOrphanedRequest() const {
  LocateMemoryMsg message{};
  for (int place = 0;; ++place) {
    const ssize_t size = msgrcv(queue_, &message, voatm::kLocateBodySize, place,
                                MSG_COPY | IPC_NOWAIT | MSG_NOERROR);
    if (size < 0) return false;
    const bool request = message.MessageType == voatm::kLocateRequestType &&
                         size == static_cast<ssize_t>(voatm::kLocateBodySize);
    if (request && !devhost::ProcessExists(message.ProcessId)) return true;
  }
}

// Takes a message to this process, if there is one.
bool Locator::Receive(LocateMemoryMsg* reply) const {
  if (msgrcv(queue_, reply, voatm::kLocateBodySize, getpid(), IPC_NOWAIT) >= 0) return true;
  if (errno == ENOMSG) return false;
  throw SystemError(errno, "cannot receive from the " + description_);
}

void Locator::Send(const char* table) const {
  LocateMemoryMsg request{};
  request.MessageType = voatm::kLocateRequestType;
  std::strncpy(request.MemoryName, table, sizeof request.MemoryName - 1);
  request.RequestCode = LOCATE_MEMORY;
  request.ProcessId = getpid();
  if (msgsnd(queue_, &request, voatm::kLocateBodySize, IPC_NOWAIT) == 0) return;
  const int error = errno;
  if (error == EAGAIN) throw NoAnswer("no room in the " + description_);
  throw SystemError(error, "cannot send to the " + description_);
}

std::optional<int> Locator::Ask(const char* table) const {
  if (getpid() <= voatm::kLocateRequestType) {
    throw NoAnswer("an answer to process " + std::to_string(getpid()) +
                   " would be taken for a request; start voatm from a shell");
  }
  const std::string answer = std::string("VoChannelMgr's answer where ") + table + " is";
  if (!WaitFor(answer, seconds_, [&] { return !HoldsOrphanedRequest(); })) {
    throw NoAnswer("a request lies unread in the " + description_);
  }
  LocateMemoryMsg reply{};
  while (Receive(&reply)) {  // left behind for an earlier process of this number
  }
  Send(table);
  const bool answered = WaitFor(answer, seconds_, [&] {
    return Receive(&reply) && std::strncmp(reply.MemoryName, table, sizeof reply.MemoryName) == 0;
  });
  if (!answered) {
    throw NoAnswer("waited " + std::to_string(seconds_) + " seconds for " + table + " at the " +
                   description_);
  }
  if (reply.LocateStatus < 0) return std::nullopt;
  return reply.ChannelKeyId;
}
