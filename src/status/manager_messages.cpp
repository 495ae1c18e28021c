// Messages to the ATM manager and the alert manager.
#include <cstring>

#include "common/text_field.h"
#include "voatmutil.h"
#include "vodatetimeutil.h"

using namespace voatm;

namespace {

enum { kManagerGroup = 2, kAlertCode = 1 };
enum MessageCode { kLog = 8, kStatus = 9, kDenomination = 10, kTraceNumber = 11 };
enum MessageSubCode { kReport = 13, kLogEntry = 15 };

// Puts date and time into a payload as six digits each; the time is taken first.
template <typename Payload>
void Stamp(Payload& payload) {
  VoDateTimeUtil clock;
  SetDigits(payload.Time, clock.getSysTime(), 6);
  SetDigits(payload.Date, clock.getSysDate(), 6);
}

template <typename Payload>
int PackManagerMessage(MessageCode code, MessageSubCode sub_code, const char* atm_id,
                       const Payload& payload, VoAtmMgrQMsg* msg) {
  static_assert(sizeof payload <= sizeof msg->MsgBuffer);
  memset(msg, 0, sizeof *msg);
  msg->MsgGroup = kManagerGroup;
  msg->MsgCode = code;
  msg->MsgSubCode = sub_code;
  SetText(msg->AtmId, atm_id);
  memcpy(msg->MsgBuffer, &payload, sizeof payload);
  return 1;
}

}  // namespace

int VoATMUtil::PackAtmStatusMsg(const char* atmId, const char* statusText, const char* extraText,
                                VoAtmMgrQMsg* msg) {
  AtmStatusPayload payload = {};
  SetText(payload.AtmId, atmId);
  SetText(payload.StatusText, statusText);
  SetText(payload.ExtraText, extraText);
  Stamp(payload);
  return PackManagerMessage(kStatus, kReport, atmId, payload, msg);
}

int VoATMUtil::PackAtmLogMsg(const char* atmId, const char* logText, char logFlag,
                             VoAtmMgrQMsg* msg) {
  AtmLogPayload payload = {};
  SetText(payload.AtmId, atmId);
  SetText(payload.LogText, logText);
  Stamp(payload);
  payload.LogFlag = logFlag;
  return PackManagerMessage(kLog, kLogEntry, atmId, payload, msg);
}

int VoATMUtil::PackAtmTraceNoMsg(const char* atmId, int traceNo, VoAtmMgrQMsg* msg) {
  AtmTraceNoPayload payload = {};
  SetText(payload.AtmId, atmId);
  payload.TraceNo = traceNo;
  return PackManagerMessage(kTraceNumber, kReport, atmId, payload, msg);
}

int VoATMUtil::PackAtmDenomMsg(const char* atmId, AtmDenomStatusMsg* denom, VoAtmMgrQMsg* msg) {
  return PackManagerMessage(kDenomination, kReport, atmId, *denom, msg);
}

// Intended: the message is not zeroed; what follows the alert text is the alert manager's.
int VoATMUtil::PackAtmAlertMsg(const char* source, const char* alertText, VoAlertMgrMsg* msg) {
  msg->MsgCode = kAlertCode;
  SetText(msg->AlertSource, source);
  SetText(msg->AlertText, alertText);
  return 1;
}

int VoATMUtil::TransformINboundMsg(VoDevMsg* dev, VoTxnMsg* txn) {
  memcpy(dev, txn, sizeof *dev);
  return 1;
}

int VoATMUtil::TransformOUTboundMsg(VoTxnMsg* txn, VoDevMsg* dev) {
  memcpy(txn, dev, sizeof *txn);
  return 1;
}
