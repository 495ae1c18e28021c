#include "devhost/host.h"

#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

#include "devhost/locate_service.h"
#include "devhost/system_call.h"

namespace devhost {
namespace {

std::string Lines(const std::vector<std::string>& texts) {
  std::string lines;
  for (const std::string& text : texts) lines += (lines.empty() ? "" : "\n") + text;
  return lines;
}

}  // namespace

Host::Host(const std::string& home, const HostOptions& options)
    : options_(options), plan_(PlanHost(home, options.replace)), stop_(options.exit_with) {
  if (!plan_.refusals.empty()) throw std::runtime_error(Lines(plan_.refusals));
  if (options.replace) ClearTheWay();
  Create(plan_.Queue());
  for (PlannedTable& table : plan_.tables) CreateTable(&table);
}

void Host::ClearTheWay() const {
  for (const PlannedObject& object : plan_.Objects()) {
    const int id = FindIpc(object.kind, object.key);
    if (id < 0 || RemoveIpc(object.kind, id)) continue;
    const int error = errno;
    throw SystemError(error,
                      "cannot remove the " + object.Describe() + ", id " + std::to_string(id));
  }
}

int Host::Create(const PlannedObject& object) {
  return objects_.emplace_back(object.kind, object.owner, object.key, object.size, options_.mode)
      .id();
}

void Host::CreateTable(PlannedTable* table) {
  const PlannedObject segment = table->Segment(), set = table->Set();
  void* const records = shmat(Create(segment), nullptr, 0);
  if (reinterpret_cast<std::intptr_t>(records) == -1) {
    const int error = errno;
    throw SystemError(error, "cannot attach the " + segment.Describe());
  }
  const std::vector<char>& image = table->image.records;
  std::copy(image.begin(), image.end(), static_cast<char*>(records));
  shmdt(records);
  table->image.records = {};

  const int id = Create(set);
  std::vector<unsigned short> units(set.size, kAtRest);
  SemaphoreArgument argument{};
  argument.values = units.data();
  if (semctl(id, 0, SETALL, argument) < 0) {
    const int error = errno;
    throw SystemError(error, "cannot set the " + set.Describe());
  }
}

void Host::Serve(const std::function<void()>& ready) {
  std::map<std::string, int> keys;
  for (const PlannedTable& table : plan_.tables) keys[table.record->name] = table.key;
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
  const std::string queue = plan_.Queue().Describe();
  if (cause == EIDRM || cause == EINVAL) {
    throw std::runtime_error("somebody else removed the " + queue);
  }
  if (cause != 0) throw SystemError(cause, "cannot receive from the " + queue);
}

}  // namespace devhost
