#include "look/locate.h"

#include <sys/msg.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "devhost/ipc_object.h"
#include "devhost/system_call.h"
#include "tables/locate.h"
#include "voatmutil.h"

namespace {

using devhost::SystemError;
using Clock = std::chrono::steady_clock;

constexpr auto kTimeLimit = std::chrono::seconds(2);
constexpr auto kPollInterval = std::chrono::microseconds(100);

// Whether the last message comes from a process that has ended, and nobody has received since: then
// nobody serves the queue, and another request would only take room from the drivers'.
bool LiesUnread(int queue) {
  msqid_ds state{};
  return msgctl(queue, IPC_STAT, &state) == 0 && state.msg_qnum > 0 &&
         state.msg_rtime < state.msg_stime && !devhost::ProcessExists(state.msg_lspid);
}

}  // namespace

Locator::Locator(int queue_key)
    : queue_(msgget(queue_key, 0)),
      description_(devhost::DescribeIpc(devhost::IpcKind::kQueue, "VoChannelMgr", queue_key)) {
  if (queue_ >= 0) return;
  const int error = errno;
  if (error == ENOENT) {
    throw std::runtime_error("VoChannelMgr is not running: there is no " + description_);
  }
  throw SystemError(error, "cannot open the " + description_);
}

void Locator::Send(const char* table) const {
  if (LiesUnread(queue_)) {
    throw std::runtime_error("VoChannelMgr does not answer: requests lie unread in the " +
                             description_);
  }
  LocateMemoryMsg request{};
  request.MessageType = voatm::kLocateRequestType;
  std::strncpy(request.MemoryName, table, sizeof request.MemoryName - 1);
  request.RequestCode = LOCATE_MEMORY;
  request.ProcessId = getpid();
  if (msgsnd(queue_, &request, voatm::kLocateBodySize, IPC_NOWAIT) == 0) return;
  const int error = errno;
  if (error == EAGAIN) {
    throw std::runtime_error("VoChannelMgr does not answer: no room in the " + description_);
  }
  throw SystemError(error, "cannot send to the " + description_);
}

std::optional<int> Locator::Ask(const char* table) const {
  Send(table);
  const auto end = Clock::now() + kTimeLimit;
  LocateMemoryMsg reply{};
  while (Clock::now() < end) {
    if (msgrcv(queue_, &reply, voatm::kLocateBodySize, getpid(), IPC_NOWAIT) >= 0) {
      // A reply to an earlier process of this number may have been left behind.
      if (std::strncmp(reply.MemoryName, table, sizeof reply.MemoryName) != 0) continue;
      if (reply.LocateStatus < 0) return std::nullopt;
      return reply.ChannelKeyId;
    }
    const int error = errno;
    if (error != ENOMSG) throw SystemError(error, "cannot receive from the " + description_);
    std::this_thread::sleep_for(kPollInterval);
  }
  throw std::runtime_error(std::string("VoChannelMgr does not answer: waited 2 seconds for ") +
                           table + " at the " + description_);
}
