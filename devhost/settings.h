// What a home's cfg/ says about the queue and the tables, read as a driver's start-up reads it.
#ifndef DEVHOST_SETTINGS_H
#define DEVHOST_SETTINGS_H

#include <array>
#include <string>

#include "records/record_tables.h"

namespace devhost {

struct Settings {
  int queue_key;
  struct Table {
    int key;  // of the segment and of the semaphore set
    int slots;
  };
  std::array<Table, records::kTableCount> tables;  // in the order of kRecordTables
};

// All of them throw std::runtime_error that names file and key, and line and value where there is
// one, when a file does not open, a key is missing, or a value is no whole number or too large. As
// for a driver, an empty slot count is 0.
Settings ReadSettings(const std::string& home);
int ReadQueueKey(const std::string& home);
int ReadSlotCount(const std::string& home, const records::RecordTable& record);

}  // namespace devhost

#endif  // DEVHOST_SETTINGS_H
