// Tables, records and slots of a home that a host serves.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstring>
#include <future>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>

#include "devhost/host.h"
#include "support/child.h"
#include "support/served_home.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

using nlohmann::json;

template <typename Record = char>
Record* Attach(int key) {
  return static_cast<Record*>(shmat(shmget(key, 0, 0), nullptr, 0));
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

  static json FirstLock(int code) {
    const Answer answer = Voatm("locks --json 2>/dev/null");
    EXPECT_EQ(answer.code, code) << answer.text;
    return json::parse(answer.text)["locks"].at(0);
  }

  ServedHome home_;
};

TEST_F(VoatmTest, RecordsAreShownAsRowsAndWhole) {
  auto* fit = Attach<AtmFit>(Key(1));
  fit[0] = {"VISITOR", "A\\\tB\0old", "", "", "", {1, 2, 2, 2, 2}, 'D'};
  shmdt(fit);
  auto* security = Attach<VoSecurity>(Key(2));
  security[1] = {"HOST\0secret"};
  shmdt(security);
  auto* status = Attach<VoAtmStatus>(Key(5));
  memcpy(&status[2], "ELEVEN CHARS", sizeof status[2]);
  shmdt(status);
  ExpectOutputs({
      {"show ATMFITMEMORY VISITOR | grep -v '\"\"'", R"(
ATMFITMEMORY slot 0
  FitId              "VISITOR"
  MatchKey1          "A\\\x09B" then 00 6f 6c 64 00*5
  Uninterpreted      01 02*4 00*6
  IndirectNextState  "D"
=> 0
)"},
      {"show security 1 | tail -n 1",
       "\n  SecurityId         \"HOST\" (and bytes that are not shown)\n=> 0\n"},
      {"list status | tail -n 1", "\n   2 ELEVEN CHAR (unterminated) S\n=> 0\n"},
      {"list status --json | tr -d ' \\n'",
       R"(
{"table":"ATMSTATUSMEMORY","slots":4,"rows":[{"slot":2,"free":false,"unterminated":["StatusCode"],)"
       R"("record":{"StatusCode":"ELEVENCHAR","StatusKind":"S"}}]}=> 0
)"},
      {"show status 0 >/dev/null",
       "\nvoatm: slot 0 of ATMSTATUSMEMORY is free; --all shows it\n=> 1\n"},
      {"show fit -- --all", "\nvoatm: no record --all in ATMFITMEMORY\n=> 1\n"},
      {"locks 2>/dev/null", "\nevery slot is at rest\n=> 0\n"},
  });
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
    const std::string dump = std::string("dump ") + record.name + " --home " + home_.path();
    copy.Write(std::string("tables/") + record.seed_file, Voatm(dump).text);
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
  const std::string process = std::to_string(semctl(Set(1), 2, GETPID));
  json lock = FirstLock(0);
  lock.erase("command");
  EXPECT_EQ(lock, json::parse(R"({"table": "ATMFITMEMORY", "slot": 2, "id": "NOTDEFINED",
      "value": 0, "state": "alive", "waiting": 0, "stuck": false, "process": )" +
                              process + "}"));
  const Answer refused = Voatm("locks release fit 2");
  EXPECT_EQ(refused.code, 1);
  EXPECT_NE(refused.text.find("held by process " + process + " ("), std::string::npos);
  EXPECT_EQ(semctl(Set(1), 2, GETVAL), 0);

  holder->Kill();
  const auto waiting = Holder(2);
  EXPECT_EQ(FirstLock(1)["state"], "dead");
  EXPECT_EQ(Voatm("locks release fit 2").code, 0);
  EXPECT_EQ(FirstLock(0)["state"], "alive") << "the process that waited has the slot";
}

// Its number is in use, but by a process that started after the set's last operation.
TEST_F(VoatmTest, AReusedNumberAndAnOddValueAreTold) {
  const int set = Set(1);
  const Child later([=] { return semctl(set, 1, SETVAL, 0) + pause(); });
  ASSERT_TRUE(Eventually([&] { return semctl(set, 1, GETVAL) == 0; }));
  EXPECT_EQ(FirstLock(1)["state"], "reused");
  EXPECT_EQ(Voatm("locks release fit 1").code, 0);
  semctl(set, 1, SETVAL, 1);
  EXPECT_EQ(FirstLock(1)["value"], 1);
  EXPECT_EQ(Voatm("locks release fit 1").code, 1);
  EXPECT_EQ(semctl(set, 1, GETVAL), 1);
}

// The eight are held up where one after the other goes on, so that they meet.
TEST_F(VoatmTest, OfEightReleasersOneSucceedsWhoeverWaits) {
  const std::string race = "for i in 1 2 3 4 5 6 7 8; do (" BUILD_DIRECTORY
                           "/voatm locks release fit 1 --json | grep 'd\": true') & done; wait";
  const std::string file = home_.path() + "/cfg/vokernel.cfg";
  const std::string count = "grep -c -- '-> FLOCK.*:'$(stat -c %i " + file + ")' ' /proc/locks";
  for (const bool is_awaited : {false, true}) {
    Holder(1)->Kill();
    const auto waiting = is_awaited ? Holder(1) : nullptr;
    const int gate = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    flock(gate, LOCK_EX);
    auto answer = std::async([&] { return Shell(race); });
    EXPECT_TRUE(Eventually([&] { return Shell(count).text == "8\n"; }));
    close(gate);
    EXPECT_EQ(answer.get().text, "  \"released\": true,\n");
    EXPECT_EQ(semctl(Set(1), 1, GETVAL), is_awaited ? 0 : 2);
    semctl(Set(1), 1, SETVAL, 2);
  }
}

TEST_F(VoatmTest, FindingsNameTheFaultAndFailTheCommand) {
  EXPECT_EQ(Voatm("tables").code, 0);
  WriteStartUpFiles(home_, home_.key_base(), {4, 7, 4, 8, 3});
  shmctl(shmget(Key(2), 0, 0), IPC_RMID, nullptr);
  semctl(Set(3), 0, IPC_RMID);
  semctl(Set(4), 0, IPC_RMID);
  const int small_set = semget(Key(4), 7, IPC_CREAT | 0666);
  const Answer answer = Voatm("tables");
  semctl(small_set, 0, IPC_RMID);
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.text.find("ATMMEMORY: "), std::string::npos);
  for (const char* const finding :
       {"drivers read behind its end", "there is no segment of VOSECURITYMEMORY",
        "there is no semaphore set of ATMPROPERTYMEMORY", "locking a slot from 7 on fails",
        "drivers do not see the slots from 3"}) {
    EXPECT_NE(answer.text.find(finding), std::string::npos) << finding;
  }
}

TEST(VoatmWithoutChannelManager, SaysSoAndLeavesOneRequestAtMost) {
  const TestHome home;
  const int base = 0x10000000 + 16 * getpid();
  WriteStartUpFiles(home, base, {});
  int queue = -1;
  for (const char* const cause :
       {"is not running: there is no queue", "does not answer: waited 2 seconds for ATMMEMORY",
        "does not answer: requests lie unread"}) {
    const Answer answer = Voatm("tables");
    EXPECT_EQ(answer.code, 2);
    EXPECT_EQ(answer.text.find(std::string("voatm: VoChannelMgr ") + cause), 0U) << answer.text;
    queue = msgget(base + 2, IPC_CREAT | 0666);
  }
  msqid_ds state{};
  msgctl(queue, IPC_STAT, &state);
  msgctl(queue, IPC_RMID, nullptr);
  EXPECT_EQ(state.msg_qnum, 1U);
}

}  // namespace
