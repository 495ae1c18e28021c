// A unit test of a driver: its tables in memory, its configuration in a folder of its own.
#include "withdrawal.h"

#include <gtest/gtest.h>

#include "voatmutil_testing.h"

namespace doubles = voatmutil_testing;

namespace {

class Withdrawal : public testing::Test {
 protected:
  Withdrawal() {
    home_.Write("cfg/atm/displogic/HARBOUR_displogic.cfg",
                "[DISPENCE_LOGIC]\nCASH_70 1 1 0 0\nCASH_80 4 0 0 0\n");
    tables_.Add(doubles::Row<AtmMemoryTable>({{&AtmMemoryTable::AtmId, "ATM00001"}}));
    tables_.Add(doubles::Row<VoAtmProperty>({{&VoAtmProperty::InstTerminalGroup, "HARBOUR"},
                                             {&VoAtmProperty::TxnCode, "01"},
                                             {&VoAtmProperty::PropertySwitch1, 'Y'}}));
  }

  std::string Pays(const char* amount) {
    return Withdraw(tables_.util(), "ATM00001", amount, cassettes_);
  }

  doubles::Home home_;
  doubles::Traces traces_;
  doubles::Tables tables_{traces_.debug()};
  DenomInfo cassettes_[8] = {{'A', 1, 20, 978, 'Y', 0}, {'B', 2, 50, 978, 'Y', 0}};
};

TEST_F(Withdrawal, IsPaidAsConfiguredAndKept) {
  EXPECT_EQ(Pays("70"), "01010000");
  EXPECT_STREQ(tables_.At<AtmMemoryTable>(0).Rest, "01010000");
}

TEST_F(Withdrawal, IsRefusedWhenTheNotesDoNotAddUp) {
  cassettes_[0] = {'A', 1, 40, 978, 'Y', 0};  // 80 is planned as one of 50, with 30 left
  EXPECT_EQ(Pays("80"), "");
  EXPECT_STREQ(tables_.At<AtmMemoryTable>(0).Rest, "");
}

TEST_F(Withdrawal, IsRefusedWhereTheAmountIsNotConfigured) {
  EXPECT_EQ(Pays("90"), "");
  EXPECT_NE(traces_.text().find("2 failed to Search [ DISPENCE_LOGIC#CASH_90 ]"),
            std::string::npos);
}

TEST_F(Withdrawal, IsRefusedWhereItIsSwitchedOff) {
  tables_.At<VoAtmProperty>(0).PropertySwitch1 = 'N';
  EXPECT_EQ(Pays("70"), "");
}

}  // namespace
