// Why the library answers what it answers: the operation's own result, and a walk beside it that
// says every try in order, where the answer stands, and what it hides.
#ifndef TOOLS_VOATM_ASK_EXPLAIN_CORE_H
#define TOOLS_VOATM_ASK_EXPLAIN_CORE_H

#include <array>
#include <map>
#include <string>
#include <vector>

#include "voatmutil.h"

struct Fact {
  std::string name;
  std::string value;

  bool operator==(const Fact& other) const { return name == other.name && value == other.value; }
};

using Facts = std::vector<Fact>;

struct Try {
  std::string level;   // the key column, or "file", or "entry"
  std::string tried;   // the key, or the path
  std::string result;  // where it was found, or "none"
};

struct Explanation {
  bool found = false;
  std::string source;  // "ATMFITMEMORY slot 3", or file:line of the first value
  Facts answer;        // what the library gave
  std::vector<Try> tries;
  Facts shadowed;  // where it stands, and what it would have said
  std::vector<std::string> notes;
  std::vector<std::string> trace;  // the library's own, of all levels
  std::string disagreement;        // empty, or what the walk expected instead of the answer
};

// Stores what the library gave and compares it with what the walk leads to.
void Conclude(Explanation* explanation, bool found, const Facts& answer, bool expected_found,
              const Facts& expected);

// The inputs of a request by name.
class Inputs {
 public:
  std::string& operator[](const char* name) { return values_[name]; }
  const std::string& Text(const char* name) const { return values_.at(name); }
  const char* Chars(const char* name) const { return Text(name).c_str(); }
  int Number(const char* name) const { return std::stoi(Text(name)); }

 private:
  std::map<std::string, std::string> values_;
};

struct Input {
  const char* name = nullptr;  // none: behind the last one
  const char* about = nullptr;
  const char* values = nullptr;    // kWholeNumber, or the words it may be, or any text
  const char* standard = nullptr;  // taken when the input is left out; without one it is required
};

constexpr char kWholeNumber[] = "#";

constexpr std::size_t kMaxInputs = 9;

// A kind of request: which inputs the library's operation takes, and how it is explained.
struct ExplainKind {
  const char* name;
  bool needs_tables;
  void (*explain)(VoATMUtil& util, const Inputs& inputs, Explanation* explanation);
  std::array<Input, kMaxInputs> inputs;
};

constexpr std::size_t kTableKinds = 4;
constexpr std::size_t kFileKinds = 8;

extern const std::array<ExplainKind, kTableKinds> kExplainTables;
extern const std::array<ExplainKind, kFileKinds> kExplainFiles;

// Explains a request at the home that VODIR_HOME names. The object need be started only for the
// kinds that need tables; its trace object is replaced meanwhile.
Explanation Explain(VoATMUtil& util, const ExplainKind& kind, const Inputs& inputs);

#endif  // TOOLS_VOATM_ASK_EXPLAIN_CORE_H
