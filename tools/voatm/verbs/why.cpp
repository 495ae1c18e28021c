// voatm why: what a line of a trace means.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "ask/why_catalogue.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct Options {
  std::vector<std::string> words;
  bool json = false;
};

// A row whose pattern the text matches.
struct Match {
  const TraceText* row;
  std::vector<std::string> printed;  // by the conversions
  std::size_t literals = 0;          // characters that are no conversion's
};

constexpr const char* kConversion = "%[0-9]*[sdc]";
constexpr const char* kStamp =
    "^\\s*(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\S* )?(\\[\\d+\\] )?([0-7-] )?\\s*";
constexpr const char* kSystemError = "(.*) SysErr\\[ (.*) \\] ErrNo\\[ (\\d+) \\]";

std::string Trimmed(const std::string& text) {
  static const std::regex kEdges(R"(^\s+|(\s|\\n)+$)");
  return std::regex_replace(text, kEdges, "");
}

// The regular expression of what a printf pattern prints.
std::string ExpressionOf(const std::string& pattern) {
  static const std::regex kSpecial(R"([.*+?^$()\[\]{}|\\])");
  static const std::regex kSpace("\\s+");
  static const std::regex kText("%s");
  static const std::regex kNumber("%[0-9]*d");
  static const std::regex kCharacter("%c");
  std::string expression = std::regex_replace(Trimmed(pattern), kSpecial, "\\$&");
  expression = std::regex_replace(expression, kSpace, "\\s+");
  expression = std::regex_replace(expression, kText, "(.*)");
  expression = std::regex_replace(expression, kNumber, "(-?[0-9]+)");
  return std::regex_replace(expression, kCharacter, "(.)");
}

// The rows that match the text and say the most of it, a blank more or less; `before` may stand in
// front of it.
std::vector<Match> FindMatches(const std::string& text, const std::string& before) {
  static const std::regex kConversions(kConversion);
  std::vector<Match> matches;
  std::size_t most = 0;
  for (const TraceText& row : TraceTexts()) {
    std::smatch printed;
    if (!std::regex_match(text, printed, std::regex(before + ExpressionOf(row.text)))) continue;
    Match match = {&row, {std::next(printed.begin()), printed.end()}, 0};
    match.literals = std::regex_replace(std::string(row.text), kConversions, "").size();
    most = std::max(most, match.literals);
    matches.push_back(std::move(match));
  }
  matches.erase(std::remove_if(matches.begin(), matches.end(),
                               [&](const Match& match) { return match.literals + 1 < most; }),
                matches.end());
  return matches;
}

std::vector<Match> Explain(const std::string& line) {
  const std::string text = Trimmed(std::regex_replace(line, std::regex(kStamp), ""));
  const std::vector<Match> matches = FindMatches(text, "");
  return matches.empty() ? FindMatches(text, "(?:.*\\s)?") : matches;
}

std::string Filled(std::string text, const std::vector<std::string>& printed) {
  for (std::size_t i = 0; i < printed.size(); ++i) {
    const std::string mark = "{" + std::to_string(i + 1) + "}";
    const std::size_t at = text.find(mark);
    if (at != std::string::npos) text.replace(at, mark.size(), printed[i]);
  }
  return text;
}

Json MatchJson(const Match& match) {
  return {{"text", match.row->text},
          {"means", Filled(match.row->means, match.printed)},
          {"cause", match.row->advice->cause},
          {"next", match.row->advice->next}};
}

Json ErrorJson(const std::string& number, const std::string& name) {
  Json json = {{"number", std::stol(number)}, {"name", name}, {"means", nullptr}};
  for (const SystemError& error : SystemErrors()) {
    if (std::to_string(error.number) == number) json["means"] = error.means;
  }
  return json;
}

// The texts that a line may be, and the system's error when it has one.
Json AnswerJson(const std::string& line) {
  Json json = {{"texts", Json::array()}, {"system_error", nullptr}};
  std::smatch parts;
  const bool failed = std::regex_match(line, parts, std::regex(kSystemError + std::string("\\s*")));
  if (failed) json["system_error"] = ErrorJson(parts[3], parts[2]);
  for (const Match& match : Explain(failed ? parts[1].str() : line)) {
    json["texts"].push_back(MatchJson(match));
  }
  return json;
}

Json WholeCatalogue() {
  Json json = {{"texts", Json::array()}, {"system_error", nullptr}};
  for (const TraceText& row : TraceTexts()) json["texts"].push_back(MatchJson({&row, {}, 0}));
  return json;
}

// Words in lines of at most 78 characters, the text below itself.
void PrintFolded(const char* name, const std::string& text) {
  constexpr std::size_t kName = 7;
  constexpr std::size_t kLongestLine = 78;
  std::istringstream words(text);
  std::string line = name;
  line.resize(kName - 1, ' ');
  for (std::string word; words >> word;) {
    if (line.size() + 1 + word.size() > kLongestLine) {
      std::printf("%s\n", line.c_str());
      line.assign(kName - 1, ' ');
    }
    line += " " + Readable(word);
  }
  std::printf("%s\n", line.c_str());
}

void PrintText(const Json& json) {
  for (const Json& text : json["texts"]) {
    for (const char* const part : {"text", "means", "cause", "next"}) PrintFolded(part, text[part]);
  }
  const Json& error = json["system_error"];
  if (error.is_object() && error["means"].is_string()) PrintFolded("error", error["means"]);
}

ExitCode Why(const Options& options) {
  std::string line;
  for (const std::string& word : options.words) line += (line.empty() ? "" : " ") + word;
  const Json json = line.empty() ? WholeCatalogue() : AnswerJson(line);
  if (json["texts"].empty()) Say("no trace text of the library: " + line);
  if (options.json) {
    PrintJson(json);
  } else {
    PrintText(json);
  }
  return json["texts"].empty() ? kFindings : kDone;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  list->Texts("TEXT", "", OptionRow::kAnyNumber, &options->words,
              "A line of a trace, with or without what stands before");
  list->Flag("--json", &options->json, "Print JSON");
  return [options] { return Why(*options); };
}

}  // namespace

const Verb kWhy = {
    "why", "Explain a trace text",
    "Prints for a line of a driver's trace what it means, the likely cause and what to run next;\n"
    "for a failed system call the error's part in it as well. Date, process and level in front of\n"
    "the text may stay. Without a text it prints the whole catalogue.\n\n"
    "Exit status: 0 explained, 1 it is no text of the library.\n\n"
    "JSON: {texts: [{text, means, cause, next}], system_error: {number, name, means}};\n"
    "system_error is null when there is none.",
    "voatm why \"Error in Locating Memory[ ATMFITMEMORY ]\"", Declare};
