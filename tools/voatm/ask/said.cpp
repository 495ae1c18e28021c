#include "ask/said.h"

#include <string>

#include "ask/question.h"

namespace {

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \n");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

void AddFacts(const std::string& line, Json* facts) {
  std::size_t at = 0;
  for (std::size_t open = line.find('['); open != std::string::npos; open = line.find('[', at)) {
    const std::size_t close = line.find(']', open);
    if (close == std::string::npos) break;
    AddFact(Trimmed(line.substr(at, open - at)), Trimmed(line.substr(open + 1, close - open - 1)),
            facts);
    at = close + 1;
  }
  if (at == 0) AddFact("", Trimmed(line), facts);
}

}  // namespace

Json Said(const std::vector<Event>& events) {
  Json lines = Json::array();
  for (const Event& event : events) {
    if (event.kind != Event::Kind::kTrace) continue;
    const std::string level = event.number == Event::kNoLevel ? "-" : std::to_string(event.number);
    lines.push_back(level + " " + event.text);
  }
  return lines;
}

Json SaidFacts(const std::vector<Event>& events) {
  Json facts = Json::object();
  for (const Event& event : events) {
    if (event.kind == Event::Kind::kTrace) AddFacts(event.text, &facts);
  }
  return facts;
}
