// How a member of a record becomes a RecordField. For the files that hold the records as data.
#ifndef RECORDS_FIELDS_H
#define RECORDS_FIELDS_H

#include <type_traits>

#include "records/record_tables.h"

namespace records {

template <typename Member>
constexpr FieldKind KindOf() {
  if constexpr (std::is_same_v<Member, int>) return FieldKind::kInt32;
  if constexpr (std::is_same_v<Member, char>) return FieldKind::kCharacter;
  return FieldKind::kText;
}

}  // namespace records

#define LEAF(base, record, member, kind) \
  RecordField { #member, (base) + offsetof(record, member), sizeof(record::member), kind }

// A member of a record that itself begins at `base`; its kind follows from its type.
#define MEMBER_AT(base, record, member) \
  LEAF(base, record, member, KindOf<decltype(record::member)>())
#define MEMBER(record, member) MEMBER_AT(0, record, member)

// The same for a member without a meaning here.
#define BYTES_AT(base, record, member) LEAF(base, record, member, FieldKind::kBytes)
#define BYTES(record, member) BYTES_AT(0, record, member)

#endif  // RECORDS_FIELDS_H
