#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "tools/voatm/ask/why_catalogue.h"

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

}  // namespace
