// The records of a table that drivers use now, for the verbs that show them.
#ifndef TOOLS_VOATM_LOOK_TABLE_READER_H
#define TOOLS_VOATM_LOOK_TABLE_READER_H

#include <functional>
#include <string>

#include "look/survey.h"

class TableReader {
 public:
  // Throws std::runtime_error when the table's segment cannot be attached.
  TableReader(const std::string& home, const records::RecordTable& table);

  const records::RecordTable& table() const { return *state_.record; }
  int slots() const { return state_.slots; }  // configured
  int readable() const { return records_.slots(); }
  bool complete() const { return readable() == slots(); }

  std::string Shortage() const { return state_.Shortage(); }  // empty when it is complete

  // Gives each readable slot that holds a record, or all, as a copy that lasts as long as the call:
  // what a driver writes meanwhile must not change while it is shown.
  void ForEach(bool all, const std::function<void(int slot, const char* record)>& take) const;

 private:
  TableState state_;
  Records records_;
};

#endif  // TOOLS_VOATM_LOOK_TABLE_READER_H
