// Experiments on a copy of a table's rows.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ask/experiment.h"
#include "ask/observation.h"

namespace {

constexpr int kNoSlot = -1;
// What a hidden row is full of: no text of it ends, so that it equals no key but one of these
// bytes.
constexpr char kHidden = '\xff';

// The scans that the locked form made on the rows and a hidden one behind them: one that came to
// that row found nothing, and ends with its message, if it has one; one that found its row is
// followed by one from that row on.
class Scans {
 public:
  // What is said behind the last scan is no miss when something was found.
  Scans(const std::vector<Event>& events, int count, bool found) : count_(count) {
    const auto last_take = std::find_if(events.rbegin(), events.rend(), [](const Event& event) {
      return event.kind == Event::Kind::kTake;
    });
    for (auto event = events.begin(); event != events.end(); ++event) {
      if (event->kind == Event::Kind::kTake) Visit(event->number);
      if (event->kind != Event::Kind::kTrace) continue;
      const bool is_miss = event < last_take.base() || !found;
      EndWith(is_miss ? ": " + event->text : "");
    }
    EndWith("");
  }

  const Json& tries() const { return tries_; }
  int visited() const { return visited_; }

 private:
  void Visit(int slot) {
    if (slot != last_ + 1) EndWith("");
    if (first_ == kNoSlot) first_ = slot;
    last_ = slot;
    visited_ += slot < count_ ? 1 : 0;
  }

  void EndWith(const std::string& said) {
    const bool is_empty = first_ == kNoSlot || count_ == 0;
    const bool missed = last_ == count_;
    const std::string from = std::to_string(first_);
    const std::string to = std::to_string(missed ? count_ - 1 : last_);
    const std::string slots = from == to ? "slot " + from : "slots " + from + " to " + to;
    const std::string result = missed ? "none" + said : "slot " + to;
    if (!is_empty) tries_.push_back({{"level", "scan"}, {"tried", slots}, {"result", result}});
    first_ = kNoSlot;
  }

  int count_;
  Json tries_ = Json::array();
  int first_ = kNoSlot;
  int last_ = kNoSlot;
  int visited_ = 0;
};

int CallCount(const std::vector<Event>& events, int count) {
  return static_cast<int>(std::count_if(events.begin(), events.end(), [=](const Event& event) {
    const bool is_call = event.kind == Event::Kind::kTake || event.kind == Event::Kind::kGive;
    return is_call && event.number < count;
  }));
}

}  // namespace

void PutMark(const Question& question, int digit, char* record) {
  for (const char* const name : question.mark.fields) {
    const records::RecordField& field = *question.table->Find(name);
    char* const out = record + field.offset;
    std::memset(out, 0, field.size);
    if (field.kind == records::FieldKind::kInt32) {
      std::memcpy(out, &digit, sizeof digit);
    } else {
      std::to_string(digit).copy(out, field.size);
    }
  }
}

int MarkOf(const Question& question, const Answer& answer) {
  if (!answer.found) return -1;
  const auto& fields = question.mark.fields;
  const auto field = std::find_if(fields.begin(), fields.end(),
                                  [&](const char* name) { return answer.facts.contains(name); });
  return std::atoi(answer.facts.at(*field).get_ref<const std::string&>().c_str());
}

RowsExperiment::RowsExperiment(const Question& question, const Inputs& inputs, Rows* rows)
    : question_(question), inputs_(inputs), rows_(rows) {
  util_.dptr = Observation::Trace();
  util_.*rows->table->semid = -1;  // no set of anybody's, should a call ever get through
  Point(rows->bytes.data(), rows->count());
}

void RowsExperiment::Point(char* records, int slots) {
  rows_->table->point(util_, records);
  util_.*rows_->table->slots = slots;
}

std::string RowsExperiment::Where(int slot) const {
  return slot == kNoSlot ? "" : rows_->table->name + (" slot " + std::to_string(slot));
}

Placed RowsExperiment::Place() { return {Where(FindSlot()), Ask()}; }

Answer RowsExperiment::Ask() { return question_.ask(util_, inputs_); }

void RowsExperiment::Mark() {
  const int base = question_.mark.base;
  for (long long worth = 1; worth == 1 || worth < rows_->count(); worth *= base) {
    Rows rows = *rows_;
    for (int i = 0; i < rows.count(); ++i) {
      PutMark(question_, static_cast<int>(i / worth % base), rows[i]);
    }
    marked_.push_back(std::move(rows.bytes));
  }
}

int RowsExperiment::FindMarked() {
  if (marked_.empty()) Mark();
  long long slot = 0, worth = 1;
  for (std::vector<char>& rows : marked_) {
    const int digit = MarkOf(question_, AskOf(rows.data(), rows_->count()));
    if (digit < 0) return kNoSlot;
    slot += digit * worth;
    worth *= question_.mark.base;
  }
  return static_cast<int>(slot);
}

Answer RowsExperiment::AskNoted(std::vector<Event>* events) {
  Observation observation;
  Answer answer = Ask();
  *events = observation.Take();
  return answer;
}

// With a hidden row behind the others.
std::vector<Event> RowsExperiment::AskLocked() {
  const int count = rows_->count();
  rows_->bytes.insert(rows_->bytes.end(), rows_->table->record_size, kHidden);
  Point(rows_->bytes.data(), rows_->count());
  std::vector<Event> events;
  util_.LockFlag = true;
  AskNoted(&events);
  util_.LockFlag = false;
  rows_->bytes.resize(rows_->At(count));
  Point(rows_->bytes.data(), count);
  return events;
}

int RowsExperiment::FindSlot() {
  if (question_.mark.base > 0) return FindMarked();
  if (!Ask().found) return kNoSlot;
  int last = kNoSlot;
  for (const Event& event : AskLocked()) {
    if (event.kind == Event::Kind::kTake) last = event.number;
  }
  return last;
}

Answer RowsExperiment::AskOf(char* records, int slots) {
  VoATMUtil other = util_;
  rows_->table->point(other, records);
  other.*rows_->table->slots = slots;
  return question_.ask(other, inputs_);
}

Json RowsExperiment::Explain() {
  std::vector<Event> asked;
  const Answer answer = AskNoted(&asked);
  const int taken = FindSlot();
  const std::vector<Event> locked = AskLocked();
  const Scans scans(locked, rows_->count(), taken != kNoSlot);
  Json explanation = ExplanationOf({Where(taken), answer}, scans.tries(), asked);
  explanation["locks"] = {{"slots", scans.visited()}, {"calls", CallCount(locked, rows_->count())}};
  LookBehind(taken, &explanation);
  return explanation;
}

void RowsExperiment::Hide(int slot) {
  const auto hide = [&](std::vector<char>* rows) {
    std::memset(rows->data() + rows_->At(slot), kHidden, rows_->table->record_size);
  };
  hide(&rows_->bytes);
  for (std::vector<char>& rows : marked_) hide(&rows);
}

void RowsExperiment::LookBehind(int taken, Json* explanation) {
  std::vector<bool> hidden(static_cast<std::size_t>(rows_->count()));
  for (int slot = taken; slot != kNoSlot && !hidden[static_cast<std::size_t>(slot)];
       slot = FindSlot()) {
    if (slot != taken) (*explanation)["behind"].push_back(PlacedJson({Where(slot), Ask()}));
    hidden[static_cast<std::size_t>(slot)] = true;
    Hide(slot);
  }
  for (int slot = 0; slot < rows_->count(); ++slot) {
    if (hidden[static_cast<std::size_t>(slot)]) continue;
    const Answer alone = AskOf((*rows_)[slot], 1);
    if (alone.found) (*explanation)["alone"].push_back(PlacedJson({Where(slot), alone}));
  }
}
