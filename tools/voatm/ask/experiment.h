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

// What an explanation begins with: {found, source, answer, tries, behind: [], alone: [], trace}. A
// try is {level: "file", "entry" or "scan", tried: the path, the key or the slots, result: where it
// was found, or "none"}; the trace, a list of "7 text", '-' being a line without a level, is the
// library's own among the events.
Json ExplanationOf(const Placed& taken, const Json& tries, const std::vector<Event>& events);

// As those behind the answer, which would each answer if those before it were gone, and those
// alone, rows that are never reached but would answer by themselves, are shown.
inline Json PlacedJson(const Placed& placed) {
  return {{"where", placed.where}, {"answer", placed.answer.facts}};
}

// The rows of a table, a copy of one's own.
struct Rows {
  const records::RecordTable* table;
  std::vector<char> bytes;
  std::string unseen = {};  // says which slots could not be had; empty when all were

  int count() const { return static_cast<int>(bytes.size() / table->record_size); }
  std::size_t At(int slot) const { return static_cast<std::size_t>(slot) * table->record_size; }
  char* operator[](int slot) { return bytes.data() + At(slot); }
  const char* operator[](int slot) const { return bytes.data() + At(slot); }
};

// Writes a digit into the fields of a row that carry a question's mark, and reads the one that an
// answer brings along, -1 when nothing was found.
void PutMark(const Question& question, int digit, char* record);
int MarkOf(const Question& question, const Answer& answer);

// Asks a question of a table. Ask is one call of the library on the rows, without copies.
class RowsExperiment {
 public:
  // `rows` must outlive it.
  RowsExperiment(const Question& question, const Inputs& inputs, Rows* rows);

  Answer Ask();
  Placed Place();
  // With locks: {slots: that a driver under locks visits, calls: of semop}. Leaves the rows that
  // answered hidden.
  Json Explain();

 private:
  int FindSlot();  // of the row that answers, or -1
  void Mark();
  int FindMarked();
  Answer AskOf(char* records, int slots);  // of these alone
  Answer AskNoted(std::vector<Event>* events);
  std::vector<Event> AskLocked();
  void LookBehind(int taken, Json* explanation);
  void Hide(int slot);
  void Point(char* records, int slots);
  std::string Where(int slot) const;

  const Question& question_;
  const Inputs& inputs_;
  Rows* rows_;
  std::vector<std::vector<char>> marked_;  // the rows with a digit of their slots' numbers each
  VoATMUtil util_;
};

// Asks a question of the files of the home that VODIR_HOME names, or one that needs none. An
// explanation has "unseen" when something could not be looked at: what, and the cause.
Placed AskFiles(const Question& question, const Inputs& inputs);
Json ExplainFiles(const Question& question, const Inputs& inputs);

#endif  // TOOLS_VOATM_ASK_EXPERIMENT_H
