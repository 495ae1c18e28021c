// voatm diff: what changed between two sides, and which answers change with it.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ask/comparison.h"
#include "devhost/system_call.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct DiffOptions : DataOptions {
  std::string a;
  std::string b;
  std::vector<Atm> atms;
  std::string atms_file;
};

Atm AtmOf(const std::vector<std::string>& words, const std::string& place) {
  if (words.size() != 3 && words.size() != 4) {
    throw UsageError(place +
                     " takes S1 S2 S3 [FALLBACK], for example HARBOUR BRANCH ATM00001 "
                     "COMMON");
  }
  return {words[0], words[1], words[2], words.size() == 4 ? words[3] : ""};
}

void ReadAtms(const std::string& path, std::vector<Atm>* atms) {
  std::istringstream stream(devhost::FileText(path));
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;) words.push_back(word);
    if (words.empty() || words[0][0] == '#') continue;
    atms->push_back(AtmOf(words, path + ":" + std::to_string(number)));
  }
  if (atms->empty()) throw std::runtime_error("no ATM in " + path);
}

// On a terminal, once it takes longer than a second.
class Progress {
 public:
  void operator()(const Atm& atm, std::size_t asked, std::size_t all) {
    const auto now = std::chrono::steady_clock::now();
    if (now - shown_ < std::chrono::seconds(1) || isatty(STDERR_FILENO) == 0) return;
    shown_ = now;
    Say(atm.s3 + ": asked " + std::to_string(asked) + " of " + std::to_string(all) + " requests");
  }

 private:
  std::chrono::steady_clock::time_point shown_ = std::chrono::steady_clock::now();
};

Json Compare(const DiffOptions& options) {
  Side a = ReadSide(options.a, options.home);
  Side b = ReadSide(options.b, options.home);
  const bool shares_table = std::any_of(a.tables.begin(), a.tables.end(), [&](const auto& each) {
    return b.tables.count(each.first) > 0;
  });
  if (!shares_table && (a.home.empty() || b.home.empty())) {
    throw std::runtime_error("nothing is in both " + options.a + " and " + options.b);
  }
  Json answers = Json::array();
  Progress progress;
  for (const Atm& atm : options.atms) {
    const Json changes = CompareAnswers(
        &a, &b, atm, [&](std::size_t asked, std::size_t all) { progress(atm, asked, all); });
    answers.insert(answers.end(), changes.begin(), changes.end());
  }
  return {{"rows", CompareRows(a, b)}, {"entries", CompareEntries(a, b)}, {"answers", answers}};
}

void PrintDiff(const Json& difference) {
  Json fields = Json::array();
  for (const Json& row : difference["rows"]) {
    const auto add = [&](const Json& field, const Json& before, const Json& after) {
      fields.push_back({{"table", row["table"]},
                        {"id", row["id"]},
                        {"field", field},
                        {"a", before},
                        {"b", after}});
    };
    if (row["fields"].empty()) add(row["change"], "", "");
    for (const Json& field : row["fields"]) add(field["field"], field["before"], field["after"]);
  }
  PrintRows("Rows", fields);
  PrintRows("Entries", difference["entries"]);
  PrintRows("Answers", difference["answers"]);
}

ExitCode Diff(DiffOptions options) {
  if (!options.atms_file.empty()) ReadAtms(options.atms_file, &options.atms);
  const Json difference = Compare(options);
  options.json ? PrintJson(difference) : PrintDiff(difference);
  const bool equal = std::all_of(difference.begin(), difference.end(),
                                 [](const Json& changes) { return changes.empty(); });
  return equal ? kDone : kFindings;
}

Action DeclareDiff(OptionList* list) {
  const auto options = std::make_shared<DiffOptions>();
  list->Text("A", "", &options->a, "A home, a directory of seed files, a dump, or live").Required();
  list->Text("B", "", &options->b, "What it is compared with, of the same kinds").Required();
  AddDataOptions(list, options.get());
  OptionRow& atm = list->Add(
      {"--atm", "S1 S2 S3 [FALLBACK]", "Compare what this ATM is answered; may be given again",
       [options](const auto& words) { options->atms.push_back(AtmOf(words, "--atm")); }, 3});
  atm.more = 1;
  list->Text("--atms", "FILE", &options->atms_file, "The same of each line: S1 S2 S3 [FALLBACK]");
  return [options] { return Diff(*options); };
}

}  // namespace

const Verb kDiff = {
    "diff", "Say what changed between two homes, and which answers change with it",
    "Compares the rows of the tables by id and field by field, and their order; the entries of\n"
    "the configuration by file and key (order, layout and comments aside; the first entry of a\n"
    "key counts); and, for each ATM that is named, what the library answers: every request that a\n"
    "file or row of either side names is asked of both, and those that are answered differently\n"
    "are listed with the file or row of each. A request that mixes the codes of two rows is not\n"
    "asked. A dump or seed files have rows only. live is the tables in memory with the\n"
    "configuration of --home.\n\n"
    "Exit status: 0 equal, 1 different, 2 a side cannot be read.\n\n"
    "JSON: {rows: [{table, id, change, fields: [{field, before, after}]}], entries: [{file, key,\n"
    "a, b}], answers: [{atm, request, a: {found, where, answer}, b}]}.",
    "voatm diff examples/home /tmp/new --atm HARBOUR BRANCH ATM00001 COMMON", DeclareDiff};
