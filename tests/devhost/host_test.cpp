#include "devhost/host.h"

#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <csignal>
#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/child.h"
#include "support/file_test.h"
#include "support/test_keys.h"
#include "support/words.h"

namespace devhost {
namespace {

class HostTest : public FileTest {
 protected:
  HostTest() { WriteStartUpFiles(home_, origin_, {2, 16, 0, 3, 2}); }
  ~HostTest() override {  // removes what a failed test may have left
    for (const auto& [kind, id] : Objects()) RemoveIpc(kind, id);
  }

  std::vector<std::pair<IpcKind, int>> Objects() const {
    std::vector<std::pair<IpcKind, int>> objects;
    for (const IpcKind kind : {IpcKind::kQueue, IpcKind::kSegment, IpcKind::kSemaphoreSet}) {
      for (int key = origin_; key < origin_ + 16; ++key) {
        const int id = FindIpc(kind, key);
        if (id >= 0) objects.emplace_back(kind, id);
      }
    }
    return objects;
  }

  // Creates a host and counts its objects, or traces why it failed.
  int Create(bool replace, const std::function<void()>& serve_until = nullptr) {
    try {
      Host host(home_.path(), {replace});
      if (serve_until) host.Serve(serve_until);
      return static_cast<int>(Objects().size());
    } catch (const std::runtime_error& error) {
      trace.debug()->trace("%s", error.what());
      return -1;
    }
  }

  const int origin_ = NextKeyBase();
};

TEST_F(HostTest, CreatesFilledTables) {
  home_.Write("tables/atm_status.json", R"([{"Slot": 1, "StatusCode": "A", "StatusKind": "S"}])");
  const Host host(home_.path());
  EXPECT_EQ(Objects().size(), 13U);
  EXPECT_EQ(host.plan().tables[5].image.rows, 1);
  void* records = shmat(FindIpc(IpcKind::kSegment, origin_ + 15), nullptr, SHM_RDONLY);
  EXPECT_EQ(std::string(static_cast<char*>(records), 24),
            std::string("NOTDEFINED\0\0A\0\0\0\0\0\0\0\0\0\0S", 24));
  shmdt(records);
  int key = origin_ + 10;
  for (const int slots : {2, 16, 1, 3, 3, 2}) {  // a table without slots still has an object
    const int set = FindIpc(IpcKind::kSemaphoreSet, key++);
    for (int slot = 0; slot < slots; ++slot) EXPECT_EQ(semctl(set, slot, GETVAL), 2);
    EXPECT_EQ(semctl(set, slots, GETVAL), -1) << "key " << key;
  }
}

TEST_F(HostTest, NeedsWholeSettings) {
  const auto create_with = [this](const std::string& given) {
    const Texts file_and_text = Words(given, ':');
    WriteStartUpFiles(home_, origin_, {});
    home_.Write("cfg/" + file_and_text[0], file_and_text[1]);
    return Create(false);
  };
  ExpectDone(R"(
vokernel.cfg:CHANNEL#ORGKEY ""
  => -1 <- not a whole number: CHANNEL#ORGKEY "" in ~/cfg/vokernel.cfg:1>
vokernel.cfg:CHANNEL#ORGKEY 2147483633
  => -1 <- larger than 2147483632: CHANNEL#ORGKEY "2147483633" in ~/cfg/vokernel.cfg:1>
vobusiness.cfg:VOBUSINESS#MAXATM
  => -1 <- no readable value for VOBUSINESS#MAXATM in ~/cfg/vobusiness.cfg>
vosecurity.cfg:MAXSECURITY -1
  => -1 <- not a whole number: MAXSECURITY "-1" in ~/cfg/vosecurity.cfg:1>
vosecurity.cfg:MAXSECURITY 99999999999999999999
  => -1 <- larger than 2147483647: MAXSECURITY "99999999999999999999" in ~/cfg/vosecurity.cfg:1>
vosecurity.cfg:MAXSECURITY "" => 13
)",
             create_with);
  home_.Remove("cfg/vosecurity.cfg");
  EXPECT_EQ(Done(Create(false)),
            "-1 <- No such file or directory: cannot open ~/cfg/vosecurity.cfg>");
  home_.Write("cfg/vosecurity.cfg", "MAXSECURITY 2147483647");
  EXPECT_EQ(Done(Create(false)).find("-1 <- MAXSECURITY 2147483647 is more than a sema"), 0U);
}

TEST_F(HostTest, ReplacesExistingObjectsOnlyWhenTold) {
  const int queue = msgget(origin_ + 2, IPC_CREAT | 0600);
  const int set = semget(origin_ + 13, 1, IPC_CREAT | 0600);
  EXPECT_EQ(Done(Create(false)),
            "-1 <- objects exist already and were not to be replaced:> <  " +
                DescribeIpc(IpcKind::kQueue, "VoChannelMgr", origin_ + 2) + ", id " +
                std::to_string(queue) + "> <  " +
                DescribeIpc(IpcKind::kSemaphoreSet, "ATMPROPERTYMEMORY", origin_ + 13) + ", id " +
                std::to_string(set) + ">");
  EXPECT_EQ(DescribeIpc(IpcKind::kSegment, "A", 255), "segment of A, key 255 (0x000000ff)");

  home_.Write("tables/atm_fit.json", "[{}]");  // nothing is removed for a home that is not good
  EXPECT_EQ(Done(Create(true)), "-1 <- no key text FitId: ~/tables/atm_fit.json:1, row 1>");
  EXPECT_EQ(Objects().size(), 2U);

  home_.Remove("tables");
  EXPECT_EQ(Done(Create(true)), "13");
  EXPECT_TRUE(Objects().empty());
}

TEST_F(HostTest, RemovesItsObjectsHoweverItEnds) {
  const auto served_until = [this](const std::function<void()>& end) {
    Child([&] { return home_.Write("done", Done(Create(false, end))), 0; }).Wait();
    EXPECT_TRUE(Objects().empty());
    return home_.Read("done");
  };
  for (const int signal : {SIGTERM, SIGINT, SIGQUIT, SIGHUP}) {
    EXPECT_EQ(served_until([=] { kill(getpid(), signal); }), "12") << signal;
  }
  const auto remove_queue = [this] { RemoveIpc(IpcKind::kQueue, Objects()[0].second); };
  EXPECT_EQ(served_until(remove_queue).find("-1 <- somebody else removed the queue of VoCh"), 0U);
}

TEST_F(HostTest, LeavesAnIgnoredHangupToItself) {
  Child child([this] {
    (void)std::signal(SIGHUP, SIG_IGN);
    const Host host(home_.path());
    kill(getpid(), SIGHUP);
    sigset_t pending;
    return sigpending(&pending) + sigismember(&pending, SIGHUP);
  });
  EXPECT_EQ(child.Wait(), 0) << "it waits to stop the host";
}

// A host that answers in a process of its own.
class LocateTest : public testing::Test {
 protected:
  // Sends a locate request as a process and leaves the reply in the queue.
  void Request(const std::string& name, int process) const {
    LocateMemoryMsg message{};
    message.MessageType = 1;
    name.copy(message.MemoryName, sizeof message.MemoryName);
    message.RequestCode = LOCATE_MEMORY;
    message.ProcessId = process;
    ASSERT_EQ(msgsnd(queue_, &message, kBody, IPC_NOWAIT), 0);
  }

  // Returns the key of a table, or -1.
  int Locate(const std::string& name) const {
    Request(name, getpid());
    LocateMemoryMsg reply{};
    EXPECT_EQ(msgrcv(queue_, &reply, kBody, getpid(), 0), static_cast<ssize_t>(kBody));
    EXPECT_EQ(strncmp(reply.MemoryName, name.c_str(), sizeof reply.MemoryName), 0) << name;
    return reply.LocateStatus == 0 ? reply.ChannelKeyId : reply.LocateStatus;
  }

  static constexpr std::size_t kBody = sizeof(LocateMemoryMsg) - sizeof(long);

  const ServedHome home_;
  const int queue_ = FindIpc(IpcKind::kQueue, home_.key_base() + 2);
};

TEST_F(LocateTest, AnswersRequests) {
  int key = home_.key_base() + 10;
  for (const auto& table : records::kRecordTables)
    EXPECT_EQ(Locate(table.name), key++) << table.name;
  const Texts unknown = Words(" ATMMEMOR ATMMEMORY2 atmmemory " + std::string(104, 'A'));
  for (const std::string& name : unknown) EXPECT_EQ(Locate(name), -1) << name;
}

// Messages that are no requests and replies that nobody fetches neither stop the host nor fill the
// queue for those who wait.
TEST_F(LocateTest, SurvivesAFullQueue) {
  const long junk[26] = {1};  // a message of the requests' type
  for (const std::size_t size : {0U, 127U, 200U}) ASSERT_EQ(msgsnd(queue_, junk, size, 0), 0);
  for (int i = 0; i < 20; ++i) Request("ATMMEMORY", 1);  // whose replies would be requests
  EXPECT_EQ(Locate("ATMMEMORY"), home_.key_base() + 10);
  msqid_ds state{};
  ASSERT_EQ(msgctl(queue_, IPC_STAT, &state), 0);
  ASSERT_EQ(state.msg_qnum, 0U) << "left behind, or going round";

  state.msg_qbytes = 2 * kBody;
  ASSERT_EQ(msgctl(queue_, IPC_SET, &state), 0);
  for (int i = 0; i < 5; ++i) {
    Child([this] { return Request("ATMMEMORY", getpid()), 0; }).Wait();
    EXPECT_EQ(Locate("ATMFITMEMORY"), home_.key_base() + 11);
  }
}

}  // namespace
}  // namespace devhost
