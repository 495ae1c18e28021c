// The requests that are answered from what is given alone.
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "ask/question.h"
#include "devhost/system_call.h"
#include "lts/status_text.h"
#include "records/fields.h"
#include "show/record_view.h"

namespace {

using records::FieldKind;
using records::KindOf;
using records::RecordField;

// A head, or the payload behind it.
struct MessagePart {
  const char* name;
  std::size_t offset;  // of its first byte in the message
  std::vector<RecordField> fields;
};

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

// Says what a message consists of, by its size and its head, which is compared with the heads that
// the library itself packs; nothing for bytes that are no message, or fewer than one has.
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

// The text field by field, each as the ATM sent it.
Json StatusFacts(const char* text) {
  using namespace voatm;
  const StatusText status(text);
  Json facts = {{"mark", status.Text(kStatusMark).text},
                {"trace number", status.Text(kTraceNumber).text},
                {"end", status.Text(kEnd).text}};
  for (std::size_t i = 0; i < kStatusCassettes; ++i) {
    const StatusField notes = {kNotes.offset + i * kNotes.size, kNotes.size};
    facts[std::string("notes ") + static_cast<char>('A' + i)] = status.Text(notes).text;
  }
  facts["coin amount"] = status.Text(kCoinAmount).text;
  facts["coin status"] = status.Text(kCoinStatus).text;
  facts["deposit"] = status.Text(kDepositMark).text;
  facts["deposit groups"] = status.Text(kDepositGroups).text;
  return facts;
}

// The kept message and the logic are copies: what the library makes of them is the answer.
Answer AskLastTransaction(VoATMUtil& util, const Inputs& inputs) {
  constexpr std::size_t kLeast = 52;  // characters that the library may look at
  std::string status = inputs["status"];
  if (status.size() < kLeast) status.resize(kLeast);
  std::string logic = inputs["sent"];
  const auto message = std::make_unique<VoDevMsg>();
  message->TxnCode = inputs.Number("txn");
  message->TraceNo = message->MemTraceNo = inputs.Number("trace");
  message->MsgType = inputs.Number("type");
  message->ReasonCode = inputs.Number("reason");
  char unused[1] = {};
  const bool reversed = util.CheckLTS_TVS(message.get(), logic.data(), status.data(), unused,
                                          unused, unused, unused) == 1;
  Answer answer = {reversed, StatusFacts(inputs["status"])};
  answer.facts["decided"] =
      reversed ? "the kept message becomes a reversal, to be sent" : "nothing is sent";
  if (!reversed) return answer;
  answer.facts["MsgType"] = std::to_string(message->MsgType);
  answer.facts["ReasonCode"] = std::to_string(message->ReasonCode);
  return answer;
}

// Of what is longer than any message as much as shows that.
constexpr std::size_t kMostRead = sizeof(VoMsgLayout) + 1;

std::string ReadMessage(const std::string& path) {
  std::string bytes;
  if (path == "-") {
    bytes.resize(kMostRead);
    std::cin.read(bytes.data(), kMostRead);
    bytes.resize(static_cast<std::size_t>(std::cin.gcount()));
    return bytes;
  }
  const int error = devhost::ReadFile(path, &bytes, kMostRead);
  if (error != 0) throw devhost::SystemError(error, "cannot read " + path);
  return bytes;
}

Answer AskMessage(VoATMUtil& util, const Inputs& inputs) {
  const std::string path = inputs["file"];
  const std::string bytes = ReadMessage(path);
  const std::vector<MessagePart> parts = TakeApart(util, bytes);
  if (parts.empty()) {
    const bool is_longer = bytes.size() == kMostRead;
    throw std::runtime_error(
        "no message of the library: " +
        (is_longer ? "more than " + std::to_string(kMostRead - 1) : std::to_string(bytes.size())) +
        " bytes, and no operation packs such a head: " + path);
  }
  Answer answer = {true};
  for (const MessagePart& part : parts) {
    AddFact("is", part.name, &answer.facts);
    for (const records::RecordField& field : part.fields) {
      if (field.kind == records::FieldKind::kBytes) continue;
      AddFact(field.name, FieldText(field, bytes.data() + part.offset), &answer.facts);
    }
  }
  return answer;
}

}  // namespace

const std::vector<Question>& TextQuestions() {
  static const std::vector<Question> kQuestions = {
      {"last-transaction", Ground::kNothing, "status sent txn trace [type] [reason]",
       AskLastTransaction},
      {"message", Ground::kNothing, "file", AskMessage},
  };
  return kQuestions;
}
