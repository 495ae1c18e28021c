// The ATM property table: the settings that apply to an ATM, transaction, response and currency.
#include <cstddef>

#include "common/slot_scan.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "property/key_walk.h"
#include "property/walk_keys.h"
#include "voatmutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

// Intended: the wording names the ATM memory table.
constexpr LockTexts kPropertySemop = SameText("Error in Semop for AtmMemory");

enum Level : std::size_t { kInst, kLogical, kAtm, kTxn, kResp, kCurrency, kLevels };

constexpr int kLevelChoices[kLevels] = {2, 2, 2, 3, 2, 2};

// The six keys of a request.
class PropertyKeys {
 public:
  PropertyKeys(VoDebugUtil* trace, const AtmKeys& atm, int txn_code, int resp_code, int currency)
      : trace_(trace), atm_(atm), txn_(txn_code), currency_{currency, 0} {
    char digits[4];
    FormatText(digits, "%03d", resp_code);
    resp_[0] = TextKey<4>(digits);
    resp_[1] = TextKey<4>(kAny);
  }

  bool Matches(const VoAtmProperty& row, std::size_t level, int choice) const {
    switch (level) {
      case kTxn:
        return txn_.choices[choice].Is(row.TxnCode);
      case kResp:
        return resp_[choice].Is(row.RespCode);
      case kCurrency:
        return currency_[choice] == row.CurrencyCode;
      default:
        return atm_.Matches(row, level, choice);
    }
  }

  void TraceStart() const {
    trace_->trace(kDetail,
                  "InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%s] RespCode[%s] "
                  "CurrencyCode[%d]",
                  atm_.inst[0].text(), atm_.logical[0].text(), atm_.atm[0].text(),
                  txn_.choices[0].text(), resp_[0].text(), currency_[0]);
  }

  void TraceMiss(std::size_t level, const int (&choices)[kLevels]) const {
    const char* inst = atm_.inst[choices[kInst]].text();
    const char* logical = atm_.logical[choices[kLogical]].text();
    const char* atm = atm_.atm[choices[kAtm]].text();
    const char* txn = txn_.choices[choices[kTxn]].text();
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
                      inst, logical, atm, txn, resp_[choices[kResp]].text());
        break;
      default:
        trace_->trace(kDetail, "Error in Searching CurrencyCode[%d] in VoAtmProperty Table",
                      currency_[choices[kCurrency]]);
    }
  }

 private:
  VoDebugUtil* trace_;
  AtmKeys atm_;
  TxnCodeKeys txn_;
  TextKey<4> resp_[2];
  int currency_[2];
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
  const PropertyKeys keys(util.dptr, {inst, logical, atm}, txn_code, resp_code, currency);
  keys.TraceStart();
  const Slots<VoAtmProperty> rows = TableSlots(util.AtmPropertyPtr, util.MaxAtmProperty);
  const int slot = Walk(kLevelChoices, keys, rows, lock);
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
  if (slot < 0) return -1;
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
  if (slot < 0) return -1;
  dptr->trace(kDetail, "voatmproperty tableoffset[%d]", slot);
  // Intended: the row is copied after its slot was given back, and not compared again.
  *property = AtmPropertyPtr[slot];
  dptr->trace(kDetail, "Copied voatmproperty[%d]", property->RecordId);
  return 1;
}
