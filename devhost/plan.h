// What a host would make of a home, before it makes anything.
#ifndef DEVHOST_PLAN_H
#define DEVHOST_PLAN_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/ipc_object.h"
#include "devhost/seed.h"
#include "records/record_tables.h"

namespace devhost {

struct PlannedObject {
  IpcKind kind;
  const char* owner;
  int key;
  std::size_t size;  // a segment's bytes, a set's semaphores

  std::string Describe() const { return DescribeIpc(kind, owner, key); }
};

struct PlannedTable {
  const records::RecordTable* record;
  int key;  // of the segment and of the semaphore set
  TableImage image;

  PlannedObject Segment() const;
  PlannedObject Set() const;
};

struct HostPlan {
  int queue_key = 0;
  std::vector<PlannedTable> tables;   // in the order in which they are located
  std::vector<std::string> refusals;  // why a host does not start; each names its file or object

  PlannedObject Queue() const;
  std::vector<PlannedObject> Objects() const;  // in the order in which they are made
};

// Reads cfg/ and tables/ of a home: the queue's key is CHANNEL#ORGKEY + 2, the tables' + 10 to
// + 15. Objects that exist are a refusal unless they are to be replaced.
HostPlan PlanHost(const std::string& home, bool replace);

// What a host refuses in the seed files of a home: of each file the first fault.
std::vector<SeedError> CheckSeeds(const std::string& home);

}  // namespace devhost

#endif  // DEVHOST_PLAN_H
