// What voatm says of tables, semaphores and VoChannelMgr as they stand, and what it mends.
#include <sched.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "devhost/system_call.h"
#include "support/child.h"
#include "support/served_home.h"
#include "support/watched.h"
#include "tools/voatm/look/findings.h"
#include "tools/voatm/look/process.h"
#include "tools/voatm/look/release.h"
#include "tools/voatm/look/users.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

using devhost::SemaphoreArgument;

class LookTest : public testing::Test {
 protected:
  void TearDown() override {
    shmdt(records_);
    semctl(semget(Key(1), 0, 0), 0, IPC_RMID);
    shmctl(shmget(Key(1), 0, 0), IPC_RMID, nullptr);
  }

  int Key(int table) const { return home_.key_base() + 10 + table; }

  int Set(int value, int slot = 2) const {
    return semctl(set_, slot, SETVAL, SemaphoreArgument{value});
  }
  int Value(int slot = 2) const { return semctl(set_, slot, GETVAL); }

  // A process that takes slot 2 of the card ranges and keeps it, or waits for it.
  std::unique_ptr<Child> Holder() const {
    const int set = set_, waiting = Value() == 0 ? 1 : 0;
    auto child = std::make_unique<Child>([=] {
      sembuf take{2, -2, 0};
      return semop(set, &take, 1) + pause();
    });
    EXPECT_TRUE(Eventually([&] { return Value() == 0 && semctl(set, 2, GETNCNT) == waiting; }));
    return child;
  }

  // In place of the card ranges' set one to which nobody gave a value.
  void LeaveSetAsCreated() {
    semctl(set_, 0, IPC_RMID);
    set_ = semget(Key(1), 6, IPC_CREAT | 0600);
  }

  ServedHome home_;
  int set_ = semget(Key(1), 0, 0);
  void* records_ = shmat(shmget(Key(1), 0, 0), nullptr, SHM_RDONLY);  // as who holds a slot
};

TEST_F(LookTest, ALivingHolderIsRefusedAndADeadOneReleased) {
  auto holder = Holder();
  const std::string process = std::to_string(semctl(set_, 2, GETPID));
  Json locks = VoatmJson("locks");
  EXPECT_EQ(locks["locks"][0].value("last_change", 0L) / 1000, time(nullptr) / 1000);
  locks["locks"][0].erase("last_change");
  const std::string command = locks["locks"][0]["command"];
  EXPECT_TRUE(!command.empty() && command.back() > ' ' && command.find('\0') == std::string::npos);
  locks["locks"][0].erase("command");
  EXPECT_EQ(locks.dump(),
            R"({"complete":true,"locks":[{"table":"ATMFITMEMORY","name":"fit","slot":2,)"
            R"("id":"NOTDEFINED","value":0,"process":)" +
                process + R"(,"state":"alive","waiting":0,"stuck":false}],"findings":[]})");
  EXPECT_EQ(Voatm("locks").code, 0);
  const Output refused = Voatm("locks release fit 2 --reset --force");
  EXPECT_EQ(refused.code, 1);
  EXPECT_NE(refused.text.find("is held by process " + process + " ("), std::string::npos);
  EXPECT_EQ(Value(), 0);

  holder->Kill();
  const auto waiting = Holder();
  const Json findings = VoatmJson("tables")["tables"][1]["findings"];
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0]["since"].get<std::string>().find("not changed since 20"), 0U);
  EXPECT_NE(findings[0]["drivers"].get<std::string>().find("waiting now: 1"), std::string::npos);
  EXPECT_EQ(findings[0]["next"], "voatm locks release fit 2");
  ExpectTranscript("$ locks | tail -n 1 | grep -o '[0-9]* dead.*'\n" + process +
                   " dead        1 \n=> 0\n$ tables >/dev/null\n=> 1\n$ locks >/dev/null\n=> 1\n" +
                   "$ locks release fit 2 | grep -v '  \"\"\\|  0'\n" +
                   "ATMFITMEMORY slot 2, free\n  FitId              \"NOTDEFINED\"\n" +
                   "released slot 2 of ATMFITMEMORY: its holder, process " + process +
                   ", is dead\nits holder may have died while writing the record above:\n" +
                   "  voatm show fit 2\n  have the owner of the table write the row again\n=> 0\n" +
                   "$ locks >/dev/null\n=> 0\n");
  EXPECT_EQ(Value(), 0) << "the process that waited has the slot";
}

TEST_F(LookTest, AHolderThatIsStoppedIsSaidAndOneThatIsNoUserNeedsForce) {
  {
    const auto holder = Holder();
    kill(holder->id(), SIGSTOP);
    EXPECT_TRUE(Eventually(
        [&] { return LookAt(holder->id(), time(nullptr)).state == ProcessState::kStopped; }));
    EXPECT_EQ(Voatm("locks >/dev/null").code, 1);
    const Json finding = VoatmJson("tables")["tables"][1]["findings"][0];
    EXPECT_EQ(finding["next"], "kill -CONT " + std::to_string(holder->id()));
    EXPECT_EQ(Voatm("locks release fit 2 --force").code, 1);
  }
  Set(2);
  shmdt(records_);
  const auto stranger = Holder();
  EXPECT_EQ(VoatmJson("locks")["locks"][0]["state"], "stranger");
  kill(stranger->id(), SIGSTOP);
  EXPECT_EQ(VoatmJson("locks")["locks"][0]["state"], "stranger") << "nobody is to be woken";
  EXPECT_EQ(Voatm("status >/dev/null").code, 1);
  EXPECT_EQ(Voatm("locks release fit 2").code, 1);
  EXPECT_EQ(Voatm("locks release fit 2 --force=false").code, 2) << "a flag takes no value";
  EXPECT_EQ(Value(), 0);
  EXPECT_EQ(Voatm("locks release fit 2 --force").code, 0);
  EXPECT_EQ(Value(), 2);
  const Child ended([] { return 0; });
  siginfo_t info;
  waitid(P_PID, static_cast<id_t>(ended.id()), &info, WEXITED | WNOWAIT);
  EXPECT_TRUE(MayUse(LookAtTable(records::kRecordTables[1], 6, Key(1)), ended.id()))
      << "nobody can look into it";
}

// The outer numbers, which such a /proc tells of, are other processes'.
TEST(Process, IsNotToldByTheProcOfAnotherNamespace) {
  constexpr int kMayNot = 77;
  const int result = Child([] {
                       if (unshare(CLONE_NEWPID) != 0) return kMayNot;
                       const pid_t inner = fork();
                       if (inner == 0) {
                         _exit(LookAt(getpid(), 0).state == ProcessState::kAlive ? 0 : 1);
                       }
                       int status = 0;
                       waitpid(inner, &status, 0);
                       return WEXITSTATUS(status);
                     }).Wait();
  if (result == kMayNot) GTEST_SKIP() << "only root can make a namespace";
  EXPECT_EQ(result, 0);
}

TEST(Process, OneThatHasEndedIsToldByItsStateOrItsStart) {
  const Process self = LookAt(getpid(), time(nullptr));
  EXPECT_EQ(self.state, ProcessState::kAlive);
  std::ifstream stream("/proc/self/cmdline");
  std::string command(std::istreambuf_iterator<char>(stream), {});
  std::replace(command.begin(), command.end(), '\0', ' ');
  constexpr std::size_t kShown = 1000;
  EXPECT_EQ((self.command + " ").substr(0, kShown), command.substr(0, kShown));
  EXPECT_EQ(LookAt(getpid(), time(nullptr) - 86400).state, ProcessState::kReused);
  EXPECT_EQ(LookAt(0, 0).state, ProcessState::kUnknown);
  const pid_t child = fork();
  if (child == 0) _exit(0);
  siginfo_t ended;
  waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  EXPECT_EQ(LookAt(child, time(nullptr)).state, ProcessState::kDead) << "it waits for its parent";
  waitpid(child, nullptr, 0);
  EXPECT_EQ(LookAt(child, time(nullptr)).state, ProcessState::kDead);
}

TEST_F(LookTest, ASlotComesToRestFromTheValueThatItHas) {
  const TableState table = LookAtTable(records::kRecordTables[1], 6, Key(1));
  for (const int value : {0, 1, 2, 7}) {
    for (const int other : {0, 1, 2, 7}) {
      Set(other);
      EXPECT_EQ(BringToRest(table, 2, value), value == other);
      EXPECT_EQ(Value(), value == other ? 2 : other) << value;
    }
  }
  EXPECT_THROW(BringToRest(table, 6, 0), std::runtime_error);
  semctl(set_, 0, IPC_RMID);
  EXPECT_THROW(LookAtSlot(table, 2), std::runtime_error);
  EXPECT_THROW(FindLocks(table), std::runtime_error);
}

// They are none that an operation of this system has left.
TEST_F(LookTest, ValuesThatWereSetNeedAProofOrAnAssumption) {
  struct SetValue {
    int value;
    bool by_the_living;
    const char* rights;
    int code;
    int left;
  };
  for (const SetValue& each : {SetValue{0, true, " --reset --force", 1, 0},
                               {0, false, "", 0, 2},
                               {1, false, "", 1, 1},
                               {1, false, " --reset", 0, 2},
                               {1, true, " --reset --force", 1, 1},
                               {7, true, "", 1, 7},
                               {7, true, " --reset", 0, 2},
                               {2, false, " --reset", 1, 2}}) {
    const int set = set_;
    const auto give = [=] { return semctl(set, 2, SETVAL, SemaphoreArgument{each.value}); };
    each.by_the_living ? give() : Child(give).Wait();
    EXPECT_EQ(Voatm("locks >/dev/null").code,
              each.value == 2 || (each.value == 0 && each.by_the_living) ? 0 : 1);
    const Json release = VoatmJson("locks release fit 2" + std::string(each.rights));
    EXPECT_EQ(release["released"], each.code == 0);
    EXPECT_EQ(release["next"].size(), each.code == 0 && each.value == 0 ? 2U : 0U);
    EXPECT_EQ(Value(), each.left) << each.value << each.rights;
    Set(2);
    EXPECT_EQ(Voatm("locks release fit 2").code, 1) << "at rest";
  }
  EXPECT_EQ(Voatm("locks release fit 5 --reset").code, 1);
  const Output sixth = Voatm("locks release fit 6 --reset");
  EXPECT_EQ(sixth.code, 2);
  EXPECT_NE(sixth.text.find("there is no slot 6 of ATMFITMEMORY"), std::string::npos) << sixth.text;
  EXPECT_EQ(Voatm("locks release fit").code, 2);
}

TEST_F(LookTest, ASetThatWasNeverInitialisedIsAFindingAndIsInitialised) {
  EXPECT_EQ(Voatm("locks release fit --reset --json").code, 1) << "it was";
  EXPECT_EQ(Voatm("locks release fit --reset --force").code, 1) << "there is nothing to give";
  LeaveSetAsCreated();
  EXPECT_EQ(Voatm("tables >/dev/null").code, 1);
  const Output locks = Voatm("locks");
  EXPECT_EQ(locks.code, 1);
  EXPECT_NE(locks.text.find("were never given a value"), std::string::npos) << locks.text;
  const Json never = VoatmJson("locks")["findings"];
  ASSERT_EQ(never.size(), 1U);
  EXPECT_EQ(never[0]["since"].get<std::string>().find("20"), 0U) << "it has a year";
  EXPECT_EQ(Voatm("locks release fit 3").code, 1) << "no holder can be told";
  EXPECT_EQ(Voatm("locks release fit --reset").code, 1) << "the owner lives";
  EXPECT_EQ(Value(), 0);
  EXPECT_EQ(Voatm("locks release fit 3 --force").code, 0);
  EXPECT_EQ(VoatmJson("locks")["locks"].size(), 5U);
  {
    const auto wait = [&](unsigned short slot) {
      return Child([=] {
        sembuf take{slot, -2, 0};
        return semop(set_, &take, 1);
      });
    };
    const Child first = wait(0), second = wait(1);
    EXPECT_TRUE(
        Eventually([&] { return semctl(set_, 0, GETNCNT) + semctl(set_, 1, GETNCNT) == 2; }));
    const Json findings = VoatmJson("tables")["tables"][1]["findings"];
    ASSERT_EQ(findings.size(), 2U) << "slots in a row are one";
    EXPECT_NE(findings[0]["drivers"].get<std::string>().find("waiting now: 2"), std::string::npos)
        << findings;
  }
  const auto holder = [&] {
    return Child([&] {
             sembuf take{3, -2, 0};
             return semop(set_, &take, 1);
           })
        .Wait();
  };
  EXPECT_EQ(holder(), 0);
  EXPECT_EQ(Voatm("locks release fit --reset --force").code, 0);
  for (int slot = 0; slot < 6; ++slot) EXPECT_EQ(Value(slot), slot == 3 ? 0 : 2) << slot;

  LeaveSetAsCreated();
  shmctl(shmget(Key(1), 0, 0), IPC_RMID, nullptr);
  Child([&] { return shmget(Key(1), 6 * sizeof(AtmFit), IPC_CREAT | 0600); }).Wait();
  EXPECT_EQ(Voatm("locks release fit --reset").code, 0) << "the owner is dead";
  EXPECT_EQ(Value() + Value(5), 4);
}

// All eight come while one is at work, and go on one after the other.
TEST_F(LookTest, OfEightReleasersOneSucceedsWhoeverWaits) {
  const TableState table = LookAtTable(records::kRecordTables[1], 6, Key(1));
  for (const bool is_awaited : {false, true}) {
    Holder()->Kill();
    const auto waiting = is_awaited ? Holder() : nullptr;
    int go[2], ready[2];
    ASSERT_EQ(pipe(go) + pipe(ready), 0);
    std::vector<std::unique_ptr<Child>> releasers(8);
    for (auto& releaser : releasers) {
      releaser = std::make_unique<Child>([&] {
        char byte;
        if (read(go[0], &byte, 1) != 1 || write(ready[1], &byte, 1) != 1) return 1;
        return ReleaseSlot(table, 2, {}).done ? 2 : 0;
      });
    }
    auto gate = std::make_unique<OnlyReleaser>(set_);  // which none of them has
    char eight[8] = {};
    ASSERT_EQ(write(go[1], eight, sizeof eight), 8);
    for (char& byte : eight) ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(Value(), 0) << "they wait";
    gate.reset();
    int released = 0;
    for (auto& releaser : releasers) released += releaser->Wait();
    EXPECT_EQ(released, 2) << "one did";
    EXPECT_EQ(Value(), is_awaited ? 0 : 2);
    Set(2);
    for (const int end : {go[0], go[1], ready[0], ready[1]}) close(end);
  }
  const OnlyReleaser gate(set_);
  EXPECT_THROW(OnlyReleaser(set_, 0), std::runtime_error) << "it does not wait for ever";
  EXPECT_NO_THROW(OnlyReleaser(semget(Key(2), 0, 0), 0)) << "of another set";
}

TEST_F(LookTest, AWatchSeesWhatComesBack) {
  Watched watch(BUILD_DIRECTORY "/voatm locks --watch --json");
  const auto sees = [&](const char* expected) {
    watch.Press(' ');  // which looks again
    return !watch.Until(expected).empty();
  };
  EXPECT_TRUE(sees(R"({"complete":true)"));
  semctl(set_, 0, IPC_RMID);
  watch.Press(' ');
  EXPECT_NE(watch.Until(R"({"complete":false)").find("voatm: "), std::string::npos);
  LeaveSetAsCreated();
  EXPECT_TRUE(sees(R"({"complete":true,"locks":[],"findings":[{"what":"its sem)"));
  Child([&] { return Set(7); }).Wait();
  EXPECT_TRUE(sees(R"({"complete":true,"locks":[{)"));
  home_.Remove("cfg/vokernel.cfg");
  watch.Press(' ');
  EXPECT_NE(watch.Until(R"({"complete":false)").find("vokernel.cfg"), std::string::npos);
  semctl(set_, 0, IPC_RMID);
}

// Another user, who may look at the objects only.
TEST_F(LookTest, WhatThisUserMayNotWriteIsAFinding) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may be another user";
  shmid_ds segment{};
  semid_ds set{};
  SemaphoreArgument argument{};
  argument.state = &set;
  const int id = shmget(Key(1), 0, 0);
  shmctl(id, IPC_STAT, &segment);
  semctl(set_, 0, IPC_STAT, argument);
  const auto findings = [&](const char* what) {
    const std::vector<TableState> tables = {LookAtTable(records::kRecordTables[1], 6, Key(1))};
    const std::vector<Finding> found = CheckTable(tables, tables[0]);
    return static_cast<int>(std::count_if(found.begin(), found.end(),
                                          [&](const Finding& each) { return each.what == what; }));
  };
  const auto found_by_another = [&](const char* what) {
    return Child([&] { return setuid(65534) == 0 ? findings(what) : -1; }).Wait();
  };
  for (const auto& [mode, what] :
       {std::pair{0644U, "this user may not write it"}, {0600U, "Permission denied"}}) {
    segment.shm_perm.mode = set.sem_perm.mode = static_cast<unsigned short>(mode);
    shmctl(id, IPC_SET, &segment);
    semctl(set_, 0, IPC_SET, argument);
    EXPECT_EQ(findings(what), 0);
    EXPECT_EQ(found_by_another(what), 2) << what;
  }
}

TEST_F(LookTest, FindingsNameTheFaultAndFailTheCommand) {
  EXPECT_EQ(Voatm("tables").code, 0);
  WriteStartUpFiles(home_, home_.key_base(), {4, 7, 4, 8, 3});
  shmctl(shmget(Key(2), 0, 0), IPC_RMID, nullptr);
  semctl(semget(Key(3), 0, 0), 0, IPC_RMID);
  semctl(semget(Key(4), 0, 0), 0, IPC_RMID);
  const int small_set = semget(Key(4), 7, IPC_CREAT | 0666);
  unsigned short rest[] = {2, 2, 2, 2, 2, 2, 2};
  SemaphoreArgument argument{};
  argument.values = rest;
  semctl(small_set, 0, SETALL, argument);
  EXPECT_EQ(Voatm("tables >/dev/null").code, 1);
  std::string found;
  const Json tables = VoatmJson("tables");
  for (const Json& table : tables["tables"]) {
    for (const Json& finding : table["findings"]) {
      found +=
          table["name"].get<std::string>() + ": " + finding["drivers"].get<std::string>() + "\n";
    }
  }
  EXPECT_EQ(tables["tables"][2]["findings"][0]["what"], "it does not exist") << "its set does";
  EXPECT_EQ(found,
            "fit: read behind its end\nfit: fail to lock a slot from 6 on\nsecurity: do not start\n"
            "property: do not start\naction: fail to lock a slot from 7 on\n"
            "status: do not see the slots from 3\n");
  WriteStartUpFiles(home_, home_.key_base(), {4, 6, 4, 8, 0});
  EXPECT_EQ(VoatmJson("tables")["tables"][5]["findings"].size(), 0U) << "none is to be seen";
  semctl(small_set, 0, IPC_RMID);
}

}  // namespace
