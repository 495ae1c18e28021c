// The command as an operator runs it, on a home that a host serves.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <future>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>

#include "devhost/host.h"
#include "support/child.h"
#include "support/served_home.h"
#include "voatmutil.h"

namespace {

using nlohmann::json;

struct Answer {
  int code;
  std::string data, talk;
};

Answer Shell(const TestHome& home, const std::string& command) {
  const std::string talk = home.path() + "/talk", setting = "VODIR_HOME=" + home.path() + "; ";
  FILE* pipe = popen((setting + command + " 2>" + talk).c_str(), "r");
  std::string data;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) data += static_cast<char>(c);
  const int status = pclose(pipe);
  return {WEXITSTATUS(status), data, home.Read("talk")};
}

Answer Voatm(const TestHome& home, const std::string& arguments) {
  return Shell(home, BUILD_DIRECTORY "/voatm " + arguments);
}

template <typename Record = char>
Record* Attach(int key) {
  return static_cast<Record*>(shmat(shmget(key, 0, 0), nullptr, 0));
}

// How many processes wait for the lock of a file.
int CountWaiting(int file) {
  struct stat status {};
  fstat(file, &status);
  const std::string inode = ":" + std::to_string(status.st_ino) + " ";
  std::ifstream locks("/proc/locks");
  int count = 0;
  for (std::string line; std::getline(locks, line);) {
    count += line.find("-> FLOCK") != line.npos && line.find(inode) != line.npos ? 1 : 0;
  }
  return count;
}

class VoatmTest : public testing::Test {
 protected:
  int Key(int table) const { return home_.key_base() + 10 + table; }
  int Set(int table) const { return semget(Key(table), 0, 0); }

  // A process that takes a slot of the card ranges and keeps it, or waits for it.
  std::unique_ptr<Child> Holder(unsigned short slot) const {
    const int set = Set(1), waiting = semctl(set, slot, GETVAL) == 0 ? 1 : 0;
    auto child = std::make_unique<Child>([=] {
      sembuf take{slot, -2, 0};
      return semop(set, &take, 1) + pause();
    });
    EXPECT_TRUE(Eventually(
        [&] { return semctl(set, slot, GETVAL) == 0 && semctl(set, slot, GETNCNT) == waiting; }));
    return child;
  }

  json FirstLock(int code) const {
    const Answer answer = Voatm(home_, "locks --json");
    EXPECT_EQ(answer.code, code) << answer.talk;
    return json::parse(answer.data)["locks"].at(0);
  }

  ServedHome home_;
};

TEST_F(VoatmTest, RecordsAreShownAsRowsWholeAndAsSeed) {
  auto* fit = Attach<AtmFit>(Key(1));
  fit[0] = {"VISITOR", "A\\\tB\0old", "", "", "", {1, 2, 2, 2, 2}, 'D'};
  shmdt(fit);
  auto* security = Attach<VoSecurity>(Key(2));
  security[1] = {"HOST\0secret"};
  shmdt(security);
  auto* status = Attach<VoAtmStatus>(Key(5));
  memcpy(&status[2], "ELEVEN CHARS", sizeof status[2]);
  shmdt(status);
  const struct {
    const char* arguments;
    int code;
    std::string answer;
  } kCases[] = {
      {"list status", 0,
       "SLOT StatusCode                 StatusKind\n   2 ELEVEN CHAR (unterminated) S\n"},
      {"show ATMFITMEMORY VISITOR", 0, R"(ATMFITMEMORY slot 0
  FitId              "VISITOR"
  MatchKey1          "A\\\x09B" then 00 6f 6c 64 00*5
  MatchKey2          ""
  MatchKey3          ""
  CardPrefix         ""
  Uninterpreted      01 02*4 00*6
  IndirectNextState  "D"
)"},
      {"show security 1", 0,
       "VOSECURITYMEMORY slot 1\n  SecurityId         \"HOST\" (and bytes that are not shown)\n"},
      {"show status 0", 1, "voatm: slot 0 of ATMSTATUSMEMORY is free; --all shows it\n"},
      {"show property --id 8", 1, "voatm: no record 8 in ATMPROPERTYMEMORY\n"},
      {"show fit -- --all", 1, "voatm: no record --all in ATMFITMEMORY\n"},
      {"dump atm", 0, "[]\n"},
      {"locks", 0, "every slot is at rest\n"},
  };
  for (const auto& c : kCases) {
    const Answer answer = Voatm(home_, c.arguments);
    EXPECT_EQ(answer.code, c.code) << c.arguments;
    EXPECT_EQ(c.code == 0 ? answer.data : answer.talk, c.answer) << c.arguments;
    EXPECT_EQ(c.code == 0 ? answer.talk : answer.data, "") << c.arguments;
  }
  EXPECT_EQ(json::parse(Voatm(home_, "list status --json").data), json::parse(R"(
      {"table": "ATMSTATUSMEMORY", "slots": 4, "rows": [{"slot": 2, "free": false,
       "unterminated": ["StatusCode"],
       "record": {"StatusCode": "ELEVEN CHAR", "StatusKind": "S"}}]})"));
}

TEST_F(VoatmTest, ServingWhatWasDumpedGivesTheSameBytes) {
  std::mt19937 random(7);
  const std::string alphabet("\0\0\0\0AZ \"\\\n\x80\xff", 12);
  const TestHome copy;
  const int copy_base = home_.key_base() + 16 * 128;  // far from other homes of this process
  WriteStartUpFiles(copy, copy_base, {});
  std::vector<char*> served;
  for (const devhost::RecordTable& record : devhost::kRecordTables) {
    served.push_back(Attach(Key(static_cast<int>(served.size()))));
    for (std::size_t slot = 0; slot < 3; ++slot) {  // a free slot with remains, then two records
      char* place = served.back() + slot * record.record_size;
      const std::size_t from = slot == 0 ? record.key().offset + record.key().size : 0;
      std::generate(place + from, place + record.record_size,
                    [&] { return alphabet[random() % alphabet.size()]; });
    }
    copy.Write(std::string("tables/") + record.seed_file,
               Voatm(home_, std::string("dump ") + record.name).data);
  }
  const devhost::Host host(copy.path(), false);
  for (std::size_t table = 0; table < served.size(); ++table) {
    char* again = Attach(host.tables()[table].key);
    EXPECT_EQ(memcmp(served[table], again, host.tables()[table].bytes), 0) << table;
    shmdt(again);
    shmdt(served[table]);
  }
}

TEST_F(VoatmTest, ALivingHolderIsRefusedAndADeadOneReleased) {
  auto holder = Holder(2);
  const pid_t pid = semctl(Set(1), 2, GETPID);
  json lock = FirstLock(0);
  lock.erase("command");
  EXPECT_EQ(lock, json({{"table", "ATMFITMEMORY"},
                        {"slot", 2},
                        {"id", "NOTDEFINED"},
                        {"value", 0},
                        {"process", pid},
                        {"state", "alive"},
                        {"waiting", 0},
                        {"stuck", false}}));
  const Answer refused = Voatm(home_, "locks release fit 2");
  EXPECT_EQ(refused.code, 1);
  EXPECT_NE(refused.talk.find("held by process " + std::to_string(pid) + " ("), std::string::npos);
  EXPECT_EQ(semctl(Set(1), 2, GETVAL), 0);

  holder->Kill();
  const auto waiting = Holder(2);
  EXPECT_EQ(FirstLock(1)["state"], "dead");
  EXPECT_EQ(Voatm(home_, "locks release fit 2").code, 0);
  EXPECT_EQ(FirstLock(0)["state"], "alive") << "the process that waited has the slot";
}

// Its number is in use, but by a process that started after the set's last operation.
TEST_F(VoatmTest, AReusedNumberAndAnOddValueAreTold) {
  const int set = Set(1);
  const Child later([=] { return semctl(set, 1, SETVAL, 0) + pause(); });
  ASSERT_TRUE(Eventually([&] { return semctl(set, 1, GETVAL) == 0; }));
  EXPECT_EQ(FirstLock(1)["state"], "reused");
  EXPECT_EQ(Voatm(home_, "locks release fit 1").code, 0);
  semctl(set, 1, SETVAL, 1);
  EXPECT_EQ(FirstLock(1)["value"], 1);
  EXPECT_EQ(Voatm(home_, "locks release fit 1").code, 1);
  EXPECT_EQ(semctl(set, 1, GETVAL), 1);
}

// The eight are held up where one after the other goes on, so that they meet.
TEST_F(VoatmTest, OfEightReleasersOneSucceedsWhoeverWaits) {
  const std::string race = "for i in 1 2 3 4 5 6 7 8; do (" BUILD_DIRECTORY
                           "/voatm locks release fit 1 --json | grep 'd\": true') & done; wait";
  for (const bool is_awaited : {false, true}) {
    Holder(1)->Kill();
    const auto waiting = is_awaited ? Holder(1) : nullptr;
    const int gate = open((home_.path() + "/cfg/vokernel.cfg").c_str(), O_RDONLY | O_CLOEXEC);
    flock(gate, LOCK_EX);
    auto answer = std::async([&] { return Shell(home_, race); });
    EXPECT_TRUE(Eventually([&] { return CountWaiting(gate) == 8; }));
    close(gate);
    EXPECT_EQ(answer.get().data, "  \"released\": true,\n");
    EXPECT_EQ(semctl(Set(1), 1, GETVAL), is_awaited ? 0 : 2);
    semctl(Set(1), 1, SETVAL, 2);
  }
}

TEST_F(VoatmTest, FindingsNameTheFaultAndFailTheCommand) {
  EXPECT_EQ(Voatm(home_, "tables").code, 0);
  WriteStartUpFiles(home_, home_.key_base(), {4, 7, 4, 8, 3});
  shmctl(shmget(Key(2), 0, 0), IPC_RMID, nullptr);
  semctl(Set(3), 0, IPC_RMID);
  semctl(Set(4), 0, IPC_RMID);
  const int small_set = semget(Key(4), 7, IPC_CREAT | 0666);
  const Answer answer = Voatm(home_, "tables");
  semctl(small_set, 0, IPC_RMID);
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.data.find("ATMMEMORY: "), std::string::npos);
  for (const char* const finding :
       {"drivers read behind its end", "there is no segment of VOSECURITYMEMORY",
        "there is no semaphore set of ATMPROPERTYMEMORY", "locking a slot from 7 on fails",
        "drivers do not see the slots from 3"}) {
    EXPECT_NE(answer.data.find(finding), std::string::npos) << finding;
  }
}

TEST(VoatmWithoutChannelManager, SaysSoAndLeavesOneRequestAtMost) {
  const TestHome home;
  const int base = 0x10000000 + 16 * getpid();
  WriteStartUpFiles(home, base, {});
  const char* cause = "VoChannelMgr is not running: there is no queue";
  const auto expect = [&] {
    const Answer answer = Voatm(home, "tables");
    EXPECT_EQ(answer.code, 2);
    EXPECT_EQ(answer.talk.find(std::string("voatm: ") + cause), 0U) << answer.talk;
  };
  expect();
  const int queue = msgget(base + 2, IPC_CREAT | 0666);
  cause = "VoChannelMgr does not answer: waited 2 seconds for ATMMEMORY";
  expect();
  cause = "VoChannelMgr does not answer: requests lie unread";
  expect();
  msqid_ds state{};
  msgctl(queue, IPC_STAT, &state);
  msgctl(queue, IPC_RMID, nullptr);
  EXPECT_EQ(state.msg_qnum, 1U);
}

}  // namespace
