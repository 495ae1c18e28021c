// What changed between two sides, and which answers change with it.
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "support/served_home.h"
#include "tools/voatm_output.h"

namespace {

class DiffTest : public testing::Test {
 protected:
  DiffTest() {
    std::filesystem::copy(SAMPLE_HOME, home_.path() + "/new",
                          std::filesystem::copy_options::recursive);
  }

  // Replaces the first occurrence in a file of the new home.
  void Change(const std::string& file, const std::string& from, const std::string& to) const {
    std::string text = home_.Read("new/" + file);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << file;
    home_.Write("new/" + file, text.replace(at, from.size(), to));
  }

  Output Diff(const std::string& options = "") const {
    return Voatm("diff . " + home_.path() + "/new --json " + options);
  }

  static Json OfRequest(const Json& json, const std::string& request) {
    for (const Json& each : json["answers"]) {
      if (each["request"] == request) return each;
    }
    return {};
  }

  TestHome home_;
};

constexpr char kAtm[] = "--atm HARBOUR MALL ATM00004 COMMON";

TEST_F(DiffTest, LayoutAndOrderAreNoDifference) {
  Change("cfg/atm/displogic/HARBOUR_displogic.cfg", "\n", "\n# a comment\n\n");
  const std::string keys = "new/cfg/atm/statetable/opkey/HARBOUR_opk.cfg";
  home_.Write(keys, home_.Read(keys) + "[NOTHING]\n");
  std::filesystem::create_symlink("nowhere", home_.path() + "/new/cfg/.#lock");
  const Output output = Diff(kAtm);
  EXPECT_EQ(output.code, 0);
  EXPECT_EQ(Json::parse(output.text), Json::parse(R"({"rows":[],"entries":[],"answers":[]})"));
}

TEST_F(DiffTest, NamesRowsEntriesAndTheAnswersThatChange) {
  Change("tables/atm_fit.json", "\"HB_STAFF\"", "\"HB_CREW\"");
  Change("tables/atm_fit.json", "\"CardPrefix\": \"978001FFFF\", \"IndirectNextState\": \"D\"",
         "\"CardPrefix\": \"978001FFFF\", \"IndirectNextState\": \"X\"");
  Change("cfg/atm/statetable/resptable/HARBOUR_MALL_resp.cfg", "021", "022");
  std::filesystem::remove(home_.path() + "/new/cfg/atm/statetable/opkey/HARBOUR_opk.cfg");
  const Output output = Diff(std::string(kAtm) + " --atm HARBOUR BRANCH ATM00001");
  EXPECT_EQ(output.code, 1);
  const Json json = Json::parse(output.text);
  std::string rows;
  for (const Json& row : json["rows"]) {
    rows += row["id"].get<std::string>() + " " + row["change"].get<std::string>() + "; ";
  }
  EXPECT_EQ(rows, "HB_DEBIT changed; HB_STAFF removed; HB_CREW added; ");
  EXPECT_EQ(json["rows"][0]["fields"],
            Json::parse(R"([{"field":"IndirectNextState","before":"D","after":"X"}])"));
  EXPECT_TRUE(std::any_of(json["entries"].begin(), json["entries"].end(), [](const Json& entry) {
    return entry["file"] == "cfg/atm/statetable/opkey/HARBOUR_opk.cfg" && entry["b"] == "(none)";
  }));
  const Json card = OfRequest(json, "indirect-state HARBOUR MALL 9780010000");
  EXPECT_EQ(card["a"]["answer"]["IndirectNextState"], "D");
  EXPECT_EQ(card["b"]["answer"]["IndirectNextState"], "X");
  EXPECT_EQ(card["b"]["where"], "ATMFITMEMORY slot 0");
  int lost = 0, states = 0;
  for (const Json& each : json["answers"]) {
    if (each["request"].get<std::string>().rfind("txn-code", 0) == 0) ++lost;
    if (each["b"]["answer"].value("StateNo", "") != "022") continue;
    ++states;
    EXPECT_EQ(each["b"]["where"].get<std::string>().rfind("cfg/atm/", 0), 0U);
  }
  EXPECT_GT(lost, 0);
  EXPECT_EQ(states, 1) << "only the mall's ATM has the changed file";
}

// A file of rows in which one thing changes: an answer changes with it.
constexpr struct {
  const char *file, *rows, *from, *to;
} kChanges[] = {
    {"atm_fit.json",
     R"([{"FitId":"A","MatchKey1":"I","CardPrefix":"9780010FFF","IndirectNextState":"A"},
         {"FitId":"B","MatchKey1":"I","CardPrefix":"978001FFFF","IndirectNextState":"B"}])",
     "\"B\"}]", "\"C\"}]"},
    {"atm_fit.json",
     R"([{"FitId":"NOTDEFINED","MatchKey1":"I","CardPrefix":"FFFFFFFFFF","IndirectNextState":"A"}])",
     "\"A\"}]", "\"C\"}]"},
    {"atm_fit.json",
     R"([{"FitId":"A","MatchKey1":"J","CardPrefix":"FFFFFFFFFF","IndirectNextState":"A"},
         {"FitId":"B","MatchKey1":"I","CardPrefix":"0FFFFFFFFF","IndirectNextState":"B"}])",
     "\"A\"}", "\"C\"}"},
    {"atm_property.json",
     R"([{"InstTerminalGroup":"I","AtmLogicalGroup":"*","AtmId":"*","TxnCode":"010000","RespCode":"*"},
         {"InstTerminalGroup":"I","AtmLogicalGroup":"*","AtmId":"*","TxnCode":"01","RespCode":"*",
          "PropertySwitch1":"N"}])",
     "\"N\"", "\"Y\""},
    {"atm_property.json",
     R"([{"InstTerminalGroup":"I","AtmLogicalGroup":"*","AtmId":"*","TxnCode":"*","RespCode":"*",
          "Uninterpreted1":{"hex":"41"}}])",
     "41", "42"},
    {"atm_action_property.json",
     R"([{"InstTerminalGroup":"I","AtmLogicalGroup":"*","AtmId":"*","StatusCode":"A\\B","ActionFlag":"Y",
          "ActionText":"ONE"}])",
     "ONE", "TWO"},
};

TEST_F(DiffTest, MissesNoAnswerThatChangesWithARow) {
  for (const auto& [file, rows, from, to] : kChanges) {
    std::string changed = rows;
    changed.replace(changed.find(from), strlen(from), to);
    home_.Write(std::string("a/") + file, rows);
    home_.Write(std::string("b/") + file, changed);
    const Json json = VoatmJson("diff " + home_.path() + "/a " + home_.path() + "/b --atm I G A C");
    EXPECT_EQ(json["rows"].size(), 1U) << changed;
    ASSERT_GE(json["answers"].size(), 1U) << changed;
    home_.Remove("a");
    home_.Remove("b");
    if (strstr(rows, "StatusCode") == nullptr) continue;
    EXPECT_EQ(json["answers"][0]["request"], R"(action action I G A 'A\B|')");
  }
}

TEST_F(DiffTest, SeesGroupsThatAreCountedFirstEntriesAndTemplatesOfAnyName) {
  Change("inf/HARBOUR_OAR.inf", "[OAR]\nTEMPLATE   RECEIPT   1", "");
  Change("cfg/atm/statetable/resptable/HARBOUR_resp.cfg", "[GOOD_RESPONSE]\n",
         "[GOOD_RESPONSE]\n010000_000 \"021 171\n");
  home_.Write("new/cfg/atm/templates/HARBOUR_MY_AMT_1.oar", "[OAR]\nOAR_TIMEOUT 77\n");
  const Json json = Json::parse(Diff(kAtm).text);
  const auto has = [](const Json& entries, const char* key, const char* b) {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const Json& each) { return each["key"] == key && each["b"] == b; });
  };
  EXPECT_TRUE(has(json["entries"], "[OAR]", "1")) << json;
  EXPECT_TRUE(has(json["entries"], "GOOD_RESPONSE#010000_000", "(unreadable)")) << json;
  EXPECT_EQ(OfRequest(json, "oar HARBOUR MALL ATM00004 MY_AMT 1 COMMON")["b"]["found"], false);
}

TEST_F(DiffTest, ALogicIsAskedForTheModelOfItsNotes) {
  Change("cfg/atm/displogic/HARBOUR_BRANCH_ATM00003_displogic.cfg", "2    4", "2    3");
  Change("cfg/atm/displogic/HARBOUR_MALL_displogic.cfg", "0    0    0    2", "1    0    0    0");
  const Json json =
      Json::parse(Diff("--atm HARBOUR BRANCH ATM00003 COMMON " + std::string(kAtm)).text);
  const Json eight = OfRequest(json, "displogic CASH 1000 HARBOUR BRANCH ATM00003 D912ATM COMMON");
  const Json four = OfRequest(json, "displogic CASH 20 HARBOUR MALL ATM00004 NDC+ATM COMMON");
  EXPECT_EQ(eight["b"]["answer"]["DispLogic"], "0000000000000203") << json;
  EXPECT_EQ(four["b"]["answer"]["DispLogic"], "01000000") << json;
}

TEST_F(DiffTest, SaysTheSameToPeopleAndToPrograms) {
  Change("tables/atm_fit.json", "\"HB_STAFF\"", "\"HB_CREW\"");
  Change("tables/atm_fit.json", "\"CardPrefix\": \"978001FFFF\", \"IndirectNextState\": \"D\"",
         "\"CardPrefix\": \"978001FFFF\", \"IndirectNextState\": \"X\"");
  Change("cfg/atm/statetable/resptable/HARBOUR_MALL_resp.cfg", "021", "022");
  home_.Write("atms", "# a mall's\n\n HARBOUR MALL ATM00004 COMMON\n");
  ExpectTranscript(Transcript("diff"));
}

TEST_F(DiffTest, WhatIsNoFileIsNoSetOfEntries) {
  const std::string keys = home_.path() + "/new/cfg/atm/statetable/opkey/HARBOUR_opk.cfg";
  std::filesystem::remove(keys);
  std::filesystem::create_directory(keys);
  EXPECT_EQ(Diff().code, 2);
  std::filesystem::remove(keys);
  mkfifo(keys.c_str(), 0600);
  EXPECT_EQ(Diff().code, 2);
  std::filesystem::remove(keys);
  home_.Write("new/cfg/atm/statetable/opkey/" + std::string(225, 'x') + "_opk.cfg", "");
  EXPECT_NE(Diff().text.find("the library opens no path that is so long"), std::string::npos);
}

TEST_F(DiffTest, ADumpIsComparedWithSeedFilesByRowsAlone) {
  Change("tables/atm_status.json", "\"CASHLOW\"", "\"CASHOUT\"");
  const std::string dump = home_.path() + "/new/tables/atm_status.json";
  const Output same = Voatm("diff tables/atm_status.json tables --json");
  EXPECT_EQ(same.code, 0) << same.text;
  EXPECT_EQ(Voatm("diff tables/atm_status.json tables --atm HARBOUR MALL ATM00004").code, 0);
  const Output changed = Voatm("diff tables " + dump + " --json");
  EXPECT_EQ(changed.code, 1);
  EXPECT_EQ(Json::parse(changed.text)["rows"].size(), 2U);
  EXPECT_EQ(Voatm("diff tables " + home_.path() + "/absent").code, 2);
  const Output none = Voatm("diff tables cfg/vobusiness.cfg");
  EXPECT_EQ(none.code, 2);
  EXPECT_NE(none.text.find("cfg/vobusiness.cfg:1"), std::string::npos) << none.text;
  home_.Write("atms", "HARBOUR MALL ATM00004\nHARBOUR\n");
  const Output refused = Voatm("diff tables tables --atms " + home_.path() + "/atms");
  EXPECT_EQ(refused.code, 2);
  EXPECT_NE(refused.text.find("/atms:2 takes S1 S2 S3"), std::string::npos) << refused.text;
  home_.Write("atms", "# nobody\n");
  home_.Write("one/atm_status.json", R"([{"StatusCode": "A"}, {"StatusCode": "B"}])");
  const std::string one = home_.path() + "/one";
  home_.Write("bare/cfg/none", "");
  for (const std::string& arguments :
       {"tables/atm_fit.json " + home_.path() + "/bare", std::string("tables tables --atms none"),
        "tables tables --atms " + home_.path(), "tables tables --atms " + home_.path() + "/atms",
        std::string("tables cfg"), one + " tables/atm_fit.json"}) {
    EXPECT_EQ(Voatm("diff " + arguments).code, 2) << arguments;
  }
  home_.Write("two/atm_status.json", R"([{"StatusCode": "B"}, {"StatusCode": "A"}])");
  EXPECT_EQ(VoatmJson("diff " + one + " " + home_.path() + "/two")["rows"].dump(),
            R"([{"table":"ATMSTATUSMEMORY","id":"A","change":"moved","fields":[{"field":"Slot",)"
            R"("before":0,"after":1}]}])");
  EXPECT_EQ(Voatm("diff tables tables --atm HARBOUR MALL").code, 2);
  home_.Write("empty/atm_fit.json", "[]");
  EXPECT_EQ(VoatmJson("diff tables " + home_.path() + "/empty/atm_fit.json")["rows"][0]["table"],
            "ATMFITMEMORY");
}

}  // namespace
