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

#include <string>

#include "records/record_tables.h"

namespace devhost {

// Writes the rows of the file at `path` into `records`, which has `slots` records of the table;
// slots without a row stay as they are. Returns the number of rows, 0 when there is no such file.
// Throws std::runtime_error with cause, file, line, row (from 1) and field for anything that is not
// as above: an unknown or repeated member, a value that does not fit its field, a row without its
// key text, a slot given twice or off the table.
int Seed(const records::RecordTable& table, const std::string& path, char* records, int slots);

}  // namespace devhost

#endif  // DEVHOST_SEED_H
