#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "tools/voatm/why_catalogue.h"
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
  const std::set<std::string> said = TextsOfSources();
  EXPECT_GT(said.size(), 90U);
  for (const std::string& text : said) EXPECT_EQ(known.count(text), 1U) << text;
  for (const std::string& text : known) EXPECT_EQ(said.count(text), 1U) << "gone: " << text;
}

TEST(Why, FindsTheTextInALine) {
  const Answer answer = Voatm(
      "why '2026-11-21 09:30:05.123456 [12345] 2 Error in Semop for AtmFit "
      "SysErr[ Identifier removed ] ErrNo[ 43 ]'");
  EXPECT_NE(answer.text.find("given back.\n"), std::string::npos) << answer.text;
  EXPECT_NE(Voatm("why 'x: Denom Id[ C ] is High'").text.find("Cassette C"), std::string::npos);
  EXPECT_EQ(Voatm("why 'Denom Id'").text, "voatm: no trace text of the library: Denom Id\n");
}

TEST(Completion, NamesVerbsAndThoseBelowThem) {
  for (const char* const shell : {"bash", "zsh", "fish"}) {
    const std::string script = Voatm(std::string("completion ") + shell).text;
    for (const char* const word :
         {"serve", "tables", "dump", "locks", "release", "explain", "plan"}) {
      EXPECT_NE(script.find(word), std::string::npos) << shell << ": " << word;
    }
  }
}

}  // namespace
