#include "devhost/plan.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

#include "devhost/settings.h"
#include "devhost/system_call.h"

namespace devhost {
namespace {

// As many slots as are configured; nothing when that cannot be read or no table can have so many.
std::optional<int> UsableSlots(const std::string& home, const records::RecordTable& record) {
  try {
    const int slots = ReadSlotCount(home, record);
    if (slots <= MostSemaphoresOfASet()) return slots;
  } catch (const std::runtime_error&) {
    // Who reads the settings as a whole says it.
  }
  return std::nullopt;
}

TableImage ReadSeedOf(const std::string& home, const records::RecordTable& record) {
  return ReadSeed(record, home + "/tables/" + record.seed_file, UsableSlots(home, record));
}

void CollectRefusal(HostPlan* plan, const std::function<void()>& step) {
  try {
    step();
  } catch (const std::runtime_error& error) {
    plan->refusals.emplace_back(error.what());
  }
}

void RefuseLargeSets(const Settings& settings, HostPlan* plan) {
  const int most = MostSemaphoresOfASet();
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    const int slots = settings.tables[i].slots;
    if (slots <= most) continue;
    plan->refusals.push_back(std::string(records::kRecordTables[i].count.key) + " " +
                             std::to_string(slots) +
                             " is more than a semaphore set may have here, " +
                             std::to_string(most) + " (SEMMSL of kernel.sem)");
  }
}

void RefuseExisting(HostPlan* plan) {
  std::string existing;
  for (const PlannedObject& object : plan->Objects()) {
    const int id = FindIpc(object.kind, object.key);
    if (id >= 0) existing += "\n  " + object.Describe() + ", id " + std::to_string(id);
  }
  if (existing.empty()) return;
  plan->refusals.push_back("objects exist already and were not to be replaced:" + existing);
}

}  // namespace

PlannedObject PlannedTable::Segment() const {
  const std::size_t bytes = std::max<std::size_t>(  // the system has no empty segment
      static_cast<std::size_t>(image.slots) * record->record_size, 1);
  return {IpcKind::kSegment, record->name, key, bytes};
}

PlannedObject PlannedTable::Set() const {
  return {IpcKind::kSemaphoreSet, record->name, key,
          static_cast<std::size_t>(std::max(image.slots, 1))};
}

PlannedObject HostPlan::Queue() const { return {IpcKind::kQueue, "VoChannelMgr", queue_key, 0}; }

std::vector<PlannedObject> HostPlan::Objects() const {
  // The queue comes first: a driver that starts in between would create it. Its request waits there
  // until all is filled.
  std::vector<PlannedObject> objects = {Queue()};
  for (const PlannedTable& table : tables) {
    objects.push_back(table.Segment());
    objects.push_back(table.Set());
  }
  return objects;
}

HostPlan PlanHost(const std::string& home, bool replace) {
  HostPlan plan;
  std::optional<Settings> settings;
  CollectRefusal(&plan, [&] { settings = ReadSettings(home); });
  if (settings.has_value()) {
    plan.queue_key = settings->queue_key;
    RefuseLargeSets(*settings, &plan);
  }
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    const records::RecordTable& record = records::kRecordTables[i];
    CollectRefusal(&plan, [&] {
      TableImage image = ReadSeedOf(home, record);
      const int key = settings.has_value() ? settings->tables[i].key : 0;
      plan.tables.push_back({&record, key, std::move(image)});
    });
  }
  if (settings.has_value() && !replace) RefuseExisting(&plan);
  return plan;
}

std::vector<SeedError> CheckSeeds(const std::string& home) {
  std::vector<SeedError> errors;
  for (const records::RecordTable& record : records::kRecordTables) {
    try {
      ReadSeedOf(home, record);
    } catch (const SeedError& error) {
      errors.push_back(error);
    }
  }
  return errors;
}

}  // namespace devhost
