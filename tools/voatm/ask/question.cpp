#include "ask/question.h"

#include <algorithm>
#include <sstream>

#include "options.h"

namespace {

bool IsAllowed(const std::string& value, const char* values) {
  if (values == nullptr) return true;
  if (std::string(values) == kWholeNumber) return ReadNumber(value).has_value();
  std::istringstream words(values);
  for (std::string word; words >> word;) {
    if (word == value) return true;
  }
  return false;
}

[[noreturn]] void Refuse(const Question& question, const Input& input, const std::string& cause) {
  throw UsageError(cause + " (" + input.about + "): explain " + question.Usage());
}

}  // namespace

void AddFact(const std::string& name, const std::string& value, Json* facts) {
  std::string free_name = name;
  for (int number = 2; facts->contains(free_name); ++number) {
    free_name = name + " " + std::to_string(number);
  }
  (*facts)[free_name] = value;
}

int Inputs::Number(const char* name) const { return ReadNumber(Text(name)).value_or(0); }

std::string Question::Usage() const {
  std::string usage = name;
  for (const Input& input : inputs) {
    const bool words = input.values != nullptr && std::string(input.values) != kWholeNumber;
    std::string shown = words ? input.values : input.name;
    std::replace(shown.begin(), shown.end(), ' ', '|');
    usage += input.standard == nullptr ? " " + shown : " [" + shown + "]";
  }
  return usage;
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
  for (const Input& input : question.inputs) {
    if (used == words.size() && input.standard == nullptr) {
      Refuse(question, input, std::string("no ") + input.name);
    }
    const std::string& value = used < words.size() ? words[used++] : input.standard;
    if (!IsAllowed(value, input.values)) {
      Refuse(question, input, std::string(input.name) + " cannot be \"" + value + "\"");
    }
    inputs[input.name] = value;
  }
  if (used < words.size()) {
    throw UsageError("too much: \"" + words[used] + "\": explain " + question.Usage());
  }
  return inputs;
}
