// The calls that operations make to the switch's configuration reader, among their traces: where a
// file is closed, and where that is left to the reader's destructor. This program brings a reader
// of its own, which stands in for the platform's.
#include <gtest/gtest.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

namespace {

struct Log {
  Log() {
    debug.set_level(7);
    debug.to_callback([](void* log, int, const char*) { static_cast<Log*>(log)->text += "trace "; },
                      this);
    util.dptr = &debug;
  }

  std::string text;
  std::map<std::string, std::string> values;  // by key: field 2, and every other one
  VoDebugUtil debug;
  VoATMUtil util;
};

Log* current = nullptr;

}  // namespace

int VoCfgUtil::cfg_open(const char*) {
  current->text += "open ";
  return 0;
}

int VoCfgUtil::cfg_search(const char* key, char* out, int) {
  current->text += "search ";
  const auto value = current->values.find(key);
  if (value == current->values.end()) return -1;
  strcpy(out, value->second.c_str());
  return 0;
}

int VoCfgUtil::cfg_group_count(const char*) { return -1; }
void VoCfgUtil::cfg_close() { current->text += "close "; }
VoCfgUtil::~VoCfgUtil() { current->text += "end"; }

namespace {

TEST(ReaderCalls, CloseWhereEachOperationDoes) {
  using Call = std::function<int(VoATMUtil&)>;
  char out[151], other[151], notes[] = "A0102";
  OARDetails keys = {};
  const auto dispense = [&](const char* model) -> Call {
    return [&, model](auto& u) { return u.GetDispLogic("L", 1, "", "", "", out, model, ""); };
  };
  const Call txn = [&](auto& u) {
    return u.LoadTxnCode("A", "B", out, out, out, out, out, "", "", "", "");
  };
  const Call good = [&](auto& u) {
    return u.LoadGoodResponseState("A", "B", out, other, "", "", "", "");
  };
  const Call oar = [&](auto& u) { return u.LoadOARTemplate("", "", "", "T", 1, &keys, ""); };
  const Call deposit = [&](auto& u) {
    return u.GetDepositAmount("", "", "", "", notes, out, other);
  };
  const Call receipt = [](auto& u) { return u.isBadResponsePrintNeeded("I"); };
  const Call utc = [](auto& u) { return u.getUTCFlag(); };
  const Call groups = [](auto& u) { return u.GetTotalData("f"); };
  const Call start = [](auto& u) { return u.InitVoATMUtil(u.dptr, false); };
  const struct {
    Call call;
    const char* key;  // the one the file has
    const char* value;
    const char* calls;
  } cases[] = {
      {txn, "", "", "open search close trace end"},
      {good, "", "", "open search trace close end"},
      {good, "GOOD_RESPONSE#A_B", "1", "open search search trace close end"},
      {oar, "", "", "open search trace close end"},
      {dispense("X"), "", "", "open trace end"},
      {dispense("NDC+ATM"), "DISPENCE_LOGIC#L_1", "x", "open search trace end"},
      {dispense("NDC+ATM"), "", "", "open search trace close end"},
      {deposit, "", "", "open trace search close trace end"},
      {deposit, "BNA_MAPPING#01", "nill", "open trace search trace close end"},
      {receipt, "I_BADRSP_RCPT_NEEDED", "No", "open search close end"},
      {utc, "VOBUSINESS#UTCFLAG", "Yes", "open search end"},
      {utc, "", "", "open search trace close end"},
      {groups, "", "", "open trace close end"},
      {start, "", "", "open search trace close end"},
  };
  for (const auto& c : cases) {
    Log log;
    log.values[c.key] = c.value;
    current = &log;
    c.call(log.util);
    EXPECT_EQ(log.text, c.calls) << &c - cases << " " << c.key;
  }
}

// One segment and set for every table, and the answers that VoChannelMgr would give, sent ahead.
class AnsweredChannel {
 public:
  AnsweredChannel()
      : key_(0x10000000 + ((getpid() & 0xffff) << 8)),
        queue_(msgget(key_ + 2, IPC_CREAT | 0666)),
        segment_(shmget(key_, 1, IPC_CREAT | 0666)),
        set_(semget(key_, 1, IPC_CREAT | 0666)) {
    LocateMemoryMsg reply = {};
    reply.MessageType = getpid();
    reply.ChannelKeyId = key_;
    for (int table = 0; table < 3; ++table) {
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

TEST(ReaderCalls, OfStartUpCloseAnInvalidSecurityCountOnly) {
  const std::string located = "open search close trace open search ";
  const std::string rest = "trace search search search close trace open search trace close end";
  const struct {
    const char* invalid;
    std::string calls;
  } cases[] = {{"VOBUSINESS#MAXATM", located + "trace end"}, {"MAXSECURITY", located + rest}};
  for (const auto& c : cases) {
    const AnsweredChannel channel;
    Log log;
    for (const char* key : {"VOBUSINESS#MAXATM", "VOBUSINESS#MAXFIT", "VOBUSINESS#MAXATMPROPERTY",
                            "VOBUSINESS#MAXATMSTATUS", "MAXSECURITY"}) {
      log.values[key] = strcmp(key, c.invalid) == 0 ? "-1" : "0";
    }
    log.values["CHANNEL#ORGKEY"] = channel.key();
    current = &log;
    EXPECT_EQ(log.util.InitVoATMUtil(&log.debug, false), -1);
    EXPECT_EQ(log.text, c.calls) << c.invalid;
  }
}

}  // namespace
