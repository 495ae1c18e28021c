// A System V object that its creator removes.
#ifndef DEVHOST_IPC_OBJECT_H
#define DEVHOST_IPC_OBJECT_H

#include <sys/ipc.h>

#include <cstddef>
#include <string>

namespace devhost {

enum class IpcKind { kQueue, kSegment, kSemaphoreSet };

// "segment of ATMFITMEMORY, key 71011 (0x11563)": hexadecimal as ipcs shows it.
std::string DescribeIpc(IpcKind kind, const std::string& owner, key_t key);

// Returns the id of an existing object, or -1.
int FindIpc(IpcKind kind, key_t key);

// Removes an object. Returns false with errno set when it cannot be removed.
bool RemoveIpc(IpcKind kind, int id);

// Owns one object from its creation to its removal.
class IpcObject {
 public:
  // Creates an object that must not exist yet, with the rights `mode`. `size` is a segment's bytes
  // or a set's semaphores; a queue has none. Throws std::runtime_error that names the object and
  // the system's error.
  IpcObject(IpcKind kind, const std::string& owner, key_t key, std::size_t size, int mode);
  ~IpcObject();
  IpcObject(IpcObject&& other) noexcept;
  IpcObject(const IpcObject&) = delete;
  IpcObject& operator=(const IpcObject&) = delete;
  IpcObject& operator=(IpcObject&&) = delete;

  int id() const { return id_; }

  // Removes the object now. One that somebody else has removed counts as removed.
  void Remove();

 private:
  IpcKind kind_;
  int id_;
};

}  // namespace devhost

#endif  // DEVHOST_IPC_OBJECT_H
