#include "show/finding.h"

Json FindingsJson(const std::vector<Finding>& findings) {
  Json json = Json::array();
  for (const Finding& finding : findings) {
    json.push_back({{"what", finding.what},
                    {"where", finding.where},
                    {"since", finding.since},
                    {"drivers", finding.effect},
                    {"next", finding.next}});
  }
  return json;
}

void PrintFindings(const Json& findings) {
  for (const Json& finding : findings) {
    NamedTexts parts;
    for (const auto& [name, text] : finding.items()) {
      if (name != "what") parts.emplace_back(name, text);
    }
    PrintLine("");
    PrintFacts(finding["what"], parts, Tone::kAlarm);
  }
}

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string TimeText(std::time_t time) {
  std::tm local{};
  char text[32];
  localtime_r(&time, &local);
  std::strftime(text, sizeof text, "%F %T", &local);
  return text;
}
