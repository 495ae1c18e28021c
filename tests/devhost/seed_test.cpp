#include "devhost/seed.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

#include "support/file_test.h"

namespace {

using records::kRecordTables;
using records::RecordTable;

// The fields stand in order and without overlap, and a record's bytes are theirs but for padding.
TEST(RecordFields, CoverTheirRecord) {
  for (const records::RecordTable& table : records::kRecordTables) {
    std::size_t end = 0;
    for (const records::RecordField& field : table) {
      EXPECT_LT(field.offset - end, sizeof(int)) << table.name << " " << field.name;
      end = field.offset + field.size;
    }
    EXPECT_EQ(end, table.record_size) << table.name;
  }
}

class SeedTest : public FileTest {
 protected:
  // Reads "table rows", with '|' for a newline, into `slots` and shows their first 36 bytes.
  int SeedRows(std::string given, std::optional<int> slots = 3) {
    std::replace(given.begin(), given.end(), '|', '\n');
    const std::string name = given.substr(0, given.find(' '));
    const auto named = [&](const records::RecordTable& each) { return each.short_name == name; };
    const auto table =
        std::find_if(records::kRecordTables.begin(), records::kRecordTables.end(), named);
    home_.Write("in", given.substr(name.size()));
    try {
      const devhost::TableImage image = devhost::ReadSeed(*table, home_.path() + "/in", slots);
      EXPECT_EQ(image.records.size(), static_cast<std::size_t>(image.slots) * table->record_size);
      std::copy_n(image.records.begin(), std::min<std::size_t>(image.records.size(), 36), Out(0));
      return image.rows;
    } catch (const std::runtime_error& error) {
      trace.debug()->trace("%s", error.what());
      return -1;
    }
  }
};

TEST_F(SeedTest, WritesRowsOrRefusesThemWithTheirPlace) {
  ExpectDone(R"(
status [] => 0 [NOTDEFINED..NOTDEFINED..NOTDEFINED..]
status // why|[{"StatusCode": "A1", "StatusKind": "S"}] 
  => 1 [A1.........SNOTDEFINED..NOTDEFINED..]
status [{"StatusCode": "A1"}, {"Slot": 2, "StatusCode": "C3"}]
  => 2 [A1..........NOTDEFINED..C3..........]
status [{"Slot": 1, "StatusCode": "B"}, {"StatusCode": "C"}, {"Slot": 0, "StatusCode": "A"}]
  => 3 [A...........B...........C...........]
status [{"StatusCode": {"hex": "4142434445464748494a4B"}, "StatusKind": {"hex": "5A"}}]
  => 1 [ABCDEFGHIJKZNOTDEFINED..NOTDEFINED..]
property [{"InstTerminalGroup": "*", "RecordId": 1650549090}]
  => 1 [baab*...............................]
status [{"StatusCode": "A"},|{"StatusCode": "B",|"Kind": 1}]
  => -1 <- unknown field: ~/in:3, row 2, field Kind>
status [{"StatusCode": "ABCDEFGHIJK"}]
  => -1 <- a text of 11 characters, 10 fit: ~/in:1, row 1, field StatusCode>
status [{"StatusCode": "A\u0000B"}] => -1 <- a NUL inside a text: ~/in:1, row 1, field StatusCode>
status [{"StatusCode": 7}] => -1 <- not a text: ~/in:1, row 1, field StatusCode>
status [{"StatusKind": "SS"}] => -1 <- not a text of one character: ~/in:1, row 1, field StatusKind>
fit [{"FitId": {"hex": "4"}}]
  => -1 <- an odd number of hexadecimal digits: ~/in:1, row 1, field FitId>
fit [{"FitId": {"hex": "4g"}}] => -1 <- not hexadecimal: "4g": ~/in:1, row 1, field FitId>
fit [{"FitId": {"text": "41"}}]
  => -1 <- an object must be {"hex": "..."}: ~/in:1, row 1, field FitId>
fit [{"Uninterpreted": "text"}]
  => -1 <- bytes are given as {"hex": "..."}: ~/in:1, row 1, field Uninterpreted>
fit [{"IndirectNextState": {"hex": "4142"}}]
  => -1 <- 2 bytes do not fit into 1: ~/in:1, row 1, field IndirectNextState>
property [{"RecordId": 2147483648}]
  => -1 <- not a whole number of 32 bits: ~/in:1, row 1, field RecordId>
property [{"RecordId": 18446744073709551615}]
  => -1 <- not a whole number of 32 bits: ~/in:1, row 1, field RecordId>
property [{"RecordId": 1.5}] => -1 <- not a whole number of 32 bits: ~/in:1, row 1, field RecordId>
status [{"Slot": -2147483649}] => -1 <- not a whole number: ~/in:1, row 1, field Slot>
status [{"Slot": -2147483648}]
  => -1 <- no slot -2147483648, VOBUSINESS#MAXATMSTATUS is 3: ~/in:1, row 1>
status [{"Slot": 2, "StatusCode": "A"}, {"StatusCode": "B"}]
  => -1 <- no slot 3, VOBUSINESS#MAXATMSTATUS is 3: ~/in:1, row 2>
status [{"StatusCode": "A"}, {"Slot": 0}] => -1 <- slot 0 given twice: ~/in:1, row 2>
fit [|{"MatchKey1": "A"}] => -1 <- no key text FitId: ~/in:2, row 1>
fit [{"FitId": ""}] => -1 <- no key text FitId: ~/in:1, row 1>
fit [{"FitId": "A",|"FitId": "B"}] => -1 <- member "FitId" given twice: ~/in:1, row 1>
fit [{"FitId": {"hex": "41", "hex": "42"}}] => -1 <- member "hex" given twice: ~/in:1, row 1>
fit [|7|] => -1 <- a row must be an object: ~/in:2, row 1>
fit [|[{}]] => -1 <- a row must be an object: ~/in:2, row 1>
fit {} => -1 <- not an array of objects: ~/in:1, column 2>
fit 7 => -1 <- not an array of objects: ~/in:1, column 2>
fit [| {"A": nil}] => -1 <- not JSON from "i" on: ~/in:2, column 9>
fit [|{] => -1 <- not JSON from "]" on: ~/in:2, column 2>
fit [{"A":| 1e999}] => -1 <- a number that is too large: ~/in:2, column 7>
fit [|{"FitId": "A"}, => -1 <- the text ends too early: ~/in:2, column 15>
fit => -1 <- the text ends too early: ~/in:1, column 1>
)",
             [this](const std::string& given) { return SeedRows(given); });
  EXPECT_THROW(devhost::ReadSeed(kRecordTables[5], "/", 3), std::runtime_error);
}

TEST_F(SeedTest, TakesAsManySlotsAsTheRowsNeed) {
  const auto seed = [this](const std::string& rows) { return Done(SeedRows(rows, std::nullopt)); };
  EXPECT_EQ(seed("status []"), "0");
  EXPECT_EQ(seed(R"(status [{"Slot": 1, "StatusCode": "B"}, {"Slot": 0, "StatusCode": "A"}])"),
            "2 [A...........B...........]");
  EXPECT_EQ(seed(R"(status [{"Slot": 2147483647}])").find("-1 <- no slot 2147483647, SEMMSL of "),
            0U);
}

TEST_F(SeedTest, FindsATablesFileInAHomeInADirectoryOrByName) {
  const RecordTable& status = kRecordTables[5];
  const std::string home = home_.path();
  EXPECT_EQ(devhost::SeedPath(status, home), home + "/atm_status.json");
  EXPECT_FALSE(devhost::ReadSeed(status, home + "/atm_status.json").has_file);
  home_.Write("tables/dump", "[]");
  EXPECT_EQ(devhost::SeedPath(status, home), home + "/tables/atm_status.json");
  EXPECT_EQ(devhost::SeedPath(status, home + "/tables/dump"), home + "/tables/dump");
  EXPECT_THROW(devhost::SeedPath(status, home + "/none"), std::runtime_error);
}

}  // namespace
