// What voatm status finds wrong in what a host serves.
#include <sched.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "devhost/system_call.h"
#include "support/child.h"
#include "support/served_home.h"
#include "support/watched.h"
#include "tools/voatm/ask/dead_rows.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

using devhost::SemaphoreArgument;

class StatusTest : public testing::Test {
 protected:
  StatusTest() { setenv("XDG_STATE_HOME", home_.path().c_str(), 1); }
  ~StatusTest() override { unsetenv("XDG_STATE_HOME"); }

  int Key(int table) const { return home_.key_base() + 10 + table; }

  template <typename Record>
  void Put(int table, const std::vector<Record>& rows) const {
    void* const records = shmat(shmget(Key(table), 0, 0), nullptr, 0);
    memcpy(records, rows.data(), rows.size() * sizeof(Record));
    shmdt(records);
  }

  static Json Ask(const std::string& arguments = "") { return VoatmJson("status " + arguments); }

  static std::string Found(const std::string& arguments = "") {
    std::string found;
    const Json status = Ask(arguments);
    for (const Json& finding : status["findings"]) {
      found +=
          finding["where"].get<std::string>() + ": " + finding["what"].get<std::string>() + "\n";
    }
    return found;
  }

  ServedHome home_;
};

VoAtmProperty Property(const char* inst, const char* group, const char* atm, const char* txn,
                       const char* resp, int currency, char first_switch = 'Y') {
  VoAtmProperty row{};
  strcpy(row.InstTerminalGroup, inst);
  strcpy(row.AtmLogicalGroup, group);
  strcpy(row.AtmId, atm);
  strcpy(row.TxnCode, txn);
  strcpy(row.RespCode, resp);
  row.CurrencyCode = currency;
  VoATMUtil().resetAtmProperty(&row);
  row.PropertySwitch1 = first_switch;
  return row;
}

VoAtmActionProperty Action(const char* atm, const char* status, const char* txn = "*") {
  VoAtmActionProperty row{};
  strcpy(row.InstTerminalGroup, "I");
  strcpy(row.AtmLogicalGroup, "G");
  strcpy(row.AtmId, atm);
  strcpy(row.StatusCode, status);
  strcpy(row.TxnCode, txn);
  row.ActionFlag = row.TxnFlag = 'Y';
  return row;
}

TEST_F(StatusTest, SaysInOneLineThatAllIsWell) {
  Put(3, std::vector{Property("I", "G", "A", "010000", "000", 978),
                     Property("I", "G", "A", "*", "*", 0), Property("I", "G", "*", "01", "*", 0),
                     Property("I", "G", "*", "*", "*", 0), Property("I", "*", "*", "*", "*", 0),
                     Property("*", "*", "*", "*", "*", 0, 'N')});
  Put(4, std::vector{Action("A", "X", "010000"), Action("A", "X", "01"), Action("*", "X")});
  Put(1, std::vector{AtmFit{"ONE", "K", "", "", "4567FFFFFF", {}, 'C'},
                     AtmFit{"ALL", "K", "", "", "FFFFFFFFFF", {}, 'D'}});
  const Output status = Voatm("status");
  EXPECT_EQ(status.code, 0);
  EXPECT_EQ(status.text.substr(19), " " + home_.path() + ": all is well\n");
  EXPECT_EQ(Ask()["sound"], true);
  const std::string status_alone = BUILD_DIRECTORY "/voatm status >/dev/null";
  EXPECT_EQ(Shell("unset XDG_STATE_HOME; HOME=" + home_.path() + " " + status_alone).code, 0);
  EXPECT_TRUE(std::filesystem::exists(home_.path() + "/.local/state/voatm"));
  home_.Write("empty/here/none", "");
  home_.Remove("empty/here/none");
  EXPECT_EQ(
      Shell("cd " + home_.path() + "/empty/here; unset XDG_STATE_HOME HOME; " + status_alone).code,
      0);
  EXPECT_TRUE(std::filesystem::is_empty(home_.path() + "/empty/here")) << "nothing is kept";
}

TEST_F(StatusTest, JudgesRecordsByAskingTheLibrary) {
  AtmMemoryTable atm{};
  strcpy(atm.AtmId, "ATM1");
  AtmMemoryTable nameless = atm;
  nameless.AtmId[0] = '\0';
  Put(0, std::vector{atm, nameless, atm});
  Put(1, std::vector{AtmFit{"TWO", "K", "", "", "45", {}, 'C'},
                     AtmFit{"BAD", "K", "", "", "45A7FFFFFF", {}, 'C'},
                     AtmFit{"ALL", "K", "", "", "ffffffffff", {}, 'C'},
                     AtmFit{"LAST", "K", "", "", "FFFFFFFFFF", {}, 'C'}});
  VoAtmProperty endless = Property("I", "H", "*", "*", "*", 0);
  memset(endless.AtmLogicalGroup, 'H', sizeof endless.AtmLogicalGroup);
  Put(3, std::vector{Property("I", "G", "A", "010000", "000", 978),
                     Property("I", "G", "A", "010000", "000", 978),
                     Property("I", "G", "B", "10000", "000", 978),
                     Property("I", "G", "C", "*", "1", 978), Property("I", "*", "*", "*", "*", 0),
                     Property("*", "*", "*", "*", "*", 0, '1'), endless});
  VoAtmActionProperty foreign = Action("*", "V");
  strcpy(foreign.InstTerminalGroup, "J");
  VoAtmActionProperty deleted = Action("C", "U"), value = Action("D", "T", "020000");
  strcpy(deleted.InstTerminalGroup, "NOTDEFINED");
  value.ActionFlag = 'N';
  Put(4, std::vector{Action("A", "X"), Action("B", "Y"), Action("B", "Y"), Action("C", "Z", "1"),
                     Action("*", "W"), foreign, deleted, value});
  Put(5, std::vector<VoAtmStatus>(4));
  EXPECT_EQ(Voatm("status >/dev/null").code, 1);
  EXPECT_EQ(Found(), R"(ATMMEMORY slot 1: its id is empty
ATMMEMORY slot 2: a lower slot has its id
ATMFITMEMORY slot 0, 1: no card matches its CardPrefix
ATMFITMEMORY slot 3: no card is answered with it
ATMPROPERTYMEMORY slot 5: PropertySwitch1 is neither Y nor N
ATMPROPERTYMEMORY slot 6: AtmLogicalGroup does not end
ATMPROPERTYMEMORY slot 0: its group has no row for all, but its institution has
ATMPROPERTYMEMORY slot 1, 6: no request is answered with it
ATMPROPERTYMEMORY slot 2: no request can equal its TxnCode
ATMPROPERTYMEMORY slot 3: no request can equal its RespCode
ATMACTIONPROPERTYMEMORY slot 1, 3, 5, 7: requests of an ATM above are answered with it
ATMACTIONPROPERTYMEMORY slot 2: no request of its ATM with its status alone is answered with it
ATMACTIONPROPERTYMEMORY slot 3: no request can equal its TxnCode
ATMACTIONPROPERTYMEMORY slot 6: a free slot answers
ATMSTATUSMEMORY: all its bytes are 0
)");
}

TEST_F(StatusTest, AnAtmWithRowsOfItsOwnNeedsOneForTheRest) {
  Put(3, std::vector{Property("I", "G", "A", "010000", "*", 0),
                     Property("I", "G", "*", "*", "*", 0), Property("*", "*", "*", "*", "*", 0)});
  Put(1, std::vector{AtmFit{"ALL", "K", "", "", "FFFFFFFFFF", {}, 'D'},
                     AtmFit{"NOTDEFINED", "K", "", "", "FFFFFFFFFF", {}, 'D'}});
  EXPECT_EQ(
      Found(),
      "ATMPROPERTYMEMORY slot 0: its ATM has no row for all, but its group has\n"
      "ATMPROPERTYMEMORY slot 0: its institution has no row for all, but there is one for any\n");
}

// Rows that are reached by other keys, ATMs and codes than their own.
TEST_F(StatusTest, RowsThatSomebodyReachesAreNotDead) {
  std::vector<AtmFit> ranges = {AtmFit{"ALL", "J", "", "", "FFFFFFFFFF", {}, 'C'}};
  for (const char* prefix : {"0", "1", "2", "3", "4"}) {
    ranges.push_back(AtmFit{"", "J", "", "", "", {}, 'D'});
    strcpy(ranges.back().FitId, prefix);
    memset(ranges.back().CardPrefix, 'F', 10);
    ranges.back().CardPrefix[0] = *prefix;
  }
  Put(1, ranges);
  VoAtmActionProperty wide = Action("*", "Q"), other = Action("B", "R");
  strcpy(wide.AtmLogicalGroup, "*");
  strcpy(other.AtmLogicalGroup, "H");
  Put(4, std::vector{wide, other, wide});
  EXPECT_EQ(Found(),
            "ATMACTIONPROPERTYMEMORY slot 1: requests of an ATM above are answered with it\n");
}

// The findings of a table of these rows, a line each.
template <typename Record>
std::string Dead(const records::RecordTable& table, const std::vector<Record>& records) {
  Rows rows{&table, std::vector<char>(records.size() * sizeof(Record))};
  memcpy(rows.bytes.data(), records.data(), rows.bytes.size());
  std::string found;
  for (const Finding& each : FindDeadRows(&rows)) found += each.where + ": " + each.what + "\n";
  return found;
}

TEST(DeadRows, ARangeIsDeadWhenOthersTakeAllItsCards) {
  std::vector<AtmFit> ranges;
  for (const char first : std::string("0123456789F")) {
    ranges.push_back(AtmFit{"R", "K", "", "", "4FFFFFFFFF", {}, 'D'});
    ranges.back().CardPrefix[1] = first;
  }
  EXPECT_EQ(Dead(records::kRecordTables[1], ranges),
            "ATMFITMEMORY slot 10: no card is answered with it\n");
}

TEST_F(StatusTest, NamesTheFirstOfManyRows) {
  std::vector rows(8, Property("*", "*", "*", "*", "*", 0, '1'));
  Put(3, rows);
  EXPECT_EQ(Found().substr(0, 52), "ATMPROPERTYMEMORY slot 0, 1, 2, 3, 4, 5 and 2 more: ");
  rows[6].PropertySwitch1 = rows[7].PropertySwitch1 = 'Y';
  Put(3, rows);
  EXPECT_EQ(Found().substr(0, 41), "ATMPROPERTYMEMORY slot 0, 1, 2, 3, 4, 5: ");
}

TEST_F(StatusTest, KnowsWhoIsAttachedAndWhoToWhatWasRemoved) {
  void* const records = shmat(shmget(Key(1), 0, 0), nullptr, 0);
  const Json before = Ask()["tables"][1];
  EXPECT_EQ(before["segment"]["attached"], 1);
  EXPECT_EQ(before["processes"][0]["process"], getpid());
  EXPECT_NE(Voatm("status --all").text.find(std::to_string(getpid()) + " "), std::string::npos);
  shmctl(shmget(Key(1), 0, 0), IPC_RMID, nullptr);
  EXPECT_EQ(Ask()["findings"].size(), 2U) << "the table is gone, and has a user";
  const int again = shmget(Key(1), 6 * sizeof(AtmFit), IPC_CREAT | 0600);
  const Json status = Ask();
  EXPECT_EQ(status["tables"][1]["processes"].size(), 0U);
  EXPECT_EQ(status["findings"][0]["since"].get<std::string>().find("process " +
                                                                   std::to_string(getpid()) + " ("),
            0U);
  EXPECT_EQ(status["findings"][1]["what"], "all its bytes are 0");
  EXPECT_EQ(status["findings"].size(), 2U);
  shmdt(records);
  shmctl(again, IPC_RMID, nullptr);
}

TEST_F(StatusTest, ASegmentOfAnotherNamespaceIsNoUsersOfThisOne) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a namespace";
  const Child elsewhere([&] {
    if (unshare(CLONE_NEWIPC) != 0) return 1;
    shmat(shmget(Key(1), 1, IPC_CREAT | 0600), nullptr, 0);
    return pause();
  });
  EXPECT_TRUE(Eventually([&] {
    std::ifstream maps("/proc/" + std::to_string(elsewhere.id()) + "/maps");
    const std::string all(std::istreambuf_iterator<char>(maps), {});
    return all.find("/SYSV") != std::string::npos;
  }));
  EXPECT_EQ(Found(), "");
  EXPECT_EQ(Ask()["tables"][1]["processes"].size(), 0U);
}

TEST_F(StatusTest, LooksWithoutVoChannelMgr) {
  const int nobodys = home_.key_base() + 4;  // whose queue does not exist
  WriteStartUpFiles(home_, nobodys, {});
  EXPECT_EQ(Ask()["tables"].size(), 0U) << "no keys are known";
  EXPECT_NE(Voatm("list fit").text.find("VoChannelMgr is not running"), std::string::npos);
  EXPECT_EQ(Ask("--key fit=" + std::to_string(Key(1)))["tables"].size(), 1U);
  WriteStartUpFiles(home_, home_.key_base(), {});
  EXPECT_EQ(Found(), "");
  WriteStartUpFiles(home_, nobodys, {});
  semctl(semget(Key(3), 0, 0), 0, IPC_RMID);
  const Json status = Ask("--key atm=" + std::to_string(Key(5)));
  const Json& findings = status["findings"];
  EXPECT_EQ(findings.size(), 5U) << findings;  // of a key that two tables have, three
  EXPECT_EQ(findings[0]["since"].get<std::string>().find("looked with the keys of its last"), 0U);
  EXPECT_EQ(status["tables"][0]["key"], Key(5));
  EXPECT_EQ(Voatm("status --key atm").code, 2);
  EXPECT_EQ(Voatm("status --key atm=1 atm=2").code, 2);
  EXPECT_EQ(Voatm("list fit 2>/dev/null").code, 0) << "with the key that is remembered";
  EXPECT_EQ(Voatm("status --home none").code, 2);
}

TEST_F(StatusTest, OneBrokenPartHidesNoOther) {
  home_.Write("cfg/vosecurity.cfg", "MAXSECURITY many\n");
  home_.Write("cfg/atm/CARDLESS_TXN.cfg", "[OPKEYMAP]\nA \"B\n");
  semctl(semget(Key(5), 0, 0), 1, SETVAL, SemaphoreArgument{7});
  const Json findings = Ask()["findings"];
  ASSERT_EQ(findings.size(), 3U) << findings;
  EXPECT_NE(findings[0]["what"].get<std::string>().find("MAXSECURITY"), std::string::npos);
  EXPECT_EQ(findings[1]["next"], "voatm locks release status 1 --reset");
  EXPECT_EQ(findings[1]["drivers"], "may hold it together and tear its record");
  EXPECT_EQ(findings[2]["next"], "voatm check --home " + home_.path());
  const std::string errors = findings[2]["what"];
  EXPECT_EQ(errors.find("the quote that begins here"), 0U) << errors;
  EXPECT_NE(errors.find(", and 1 more error"), std::string::npos) << errors;
  const std::string text = Voatm("status").text;
  EXPECT_NE(text.find("\nits value is 7, not 0 or 2\n  where    slot 1 of ATMSTATUSMEMORY"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n  next     voatm locks release status 1 --reset\n"), std::string::npos);
}

TEST_F(StatusTest, AWatchMarksWhatIsNewAndLeavesTheTerminalAsItWas) {
  const int set = semget(Key(5), 0, 0);
  Watched watch(BUILD_DIRECTORY "/voatm status --watch 86400");
  const auto frame = [&](const char* end) { return watch.Until(end); };
  EXPECT_NE(frame("all is well").find("\033[?1049h"), std::string::npos);
  semctl(set, 1, SETVAL, SemaphoreArgument{7});
  watch.Press(' ');
  EXPECT_NE(frame("its value is 7").find("NEW"), std::string::npos);
  watch.Press(' ');
  EXPECT_NE(frame(": 1 finding"), "");
  EXPECT_EQ(frame("its value is 7").find("NEW"), std::string::npos);
  semctl(set, 1, SETVAL, SemaphoreArgument{2});
  watch.Press(' ');
  EXPECT_NE(frame("all is well"), "");
  EXPECT_FALSE(watch.EchoesLines());
  watch.Press('q');
  EXPECT_NE(frame("\033[?1049l"), "");
  EXPECT_EQ(watch.Code(), 0);
  EXPECT_TRUE(watch.EchoesLines());

  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    Watched ended(BUILD_DIRECTORY "/voatm status --watch 1");
    EXPECT_NE(ended.Until("all is well"), "");
    kill(ended.process(), signal);
    EXPECT_NE(ended.Until("\033[?1049l"), "") << signal;
    EXPECT_EQ(ended.Code(), 0) << signal;
    EXPECT_TRUE(ended.EchoesLines()) << signal;
  }
}

}  // namespace
