// The requests that configuration files answer.
#include "ask/question.h"

namespace {

// Holds any output of the library that is read from a file.
using Output = char[256];

Answer AskTxnCode(VoATMUtil& util, const Inputs& inputs) {
  Output code = {}, amount = {}, currency = {}, printer = {}, request = {};
  const int result = util.LoadTxnCode(
      inputs.Chars("key1"), inputs.Chars("key2"), code, amount, currency, printer, request,
      inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"), inputs.Chars("fallback"));
  return AnswerWhen(result == 0, {{"TxnCode", code},
                                  {"Amount", amount},
                                  {"CurrCode", currency},
                                  {"PrinterFlag", printer},
                                  {"TxnReqFlag", request}});
}

Answer AskResponse(VoATMUtil& util, const Inputs& inputs) {
  const auto load = inputs.Text("response") == "good" ? &VoATMUtil::LoadGoodResponseState
                                                      : &VoATMUtil::LoadBadResponseState;
  Output state = {}, screen = {};
  const int result =
      (util.*load)(inputs.Chars("key1"), inputs.Chars("key2"), state, screen, inputs.Chars("s1"),
                   inputs.Chars("s2"), inputs.Chars("s3"), inputs.Chars("fallback"));
  return AnswerWhen(result == 1, {{"StateNo", state}, {"ScreenNo", screen}});
}

Answer AskScreen(VoATMUtil& util, const Inputs& inputs) {
  Output screen = {};
  const int result = util.GetEmptyScreen(inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"),
                                         screen, inputs.Chars("fallback"));
  return AnswerWhen(result == 1, {{"ScreenNo", screen}});
}

// What one of the operations on a template says.
void AddTo(Answer* answer, const char* operation, bool found, const Json& facts) {
  answer->found = answer->found && found;
  answer->facts.update(found ? facts : Json{{operation, "not found"}});
}

Answer AskTemplate(VoATMUtil& util, const Inputs& inputs) {
  const char* const s1 = inputs.Chars("s1");
  const char* const s2 = inputs.Chars("s2");
  const char* const s3 = inputs.Chars("s3");
  const char* const fallback = inputs.Chars("fallback");
  const char* const name = inputs.Chars("template");
  const int number = inputs.Number("number");
  OARDetails details{}, flags{};
  Output key_details = {}, time_out = {};
  const bool loaded = util.LoadOARTemplate(s1, s2, s3, name, number, &details, fallback) == 1;
  Json keys = Json::object();
  for (const OARKeyEntry& key : details.Keys) {
    AddFact(std::string(1, key.KeyId),
            "type " + std::to_string(key.KeyType) + ", value " + std::to_string(key.KeyValue),
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
  const int result = util.GetDispLogic(inputs.Chars("logic"), inputs.Number("index"),
                                       inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"),
                                       logic, inputs.Chars("model"), inputs.Chars("fallback"));
  return AnswerWhen(result == 1, {{"DispLogic", logic}});
}

Answer AskDeposit(VoATMUtil& util, const Inputs& inputs) {
  std::string deposit = inputs.Text("deposit");
  Output amount = {}, map = {};
  const int result =
      util.GetDepositAmount(inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"),
                            inputs.Chars("fallback"), deposit.data(), amount, map);
  return AnswerWhen(result == 1, {{"Amount", amount}, {"Map", map}});
}

// The library answers "no" for a flag that is not there; the entry tells whether one is.
Answer AskFlag(VoATMUtil& util, const Inputs& inputs) {
  const bool receipt = inputs.Text("flag") == "receipt";
  const int flag =
      receipt ? util.isBadResponsePrintNeeded(inputs.Chars("inst")) : util.getUTCFlag();
  return {true, {{"Flag", std::to_string(flag)}}};
}

Answer AskCardless(VoATMUtil& util, const Inputs& inputs) {
  Output track2 = {};
  const int result = util.getCardlessTrack2Data(inputs.Chars("opkey"), track2);
  return AnswerWhen(result == 1, {{"Track2Data", track2}});
}

constexpr Input kS1 = {"s1", "widest scope, the institution"};
constexpr Input kS2 = {"s2", "scope within it, the group"};
constexpr Input kS3 = {"s3", "narrowest scope, the ATM"};
constexpr Input kFallback = {"fallback", "name of the file for all others"};

}  // namespace

const std::vector<Question>& FileQuestions() {
  static const std::vector<Question> kQuestions = {
      {"txn-code",
       Ground::kLayered,
       {{"key1", "first part of the operation key"},
        {"key2", "second part"},
        kS1,
        kS2,
        kS3,
        kFallback},
       AskTxnCode},
      {"response",
       Ground::kLayered,
       {{"response", "kind of response", "good bad"},
        {"key1", "transaction code"},
        {"key2", "response code"},
        kS1,
        kS2,
        kS3,
        kFallback},
       AskResponse},
      {"oar",
       Ground::kLayered,
       {kS1,
        kS2,
        kS3,
        {"template", "template name"},
        {"number", "template number", kWholeNumber},
        kFallback},
       AskTemplate,
       "KeyDetails has 0 for the eight key flags, which the driver sets"},
      {"screen", Ground::kLayered, {kS1, kS2, kS3, kFallback}, AskScreen},
      {"displogic",
       Ground::kLayered,
       {{"logic", "logic name"},
        {"index", "amount index", kWholeNumber},
        kS1,
        kS2,
        kS3,
        {"model", "ATM model", "D912ATM NDC+ATM"},
        kFallback},
       AskDispenseLogic},
      {"deposit",
       Ground::kLayered,
       {kS1,
        kS2,
        kS3,
        kFallback,
        {"deposit",
         "any character, then for each note type two characters and its count: A01020303 is "
         "2 notes of type 01 and 3 of type 03; counts have three digits when the text "
         "behind the first character is no multiple of 4 long"}},
       AskDeposit},
      {"flags",
       Ground::kEntry,
       {{"flag", "which flag", "receipt utc"}, {"inst", "institution, for receipt", nullptr, ""}},
       AskFlag},
      {"cardless", Ground::kEntry, {{"opkey", "operation key"}}, AskCardless},
  };
  return kQuestions;
}
