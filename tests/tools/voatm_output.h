// The command as an operator runs it: on the home of the test, or else on the sample home.
#ifndef TESTS_TOOLS_VOATM_OUTPUT_H
#define TESTS_TOOLS_VOATM_OUTPUT_H

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "support/shell.h"

using Json = nlohmann::ordered_json;

// What the arguments redirect is not in the text.
inline Output Voatm(const std::string& arguments) {
  return Shell("cd " SAMPLE_HOME "; export PATH=" BUILD_DIRECTORY
               ":$PATH; "
               "VODIR_HOME=${VODIR_HOME:-.} voatm 2>&1 " +
               arguments);
}

// What --json prints, on standard output.
inline Json VoatmJson(const std::string& arguments) {
  return Json::parse(Voatm(arguments + " --json 2>/dev/null").text);
}

inline std::string Transcript(const std::string& name) {
  std::ifstream stream(SAMPLE_HOME "/../../tests/tools/" + name + ".transcript");
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Arguments in lines that begin with "$ ", each before what it prints and the exit status.
inline void ExpectTranscript(const std::string& expected) {
  std::istringstream lines(expected);
  std::string actual;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("$ ", 0) != 0) continue;
    const Output output = Voatm(line.substr(2));
    actual += line + "\n" + output.text + "=> " + std::to_string(output.code) + "\n";
  }
  EXPECT_EQ(actual, expected);
}

#endif  // TESTS_TOOLS_VOATM_OUTPUT_H
