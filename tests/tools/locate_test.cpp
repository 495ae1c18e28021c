// What voatm asks VoChannelMgr, and what it makes of its answers and of none.
#include "tables/locate.h"

#include <sys/msg.h>

#include <cstring>
#include <functional>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

#include "support/child.h"
#include "support/served_home.h"
#include "tools/voatm/look/locate.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

// VoChannelMgr as a test wants it, on a thread.
class Manager {
 public:
  using Reply = std::function<void(LocateMemoryMsg* reply)>;

  // Answers so many requests.
  Manager(int queue, int requests, const Reply& fill)
      : thread_([=] {
          for (int i = 0; i < requests; ++i) {
            LocateMemoryMsg message{};
            if (msgrcv(queue, &message, voatm::kLocateBodySize, 1, 0) < 0) return;
            message.MessageType = message.ProcessId;
            fill(&message);
            msgsnd(queue, &message, voatm::kLocateBodySize, 0);
          }
        }) {}
  ~Manager() { thread_.join(); }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

 private:
  std::thread thread_;
};

class LocatorTest : public testing::Test {
 protected:
  LocatorTest() { WriteStartUpFiles(home_, base_, {}); }
  ~LocatorTest() override { msgctl(queue_, IPC_RMID, nullptr); }

  void Send(long type, const char* text, int key = 0) const {
    LocateMemoryMsg message{};
    message.MessageType = type;
    strcpy(message.MemoryName, text);
    message.ChannelKeyId = key;
    msgsnd(queue_, &message, voatm::kLocateBodySize, 0);
  }

  const TestHome home_;
  const int base_ = 0x10000000 + 16 * getpid();
  const int queue_ = msgget(base_ + 2, IPC_CREAT | 0600);
};

TEST_F(LocatorTest, IsBelievedWhateverElseLiesInTheQueue) {
  Child([&] {
    Send(99, "a stranger's");
    return 0;
  }).Wait();
  Send(getpid(), "ATMMEMORY", 1);  // to an earlier process of this number
  const Locator locator(base_ + 2);
  const Manager manager(queue_, 2, [&](LocateMemoryMsg* reply) {
    Send(getpid(), "ATMFITMEMORY", 2);
    reply->ChannelKeyId = 3;
    reply->LocateStatus = strcmp(reply->MemoryName, "ATMMEMORY") == 0 ? 0 : -1;
  });
  EXPECT_EQ(locator.Ask("ATMMEMORY"), 3);
  EXPECT_EQ(locator.Ask("VOSECURITYMEMORY"), std::nullopt);
}

TEST_F(LocatorTest, AManagerThatStopsBehindTheLastAnswerKeepsNobodyWaiting) {
  const Manager manager(queue_, 12, [](LocateMemoryMsg* reply) {
    const bool action = strcmp(reply->MemoryName, "ATMACTIONPROPERTYMEMORY") == 0;
    reply->ChannelKeyId = strlen(reply->MemoryName) < 12 ? 0 : action ? 7 : 0x11000000 + getpid();
  });
  const Json tables = VoatmJson("tables")["tables"];
  EXPECT_EQ(tables[0]["findings"][0]["next"], "give the table a key of its own there");
  EXPECT_EQ(tables[1]["findings"].size(), 3U + 1U) << "three others have its key, and no objects";
  EXPECT_EQ(tables[4]["findings"].size(), 1U);
  EXPECT_EQ(Voatm("tables >/dev/null").code, 1);
}

TEST_F(LocatorTest, ATableThatTheManagerDoesNotKnowIsSaid) {
  const Manager manager(queue_, 1000, [](LocateMemoryMsg* reply) { reply->LocateStatus = -1; });
  const Json tables = VoatmJson("tables")["tables"];
  EXPECT_EQ(tables[5]["findings"].size(), 1U);
  EXPECT_EQ(tables[5]["findings"][0]["what"], "VoChannelMgr does not know the table");
  EXPECT_EQ(Voatm("tables >/dev/null").code, 1);
  for (const char* verb : {"list fit", "show fit 1", "dump fit", "locks release fit 1",
                           "explain fit I G A 1", "diff live live"}) {
    const Output output = Voatm(verb);
    EXPECT_EQ(output.code, 2) << verb;
    EXPECT_NE(output.text.find("VoChannelMgr does not know the table A"), std::string::npos)
        << output.text;
  }
  EXPECT_EQ(Voatm("locks >/dev/null").code, 1);
  EXPECT_EQ(Voatm("status >/dev/null").code, 1);
  msgctl(queue_, IPC_RMID, nullptr);  // which ends it
}

TEST_F(LocatorTest, WithoutAManagerOneRequestIsLeftAtMost) {
  const auto refusal = [&] {
    try {
      Locator(base_ + 2, 0).Ask("ATMMEMORY");
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  const std::string none = "VoChannelMgr does not answer: ", queue = "the queue of VoChannelMgr";
  msqid_ds state{};
  msgctl(queue_, IPC_STAT, &state);
  const auto room = state.msg_qbytes;
  state.msg_qbytes = 1;
  msgctl(queue_, IPC_SET, &state);
  EXPECT_EQ(refusal().find(none + "no room in " + queue), 0U);
  state.msg_qbytes = room;
  msgctl(queue_, IPC_SET, &state);
  const auto waits = [&] {
    return refusal().find(none + "waited 0 seconds for ATMMEMORY at " + queue) == 0 ? 1 : 0;
  };
  EXPECT_EQ(Child(waits).Wait(), 1);
  EXPECT_EQ(refusal().find(none + "a request lies unread in " + queue), 0U);
  msgctl(queue_, IPC_STAT, &state);
  EXPECT_EQ(state.msg_qnum, 1U);
}

TEST_F(LocatorTest, AQueueOfSomebodyElseIsDenied) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  const auto is_said = [&] {
    if (setuid(65534) != 0) return 0;
    try {
      return Locator(base_ + 2).Ask("ATMMEMORY").value_or(0);
    } catch (const std::runtime_error& error) {
      return std::string(error.what()).find("Permission denied") != std::string::npos ? 77 : 0;
    }
  };
  EXPECT_EQ(Child(is_said).Wait(), 77);
}

// It ends with what it waits for, whatever the limit.
TEST_F(LocatorTest, SaysWhatItWaitsForAndThatItIsGone) {
  const std::string said = home_.path() + "/said";
  home_.Write("said", "");
  auto tables = std::async([&] { return Voatm("tables 2>" + said); });
  const std::string expected =
      "voatm: waiting for VoChannelMgr's answer where ATMMEMORY is\nvoatm: ";
  EXPECT_TRUE(Eventually([&] { return home_.Read("said").size() > expected.size() - 8; }));
  msgctl(queue_, IPC_RMID, nullptr);
  EXPECT_EQ(tables.get().code, 2);
  const std::string all = home_.Read("said");
  EXPECT_EQ(all.find(expected), 0U) << all;
  EXPECT_NE(all.find("cannot receive from the queue of VoChannelMgr"), std::string::npos) << all;
  ExpectTranscript(
      "$ tables --json 2>&1 | cut -d , -f 1\nvoatm: VoChannelMgr is not running: there is no queue "
      "of VoChannelMgr\n=> 0\n");
}

}  // namespace
