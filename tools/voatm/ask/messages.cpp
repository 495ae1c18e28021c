#include "ask/messages.h"

#include <cstring>
#include <memory>

#include "records/fields.h"

namespace {

using records::FieldKind;
using records::KindOf;
using records::RecordField;

constexpr std::size_t kPayload = offsetof(VoAtmMgrQMsg, MsgBuffer);
constexpr std::size_t kAlertSize =
    offsetof(VoAlertMgrMsg, AlertText) + sizeof(VoAlertMgrMsg::AlertText);

const MessagePart kManagerHead = {"VoAtmMgrQMsg",
                                  0,
                                  {MEMBER(VoAtmMgrQMsg, MsgGroup), MEMBER(VoAtmMgrQMsg, MsgCode),
                                   MEMBER(VoAtmMgrQMsg, MsgSubCode), MEMBER(VoAtmMgrQMsg, AtmId)}};

const MessagePart kStatusPayload = {
    "AtmStatusPayload",
    kPayload,
    {MEMBER(AtmStatusPayload, AtmId), MEMBER(AtmStatusPayload, StatusText),
     MEMBER(AtmStatusPayload, ExtraText), MEMBER(AtmStatusPayload, Date),
     MEMBER(AtmStatusPayload, Time)}};

const MessagePart kLog = {
    "AtmLogPayload",
    kPayload,
    {MEMBER(AtmLogPayload, AtmId), MEMBER(AtmLogPayload, LogText), MEMBER(AtmLogPayload, Date),
     MEMBER(AtmLogPayload, Time), MEMBER(AtmLogPayload, LogFlag)}};

const MessagePart kTraceNo = {
    "AtmTraceNoPayload",
    kPayload,
    {MEMBER(AtmTraceNoPayload, AtmId), MEMBER(AtmTraceNoPayload, TraceNo)}};

MessagePart WithNotes() {
  MessagePart part = {"AtmDenomStatusMsg",
                      kPayload,
                      {MEMBER(AtmDenomStatusMsg, DenomText1), MEMBER(AtmDenomStatusMsg, DenomText2),
                       MEMBER(AtmDenomStatusMsg, DenomText3)}};
  static constexpr const char* kNotes[] = {"DenomNotes A", "DenomNotes B", "DenomNotes C",
                                           "DenomNotes D", "DenomNotes E", "DenomNotes F",
                                           "DenomNotes G", "DenomNotes H"};
  std::size_t offset = offsetof(AtmDenomStatusMsg, DenomNotes);
  for (const char* name : kNotes) {
    part.fields.push_back({name, offset, sizeof(int), FieldKind::kInt32});
    offset += sizeof(int);
  }
  part.fields.push_back(MEMBER(AtmDenomStatusMsg, DenomNum1));
  part.fields.push_back(MEMBER(AtmDenomStatusMsg, DenomNum2));
  return part;
}

const MessagePart kDenom = WithNotes();

const MessagePart kAlert = {"VoAlertMgrMsg",
                            0,
                            {MEMBER(VoAlertMgrMsg, MsgCode), MEMBER(VoAlertMgrMsg, AlertSource),
                             MEMBER(VoAlertMgrMsg, AlertText)}};

const MessagePart kTransaction = {
    "VoDevMsg or VoTxnMsg",
    0,
    {MEMBER(VoMsgLayout, MsgType), MEMBER(VoMsgLayout, TxnCode), MEMBER(VoMsgLayout, TraceNo),
     MEMBER(VoMsgLayout, ReasonCode), MEMBER(VoMsgLayout, MemTraceNo)}};

// A payload, and the operation whose head tells it.
struct Packing {
  const MessagePart* payload;
  int (*pack)(VoATMUtil& util, VoAtmMgrQMsg* message);
};

constexpr Packing kPackings[] = {
    {&kStatusPayload,
     [](VoATMUtil& util, VoAtmMgrQMsg* m) { return util.PackAtmStatusMsg("", "", "", m); }},
    {&kLog, [](VoATMUtil& util, VoAtmMgrQMsg* m) { return util.PackAtmLogMsg("", "", ' ', m); }},
    {&kTraceNo, [](VoATMUtil& util, VoAtmMgrQMsg* m) { return util.PackAtmTraceNoMsg("", 0, m); }},
    {&kDenom,
     [](VoATMUtil& util, VoAtmMgrQMsg* m) {
       AtmDenomStatusMsg denom{};
       return util.PackAtmDenomMsg("", &denom, m);
     }},
};

}  // namespace

std::vector<MessagePart> TakeApart(VoATMUtil& util, const std::string& bytes) {
  if (bytes.size() == sizeof(VoMsgLayout)) return {kTransaction};
  if (bytes.size() == sizeof(VoAtmMgrQMsg)) {
    for (const Packing& packing : kPackings) {
      const auto packed = std::make_unique<VoAtmMgrQMsg>();
      packing.pack(util, packed.get());
      const bool same = std::memcmp(packed.get(), bytes.data(), offsetof(VoAtmMgrQMsg, AtmId)) == 0;
      if (same) return {kManagerHead, *packing.payload};
    }
  }
  VoAlertMgrMsg alert{};
  util.PackAtmAlertMsg("", "", &alert);
  if (bytes.size() < kAlertSize || std::memcmp(&alert.MsgCode, bytes.data(), sizeof(int)) != 0) {
    return {};
  }
  return {kAlert};
}
