// What the library does while it is asked: the executable stands between it and the reader of
// configuration files, the trace and the semaphores (gate.cpp), and notes each call.
#ifndef TOOLS_VOATM_ASK_OBSERVATION_H
#define TOOLS_VOATM_ASK_OBSERVATION_H

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vodebugutil.h"

// One call of the library.
struct Event {
  enum class Kind {
    kOpen,    // text: the path
    kSearch,  // text: the key; number: the field
    kTake,    // number: the slot
    kGive,    // the same
    kTrace,   // text; number: the level, or kNoLevel
  };
  static constexpr int kNoLevel = -1;

  Kind kind;
  std::string text;
  int number = 0;
  bool done = true;        // the file opened; the field was found
  int line = 0;            // of the entry, as devhost::LineOf says
  std::string value = {};  // of the field
};

// Notes the library's calls from construction to destruction; one at a time. Its semaphore calls
// are noted only, never made: ask it about private copies.
class Observation {
 public:
  Observation() { current_ = this; }
  ~Observation() { current_ = nullptr; }
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;

  // The one that notes now, or null.
  static Observation* Current() { return current_; }

  // The trace object to give to the library's object.
  static VoDebugUtil* Trace() {
    static VoDebugUtil trace;
    return &trace;
  }

  // From now on the reader does not open this file, or does not find this entry of it.
  void HideFile(const std::string& path) { files_.insert(path); }
  void HideEntry(const std::string& path, const std::string& key) { entries_.emplace(path, key); }
  bool Hides(const std::string& path) const { return files_.count(path) > 0; }
  bool Hides(const std::string& path, const std::string& key) const {
    return entries_.count({path, key}) > 0;
  }

  void Note(Event event) { events_.push_back(std::move(event)); }

  // What was noted since the last call.
  std::vector<Event> Take() { return std::exchange(events_, {}); }

 private:
  inline static Observation* current_ = nullptr;
  std::set<std::string> files_;
  std::set<std::pair<std::string, std::string>> entries_;
  std::vector<Event> events_;
};

#endif  // TOOLS_VOATM_ASK_OBSERVATION_H
