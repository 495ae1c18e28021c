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
#include "devhost/seed.h"
#include "support/child.h"
#include "support/served_home.h"
#include "tools/voatm/look/process.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

using Json = nlohmann::json;

class VoatmTest : public testing::Test {
 protected:
  int Key(int table) const { return home_.key_base() + 10 + table; }
  char* Attach(int key) const { return static_cast<char*>(shmat(shmget(key, 0, 0), nullptr, 0)); }

  // A process that takes slot 2 of the card ranges and keeps it, or waits for it.
  std::unique_ptr<Child> Holder() const {
    const int set = set_, waiting = semctl(set, 2, GETVAL) == 0 ? 1 : 0;
    auto child = std::make_unique<Child>([=] {
      sembuf take{2, -2, 0};
      return semop(set, &take, 1) + pause();
    });
    EXPECT_TRUE(Eventually(
        [&] { return semctl(set, 2, GETVAL) == 0 && semctl(set, 2, GETNCNT) == waiting; }));
    return child;
  }

  ServedHome home_;
  const int set_ = semget(Key(1), 0, 0);
};

TEST_F(VoatmTest, RecordsAreShownAsRowsAndWhole) {
  const AtmFit fit = {"VISITOR", "A\\\tB\0old", "", "", "", {1, 2, 2, 2, 2}, 'D'};
  memcpy(Attach(Key(1)), &fit, sizeof fit);
  memcpy(Attach(Key(2)) + sizeof(VoSecurity), "HOST\0secret", 12);
  memcpy(Attach(Key(5)) + 2 * sizeof(VoAtmStatus), "ELEVEN CHARS", sizeof(VoAtmStatus));
  ExpectTranscript(Transcript("records"));
}

TEST_F(VoatmTest, ServingWhatWasDumpedGivesTheSameBytes) {
  std::mt19937 random(7);
  const std::string alphabet("\0\0\0\0AZ \"\\\n\x80\xff", 12);
  const TestHome copy;
  WriteStartUpFiles(copy, home_.key_base() + 16 * 128, {});  // far from others of this process
  std::vector<char*> served;
  for (const records::RecordTable& record : records::kRecordTables) {
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
  const devhost::Host host(copy.path());
  for (std::size_t table = 0; table < served.size(); ++table) {
    const devhost::PlannedTable& again = host.plan().tables[table];
    EXPECT_EQ(memcmp(served[table], Attach(again.key), again.Segment().size), 0) << table;
  }
}

TEST_F(VoatmTest, ATableThatIsCutShortIsNotShownAsWhole) {
  memcpy(Attach(Key(5)), "A", 2);
  WriteStartUpFiles(home_, home_.key_base(), {4, 6, 4, 8, 9});
  const Answer list = Voatm("list status --json 2>/dev/null"), dump = Voatm("dump status");
  EXPECT_EQ(list.code, 1);
  const Json json = Json::parse(list.text);
  EXPECT_EQ(json["slots"], 9);
  EXPECT_EQ(json["complete"], false);
  EXPECT_EQ(json["rows"].size(), 1U);
  EXPECT_EQ(dump.code, 1);
  home_.Write("tables/atm_status.json", dump.text);
  EXPECT_THROW(devhost::ReadSeed(records::kRecordTables[5],
                                 devhost::SeedPath(records::kRecordTables[5], home_.path())),
               devhost::SeedError);
  std::vector<int> codes;
  for (const char* wanted : {"0", "--id A", "8", "9"}) {
    codes.push_back(Voatm(std::string("show status ") + wanted).code);
  }
  EXPECT_EQ(codes, (std::vector<int>{0, 1, 2, 1}));
}

// The limit is lifted where the program does not even start below it: with a sanitizer.
TEST(VoatmList, KeepsNoneOfManyRecords) {
  const ServedHome home({1000});
  const int segment = shmget(home.key_base() + 10, 0, 0);
  void* const records = shmat(segment, nullptr, 0);
  memset(records, 'A', 1000 * sizeof(AtmMemoryTable));
  shmdt(records);
  const std::string voatm = BUILD_DIRECTORY "/voatm";
  EXPECT_EQ(
      Shell("ulimit -Sd 16384; " + voatm + " --version >/dev/null 2>&1 || ulimit -Sd unlimited; " +
            voatm + " list atm --json | wc -l")
          .text,
      "1002\n");
}

TEST_F(VoatmTest, ALivingHolderIsRefusedAndADeadOneReleased) {
  auto holder = Holder();
  const std::string process = std::to_string(semctl(set_, 2, GETPID));
  const std::string lock = "process " + process + " (", held = "\"value\":0,\"process\":" + process;
  const std::string json = Voatm("locks --json | tr -d ' \\n'").text;
  EXPECT_EQ(json.find(R"({"complete":true,"locks":[{"table":"ATMFITMEMORY","slot":2,"id":)"
                      R"("NOTDEFINED",)" +
                      held + R"(,"state":"alive","command":)"),
            0U)
      << json;
  EXPECT_NE(json.find(R"(,"waiting":0,"stuck":false}]})"), std::string::npos) << json;
  const Answer refused = Voatm("locks release fit 2");
  EXPECT_EQ(refused.code, 1);
  EXPECT_NE(refused.text.find("is held by " + lock), std::string::npos) << refused.text;
  EXPECT_EQ(semctl(set_, 2, GETVAL), 0);

  holder->Kill();
  const auto waiting = Holder();
  ExpectTranscript("$ locks | tail -n 1 | grep -o '[0-9]* dead.*'\n" + process +
                   " dead        1 \n=> 0\n$ locks >/dev/null\n=> 1\n$ locks release fit 2\n" +
                   "released slot 2 of ATMFITMEMORY: its holder, process " + process +
                   ", is dead\n=> 0\n$ locks >/dev/null\n=> 0\n");
  EXPECT_EQ(semctl(set_, 2, GETVAL), 0) << "the process that waited has the slot";
}

TEST(Process, AReusedNumberIsToldByItsStart) {
  EXPECT_EQ(LookAt(getpid(), time(nullptr)).state, ProcessState::kAlive);
  EXPECT_EQ(LookAt(getpid(), 0).state, ProcessState::kReused);
}

// They are none that an operation of this system has left.
TEST_F(VoatmTest, ValuesThatWereSetAreNotReleased) {
  semctl(set_, 1, SETVAL, 0);
  semctl(set_, 3, SETVAL, 1);
  ExpectTranscript(R"($ locks --json | grep -e state -e value -e stuck | tr -d ' \n' | fold -w 57
"value":0,"state":"alive","stuck":false"value":1,"state":
"alive","stuck":true=> 0
$ locks release fit 1 | sed 's/process.*,/the test,/'
voatm: did not release slot 1 of ATMFITMEMORY: it is held by the test, which is alive
=> 0
$ locks release fit 3
voatm: did not release slot 3 of ATMFITMEMORY: its value is 1, and only 0 is a held slot
=> 1
$ locks release fit 4
voatm: slot 4 of ATMFITMEMORY is at rest: there is nothing to release
=> 1
$ locks release fit 6
voatm: there is no slot 6 of ATMFITMEMORY, whose set has 6 semaphores
=> 2
)");
}

// The eight are held up where one after the other goes on, so that they meet.
TEST_F(VoatmTest, OfEightReleasersOneSucceedsWhoeverWaits) {
  const std::string race = "for i in 1 2 3 4 5 6 7 8; do (" BUILD_DIRECTORY
                           "/voatm locks release fit 2 --json | grep 'd\": true') & done; wait";
  const std::string file = home_.path() + "/cfg/vokernel.cfg";
  const std::string count = "grep -c -- '-> FLOCK.*:'$(stat -c %i " + file + ")' ' /proc/locks";
  for (const bool is_awaited : {false, true}) {
    Holder()->Kill();
    const auto waiting = is_awaited ? Holder() : nullptr;
    const int gate = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    flock(gate, LOCK_EX);
    auto answer = std::async([&] { return Shell(race); });
    EXPECT_TRUE(Eventually([&] { return Shell(count).text == "8\n"; }));
    close(gate);
    EXPECT_EQ(answer.get().text, "  \"released\": true,\n");
    EXPECT_EQ(semctl(set_, 2, GETVAL), is_awaited ? 0 : 2);
    semctl(set_, 2, SETVAL, 2);
  }
}

TEST_F(VoatmTest, FindingsNameTheFaultAndFailTheCommand) {
  EXPECT_EQ(Voatm("tables").code, 0);
  WriteStartUpFiles(home_, home_.key_base(), {4, 7, 4, 8, 3});
  shmctl(shmget(Key(2), 0, 0), IPC_RMID, nullptr);
  semctl(semget(Key(3), 0, 0), 0, IPC_RMID);
  semctl(semget(Key(4), 0, 0), 0, IPC_RMID);
  const int small_set = semget(Key(4), 7, IPC_CREAT | 0666);
  ExpectTranscript(R"($ tables >/dev/null
=> 1
$ tables | grep -o -e '^[A-Z]*: there is no .* of' -e 'drivers.*end$' -e 'locking.* 7 .*' -e 'drivers do.*'
drivers read behind its end
VOSECURITYMEMORY: there is no segment of
ATMPROPERTYMEMORY: there is no semaphore set of
locking a slot from 7 on fails
drivers do not see the slots from 3
=> 0
)");
  semctl(small_set, 0, IPC_RMID);
}

TEST(VoatmWithoutChannelManager, SaysSoAndLeavesOneRequestAtMost) {
  const TestHome home;
  const int base = 0x10000000 + 16 * getpid();
  WriteStartUpFiles(home, base, {});
  const std::string cut = "$ tables --json | cut -d , -f 1\nvoatm: VoChannelMgr ";
  ExpectTranscript(cut + "is not running: there is no queue of VoChannelMgr\n=> 0\n");
  const int queue = msgget(base + 2, IPC_CREAT | 0666);
  ExpectTranscript(cut + "does not answer: waited 2 seconds for ATMMEMORY at the queue of " +
                   "VoChannelMgr\n=> 0\n" + cut + "does not answer: a request lies unread in the " +
                   "queue of VoChannelMgr\n=> 0\n$ tables 2>/dev/null\n=> 2\n");
  msqid_ds state{};
  msgctl(queue, IPC_STAT, &state);
  msgctl(queue, IPC_RMID, nullptr);
  EXPECT_EQ(state.msg_qnum, 1U);
}

}  // namespace
