// The requests that configuration files answer.
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "ask/explain_core.h"
#include "ask/explain_file_walk.h"

namespace {

// Holds any output of the library that is read from a file.
using Output = char[256];

constexpr SoughtFile kOperationKeys = {"cfg/atm/statetable/opkey", "opk.cfg", SoughtFile::kScoped};
constexpr SoughtFile kResponses = {"cfg/atm/statetable/resptable", "resp.cfg", SoughtFile::kScoped};
constexpr SoughtFile kScreens = {"cfg/atm/statetable/screen", "screen.cfg",
                                 SoughtFile::kScopedOrDefault};
constexpr SoughtFile kDispenseLogics = {"cfg/atm/displogic", "displogic.cfg", SoughtFile::kScoped};
constexpr SoughtFile kNoteMappings = {"cfg/atm/bnamap", "bnamap.cfg", SoughtFile::kScoped};
constexpr SoughtFile kBusiness = {"cfg", "vobusiness.cfg", SoughtFile::kFixed};
constexpr SoughtFile kCardless = {"cfg/atm", "CARDLESS_TXN.cfg", SoughtFile::kFixed};

Facts Zip(const std::vector<const char*>& names, const std::optional<Texts>& values) {
  Facts facts;
  for (std::size_t i = 0; values && i < names.size(); ++i)
    facts.push_back({names[i], (*values)[i]});
  return facts;
}

// For operations that hand out the fields of one entry as they are.
void ConcludeFields(Explanation* explanation, const std::vector<const char*>& names, bool found,
                    const Texts& outputs, const std::optional<Texts>& expected) {
  Conclude(explanation, found, found ? Zip(names, outputs) : Facts(), expected.has_value(),
           Zip(names, expected));
}

void ExplainTxnCode(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  FileWalk walk(kOperationKeys, inputs, explanation);
  const auto expected = walk.Read(inputs.Text("key1") + "_" + inputs.Text("key2"), 2, 5);
  Output code = {}, amount = {}, currency = {}, printer = {}, request = {};
  const int result = util.LoadTxnCode(
      inputs.Chars("key1"), inputs.Chars("key2"), code, amount, currency, printer, request,
      inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"), inputs.Chars("fallback"));
  ConcludeFields(explanation, {"TxnCode", "Amount", "CurrCode", "PrinterFlag", "TxnReqFlag"},
                 result == 0, {code, amount, currency, printer, request}, expected);
}

void ExplainResponse(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const bool good = inputs.Text("response") == "good";
  FileWalk walk(kResponses, inputs, explanation);
  const auto expected = walk.Read(std::string(good ? "GOOD" : "BAD") + "_RESPONSE#" +
                                      inputs.Text("key1") + "_" + inputs.Text("key2"),
                                  2, 2);
  Output state = {}, screen = {};
  const auto load = good ? &VoATMUtil::LoadGoodResponseState : &VoATMUtil::LoadBadResponseState;
  const int result =
      (util.*load)(inputs.Chars("key1"), inputs.Chars("key2"), state, screen, inputs.Chars("s1"),
                   inputs.Chars("s2"), inputs.Chars("s3"), inputs.Chars("fallback"));
  ConcludeFields(explanation, {"StateNo", "ScreenNo"}, result == 1, {state, screen}, expected);
}

void ExplainScreen(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  FileWalk walk(kScreens, inputs, explanation);
  const auto expected = walk.Read("ATM_RESERVEDSCREEN#EMPTYSCR", 2, 1);
  Output screen = {};
  const int result = util.GetEmptyScreen(inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"),
                                         screen, inputs.Chars("fallback"));
  ConcludeFields(explanation, {"ScreenNo"}, result == 1, {screen}, expected);
}

constexpr char kKeyLetters[] = "ABCDFGHI";

std::string KeyText(int type, int value) {
  return "type " + std::to_string(type) + ", value " + std::to_string(value);
}

int KeyType(const std::string& action) {
  const Texts known = {"$VAR", "$NEXT", "$PREVIOUS", "$CONTINUE", "$CANCEL"};
  const auto at = std::find(known.begin(), known.end(), action);
  return at == known.end() ? 0 : static_cast<int>(at - known.begin()) + 1;
}

// What the operations on a template answer; of one that finds nothing, that.
struct TemplateAnswer {
  bool found = true;
  Facts facts;

  void Add(const char* operation, bool is_found, const Facts& given) {
    found = found && is_found;
    if (!is_found) facts.push_back({operation, "not found"});
    if (is_found) facts.insert(facts.end(), given.begin(), given.end());
  }
};

constexpr const char* kTemplateOperations[] = {"LoadOARTemplate", "PackKeyDetails", "GetOARTimeOut",
                                               "GetTotalVar"};

// The flags of the keys go behind the two digits and behind the cancel value; here all are 0.
std::string KeyDetailsOf(const Texts& controls) {
  Texts numbers;
  for (const std::string& control : controls)
    numbers.push_back(std::to_string(atoi(control.c_str())));
  return numbers[0].substr(0, 1) + (numbers[1] + "0000").substr(0, 5) + numbers[2] + "0000";
}

TemplateAnswer WalkTemplate(FileWalk& walk) {
  const auto read = [&](const char* key) { return walk.Read(key, 2, 1); };
  TemplateAnswer answer;
  Facts keys;
  for (const char* letter = kKeyLetters; *letter != '\0'; ++letter) {
    const auto entry = walk.Read(std::string("OAR#VAR#") + *letter, 2, 2);
    if (!entry) continue;
    keys.push_back(
        {std::string(1, *letter), KeyText(KeyType((*entry)[0]), atoi((*entry)[1].c_str()))});
  }
  answer.Add(kTemplateOperations[0], keys.size() == sizeof kKeyLetters - 1, keys);
  Texts controls;
  for (const char* key :
       {"OAR#CONTROL#DISPLAYFLAG", "OAR#CONTROL#NUMERICKEYS", "OAR#CONTROL#CANCEL"}) {
    if (const auto control = read(key)) controls.push_back(control->front());
  }
  const bool whole = controls.size() == 3;
  answer.Add(kTemplateOperations[1], whole, {{"KeyDetails", whole ? KeyDetailsOf(controls) : ""}});
  const auto time_out = read("OAR#OAR_TIMEOUT");
  answer.Add(kTemplateOperations[2], time_out.has_value(), Zip({"TimeOut"}, time_out));
  const auto variables = read("OAR#VAR#TOTALVAR");
  const int count = variables ? atoi(variables->front().c_str()) : -1;
  answer.Add(kTemplateOperations[3], count != -1, {{"TotalVar", std::to_string(count)}});
  return answer;
}

TemplateAnswer AskTemplate(VoATMUtil& util, const Inputs& inputs) {
  const char* const s1 = inputs.Chars("s1");
  const char* const s2 = inputs.Chars("s2");
  const char* const s3 = inputs.Chars("s3");
  const char* const fallback = inputs.Chars("fallback");
  const char* const name = inputs.Chars("template");
  const int number = inputs.Number("number");
  OARDetails details{}, flags{};
  Output key_details = {}, time_out = {};
  const bool loaded = util.LoadOARTemplate(s1, s2, s3, name, number, &details, fallback) == 1;
  Facts keys;
  for (const OARKeyEntry& key : details.Keys) {
    keys.push_back({std::string(1, key.KeyId), KeyText(key.KeyType, key.KeyValue)});
  }
  const bool packed =
      util.PackKeyDetails(s1, s2, s3, name, number, key_details, &flags, fallback) == 1;
  const bool timed = util.GetOARTimeOut(s1, s2, s3, name, number, time_out, fallback) == 1;
  const int variables = util.GetTotalVar(s1, s2, s3, name, number, fallback);

  TemplateAnswer answer;
  answer.Add(kTemplateOperations[0], loaded, keys);
  answer.Add(kTemplateOperations[1], packed, {{"KeyDetails", key_details}});
  answer.Add(kTemplateOperations[2], timed, {{"TimeOut", time_out}});
  answer.Add(kTemplateOperations[3], variables != -1, {{"TotalVar", std::to_string(variables)}});
  return answer;
}

void ExplainOar(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const std::string suffix =
      inputs.Text("template") + "_" + std::to_string(inputs.Number("number")) + ".oar";
  FileWalk walk({"cfg/atm/templates", suffix.c_str(), SoughtFile::kScopedOrDefault}, inputs,
                explanation);
  const TemplateAnswer expected = WalkTemplate(walk);
  const TemplateAnswer answer = AskTemplate(util, inputs);
  explanation->notes.emplace_back(
      "KeyDetails has 0 for the eight key flags, which the driver sets");
  Conclude(explanation, answer.found, answer.facts, expected.found, expected.facts);
}

bool AllDigits(const std::string& text) {
  return text.find_first_not_of("0123456789") == std::string::npos;
}

// The note counts of an entry as a dispense logic.
std::optional<Texts> JoinCounts(const std::optional<Texts>& counts) {
  if (!counts || !std::all_of(counts->begin(), counts->end(), AllDigits)) return std::nullopt;
  std::string logic;
  for (const std::string& count : *counts) {
    const std::string digits = std::to_string(atoi(count.c_str()));
    logic += (digits.size() < 2 ? "0" + digits : digits).substr(0, 2);
  }
  return Texts{logic};
}

void ExplainDispenseLogic(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  constexpr std::size_t kLongestName = 15;
  const std::string& model = inputs.Text("model");
  const int positions = model == "D912ATM" ? 8 : 4;
  FileWalk walk(kDispenseLogics, inputs, explanation);
  const std::string name = inputs.Text("logic").substr(0, kLongestName);
  const auto expected = walk.Read("DISPENCE_LOGIC#" + name.substr(0, name.find(' ')) + "_" +
                                      std::to_string(inputs.Number("index")),
                                  2, positions);
  Output logic = {};
  const int result = util.GetDispLogic(inputs.Chars("logic"), inputs.Number("index"),
                                       inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"),
                                       logic, model.c_str(), inputs.Chars("fallback"));
  ConcludeFields(explanation, {"DispLogic"}, result == 1, {logic}, JoinCounts(expected));
}

// What the groups of a deposit text come to: the amount, and value^count of each.
std::optional<Texts> SumDeposit(FileWalk& walk, const std::string& groups) {
  constexpr std::size_t kIdSize = 2;
  if (groups.size() > 16 && groups.size() != 20) return std::nullopt;
  const std::size_t count_size = groups.size() % 4 == 0 && groups.size() != 20 ? 2 : 3;
  long long total = 0;
  std::string map;
  for (std::size_t at = 0; at + kIdSize + count_size <= groups.size(); at += kIdSize + count_size) {
    const auto value = walk.Read("BNA_MAPPING#" + groups.substr(at, kIdSize), 2, 1);
    const int worth =
        value && strcasecmp(value->front().c_str(), "NILL") != 0 ? atoi(value->front().c_str()) : 0;
    if (worth == 0) return std::nullopt;
    const int count = atoi(groups.substr(at + kIdSize, count_size).c_str());
    total += static_cast<long long>(worth) * count;
    map += (map.empty() ? "" : "|") + std::to_string(worth) + "^" + std::to_string(count);
  }
  return Texts{std::to_string(static_cast<int>(total)) + ".00", map};
}

void ExplainDeposit(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  FileWalk walk(kNoteMappings, inputs, explanation);
  std::string deposit = inputs.Text("deposit");
  const auto expected =
      walk.open() ? SumDeposit(walk, deposit.empty() ? deposit : deposit.substr(1)) : std::nullopt;
  Output amount = {}, map = {};
  const int result =
      util.GetDepositAmount(inputs.Chars("s1"), inputs.Chars("s2"), inputs.Chars("s3"),
                            inputs.Chars("fallback"), deposit.data(), amount, map);
  ConcludeFields(explanation, {"Amount", "Map"}, result == 1, {amount, map}, expected);
}

// The library answers "no" for a flag that is not there.
void ExplainFlags(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const bool receipt = inputs.Text("flag") == "receipt";
  FileWalk walk(kBusiness, inputs, explanation);
  const auto value =
      walk.Read(receipt ? inputs.Text("inst") + "_BADRSP_RCPT_NEEDED" : "VOBUSINESS#UTCFLAG", 2, 1);
  const bool yes = value && strcasecmp(value->front().c_str(), "Yes") == 0;
  const int answer =
      receipt ? util.isBadResponsePrintNeeded(inputs.Chars("inst")) : util.getUTCFlag();
  Conclude(explanation, value.has_value(), {{"Flag", std::to_string(answer)}}, value.has_value(),
           {{"Flag", yes ? "1" : "0"}});
}

void ExplainCardless(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  constexpr char kDefault[] = "OPKEYMAP#DEFAULT";
  FileWalk walk(kCardless, inputs, explanation);
  auto expected = walk.Read("OPKEYMAP#" + inputs.Text("opkey"), 2, 1);
  if (expected) {
    walk.Hide(kDefault, 2);
  } else {
    expected = walk.Read(kDefault, 2, 1);
  }
  Output track2 = {};
  const int result = util.getCardlessTrack2Data(inputs.Chars("opkey"), track2);
  ConcludeFields(explanation, {"Track2Data"}, result == 1, {track2}, expected);
}

constexpr Input kS1 = {"s1", "widest scope, the institution"};
constexpr Input kS2 = {"s2", "scope within it, the group"};
constexpr Input kS3 = {"s3", "narrowest scope, the ATM"};
constexpr Input kFallback = {"fallback", "name of the file for all others"};

}  // namespace

const std::array<ExplainKind, kFileKinds> kExplainFiles = {{
    {"txn-code",
     false,
     ExplainTxnCode,
     {Input{"key1", "first part of the operation key"},
      {"key2", "second part"},
      kS1,
      kS2,
      kS3,
      kFallback}},
    {"response",
     false,
     ExplainResponse,
     {Input{"response", "kind of response", "good bad"},
      {"key1", "transaction code"},
      {"key2", "response code"},
      kS1,
      kS2,
      kS3,
      kFallback}},
    {"oar",
     false,
     ExplainOar,
     {kS1,
      kS2,
      kS3,
      {"template", "template name"},
      {"number", "template number", kWholeNumber},
      kFallback}},
    {"screen", false, ExplainScreen, {kS1, kS2, kS3, kFallback}},
    {"displogic",
     false,
     ExplainDispenseLogic,
     {Input{"logic", "logic name"},
      {"index", "amount index", kWholeNumber},
      kS1,
      kS2,
      kS3,
      {"model", "ATM model", "D912ATM NDC+ATM"},
      kFallback}},
    {"deposit",
     false,
     ExplainDeposit,
     {kS1, kS2, kS3, kFallback, {"deposit", "the ATM's text, its first character included"}}},
    {"flags",
     false,
     ExplainFlags,
     {Input{"flag", "which flag", "receipt utc"},
      {"inst", "institution, for receipt", nullptr, ""}}},
    {"cardless", false, ExplainCardless, {Input{"opkey", "operation key"}}},
}};
