#include <sstream>

#include "support/driver_test.h"
#include "support/semop_fault.h"

namespace {

class SemaphoreFailureTest : public DriverTest {
 protected:
  // In every table slot 1 is what the operations below look for; slot 0 is free.
  SemaphoreFailureTest() {
    strcpy(util_.AtmMemoryPtr[1].AtmId, "X");
    util_.AtmFitPtr[1] = {"X", "X", "X", "X", "", "", ' '};
    strcpy(util_.SecurityPtr[1].SecurityId, "X");
    VoAtmProperty& row = util_.AtmPropertyPtr[1];
    row.RecordId = 7;
    strcpy(row.InstTerminalGroup, "*");
    strcpy(row.AtmLogicalGroup, "*");
    strcpy(row.AtmId, "*");
    strcpy(row.TxnCode, "*");
    strcpy(row.RespCode, "*");
    util_.AtmActionPropertyPtr[1] = {7, "X", "X", "X", "X", 'Y', "act", 'Y', "*", "7"};
    util_.AtmStatusPtr[1] = {"X", 'S'};
  }

  // Probes slot 0 first, and then scans.
  int WriteAtm() {
    util_.LastAtmIndex = 0;
    return util_.WriteAtmMemory("X", &atm_);
  }

  int ReadAction(int search_type) {
    char statuses[] = "X|", text[21];
    int value;
    return util_.ReadAtmActionProperty("X", "X", "X", statuses, 1, text, &value, search_type);
  }

  AtmMemoryTable atm_ = {"X", {}, {}};
  AtmFit fit_;
  VoSecurity security_;
  VoAtmProperty property_ = {};
};

IN_BOTH_LOCK_MODES(SemaphoreFailureTest);

TEST_P(SemaphoreFailureTest, EveryCallThatFailsEndsItsOperationWithThePlacesWords) {
  const struct {
    int set;
    const char* tables;  // named when taking, and when giving back after a match and otherwise
    std::function<int()> run;
  } cases[] = {
      {util_.AtmMemorySemid, "AtmMemory", [&] { return util_.ReadAtmMemory("X", &atm_); }},
      {util_.AtmMemorySemid, "AtmMemory", [&] { return WriteAtm(); }},
      {util_.AtmFitSemid, "AtmFitMemory AtmMemory AtmFit", [&] { return util_.VerifyAtmFit("X"); }},
      {util_.AtmFitSemid, "AtmFitMemory AtmFit AtmFit",
       [&] { return util_.GetFitCount("X", "X", "X"); }},
      {util_.AtmFitSemid, "AtmFitMemory AtmFit AtmFit",
       [&] { return util_.ReadFitMemory("X", "X", "X", &fit_, 1); }},
      {util_.SecuritySemid, "VoSecurity",
       [&] { return util_.ReadVoSecurityTable("X", &security_); }},
      {util_.AtmPropertySemid, "AtmProperty", [&] { return util_.VerifyAtmPropertyMemory(7); }},
      {util_.AtmPropertySemid, "AtmProperty", [&] { return util_.GetAtmPropertyCount(); }},
      {util_.AtmActionPropertySemid, "AtmActionProperty",
       [&] { return util_.VerifyAtmActionPropertyMemory(7); }},
      {util_.AtmActionPropertySemid, "AtmActionProperty",
       [&] { return util_.GetAtmActionPropertyCount(); }},
      {util_.AtmStatusSemid, "AtmStatus", [&] { return util_.VerifyAtmStatusMemory("X"); }},
      {util_.AtmPropertySemid, "AtmMemory",
       [&] { return util_.ReadAtmProperty("X", "X", "X", 1, 1, 7, &property_); }},
      {util_.AtmActionPropertySemid, "AtmMemory", [&] { return ReadAction(STATUS_ACTION); }},
      {util_.AtmActionPropertySemid, "AtmMemory", [&] { return ReadAction(TXN_VALUE); }}};
  for (const auto& c : cases) {
    std::string taking, giving[2];  // otherwise, after a match
    std::istringstream(c.tables) >> taking >> giving[1] >> giving[0];
    if (giving[0].empty()) giving[0] = giving[1] = taking;
    int call = 1;
    for (SemopFault fault; (fault = WithFailingSemop(call, c.run)).slot >= 0; ++call) {
      const std::string said = fault.giving ? giving[fault.slot == 1 ? 1 : 0] : taking;
      std::string last = trace_.Take();
      last.erase(0, last.rfind('\n', last.size() - 2) + 1);
      EXPECT_EQ(last, "2 Error in Semop for " + said + SysErr(EIDRM)) << "call " << call;
      EXPECT_EQ(fault.set, c.set) << c.tables << " call " << call;
      EXPECT_EQ(fault.result, -1) << c.tables << " call " << call;
      EXPECT_EQ(property_.PropertySwitch1, '\0');  // not even reset
    }
    EXPECT_EQ(call >= 5, locked()) << c.tables;
    trace_.Take();
  }
}

}  // namespace
