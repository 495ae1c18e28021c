// The six shared tables as data: what a record holds, where a table's rows and slot count come
// from.
#ifndef RECORDS_RECORD_TABLES_H
#define RECORDS_RECORD_TABLES_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "voatmutil.h"

namespace records {

enum class FieldKind {
  kText,       // ends at its NUL, or at its width
  kCharacter,  // one character
  kInt32,
  kBytes,  // another process's; shown and given as bytes only
};

// One leaf of a record. Leaves of nested records stand flat, at their offset in the whole record;
// together they are all its bytes.
struct RecordField {
  const char* name;  // as in voatmutil.h
  std::size_t offset;
  std::size_t size;
  FieldKind kind;
};

// The entry below cfg/ that says how many slots a table has.
struct CountSource {
  const char* file;
  const char* key;
};

struct RecordTable {
  const char* name;        // as in a locate request
  const char* short_name;  // as people say it
  const char* seed_file;   // below tables/
  std::size_t record_size;
  CountSource count;
  const RecordField* fields;  // in record order
  std::size_t field_count;
  std::size_t key_field;  // index of the text that says "NOTDEFINED" in a free slot
  bool confidential;      // the bytes behind a text's NUL are not for showing

  // The members of a driver's object that lead to the table.
  int VoATMUtil::*shmid;
  int VoATMUtil::*semid;
  int VoATMUtil::*key_id;
  int VoATMUtil::*slots;
  void (*point)(VoATMUtil& util, void* records);  // sets the pointer to the first record

  const RecordField* begin() const { return fields; }
  const RecordField* end() const { return fields + field_count; }
  const RecordField* Find(const std::string& field) const;  // null when there is none of the name
  const RecordField& key() const { return fields[key_field]; }
  const RecordField& id() const { return fields[0]; }  // what people call a record by
  std::vector<char> FreeRecord() const;                // a slot's bytes as its owner creates it
};

// Where a table stands among them.
enum TableIndex : std::size_t { kAtm, kFit, kSecurity, kProperty, kAction, kStatus, kTableCount };

constexpr const char* kFreeSlot = "NOTDEFINED";

// The tables in the order in which a driver locates them.
extern const std::array<RecordTable, kTableCount> kRecordTables;

}  // namespace records

#endif  // RECORDS_RECORD_TABLES_H
