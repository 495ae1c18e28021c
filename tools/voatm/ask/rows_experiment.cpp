// Experiments on a copy of a table's rows.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ask/experiment.h"
#include "ask/observation.h"

namespace {

constexpr int kNoSlot = -1;

// The scans that the locked form made, told apart by where it took slots and what it said: a scan
// that found its row is followed by one from that row on, one that did not by its message.
class Scans {
 public:
  // `taken` is the slot of the row that answers; what is said behind its scan is no miss, nor what
  // is said behind one that did not come to the last slot.
  Scans(const std::vector<Event>& events, int count, int taken) {
    const auto last_take = std::find_if(events.rbegin(), events.rend(), [](const Event& event) {
      return event.kind == Event::Kind::kTake;
    });
    for (auto event = events.begin(); event != events.end(); ++event) {
      if (event->kind == Event::Kind::kTake) Visit(event->number);
      if (event->kind != Event::Kind::kTrace || first_ == kNoSlot) continue;
      const bool is_last = event >= last_take.base() && taken != kNoSlot;
      EndWith(last_ < count - 1 ? Hit() : is_last ? "none" : "none: " + event->text);
    }
    const bool hit = taken != kNoSlot && last_ == taken;
    if (first_ != kNoSlot) EndWith(hit || last_ < count - 1 ? Hit() : "none");
    if (hit && !tries_.empty()) tries_.back()["result"] = Hit();
  }

  const Json& tries() const { return tries_; }
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
    const std::string slots = from == to ? "slot " + from : "slots " + from + " to " + to;
    tries_.push_back({{"level", "scan"}, {"tried", slots}, {"result", result}});
    first_ = kNoSlot;
  }

  Json tries_ = Json::array();
  int first_ = kNoSlot;
  int last_ = kNoSlot;
  int visited_ = 0;
};

void PutMark(const records::RecordField& field, int digit, char* record) {
  char* const out = record + field.offset;
  std::memset(out, 0, field.size);
  if (field.kind == records::FieldKind::kInt32) {
    std::memcpy(out, &digit, sizeof digit);
  } else {
    std::to_string(digit).copy(out, field.size);
  }
}

int CallCount(const std::vector<Event>& events) {
  return static_cast<int>(std::count_if(events.begin(), events.end(), [](const Event& event) {
    return event.kind == Event::Kind::kTake || event.kind == Event::Kind::kGive;
  }));
}

}  // namespace

RowsExperiment::RowsExperiment(const Question& question, const Inputs& inputs, Rows* rows)
    : question_(question), inputs_(inputs), rows_(rows) {
  util_.dptr = Observation::Trace();
  rows->table->point(util_, rows->bytes.data());
  util_.*rows->table->slots = rows->count();
  util_.*rows->table->semid = -1;  // no set of anybody's, should a call ever get through
}

std::string RowsExperiment::Where(int slot) const {
  return slot == kNoSlot ? "" : rows_->table->name + (" slot " + std::to_string(slot));
}

Placed RowsExperiment::Place() { return {Where(FindSlot()), Ask()}; }

Answer RowsExperiment::Ask() { return question_.ask(util_, inputs_); }

// The digit that an answer brings along, or -1.
int RowsExperiment::AskMark() {
  const Answer answer = Ask();
  if (!answer.found) return -1;
  const auto& fields = question_.mark.fields;
  const auto field = std::find_if(fields.begin(), fields.end(),
                                  [&](const char* name) { return answer.facts.contains(name); });
  return std::atoi(answer.facts.at(*field).get_ref<const std::string&>().c_str());
}

int RowsExperiment::FindMarked() {
  const int base = question_.mark.base;
  std::vector<const records::RecordField*> fields;
  for (const char* const name : question_.mark.fields) fields.push_back(rows_->table->Find(name));
  const std::vector<char> unmarked = rows_->bytes;
  long long slot = 0;
  for (long long worth = 1; slot >= 0 && (worth == 1 || worth < rows_->count()); worth *= base) {
    for (int i = 0; i < rows_->count(); ++i) {
      const int digit = static_cast<int>(i / worth % base);
      for (const auto* field : fields) PutMark(*field, digit, (*rows_)[i]);
    }
    const int digit = AskMark();
    slot = digit < 0 ? kNoSlot : slot + digit * worth;
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
  if (question_.mark.base > 0) return FindMarked();
  if (!Ask().found) return kNoSlot;
  int last = kNoSlot;
  for (const Event& event : AskLocked()) {
    if (event.kind == Event::Kind::kTake) last = event.number;
  }
  return last;
}

Answer RowsExperiment::AskAlone(int slot) {
  VoATMUtil alone = util_;
  rows_->table->point(alone, (*rows_)[slot]);
  alone.*rows_->table->slots = 1;
  return question_.ask(alone, inputs_);
}

Json RowsExperiment::Explain() {
  std::vector<Event> asked;
  {
    Observation observation;
    Ask();
    asked = observation.Take();
  }
  const int taken = FindSlot();
  const std::vector<Event> locked = AskLocked();
  const Scans scans(locked, rows_->count(), taken);
  Json explanation = ExplanationOf({Where(taken), Ask()}, scans.tries(), asked);
  explanation["locks"] = {{"slots", scans.visited()}, {"calls", CallCount(locked)}};
  LookBehind(taken, &explanation);
  return explanation;
}

// A hidden row has no text that ends, so it equals no key.
void RowsExperiment::LookBehind(int taken, Json* explanation) {
  const std::vector<char> whole = rows_->bytes;
  std::vector<bool> reached(static_cast<std::size_t>(rows_->count()));
  for (int slot = taken; slot != kNoSlot; slot = FindSlot()) {
    if (slot != taken) (*explanation)["behind"].push_back(PlacedJson({Where(slot), Ask()}));
    reached[static_cast<std::size_t>(slot)] = true;
    std::memset((*rows_)[slot], 0xff, rows_->table->record_size);
  }
  std::copy(whole.begin(), whole.end(), rows_->bytes.begin());
  for (int slot = 0; slot < rows_->count(); ++slot) {
    if (reached[static_cast<std::size_t>(slot)]) continue;
    const Answer answer = AskAlone(slot);
    if (answer.found) (*explanation)["alone"].push_back(PlacedJson({Where(slot), answer}));
  }
}
