// Experiments on the files of a home, and requests that need none.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ask/experiment.h"
#include "ask/observation.h"
#include "ask/said.h"
#include "devhost/reader_line.h"

namespace {

// Why a file did not open; empty when there is none.
std::string WhyClosed(const std::string& path) {
  struct stat state {};
  if (stat(path.c_str(), &state) != 0) {
    return errno == ENOENT || errno == ENOTDIR ? "" : std::strerror(errno);
  }
  if (!S_ISREG(state.st_mode)) return "it is no file";
  return access(path.c_str(), R_OK) == 0 ? "it cannot be read" : std::strerror(errno);
}

// What the reader was asked, call by call.
class Calls {
 public:
  explicit Calls(const std::vector<Event>& events) {
    for (const Event& event : events) {
      if (event.kind == Event::Kind::kOpen) AddOpen(event);
      if (event.kind == Event::Kind::kSearch) AddSearch(event);
    }
  }

  const std::vector<Try>& tries() const { return tries_; }
  const std::string& opened() const { return opened_; }  // the file, or empty
  const std::string& key() const { return key_; }        // the first entry that was found, or empty
  const std::string& unseen() const { return unseen_; }

  std::string Source() const { return devhost::AtLine(opened_, line_); }

 private:
  // A request that needs several operations tries the same several times.
  void Add(const Try& each) {
    const auto same = [&](const Try& other) {
      return other.level == each.level && other.tried == each.tried;
    };
    const auto found = std::find_if(tries_.begin(), tries_.end(), same);
    if (found == tries_.end()) {
      tries_.push_back(each);
    } else if (found->level == "entry") {
      found->result = each.result;
    }
  }

  void AddOpen(const Event& event) {
    if (event.done) {
      opened_ = event.text;
      Add({"file", event.text, "exists"});
      return;
    }
    const std::string why = WhyClosed(event.text);
    if (!why.empty() && unseen_.empty()) unseen_ = why + ": " + event.text;
    Add({"file", event.text, why.empty() ? "none" : "not opened: " + why});
  }

  void AddSearch(const Event& event) {
    if (event.text != searched_) values_.clear();
    searched_ = event.text;
    const std::string place = event.line > 0 ? "line " + std::to_string(event.line) + ": " : "";
    if (event.done) {
      if (key_.empty()) {
        key_ = event.text;
        line_ = event.line;
      }
      values_ += (values_.empty() ? "" : " ") + event.value;
      Add({"entry", event.text, place + values_});
      return;
    }
    const bool there = event.line > 0;
    Add({"entry", event.text,
         there ? place + "no readable field " + std::to_string(event.number) : "none"});
  }

  std::vector<Try> tries_;
  std::string opened_;
  std::string key_;
  std::string searched_;
  std::string values_;
  std::string unseen_;
  int line_ = 0;
};

Answer AskOnce(const Question& question, const Inputs& inputs) {
  VoATMUtil util;
  util.dptr = Observation::Trace();
  return question.ask(util, inputs);
}

// An entry that is not there is none, whatever the library makes of that.
Placed PlacedBy(const Question& question, const Calls& calls, Answer answer) {
  if (question.ground == Ground::kEntry) answer.found = answer.found && !calls.key().empty();
  return {answer.found ? calls.Source() : "", std::move(answer)};
}

}  // namespace

Placed AskFiles(const Question& question, const Inputs& inputs) {
  Observation observation;
  Answer answer = AskOnce(question, inputs);
  return PlacedBy(question, Calls(observation.Take()), std::move(answer));
}

Explanation ExplainFiles(const Question& question, const Inputs& inputs) {
  Explanation explanation;
  Observation observation;
  for (bool first = true;; first = false) {
    Answer answer = AskOnce(question, inputs);
    const std::vector<Event> events = observation.Take();
    const Calls calls(events);
    Placed placed = PlacedBy(question, calls, std::move(answer));
    if (first) {
      explanation.tries = calls.tries();
      explanation.trace = Said(events);
      explanation.taken = placed;
      explanation.unseen = calls.unseen();
    } else if (placed.answer.found) {
      explanation.behind.push_back(std::move(placed));
    }
    if (question.ground == Ground::kLayered) {
      if (calls.opened().empty()) return explanation;
      observation.HideFile(calls.opened());
    } else {
      if (calls.key().empty()) return explanation;
      observation.HideEntry(calls.opened(), calls.key());
    }
  }
}

Explanation ExplainText(const Question& question, const Inputs& inputs) {
  Explanation explanation;
  Observation observation;
  Answer answer = AskOnce(question, inputs);
  const std::vector<Event> events = observation.Take();
  explanation.trace = Said(events);
  Facts facts = SaidFacts(events);
  facts.insert(facts.end(), answer.facts.begin(), answer.facts.end());
  explanation.taken = {"", {answer.found, std::move(facts)}};
  return explanation;
}
