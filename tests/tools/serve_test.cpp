// What voatm serve makes, says and leaves.
#include <sys/msg.h>
#include <sys/shm.h>

#include <future>

#include "devhost/ipc_object.h"
#include "support/child.h"
#include "support/served_home.h"
#include "tools/voatm_output.h"

namespace {

class VoatmServe : public testing::Test {
 protected:
  VoatmServe() { WriteStartUpFiles(home_, base_, {2, 3, 0, 4, 5}); }

  bool Serves() const { return FindQueue() >= 0; }
  int FindQueue() const { return devhost::FindIpc(devhost::IpcKind::kQueue, base_ + 2); }

  const TestHome home_;
  const int base_ = 0x50000000 | (getpid() << 8);
};

TEST_F(VoatmServe, TellsWhatItMadeAndEndsWithAnotherProcess) {
  home_.Write("tables/atm_fit.json", R"([{"FitId": "A"}])");
  home_.Write("tables/atm_memory.json", "[]");
  Child leader([] { return pause(); });
  const std::string options = " --mode 0660 --exit-with " + std::to_string(leader.id());
  auto served = std::async([&] { return Voatm("serve --json >$VODIR_HOME/json" + options); });
  EXPECT_TRUE(Eventually([&] { return home_.Read("json").find('\n') != std::string::npos; }));
  const Json json = Json::parse(home_.Read("json"));
  EXPECT_EQ(json["home"], std::filesystem::canonical(home_.path()).string());
  EXPECT_EQ(json["queue_key"], base_ + 2);
  EXPECT_EQ(kill(json["pid"], 0), 0);
  EXPECT_EQ(json["tables"][1], Json({{"table", "ATMFITMEMORY"},
                                     {"key", base_ + 11},
                                     {"slots", 3},
                                     {"rows", 1},
                                     {"bytes", 3 * 87},
                                     {"file", home_.path() + "/tables/atm_fit.json"}}));
  EXPECT_TRUE(json["tables"][5]["file"].is_null());
  shmid_ds state{};
  shmctl(shmget(base_ + 11, 0, 0), IPC_STAT, &state);
  EXPECT_EQ(state.shm_perm.mode & 0777, 0660);

  leader.Kill();
  const Output output = served.get();
  EXPECT_EQ(output.code, 0);
  EXPECT_FALSE(Serves());
  const std::string tables = home_.path() + "/tables/";
  EXPECT_EQ(output.text, "voatm: these tables start empty, there is no " + tables +
                             "atm_property.json for ATMPROPERTYMEMORY, " + tables +
                             "atm_action_property.json for ATMACTIONPROPERTYMEMORY, " + tables +
                             "atm_status.json for ATMSTATUSMEMORY\n");
}

TEST_F(VoatmServe, LeavesNothingWhenItCannotSayThatItIsReady) {
  for (const char* arguments :
       {"serve >/dev/full", "serve --json >&-", "serve --exit-with 2147483647"}) {
    EXPECT_EQ(Voatm(arguments).code, 2) << arguments;
    EXPECT_FALSE(Serves()) << arguments;
  }
}

TEST_F(VoatmServe, ChecksWithoutMakingAnything) {
  home_.Write("tables/atm_fit.json", "[\n{}]");
  home_.Write("tables/atm_status.json", "[");
  const Json refused = VoatmJson("serve --check");
  const std::string tables = home_.path() + "/tables/";
  EXPECT_EQ(refused["refusals"],
            Json({"no key text FitId: " + tables + "atm_fit.json:2, row 1",
                  "the text ends too early: " + tables + "atm_status.json:1, column 1"}));
  EXPECT_EQ(Voatm("serve --check").code, 1);
  home_.Remove("tables");
  EXPECT_EQ(Voatm("serve --check --exit-with 1").code, 0);
  EXPECT_FALSE(Serves());
  const int queue = msgget(base_ + 2, IPC_CREAT | 0600);
  EXPECT_EQ(Voatm("serve --check").code, 1);
  EXPECT_EQ(Voatm("serve --check --replace").code, 0);
  EXPECT_TRUE(Serves());
  msgctl(queue, IPC_RMID, nullptr);
}

}  // namespace
