// Experiments on the files of a home, and requests that need none.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ask/experiment.h"
#include "ask/observation.h"
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

  const Json& tries() const { return tries_; }
  const std::string& opened() const { return opened_; }  // the file, or empty
  const std::string& key() const { return key_; }        // the first entry that was found, or empty
  const std::string& unseen() const { return unseen_; }

  std::string Source() const { return devhost::AtLine(opened_, line_); }

 private:
  // A request that needs several operations tries the same several times.
  void Add(const char* level, const std::string& tried, const std::string& result) {
    const auto found = std::find_if(tries_.begin(), tries_.end(), [&](const Json& other) {
      return other["level"] == level && other["tried"] == tried;
    });
    if (found == tries_.end()) {
      tries_.push_back({{"level", level}, {"tried", tried}, {"result", result}});
    } else if (level == kEntry) {
      (*found)["result"] = result;
    }
  }

  void AddOpen(const Event& event) {
    if (event.done) {
      opened_ = event.text;
      Add(kFile, event.text, "exists");
      return;
    }
    const std::string why = WhyClosed(event.text);
    if (!why.empty() && unseen_.empty()) unseen_ = why + ": " + event.text;
    Add(kFile, event.text, why.empty() ? "none" : "not opened: " + why);
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
      Add(kEntry, event.text, place + values_);
      return;
    }
    const bool there = event.line > 0;
    Add(kEntry, event.text,
        there ? place + "no readable field " + std::to_string(event.number) : "none");
  }

  static constexpr const char* kFile = "file";
  static constexpr const char* kEntry = "entry";

  Json tries_ = Json::array();
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

Json TracesOf(const std::vector<Event>& events) {
  Json lines = Json::array();
  for (const Event& event : events) {
    if (event.kind != Event::Kind::kTrace) continue;
    const std::string level = event.number == Event::kNoLevel ? "-" : std::to_string(event.number);
    lines.push_back(level + " " + event.text);
  }
  return lines;
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

Json ExplanationOf(const Placed& taken, const Json& tries, const std::vector<Event>& events) {
  return {{"found", taken.answer.found},  {"source", taken.where},
          {"answer", taken.answer.facts}, {"tries", tries},
          {"behind", Json::array()},      {"alone", Json::array()},
          {"trace", TracesOf(events)}};
}

Json ExplainFiles(const Question& question, const Inputs& inputs) {
  Json explanation;
  Observation observation;
  while (true) {
    Answer answer = AskOnce(question, inputs);
    const std::vector<Event> events = observation.Take();
    const Calls calls(events);
    const Placed placed = PlacedBy(question, calls, std::move(answer));
    if (explanation.is_null()) {
      explanation = ExplanationOf(placed, calls.tries(), events);
    } else if (placed.answer.found) {
      explanation["behind"].push_back(PlacedJson(placed));
    }
    if (!calls.unseen().empty()) explanation["unseen"] = calls.unseen();
    if (question.ground == Ground::kLayered) {
      if (calls.opened().empty()) return explanation;
      observation.HideFile(calls.opened());
    } else {
      if (calls.key().empty()) return explanation;
      observation.HideEntry(calls.opened(), calls.key());
    }
  }
}
