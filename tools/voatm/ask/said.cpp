#include "ask/said.h"

namespace {

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \n");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

void AddFacts(const std::string& line, Facts* facts) {
  std::size_t at = 0;
  for (std::size_t open = line.find('['); open != std::string::npos; open = line.find('[', at)) {
    const std::size_t close = line.find(']', open);
    if (close == std::string::npos) break;
    facts->push_back(
        {Trimmed(line.substr(at, open - at)), Trimmed(line.substr(open + 1, close - open - 1))});
    at = close + 1;
  }
  if (at == 0) facts->push_back({"", Trimmed(line)});
}

}  // namespace

std::vector<std::string> Said(const std::vector<Event>& events) {
  std::vector<std::string> lines;
  for (const Event& event : events) {
    if (event.kind != Event::Kind::kTrace) continue;
    const std::string level = event.number == Event::kNoLevel ? "-" : std::to_string(event.number);
    lines.push_back(level + " " + event.text);
  }
  return lines;
}

Facts SaidFacts(const std::vector<Event>& events) {
  Facts facts;
  for (const Event& event : events) {
    if (event.kind == Event::Kind::kTrace) AddFacts(event.text, &facts);
  }
  return facts;
}
