// What a home says about the six tables, what VoChannelMgr says, and what the system holds. Nothing
// here writes to a table.
#ifndef TOOLS_VOATM_LOOK_SURVEY_H
#define TOOLS_VOATM_LOOK_SURVEY_H

#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "records/record_tables.h"
#include "show/output.h"

// A System V object of a table: there, or missing with the reason.
struct IpcState {
  int id = -1;
  int error = 0;         // errno of what failed; 0 when it is there
  bool for_us = true;    // whether a driver of this user may open it
  std::time_t last = 0;  // when it was changed last: a set also by taking or giving back a slot

  bool there() const { return error == 0; }
};

struct SegmentState : IpcState {
  std::size_t bytes = 0;
  unsigned long attached = 0;
  pid_t creator = 0;
  uid_t owner = 0;
};

struct SetState : IpcState {
  int semaphores = 0;
  bool never_initialised = false;  // nobody ever gave a semaphore a value
};

SetState LookAtSet(int key);

struct TableState {
  const records::RecordTable* record;
  int slots;               // configured
  std::optional<int> key;  // none: VoChannelMgr does not know the table; then there are no objects
  SegmentState segment;
  SetState set;

  void RequireKey() const;  // throws std::runtime_error when there is none

  // Slots that the segment holds as a whole, and of those the ones that are configured.
  std::size_t HeldSlots() const { return segment.bytes / record->record_size; }
  int ReadableSlots() const;

  // "only 2 of 8 slots lie in the segment ..."; empty when all do.
  std::string Shortage() const;

  // "segment of ATMFITMEMORY, key 71011 (0x11563)", and the same of the set.
  std::string DescribeSegment() const;
  std::string DescribeSet() const;
};

// The table's segment and set under a key.
TableState LookAtTable(const records::RecordTable& record, int slots, std::optional<int> key);

struct Survey {
  int queue_key;
  std::vector<TableState> tables;  // in the order of kRecordTables
};

// Throw std::runtime_error when there is no home, an entry of a start-up file that is needed cannot
// be used, or VoChannelMgr does not answer. For one table nothing of another one is needed, and the
// key of an earlier answer serves, which is said.
Survey SurveyTables(const std::string& home);
TableState SurveyTable(const std::string& home, const records::RecordTable& record);

// The records of a table, attached for reading only, and read without locks as the lower-case
// operations do.
class Records {
 public:
  // Throws std::runtime_error when the segment is missing or cannot be attached.
  explicit Records(const TableState& table);
  ~Records();
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;

  const TableState& state() const { return state_; }
  int slots() const { return state_.ReadableSlots(); }
  const char* operator[](int slot) const {
    return records_ + static_cast<std::size_t>(slot) * state_.record->record_size;
  }

  // Gives each slot that holds a record, or all, as a copy that lasts as long as the call: what a
  // driver writes meanwhile must not change while it is shown.
  void ForEach(bool all, const std::function<void(int slot, const char* record)>& take) const;

 private:
  TableState state_;
  const char* records_ = nullptr;
};

// {table, name, key, slots, segment: {id, bytes, slots, defined, attached, owner, creator}, set:
// {id, semaphores}}; key, segment and set are null when there is none.
Json TableJson(const TableState& table);

// The ReadableSlots of a table, copied without locks. Throws as Records does.
std::vector<char> CopyRecords(const TableState& table);

#endif  // TOOLS_VOATM_LOOK_SURVEY_H
