#include "support/call_fault.h"
#include "support/driver_test.h"
#include "support/random_cases.h"
#include "support/walk_model.h"

namespace {

class PropertyTest : public DriverTest {
 protected:
  PropertyTest() : DriverTest({1, 1, 1, 12, 1}) { memset(&record_, '.', sizeof record_); }

  // A row from its six columns; its number is 100 more than its slot.
  void Put(int slot, const Texts& columns) {
    VoAtmProperty& row = util_.AtmPropertyPtr[slot];
    memset(&row, 'a' + slot, sizeof row);
    row.RecordId = 100 + slot;
    SetField(row.InstTerminalGroup, columns[0]);
    SetField(row.AtmLogicalGroup, columns[1]);
    SetField(row.AtmId, columns[2]);
    SetField(row.TxnCode, columns[3]);
    SetField(row.RespCode, columns[4]);
    row.CurrencyCode = std::stoi(columns[5]);
  }

  int Read(const Texts& r) {
    return util_.ReadAtmProperty(r[0].c_str(), r[1].c_str(), r[2].c_str(), std::stoi(r[3]),
                                 std::stoi(r[4]), std::stoi(r[5]), &record_);
  }

  // What a locked read adds when it finds a row.
  std::string Found(int slot) const {
    const std::string copied = "]\n7 Copied voatmproperty[" + std::to_string(100 + slot) + "]\n";
    return locked() ? "7 voatmproperty tableoffset[" + std::to_string(slot) + copied : "";
  }

  VoAtmProperty record_;
};

IN_BOTH_LOCK_MODES(PropertyTest);

TEST_P(PropertyTest, SettlesEachKeyOnItsOwnValueBeforeItsWildcard) {
  const char* const rows[] = {
      "G1 L1 * * * 0",   "G1 L1 A9 010000 005 356", "G1 L1 A9 01 * 0", "G1 L1 A9 01 000 840",
      "G1 L1 A9 00 * 0", "G1 * A9 * * 0",           "G1 L1 A9 00 * 0", "* * * * * 0"};
  for (int slot = 0; slot < 8; ++slot) Put(slot, Words(rows[slot]));
  const struct {
    const char* request;
    int slot;    // or -1
    int visits;  // of slots, under locks: each level starts where the one before found its row
  } cases[] = {{"G1 L1 A9 10000 5 356", 1, 7},   {"G1 L1 A9 10000 5 840", -1, 28},
               {"G1 L1 A9 10001 5 356", 2, 39},  {"G1 L1 A9 19999 0 840", 3, 20},
               {"G1 L1 A9 19999 0 356", -1, 37}, {"G1 L1 A9 5 0 356", 4, 37},
               {"G1 L1 A9 20000 0 0", -1, 37},   {"G1 L1 A8 20000 0 7", 0, 66},
               {"G1 L9 A9 1 1 1", 5, 51},        {"G1 L9 A8 1 1 1", -1, 33},
               {"g1 L1 A9 10000 5 356", 7, 55},  {"* L1 A9 10000 5 356", 7, 43}};
  for (const auto& c : cases) {
    record_.RecordId = 99;
    const CallFault semop("semop");
    EXPECT_EQ(Read(Words(c.request)), c.slot >= 0 ? 1 : -1) << c.request;
    EXPECT_EQ(semop.calls(), locked() ? 2 * c.visits : 0) << c.request;
    EXPECT_EQ(record_.RecordId, c.slot >= 0 ? 100 + c.slot : 99) << c.request;
  }
}

TEST_P(PropertyTest, TracesTheRequestTheKeysAndEachMiss) {
  Put(3, Words("* * * * * 0"));
  EXPECT_EQ(Read(Words("GROUP-OF-SIXTEEN+MORE L1 A9 10000 5 356")), 1);
  const std::string any = " InstTerminalGroup[*] AtmLogicalGroup[*]", atm = any + " AtmId[*]";
  const std::string miss = "7 Error in Searching", table = " in VoAtmProperty Table\n";
  EXPECT_EQ(trace_.Take(),
            "7 InstTerminalGroup[GROUP-OF-SIXTEEN+MORE] AtmLogicalGroup[L1] AtmId[A9] "
            "TxnCode[10000] RespCode[5] CurrencyCode[356]\n"
            "7 InstTerminalGroup[GROUP-OF-SIXTEEN] AtmLogicalGroup[L1] AtmId[A9] "
            "TxnCode[010000] RespCode[005] CurrencyCode[356]\n" +
                miss + " InstTerminalGroup[GROUP-OF-SIXTEEN+MORE]" + table + miss +
                " InstTerminalGroup[*] AtmLogicalGroup[L1]" + table + miss + any + " AtmId[A9]" +
                table + miss + atm + " TxnCode[010000]" + table + miss + atm + " TxnCode[01]" +
                table + miss + atm + " TxnCode[*] RespCode[005]" + table + miss +
                " CurrencyCode[356]" + table + Found(3));
  Put(3, Words("NOTDEFINED * * * * 0"));
  EXPECT_EQ(Read(Words("G1 L1 A9 5 0 0")), -1);
  const std::string start =
      "7 " + Named(Words("G1 L1 A9 5 0 0")) + "\n7 " + Named(Words("G1 L1 A9 000005 000 0")) + "\n";
  EXPECT_EQ(trace_.Take(), start + miss + " InstTerminalGroup[G1]" + table +
                               "2 Error in Searching InstTerminalGroup[*]" + table);
}

TEST_P(PropertyTest, ResetWritesTheSevenSwitchesOnly) {
  std::string expected(sizeof record_, '.');
  for (const std::size_t offset : {55U, 56U, 90U, 91U, 92U, 93U, 106U}) expected[offset] = 'N';
  EXPECT_EQ(util_.resetAtmProperty(&record_), 1);
  EXPECT_EQ(memcmp(&record_, expected.data(), sizeof record_), 0);
}

TEST_P(PropertyTest, AgreesWithSlowScansOnRandomTables) {
  RandomCases random;
  const std::vector<Texts> columns =
      WordsOf({"GROUP-OF-SIXTEEN * NOTDEFINED", "L L2 *", "A-ATM-000001 B-ATM-000001 *",
               "010000 000005 01 00 * *", "005 000 *", "0 0 356 -356"});
  const std::vector<Texts> requests =
      WordsOf({"GROUP-OF-SIXTEEN GROUP-OF-SIXTEE *", "L L2 *", "A-ATM-000001 B-ATM-000001 *",
               "10000 5 19999", "5 0 999", "0 356 -356 840"});
  std::vector<Texts> rows(12, Words("NOTDEFINED * * * * 0"));
  for (int slot = 0; slot < 12; ++slot) Put(slot, rows[0]);
  int found = 0;
  const int rounds = RandomCases::Rounds(locked() ? 3000 : 100000);
  for (int round = 0; round < rounds; ++round) {
    const int changed = random.Below(12);
    Texts& row = rows[static_cast<std::size_t>(changed)];
    row = random.Row(columns);
    Put(changed, row);
    const Texts request = random.Row(requests);
    Texts keys = request;
    keys[3] = WithZeros(request[3], 6);
    keys[4] = WithZeros(request[4], 3);
    std::string said = "7 " + Named(request) + "\n7 " + Named(keys) + "\n";
    std::vector<Texts> tries;
    for (const std::string& key : keys) tries.push_back({key, "*"});
    tries[3].insert(tries[3].begin() + 1, keys[3].substr(0, 2));
    tries[5][1] = "0";
    const int slot = SlowWalk(rows, tries, "VoAtmProperty", &said);
    VoAtmProperty expected = record_;
    util_.resetAtmProperty(&expected);
    if (slot >= 0) expected = util_.AtmPropertyPtr[slot];
    ASSERT_EQ(Read(request), slot >= 0 ? 1 : -1) << "round " << round;
    ASSERT_EQ(trace_.Take(), said + (slot >= 0 ? Found(slot) : "")) << "round " << round;
    ASSERT_EQ(memcmp(&record_, &expected, sizeof record_), 0) << "round " << round;
    found += slot >= 0 ? 1 : 0;
  }
  EXPECT_TRUE(found > rounds / 20 && found < rounds - rounds / 20) << found;
}

}  // namespace
