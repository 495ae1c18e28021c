// The requests that are answered from what is given alone.
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "ask/messages.h"
#include "ask/question.h"
#include "devhost/system_call.h"
#include "lts/status_text.h"
#include "show/record_view.h"

namespace {

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
