// An integration test of a driver: real tables, start-up and locks, from `voatm serve`.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "voatmutil_testing.h"
#include "withdrawal.h"

#ifndef VOATM
#define VOATM "voatm"  // the command, on the search path
#endif

namespace doubles = voatmutil_testing;

namespace {

// `voatm serve` for a home. It ends with the object, and with this process if that crashes.
class ServedTables {
 public:
  explicit ServedTables(const doubles::Home& home) {
    const std::string command = std::string(VOATM) + " serve --json --exit-with " +
                                std::to_string(getpid()) + " --home " + home.path();
    served_ = popen(command.c_str(), "r");
    char ready[4096] = "";  // one line, once the tables are there
    const bool read = served_ != nullptr && fgets(ready, sizeof ready, served_) != nullptr;
    const std::string line = ready;
    const std::size_t at = line.find("\"pid\":");
    if (read && at != std::string::npos) pid_ = std::stoi(line.substr(line.find(':', at) + 1));
  }
  ~ServedTables() {
    if (pid_ > 0) kill(pid_, SIGTERM);
    if (served_ != nullptr) pclose(served_);
  }
  ServedTables(const ServedTables&) = delete;
  ServedTables& operator=(const ServedTables&) = delete;

  bool ready() const { return pid_ > 0; }

 private:
  FILE* served_ = nullptr;
  pid_t pid_ = 0;
};

// A home with keys of this process's own, so that tests may run side by side.
void WriteHome(const doubles::Home& home) {
  const int key = 0x40000000 + (getpid() & 0xfffff) * 16;
  home.Write("cfg/vokernel.cfg", "[CHANNEL]\nORGKEY " + std::to_string(key) + "\n");
  home.Write("cfg/vobusiness.cfg",
             "[VOBUSINESS]\nMAXATM 4\nMAXFIT 4\nMAXATMPROPERTY 4\nMAXATMSTATUS 4\n");
  home.Write("cfg/vosecurity.cfg", "MAXSECURITY 4\n");
  home.Write("cfg/atm/displogic/HARBOUR_displogic.cfg", "[DISPENCE_LOGIC]\nCASH_70 1 1 0 0\n");
  home.Write("tables/atm_memory.json", R"([{"AtmId": "ATM00001"}])");
  home.Write("tables/atm_property.json",
             R"([{"InstTerminalGroup": "HARBOUR", "AtmLogicalGroup": "*", "AtmId": "*",
                  "TxnCode": "01", "RespCode": "*", "PropertySwitch1": "Y"}])");
}

TEST(ServedWithdrawal, ReachesTheTableThatEverybodySees) {
  const doubles::Home home;
  WriteHome(home);
  const ServedTables tables(home);
  ASSERT_TRUE(tables.ready());
  doubles::Traces traces;
  VoATMUtil util, other;
  ASSERT_EQ(util.InitVoATMUtil(traces.debug(), true), 1) << traces.text();
  ASSERT_EQ(other.InitVoATMUtil(traces.debug(), true), 1) << traces.text();

  DenomInfo cassettes[8] = {{'A', 1, 20, 978, 'Y', 0}, {'B', 2, 50, 978, 'Y', 0}};
  EXPECT_EQ(Withdraw(util, "ATM00001", "70", cassettes), "01010000");
  AtmMemoryTable seen;
  EXPECT_EQ(other.ReadAtmMemory("ATM00001", &seen), 1);
  EXPECT_STREQ(seen.Rest, "01010000");
}

}  // namespace
