#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "tools/voatm/why_catalogue.h"

namespace {

std::string OutputOf(const std::string& arguments) {
  const std::string command = BUILD_DIRECTORY "/voatm " + arguments + " 2>&1";
  FILE* pipe = popen(command.c_str(), "r");  // NOLINT(bugprone-command-processor)
  std::string output;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) output += static_cast<char>(c);
  pclose(pipe);
  return output;
}

// What a literal of the sources stands for, its parts joined.
std::string Joined(std::string literal) {
  literal = literal.substr(1, literal.size() - 2);
  literal = std::regex_replace(literal, std::regex("\"\\s*\""), "");
  literal = std::regex_replace(literal, std::regex(R"(\\n)"), "\n");
  return std::regex_replace(literal, std::regex(R"(\\t)"), "\t");
}

// The literals of the sources that can only be meant for a person: those with a blank or a bracket,
// and what a trace call begins with.
std::set<std::string> TextsOfSources() {
  const std::regex literal(R"((trace\()?("[^"\n]*"(\s*"[^"\n]*")*))");
  std::set<std::string> texts;
  for (const auto& file : std::filesystem::recursive_directory_iterator(SAMPLE_HOME "/../../src")) {
    if (file.is_directory()) continue;
    std::ifstream stream(file.path());
    std::string source = {std::istreambuf_iterator<char>(stream), {}};
    source = std::regex_replace(source, std::regex("//[^\n]*"), "");
    for (std::sregex_iterator at(source.begin(), source.end(), literal), end; at != end; ++at) {
      const std::string text = Joined((*at)[2]);
      if ((*at)[1].matched || text.find_first_of(" [") < text.size() - 1) texts.insert(text);
    }
  }
  return texts;
}

TEST(Why, KnowsEveryTextOfTheSources) {
  std::set<std::string> known;
  for (const TraceText& row : TraceTexts()) {
    EXPECT_TRUE(known.insert(row.text).second) << "twice: " << row.text;
  }
  const std::set<std::string> said = TextsOfSources();
  EXPECT_GT(said.size(), 90U);
  for (const std::string& text : said) EXPECT_EQ(known.count(text), 1U) << "missing: " << text;
  for (const std::string& text : known) EXPECT_EQ(said.count(text), 1U) << "gone: " << text;
}

TEST(Why, FindsTheTextInALine) {
  const std::string line =
      "why '2026-11-21 09:30:05.123456 [12345] 2 Error in Semop for AtmFit "
      "SysErr[ Identifier removed ] ErrNo[ 43 ]'";
  EXPECT_NE(OutputOf(line).find("given back.\n"), std::string::npos) << OutputOf(line);
  EXPECT_NE(OutputOf(line).find("ipcrm"), std::string::npos);
  EXPECT_NE(OutputOf("why 'x: Denom Id[ C ] is High'").find("Cassette C"), std::string::npos);
  EXPECT_EQ(OutputOf("why 'Denom Id'"), "voatm: no trace text of the library: Denom Id\n");
}

TEST(Completion, NamesEveryVerb) {
  const std::string help = OutputOf("--help");
  const std::regex verb("\n  ([a-z]+) ");
  int verbs = 0;
  for (std::sregex_iterator at(help.begin(), help.end(), verb), end; at != end; ++at, ++verbs) {
    for (const char* shell : {"bash", "zsh", "fish"}) {
      const std::string script = OutputOf(std::string("completion ") + shell);
      EXPECT_NE(script.find((*at)[1].str()), std::string::npos) << shell << ": " << (*at)[1];
    }
  }
  EXPECT_GT(verbs, 8);
}

}  // namespace
