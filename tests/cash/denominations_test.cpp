#include "support/file_test.h"

namespace {

class DenominationsTest : public FileTest {
 protected:
  // Cassettes A to H of 10 to 80 with five notes each; but the third is another B.
  DenominationsTest() {
    for (int i = 0; i < 8; ++i) {
      denoms_[i] = {i == 2 ? 'B' : static_cast<char>('A' + i), i + 1, 10 * (i + 1), 840, 'Y', 5};
    }
  }

  DenomInfo denoms_[8];
};

// Given: model, cassette, its notes. The first output shows the cassettes that have changed.
TEST_F(DenominationsTest, AreUnusableWithFewerNotesThanAsked) {
  ExpectDone(R"(
D912ATM b 3 => 8 [2N3 3N3 .]
D912ATM B 5 => 8 [.]
D912ATM h -1 => 8 [8N-1 .]
NDC+ATM H 3 => 4 [.]
other a x => 4 [1N0 .])",
             [&](const std::string& given) {
               std::istringstream words(given);
               std::string model, notes;
               char id;
               words >> model >> id >> notes;
               DenomInfo denoms[8];
               memcpy(denoms, denoms_, sizeof denoms);
               const int count =
                   util.CheckAndSetDenomStatus(model.c_str(), notes.data(), id, denoms);
               std::string shown;
               for (const DenomInfo& denom : denoms) {
                 if (denom.Status == 'Y' && denom.LastDispNotes == 5) continue;
                 shown += std::to_string(denom.Pos) + denom.Status +
                          std::to_string(denom.LastDispNotes) + " ";
               }
               strcpy(Out(0), shown.c_str());
               trace.Take();
               return count;
             });
  util.CheckAndSetDenomStatus("NDC+ATM", std::string("1").data(), 'D', denoms_);
  EXPECT_EQ(Done(4),
            "4 <7 Id[A] Pos[1] Value[10]\tCode[840]\tStatus[Y] LastDispNotes[5]>"
            " <7 Id[B] Pos[2] Value[20]\tCode[840]\tStatus[Y] LastDispNotes[5]>"
            " <7 Id[B] Pos[3] Value[30]\tCode[840]\tStatus[Y] LastDispNotes[5]>"
            " <7 Id[D] Pos[4] Value[40]\tCode[840]\tStatus[N] LastDispNotes[1]>");
}

TEST_F(DenominationsTest, AreFoundByTheLastOfTheirLetter) {
  int value = 7;
  EXPECT_EQ(util.GetDenomination(denoms_, 'b', &value), 1);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(util.GetDenomination(denoms_, 'B', &value), 1);
  EXPECT_EQ(value, 30);
  for (const char id : {'@', 'A', 'c', 'H', 'I'})
    util.PackDispLogicBuf(std::string("12").data(), id, Out(0));
  EXPECT_EQ(Done(1), "1 [12##12########12]");
}

TEST_F(DenominationsTest, FillTheirRecordAtFixedOffsets) {
  AtmDenomStatusMsg msg;
  char bytes[sizeof msg];
  const auto text = [&](int offset, int size) {
    std::string shown(bytes + offset, static_cast<std::size_t>(size));
    std::replace(shown.begin(), shown.end(), '\0', '.');
    return shown;
  };
  memset(&msg, '#', sizeof msg);
  EXPECT_EQ(Done(util.LoadDenomDetails("1", "3", "2", "0201", "XYZ", 1, 2, &msg)),
            "-1 <6 Invaild Device Type[ XYZ ]>");
  memcpy(bytes, &msg, sizeof msg);
  EXPECT_EQ(text(0, 92), "1................2............3............" + std::string(49, '#'));

  memset(msg.DenomNotes, 0, sizeof msg.DenomNotes);
  msg.DenomNotes[1] = 9;
  const std::string longest(20, 'x');
  for (const auto& [model, logic] : {std::pair("NDC+ATM", "0200010500000042"),
                                     {"D912ATM", "0200010500000042"},
                                     {"D912ATM", "02000"}}) {
    EXPECT_EQ(Done(util.LoadDenomDetails(longest.c_str(), "three", longest.c_str(), logic, model,
                                         70523, 12345678, &msg)),
              "1");
    memcpy(bytes, &msg, sizeof msg);
    EXPECT_EQ(text(0, 44), "xxxxxxxxxxxxxxxx.xxxxxxxxxxxx.three........#");
    EXPECT_EQ(text(76, 16), "070523.#1234567.");
    int notes[8];
    memcpy(notes, bytes + 44, sizeof notes);
    const int expected[] = {2, 9, 1, 5, 0, 0, 0, model[0] == 'D' ? 42 : 0};
    EXPECT_EQ(memcmp(notes, expected, sizeof notes), 0) << model;
  }
  memset(&msg, '#', sizeof msg);
  util.LoadDenomDetails("", "", "", "", "NDC+ATM", -123456, 7, &msg);
  memcpy(bytes, &msg, sizeof msg);
  EXPECT_EQ(text(76, 16), "-123456.000007.#");
}

// Given: the deposit. A note type is worth its number.
TEST_F(DenominationsTest, OfADepositLieInGroupsByItsLength) {
  home_.Write("cfg/atm/bnamap/A_bnamap.cfg", "[BNA_MAPPING]\n01 1\n02 2\n03 3\n04 4\n05 5\n");
  ExpectDone(R"(
x => 1 [0.00.] [........]
=> 1 [0.00.] [........]
x010 => 1 [0.00.] [........]
x0105021 => 1 [50.00.] [1^50....]
x0105021003010400 => 1 [28.00.] [1^5|2^10|3^1|4^0.]
x010050201003005 => 1 [40.00.] [1^5|2^10|3^5.]
x01050020100300504001 => 1 [89.00.] [1^50|2^10|3^5|4^1.]
x01050021003010040 => -1
x010500210030100400 => -1
x0105002100301004001 => -1
x010500201003005040019 => -1)",
             [&](std::string deposit) {
               const int result =
                   util.GetDepositAmount("A", "B", "C", "F", deposit.data(), Out(0), Out(1));
               trace.Take();
               return result;
             });
}

}  // namespace
