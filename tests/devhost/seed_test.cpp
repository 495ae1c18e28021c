#include "devhost/seed.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "temporary_home.h"

namespace {

using devhost::kRecordTables;
using devhost::RecordTable;

constexpr int kSlots = 3;
const RecordTable& kFit = kRecordTables[1];
const RecordTable& kProperty = kRecordTables[3];
const RecordTable& kStatus = kRecordTables[5];

// The fields stand in order and without overlap, and a record's bytes are theirs but for padding.
TEST(RecordFields, CoverTheirRecord) {
  for (const RecordTable& table : kRecordTables) {
    std::size_t end = 0;
    for (const devhost::RecordField& field : table) {
      EXPECT_GE(field.offset, end) << table.name << " " << field.name;
      EXPECT_LT(field.offset - end, sizeof(int)) << table.name << " " << field.name;
      end = field.offset + field.size;
    }
    EXPECT_EQ(end, table.record_size) << table.name;
    EXPECT_EQ(table.key().kind, devhost::FieldKind::kText) << table.name;
  }
}

// Seeds three slots full of '.' and returns their bytes, NULs as '0'.
std::string Seeded(const RecordTable& table, const std::string& json, int* rows) {
  const TemporaryHome home;
  std::string records(table.record_size * kSlots, '.');
  *rows = Seed(table, home.Write("rows.json", json), records.data(), kSlots);
  for (char& byte : records) byte = byte == '\0' ? '0' : byte;
  return records;
}

TEST(Seed, WritesRows) {
  const std::string free(12, '.');
  struct Case {
    const char* json;
    int rows;
    std::string records;
  };
  const Case cases[] = {
      {"[]", 0, free + free + free},
      {R"(// why
          [{"StatusCode": "A1", "StatusKind": "S"}])",
       1, "A1000000000S" + free + free},
      {R"([{"StatusCode": "A1"}, {"Slot": 2, "StatusCode": "C3"}])", 2,
       "A10000000000" + free + "C30000000000"},
      {R"([{"Slot": 1, "StatusCode": "B"}, {"StatusCode": "C"}, {"Slot": 0, "StatusCode": "A"}])",
       3, "A00000000000B00000000000C00000000000"},
      {R"([{"StatusCode": {"hex": "4142434445464748494a4B"}, "StatusKind": {"hex": "5A"}}])", 1,
       "ABCDEFGHIJKZ" + free + free},
  };
  for (const Case& row : cases) {
    int rows = -1;
    EXPECT_EQ(Seeded(kStatus, row.json, &rows), row.records) << row.json;
    EXPECT_EQ(rows, row.rows) << row.json;
  }
}

TEST(Seed, WritesNumbersInTheMachinesOrder) {
  int rows = 0;
  const std::string records =
      Seeded(kProperty, R"([{"InstTerminalGroup": "*", "CurrencyCode": -2147483648}])", &rows);
  EXPECT_EQ(records.substr(108, 4), std::string("000\x80"));
}

TEST(Seed, TakesNoFileForNoRows) {
  EXPECT_EQ(Seed(kStatus, "/nonexistent/rows.json", nullptr, kSlots), 0);
  EXPECT_THROW(Seed(kStatus, "/", nullptr, kSlots), std::runtime_error);
}

TEST(Seed, RefusesWithPlace) {
  struct Case {
    const RecordTable& table;
    const char* json;
    const char* error;  // FILE stands for the file's path
  };
  const Case cases[] = {
      {kStatus, "[{\"StatusCode\": \"A\"},\n{\"StatusCode\": \"B\",\n\"Kind\": 1}]",
       "unknown field: FILE:3, row 2, field Kind"},
      {kStatus, R"([{"StatusCode": "ABCDEFGHIJK"}])",
       "a text of 11 characters, 10 fit: FILE:1, row 1, field StatusCode"},
      {kStatus, R"([{"StatusCode": "A\u0000B"}])",
       "a NUL inside a text: FILE:1, row 1, field StatusCode"},
      {kStatus, R"([{"StatusCode": 7}])", "not a text: FILE:1, row 1, field StatusCode"},
      {kStatus, R"([{"StatusCode": "A", "StatusKind": "SS"}])",
       "not a text of one character: FILE:1, row 1, field StatusKind"},
      {kStatus, R"([{"StatusCode": "A", "StatusKind": ""}])",
       "not a text of one character: FILE:1, row 1, field StatusKind"},
      {kProperty, R"([{"InstTerminalGroup": "*", "RecordId": 2147483648}])",
       "not a whole number of 32 bits: FILE:1, row 1, field RecordId"},
      {kProperty, R"([{"InstTerminalGroup": "*", "RecordId": 18446744073709551615}])",
       "not a whole number of 32 bits: FILE:1, row 1, field RecordId"},
      {kProperty, R"([{"InstTerminalGroup": "*", "RecordId": 1.5}])",
       "not a whole number of 32 bits: FILE:1, row 1, field RecordId"},
      {kFit, R"([{"FitId": "A", "Uninterpreted": "text"}])",
       "bytes are given as {\"hex\": \"...\"}: FILE:1, row 1, field Uninterpreted"},
      {kFit, R"([{"FitId": "A", "MatchKey1": {"hex": "4"}}])",
       "an odd number of hexadecimal digits: FILE:1, row 1, field MatchKey1"},
      {kFit, R"([{"FitId": "A", "MatchKey1": {"hex": "4g"}}])",
       "not hexadecimal: \"4g\": FILE:1, row 1, field MatchKey1"},
      {kFit, R"([{"FitId": "A", "IndirectNextState": {"hex": "4142"}}])",
       "2 bytes do not fit into 1: FILE:1, row 1, field IndirectNextState"},
      {kFit, R"([{"FitId": "A", "MatchKey1": {"text": "41"}}])",
       "an object must be {\"hex\": \"...\"}: FILE:1, row 1, field MatchKey1"},
      {kFit, "[\n{\"MatchKey1\": \"A\"}]", "no key text FitId: FILE:2, row 1"},
      {kFit, R"([{"FitId": ""}])", "no key text FitId: FILE:1, row 1"},
      {kStatus, "[{\"StatusCode\": \"A\",\n\"StatusCode\": \"B\"}]",
       "member \"StatusCode\" given twice: FILE:1, row 1"},
      {kStatus, R"([{"StatusCode": {"hex": "41", "hex": "42"}}])",
       "member \"hex\" given twice: FILE:1, row 1"},
      {kStatus, R"([{"StatusCode": "A"}, {"Slot": 0, "StatusCode": "B"}])",
       "slot 0 given twice: FILE:1, row 2"},
      {kStatus, R"([{"Slot": -1, "StatusCode": "A"}])",
       "no slot -1, VOBUSINESS#MAXATMSTATUS is 3: FILE:1, row 1"},
      {kStatus, R"([{"Slot": 2, "StatusCode": "A"}, {"StatusCode": "B"}])",
       "no slot 3, VOBUSINESS#MAXATMSTATUS is 3: FILE:1, row 2"},
      {kStatus, R"([{"Slot": "1", "StatusCode": "A"}])",
       "not a whole number: FILE:1, row 1, field Slot"},
      {kStatus, "[\n7\n]", "a row must be an object: FILE:2, row 1"},
      {kStatus, "{}", "not an array of objects: FILE"},
      {kStatus, "[\n{]", "parse error at line 2, column 2: "},
      {kStatus, "", "parse error at line 1, column 1: "},
  };
  for (const Case& row : cases) {
    const TemporaryHome home;
    const std::string path = home.Write("rows.json", row.json);
    std::string expected = row.error;
    const std::size_t at = expected.find("FILE");
    if (at != std::string::npos) expected.replace(at, 4, path);
    std::vector<char> records(row.table.record_size * kSlots);
    try {
      Seed(row.table, path, records.data(), kSlots);
      ADD_FAILURE() << "accepted: " << row.json;
    } catch (const std::runtime_error& error) {
      const std::string what = error.what();
      EXPECT_EQ(at == std::string::npos ? what.substr(0, expected.size()) : what, expected);
      EXPECT_NE(what.find(path), std::string::npos) << what;
    }
  }
}

}  // namespace
