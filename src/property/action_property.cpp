// The ATM action property table: what follows from the statuses that an ATM reports.
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "common/token.h"
#include "common/trace.h"
#include "property/key_walk.h"
#include "property/request_keys.h"
#include "voatmutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

// Intended: the wording names the ATM memory table.
constexpr LockTexts kActionPropertySemop = SameText("Error in Semop for AtmMemory");

enum Level : std::size_t { kInst, kLogical, kAtm, kLevels };

using Rows = Slots<VoAtmActionProperty>;

// Says that a choice for an ATM's key has no row.
void TraceMiss(VoDebugUtil* trace, const AtmKeys& keys, std::size_t level,
               const Choices<kLevels>& choices) {
  const char* inst = keys.inst.Text(choices[kInst]);
  const char* logical = keys.logical.Text(choices[kLogical]);
  switch (level) {
    case kInst:
      trace->trace(kDetail, "Error in Searching InstTerminalGroup[%s] in VoAtmActionProperty Table",
                   keys.InstShown(choices[kInst]));
      break;
    case kLogical:
      trace->trace(kDetail,
                   "Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] in "
                   "VoAtmActionProperty Table",
                   inst, logical);
      break;
    default:
      trace->trace(kDetail,
                   "Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] in "
                   "VoAtmActionProperty Table",
                   inst, logical, keys.atm.Text(choices[kAtm]));
  }
}

// One query, with or without locks.
template <typename Lock>
class ActionQuery {
 public:
  ActionQuery(VoATMUtil& util, const Lock& lock, const char* inst, const char* logical,
              const char* atm, char* statuses, int txn_code)
      : util_(util),
        lock_(lock),
        rows_(TableSlots(util.AtmActionPropertyPtr, util.MaxAtmProperty)),
        inst_(inst),
        logical_(logical),
        atm_(atm),
        statuses_(statuses),
        txn_code_(txn_code) {}

  int Run(char* action, int* txn_value, int search_type) const {
    const int atm_slot = FindAtm();
    if (atm_slot < 0) return FoundOrNot(atm_slot);
    if (search_type == STATUS_ACTION) return FindAction(atm_slot, action);
    if (search_type == TXN_VALUE) return FindTxnValue(atm_slot, txn_value);
    return 0;
  }

 private:
  // The first of the ATM's rows.
  int FindAtm() const {
    const AtmKeys keys(inst_, logical_, atm_);
    const WalkLevel levels[kLevels] = {
        {keys.inst.keys, 2}, {keys.logical.keys, 2}, {keys.atm.keys, 2}};
    return Walk(levels, rows_, lock_, [&](std::size_t level, const Choices<kLevels>& choices) {
      TraceMiss(util_.dptr, keys, level, choices);
    });
  }

  // Moves from the ATM's first row on with each status that has a flagged row there, in list order.
  // Returns the row of the last one that has. Intended: the ATM columns are not compared.
  int FindStatus(int atm_slot, char VoAtmActionProperty::*flag) const {
    int start = atm_slot;
    int found = kNoSlot;
    // Intended: fields are numbered from 1, so field 0 is empty and the one behind the last
    // separator is never looked at.
    const int fields = util_.GetNTokens(statuses_, '|');
    for (int field = 0; field < fields; ++field) {
      char code[sizeof(VoAtmActionProperty::StatusCode)] = {};
      CopyToken(statuses_, field, '|', code, sizeof code - 1);
      if (code[0] == '\0') continue;
      const int hit = FindFlagged(start, code, flag);
      if (hit == kLockFailed) return kLockFailed;
      if (hit != kNoSlot) start = found = hit;
    }
    return found;
  }

  int FindFlagged(int start, const char* code, char VoAtmActionProperty::*flag) const {
    const FieldKey key(code, sizeof(VoAtmActionProperty::StatusCode));
    return FindSlot(rows_, start, lock_, [&](const VoAtmActionProperty& row, int) {
      return key.Is(row.StatusCode) && row.*flag == 'Y';
    });
  }

  int FindAction(int atm_slot, char* action) const {
    const int slot = FindStatus(atm_slot, &VoAtmActionProperty::ActionFlag);
    if (slot == kLockFailed) return -1;
    if (slot == kNoSlot) {
      util_.dptr->trace(kDetail,
                        "Error in Reading InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] "
                        "StatusBuf[%s] from VoAtmActionProperty Table",
                        inst_, logical_, atm_, statuses_);
      return NotFound();
    }
    util_.dptr->trace(kDetail, "inside tableoffset[%d]", slot);
    // Intended: here and for a value, the row is read after its slot was given back.
    char text[sizeof(VoAtmActionProperty::ActionText)];
    SetText(text, rows_.first[slot].ActionText);
    strcpy(action, text);
    return 1;
  }

  int FindTxnValue(int atm_slot, int* txn_value) const {
    const int status_slot = FindStatus(atm_slot, &VoAtmActionProperty::TxnFlag);
    if (status_slot == kLockFailed) return -1;
    if (status_slot == kNoSlot) {
      util_.dptr->trace(kDetail, "Error in Searching StatusMsg in VoAtmActionProperty Table");
      return NotFound();
    }
    const int slot = FindTxnCode(status_slot);
    if (slot < 0) return FoundOrNot(slot);
    const VoAtmActionProperty& row = rows_.first[slot];
    // Intended: the search by transaction code ignores the flag; such a row is a silent miss.
    if (row.TxnFlag != 'Y') return NotFound();
    util_.dptr->trace(kDetail, "inside tableoffset[%d]", slot);
    char value[sizeof row.TxnValue + 1];
    CopyOut(value, row.TxnValue);
    *txn_value = atoi(value);
    return 1;
  }

  // Intended: from the status row on, whatever the row's ATM, status and flag.
  int FindTxnCode(int start) const {
    const TxnCodeTexts texts(txn_code_);
    for (const char* text : texts.choices) {
      const FieldKey key(text, sizeof(VoAtmActionProperty::TxnCode));
      const int slot = FindSlot(rows_, start, lock_, [&](const VoAtmActionProperty& row, int) {
        return key.Is(row.TxnCode);
      });
      if (slot != kNoSlot) return slot;
      util_.dptr->trace(kDetail, "Error in Searching TxnCode[%s] in VoAtmActionProperty Table",
                        text);
    }
    return kNoSlot;
  }

  VoATMUtil& util_;
  const Lock& lock_;
  Rows rows_;
  const char* inst_;
  const char* logical_;
  const char* atm_;
  char* statuses_;
  int txn_code_;
};

}  // namespace

int VoATMUtil::readAtmActionProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup,
                                     const char* AtmId, char* StatusBuf, int TxnCode,
                                     char* ActionBuf, int* TxnResult, int SearchType) {
  const NoLock lock;
  return ActionQuery(*this, lock, InstTerminalGroup, AtmLogicalGroup, AtmId, StatusBuf, TxnCode)
      .Run(ActionBuf, TxnResult, SearchType);
}

int VoATMUtil::ReadAtmActionProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup,
                                     const char* AtmId, char* StatusBuf, int TxnCode,
                                     char* ActionBuf, int* TxnResult, int SearchType) {
  if (!LockFlag) {
    return readAtmActionProperty(InstTerminalGroup, AtmLogicalGroup, AtmId, StatusBuf, TxnCode,
                                 ActionBuf, TxnResult, SearchType);
  }
  const SlotLock lock(dptr, AtmActionPropertySemid, kActionPropertySemop);
  return ActionQuery(*this, lock, InstTerminalGroup, AtmLogicalGroup, AtmId, StatusBuf, TxnCode)
      .Run(ActionBuf, TxnResult, SearchType);
}
