#include "ask/requests.h"

#include <algorithm>
#include <functional>
#include <regex>
#include <set>
#include <sstream>

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
      {voatm::kTemplates, std::regex(".*_([^_]+)_([0-9]{1,9})\\D+"), "oar S1 S2 S3 $1 $2 FALLBACK"},
      {voatm::kDispenseLogics, std::regex("DISPENCE_LOGIC#(.*)_([0-9]{1,9})"),
       "displogic $1 $2 S1 S2 S3 MODEL FALLBACK"},
      // One note: $01 is $1, and the count 01 follows it.
      {voatm::kNoteMappings, std::regex("BNA_MAPPING#(.+)"), "deposit S1 S2 S3 FALLBACK A$0101"},
  };
  return kNamings;
}

// The requests that a row names, with its fields by their names.
constexpr const char* kRowNamings[] = {
    "property S1 S2 S3 TxnCode RespCode CurrencyCode",
    "action action S1 S2 S3 StatusCode",
    "action value S1 S2 S3 StatusCode TxnCode",
    "indirect-state S1 S2 CardPrefix",
};

// What a request has where a row has this: of a class of transactions its first, of any a rare
// one, and a card that begins as the prefix does.
std::string Requested(const std::string& field, std::string text) {
  constexpr std::size_t kClass = 2;
  if (field == "StatusCode") return text + "|";
  if (field == "CardPrefix") {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == 'F' || c == 'f'; }, '0');
    return text;
  }
  const bool is_txn = field == "TxnCode";
  if (!ReadNumber(text)) return is_txn ? "999999" : "999";
  return is_txn && text.size() == kClass ? text + "0000" : text;
}

// Collects requests as words, so that none is asked twice.
class Collector {
 public:
  explicit Collector(const Atm& atm) : atm_(atm) {}

  void AddEntry(const std::string& file, const std::string& key, std::size_t fields) {
    for (const EntryNaming& naming : EntryNamings()) {
      const std::string directory = std::string(voatm::kFileKinds[naming.kind].directory) + "/";
      if (file.compare(0, directory.size(), directory) != 0) continue;
      const std::string& named = naming.kind == voatm::kTemplates ? file : key;
      std::smatch parts;
      if (!std::regex_match(named, parts, naming.pattern)) continue;
      Add(naming.request, [&](const std::string& word) {
        if (word == "MODEL") return fields > 4 ? std::string("D912ATM") : "NDC+ATM";
        return parts.format(word);
      });
    }
  }

  void AddRows(const char* naming, const Rows& rows) {
    for (int slot = 0; slot < rows.count(); ++slot) {
      const char* const record = rows[slot];
      if (IsFree(*rows.table, record)) continue;
      Add(naming, [&](const std::string& word) {
        const records::RecordField* const field = rows.table->Find(word);
        return field == nullptr ? word : Requested(word, FieldText(*field, record));
      });
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
  const bool plain = !word.empty() && word.find_first_of(" |*\"'\\") == std::string::npos;
  return plain ? word : "'" + word + "'";
}

std::vector<Request> RequestsOf(const std::vector<const Side*>& sides, const Atm& atm) {
  Collector requests(atm);
  for (const Side* side : sides) {
    for (const auto& [place, fields] : side->entries) {
      requests.AddEntry(place.first, place.second, fields.size());
    }
    for (const char* naming : kRowNamings) {
      const std::string request = naming;
      const auto* const table = FindQuestion(request.substr(0, request.find(' ')))->table;
      const auto rows = side->tables.find(table);
      if (rows != side->tables.end()) requests.AddRows(naming, rows->second);
    }
  }
  return requests.Take();
}
