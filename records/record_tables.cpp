#include "records/record_tables.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "common/config_file.h"
#include "records/fields.h"

namespace records {
namespace {

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

constexpr CountSource kMaxAtm = {voatm::kBusinessFile.name, "VOBUSINESS#MAXATM"};
constexpr CountSource kMaxFit = {voatm::kBusinessFile.name, "VOBUSINESS#MAXFIT"};
constexpr CountSource kMaxSecurity = {voatm::kSecurityFile.name, "MAXSECURITY"};
constexpr CountSource kMaxAtmProperty = {voatm::kBusinessFile.name, "VOBUSINESS#MAXATMPROPERTY"};
constexpr CountSource kMaxAtmStatus = {voatm::kBusinessFile.name, "VOBUSINESS#MAXATMSTATUS"};

// The members of VoATMUtil that lead to a table begin with its stem.
#define DRIVER_MEMBERS(stem, count)                                                             \
  &VoATMUtil::stem##Shmid, &VoATMUtil::stem##Semid, &VoATMUtil::stem##KeyId, &VoATMUtil::count, \
      [](VoATMUtil& util, void* records) {                                                      \
        util.stem##Ptr = static_cast<decltype(util.stem##Ptr)>(records);                        \
      }

#define TABLE(record, name, short_name, seed_file, count, fields, key_field, confidential, stem) \
  {                                                                                              \
    name, short_name, seed_file, sizeof(record), k##count, fields, std::size(fields), key_field, \
        confidential, DRIVER_MEMBERS(stem, count)                                                \
  }

}  // namespace

const std::array<RecordTable, kTableCount> kRecordTables = {{
    TABLE(AtmMemoryTable, "ATMMEMORY", "atm", "atm_memory.json", MaxAtm, kAtmMemoryFields, 0, false,
          AtmMemory),
    TABLE(AtmFit, "ATMFITMEMORY", "fit", "atm_fit.json", MaxFit, kAtmFitFields, 0, false, AtmFit),
    TABLE(VoSecurity, "VOSECURITYMEMORY", "security", "vo_security.json", MaxSecurity,
          kSecurityFields, 0, true, Security),
    TABLE(VoAtmProperty, "ATMPROPERTYMEMORY", "property", "atm_property.json", MaxAtmProperty,
          kAtmPropertyFields, 1, false, AtmProperty),
    TABLE(VoAtmActionProperty, "ATMACTIONPROPERTYMEMORY", "action", "atm_action_property.json",
          MaxAtmProperty, kAtmActionPropertyFields, 1, false, AtmActionProperty),
    TABLE(VoAtmStatus, "ATMSTATUSMEMORY", "status", "atm_status.json", MaxAtmStatus,
          kAtmStatusFields, 0, false, AtmStatus),
}};

#undef TABLE
#undef DRIVER_MEMBERS

const RecordField* RecordTable::Find(const std::string& field) const {
  const auto* const found =
      std::find_if(begin(), end(), [&](const RecordField& each) { return field == each.name; });
  return found == end() ? nullptr : found;
}

std::vector<char> RecordTable::FreeRecord() const {
  std::vector<char> record(record_size);
  std::strcpy(&record[key().offset], kFreeSlot);
  return record;
}

}  // namespace records
