#include "devhost/ipc_object.h"

#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace devhost {
namespace {

constexpr int kNoId = -1;

const char* KindName(IpcKind kind) {
  switch (kind) {
    case IpcKind::kQueue:
      return "queue";
    case IpcKind::kSegment:
      return "segment";
    case IpcKind::kSemaphoreSet:
      return "semaphore set";
  }
  return "";
}

int GetIpc(IpcKind kind, key_t key, std::size_t size, int flags) {
  switch (kind) {
    case IpcKind::kQueue:
      return msgget(key, flags);
    case IpcKind::kSegment:
      return shmget(key, size, flags);
    case IpcKind::kSemaphoreSet:
      return semget(key, static_cast<int>(size), flags);
  }
  return kNoId;
}

}  // namespace

std::string DescribeIpc(IpcKind kind, const std::string& owner, key_t key) {
  char numbers[48];
  std::snprintf(numbers, sizeof numbers, "%d (0x%08x)", key, static_cast<unsigned>(key));
  return std::string(KindName(kind)) + " of " + owner + ", key " + numbers;
}

int FindIpc(IpcKind kind, key_t key) { return GetIpc(kind, key, 0, 0); }

bool RemoveIpc(IpcKind kind, int id) {
  switch (kind) {
    case IpcKind::kQueue:
      return msgctl(id, IPC_RMID, nullptr) == 0;
    case IpcKind::kSegment:
      return shmctl(id, IPC_RMID, nullptr) == 0;
    case IpcKind::kSemaphoreSet:
      return semctl(id, 0, IPC_RMID) == 0;
  }
  return false;
}

IpcObject::IpcObject(IpcKind kind, const std::string& owner, key_t key, std::size_t size, int mode)
    : kind_(kind), id_(GetIpc(kind, key, size, IPC_CREAT | IPC_EXCL | mode)) {
  if (id_ != kNoId) return;
  const std::string cause = std::strerror(errno);
  throw std::runtime_error(cause + ": cannot create the " + DescribeIpc(kind, owner, key));
}

IpcObject::~IpcObject() { Remove(); }

IpcObject::IpcObject(IpcObject&& other) noexcept
    : kind_(other.kind_), id_(std::exchange(other.id_, kNoId)) {}

void IpcObject::Remove() {
  if (id_ != kNoId) RemoveIpc(kind_, std::exchange(id_, kNoId));
}

}  // namespace devhost
