// The requests that configuration files answer.
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "explain_core.h"
#include "vocfgutil.h"

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kLongestKey = 50;  // longer ones are cut
constexpr std::size_t kLongestFixedPath = 150;
constexpr std::size_t kLongestLayeredPath = 250;

// Holds any output of the library that is read from a file.
using Output = char[256];

// Where a kind of file lies, what its names end in, and which names stand before that.
struct FileKind {
  const char* directory;
  const char* suffix;
  enum { kFixed, kScoped, kScopedOrDefault } names;
};

constexpr FileKind kOperationKeys = {"cfg/atm/statetable/opkey", "opk.cfg", FileKind::kScoped};
constexpr FileKind kResponses = {"cfg/atm/statetable/resptable", "resp.cfg", FileKind::kScoped};
constexpr FileKind kScreens = {"cfg/atm/statetable/screen", "screen.cfg",
                               FileKind::kScopedOrDefault};
constexpr FileKind kDispenseLogics = {"cfg/atm/displogic", "displogic.cfg", FileKind::kScoped};
constexpr FileKind kNoteMappings = {"cfg/atm/bnamap", "bnamap.cfg", FileKind::kScoped};
constexpr FileKind kBusiness = {"cfg", "vobusiness.cfg", FileKind::kFixed};
constexpr FileKind kCardless = {"cfg/atm", "CARDLESS_TXN.cfg", FileKind::kFixed};

std::vector<std::string> Candidates(const FileKind& kind, const Inputs& inputs) {
  const char* const home = getenv("VODIR_HOME");
  const std::string directory = std::string(home != nullptr ? home : "") + "/" + kind.directory;
  if (kind.names == FileKind::kFixed) return {directory + "/" + kind.suffix};
  const std::string& s1 = inputs.Text("s1");
  const std::string group = s1 + "_" + inputs.Text("s2");
  Texts names = {group + "_" + inputs.Text("s3"), group, s1, inputs.Text("fallback")};
  if (kind.names == FileKind::kScopedOrDefault) names.emplace_back("DEFAULT");
  for (std::string& name : names) {
    name.insert(0, directory + "/").append("_").append(kind.suffix);
  }
  return names;
}

// The file that decides, and those that it hides.
class FileWalk {
 public:
  FileWalk(const FileKind& kind, const Inputs& inputs, Explanation* explanation)
      : explanation_(explanation) {
    const std::size_t longest =
        kind.names == FileKind::kFixed ? kLongestFixedPath : kLongestLayeredPath;
    for (const std::string& path : Candidates(kind, inputs)) {
      const bool fits = path.size() <= longest;
      if (open()) {
        VoCfgUtil later;
        if (fits && later.cfg_open(path.c_str()) == 0) AddHidden(path);
        continue;
      }
      if (fits && cfg_.cfg_open(path.c_str()) == 0) explanation->source = path_ = path;
      explanation->tries.push_back({"file", path, Outcome(path, fits)});
    }
  }

  bool open() const { return !path_.empty(); }

  // Reads fields of a key's entry, from this one on. Returns nothing when one of them is missing.
  std::optional<Texts> Read(const std::string& whole_key, int first_field, int fields) {
    if (!open()) return std::nullopt;
    const std::string key = whole_key.substr(0, kLongestKey);
    const Entry entry = Search(cfg_, path_, key, first_field, fields);
    explanation_->tries.push_back({"entry", key, entry.Shown()});
    if (entry.values && explanation_->source == path_) explanation_->source = entry.place;
    for (const std::string& path : hidden_) {
      VoCfgUtil later;
      if (later.cfg_open(path.c_str()) != 0) continue;
      const Entry other = Search(later, path, key, first_field, fields);
      if (other.values && other.values != entry.values) AddShadow(other.place, key, other);
    }
    return entry.values;
  }

  // Shows what an entry that was not needed says.
  void Hide(const std::string& key, int field) {
    const Entry entry = Search(cfg_, path_, key, field, 1);
    if (entry.values) AddShadow(entry.place, key, entry);
  }

 private:
  struct Entry {
    std::string place;  // path and line; empty when there is none
    std::string fault;  // of an entry whose values cannot all be read
    std::optional<Texts> values;

    std::string Shown() const {
      if (place.empty()) return "none";
      return place + ": " + (values ? Values() : fault);
    }

    std::string Values() const {
      std::string text;
      for (const std::string& value : *values) text += (text.empty() ? "" : " ") + value;
      return text;
    }
  };

  static Entry Search(VoCfgUtil& cfg, const std::string& path, const std::string& key,
                      int first_field, int fields) {
    Entry entry;
    Texts values;
    for (int field = first_field; field < first_field + fields; ++field) {
      char value[VoCfgUtil::kMaxField + 1] = {};
      const bool found = cfg.cfg_search(key.c_str(), value, field) == 0;
      if (cfg.line() > 0) entry.place = path + ":" + std::to_string(cfg.line());
      if (!found) {
        entry.fault = "no readable field " + std::to_string(field);
        return entry;
      }
      values.emplace_back(value);
    }
    entry.values = values;
    return entry;
  }

  std::string Outcome(const std::string& path, bool fits) const {
    if (path == path_) return "exists";
    if (!fits) return "none: the path is too long";
    return access(path.c_str(), F_OK) == 0 ? "none: it cannot be opened" : "none";
  }

  void AddHidden(const std::string& path) {
    hidden_.push_back(path);
    explanation_->shadowed.push_back({path, "exists"});
  }

  void AddShadow(const std::string& place, const std::string& key, const Entry& entry) {
    explanation_->shadowed.push_back({place, key + ": " + entry.Values()});
  }

  Explanation* explanation_;
  VoCfgUtil cfg_;
  std::string path_;  // of the file that is open
  Texts hidden_;
};

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

// What the eight keys, the time-out and the number of variables are expected to be.
std::optional<Facts> WalkTemplate(FileWalk& walk) {
  Facts facts;
  bool whole = true;
  for (const char* letter = kKeyLetters; *letter != '\0'; ++letter) {
    const auto entry = walk.Read(std::string("OAR#VAR#") + *letter, 2, 2);
    whole = whole && entry;
    if (!entry) continue;
    facts.push_back(
        {std::string(1, *letter), KeyText(KeyType((*entry)[0]), atoi((*entry)[1].c_str()))});
  }
  const auto time_out = walk.Read("OAR#OAR_TIMEOUT", 2, 1);
  const auto variables = walk.Read("OAR#VAR#TOTALVAR", 2, 1);
  if (!whole || !time_out || !variables) return std::nullopt;
  // The library answers -1 for "not found".
  if (atoi(variables->front().c_str()) == -1) return std::nullopt;
  facts.push_back({"TimeOut", time_out->front()});
  facts.push_back({"TotalVar", std::to_string(atoi(variables->front().c_str()))});
  return facts;
}

void ExplainOar(VoATMUtil& util, const Inputs& inputs, Explanation* explanation) {
  const char* const name = inputs.Chars("template");
  const int number = inputs.Number("number");
  const std::string suffix = std::string(name) + "_" + std::to_string(number) + ".oar";
  FileWalk walk({"cfg/atm/templates", suffix.c_str(), FileKind::kScopedOrDefault}, inputs,
                explanation);
  const auto expected = WalkTemplate(walk);

  const char* const s1 = inputs.Chars("s1");
  const char* const s2 = inputs.Chars("s2");
  const char* const s3 = inputs.Chars("s3");
  const char* const fallback = inputs.Chars("fallback");
  OARDetails details{};
  Output time_out = {};
  const int variables = util.GetTotalVar(s1, s2, s3, name, number, fallback);
  const bool found = util.LoadOARTemplate(s1, s2, s3, name, number, &details, fallback) == 1 &&
                     util.GetOARTimeOut(s1, s2, s3, name, number, time_out, fallback) == 1 &&
                     variables != -1;
  Facts answer;
  for (const OARKeyEntry& key : details.Keys) {
    if (found) answer.push_back({std::string(1, key.KeyId), KeyText(key.KeyType, key.KeyValue)});
  }
  if (found) {
    answer.push_back({"TimeOut", time_out});
    answer.push_back({"TotalVar", std::to_string(variables)});
  }
  Conclude(explanation, found, answer, expected.has_value(), expected.value_or(Facts()));
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
