#include <algorithm>
#include <regex>
#include <sstream>

#include "support/served_home.h"
#include "tools/voatm_output.h"

namespace {

TEST(SampleHome, AnswersAsInTheTranscript) { ExpectTranscript(Transcript("sample_home")); }

TEST(SampleHome, IsExplainedAsInTheTranscript) { ExpectTranscript(Transcript("answers")); }

// What a file holds reaches a terminal as text only: as a row, as a line, as talk and as JSON.
// Numbers that differ from run to run go through $MASK.
TEST(SampleHome, IsShownAsInTheTranscriptWhenItIsServed) {
  const ServedHome home(SAMPLE_HOME);
  setenv("MASK",
         "sed -E \"s|$VODIR_HOME|HOME|g; s/[0-9]{7,}/N/g; "
         "s/[0-9]{4}(-[0-9]{2}){2} [0-9:]{8}/TIME/g; "
         "s/\\\"(id|creator)\\\": ?[0-9]+/\\\"\\1\\\": N/g; "
         "s/\\\"owner\\\": ?\\\"[^\\\"]*\\\"/\\\"owner\\\": \\\"U\\\"/\"",
         1);
  setenv("XDG_STATE_HOME", home.path().c_str(), 1);
  ExpectTranscript(Transcript("served"));
  unsetenv("XDG_STATE_HOME");
  unsetenv("MASK");
}

TEST(SampleHome, HasAPageForEachVerb) {
  const TestHome home;
  setenv("PAGES", home.path().c_str(), 1);
  ExpectTranscript(Transcript("manual"));
  unsetenv("PAGES");
}

TEST(ControlCharacters, AreShownAsNumbersWhereverTheyStand) {
  const TestHome home;
  home.Write("cfg/atm/CARDLESS_TXN.cfg", "[OPKEYMAP]\nA \033[2J\xe9 \xc2\x9b\nDEFAULT B\n");
  for (const char* const command :
       {"explain cardless A", "explain cardless A --json", "explain cardless '\033[2J'", "check",
        "check --json", "check --home '\033[2J'", "why '\033[2J'", "why '\033[2J' --json",
        "why -x --file cfg/atm/CARDLESS_TXN.cfg", "shwo '\033[2J'"}) {
    const std::string text =
        Shell("cd " + home.path() + "; VODIR_HOME=. " BUILD_DIRECTORY "/voatm " + command + " 2>&1")
            .text;
    EXPECT_NE(text, "") << command;
    for (const char c : text) ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << command << text;
  }
  EXPECT_NE(Voatm("check --home '~ none'").text.find("~ none"), std::string::npos);
}

TEST(Terminal, GetsLinesOfItsWidthInColoursThatItHas) {
  const struct {
    const char *settings, *command;
    std::size_t width;
    bool colored;
  } kTerminals[] = {
      {"stty cols 41; TERM=xterm", "explain txn-code A A B C D E", 41, true},
      {"stty cols 0; TERM=xterm", "why 'Error in Semop for AtmFit'", 80, false},
      {"stty cols 41; TERM=xterm NO_COLOR=1", "why -x --file log", 41, false},
      {"stty cols 41; TERM=xterm NO_COLOR=", "why -x --file log", 41, true},
      {"stty cols 41; TERM=dumb", "why --file log", 41, false},
      {"stty cols 1; unset TERM; ", "why --file log", 20, false},
      {"stty cols 41; TERM=xterm",
       "plan --model NDC+ATM --currency 978 --max-notes 9 A:20:978:Y --amount 30", 41, true},
      {"stty cols 60; TERM=xterm",
       "plan --model NDC+ATM --currency 978 --max-notes 9 A:20:978:Y --sweep 20:20", 60, false},
      {"stty cols 41; TERM=xterm",
       "plan --model NDC+ATM --currency 978 --max-notes 9 A:20:978:Y --amount 20", 41, false},
      {"stty cols 41; TERM=xterm",
       "plan --model NDC+ATM --currency 978 --max-notes 9 A:20:978:Y --sweep 20:40:20 --empty", 41,
       true},
  };
  const TestHome home;
  home.Write("log", "Error in opening file[ /a/long/path/without/a/blank/to/break/at ]\n");
  for (const auto& [settings, command, width, colored] : kTerminals) {
    const std::string text =
        Shell("cd " + home.path() + "; VODIR_HOME=. script -qec \"" + settings +
              " " BUILD_DIRECTORY "/voatm " + command + " 2>/dev/null\" /dev/null")
            .text;
    EXPECT_EQ(text.find("\033[31m") != std::string::npos, colored) << settings << text;
    std::size_t widest = 0;
    std::istringstream lines(std::regex_replace(text, std::regex("\033\\[[0-9]*m|\r"), ""));
    for (std::string line; std::getline(lines, line);) widest = std::max(widest, line.size());
    EXPECT_LE(widest, width) << text;
    EXPECT_GT(widest, width / 2) << text;
  }
}

}  // namespace
