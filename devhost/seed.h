// Rows of a table from text.
//
// A seed file is JSON, with // comments: an array of objects whose members are a record's fields.
//
//   // read by the development host
//   [
//     {"FitId": "VISA", "CardPrefix": "4FFFFFFFFF", "IndirectNextState": "C"},
//     {"Slot": 7, "FitId": "LAST", "Uninterpreted": {"hex": "0102ff"}}
//   ]
//
// A text takes a string, a character a string of one, an int32 a number; any field takes
// {"hex": "..."} for exact bytes, at most its width. What is not given is zero. A row goes to the
// slot behind the row before it, the first to slot 0, unless it says its "Slot".
#ifndef DEVHOST_SEED_H
#define DEVHOST_SEED_H

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "records/record_tables.h"

namespace devhost {

// Why a file's rows are refused: "cause: path:line, row 2, field FitId", or ", column 7" where the
// text itself is refused.
struct SeedError : std::runtime_error {
  SeedError(const std::string& file, std::size_t at_line, std::size_t at_column,
            const std::string& cause, const std::string& row);

  std::string path;
  std::size_t line;    // from 1
  std::size_t column;  // from 1
  std::string text;    // cause, row and field
};

// A table in memory of its own.
struct TableImage {
  std::string file;       // that the rows are from
  bool has_file = false;  // whether there is such a file; without it no slot has a row
  int rows = 0;           // in the file
  int slots = 0;
  std::vector<char> records;  // as many as slots; without a row "NOTDEFINED"
};

// Reads the rows of the file at `path` into a table with `slots` slots, or when none are given with
// as many as the rows need. Throws SeedError for anything that is not as above: an unknown or
// repeated member, a value that does not fit its field, a row without its key text, a slot given
// twice or off the table; also for a file that cannot be read.
TableImage ReadSeed(const records::RecordTable& table, const std::string& path,
                    std::optional<int> slots = std::nullopt);

// Adds free slots behind the records of a table, so that it has as many as these.
void AddFreeSlots(const records::RecordTable& table, int slots, std::vector<char>* bytes);

// The file of a table's rows: `from` itself, or where it is a directory the table's own file in it,
// in its tables/ when it has one. Throws std::runtime_error when there is nothing at `from`.
std::string SeedPath(const records::RecordTable& table, const std::string& from);

}  // namespace devhost

#endif  // DEVHOST_SEED_H
