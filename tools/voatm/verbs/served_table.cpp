#include "verbs/served_table.h"

#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include "devhost/host.h"
#include "devhost/settings.h"
#include "devhost/system_call.h"
#include "look/locate.h"
#include "look/slot_locks.h"
#include "look/wait.h"

namespace {

constexpr int kLongestWait = 3600;

// A held slot. No signal ends the process meanwhile, for the slot would stay held.
class SlotHold {
 public:
  SlotHold(const TableState& table, int slot, int seconds) : set_(table.set.id), slot_(slot) {
    const std::string what = "slot " + std::to_string(slot) + " of " + table.record->name;
    if (WaitFor(what, seconds, [this] { return Take(); })) return;
    throw Refusal(what + " is held by " + DescribeProcess(LookAtSlot(table, slot).last) +
                  "; see voatm locks");
  }
  ~SlotHold() {
    Operate(devhost::kAtRest);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  SlotHold(const SlotHold&) = delete;
  SlotHold& operator=(const SlotHold&) = delete;

 private:
  bool Operate(int units) const {
    sembuf operation{};
    operation.sem_num = static_cast<unsigned short>(slot_);
    operation.sem_op = static_cast<short>(units);
    operation.sem_flg = IPC_NOWAIT;
    return semop(set_, &operation, 1) == 0;
  }

  bool Take() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
    if (Operate(-devhost::kAtRest)) return true;
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    if (error == EAGAIN) return false;
    throw devhost::SystemError(error, "cannot take slot " + std::to_string(slot_));
  }

  int set_;
  int slot_;
  sigset_t before_{};
};

}  // namespace

void AddChangeOptions(OptionList* list, ChangeOptions* options) {
  AddDataOptions(list, options);
  list->Flag("--dry-run", &options->dry_run, "Show what would change and write nothing");
  list->Number("--wait", 0, kLongestWait, &options->seconds,
               "Seconds that a held slot is waited for: 5");
}

ExitCode RunUnlessRefused(const std::function<ExitCode()>& verb) {
  try {
    return verb();
  } catch (const Refusal& refusal) {
    Say(refusal.what());
    return kFindings;
  }
}

ServedTable::ServedTable(const ChangeOptions& options)
    : options_(options), state_(SurveyTable(options.home, *options.table)) {
  const Locator locator(devhost::ReadQueueKey(options.home));
  const std::optional<int> host = locator.Ask(devhost::kHostName);
  if (!host.has_value() || *host != state_.segment.creator) {
    throw Refusal(std::string(options.table->name) +
                  " is not voatm serve's, and no other table is written to");
  }
  RequireSet(state_);
  void* const records = shmat(state_.segment.id, nullptr, 0);
  if (reinterpret_cast<std::intptr_t>(records) == -1) {
    throw devhost::SystemError(errno, "cannot attach the " + state_.DescribeSegment());
  }
  records_ = static_cast<char*>(records);
}

ServedTable::~ServedTable() { shmdt(records_); }

void ServedTable::Change(int slot, const std::function<void(char*)>& edit) {
  const std::size_t size = options_.table->record_size;
  char* const record = records_ + static_cast<std::size_t>(slot) * size;
  std::vector<char> before, after;
  {
    std::optional<SlotHold> hold;
    if (!options_.dry_run) hold.emplace(state_, slot, options_.seconds);
    before.assign(record, record + size);
    after = before;
    edit(after.data());
    if (!options_.dry_run) std::copy(after.begin(), after.end(), record);
  }
  Print(slot, ChangesOf(*options_.table, before.data(), after.data()));
}

void ServedTable::Print(int slot, const std::vector<FieldChange>& changes) {
  if (changes.empty()) return;
  ++changed_;
  if (options_.json) {
    List().Add({{"slot", slot}, {"changes", ChangesJson(changes)}});
    return;
  }
  NamedTexts texts;
  for (const FieldChange& change : changes) {
    texts.emplace_back(change.field->name, change.before + " -> " + change.after);
  }
  PrintFacts(options_.table->name + (" slot " + std::to_string(slot)), texts);
}

// Begun late, so that a refusal has no JSON before it.
JsonList& ServedTable::List() {
  if (list_.has_value()) return *list_;
  return list_.emplace(Json{{"table", options_.table->name}, {"dry_run", options_.dry_run}});
}

void ServedTable::Report() {
  if (options_.json) List().Close();
  const std::string number = changed_ == 0 ? "no" : std::to_string(changed_);
  Say(number + (changed_ == 1 ? " slot " : " slots ") +
      (options_.dry_run ? "would change" : "changed"));
}
