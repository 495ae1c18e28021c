// Rows of a table that are wrong in themselves, gathered fault by fault.
#ifndef TOOLS_VOATM_LOOK_ROW_FAULTS_H
#define TOOLS_VOATM_LOOK_ROW_FAULTS_H

#include <string>
#include <utility>
#include <vector>

#include "records/record_tables.h"
#include "show/finding.h"

class RowFaults {
 public:
  explicit RowFaults(const records::RecordTable& table) : table_(table) {}

  // Says that a slot's row has a fault; `effect` is on drivers.
  void Add(const std::string& what, const std::string& effect, int slot);

  // A finding a fault, with the slots that have it.
  std::vector<Finding> Findings() const;

 private:
  struct Fault {
    std::string what;
    std::string effect;
    std::vector<int> slots;
  };

  const records::RecordTable& table_;
  std::vector<Fault> faults_;
};

// Judges the records of a table, a copy of `count` of them: ids that are empty or repeated, texts
// that do not end, switches other than Y and N, a table of zeros only.
std::vector<Finding> JudgeRecords(const records::RecordTable& table, const char* records,
                                  int count);

#endif  // TOOLS_VOATM_LOOK_ROW_FAULTS_H
