#include "ask/question.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "options.h"

namespace {

// What an input is, whichever question takes it.
struct Meaning {
  const char* name;
  const char* about;
  bool is_number = false;
  const char* standard = "";  // where it may be left out
};

constexpr bool kNumber = true;
constexpr Meaning kMeanings[] = {
    {"array", "the codes in the fifteen rows so far, separated by |"},
    {"atm", "ATM id"},
    {"card", "card number; its first ten digits are enough"},
    {"code", "the code that the ATM reports"},
    {"currency", "currency code", kNumber},
    {"deposit",
     "any character, then for each note type two characters and its count: A01020303 is 2 notes of "
     "type 01 and 3 of type 03; counts have three digits when the text behind the first character "
     "is 20 long or no multiple of 4; of the longer ones only 20 is answered"},
    {"fallback", "name of the file for all others"},
    {"file", "a message packed for the ATM manager or the alert manager, or - for standard input"},
    {"group", "logical group"},
    {"index", "amount index", kNumber},
    {"inst", "institution terminal group"},
    {"key1", "first part of the key, of an operation or a transaction code"},
    {"key2", "second part of the key, or a response code"},
    {"logic", "name of a dispense logic"},
    {"match1", "first selection key"},
    {"match2", "second selection key"},
    {"match3", "third selection key"},
    {"message", "the status message so far: codes, each followed by |, or NONE", false, "NONE"},
    {"number", "template number", kNumber},
    {"opkey", "operation key"},
    {"ordinal", "which of the selected records, from 1", kNumber, "1"},
    {"reason", "its reason code", kNumber, "0"},
    {"resp", "response code", kNumber},
    {"s1", "widest scope, the institution"},
    {"s2", "scope within it, the group"},
    {"s3", "narrowest scope, the ATM"},
    {"sent", "the dispense logic that was sent, eight digits"},
    {"status", "the last-transaction status as the ATM sent it"},
    {"statuses", "status codes, each followed by |, the last one too: PAPEROUT|CASHLOW|"},
    {"template", "template name"},
    {"trace", "trace number of the kept message", kNumber},
    {"txn", "transaction code", kNumber},
    {"type", "message type of the kept message", kNumber, "200"},
};

// An input as a question names it.
struct Input {
  explicit Input(const std::string& text)
      : is_optional(text.front() == '['),
        name(is_optional ? text.substr(1, text.size() - 2) : text.substr(0, text.find('='))),
        choices(text.substr(std::min(text.size(), name.size() + 1))),
        meaning(std::find_if(std::begin(kMeanings), std::end(kMeanings),
                             [&](const Meaning& each) { return each.name == name; })) {}

  bool has_meaning() const { return meaning != std::end(kMeanings); }
  std::string about() const { return has_meaning() ? meaning->about : "one of " + choices; }

  bool Allows(const std::string& value) const {
    if (has_meaning()) return !meaning->is_number || ReadNumber(value).has_value();
    return ("|" + choices + "|").find("|" + value + "|") != std::string::npos;
  }

  bool is_optional;
  std::string name;
  std::string choices;  // in place of a meaning
  const Meaning* meaning;
};

std::vector<Input> InputsOf(const Question& question) {
  std::istringstream texts(question.inputs);
  std::vector<Input> inputs;
  for (std::string text; texts >> text;) inputs.emplace_back(text);
  return inputs;
}

[[noreturn]] void Refuse(const Question& question, const Input& input, const std::string& cause) {
  throw UsageError(cause + " (" + input.about() + "): explain " + question.Usage());
}

}  // namespace

void AddFact(const std::string& name, const std::string& value, Json* facts) {
  std::string free_name = name;
  for (int number = 2; facts->contains(free_name); ++number) {
    free_name = name + " " + std::to_string(number);
  }
  (*facts)[free_name] = value;
}

int Inputs::Number(const char* name) const { return ReadNumber(values_.at(name)).value_or(0); }

std::string Question::Usage() const {
  std::string usage = name;
  for (const Input& input : InputsOf(*this)) {
    const std::string shown = input.has_meaning() ? input.name : input.choices;
    usage += input.is_optional ? " [" + shown + "]" : " " + shown;
  }
  return usage;
}

std::string Question::Forms() const {
  std::string forms;
  for (const Input& input : InputsOf(*this)) {
    const std::string about = input.about();
    if (about.find(':') != std::string::npos) forms += "\n    " + input.name + ": " + about;
  }
  return forms;
}

std::vector<const Question*> AllQuestions() {
  std::vector<const Question*> all;
  for (const auto* questions : {&TableQuestions(), &FileQuestions(), &TextQuestions()}) {
    for (const Question& question : *questions) all.push_back(&question);
  }
  return all;
}

const Question* FindQuestion(const std::string& name) {
  const std::vector<const Question*> all = AllQuestions();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Question* each) { return name == each->name; });
  return found == all.end() ? nullptr : *found;
}

Inputs ReadInputs(const Question& question, const std::vector<std::string>& words) {
  Inputs inputs;
  std::size_t used = 0;
  for (const Input& input : InputsOf(question)) {
    if (used == words.size() && !input.is_optional) Refuse(question, input, "no " + input.name);
    const bool is_given = used < words.size();
    const std::string value = is_given ? words[used++] : input.meaning->standard;
    if (is_given && !input.Allows(value)) {
      Refuse(question, input, input.name + " cannot be \"" + value + "\"");
    }
    inputs[input.name.c_str()] = value;
  }
  if (used < words.size()) {
    throw UsageError("too much: \"" + words[used] + "\": explain " + question.Usage());
  }
  return inputs;
}
