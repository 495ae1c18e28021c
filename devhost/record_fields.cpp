#include "devhost/record_fields.h"

#include <type_traits>

#include "voatmutil.h"

namespace devhost {
namespace {

template <typename Member>
constexpr FieldKind KindOf() {
  if constexpr (std::is_same_v<Member, int>) return FieldKind::kInt32;
  if constexpr (std::is_same_v<Member, char>) return FieldKind::kCharacter;
  return FieldKind::kText;
}

template <typename Member>
constexpr RecordField Leaf(const char* name, std::size_t offset, FieldKind kind) {
  return {name, offset, sizeof(Member), kind};
}

#define LEAF(base, record, member, kind) \
  Leaf<decltype(record::member)>(#member, (base) + offsetof(record, member), kind)

// A member of a record that itself begins at `base`; its kind follows from its type.
#define MEMBER_AT(base, record, member) \
  LEAF(base, record, member, KindOf<decltype(record::member)>())
#define MEMBER(record, member) MEMBER_AT(0, record, member)

// The same for a member without a meaning here.
#define BYTES_AT(base, record, member) LEAF(base, record, member, FieldKind::kBytes)
#define BYTES(record, member) BYTES_AT(0, record, member)

constexpr std::size_t kDetail = offsetof(AtmMemoryTable, AtmDetail);

constexpr RecordField kAtmMemoryFields[] = {
    MEMBER(AtmMemoryTable, AtmId),
    BYTES_AT(kDetail, AtmDetailBlock, Uninterpreted),
    MEMBER_AT(kDetail, AtmDetailBlock, GroupingKey),
    BYTES(AtmMemoryTable, Rest),
};

constexpr RecordField kAtmFitFields[] = {
    MEMBER(AtmFit, FitId),
    MEMBER(AtmFit, MatchKey1),
    MEMBER(AtmFit, MatchKey2),
    MEMBER(AtmFit, MatchKey3),
    MEMBER(AtmFit, CardPrefix),
    BYTES(AtmFit, Uninterpreted),
    MEMBER(AtmFit, IndirectNextState),
};

constexpr RecordField kSecurityFields[] = {MEMBER(VoSecurity, SecurityId)};

constexpr RecordField kAtmPropertyFields[] = {
    MEMBER(VoAtmProperty, RecordId),        MEMBER(VoAtmProperty, InstTerminalGroup),
    MEMBER(VoAtmProperty, AtmLogicalGroup), MEMBER(VoAtmProperty, AtmId),
    MEMBER(VoAtmProperty, PropertySwitch1), MEMBER(VoAtmProperty, PropertySwitch2),
    BYTES(VoAtmProperty, Uninterpreted1),   MEMBER(VoAtmProperty, PropertySwitch3),
    MEMBER(VoAtmProperty, PropertySwitch4), MEMBER(VoAtmProperty, PropertySwitch5),
    MEMBER(VoAtmProperty, PropertySwitch6), BYTES(VoAtmProperty, Uninterpreted2),
    MEMBER(VoAtmProperty, TxnCode),         MEMBER(VoAtmProperty, RespCode),
    MEMBER(VoAtmProperty, PropertySwitch7), BYTES(VoAtmProperty, Padding),
    MEMBER(VoAtmProperty, CurrencyCode),    BYTES(VoAtmProperty, Uninterpreted3),
};

constexpr RecordField kAtmActionPropertyFields[] = {
    MEMBER(VoAtmActionProperty, RecordId),        MEMBER(VoAtmActionProperty, InstTerminalGroup),
    MEMBER(VoAtmActionProperty, AtmLogicalGroup), MEMBER(VoAtmActionProperty, AtmId),
    MEMBER(VoAtmActionProperty, StatusCode),      MEMBER(VoAtmActionProperty, ActionFlag),
    MEMBER(VoAtmActionProperty, ActionText),      MEMBER(VoAtmActionProperty, TxnFlag),
    MEMBER(VoAtmActionProperty, TxnCode),         MEMBER(VoAtmActionProperty, TxnValue),
};

constexpr RecordField kAtmStatusFields[] = {
    MEMBER(VoAtmStatus, StatusCode),
    MEMBER(VoAtmStatus, StatusKind),
};

#undef LEAF
#undef MEMBER_AT
#undef MEMBER
#undef BYTES_AT
#undef BYTES

constexpr CountSource kMaxAtm = {"vobusiness.cfg", "VOBUSINESS#MAXATM"};
constexpr CountSource kMaxFit = {"vobusiness.cfg", "VOBUSINESS#MAXFIT"};
constexpr CountSource kMaxSecurity = {"vosecurity.cfg", "MAXSECURITY"};
constexpr CountSource kMaxAtmProperty = {"vobusiness.cfg", "VOBUSINESS#MAXATMPROPERTY"};
constexpr CountSource kMaxAtmStatus = {"vobusiness.cfg", "VOBUSINESS#MAXATMSTATUS"};

template <typename Record, std::size_t kCount>
constexpr RecordTable Table(const char* name, const char* short_name, const char* seed_file,
                            CountSource count, const RecordField (&fields)[kCount],
                            std::size_t key_field, bool confidential = false) {
  return {name,   short_name, seed_file, sizeof(Record), count,
          fields, kCount,     key_field, confidential};
}

}  // namespace

const std::array<RecordTable, kTableCount> kRecordTables = {
    Table<AtmMemoryTable>("ATMMEMORY", "atm", "atm_memory.json", kMaxAtm, kAtmMemoryFields, 0),
    Table<AtmFit>("ATMFITMEMORY", "fit", "atm_fit.json", kMaxFit, kAtmFitFields, 0),
    Table<VoSecurity>("VOSECURITYMEMORY", "security", "vo_security.json", kMaxSecurity,
                      kSecurityFields, 0, true),
    Table<VoAtmProperty>("ATMPROPERTYMEMORY", "property", "atm_property.json", kMaxAtmProperty,
                         kAtmPropertyFields, 1),
    Table<VoAtmActionProperty>("ATMACTIONPROPERTYMEMORY", "action", "atm_action_property.json",
                               kMaxAtmProperty, kAtmActionPropertyFields, 1),
    Table<VoAtmStatus>("ATMSTATUSMEMORY", "status", "atm_status.json", kMaxAtmStatus,
                       kAtmStatusFields, 0),
};

}  // namespace devhost
