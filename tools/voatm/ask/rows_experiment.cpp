// Experiments on a copy of a table's rows.
#include <algorithm>
#include <cstring>

#include "ask/experiment.h"
#include "ask/observation.h"
#include "ask/said.h"

namespace {

constexpr int kNoSlot = -1;

// The scans that the locked form made, told apart by where it took slots and what it said: a scan
// that found its row is followed by one from that row on, one that did not by its message.
class Scans {
 public:
  // `taken` is the slot of the row that answers; what is said behind its scan is no miss.
  Scans(const std::vector<Event>& events, int count, int taken) {
    for (const Event& event : events) {
      if (event.kind == Event::Kind::kTake) Visit(event.number);
      if (event.kind == Event::Kind::kTrace && first_ != kNoSlot) EndWith("none: " + event.text);
    }
    const bool hit = taken != kNoSlot && last_ == taken;
    if (first_ != kNoSlot) EndWith(hit || last_ < count - 1 ? Hit() : "none");
    if (hit && !tries_.empty()) tries_.back().result = Hit();
  }

  std::vector<Try> Take() { return std::move(tries_); }
  int visited() const { return visited_; }

 private:
  std::string Hit() const { return "slot " + std::to_string(last_); }

  void Visit(int slot) {
    if (first_ != kNoSlot && slot != last_ + 1) EndWith(Hit());
    if (first_ == kNoSlot) first_ = slot;
    last_ = slot;
    ++visited_;
  }

  void EndWith(const std::string& result) {
    const std::string from = std::to_string(first_);
    const std::string to = std::to_string(last_);
    tries_.push_back({"scan", from == to ? "slot " + from : "slots " + from + " to " + to, result});
    first_ = kNoSlot;
  }

  std::vector<Try> tries_;
  int first_ = kNoSlot;
  int last_ = kNoSlot;
  int visited_ = 0;
};

int Calls(const std::vector<Event>& events) {
  return static_cast<int>(std::count_if(events.begin(), events.end(), [](const Event& event) {
    return event.kind == Event::Kind::kTake || event.kind == Event::Kind::kGive;
  }));
}

}  // namespace

RowsExperiment::RowsExperiment(const Question& question, const Inputs& inputs, Rows* rows)
    : question_(question), inputs_(inputs), rows_(rows) {
  util_.dptr = Observation::Trace();
  Point(rows->bytes.data(), rows->count());
}

void RowsExperiment::Point(char* rows, int count) {
  rows_->table->point(util_, rows);
  util_.*rows_->table->slots = count;
  util_.*rows_->table->semid = -1;  // no set of anybody's, should a call ever get through
}

std::string RowsExperiment::Where(int slot) const {
  return std::string(rows_->table->name) + " slot " + std::to_string(slot);
}

Answer RowsExperiment::Ask() { return question_.ask(util_, inputs_); }

int RowsExperiment::AskMark() {
  const SlotMark& mark = question_.mark;
  const std::vector<char> unmarked = rows_->bytes;
  long long slot = 0;
  for (long long worth = 1; worth == 1 || worth < rows_->count(); worth *= mark.base) {
    for (int i = 0; i < rows_->count(); ++i) {
      mark.put((*rows_)[i], static_cast<int>(i / worth % mark.base));
    }
    const int digit = mark.ask(util_, inputs_);
    if (digit < 0) {
      slot = kNoSlot;
      break;
    }
    slot += digit * worth;
  }
  std::copy(unmarked.begin(), unmarked.end(), rows_->bytes.begin());
  return static_cast<int>(slot);
}

std::vector<Event> RowsExperiment::AskLocked() {
  Observation observation;
  util_.LockFlag = true;
  Ask();
  util_.LockFlag = false;
  return observation.Take();
}

int RowsExperiment::FindSlot() {
  if (question_.mark.ask != nullptr) return AskMark();
  if (!Ask().found) return kNoSlot;
  int last = kNoSlot;
  for (const Event& event : AskLocked()) {
    if (event.kind == Event::Kind::kTake) last = event.number;
  }
  return last;
}

Answer RowsExperiment::AskAlone(int slot) {
  Point((*rows_)[slot], 1);
  Answer answer = Ask();
  Point(rows_->bytes.data(), rows_->count());
  return answer;
}

Explanation RowsExperiment::Explain() {
  Explanation explanation;
  {
    Observation observation;
    explanation.taken.answer = Ask();
    explanation.trace = Said(observation.Take());
  }
  const int taken = FindSlot();
  if (taken != kNoSlot) explanation.taken.where = Where(taken);
  const std::vector<Event> locked = AskLocked();
  Scans scans(locked, rows_->count(), taken);
  explanation.cost = Cost{scans.visited(), Calls(locked)};
  explanation.tries = scans.Take();
  LookBehind(taken, &explanation);
  return explanation;
}

// A hidden row has no text that ends, so it equals no key.
void RowsExperiment::LookBehind(int taken, Explanation* explanation) {
  const std::vector<char> whole = rows_->bytes;
  std::vector<bool> reached(static_cast<std::size_t>(rows_->count()));
  for (int slot = taken; slot != kNoSlot; slot = FindSlot()) {
    if (slot != taken) explanation->behind.push_back({Where(slot), Ask()});
    reached[static_cast<std::size_t>(slot)] = true;
    std::memset((*rows_)[slot], 0xff, rows_->table->record_size);
  }
  std::copy(whole.begin(), whole.end(), rows_->bytes.begin());
  for (int slot = 0; slot < rows_->count(); ++slot) {
    if (reached[static_cast<std::size_t>(slot)]) continue;
    Answer answer = AskAlone(slot);
    if (answer.found) explanation->alone.push_back({Where(slot), std::move(answer)});
  }
}
