#include "support/driver_test.h"

namespace {

using SecurityAndChecksTest = DriverTest;

IN_BOTH_LOCK_MODES(SecurityAndChecksTest);

TEST_P(SecurityAndChecksTest, SecurityReadCopiesTheLowestSlotAndMovesTheAtmIndex) {
  for (const int slot : {0, 2}) {
    memset(&util_.SecurityPtr[slot], 'a' + slot, sizeof(VoSecurity));
    strcpy(util_.SecurityPtr[slot].SecurityId, "S1");
  }
  VoSecurity record = {};
  util_.LastAtmIndex = 3;
  for (const char* absent : {"S2", "s1", "S", "S11"}) {
    EXPECT_EQ(util_.ReadVoSecurityTable(absent, &record), -1) << absent;
  }
  EXPECT_EQ(record.SecurityId[0], '\0');
  EXPECT_EQ(util_.LastAtmIndex, 3);
  EXPECT_EQ(util_.ReadVoSecurityTable("S1", &record), 1);
  EXPECT_EQ(memcmp(&record, &util_.SecurityPtr[0], sizeof record), 0);
  EXPECT_EQ(util_.LastAtmIndex, 0);
  memset(util_.SecurityPtr[3].SecurityId, 'Z', sizeof(VoSecurity));  // an id without its NUL
  EXPECT_EQ(util_.ReadVoSecurityTable(std::string(504, 'Z').c_str(), &record), 1);
  EXPECT_EQ(util_.ReadVoSecurityTable(std::string(505, 'Z').c_str(), &record), -1);
  util_.MaxSecurity = 0;
  EXPECT_EQ(util_.ReadVoSecurityTable("S1", &record), -1);
  EXPECT_EQ(util_.LastAtmIndex, 3);
  EXPECT_EQ(trace_.Take(), "");
}

TEST_P(SecurityAndChecksTest, ChecksAndCountsKeepToTheirOwnTables) {
  util_.AtmPropertyPtr[1].RecordId = 10;
  util_.AtmActionPropertyPtr[7].RecordId = -20;
  strcpy(util_.AtmStatusPtr[3].StatusCode, "C1");
  for (const int id : {10, -20, 11}) {
    EXPECT_EQ(util_.VerifyAtmPropertyMemory(id), id == 10 ? 1 : -1) << id;
    EXPECT_EQ(util_.VerifyAtmActionPropertyMemory(id), id == -20 ? 1 : -1) << id;
  }
  for (const std::string code : {"C1", "c1", "C", "C11"}) {
    EXPECT_EQ(util_.VerifyAtmStatusMemory(code.c_str()), code == "C1" ? 1 : -1) << code;
  }
  strcpy(util_.AtmPropertyPtr[7].InstTerminalGroup, "G");
  strcpy(util_.AtmPropertyPtr[0].InstTerminalGroup, "");
  EXPECT_EQ(util_.GetAtmPropertyCount(), 2);
  EXPECT_EQ(util_.GetAtmActionPropertyCount(), 0);
  strcpy(util_.AtmActionPropertyPtr[5].InstTerminalGroup, "*");
  EXPECT_EQ(util_.GetAtmActionPropertyCount(), 1);
  util_.MaxAtmProperty = 0;
  EXPECT_EQ(util_.GetAtmPropertyCount() + util_.GetAtmActionPropertyCount(), 0);
}

}  // namespace
