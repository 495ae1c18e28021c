#include "show/finding.h"

#include <cstdio>

namespace {

struct Part {
  const char* name;
  const std::string Finding::*text;
};

constexpr Part kParts[] = {{"what", &Finding::what},
                           {"where", &Finding::where},
                           {"since", &Finding::since},
                           {"effect", &Finding::effect},
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
    std::printf("\n%s\n", Alarm(Readable(finding.what)).c_str());
    for (const Part& part : kParts) {
      const std::string& text = finding.*part.text;
      if (&text == &finding.what || text.empty()) continue;
      std::printf("  %-7s %s\n", part.name, Readable(text).c_str());
    }
  }
}
