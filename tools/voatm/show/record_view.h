// A record as people read it, as programs read it, and as the development host reads it back.
#ifndef TOOLS_VOATM_SHOW_RECORD_VIEW_H
#define TOOLS_VOATM_SHOW_RECORD_VIEW_H

#include <string>
#include <vector>

#include "records/record_tables.h"
#include "show/output.h"

// Whether a slot holds no record.
bool IsFree(const records::RecordTable& table, const char* record);

// Whether a slot is as its owner creates it.
bool IsUntouched(const records::RecordTable& table, const char* record);

// Whether a text fills its field without a NUL.
bool IsUnterminated(const records::RecordField& field, const char* record);

// A field in few words: a text to its NUL or its end, a character, a number, or bytes in
// hexadecimal with runs folded ("41 00*32").
std::string FieldText(const records::RecordField& field, const char* record);

// The field's text, between two of `quote`, marked when it is unterminated.
std::string MarkedText(const records::RecordField& field, const char* record,
                       const std::string& quote = "");

// What people call a record by; "NOTDEFINED" when there is none.
std::string IdText(const records::RecordTable& table, const char* record);

// All fields by name: a text, a character and a number as such, "" for a zero character, and
// {"hex": ...} without the zeros at its end for bytes and for what cannot be printed. Nothing
// behind the NUL of a text.
Json RecordJson(const records::RecordTable& table, const char* record);

// Prints a slot, each field as MarkedText, a text or character in quotes, and what stands behind
// its NUL; of a confidential table only that something does.
void PrintWhole(const records::RecordTable& table, int slot, const char* record);

// The fields whose bytes differ between two records: [{field, before, after}], each value as in a
// row of a seed file; of a confidential table without what stands behind a text.
Json ChangesJson(const records::RecordTable& table, const char* before, const char* after);

// What a list of a table's slots begins with: {table, slots, complete}, of which some can be read.
Json SlotsJson(const records::RecordTable& table, int slots, int readable);

// A slot: {slot, free, unterminated: [field...], record}.
Json SlotJson(const records::RecordTable& table, int slot, const char* record);

// The record as a row of a seed file, from which the same bytes come back: as RecordJson, but zero
// fields are left out, and a text with anything behind its NUL, or without one, is {"hex": ...}.
Json SeedRow(const records::RecordTable& table, const char* record);

#endif  // TOOLS_VOATM_SHOW_RECORD_VIEW_H
