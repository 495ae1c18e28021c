#include <cerrno>
#include <climits>

#include "support/call_fault.h"
#include "support/driver_test.h"
#include "support/random_cases.h"
#include "support/walk_model.h"

namespace {

const std::string kTable = "VoAtmActionProperty", kInTable = " in VoAtmActionProperty Table\n";
const std::string kMiss = "7 Error in Searching ", kNothing = "-1 ? ?\n";

std::string FoundIn(int slot) { return "7 inside tableoffset[" + std::to_string(slot) + "]\n"; }

class ActionPropertyTest : public DriverTest {
 protected:
  // Two rows that would answer anything lie before the table.
  ActionPropertyTest() : DriverTest({1, 1, 1, 12, 1}) {
    memset(static_cast<void*>(util_.AtmActionPropertyPtr), 'Y', 2 * sizeof(VoAtmActionProperty));
    util_.AtmActionPropertyPtr += 2;
    util_.MaxAtmProperty = 10;
  }

  // A row: three ATM columns, status, action flag and text, transaction flag, code and value.
  void Put(int slot, const Texts& columns) {
    VoAtmActionProperty& row = util_.AtmActionPropertyPtr[slot];
    SetField(row.InstTerminalGroup, columns[0]);
    SetField(row.AtmLogicalGroup, columns[1]);
    SetField(row.AtmId, columns[2]);
    SetField(row.StatusCode, columns[3]);
    row.ActionFlag = columns[4][0];
    SetField(row.ActionText, columns[5]);
    row.TxnFlag = columns[6][0];
    SetField(row.TxnCode, columns[7]);
    SetField(row.TxnValue, columns[8]);
  }

  // Asks with three ATM keys, statuses and a transaction code. Gives all that a caller gets to see:
  // result, text and value ("?" when not written) and trace.
  std::string Ask(Texts request, int search_type) {
    char text[21] = "?";
    int value = INT_MIN;
    errno = 0;
    const int result = util_.ReadAtmActionProperty(
        request[0].c_str(), request[1].c_str(), request[2].c_str(), request[3].data(),
        std::stoi(request[4]), text, &value, search_type);
    EXPECT_TRUE(result != -1 || errno == ENOENT);
    return std::to_string(result) + " " + text + " " +
           (value == INT_MIN ? "?" : std::to_string(value)) + "\n" + trace_.Take();
  }
};

IN_BOTH_LOCK_MODES(ActionPropertyTest);

TEST_P(ActionPropertyTest, AnswersAndTracesEachKindOfRequest) {
  const char* const rows[] = {"G1 L1 A1 S1 Y first N 010000 1", "G1 L1 A1 S2 Y second Y 01 22",
                              "G1 L1 A1 S3 N none Y 020000 -3x", "G1 L1 * S1 Y late N * 4",
                              "G2 * * STATUS-TEN Y other Y 000005 abc"};
  for (int slot = 0; slot < 5; ++slot) Put(slot, Words(rows[slot]));
  const struct {
    const char* request;
    int search_type;
    int visits;  // of slots, under locks: each scan starts where the one before found its row
    std::string answer;
  } cases[] = {
      {"G1 L1 A1 S1|S2| 0", 0, 6, "1 second ?\n" + FoundIn(1)},
      {"G1 L1 A1 S2|S1| 0", 0, 8, "1 late ?\n" + FoundIn(3)},
      {"G1 L1 A1 |STATUS-TEN+||S1|S2 0", 0, 14, "1 other ?\n" + FoundIn(4)},  // is cut to ten
      {"G1 L1 A1 S3|S1 0", 0, 13,
       kNothing + "7 Error in Reading InstTerminalGroup[G1] AtmLogicalGroup[L1] AtmId[A1] "
                  "StatusBuf[S3|S1] from VoAtmActionProperty Table\n"},
      {"G1 L1 A1 S1|s2| 0", 1, 23, kNothing + kMiss + "StatusMsg" + kInTable},
      {"G1 L1 A1 S2| 19999", 1, 15, "1 ? 22\n" + kMiss + "TxnCode[019999]" + kInTable + FoundIn(1)},
      {"G1 L1 A1 S2| 20000", 1, 7, "1 ? -3\n" + FoundIn(2)},
      {"G1 L1 A1 S3| 7", 1, 24,  // stops at a row for actions
       kNothing + kMiss + "TxnCode[000007]" + kInTable + kMiss + "TxnCode[00]" + kInTable},
      {"G1 L1 A1 STATUS-TEN| 5", 1, 9, "1 ? 0\n" + FoundIn(4)},
      {"GROUP-OF-SIXTEEN+ L1 A1 S1| 0", 2, 20,
       kNothing + kMiss + "InstTerminalGroup[GROUP-OF-SIXTEEN+]" + kInTable +  //
           kMiss + "InstTerminalGroup[*]" + kInTable},
      {"G2 L1 A1 S1| 0", 2, 19,
       "0 ? ?\n" + kMiss + "InstTerminalGroup[G2] AtmLogicalGroup[L1]" + kInTable +  //
           kMiss + "InstTerminalGroup[G2] AtmLogicalGroup[*] AtmId[A1]" + kInTable}};
  for (const auto& c : cases) {
    const CallFault semop("semop");
    EXPECT_EQ(Ask(Words(c.request), c.search_type), c.answer) << c.request;
    EXPECT_EQ(semop.calls(), locked() ? 2 * c.visits : 0) << c.request;
  }
}

// The whole rule said slowly.
std::string SlowAnswer(const std::vector<Texts>& rows, const Texts& request, int search_type) {
  const Texts atm(request.begin(), request.begin() + 3);
  std::string said;
  int slot = SlowWalk(rows, {{atm[0], "*"}, {atm[1], "*"}, {atm[2], "*"}}, kTable, &said);
  if (slot < 0) return kNothing + said;
  if (search_type == 2) return "0 ? ?\n" + said;
  const std::size_t flag = search_type == 0 ? 4 : 6;
  const auto move_on = [&](std::size_t column, const std::string& text, bool flagged) {
    for (auto row = static_cast<std::size_t>(slot); row < rows.size(); ++row) {
      if (rows[row][column] != text || (flagged && rows[row][flag] != "Y")) continue;
      slot = static_cast<int>(row);
      return true;
    }
    return false;
  };
  bool found = false;
  Texts statuses = Words(request[3], '|');
  statuses.pop_back();
  for (const std::string& status : statuses) {
    if (!status.empty() && move_on(3, status, true)) found = true;
  }
  if (!found && search_type == 1) return kNothing + said + kMiss + "StatusMsg" + kInTable;
  if (!found) {
    return kNothing + said + "7 Error in Reading " + Named(atm) + " StatusBuf[" + request[3] +
           "] from " + kTable + " Table\n";
  }
  const std::string code = WithZeros(request[4], 6);
  const Texts tries = {code, code.substr(0, 2), "*"};
  for (std::size_t i = 0; search_type == 1 && !move_on(7, tries[i], false);) {
    said.append(kMiss).append("TxnCode[" + tries[i] + "]").append(kInTable);
    if (++i == tries.size()) return kNothing + said;
  }
  const Texts& row = rows[static_cast<std::size_t>(slot)];
  if (row[flag] != "Y") return kNothing + said;
  return "1 " + (search_type == 0 ? row[5] + " ?" : "? " + row[8]) + "\n" + said + FoundIn(slot);
}

TEST_P(ActionPropertyTest, AgreesWithSlowScansOnRandomTables) {
  RandomCases random;
  const std::vector<Texts> columns = WordsOf(
      {"GROUP-OF-SIXTEEN *", "L *", "A-ATM-000001 B-ATM-000001 *", "A-STATUS-1 B-STATUS-1 S3",
       "Y Y N", "act other", "Y Y y", "010000 000005 01 00 *", "0 7 999"});
  const std::vector<Texts> requests = WordsOf(
      {"GROUP-OF-SIXTEEN H *", "L M *", "A-ATM-000001 B-ATM-000001 C",
       "A-STATUS-1| B-STATUS-1|A-STATUS-1| S3|B-STATUS-1|A-STATUS-1| ||B-STATUS-1|S4| S3|S4 S4",
       "10000 5 19999"});
  std::vector<Texts> rows(10, Words("NOTDEFINED * * - N - N * 0"));
  for (int slot = 0; slot < 10; ++slot) Put(slot, rows[0]);
  int found = 0;
  const int rounds = RandomCases::Rounds(locked() ? 3000 : 100000);
  for (int round = 0; round < rounds; ++round) {
    const int slot = random.Below(10);
    Texts& row = rows[static_cast<std::size_t>(slot)];
    row = random.Row(columns);
    Put(slot, row);
    const Texts request = random.Row(requests);
    const int search_type = random.Below(3);
    const std::string answer = SlowAnswer(rows, request, search_type);
    ASSERT_EQ(Ask(request, search_type), answer) << "round " << round;
    found += answer[0] == '1' ? 1 : 0;
  }
  EXPECT_TRUE(found > rounds / 20 && found < rounds - rounds / 20) << found;
}

}  // namespace
