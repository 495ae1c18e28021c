#include "support/served_home.h"
#include "tools/voatm_output.h"

namespace {

TEST(SampleHome, AnswersAsInTheTranscript) { ExpectTranscript(Transcript("sample_home")); }

TEST(ControlCharacters, AreShownAsNumbersWhereverTheyStand) {
  const TestHome home;
  home.Write("cfg/atm/CARDLESS_TXN.cfg", "[OPKEYMAP]\nA \033[2J\xe9 A\nDEFAULT B\n");
  ExpectTranscript(R"($ explain cardless A | grep Track2Data
Track2Data \x1b[2J\xe9
=> 0
)");
}

}  // namespace
