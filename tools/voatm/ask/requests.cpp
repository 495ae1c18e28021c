#include "ask/requests.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>
#include <regex>
#include <set>
#include <sstream>

#include "ask/reach.h"
#include "options.h"
#include "show/record_view.h"
#include "statetable/file_kinds.h"

namespace {

using Words = std::vector<std::string>;

// The request that an entry names: its key, or a template's file, matches the pattern, whose parts
// are $1 and $2. S1 to FALLBACK are the ATM's, and MODEL is the one that such an entry is for.
struct EntryNaming {
  voatm::LayeredKind kind;
  std::regex pattern;
  const char* request;  // as voatm explain takes it
};

// The library puts the parts of a key together again, so it is all the same where they part.
const std::vector<EntryNaming>& EntryNamings() {
  static const std::vector<EntryNaming> kNamings = {
      {voatm::kOperationKeys, std::regex("([^_#]*)_([^#]*)"), "txn-code $1 $2 S1 S2 S3 FALLBACK"},
      {voatm::kResponseStates, std::regex("GOOD_RESPONSE#([^_#]*)_([^#]*)"),
       "response good $1 $2 S1 S2 S3 FALLBACK"},
      {voatm::kResponseStates, std::regex("BAD_RESPONSE#([^_#]*)_([^#]*)"),
       "response bad $1 $2 S1 S2 S3 FALLBACK"},
      {voatm::kScreens, std::regex(".*"), "screen S1 S2 S3 FALLBACK"},
      {voatm::kTemplates, std::regex("(.+)_([0-9]{1,9})\\D+"), "oar S1 S2 S3 $1 $2 FALLBACK"},
      {voatm::kDispenseLogics, std::regex("DISPENCE_LOGIC#(.*)_([0-9]{1,9})"),
       "displogic $1 $2 S1 S2 S3 MODEL FALLBACK"},
      // One note: $01 is $1, and the count 01 follows it.
      {voatm::kNoteMappings, std::regex("BNA_MAPPING#(.+)"), "deposit S1 S2 S3 FALLBACK A$0101"},
  };
  return kNamings;
}

// The requests that a row names, with its fields by their names; a rare code is one that no row
// names.
constexpr const char* kRowNamings[] = {
    "property S1 S2 S3 TxnCode RespCode CurrencyCode",
    "property S1 S2 S3 TxnCode RespCode RareCurrency",
    "property S1 S2 S3 TxnCode RareResp RareCurrency",
    "action action S1 S2 S3 StatusCode",
    "action value S1 S2 S3 StatusCode TxnCode",
    "indirect-state S1 S2 CardPrefix",
};

// Collects requests as words, so that none is asked twice.
class Collector {
 public:
  explicit Collector(const Atm& atm) : atm_(atm) {}

  void AddEntry(const std::string& file, const std::string& key, std::size_t fields) {
    for (const EntryNaming& naming : EntryNamings()) {
      const std::string directory = std::string(voatm::kFileKinds[naming.kind].directory) + "/";
      if (file.compare(0, directory.size(), directory) != 0) continue;
      const bool by_file = naming.kind == voatm::kTemplates;
      for (const std::string& named : by_file ? BehindScopes(file) : Words{key}) {
        std::smatch parts;
        if (!std::regex_match(named, parts, naming.pattern)) continue;
        Add(naming.request, [&](const std::string& word) {
          if (word == "MODEL") return fields > 4 ? std::string("D912ATM") : "NDC+ATM";
          return parts.format(word);
        });
      }
    }
  }

  // `all` are the rows of a table, of each side.
  void AddRows(const std::string& naming, const std::vector<const Rows*>& all) {
    const Reach reach(all);
    for (const Rows* rows : all) {
      for (int slot = 0; slot < rows->count(); ++slot) {
        const char* const record = (*rows)[slot];
        if (!IsUntouched(*rows->table, record)) AddRow(naming, *rows->table, record, reach);
      }
    }
  }

  std::vector<Request> Take() {
    std::vector<Request> requests;
    for (const Words& words : known_) {
      const Question* const question = FindQuestion(words.front());
      std::string text;
      for (const std::string& word : words) text += (text.empty() ? "" : " ") + Quoted(word);
      requests.push_back({question, ReadInputs(*question, {words.begin() + 1, words.end()}), text});
    }
    return requests;
  }

 private:
  // A template's name may have the separator of its file's scopes: what may stand behind these.
  static Words BehindScopes(const std::string& file) {
    Words names;
    for (std::size_t at = file.find('_'); at != std::string::npos; at = file.find('_', at + 1)) {
      names.push_back(file.substr(at + 1));
    }
    return names;
  }

  void AddRow(const std::string& naming, const records::RecordTable& table, const char* record,
              const Reach& reach) {
    const records::RecordField* const prefix = table.Find("CardPrefix");
    const Words no_card = {""};
    for (const std::string& card :
         prefix == nullptr ? no_card : reach.cards.For(FieldText(*prefix, record), atm_.s1)) {
      Add(naming, [&](const std::string& word) {
        const records::RecordField* const field = table.Find(word);
        if (word == "RareResp") return reach.resps.NumberFor(kAny).value_or("0");
        if (word == "RareCurrency") return reach.currencies.NumberFor(kAny).value_or("0");
        if (field == nullptr) return word;
        if (field == prefix) return card;
        const std::string text = FieldText(*field, record);
        if (word == "StatusCode") return text + "|";
        if (word == "TxnCode") return reach.txns.NumberFor(text).value_or("0");
        if (word == "RespCode") return reach.resps.NumberFor(text).value_or("0");
        return ReadNumber(text) ? text : "0";
      });
    }
  }

  // `fill` gives what a word stands for that is not the ATM's.
  void Add(const std::string& request, const std::function<std::string(const std::string&)>& fill) {
    std::istringstream names(request);
    Words words;
    for (std::string name; names >> name;) {
      const std::string* const own = name == "S1"         ? &atm_.s1
                                     : name == "S2"       ? &atm_.s2
                                     : name == "S3"       ? &atm_.s3
                                     : name == "FALLBACK" ? &atm_.fallback
                                                          : nullptr;
      words.push_back(own != nullptr ? *own : fill(name));
    }
    known_.insert(std::move(words));
  }

  const Atm& atm_;
  std::set<Words> known_;
};

}  // namespace

std::string Quoted(const std::string& word) {
  const auto is_plain = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::strchr("_./+=:,@%-", c) != nullptr;
  };
  if (!word.empty() && std::all_of(word.begin(), word.end(), is_plain)) return word;
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

std::vector<Request> RequestsOf(const std::vector<const Side*>& sides, const Atm& atm) {
  Collector requests(atm);
  for (const Side* side : sides) {
    for (const auto& [place, fields] : side->entries) {
      requests.AddEntry(place.first, place.second, fields.size());
    }
  }
  for (const char* naming : kRowNamings) {
    const std::string request = naming;
    const auto* const table = FindQuestion(request.substr(0, request.find(' ')))->table;
    std::vector<const Rows*> all;
    for (const Side* side : sides) {
      const auto rows = side->tables.find(table);
      if (rows != side->tables.end()) all.push_back(&rows->second);
    }
    requests.AddRows(request, all);
  }
  return requests.Take();
}
