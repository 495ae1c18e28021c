// Records of a home that a host serves.
#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "devhost/host.h"
#include "devhost/seed.h"
#include "devhost/system_call.h"
#include "support/served_home.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"

namespace {

class VoatmTest : public testing::Test {
 protected:
  int Key(int table) const { return home_.key_base() + 10 + table; }
  char* Attach(int key) const { return static_cast<char*>(shmat(shmget(key, 0, 0), nullptr, 0)); }

  ServedHome home_;
};

TEST_F(VoatmTest, RecordsAreShownAsRowsAndWhole) {
  const AtmFit fit = {"VISITOR", "A\\\t~\0old", "", "", "", {1, 2, 2, 2, 2}, 'D'};
  memcpy(Attach(Key(1)), &fit, sizeof fit);
  memcpy(Attach(Key(2)) + sizeof(VoSecurity), "HOST\0secret", 12);
  memcpy(Attach(Key(5)) + 2 * sizeof(VoAtmStatus), "ELEVEN CHARS", sizeof(VoAtmStatus));
  VoAtmProperty property = {};
  property.RecordId = 3;
  property.InstTerminalGroup[0] = '*';
  memcpy(Attach(Key(3)) + sizeof property, &property, sizeof property);
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
  const Output list = Voatm("list Status --json 2>/dev/null"), dump = Voatm("dump AtmStatusMemory");
  EXPECT_EQ(list.code, 1);
  const Json json = Json::parse(list.text);
  EXPECT_EQ(json["slots"], 9);
  EXPECT_EQ(json["complete"], false);
  EXPECT_EQ(json["rows"].size(), 1U);
  EXPECT_EQ(dump.code, 1);
  EXPECT_EQ(Voatm("explain status B").code, 2);
  const std::string unseen = VoatmJson("explain status B")["unseen"];
  EXPECT_EQ(unseen.find("only 4 of 9 slots lie in the segment of ATMSTATUSMEMORY"), 0U) << unseen;
  EXPECT_EQ(Voatm("diff live live").code, 2);
  EXPECT_EQ(Voatm("dump fit >/dev/full").code, 2);
  home_.Write("tables/atm_status.json", dump.text);
  EXPECT_THROW(devhost::ReadSeed(records::kRecordTables[5],
                                 devhost::SeedPath(records::kRecordTables[5], home_.path())),
               devhost::SeedError);
  std::vector<int> codes;
  for (const char* wanted : {"0", "--id A", "3", "4", "8", "9"}) {
    codes.push_back(Voatm(std::string("show status ") + wanted).code);
  }
  EXPECT_EQ(codes, (std::vector<int>{0, 1, 1, 2, 2, 1}));
}

TEST_F(VoatmTest, OptionsBeforeTheSecondWordCountAsBehindIt) {
  semctl(semget(Key(1), 0, 0), 2, SETVAL, devhost::SemaphoreArgument{0});
  for (const char* arguments :
       {"locks --home %s --json release fit 2", "locks --json release fit 2 --home %s",
        "locks release fit 2 --home %s --json"}) {
    std::string line = arguments;
    line.replace(line.find("%s"), 2, home_.path());
    const Output output = Shell("VODIR_HOME=none " BUILD_DIRECTORY "/voatm " + line);
    const Json json = Json::parse(output.text);
    EXPECT_EQ(json["lock"]["slot"], 2) << arguments;
    EXPECT_EQ(json["lock"]["id"], "NOTDEFINED") << arguments;
    EXPECT_EQ(output.code, json["released"] ? 0 : 1) << arguments;
  }
  EXPECT_EQ(Voatm("locks --watch release fit 2").code, 2);
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

}  // namespace
