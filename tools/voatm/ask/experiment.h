// Why the library answers what it answers, found by experiment: it is asked, then what answered is
// hidden and it is asked again. Nothing here knows a rule of the library.
#ifndef TOOLS_VOATM_ASK_EXPERIMENT_H
#define TOOLS_VOATM_ASK_EXPERIMENT_H

#include <string>
#include <vector>

#include "ask/observation.h"
#include "ask/question.h"

// An answer and where it stands: "ATMFITMEMORY slot 3", or file:line of its first value.
struct Placed {
  std::string where;
  Answer answer;
};

// Lists are as voatm explain prints them.
struct Explanation {
  Placed taken;
  // {level: "file", "entry" or "scan", tried: the path, the key or the slots, result: where it was
  // found, or "none"}
  Json tries = Json::array();
  Json behind = Json::array();  // {where, answer}; each would answer if those before it were gone
  Json alone = Json::array();   // the same, rows that are never reached but would answer alone
  Json trace = Json::array();   // the library's own: level, or '-', and text
  Json locks;  // of requests to tables: {slots: visited by a driver under locks, calls: of semop}
  std::string unseen;  // what could not be looked at, with the cause; else empty
};

inline Json PlacedJson(const Placed& placed) {
  return {{"where", placed.where}, {"answer", placed.answer.facts}};
}

// The rows of a table, a copy of one's own.
struct Rows {
  const records::RecordTable* table;
  std::vector<char> bytes;

  int count() const { return static_cast<int>(bytes.size() / table->record_size); }
  std::size_t At(int slot) const { return static_cast<std::size_t>(slot) * table->record_size; }
  char* operator[](int slot) { return bytes.data() + At(slot); }
  const char* operator[](int slot) const { return bytes.data() + At(slot); }
};

// Asks a question of a table. A lookup is one call of the library on the rows, without copies.
class RowsExperiment {
 public:
  // `rows` must outlive it; they are as before after each call.
  RowsExperiment(const Question& question, const Inputs& inputs, Rows* rows);

  Answer Ask();
  Placed Place();
  Explanation Explain();

 private:
  void Point(char* rows, int count);
  int FindSlot();  // of the row that answers, or -1
  int FindMarked();
  int AskMark();
  void PutMark(int digit, char* record) const;
  Answer AskAlone(int slot);
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
