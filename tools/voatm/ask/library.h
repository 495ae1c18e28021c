// The library as a driver starts it, for verbs that ask it.
#ifndef TOOLS_VOATM_ASK_LIBRARY_H
#define TOOLS_VOATM_ASK_LIBRARY_H

#include <string>
#include <vector>

#include "look/survey.h"
#include "voatmutil.h"
#include "vodebugutil.h"

// A started VoATMUtil without locks. What it traces is kept, whatever the level.
class Library {
 public:
  struct Line {
    int level;  // or VoDebugUtil::kNoLevel
    std::string text;
  };

  // Sets VODIR_HOME to the survey's home. Throws std::runtime_error with the last line that was
  // traced when the start fails. Give it a survey without findings: the tables are not checked.
  explicit Library(const Survey& survey);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  VoATMUtil& util() { return util_; }

  // What was traced since the start or the last call.
  std::vector<Line> TakeTrace();

 private:
  std::vector<Line> lines_;
  VoDebugUtil trace_;
  VoATMUtil util_;
};

#endif  // TOOLS_VOATM_ASK_LIBRARY_H
