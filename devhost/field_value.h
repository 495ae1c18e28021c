// A record's field from a JSON value.
#ifndef DEVHOST_FIELD_VALUE_H
#define DEVHOST_FIELD_VALUE_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "records/record_tables.h"

namespace devhost {

// A text of foreign input as JSON writes it, so that no byte of it ends or splits a message.
std::string Quotable(const std::string& text);

// The integer of a value when it is one and lies in int's range.
std::optional<int> IntOf(const nlohmann::ordered_json& value);

// Writes a value into the field of a record: a string into a text, one of a single character into a
// character, a number into an int32, {"hex": "..."} into any. Bytes of the field that the value
// does not reach stay. Returns why the value is refused, and nothing when it was written.
std::optional<std::string> PutField(const records::RecordField& field,
                                    const nlohmann::ordered_json& value, char* record);

}  // namespace devhost

#endif  // DEVHOST_FIELD_VALUE_H
