// The ATM property table: the settings that apply to an ATM, transaction, response and currency.
#include <cstddef>

#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "property/key_walk.h"
#include "property/request_keys.h"
#include "voatmutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

// Intended: the wording names the ATM memory table.
constexpr LockTexts kPropertySemop = SameText("Error in Semop for AtmMemory");

enum Level : std::size_t { kInst, kLogical, kAtm, kTxn, kResp, kCurrency, kLevels };

constexpr int kAnyCurrency = 0;

// The six keys of a request.
class PropertyKeys {
 public:
  PropertyKeys(VoDebugUtil* trace, const char* inst, const char* logical, const char* atm,
               int txn_code, int resp_code, int currency)
      : trace_(trace), atm_(inst, logical, atm), txn_(txn_code), currency_(currency) {
    SetDigits(resp_, resp_code, 3);
    trace_->trace(kDetail,
                  "InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%s] RespCode[%s] "
                  "CurrencyCode[%d]",
                  atm_.inst.Text(0), atm_.logical.Text(0), atm_.atm.Text(0), txn_.code, resp_,
                  currency_);
  }

  // Walks to the row. Returns its slot, kNoSlot, or kLockFailed.
  template <typename Lock>
  int WalkTo(Slots<VoAtmProperty> rows, const Lock& lock) const {
    constexpr std::size_t kTxnColumn = offsetof(VoAtmProperty, TxnCode);
    constexpr std::size_t kTxnSize = sizeof(VoAtmProperty::TxnCode);
    constexpr std::size_t kRespColumn = offsetof(VoAtmProperty, RespCode);
    constexpr std::size_t kRespSize = sizeof(VoAtmProperty::RespCode);
    constexpr std::size_t kCurrencyColumn = offsetof(VoAtmProperty, CurrencyCode);
    const ColumnKey txn[] = {{kTxnColumn, {txn_.choices[0], kTxnSize}},
                             {kTxnColumn, {txn_.choices[1], kTxnSize}},
                             {kTxnColumn, {txn_.choices[2], kTxnSize}}};
    const ColumnKey resp[] = {{kRespColumn, {resp_, kRespSize}}, {kRespColumn, {kAny, kRespSize}}};
    const ColumnKey currency[] = {{kCurrencyColumn, FieldKey(currency_)},
                                  {kCurrencyColumn, FieldKey(kAnyCurrency)}};
    const WalkLevel levels[kLevels] = {{atm_.inst.keys, 2}, {atm_.logical.keys, 2},
                                       {atm_.atm.keys, 2},  {txn, 3},
                                       {resp, 2},           {currency, 2}};
    return Walk(levels, rows, lock, [this](std::size_t level, const Choices<kLevels>& choices) {
      TraceMiss(level, choices);
    });
  }

 private:
  void TraceMiss(std::size_t level, const Choices<kLevels>& choices) const {
    const char* inst = atm_.inst.Text(choices[kInst]);
    const char* logical = atm_.logical.Text(choices[kLogical]);
    const char* atm = atm_.atm.Text(choices[kAtm]);
    const char* txn = txn_.choices[choices[kTxn]];
    switch (level) {
      case kInst:
        // Intended: only an institution terminal group without any row is an error.
        trace_->trace(choices[kInst] == 0 ? kDetail : kError,
                      "Error in Searching InstTerminalGroup[%s] in VoAtmProperty Table",
                      atm_.InstShown(choices[kInst]));
        break;
      case kLogical:
        trace_->trace(
            kDetail,
            "Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] in VoAtmProperty Table",
            inst, logical);
        break;
      case kAtm:
        trace_->trace(kDetail,
                      "Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] in "
                      "VoAtmProperty Table",
                      inst, logical, atm);
        break;
      case kTxn:
        trace_->trace(kDetail,
                      "Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] "
                      "TxnCode[%s] in VoAtmProperty Table",
                      inst, logical, atm, txn);
        break;
      case kResp:
        trace_->trace(kDetail,
                      "Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] "
                      "TxnCode[%s] RespCode[%s] in VoAtmProperty Table",
                      inst, logical, atm, txn, choices[kResp] == 0 ? resp_ : kAny);
        break;
      default:
        trace_->trace(kDetail, "Error in Searching CurrencyCode[%d] in VoAtmProperty Table",
                      choices[kCurrency] == 0 ? currency_ : kAnyCurrency);
    }
  }

  VoDebugUtil* trace_;
  AtmKeys atm_;
  TxnCodeTexts txn_;
  char resp_[sizeof(VoAtmProperty::RespCode)];
  int currency_;
};

// Returns the row's slot, or kNoSlot with the caller's switches off, or kLockFailed.
template <typename Lock>
int ResolveProperty(VoATMUtil& util, const Lock& lock, const char* inst, const char* logical,
                    const char* atm, int txn_code, int resp_code, int currency,
                    VoAtmProperty* property) {
  util.dptr->trace(kDetail,
                   "InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%d] RespCode[%d] "
                   "CurrencyCode[%d]",
                   inst, logical, atm, txn_code, resp_code, currency);
  const PropertyKeys keys(util.dptr, inst, logical, atm, txn_code, resp_code, currency);
  const int slot = keys.WalkTo(TableSlots(util.AtmPropertyPtr, util.MaxAtmProperty), lock);
  if (slot == kNoSlot) util.resetAtmProperty(property);
  return slot;
}

}  // namespace

int VoATMUtil::resetAtmProperty(VoAtmProperty* property) {
  property->PropertySwitch7 = 'N';
  property->PropertySwitch1 = 'N';
  property->PropertySwitch2 = 'N';
  property->PropertySwitch3 = 'N';
  property->PropertySwitch6 = 'N';
  property->PropertySwitch4 = 'N';
  property->PropertySwitch5 = 'N';
  return 1;
}

int VoATMUtil::readAtmProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup,
                               const char* AtmId, int TxnCode, int RespCode, int CurrencyCode,
                               VoAtmProperty* property) {
  const int slot = ResolveProperty(*this, NoLock(), InstTerminalGroup, AtmLogicalGroup, AtmId,
                                   TxnCode, RespCode, CurrencyCode, property);
  if (slot < 0) return FoundOrNot(slot);
  *property = AtmPropertyPtr[slot];
  return 1;
}

int VoATMUtil::ReadAtmProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup,
                               const char* AtmId, int TxnCode, int RespCode, int CurrencyCode,
                               VoAtmProperty* property) {
  if (!LockFlag) {
    return readAtmProperty(InstTerminalGroup, AtmLogicalGroup, AtmId, TxnCode, RespCode,
                           CurrencyCode, property);
  }
  const SlotLock lock(dptr, AtmPropertySemid, kPropertySemop);
  const int slot = ResolveProperty(*this, lock, InstTerminalGroup, AtmLogicalGroup, AtmId, TxnCode,
                                   RespCode, CurrencyCode, property);
  if (slot < 0) return FoundOrNot(slot);
  dptr->trace(kDetail, "voatmproperty tableoffset[%d]", slot);
  // Intended: the row is copied after its slot was given back, and not compared again.
  *property = AtmPropertyPtr[slot];
  dptr->trace(kDetail, "Copied voatmproperty[%d]", property->RecordId);
  return 1;
}
