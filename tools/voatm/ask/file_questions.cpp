// The requests that configuration files answer.
#include "ask/question.h"
#include "options.h"

namespace {

// Holds any output of the library that is read from a file.
using Output = char[256];

Answer AskTxnCode(VoATMUtil& util, const Inputs& inputs) {
  Output code = {}, amount = {}, currency = {}, printer = {}, request = {};
  const int result =
      util.LoadTxnCode(inputs["key1"], inputs["key2"], code, amount, currency, printer, request,
                       inputs["s1"], inputs["s2"], inputs["s3"], inputs["fallback"]);
  return AnswerWhen(result == 0, {{"TxnCode", code},
                                  {"Amount", amount},
                                  {"CurrCode", currency},
                                  {"PrinterFlag", printer},
                                  {"TxnReqFlag", request}});
}

Answer AskResponse(VoATMUtil& util, const Inputs& inputs) {
  const auto load = inputs.Is("response", "good") ? &VoATMUtil::LoadGoodResponseState
                                                  : &VoATMUtil::LoadBadResponseState;
  Output state = {}, screen = {};
  const int result = (util.*load)(inputs["key1"], inputs["key2"], state, screen, inputs["s1"],
                                  inputs["s2"], inputs["s3"], inputs["fallback"]);
  return AnswerWhen(result == 1, {{"StateNo", state}, {"ScreenNo", screen}});
}

Answer AskScreen(VoATMUtil& util, const Inputs& inputs) {
  Output screen = {};
  const int result =
      util.GetEmptyScreen(inputs["s1"], inputs["s2"], inputs["s3"], screen, inputs["fallback"]);
  return AnswerWhen(result == 1, {{"ScreenNo", screen}});
}

// What one of the operations on a template says.
void AddTo(Answer* answer, const char* operation, bool found, const Json& facts) {
  answer->found = answer->found && found;
  answer->facts.update(found ? facts : Json{{operation, "not found"}});
}

constexpr int kAsBefore = -1;  // no type: the driver's own stays

Answer AskTemplate(VoATMUtil& util, const Inputs& inputs) {
  const char* const s1 = inputs["s1"];
  const char* const s2 = inputs["s2"];
  const char* const s3 = inputs["s3"];
  const char* const fallback = inputs["fallback"];
  const char* const name = inputs["template"];
  const int number = inputs.Number("number");
  OARDetails details{}, flags{};
  for (OARKeyEntry& key : details.Keys) key.KeyType = kAsBefore;
  Output key_details = {}, time_out = {};
  const bool loaded = util.LoadOARTemplate(s1, s2, s3, name, number, &details, fallback) == 1;
  Json keys = Json::object();
  for (const OARKeyEntry& key : details.Keys) {
    const std::string type = key.KeyType == kAsBefore ? "as it was" : std::to_string(key.KeyType);
    AddFact(std::string(1, key.KeyId), "type " + type + ", value " + std::to_string(key.KeyValue),
            &keys);
  }
  const bool packed =
      util.PackKeyDetails(s1, s2, s3, name, number, key_details, &flags, fallback) == 1;
  const bool timed = util.GetOARTimeOut(s1, s2, s3, name, number, time_out, fallback) == 1;
  const int variables = util.GetTotalVar(s1, s2, s3, name, number, fallback);

  Answer answer = {true};
  AddTo(&answer, "LoadOARTemplate", loaded, keys);
  AddTo(&answer, "PackKeyDetails", packed, {{"KeyDetails", key_details}});
  AddTo(&answer, "GetOARTimeOut", timed, {{"TimeOut", time_out}});
  AddTo(&answer, "GetTotalVar", variables != -1, {{"TotalVar", std::to_string(variables)}});
  return answer;
}

Answer AskDispenseLogic(VoATMUtil& util, const Inputs& inputs) {
  Output logic = {};
  const int result =
      util.GetDispLogic(inputs["logic"], inputs.Number("index"), inputs["s1"], inputs["s2"],
                        inputs["s3"], logic, inputs["model"], inputs["fallback"]);
  return AnswerWhen(result == 1, {{"DispLogic", logic}});
}

Answer AskDeposit(VoATMUtil& util, const Inputs& inputs) {
  std::string deposit = inputs["deposit"];
  Output amount = {}, map = {};
  const int result = util.GetDepositAmount(inputs["s1"], inputs["s2"], inputs["s3"],
                                           inputs["fallback"], deposit.data(), amount, map);
  return AnswerWhen(result == 1, {{"Amount", amount}, {"Map", map}});
}

// The library answers "no" for a flag that is not there; the entry tells whether one is.
Answer AskFlag(VoATMUtil& util, const Inputs& inputs) {
  const bool receipt = inputs.Is("flag", "receipt");
  if (receipt == inputs.Is("inst", "")) {
    throw UsageError(receipt ? "no inst (institution terminal group)" : "too much: inst");
  }
  const int flag = receipt ? util.isBadResponsePrintNeeded(inputs["inst"]) : util.getUTCFlag();
  return {true, {{"Flag", std::to_string(flag)}}};
}

Answer AskCardless(VoATMUtil& util, const Inputs& inputs) {
  Output track2 = {};
  const int result = util.getCardlessTrack2Data(inputs["opkey"], track2);
  return AnswerWhen(result == 1, {{"Track2Data", track2}});
}

}  // namespace

const std::vector<Question>& FileQuestions() {
  static const std::vector<Question> kQuestions = {
      {"txn-code", Ground::kLayered, "key1 key2 s1 s2 s3 fallback", AskTxnCode},
      {"response", Ground::kLayered, "response=good|bad key1 key2 s1 s2 s3 fallback", AskResponse},
      {"oar", Ground::kLayered, "s1 s2 s3 template number fallback", AskTemplate,
       "KeyDetails has 0 for the eight key flags, which the driver sets"},
      {"screen", Ground::kLayered, "s1 s2 s3 fallback", AskScreen},
      {"displogic", Ground::kLayered, "logic index s1 s2 s3 model=D912ATM|NDC+ATM fallback",
       AskDispenseLogic},
      {"deposit", Ground::kLayered, "s1 s2 s3 fallback deposit", AskDeposit},
      {"flags", Ground::kEntry, "flag=receipt|utc [inst]", AskFlag},
      {"cardless", Ground::kEntry, "opkey", AskCardless},
  };
  return kQuestions;
}
