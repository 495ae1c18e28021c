// A table that voatm serve owns, and what a verb changed in it.
#ifndef TOOLS_VOATM_VERBS_SERVED_TABLE_H
#define TOOLS_VOATM_VERBS_SERVED_TABLE_H

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "look/survey.h"
#include "show/output.h"
#include "show/record_view.h"
#include "verb.h"

struct ChangeOptions : DataOptions {
  const records::RecordTable* table = nullptr;
  bool dry_run = false;
  int seconds = 5;  // to wait for a slot
};

// Adds --home, --json, --dry-run and --wait.
void AddChangeOptions(OptionList* list, ChangeOptions* options);

// What is asked for is not done, for a reason that is said; the exit status is 1.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs a verb, and says a Refusal.
ExitCode RunUnlessRefused(const std::function<ExitCode()>& verb);

class ServedTable {
 public:
  // Attaches the table. Throws Refusal when it is not that of a voatm serve which serves now, and
  // std::runtime_error when it cannot be used.
  explicit ServedTable(const ChangeOptions& options);
  ~ServedTable();
  ServedTable(const ServedTable&) = delete;
  ServedTable& operator=(const ServedTable&) = delete;

  int slots() const { return state_.ReadableSlots(); }

  // Takes the slot, lets `edit` change a copy of its record, writes the copy back and gives the
  // slot back; then prints what changed. What `edit` throws is passed on, and nothing is written. A
  // dry run takes and writes nothing. Throws Refusal when the slot is not free in time.
  void Change(int slot, const std::function<void(char*)>& edit);

  // Ends what was printed.
  void Report();

 private:
  JsonList& List();
  void Print(int slot, const std::vector<FieldChange>& changes);

  const ChangeOptions& options_;
  TableState state_;
  char* records_ = nullptr;
  std::optional<JsonList> list_;
  int changed_ = 0;  // slots
};

#endif  // TOOLS_VOATM_VERBS_SERVED_TABLE_H
