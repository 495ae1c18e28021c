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
  char out[151], other[151], a_deposit[] = "A0102";
  OARDetails keys = {};
  const struct {
    const char* name;
    std::map<std::string, std::string> values;
    std::function<int(VoATMUtil&)> call;
    const char* calls;
  } cases[] = {
      {"transaction code",
       {},
       [&](VoATMUtil& u) {
         return u.LoadTxnCode("A", "B", out, out, out, out, out, "", "", "", "");
       },
       "open search close trace end"},
      {"good response",
       {},
       [&](VoATMUtil& u) { return u.LoadGoodResponseState("A", "B", out, other, "", "", "", ""); },
       "open search trace close end"},
      {"good response found",
       {{"GOOD_RESPONSE#A_B", "1"}},
       [&](VoATMUtil& u) { return u.LoadGoodResponseState("A", "B", out, other, "", "", "", ""); },
       "open search search trace close end"},
      {"template",
       {},
       [&](VoATMUtil& u) { return u.LoadOARTemplate("", "", "", "T", 1, &keys, ""); },
       "open search trace close end"},
      {"model",
       {},
       [&](VoATMUtil& u) { return u.GetDispLogic("L", 1, "", "", "", out, "X", ""); },
       "open trace end"},
      {"note count",
       {{"DISPENCE_LOGIC#L_1", "x"}},
       [&](VoATMUtil& u) { return u.GetDispLogic("L", 1, "", "", "", out, "NDC+ATM", ""); },
       "open search trace end"},
      {"no note count",
       {},
       [&](VoATMUtil& u) { return u.GetDispLogic("L", 1, "", "", "", out, "NDC+ATM", ""); },
       "open search trace close end"},
      {"note type",
       {},
       [&](VoATMUtil& u) { return u.GetDepositAmount("", "", "", "", a_deposit, out, other); },
       "open trace search close trace end"},
      {"note type not to occur",
       {{"BNA_MAPPING#01", "nill"}},
       [&](VoATMUtil& u) { return u.GetDepositAmount("", "", "", "", a_deposit, out, other); },
       "open trace search trace close end"},
      {"receipt flag",
       {{"I_BADRSP_RCPT_NEEDED", "No"}},
       [&](VoATMUtil& u) { return u.isBadResponsePrintNeeded("I"); },
       "open search close end"},
      {"UTC flag",
       {{"VOBUSINESS#UTCFLAG", "Yes"}},
       [&](VoATMUtil& u) { return u.getUTCFlag(); },
       "open search end"},
      {"no UTC flag",
       {},
       [&](VoATMUtil& u) { return u.getUTCFlag(); },
       "open search trace close end"},
      {"groups", {}, [&](VoATMUtil& u) { return u.GetTotalData("f"); }, "open trace close end"},
      {"start-up",
       {},
       [&](VoATMUtil& u) { return u.InitVoATMUtil(u.dptr, false); },
       "open search trace close end"},
  };
  for (const auto& c : cases) {
    Log log;
    log.values = c.values;
    current = &log;
    c.call(log.util);
    EXPECT_EQ(log.text, c.calls) << c.name;
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
