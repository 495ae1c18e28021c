#include "show/finding.h"

namespace {

struct Part {
  const char* name;
  const std::string Finding::*text;
};

constexpr Part kParts[] = {{"what", &Finding::what},
                           {"where", &Finding::where},
                           {"since", &Finding::since},
                           {"drivers", &Finding::effect},
                           {"next", &Finding::next}};

}  // namespace

Json FindingsJson(const std::vector<Finding>& findings) {
  Json json = Json::array();
  for (const Finding& finding : findings) {
    Json parts = Json::object();
    for (const Part& part : kParts) parts[part.name] = finding.*part.text;
    json.push_back(std::move(parts));
  }
  return json;
}

void PrintFindings(const std::vector<Finding>& findings) {
  for (const Finding& finding : findings) {
    NamedTexts parts;
    for (const Part& part : kParts) {
      if (part.text != &Finding::what) parts.emplace_back(part.name, finding.*part.text);
    }
    PrintLine("");
    PrintFacts(finding.what, parts, Tone::kAlarm);
  }
}
