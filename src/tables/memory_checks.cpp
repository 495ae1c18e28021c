// Presence tests and counts on the property and status tables.
#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "voatmutil.h"

using namespace voatm;

namespace {

constexpr LockTexts kAtmPropertySemop = SameText("Error in Semop for AtmProperty");
constexpr LockTexts kAtmActionPropertySemop = SameText("Error in Semop for AtmActionProperty");
constexpr LockTexts kAtmStatusSemop = SameText("Error in Semop for AtmStatus");

Slots<VoAtmProperty> Properties(const VoATMUtil& util) {
  return TableSlots(util.AtmPropertyPtr, util.MaxAtmProperty);
}

SlotLock PropertyLock(const VoATMUtil& util) {
  return {util.dptr, util.AtmPropertySemid, kAtmPropertySemop};
}

// Intended: this table has the property table's slot count.
Slots<VoAtmActionProperty> ActionProperties(const VoATMUtil& util) {
  return TableSlots(util.AtmActionPropertyPtr, util.MaxAtmProperty);
}

SlotLock ActionPropertyLock(const VoATMUtil& util) {
  return {util.dptr, util.AtmActionPropertySemid, kAtmActionPropertySemop};
}

template <typename Record, typename Lock>
int VerifyRecordId(Slots<Record> slots, const Lock& lock, int record_id) {
  return FoundOrNot(FindSlot(
      slots, 0, lock, [&](const Record& record, int) { return record.RecordId == record_id; }));
}

template <typename Record, typename Lock>
int CountDefined(Slots<Record> slots, const Lock& lock) {
  const FieldKey free_slot(kNotDefined, sizeof(Record::InstTerminalGroup));
  return CountSlots(slots, lock,
                    [&](const Record& record) { return !free_slot.Is(record.InstTerminalGroup); });
}

template <typename Lock>
int VerifyStatus(const VoATMUtil& util, const Lock& lock, const char* code) {
  const FieldKey key(code, sizeof(VoAtmStatus::StatusCode));
  return FoundOrNot(FindSlot(TableSlots(util.AtmStatusPtr, util.MaxAtmStatus), 0, lock,
                             [&](const VoAtmStatus& s, int) { return key.Is(s.StatusCode); }));
}

}  // namespace

int VoATMUtil::verifyAtmPropertyMemory(int recordId) {
  return VerifyRecordId(Properties(*this), NoLock(), recordId);
}

int VoATMUtil::VerifyAtmPropertyMemory(int recordId) {
  if (!LockFlag) return verifyAtmPropertyMemory(recordId);
  return VerifyRecordId(Properties(*this), PropertyLock(*this), recordId);
}

int VoATMUtil::verifyAtmActionPropertyMemory(int recordId) {
  return VerifyRecordId(ActionProperties(*this), NoLock(), recordId);
}

int VoATMUtil::VerifyAtmActionPropertyMemory(int recordId) {
  if (!LockFlag) return verifyAtmActionPropertyMemory(recordId);
  return VerifyRecordId(ActionProperties(*this), ActionPropertyLock(*this), recordId);
}

int VoATMUtil::verifyAtmStatusMemory(const char* statusCode) {
  return VerifyStatus(*this, NoLock(), statusCode);
}

int VoATMUtil::VerifyAtmStatusMemory(const char* statusCode) {
  if (!LockFlag) return verifyAtmStatusMemory(statusCode);
  const SlotLock lock(dptr, AtmStatusSemid, kAtmStatusSemop);
  return VerifyStatus(*this, lock, statusCode);
}

int VoATMUtil::getAtmPropertyCount() { return CountDefined(Properties(*this), NoLock()); }

int VoATMUtil::GetAtmPropertyCount() {
  if (!LockFlag) return getAtmPropertyCount();
  return CountDefined(Properties(*this), PropertyLock(*this));
}

int VoATMUtil::getAtmActionPropertyCount() {
  return CountDefined(ActionProperties(*this), NoLock());
}

int VoATMUtil::GetAtmActionPropertyCount() {
  if (!LockFlag) return getAtmActionPropertyCount();
  return CountDefined(ActionProperties(*this), ActionPropertyLock(*this));
}
