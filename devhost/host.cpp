#include "devhost/host.h"

#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

#include "devhost/locate_service.h"
#include "devhost/seed.h"
#include "devhost/system_call.h"

namespace devhost {
namespace {

constexpr const char* kQueueOwner = "VoChannelMgr";

// Refuses a table with more slots than the system lets a semaphore set have.
void CheckSetSize(const records::RecordTable& record, int slots) {
  const int most = MostSemaphoresOfASet();
  if (slots <= most) return;
  throw std::runtime_error(std::string(record.count.key) + " " + std::to_string(slots) +
                           " is more than a semaphore set may have here, " + std::to_string(most) +
                           " (SEMMSL of kernel.sem)");
}

}  // namespace

Host::Host(const std::string& home, const HostOptions& options)
    : options_(options), stop_(options.exit_with), settings_(ReadSettings(home)) {
  const Images images = LoadTables(home);
  ClearTheWay();
  // The queue comes first: a driver that starts in between would create it. Its request waits there
  // until all is filled.
  Create(IpcKind::kQueue, kQueueOwner, settings_.queue_key, 0);
  for (std::size_t i = 0; i < records::kTableCount; ++i) CreateTable(tables_[i], images[i]);
}

Host::Images Host::LoadTables(const std::string& home) {
  Images images;
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    const records::RecordTable& record = records::kRecordTables[i];
    const auto [key, slots] = settings_.tables[i];
    CheckSetSize(record, slots);
    TableImage image = ReadSeed(record, home + "/tables/" + record.seed_file, slots);
    images[i] = std::move(image.records);
    images[i].resize(
        std::max<std::size_t>(images[i].size(), 1));  // the system has no empty segment
    tables_.push_back(
        {&record, key, slots, image.rows, images[i].size(), image.file, image.has_file});
  }
  return images;
}

void Host::ClearTheWay() const {
  std::string existing;
  const auto clear = [&](IpcKind kind, const char* owner, int key) {
    const int id = FindIpc(kind, key);
    if (id < 0) return;
    const std::string object = DescribeIpc(kind, owner, key) + ", id " + std::to_string(id);
    if (!options_.replace) {
      existing += "\n  " + object;
    } else if (!RemoveIpc(kind, id)) {
      const int error = errno;
      throw SystemError(error, "cannot remove the " + object);
    }
  };
  clear(IpcKind::kQueue, kQueueOwner, settings_.queue_key);
  for (const Table& table : tables_) {
    clear(IpcKind::kSegment, table.record->name, table.key);
    clear(IpcKind::kSemaphoreSet, table.record->name, table.key);
  }
  if (!existing.empty())
    throw std::runtime_error("objects exist already and were not to be replaced:" + existing);
}

int Host::Create(IpcKind kind, const char* owner, int key, std::size_t size) {
  return objects_.emplace_back(kind, owner, key, size, options_.mode).id();
}

void Host::CreateTable(const Table& table, const std::vector<char>& image) {
  const char* name = table.record->name;
  const int segment = Create(IpcKind::kSegment, name, table.key, image.size());
  void* records = shmat(segment, nullptr, 0);
  if (reinterpret_cast<std::intptr_t>(records) == -1) {
    const int error = errno;
    throw SystemError(error,
                      "cannot attach the " + DescribeIpc(IpcKind::kSegment, name, table.key));
  }
  std::memcpy(records, image.data(), image.size());
  shmdt(records);

  const auto count = static_cast<std::size_t>(std::max(table.slots, 1));
  const int set = Create(IpcKind::kSemaphoreSet, name, table.key, count);
  std::vector<unsigned short> units(count, kAtRest);
  SemaphoreArgument argument{};
  argument.values = units.data();
  if (semctl(set, 0, SETALL, argument) < 0) {
    const int error = errno;
    throw SystemError(error,
                      "cannot set the " + DescribeIpc(IpcKind::kSemaphoreSet, name, table.key));
  }
}

void Host::Serve(const std::function<void()>& ready) {
  std::map<std::string, int> keys;
  for (const Table& table : tables_) keys[table.record->name] = table.key;
  LocateService service(objects_.front().id(), std::move(keys));
  std::atomic<int> error{0};
  std::thread worker([&] {
    error = service.Run();
    Stop();
  });
  std::exception_ptr failure;
  try {
    ready();
    stop_.Wait();
  } catch (...) {
    failure = std::current_exception();
  }
  // An error that is there before the queue is removed here is somebody else's doing.
  const int cause = error;
  objects_.front().Remove();
  worker.join();
  if (failure) std::rethrow_exception(failure);
  const std::string queue = DescribeIpc(IpcKind::kQueue, kQueueOwner, queue_key());
  if (cause == EIDRM || cause == EINVAL) {
    throw std::runtime_error("somebody else removed the " + queue);
  }
  if (cause != 0) throw SystemError(cause, "cannot receive from the " + queue);
}

}  // namespace devhost
