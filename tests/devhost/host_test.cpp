#include "devhost/host.h"

#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "temporary_home.h"
#include "voatmutil.h"

namespace {

using devhost::FindIpc;
using devhost::Host;
using devhost::IpcKind;

class HostTest : public testing::Test {
 protected:
  HostTest() {
    WriteKernel(std::to_string(origin_));
    WriteBusiness("16");
    home_.Write("cfg/vosecurity.cfg", "MAXSECURITY 0\n");
  }
  ~HostTest() override {  // what a failed test may have left
    for (const IpcKind kind : kKinds) {
      for (int key = origin_; key < origin_ + 16; ++key) {
        const int id = FindIpc(kind, key);
        if (id >= 0) devhost::RemoveIpc(kind, id);
      }
    }
  }

  void WriteKernel(const std::string& key) const {
    home_.Write("cfg/vokernel.cfg", "[CHANNEL]\nORGKEY \"" + key + "\"\n");
  }
  void WriteBusiness(const std::string& max_fit) const {
    home_.Write("cfg/vobusiness.cfg", "[VOBUSINESS]\nMAXATM 2\nMAXFIT " + max_fit +
                                          "\nMAXATMPROPERTY 3\nMAXATMSTATUS 2\n");
  }

  int CountObjects() const {
    int count = 0;
    for (const IpcKind kind : kKinds) {
      for (int key = origin_; key < origin_ + 16; ++key) count += FindIpc(kind, key) >= 0 ? 1 : 0;
    }
    return count;
  }

  std::string ErrorOf(bool replace) const {
    try {
      const Host host(home_.path(), replace);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  // Sends a locate request as `process` and leaves the reply in the queue.
  void Request(const std::string& name, int process) const {
    LocateMemoryMsg message{};
    message.MessageType = 1;
    name.copy(message.MemoryName, sizeof message.MemoryName);
    message.RequestCode = LOCATE_MEMORY;
    message.ProcessId = process;
    const int queue = FindIpc(IpcKind::kQueue, origin_ + 2);
    ASSERT_EQ(msgsnd(queue, &message, kBody, IPC_NOWAIT), 0) << std::strerror(errno);
  }

  LocateMemoryMsg Locate(const std::string& name) const {
    Request(name, getpid());
    LocateMemoryMsg reply{};
    const int queue = FindIpc(IpcKind::kQueue, origin_ + 2);
    EXPECT_EQ(msgrcv(queue, &reply, kBody, getpid(), 0), static_cast<ssize_t>(kBody));
    return reply;
  }

  static constexpr IpcKind kKinds[] = {IpcKind::kQueue, IpcKind::kSegment, IpcKind::kSemaphoreSet};
  static constexpr std::size_t kBody = sizeof(LocateMemoryMsg) - sizeof(long);
  static constexpr int kAllObjects = 13;

  const int origin_ = 0x40000000 | (getpid() << 8);
  TemporaryHome home_;
};

// Serves a host on a thread of its own while it exists.
class Serving {
 public:
  explicit Serving(Host* host) : host_(host) {
    std::promise<void> ready;
    thread_ = std::thread([&] { host_->Serve([&] { ready.set_value(); }); });
    ready.get_future().wait();
  }
  ~Serving() {
    host_->Stop();
    thread_.join();
  }
  Serving(const Serving&) = delete;
  Serving& operator=(const Serving&) = delete;

 private:
  Host* host_;
  std::thread thread_;
};

TEST_F(HostTest, CreatesFilledTablesAndRemovesThem) {
  home_.Write("tables/atm_status.json", R"([{"Slot": 1, "StatusCode": "A", "StatusKind": "S"}])");
  {
    const Host host(home_.path(), false);
    EXPECT_EQ(CountObjects(), kAllObjects);
    const Host::Table& status = host.tables()[5];
    EXPECT_EQ(status.key, origin_ + 15);
    EXPECT_EQ(status.rows, 1);
    void* address = shmat(FindIpc(IpcKind::kSegment, status.key), nullptr, SHM_RDONLY);
    const auto* records = static_cast<const VoAtmStatus*>(address);
    EXPECT_STREQ(records[0].StatusCode, "NOTDEFINED");
    EXPECT_EQ(std::string(records[1].StatusCode, sizeof(VoAtmStatus)),
              std::string("A\0\0\0\0\0\0\0\0\0\0S", sizeof(VoAtmStatus)));
    shmdt(address);
    const int slots[] = {2, 16, 1, 3, 3, 2};  // a table without slots still has an object
    for (int table = 0; table < 6; ++table) {
      const int set = FindIpc(IpcKind::kSemaphoreSet, origin_ + 10 + table);
      for (int slot = 0; slot < slots[table]; ++slot) EXPECT_EQ(semctl(set, slot, GETVAL), 2);
      EXPECT_EQ(semctl(set, slots[table], GETVAL), -1) << table;
    }
  }
  EXPECT_EQ(CountObjects(), 0);
}

TEST_F(HostTest, NeedsWholeSettings) {
  const std::string cfg = home_.path() + "/cfg/";
  const std::string origin = std::to_string(origin_);
  struct Case {
    std::string key;
    std::string max_fit;
    std::string error;
  };
  const Case cases[] = {
      {"71a", "1", "not a whole number: CHANNEL#ORGKEY \"71a\" in " + cfg + "vokernel.cfg:2"},
      {"", "1", "not a whole number: CHANNEL#ORGKEY \"\" in " + cfg + "vokernel.cfg:2"},
      {"2147483633", "1",
       "larger than 2147483632: CHANNEL#ORGKEY \"2147483633\" in " + cfg + "vokernel.cfg:2"},
      {origin, "", "no readable value for VOBUSINESS#MAXFIT in " + cfg + "vobusiness.cfg"},
      {origin, "-1", "not a whole number: VOBUSINESS#MAXFIT \"-1\" in " + cfg + "vobusiness.cfg:3"},
      {origin, "99999999999999999999",
       "larger than 2147483647: VOBUSINESS#MAXFIT \"99999999999999999999\" in " + cfg +
           "vobusiness.cfg:3"},
      {origin, "2147483647", "VOBUSINESS#MAXFIT 2147483647 is more than a semaphore set may have"},
  };
  for (const Case& row : cases) {
    WriteKernel(row.key);
    WriteBusiness(row.max_fit);
    EXPECT_EQ(ErrorOf(false).substr(0, row.error.size()), row.error);
  }
  std::filesystem::remove(cfg + "vokernel.cfg");
  EXPECT_EQ(ErrorOf(false), "cannot open " + cfg + "vokernel.cfg");
  EXPECT_EQ(CountObjects(), 0);
}

TEST_F(HostTest, ReplacesExistingObjectsOnlyWhenTold) {
  const int queue = msgget(origin_ + 2, IPC_CREAT | 0600);
  const int set = semget(origin_ + 13, 1, IPC_CREAT | 0600);
  const std::string listed = ErrorOf(false);
  EXPECT_NE(listed.find("queue of VoChannelMgr, key " + std::to_string(origin_ + 2)),
            std::string::npos)
      << listed;
  EXPECT_NE(listed.find("id " + std::to_string(queue) + "\n  semaphore set of ATMPROPERTYMEMORY"),
            std::string::npos)
      << listed;
  EXPECT_NE(listed.find("id " + std::to_string(set)), std::string::npos) << listed;

  home_.Write("tables/atm_fit.json", "[{}]");  // nothing is removed for a home that is not good
  EXPECT_NE(ErrorOf(true).find("no key text FitId"), std::string::npos);
  EXPECT_EQ(CountObjects(), 2);

  home_.Write("tables/atm_fit.json", "[]");
  {
    const Host host(home_.path(), true);
    EXPECT_EQ(CountObjects(), kAllObjects);
    EXPECT_NE(FindIpc(IpcKind::kQueue, origin_ + 2), queue);
  }
  EXPECT_EQ(CountObjects(), 0);
}

TEST_F(HostTest, AnswersLocateRequests) {
  Host host(home_.path(), false);
  const Serving serving(&host);
  int key = origin_ + 10;
  for (const Host::Table& table : host.tables()) {
    const LocateMemoryMsg reply = Locate(table.record->name);
    EXPECT_STREQ(reply.MemoryName, table.record->name);
    EXPECT_EQ(reply.LocateStatus, 0) << table.record->name;
    EXPECT_EQ(reply.ChannelKeyId, key++) << table.record->name;
  }
  const std::string unknown[] = {"", "ATMMEMOR", "ATMMEMORY2", "atmmemory", std::string(104, 'A')};
  for (const std::string& name : unknown) EXPECT_EQ(Locate(name).LocateStatus, -1) << name;
}

// Messages that are no requests and replies that nobody fetches neither stop the host nor fill the
// queue for those who wait.
TEST_F(HostTest, SurvivesAFullQueue) {
  Host host(home_.path(), false);
  const int queue = FindIpc(IpcKind::kQueue, origin_ + 2);
  const Serving serving(&host);
  EXPECT_EQ(Locate("ATMFITMEMORY").ChannelKeyId, origin_ + 11);
  const struct {
    long type;
    char text[200];
  } junk = {1, {}};
  for (const std::size_t size : {0U, 127U, 200U}) ASSERT_EQ(msgsnd(queue, &junk, size, 0), 0);
  Request("ATMMEMORY", 1);
  EXPECT_EQ(Locate("ATMMEMORY").ChannelKeyId, origin_ + 10);
  msqid_ds limits{};
  for (int i = 0; i < 100; ++i) {  // nothing was left behind, nor goes round
    ASSERT_EQ(msgctl(queue, IPC_STAT, &limits), 0);
    ASSERT_EQ(limits.msg_qnum, 0U);
  }

  limits.msg_qbytes = 2 * kBody;
  ASSERT_EQ(msgctl(queue, IPC_SET, &limits), 0);
  for (int i = 0; i < 5; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      Request("ATMMEMORY", getpid());
      _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(Locate("ATMFITMEMORY").ChannelKeyId, origin_ + 11);
  }
}

// Serves in a child process, applies `end` once it is ready, and returns its exit status.
int ServeInChild(const std::string& home, const std::function<void(pid_t)>& end) {
  int ready[2];
  if (pipe(ready) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    int status = 0;
    try {
      Host(home, false).Serve([&] { close(ready[1]); });
    } catch (const std::runtime_error& error) {
      status = std::strstr(error.what(), "somebody else removed the queue") != nullptr ? 2 : 3;
    }
    _exit(status);
  }
  close(ready[1]);
  char nothing = 0;
  EXPECT_EQ(read(ready[0], &nothing, 1), 0);
  close(ready[0]);
  end(child);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(HostTest, CleansUpHoweverItIsEnded) {
  struct Case {
    const char* end;
    std::function<void(pid_t)> apply;
    int status;
  };
  const Case cases[] = {
      {"SIGTERM", [](pid_t child) { kill(child, SIGTERM); }, 0},
      {"SIGINT", [](pid_t child) { kill(child, SIGINT); }, 0},
      {"queue removed",
       [&](pid_t) { devhost::RemoveIpc(IpcKind::kQueue, FindIpc(IpcKind::kQueue, origin_ + 2)); },
       2},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(ServeInChild(home_.path(), row.apply), row.status) << row.end;
    EXPECT_EQ(CountObjects(), 0) << row.end;
  }
}

}  // namespace
