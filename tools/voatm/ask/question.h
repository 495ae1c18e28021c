// The requests that the library can be asked, each one call of it, and what they take.
#ifndef TOOLS_VOATM_ASK_QUESTION_H
#define TOOLS_VOATM_ASK_QUESTION_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "records/record_tables.h"
#include "show/output.h"
#include "voatmutil.h"

// What the library gave: texts by name.
struct Answer {
  bool found = false;
  Json facts = Json::object();

  bool operator==(const Answer& other) const {
    return found == other.found && facts == other.facts;
  }
};

// The facts count when something was found.
inline Answer AnswerWhen(bool found, Json facts) {
  return {found, found ? std::move(facts) : Json::object()};
}

// A name that is there already gets a number: "is", "is 2".
void AddFact(const std::string& name, const std::string& value, Json* facts);

// The inputs of a request by name.
class Inputs {
 public:
  std::string& operator[](const char* name) { return values_[name]; }
  const char* operator[](const char* name) const { return values_.at(name).c_str(); }
  bool Is(const char* name, const char* value) const { return values_.at(name) == value; }
  int Number(const char* name) const;

 private:
  std::map<std::string, std::string> values_;
};

// How the row that answers is told: fields that no search compares carry a digit of the slot's
// number, and the answer has one of them among its facts.
struct SlotMark {
  int base = 0;  // of the digits; 0: there is no mark, the slot looked at last is the one
  std::vector<const char*> fields = {};
};

// What answers a request.
enum class Ground {
  kLayered,  // the file that opens first
  kEntry,    // an entry of a file with a fixed place
  kRows,     // the rows of a table
  kNothing,  // what is given
};

struct Question {
  const char* name;
  Ground ground;
  const char* inputs;  // their names; "name=a|b" is one of these words, [name] may be left out: it
                       // is then as is usual, or empty
  Answer (*ask)(VoATMUtil& util, const Inputs& inputs);
  const char* note = nullptr;                   // for who reads the answer
  const records::RecordTable* table = nullptr;  // for kRows
  SlotMark mark = {};

  // "action action|value inst group atm statuses [txn]"
  std::string Usage() const;

  // The meaning of the inputs whose text has a form of its own, a line each.
  std::string Forms() const;
};

const std::vector<Question>& FileQuestions();
const std::vector<Question>& TableQuestions();
const std::vector<Question>& TextQuestions();
std::vector<const Question*> AllQuestions();

// Null when there is none of this name.
const Question* FindQuestion(const std::string& name);

// Takes the inputs from words in their order. Throws UsageError with the usage and the input's
// meaning.
Inputs ReadInputs(const Question& question, const std::vector<std::string>& words);

#endif  // TOOLS_VOATM_ASK_QUESTION_H
