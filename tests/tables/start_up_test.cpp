#include <sys/msg.h>
#include <sys/resource.h>
#include <sys/shm.h>

#include <filesystem>
#include <map>
#include <regex>

#include "devhost/locate_service.h"
#include "support/call_fault.h"
#include "support/child.h"
#include "support/driver_test.h"
#include "support/words.h"

namespace {

constexpr int kTables = 6;
constexpr SlotCounts kCounts = {4, 6, 5, 8, 3};
const char* const kNames[] = {"ATMMEMORY",
                              "ATMFITMEMORY",
                              "VOSECURITYMEMORY",
                              "ATMPROPERTYMEMORY",
                              "ATMACTIONPROPERTYMEMORY",
                              "ATMSTATUSMEMORY"};
const char* const kTitles[] = {"Device Memory Table", "Device Fit Table",  "VoSecurity",
                               "AtmProperty",         "AtmActionProperty", "AtmStatus"};

// A queue in VoChannelMgr's place, with a thread behind it; gone with the object.
struct OtherChannel {
  OtherChannel(const ServedHome& home, int mode)
      : id(msgget(home.key_base() + 3, IPC_CREAT | IPC_EXCL | mode)) {
    home.Write("cfg/vokernel.cfg", "[CHANNEL]\nORGKEY " + std::to_string(home.key_base() + 1));
  }
  ~OtherChannel() {
    msgctl(id, IPC_RMID, nullptr);
    if (partner.joinable()) partner.join();
  }

  int id;
  std::thread partner;
};

class StartUpTest : public testing::Test {
 protected:
  int Key(int table) const { return home_.key_base() + 10 + table; }

  // Starts up. So many tables must be located; then comes this line and failure, if there is one.
  VoATMUtil ExpectStart(int located, const std::string& error) {
    VoATMUtil util;
    EXPECT_EQ(util.InitVoATMUtil(trace_.debug(), true), error.empty() ? 1 : -1);
    std::string said;
    for (int table = 0; table < located; ++table) {
      said += std::string("6 Memory[ ") + kNames[table] + " ] Located with ChannelKeyId[ " +
              std::to_string(Key(table)) + " ]\n";
    }
    EXPECT_EQ(trace_.Take(), said + error);
    EXPECT_EQ(util.AtmMemoryKeyId, located > 0 ? Key(0) : 0);  // nothing is undone
    return util;
  }

  // Starts up with another value for a key, or without the key.
  VoATMUtil ExpectStartWith(const char* file, const std::string& key, const std::string& value,
                            int located, const std::string& error) {
    const std::string item = key.substr(key.find('#') + 1) + " ";
    home_.Write(file, std::regex_replace(home_.Read(file), std::regex(item + "\\d+"),
                                         value.empty() ? "" : item + value));
    const VoATMUtil util = ExpectStart(located, error);
    WriteStartUpFiles(home_, home_.key_base(), kCounts);
    return util;
  }

  // Takes the replies to this process out of the queue, waiting for so many.
  std::size_t TakeReplies(std::size_t expected) const {
    const int queue = msgget(home_.key_base() + 2, 0);
    LocateMemoryMsg reply;
    std::size_t replies = 0;
    while (msgrcv(queue, &reply, sizeof reply - sizeof(long), getpid(),
                  replies < expected ? 0 : IPC_NOWAIT) > 0) {
      ++replies;
    }
    return replies;
  }

  const ServedHome home_{kCounts};
  TraceRecorder trace_;
};

TEST_F(StartUpTest, LocatesAndAttachesTheTables) {
  VoATMUtil util;
  util.LastAtmIndex = 7;
  for (const bool lock : {true, false}) {
    ASSERT_EQ(util.InitVoATMUtil(trace_.debug(), lock), 1);
    EXPECT_EQ(util.LockFlag, lock);
  }
  const int queue_key = home_.key_base() + 2;
  EXPECT_EQ(std::vector({util.ChannelQKey, util.ChannelQid, util.MaxAtm, util.MaxFit,
                         util.MaxSecurity, util.MaxAtmProperty, util.MaxAtmStatus}),
            std::vector({queue_key, msgget(queue_key, 0), 4, 6, 5, 8, 3}));
  EXPECT_EQ(util.LastAtmIndex, 7);
  const auto check = [&](int table, int key, int shmid, int semid, const void* records) {
    EXPECT_EQ(key, Key(table));
    EXPECT_EQ(shmid, shmget(key, 0, 0));
    EXPECT_EQ(semid, semget(key, 0, 0));
    auto* const seen_otherwise = static_cast<int*>(shmat(shmid, nullptr, 0));
    *seen_otherwise = table;
    EXPECT_EQ(*static_cast<const int*>(records), table);
    shmdt(seen_otherwise);
  };
  const VoATMUtil& u = util;
  check(0, u.AtmMemoryKeyId, u.AtmMemoryShmid, u.AtmMemorySemid, u.AtmMemoryPtr);
  check(1, u.AtmFitKeyId, u.AtmFitShmid, u.AtmFitSemid, u.AtmFitPtr);
  check(2, u.SecurityKeyId, u.SecurityShmid, u.SecuritySemid, u.SecurityPtr);
  check(3, u.AtmPropertyKeyId, u.AtmPropertyShmid, u.AtmPropertySemid, u.AtmPropertyPtr);
  check(4, u.AtmActionPropertyKeyId, u.AtmActionPropertyShmid, u.AtmActionPropertySemid,
        u.AtmActionPropertyPtr);
  check(5, u.AtmStatusKeyId, u.AtmStatusShmid, u.AtmStatusSemid, u.AtmStatusPtr);
}

TEST_F(StartUpTest, NamesTheFileKeyOrValueThatIsWrong) {
  const struct {
    const char* file;
    std::string key;
    int opened, read;  // how many tables are located before
    int VoATMUtil::*count;
  } cases[] = {
      {"cfg/vokernel.cfg", "CHANNEL#ORGKEY", 0, 0, nullptr},  // any value will do
      {"cfg/vobusiness.cfg", "VOBUSINESS#MAXATM", 1, 1, &VoATMUtil::MaxAtm},
      {"cfg/vobusiness.cfg", "VOBUSINESS#MAXFIT", 1, 2, &VoATMUtil::MaxFit},
      {"cfg/vobusiness.cfg", "VOBUSINESS#MAXATMPROPERTY", 1, 2, &VoATMUtil::MaxAtmProperty},
      {"cfg/vobusiness.cfg", "VOBUSINESS#MAXATMSTATUS", 1, 2, &VoATMUtil::MaxAtmStatus},
      {"cfg/vosecurity.cfg", "MAXSECURITY", 3, 3, &VoATMUtil::MaxSecurity}};
  for (const auto& c : cases) {
    const std::string file = "file[ " + home_.path() + "/" + c.file + " ]\n";
    const VoATMUtil util = ExpectStartWith(c.file, c.key, "", c.read,
                                           "2 Error in Searching " + c.key + " from " + file);
    EXPECT_EQ(util.AtmMemoryPtr != nullptr, c.read > 1) << c.key;  // attached in between
    if (c.count != nullptr) {
      for (const char* value : {"-1", "+5", "12a"}) {
        std::string error = "2 Invalid ";
        error.append(c.key).append("[ ").append(value).append(" ] value defined in ").append(file);
        EXPECT_EQ(ExpectStartWith(c.file, c.key, value, c.read, error).*c.count, 0) << value;
      }
      EXPECT_EQ(ExpectStartWith(c.file, c.key, "\"\"", kTables, "").*c.count, 0);
    }
    home_.Remove(c.file);
    ExpectStart(c.opened, "2 Error in opening " + file);
    WriteStartUpFiles(home_, home_.key_base(), kCounts);
  }
  ExpectStartWith("cfg/vokernel.cfg", "CHANNEL#ORGKEY", std::to_string(home_.key_base()) + "x",
                  kTables, "");
  {
    const CallFault fault("msgget", 1, ENOSPC);
    EXPECT_EQ(ExpectStartWith("cfg/vokernel.cfg", "CHANNEL#ORGKEY", "x", 0,
                              "2 Error in Creating VoChannelMgr Queue" + SysErr(ENOSPC))
                  .ChannelQKey,
              2);
  }
  unsetenv("VODIR_HOME");
  ExpectStart(0, "2 Error in opening file[ /cfg/vokernel.cfg ]\n");
  setenv("VODIR_HOME", (std::string(150, '/') + home_.path()).c_str(), 1);
  ExpectStart(0, "2 Error in opening file[ " + std::string(150, '/') + " ]\n");
}

TEST_F(StartUpTest, NamesTheTableThatIsUnknownOrHasNoSetOrSegment) {
  std::map<std::string, int> known;
  for (int table = 0; table < kTables; ++table) {
    OtherChannel channel(home_, 0600);
    channel.partner =
        std::thread([id = channel.id, known] { devhost::LocateService(id, known).Run(); });
    const std::string name = kNames[table];
    ExpectStart(table, "2 Error in Locating Memory[ " + name + " ]\n");
    known[name] = Key(table);
  }
  WriteStartUpFiles(home_, home_.key_base(), kCounts);
  for (int table = kTables - 1; table >= 0; --table) {
    const std::string creating = std::string("2 Error in Creating ") + kTitles[table];
    ASSERT_EQ(semctl(semget(Key(table), 0, 0), 0, IPC_RMID), 0);
    ExpectStart(table + 1, creating + " Semaphore" + SysErr(EINVAL));
    ASSERT_EQ(shmctl(shmget(Key(table), 0, 0), IPC_RMID, nullptr), 0);
    ExpectStart(table + 1, creating + " Shared Memory" + SysErr(EINVAL));
  }
}

TEST_F(StartUpTest, SaysWhyTheQueueCannotBeUsed) {
  LocateMemoryMsg message = {};
  {
    OtherChannel removed(home_, 0600);
    removed.partner = std::thread([&, id = removed.id] {
      msgrcv(id, &message, sizeof message - sizeof(long), 0, 0);
      Eventually(MainThreadSleeps);
      msgctl(id, IPC_RMID, nullptr);
    });
    ExpectStart(0, "2 Error in Receiving Locate Memory Channel Message From VoChannelMgr Queue" +
                       SysErr(EIDRM));
  }
  const LocateMemoryMsg expected = {1, "ATMMEMORY", LOCATE_MEMORY, 0, 0, getpid(), 0, 0};
  EXPECT_EQ(memcmp(&message, &expected, sizeof message), 0);
  {
    const OtherChannel full(home_, 0600);
    while (msgsnd(full.id, &expected, sizeof message - sizeof(long), IPC_NOWAIT) == 0) continue;
    ExpectStart(0, "2 Error in Sending Locate Memory Channel Message to VoChannelMgr Queue" +
                       SysErr(EAGAIN));
  }
  const OtherChannel foreign(home_, 0);
  std::filesystem::permissions(home_.path(), std::filesystem::perms(0755));
  const uid_t self = geteuid();
  ASSERT_EQ(seteuid(self == 0 ? 65534 : self), 0);  // root may open any queue
  ExpectStart(0, "2 Error in Creating VoChannelMgr Queue" + SysErr(EACCES));
  ASSERT_EQ(seteuid(self), 0);
}

// Answers that stand in the queue before the first question.
TEST_F(StartUpTest, TakesItsOwnAnswersAsTheyAre) {
  const std::string receiving =
      "2 Error in Receiving Locate Memory Channel Message From VoChannelMgr Queue";
  const struct {
    int status;
    std::size_t size;
    std::string said;
  } cases[] = {{-1, 128, "2 Error in Locating Memory[ ATMMEMORY ]\n"},
               {0, 129, receiving + SysErr(E2BIG)},
               {0, 0,
                "6 Memory[  ] Located with ChannelKeyId[ 0 ]\n"
                "2 Error in Creating Device Memory Table Shared Memory" +
                    SysErr(EINVAL)}};
  for (const auto& c : cases) {
    const OtherChannel channel(home_, 0600);
    struct {
      LocateMemoryMsg message;
      char more;
    } answer = {{getpid(), "ATMMEMORY", 0, 99, 0, 0, c.status, 0}, 'x'};
    LocateMemoryMsg anothers = {getpid() + 1, "ATMMEMORY", 0, 98, 0, 0, 0, 0};
    EXPECT_EQ(msgsnd(channel.id, &anothers, 128, 0), 0);
    EXPECT_EQ(msgsnd(channel.id, &answer, c.size, 0), 0);
    ExpectStart(0, c.said);
  }
}

TEST_F(StartUpTest, MakesTheQueueForAllWhenThereIsNone) {
  const int key = home_.key_base() + 3;
  home_.Write("cfg/vokernel.cfg", "[CHANNEL]\nORGKEY " + std::to_string(key - 2));
  const CallFault fault("msgsnd", 1, EAGAIN);
  const int queue =
      ExpectStart(0, "2 Error in Sending Locate Memory Channel Message to VoChannelMgr Queue" +
                         SysErr(EAGAIN))
          .ChannelQid;
  msqid_ds made = {};
  EXPECT_EQ(msgctl(queue, IPC_STAT, &made), 0);
  EXPECT_EQ(made.msg_perm.mode, 0666);
  EXPECT_EQ(msgget(key, 0), queue);
  msgctl(queue, IPC_RMID, nullptr);
}

// A reply that was not received stays in the queue.
TEST_F(StartUpTest, SaysWhichSystemCallFailed) {
  const std::string queue = " VoChannelMgr Queue", files = home_.path() + "/cfg/vo";
  const struct {
    const char* function;
    std::string said;          // the nth word of `names` in the place of '*'
    std::vector<int> located;  // before the nth call
    Texts names;
  } cases[] = {
      {"msgget", "Creating" + queue, {0}, {""}},
      {"msgsnd", "Sending Locate Memory Channel Message to" + queue, {0, 1, 2, 3, 4, 5}, {}},
      {"msgrcv", "Receiving Locate Memory Channel Message From" + queue, {0, 1, 2, 3, 4, 5}, {}},
      {"shmget", "Creating * Shared Memory", {1, 2, 3, 4, 5, 6}, {kTitles, kTitles + 6}},
      {"semget", "Creating * Semaphore", {1, 2, 3, 4, 5, 6}, {kTitles, kTitles + 6}},
      {"open",
       "opening file[ " + files + "*.cfg ]\n",
       {0, 1, 3},
       {"kernel", "business", "security"}},
      {"pread",
       "opening file[ " + files + "*.cfg ]\n",
       {0, 1, 3},
       {"kernel", "business", "security"}},
      {"shmat", "", std::vector<int>(6, kTables), {}},
      {"close", "", std::vector<int>(3, kTables), {}}};
  const long open = OpenDescriptors();
  for (const auto& c : cases) {
    const int calls = CallsOf(c.function, [&] { ExpectStart(kTables, ""); });
    EXPECT_EQ(static_cast<std::size_t>(calls), c.located.size()) << c.function;
    for (const int nth : SomeOf(calls)) {
      const auto at = static_cast<std::size_t>(nth) - 1;
      std::string said = c.said.empty() ? "" : "2 Error in " + c.said;
      const std::size_t star = said.find('*');
      if (star != std::string::npos) said.replace(star, 1, c.names[at]);
      for (const int error : ErrorsOf(c.function)) {
        const CallFault fault(c.function, nth, error);
        const bool with_error = !said.empty() && said.back() != '\n';
        ExpectStart(c.located[at], with_error ? said + SysErr(error) : said);
        EXPECT_EQ(OpenDescriptors(), open) << c.function;
        const std::size_t left = c.function == std::string("msgrcv") ? 1 : 0;
        EXPECT_EQ(TakeReplies(left), left) << c.function;
      }
    }
  }
}

TEST(StartUpWithoutRoomTest, KeepsTheErrorAddressAndFindsNothingThere) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's own memory is beyond any limit";
#endif
  const ServedHome home({200, 6, 5, 8, 3});
  TraceRecorder trace;
  VoATMUtil util;
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlimit tight = {pages * 4096 + sizeof(AtmMemoryTable) * 100, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
  const int result = util.InitVoATMUtil(trace.debug(), true);
  ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
  EXPECT_EQ(result, 1) << trace.Take();
  EXPECT_EQ(reinterpret_cast<intptr_t>(util.AtmMemoryPtr), -1);
  EXPECT_EQ(util.VerifyAtmMemory("NOTDEFINED"), -1);
  EXPECT_EQ(util.VerifyAtmFit("NOTDEFINED"), -1);  // the other tables have room
}

}  // namespace
