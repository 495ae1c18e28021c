// Why the library answers what it answers, found by experiment: it is asked, then what answered is
// hidden and it is asked again. Nothing here knows a rule of the library.
#ifndef TOOLS_VOATM_ASK_EXPERIMENT_H
#define TOOLS_VOATM_ASK_EXPERIMENT_H

#include <optional>
#include <string>
#include <vector>

#include "ask/observation.h"
#include "ask/question.h"

struct Try {
  std::string level;   // "file", "entry" or "scan"
  std::string tried;   // the path, the key, or the slots
  std::string result;  // where it was found, or "none"
};

// An answer and where it stands: "ATMFITMEMORY slot 3", or file:line of its first value.
struct Placed {
  std::string where;
  Answer answer;
};

// What a driver under locks spends for the answer.
struct Cost {
  int slots;  // visited
  int calls;  // of semop
};

struct Explanation {
  Placed taken;
  std::vector<Try> tries;
  std::vector<Placed> behind;      // each would answer if those before it were gone
  std::vector<Placed> alone;       // rows that are never reached, but would answer by themselves
  std::vector<std::string> trace;  // the library's own: level, or '-', and text
  std::optional<Cost> cost;        // of requests to tables
  std::string unseen;              // what could not be looked at, with the cause; else empty
};

// The rows of a table, a copy of one's own.
struct Rows {
  const records::RecordTable* table;
  std::vector<char> bytes;

  int count() const { return static_cast<int>(bytes.size() / table->record_size); }
  char* operator[](int slot) {
    return bytes.data() + static_cast<std::size_t>(slot) * table->record_size;
  }
};

// Asks a question of a table. A lookup is one call of the library on the rows, without copies.
class RowsExperiment {
 public:
  // `rows` must outlive it; they are as before after each call.
  RowsExperiment(const Question& question, const Inputs& inputs, Rows* rows);

  Answer Ask();
  int FindSlot();  // of the row that answers, or -1
  Answer AskAlone(int slot);
  Explanation Explain();

 private:
  void Point(char* rows, int count);
  int AskMark();
  std::vector<Event> AskLocked();
  void LookBehind(int taken, Explanation* explanation);
  std::string Where(int slot) const;

  const Question& question_;
  const Inputs& inputs_;
  Rows* rows_;
  VoATMUtil util_;
};

// Asks a question of the files of the home that VODIR_HOME names.
Placed AskFiles(const Question& question, const Inputs& inputs);
Explanation ExplainFiles(const Question& question, const Inputs& inputs);

// Asks a question that needs neither.
Explanation ExplainText(const Question& question, const Inputs& inputs);

#endif  // TOOLS_VOATM_ASK_EXPERIMENT_H
