// voatm why: what a line of a trace means, and what a whole log says.
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ask/trace_line.h"
#include "ask/trace_log.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct WhyOptions {
  std::vector<std::string> words;
  std::string file;
  bool follow = false;
  bool each_line = false;
  bool json = false;
};

const char* WeightName(Weight weight) {
  constexpr const char* kNames[] = {"error", "notice", "normal"};
  return kNames[static_cast<std::size_t>(weight)];
}

Json TextJson(const TraceText& row, const std::string& means) {
  return {{"text", row.text},
          {"means", means},
          {"cause", row.advice->cause},
          {"next", row.advice->next}};
}

Json ErrorJson(std::string_view number, std::string_view name) {
  if (number.empty()) return nullptr;
  const char* const means = MeaningOfError(number);
  const auto value = ReadNumber(std::string(number));
  return {{"number", value ? Json(*value) : Json()},
          {"name", name},
          {"means", means != nullptr ? Json(means) : Json()}};
}

// The texts that a line may be, and the system's error when it has one.
Json AnswerJson(const TraceLine& line) {
  Json texts = Json::array();
  for (const TraceMatch& match : line.matches) texts.push_back(TextJson(*match.row, match.Means()));
  return {{"texts", std::move(texts)},
          {"system_error", ErrorJson(line.error_number, line.error_name)}};
}

bool Contains(const char* text, const std::string& words) {
  return strcasestr(text, words.c_str()) != nullptr;
}

// Every text that contains the words, or whose meaning does.
Json TextsWith(const std::string& words) {
  Json texts = Json::array();
  for (const TraceText& row : TraceTexts()) {
    if (!Contains(row.text, words) && !Contains(row.means, words)) continue;
    texts.push_back(TextJson(row, TraceMatch{&row, {}}.Means()));
  }
  return {{"texts", std::move(texts)}, {"system_error", nullptr}};
}

// What the error means; of one about which nothing more is known its name and number.
std::string ErrorText(const Json& error) {
  if (!error.is_object()) return "";
  if (error["means"].is_string()) return error["means"];
  return InOneLine(error["name"]) + " (" + InOneLine(error["number"]) + ")";
}

void PrintAnswer(const Json& answer) {
  for (const Json& text : answer["texts"]) {
    NamedTexts facts;
    for (const auto& [name, value] : text.items()) facts.emplace_back(name, value);
    PrintFacts("", facts);
  }
  PrintFacts("", {{"error", ErrorText(answer["system_error"])}});
}

ExitCode ExplainWords(const WhyOptions& options) {
  const std::string words = Joined(options.words, " ");
  TraceReader reader;
  const TraceLine& line = reader.Read(words);
  const bool is_line = !line.matches.empty() || !line.error_number.empty();
  const Json answer = is_line ? AnswerJson(line) : TextsWith(words);
  const bool known = !answer["texts"].empty();
  if (!known) Say("no trace text of the library: " + words);
  options.json ? PrintJson(answer) : PrintAnswer(answer);
  return known ? kDone : kFindings;
}

void PrintExplained(std::string_view text, const TraceLine& line) {
  constexpr std::size_t kBelow = 4;
  const std::string below(kBelow, ' ');
  if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
  if (line.matches.empty()) return PrintLine(text);
  const TraceMatch& match = line.matches.front();
  const TraceAdvice& advice = *match.row->advice;
  PrintLine(text, advice.weight == Weight::kError ? Tone::kAlarm : Tone::kPlain);
  PrintLine(below + match.Means(), Tone::kPlain, kBelow);
  const std::string error = ErrorText(ErrorJson(line.error_number, line.error_name));
  if (!error.empty()) PrintLine(below + "Error: " + error, Tone::kPlain, kBelow);
  if (advice.weight != Weight::kNormal) {
    PrintLine(below + "Next: " + advice.next, Tone::kPlain, kBelow);
  }
}

Json MessageJson(const LogMessage& message) {
  return {{"text", message.row->text},
          {"weight", WeightName(message.row->advice->weight)},
          {"count", message.count},
          {"first", message.first},
          {"last", message.last},
          {"processes", message.processes.texts},
          {"more_processes", message.processes.more},
          {"means", message.means.texts},
          {"more_means", message.means.more},
          {"cause", message.row->advice->cause},
          {"next", message.row->advice->next},
          {"system_error", ErrorJson(message.error_number, message.error_name)}};
}

void PrintMessage(const Json& message) {
  const std::string weight = message["weight"], first = message["first"], last = message["last"];
  NamedTexts facts = {{"time", first + (last == first ? "" : " to " + last)},
                      {"process", Joined(message["processes"], ", ") +
                                      (message["more_processes"] ? " and others" : "")}};
  for (const Json& means : message["means"]) facts.emplace_back("means", means);
  if (message["more_means"]) facts.emplace_back("", "and of other values");
  facts.emplace_back("error", ErrorText(message["system_error"]));
  if (weight != WeightName(Weight::kNormal)) {
    facts.emplace_back("cause", message["cause"]);
    facts.emplace_back("next", message["next"]);
  }
  PrintFacts(InOneLine(message["count"]) + " x " + message["text"].get<std::string>(), facts,
             weight == WeightName(Weight::kError) ? Tone::kAlarm : Tone::kPlain);
}

void PrintSummary(const LogSummary& summary, bool as_json) {
  Json json = {
      {"lines", summary.lines()}, {"unknown", summary.unknown()}, {"messages", Json::array()}};
  for (const LogMessage& message : summary.Messages()) {
    json["messages"].push_back(MessageJson(message));
  }
  if (as_json) return PrintJson(json);
  for (const Json& message : json["messages"]) PrintMessage(message);
  Say("lines: " + InOneLine(json["lines"]) + ", of them no text of the library: " +
      InOneLine(json["unknown"]) + ", messages: " + std::to_string(json["messages"].size()));
}

void PrintLineJson(std::string_view text, const TraceLine& line) {
  Json json = {{"line", text}};
  json.update(AnswerJson(line));
  PrintJsonLine(json);
}

bool IsError(const TraceLine& line) {
  return !line.matches.empty() && line.matches.front().row->advice->weight == Weight::kError;
}

ExitCode ReadLog(const WhyOptions& options) {
  LogLines lines(options.file);
  if (options.follow) lines.Follow(FlushOutput);
  TraceReader reader;
  LogSummary summary;
  bool has_errors = false;
  while (const auto text = lines.Next()) {
    const TraceLine& line = reader.Read(*text);
    has_errors = has_errors || IsError(line);
    if (!options.each_line) {
      summary.Add(line);
    } else {
      (options.json ? PrintLineJson : PrintExplained)(*text, line);
    }
  }
  if (!options.each_line) PrintSummary(summary, options.json);
  return has_errors ? kFindings : kDone;
}

ExitCode Why(WhyOptions options) {
  const bool wants_log = !options.file.empty() || options.follow || options.each_line;
  if (!options.words.empty()) {
    if (wants_log) throw UsageError("--file, --follow and -x are of no use beside TEXT");
    return ExplainWords(options);
  }
  if (options.follow && options.file.empty()) throw UsageError("--follow needs --file");
  options.each_line = options.each_line || options.follow;
  if (wants_log || isatty(STDIN_FILENO) == 0) return ReadLog(options);
  return ExplainWords(options);
}

Action DeclareWhy(OptionList* list) {
  const auto options = std::make_shared<WhyOptions>();
  list->Texts("TEXT", "", OptionRow::kAnyNumber, &options->words,
              "A line of a trace, with or without what stands before, or words of texts");
  list->Text("--file", "FILE", &options->file, "A log; else standard input, unless a terminal");
  list->Flag("-x", &options->each_line, "Print each line of the log and below it what it means");
  list->Flag("--follow", &options->follow, "As -x, and wait for more lines of the file");
  list->Flag("--json", &options->json, "Print JSON");
  return [options] { return Why(*options); };
}

}  // namespace

const Verb kWhy = {
    "why", "Explain trace texts and logs",
    "Prints for a line of a driver's trace what it means, the likely cause and what to run next;\n"
    "for a failed system call the error's part in it as well. Whatever a log writes in front of\n"
    "the text may stay. Words that are no such line find the texts that contain them; \"\" finds\n"
    "all.\n\n"
    "Without TEXT it reads a log and sums it up: each text of the library with its count, first\n"
    "and last time, processes, up to four meanings, cause and next command, errors first. With\n"
    "-x it prints every line with its meaning. A log may be of any size, and --follow goes on\n"
    "where one was replaced or cut; of a long line the last 64 KB of the first megabyte are read\n"
    "for a text. Errors are what is wrong in itself; what the request or the configuration may\n"
    "well mean is a notice.\n\n"
    "Exit status: 0 explained, or a log without errors; 1 it is no text of the library, or the\n"
    "log has errors; 2 the log cannot be read.\n\n"
    "JSON: {texts: [{text, means, cause, next}], system_error: {number, name, means}};\n"
    "system_error is null when there is none. Of a log {lines, unknown, messages: [{text, weight,\n"
    "count, first, last, processes, more_processes, means, more_means, cause, next,\n"
    "system_error}]}; with -x a line each: {line, texts, system_error}.",
    "voatm why -x --file driver.log", DeclareWhy};
