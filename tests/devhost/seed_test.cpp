#include "devhost/seed.h"

#include <algorithm>
#include <regex>
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
  // Seeds three slots from "table rows", with '|' for a newline, and shows their first 36 bytes.
  int SeedRows(std::string given) {
    std::replace(given.begin(), given.end(), '|', '\n');
    const std::string name = given.substr(0, given.find(' '));
    const auto named = [&](const records::RecordTable& each) { return each.short_name == name; };
    const auto table =
        std::find_if(records::kRecordTables.begin(), records::kRecordTables.end(), named);
    home_.Write("in", given.substr(name.size()));
    std::vector<char> records(table->record_size * 3, '#');
    try {
      const int rows = devhost::Seed(*table, home_.path() + "/in", records.data(), 3);
      std::copy_n(records.begin(), 36, Out(0));
      return rows;
    } catch (const std::runtime_error& error) {
      const std::regex parser(": syntax error .*: ");  // its words vary
      trace.debug()->trace("%s", std::regex_replace(error.what(), parser, " ").c_str());
      return -1;
    }
  }
};

TEST_F(SeedTest, WritesRowsOrRefusesThemWithTheirPlace) {
  ExpectDone(R"(
status [] => 0
status // why|[{"StatusCode": "A1", "StatusKind": "S"}] => 1 [A1.........S]
status [{"StatusCode": "A1"}, {"Slot": 2, "StatusCode": "C3"}]
  => 2 [A1..........############C3..........]
status [{"Slot": 1, "StatusCode": "B"}, {"StatusCode": "C"}, {"Slot": 0, "StatusCode": "A"}]
  => 3 [A...........B...........C...........]
status [{"StatusCode": {"hex": "4142434445464748494a4B"}, "StatusKind": {"hex": "5A"}}]
  => 1 [ABCDEFGHIJKZ]
property [{"InstTerminalGroup": "*", "RecordId": 1684234849}]
  => 1 [abcd*...............................]
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
fit {} => -1 <- not an array of objects: ~/in>
fit [|{] => -1 <- parse error at line 2, column 2 ~/in>
fit => -1 <- parse error at line 1, column 1 ~/in>
)",
             [this](const std::string& given) { return SeedRows(given); });
  EXPECT_EQ(devhost::Seed(records::kRecordTables[5], "/absent", nullptr, 3), 0);
  EXPECT_THROW(devhost::Seed(records::kRecordTables[5], "/", nullptr, 3), std::runtime_error);
}

}  // namespace
