// The calls that operations make to the switch's configuration reader, among their traces: where a
// file is closed, and where that is left to the reader's destructor. This program brings a
// reader, a clock and a trace of its own, which stand in for the platform's.
#include <gtest/gtest.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/test_keys.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodatetimeutil.h"
#include "vodebugutil.h"

namespace {

// A letter a call: o for open, s for search, g for a group's count, c for close, t for trace, and
// the reader's end as a full stop.
struct Log {
  // The entries that each file has, key and fields, with ';' between them; and a part of the path
  // of those that do not open.
  explicit Log(std::string file_entries, const char* missing_file = "\n")
      : entries(std::move(file_entries)), missing(missing_file) {
    util.dptr = &debug;
  }

  std::string entries;
  const char* missing;
  std::string calls;
  VoDebugUtil debug;
  VoATMUtil util;
};

Log* current = nullptr;
int times_asked = 0;

}  // namespace

int VoCfgUtil::cfg_open(const char* path) {
  current->calls += 'o';
  return strstr(path, current->missing) == nullptr ? 0 : -1;
}

int VoCfgUtil::cfg_search(const char* key, char* out, int field) {
  current->calls += 's';
  std::istringstream entries(current->entries);
  for (std::string entry; std::getline(entries, entry, ';');) {
    std::istringstream fields(entry);
    std::string text;
    if (!(fields >> text) || text != key) continue;
    for (int read = 1; read < field; ++read) fields >> text;
    if (fields) strcpy(out, text.c_str());
    return fields ? 0 : -1;
  }
  return -1;
}

int VoCfgUtil::cfg_group_count(const char*) {
  current->calls += 'g';
  return current->entries.empty() ? -1 : 1;
}

void VoCfgUtil::cfg_close() { current->calls += 'c'; }
VoCfgUtil::~VoCfgUtil() { current->calls += '.'; }

// A trace may do to errno what it likes.
static void Trace() {
  current->calls += 't';
  errno = EIO;
}
void VoDebugUtil::trace(int, const char*, ...) { Trace(); }
void VoDebugUtil::trace(const char*, ...) { Trace(); }

// Midnight lies between the first question and the second.
int VoDateTimeUtil::getSysTime() { return times_asked++ == 0 ? 235959 : 0; }
int VoDateTimeUtil::getSysDate() { return times_asked++ == 0 ? 261121 : 261122; }

namespace {

using Util = VoATMUtil;

// An operation, and its calls for what may stand in the file.
struct Operation {
  int (*call)(Util& util, char* out);
  std::vector<std::pair<const char*, const char*>> cases;
};

int Deposit(Util& u, const char* notes, char* out) {
  return u.GetDepositAmount("", "", "", "", std::string(notes).data(), out, out + 50);
}

int Dispense(Util& u, const char* model, char* out) {
  return u.GetDispLogic("L", 1, "", "", "", out, model, "");
}

const Operation kOperations[] = {
    {[](Util& u, char* o) { return u.LoadTxnCode("A", "B", o, o, o, o, o, "", "", "", ""); },
     {{"", "osct"},
      {"A_B 1", "ossct"},
      {"A_B 1 2", "osssct"},
      {"A_B 1 2 3", "ossssct"},
      {"A_B 1 2 3 4", "osssssct"},
      {"A_B 1 2 3 4 5", "osssssc"}}},
    {[](Util& u, char* o) { return u.LoadGoodResponseState("A", "B", o, o, "", "", "", ""); },
     {{"", "ostc"}, {"GOOD_RESPONSE#A_B 1", "osstc"}, {"GOOD_RESPONSE#A_B 1 2", "osstc"}}},
    {[](Util& u, char* o) { return u.LoadBadResponseState("A", "B", o, o, "", "", "", ""); },
     {{"", "ostc"}, {"BAD_RESPONSE#A_B 1", "osstc"}, {"BAD_RESPONSE#A_B 1 2", "ossc"}}},
    {[](Util& u, char*) {
       OARDetails keys = {};
       return u.LoadOARTemplate("", "", "", "T", 1, &keys, "");
     },
     {{"", "ostc"},
      {"OAR#VAR#A $VAR", "osstc"},
      {"OAR#VAR#A $VAR 1;OAR#VAR#B x 1;OAR#VAR#C x 1;OAR#VAR#D x 1;"
       "OAR#VAR#F x 1;OAR#VAR#G x 1;OAR#VAR#H x 1;OAR#VAR#I x 1",
       "ossssssssssssssssc"}}},
    {[](Util& u, char* o) {
       OARDetails keys = {};
       return u.PackKeyDetails("", "", "", "T", 1, o, &keys, "");
     },
     {{"", "ostc"},
      {"OAR#CONTROL#DISPLAYFLAG 1", "osstc"},
      {"OAR#CONTROL#DISPLAYFLAG 1;OAR#CONTROL#NUMERICKEYS 1", "ossstc"},
      {"OAR#CONTROL#DISPLAYFLAG 1;OAR#CONTROL#NUMERICKEYS 1;OAR#CONTROL#CANCEL 1", "ossstc"}}},
    {[](Util& u, char* o) { return u.GetOARTimeOut("", "", "", "T", 1, o, ""); },
     {{"", "ostc"}, {"OAR#OAR_TIMEOUT 1", "osc"}}},
    {[](Util& u, char*) { return u.GetTotalVar("", "", "", "T", 1, ""); },
     {{"", "ostc"}, {"OAR#VAR#TOTALVAR 1", "osc"}}},
    {[](Util& u, char* o) { return u.GetEmptyScreen("", "", "", o, ""); },
     {{"", "ostc"}, {"ATM_RESERVEDSCREEN#EMPTYSCR 1", "osc"}}},
    {[](Util& u, char*) { return u.GetTotalData("f"); }, {{"", "ogtc"}, {"[OAR]", "ogc"}}},
    {[](Util& u, char* o) { return Dispense(u, "X", o); }, {{"", "ot"}}},
    {[](Util& u, char* o) { return Dispense(u, "NDC+ATM", o); },
     {{"", "ostc"}, {"DISPENCE_LOGIC#L_1 x", "ost"}, {"DISPENCE_LOGIC#L_1 1 2 3 4", "osssstc"}}},
    {[](Util& u, char* o) { return Deposit(u, "A0102", o); },
     {{"", "otsct"},
      {"BNA_MAPPING#01 nill", "otstc"},
      {"BNA_MAPPING#01 0", "otstc"},
      {"BNA_MAPPING#01 5", "otsttc"}}},
    {[](Util& u, char* o) { return Deposit(u, "A01020304050607080", o); }, {{"", "ot"}}},
    {[](Util& u, char*) { return u.isBadResponsePrintNeeded("I"); },
     {{"", "osc"}, {"I_BADRSP_RCPT_NEEDED No", "osc"}, {"I_BADRSP_RCPT_NEEDED Yes", "osc"}}},
    {[](Util& u, char*) { return u.getUTCFlag(); },
     {{"", "ostc"}, {"VOBUSINESS#UTCFLAG No", "os"}, {"VOBUSINESS#UTCFLAG Yes", "os"}}},
    {[](Util& u, char* o) { return u.getCardlessTrack2Data("K", o); },
     {{"", "oststc"}, {"OPKEYMAP#DEFAULT 1", "ostsc"}, {"OPKEYMAP#K 1", "osc"}}}};

TEST(ReaderCalls, CloseWhereEachOperationDoes) {
  char out[151];
  for (const Operation& operation : kOperations) {
    const auto calls = [&](Log log) {
      current = &log;
      operation.call(log.util, out);
      return log.calls;
    };
    for (const auto& [entries, expected] : operation.cases) {
      EXPECT_EQ(calls(Log(entries)), std::string(expected) + ".")
          << entries << " of operation " << &operation - kOperations;
    }
    EXPECT_EQ(calls(Log("", "")).find('c'), std::string::npos) << operation.cases[0].first;
  }
}

// One segment and set for every table, and the answers that VoChannelMgr would give, sent ahead:
// so many tables are known.
class AnsweredChannel {
 public:
  explicit AnsweredChannel(int known)
      : key_(NextKeyBase()),
        queue_(msgget(key_ + 2, IPC_CREAT | 0666)),
        segment_(shmget(key_, 1, IPC_CREAT | 0666)),
        set_(semget(key_, 1, IPC_CREAT | 0666)) {
    LocateMemoryMsg reply = {};
    reply.MessageType = getpid();
    reply.ChannelKeyId = key_;
    for (int table = 0; table < 6; ++table) {
      if (table == known) reply.LocateStatus = -1;
      EXPECT_EQ(msgsnd(queue_, &reply, sizeof reply - sizeof(long), 0), 0);
    }
  }
  ~AnsweredChannel() {
    msgctl(queue_, IPC_RMID, nullptr);
    shmctl(segment_, IPC_RMID, nullptr);
    semctl(set_, 0, IPC_RMID);
  }
  AnsweredChannel(const AnsweredChannel&) = delete;
  AnsweredChannel& operator=(const AnsweredChannel&) = delete;

  std::string key() const { return std::to_string(key_); }

 private:
  int key_;
  int queue_;
  int segment_;
  int set_;
};

TEST(ReaderCalls, OfStartUpCloseWhatMissesAKeyButNotWhatHasAnInvalidOne) {
  const std::string channel = "osct", business = channel + "ost", security = business + "sssct";
  const struct {
    std::string left_out, invalid;  // keys
    std::string calls;
    const char* missing_file = "\n";
    int known = 6;
  } cases[] = {{"", "", security + "oscttt."},
               {"", "", "ot.", "vokernel"},
               {"CHANNEL#ORGKEY", "", "ostc."},
               {"", "", "osct.", "\n", 0},
               {"", "", channel + "ot.", "vobusiness"},
               {"VOBUSINESS#MAXATM", "", channel + "ostc."},
               {"", "VOBUSINESS#MAXATM", channel + "ost."},
               {"", "", business + ".", "\n", 1},
               {"VOBUSINESS#MAXFIT", "", business + "stc."},
               {"", "VOBUSINESS#MAXFIT", business + "st."},
               {"VOBUSINESS#MAXATMPROPERTY", "", business + "sstc."},
               {"", "VOBUSINESS#MAXATMPROPERTY", business + "sst."},
               {"VOBUSINESS#MAXATMSTATUS", "", business + "ssstc."},
               {"", "VOBUSINESS#MAXATMSTATUS", business + "ssst."},
               {"", "", security + "ot.", "vosecurity"},
               {"MAXSECURITY", "", security + "ostc."},
               {"", "MAXSECURITY", security + "ostc."}};
  for (const auto& c : cases) {
    const AnsweredChannel answered(c.known);
    std::string entries;
    for (const std::string key :
         {"CHANNEL#ORGKEY", "VOBUSINESS#MAXATM", "VOBUSINESS#MAXFIT", "VOBUSINESS#MAXATMPROPERTY",
          "VOBUSINESS#MAXATMSTATUS", "MAXSECURITY"}) {
      const std::string value = key == "CHANNEL#ORGKEY" ? answered.key() : "0";
      if (key != c.left_out) entries += key + " " + (key == c.invalid ? "-1" : value) + ";";
    }
    Log log(entries, c.missing_file);
    current = &log;
    log.util.InitVoATMUtil(&log.debug, false);
    EXPECT_EQ(log.calls, c.calls) << c.left_out << c.invalid << c.missing_file << c.known;
  }
}

TEST(ClockCalls, TakeTheTimeBeforeTheDate) {
  VoATMUtil util;
  VoAtmMgrQMsg msg;
  AtmStatusPayload status;
  AtmLogPayload log;
  times_asked = 0;
  util.PackAtmStatusMsg("", "", "", &msg);
  memcpy(&status, msg.MsgBuffer, sizeof status);
  times_asked = 0;
  util.PackAtmLogMsg("", "", 'F', &msg);
  memcpy(&log, msg.MsgBuffer, sizeof log);
  EXPECT_EQ(std::string(status.Date) + status.Time, "261122235959");
  EXPECT_EQ(std::string(log.Date) + log.Time, "261122235959");
}

TEST(TraceCalls, LeaveTheErrorOfASemaphoreCallInErrno) {
  Log log("");
  current = &log;
  AtmMemoryTable atm = {"X", {}, {}};
  log.util.AtmMemoryPtr = &atm;
  log.util.MaxAtm = 1;
  log.util.AtmMemorySemid = -1;
  log.util.LockFlag = true;
  EXPECT_EQ(log.util.VerifyAtmMemory("X"), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(log.calls, "t");
}

}  // namespace
