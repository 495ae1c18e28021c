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

// Starts a message: all zero but for its head. Returns its payload, which is made in place: what
// is not set there stays zero.
template <typename Payload>
Payload& StartManagerMessage(MessageCode code, MessageSubCode sub_code, const char* atm_id,
                             VoAtmMgrQMsg* msg) {
  static_assert(sizeof(Payload) <= sizeof msg->MsgBuffer);
  static_assert(alignof(Payload) == 1);
  memset(msg, 0, sizeof *msg);
  msg->MsgGroup = kManagerGroup;
  msg->MsgCode = code;
  msg->MsgSubCode = sub_code;
  PutText(msg->AtmId, atm_id);
  return reinterpret_cast<Payload&>(msg->MsgBuffer);
}

}  // namespace

int VoATMUtil::PackAtmStatusMsg(const char* atmId, const char* statusText, const char* extraText,
                                VoAtmMgrQMsg* msg) {
  auto& payload = StartManagerMessage<AtmStatusPayload>(kStatus, kReport, atmId, msg);
  PutText(payload.AtmId, atmId);
  PutText(payload.StatusText, statusText);
  PutText(payload.ExtraText, extraText);
  Stamp(payload);
  return 1;
}

int VoATMUtil::PackAtmLogMsg(const char* atmId, const char* logText, char logFlag,
                             VoAtmMgrQMsg* msg) {
  auto& payload = StartManagerMessage<AtmLogPayload>(kLog, kLogEntry, atmId, msg);
  PutText(payload.AtmId, atmId);
  PutText(payload.LogText, logText);
  Stamp(payload);
  payload.LogFlag = logFlag;
  return 1;
}

int VoATMUtil::PackAtmTraceNoMsg(const char* atmId, int traceNo, VoAtmMgrQMsg* msg) {
  AtmTraceNoPayload payload = {};
  SetText(payload.AtmId, atmId);
  payload.TraceNo = traceNo;
  auto& bytes = StartManagerMessage<char[sizeof payload]>(kTraceNumber, kReport, atmId, msg);
  memcpy(bytes, &payload, sizeof payload);
  return 1;
}

int VoATMUtil::PackAtmDenomMsg(const char* atmId, AtmDenomStatusMsg* denom, VoAtmMgrQMsg* msg) {
  auto& bytes = StartManagerMessage<char[sizeof *denom]>(kDenomination, kReport, atmId, msg);
  memcpy(bytes, denom, sizeof *denom);
  return 1;
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
