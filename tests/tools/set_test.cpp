// What voatm set and voatm load write, and what they refuse.
#include <sys/sem.h>
#include <sys/shm.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "support/child.h"
#include "support/served_home.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

using Json = nlohmann::json;

class VoatmSet : public testing::Test {
 protected:
  static constexpr AtmFit kVisa = {"VISA", "A", "", "", "4FFF", {1}, 'C'};

  VoatmSet() { fits_[1] = kVisa; }
  ~VoatmSet() override {
    for (int slot = 0; slot < 6; ++slot) EXPECT_EQ(semctl(set_, slot, GETVAL), 2) << slot;
    shmdt(fits_);
  }

  static bool Equal(const AtmFit& a, const AtmFit& b) { return memcmp(&a, &b, sizeof a) == 0; }

  const ServedHome home_;
  const int segment_ = shmget(home_.key_base() + 11, 0, 0);
  const int set_ = semget(home_.key_base() + 11, 0, 0);
  AtmFit* const fits_ = static_cast<AtmFit*>(shmat(segment_, nullptr, 0));
};

TEST_F(VoatmSet, WritesFieldsAndShowsThem) {
  const std::string arguments = R"(set fit 1 CardPrefix=55 IndirectNextState=D --json )"
                                R"('Uninterpreted={"hex": "0203"}' 2>/dev/null)";
  Json expected = {{"table", "ATMFITMEMORY"}, {"dry_run", true}, {"rows", Json::array()}};
  expected["rows"][0] = {
      {"slot", 1},
      {"changes",
       {{{"field", "CardPrefix"}, {"before", "4FFF"}, {"after", "55"}},
        {{"field", "Uninterpreted"}, {"before", {{"hex", "01"}}}, {"after", {{"hex", "0203"}}}},
        {{"field", "IndirectNextState"}, {"before", "C"}, {"after", "D"}}}}};
  EXPECT_EQ(Json::parse(Voatm(arguments + " --dry-run").text), expected);
  EXPECT_TRUE(Equal(fits_[1], kVisa));
  expected["dry_run"] = false;
  EXPECT_EQ(Json::parse(Voatm(arguments).text), expected);
  EXPECT_TRUE(Equal(fits_[1], {"VISA", "A", "", "", "55", {2, 3}, 'D'}));
  expected["rows"] = Json::array();
  EXPECT_EQ(Json::parse(Voatm(arguments).text), expected);
}

TEST_F(VoatmSet, RefusesWhatDoesNotFit) {
  ExpectTranscript(R"($ set fit 1 CardPrefix=1 Prefix=1 | cut -d ';' -f 1
voatm: no field "Prefix" in ATMFITMEMORY
=> 0
$ set fit 1 CardPrefix=1 CardPrefix=55555555555555555555
voatm: CardPrefix=55555555555555555555: a text of 20 characters, 10 fit; see voatm set --help
=> 2
$ set fit 1 'Uninterpreted={"hex"'
voatm: Uninterpreted={"hex": bytes are given as {"hex": "..."}; see voatm set --help
=> 2
$ set fit 1 FitId=
voatm: no key text FitId; see voatm set --help
=> 2
$ set property 1 RecordId=x10
voatm: slot 1 of ATMPROPERTYMEMORY is free; voatm load fills it
=> 1
$ set fit 6 FitId=A
voatm: no slot 6 in ATMFITMEMORY, which has 6
=> 1
)");
  EXPECT_TRUE(Equal(fits_[1], kVisa));
}

TEST_F(VoatmSet, NamesTheHolderOfASlot) {
  Child holder([this] {
    sembuf take{1, -2, 0};
    return semop(set_, &take, 1) + pause();
  });
  EXPECT_TRUE(Eventually([&] { return semctl(set_, 1, GETVAL) == 0; }));
  const Answer answer = Voatm("set fit 1 CardPrefix=1 --wait 0");
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.text.find("voatm: slot 1 of ATMFITMEMORY is held by process " +
                             std::to_string(holder.id()) + " ("),
            0U)
      << answer.text;
  EXPECT_TRUE(Equal(fits_[1], kVisa));
  semctl(set_, 1, SETVAL, 2);
}

TEST_F(VoatmSet, LoadGivesTheTableOfTheFile) {
  std::strcpy(fits_[4].CardPrefix, "left");
  const std::vector<AtmFit> before(fits_, fits_ + 6);
  EXPECT_EQ(Voatm("dump fit >$VODIR_HOME/dump").code, 0);
  fits_[1].IndirectNextState = 'X';
  std::strcpy(fits_[2].FitId, "NEW");
  std::strcpy(fits_[5].FitId, "NEW");
  EXPECT_EQ(Voatm("load fit $VODIR_HOME/dump --dry-run").code, 0);
  EXPECT_STREQ(fits_[5].FitId, "NEW");
  home_.Write("broken", R"([{"FitId": "A"}, {"FitId": "B"},)");
  EXPECT_EQ(Voatm("load fit $VODIR_HOME/broken").code, 2);
  EXPECT_EQ(Voatm("load fit $VODIR_HOME").code, 2) << "it has no file of the table";
  EXPECT_STREQ(fits_[5].FitId, "NEW");
  const Json json = Json::parse(Voatm("load fit $VODIR_HOME/dump --json 2>/dev/null").text);
  EXPECT_EQ(json["rows"].size(), 3U);
  EXPECT_EQ(memcmp(fits_, before.data(), 6 * sizeof *fits_), 0);
}

TEST_F(VoatmSet, WritesToNoOtherTable) {
  shmctl(segment_, IPC_RMID, nullptr);
  const int other = shmget(home_.key_base() + 11, 6 * sizeof(AtmFit), IPC_CREAT | 0600);
  EXPECT_EQ(Voatm("set fit 1 FitId=A").code, 1);
  EXPECT_EQ(Voatm("load fit $VODIR_HOME/tables").code, 1);
  shmctl(other, IPC_RMID, nullptr);
}

}  // namespace
