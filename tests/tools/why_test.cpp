#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "support/served_home.h"
#include "tools/voatm/ask/trace_line.h"
#include "tools/voatm/ask/trace_log.h"
#include "tools/voatm_output.h"

namespace {

// The literals of the sources that can only be meant for a person: those with a blank or a bracket,
// and what a trace call begins with.
std::set<std::string> TextsOfSources() {
  const std::regex literal(R"re((trace\()?"([^"\n]*("\s*"[^"\n]*)*)")re");
  std::set<std::string> texts;
  for (const auto& file : std::filesystem::recursive_directory_iterator(SAMPLE_HOME "/../../src")) {
    if (file.is_directory()) continue;
    std::ifstream stream(file.path());
    std::string source = {std::istreambuf_iterator<char>(stream), {}};
    source = std::regex_replace(source, std::regex("//[^\n]*"), "");
    for (std::sregex_iterator at(source.begin(), source.end(), literal), end; at != end; ++at) {
      std::string text = std::regex_replace((*at)[2].str(), std::regex("\"\\s*\""), "");
      text = std::regex_replace(text, std::regex(R"(\\n)"), "\n");
      text = std::regex_replace(text, std::regex(R"(\\t)"), "\t");
      if ((*at)[1].matched || text.find_first_of(" [") < text.size() - 1) texts.insert(text);
    }
  }
  return texts;
}

TEST(Why, KnowsEveryTextOfTheSourcesOnce) {
  std::multiset<std::string> known;
  for (const TraceText& row : TraceTexts()) known.insert(row.text);
  const std::regex of_table(
      "(Error in )(?:((?:Creating|attaching) ).+( Shared Memory| Semaphore)|"
      "(Semop for )(?!AtmMemory|AtmFit).+)");
  std::set<std::string> said;
  for (const std::string& text : TextsOfSources()) {
    said.insert(std::regex_replace(text, of_table, "$1$2$4%s$3"));
  }
  EXPECT_GT(said.size(), 90U);
  for (const std::string& text : said) EXPECT_EQ(known.count(text), 1U) << text;
  for (const std::string& text : known) EXPECT_EQ(said.count(text), 1U) << "gone: " << text;
}

TEST(Why, AMeaningNamesWhatIsPrinted) {
  for (const TraceText& row : TraceTexts()) {
    const std::string text = row.text, means = row.means;
    for (std::size_t at = means.find('{'); at != std::string::npos; at = means.find('{', at + 1)) {
      EXPECT_GT(means[at + 1], '0') << means;
      EXPECT_LE(means[at + 1] - '0', std::count(text.begin(), text.end(), '%')) << means;
    }
  }
}

// A text with each conversion as it might be printed, and what was printed.
std::string Printed(std::string text, std::vector<std::string>* values) {
  static const std::regex conversion("%[0-9]*([sdc])");
  for (std::smatch match; std::regex_search(text, match, conversion);) {
    const char kind = *match[1].first;
    const bool empty = kind == 's' && values->size() % 3 == 2;
    values->push_back(kind == 'd' ? "-7" : kind == 'c' ? "Q" : empty ? "" : "A B/c");
    text = match.prefix().str() + values->back() + match.suffix().str();
  }
  return text;
}

// clang-format off
const struct {
  std::string text, time, process;
} kPrefixes[] = {
    {"", "", ""},
    {"2026-11-21 09:30:05.123456 [12345] 2 ", "2026-11-21 09:30:05.123456", "12345"},
    {"<13>Nov  1 09:30:05 host driver[77]: ", "Nov 1 09:30:05", "77"},
    {"09:30:05 d: ", "09:30:05", ""},
    {"<34>1 2026-11-21T09:30:05.003Z host d: ", "2026-11-21T09:30:05.003Z", ""},
    {"<Nov 21 09:30:05> d: ", "Nov 21 09:30:05", ""},
    {"abc <09:30:05 x[7]: ", "09:30:05", "7"},
    {"[2026-11-21T09:30:05+01:00] INFO:", "2026-11-21T09:30:05+01:00", ""},
    {"<13>[2026-11-21 09:30:05,1] ", "2026-11-21 09:30:05,1", ""},
    {"h - u [21/Nov/2026:09:30:05 +0100] \"", "21/Nov/2026:09:30:05", ""},
    {"21.11.2026 09:30:05 d[] e[a7] f[8]: ", "21.11.2026 09:30:05", "8"},
};
// clang-format on

TEST(Why, ReadsEveryTextBehindAnyPrefix) {
  TraceReader reader;
  for (const TraceText& row : TraceTexts()) {
    if (row.text[0] == '%') continue;
    for (const auto& prefix : kPrefixes) {
      for (const std::string error : {"", " SysErr[ Out of [ ] ErrNo[ 43 ]"}) {
        std::vector<std::string> values;
        const std::string line = prefix.text + Printed(row.text, &values) + error;
        const TraceLine& read = reader.Read(line);
        const auto found = std::find_if(read.matches.begin(), read.matches.end(),
                                        [&](const TraceMatch& each) { return each.row == &row; });
        ASSERT_NE(found, read.matches.end()) << line;
        EXPECT_EQ(std::vector<std::string>(found->printed.begin(), found->printed.end()), values)
            << line;
        EXPECT_EQ(read.time, prefix.time) << line;
        EXPECT_EQ(read.process, prefix.process) << line;
        EXPECT_EQ(read.error_number, error.empty() ? "" : "43") << line;
      }
    }
  }
}

TEST(Why, FindsTheDateBeforeAClock) {
  TraceReader reader;
  for (const char* date :
       {"2026-11-21 ", "2026/11/21 ", "2026.11.21_", "2026-11-21, ", "2026-11-21] [", "21/11/2026 ",
        "21-11-2026;", "1.11.2026 ", "21.11.26 ", "20261121T", "21-Nov-2026 ", "1 Nov 2026 ",
        "21Nov2026 ", "2026-Nov-21 ", "Nov 21 2026 ", "Nov 21 ", "Nov 1 ", "11-21 "}) {
    for (const char* before : {"", "<13>", "d[7]: ", "driver.log:12:", "("}) {
      const std::string line = before + (date + std::string("09:30:05.1 [7] 2 Lts Verified"));
      EXPECT_EQ(reader.Read(line).time, date + std::string("09:30:05.1")) << line;
    }
  }
  for (const char* no_date :
       {"thread 12 ", "driver 7 ", "job0012345678 ", "1.12.34 ", "[12345] "}) {
    const std::string line = no_date + std::string("09:30:05.1 Lts Verified");
    EXPECT_EQ(reader.Read(line).time, "09:30:05.1") << line;
  }
}

// clang-format off
const struct {
  std::string line, means;
} kMeanings[] = {
    {"Error in opening file[ " + std::string(40000, 'x') + " ]", std::string(40000, 'x') + " did not open."},
    {"a Test", ""},
    {"word x Test", ""},
    {"sent none SysErr[ x ] ErrNo[ ab ]", ""},
    {"a: Test\r", "The notes paid are those that were sent."},
    {"Denom Id[ C ] is Highest", ""},
    {"Count [x]", ""},
    {"Denom Id[ C ]  is\tHigh\\n", "Cassette C stands in the way: its notes are too large."},
    {"Error in opening file[ {1} ]", "{1} did not open."},
    {"Error in Searching cfgparam[K] from file[ F ]", "F has no K; nothing else is tried."},
    {"Error in Searching cfgparam[K] from file[ F ] ", "F has no K; OPKEYMAP#DEFAULT is tried next."},
    {"Error in Searching cfgparam[K] from file[ F ]\r", "F has no K; nothing else is tried."},
    {"Error in opening file[ ]x ]", "]x did not open."},
    {"InstTerminalGroup[I] AtmLogicalGroup[G] AtmId[A] TxnCode[010000] RespCode[000] CurrencyCode[978]", "The property request as rows hold it."},
    {"InstTerminalGroup[I] AtmLogicalGroup[G] AtmId[A] TxnCode[10000] RespCode[0] CurrencyCode[978]", "The property request as it was given."},
    {"Dispense Status A[02] B[00] C[10] D[00]", "The ATM says it paid these notes."},
    {"Error in Searching cfgparam[K] from file[  ]", " has no K; nothing else is tried."},
    {"Error in Searching K from file[ {1} ]", "{1} has no readable K."},
    {"Error in Searching CurrencyCode[978] in VoAtmProperty Table", "No property row is for currency 978 there; 0 is tried next."},
    {"Error in Searching CurrencyCode[0] in VoAtmProperty Table", "No property row is for currency 0 there; nothing wider is left to try."},
    {"Error in Searching InstTerminalGroup[*] in VoAtmProperty Table", "No property row is for institution group *; nothing wider is left to try."},
};
// clang-format on

TEST(Why, LooksForATextAtTheEndOfALongLine) {
  std::string line;
  while (line.size() < (1 << 20)) line += "Error in Searching ";
  TraceReader reader;
  EXPECT_TRUE(reader.Read(line).matches.empty());
  EXPECT_EQ(reader.Read(line + ": sent none").matches.size(), 1U);
}

TEST(Why, SaysWhatALineMeans) {
  TraceReader reader;
  for (const auto& [line, means] : kMeanings) {
    const TraceLine& read = reader.Read(line);
    EXPECT_EQ(read.matches.empty() ? "" : read.matches.front().Means(), means);
  }
  EXPECT_EQ(reader.Read("no name of it ] ErrNo[ 43 ]").error_number, "");
  EXPECT_EQ(MeaningOfError("43000000000000000000000"), nullptr);
}

TEST(Why, SumsUpALogOfAnyLines) {
  const TestHome home;
  std::string log = "no text\n" + std::string(3 << 20, 'x') + " Test\n";
  for (int i = 0; i < 300; ++i) {
    const std::string stamp = "2026-11-21 09:30:05.000" + std::to_string(100 + i) + " [";
    log +=
        stamp + std::to_string(i) + "] 2 Error in Locating Memory[ T" + std::to_string(i) + " ]\n";
  }
  log += "Lts Verified\nLts Verified\nError in Semop for AtmFit SysErr[ x ] ErrNo[ 43 ]";
  home.Write("log", log);
  ExpectTranscript(Transcript("log"));
  const Json messages = VoatmJson("why --file $VODIR_HOME/log")["messages"];
  EXPECT_EQ(messages[0]["processes"][1], "1");
  EXPECT_EQ(messages[2]["processes"], Json::array()) << "none is named";
}

TEST(Why, SaysFirstWhatMattersMostAndOfThatWhatIsSaidMostOften) {
  LogSummary summary;
  TraceReader reader;
  for (const char* line : {"Lts Verified", "Test", "sent none", "Test", "Denom Id[ C ] is High"}) {
    summary.Add(reader.Read(line));
  }
  std::string texts;
  for (const LogMessage& each : summary.Messages()) texts += std::string(each.row->text) + "; ";
  EXPECT_EQ(texts, "Denom Id[ %c ] is High; Test; Lts Verified; sent none; ");
}

TEST(Why, ALineDoesNotGoOnInAFileThatWasCut) {
  const TestHome home;
  home.Write("log", "Count [1]\ncut off");
  LogLines lines(home.path() + "/log");
  lines.Follow([&] { home.Write("log", "new\n"); });
  for (const char* line : {"Count [1]", "cut off", "new"}) EXPECT_EQ(lines.Next(), line);
}

// The lines of a file that grows, is cut and is replaced.
TEST(Why, FollowsAFile) {
  const TestHome home;
  const auto write = [&](const char* name, const char* mode, int line) {
    FILE* const file = fopen((home.path() + name).c_str(), mode);
    fprintf(file, "Count [%d]\n", line);
    fclose(file);
  };
  write("/log", "w", 1);
  const std::string command =
      "echo $$; exec " BUILD_DIRECTORY "/voatm why --follow --json --file " + home.path() + "/log";
  FILE* const pipe = popen(command.c_str(), "r");  // NOLINT(bugprone-command-processor)
  char line[1000] = {};
  const int process = atoi(fgets(line, sizeof line, pipe));
  const auto expect = [&](int count) {
    ASSERT_NE(fgets(line, sizeof line, pipe), nullptr);
    EXPECT_EQ(std::string(line).rfind("{\"line\":\"Count [" + std::to_string(count) + "]\"", 0), 0U)
        << line;
  };
  expect(1);
  write("/log", "a", 22);
  expect(22);
  write("/log", "w", 3);
  expect(3);
  write("/new", "w", 5);
  std::filesystem::rename(home.path() + "/log", home.path() + "/old");
  write("/old", "a", 4);
  std::filesystem::rename(home.path() + "/new", home.path() + "/log");
  expect(4);
  expect(5);
  kill(process, SIGTERM);
  pclose(pipe);
}

}  // namespace
