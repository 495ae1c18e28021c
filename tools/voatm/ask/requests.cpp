#include "ask/requests.h"

#include <algorithm>
#include <set>

#include "options.h"
#include "show/record_view.h"
#include "statetable/file_kinds.h"

namespace {

using Words = std::vector<std::string>;

// Collects requests as words, the kind first, so that none is asked twice.
class Collector {
 public:
  explicit Collector(const Atm& atm) : atm_(atm) {}

  void AddEntry(const std::string& file, const std::string& key, std::size_t fields) {
    if (IsOf(voatm::kOperationKeys, file)) AddTwoPart("txn-code", {}, key);
    if (IsOf(voatm::kResponseStates, file)) {
      AddTwoPart("response", {"good"}, Behind("GOOD_RESPONSE#", key));
      AddTwoPart("response", {"bad"}, Behind("BAD_RESPONSE#", key));
    }
    if (IsOf(voatm::kDispenseLogics, file)) AddLogic(Behind("DISPENCE_LOGIC#", key), fields);
    const std::string note = Behind("BNA_MAPPING#", key);
    if (IsOf(voatm::kNoteMappings, file) && !note.empty()) {
      Add({"deposit", atm_.s1, atm_.s2, atm_.s3, atm_.fallback, "A" + note + "01"});
    }
    if (IsOf(voatm::kScreens, file)) Add({"screen", atm_.s1, atm_.s2, atm_.s3, atm_.fallback});
    if (IsOf(voatm::kTemplates, file)) AddTemplate(file);
  }

  void AddProperty(const Rows& rows, const char* record) {
    Words request = {"property", atm_.s1, atm_.s2, atm_.s3};
    for (const char* const name : {"TxnCode", "RespCode", "CurrencyCode"}) {
      request.push_back(Requested(TextOf(rows, record, name), name));
    }
    Add(request);
  }

  void AddAction(const Rows& rows, const char* record) {
    const std::string code = TextOf(rows, record, "StatusCode") + "|";
    Add({"action", "action", atm_.s1, atm_.s2, atm_.s3, code});
    Add({"action", "value", atm_.s1, atm_.s2, atm_.s3, code,
         Requested(TextOf(rows, record, "TxnCode"), "TxnCode")});
  }

  // A card that begins as the prefix does; what stands for the rest is F.
  void AddPrefix(const Rows& rows, const char* record) {
    std::string card = TextOf(rows, record, "CardPrefix");
    std::replace_if(
        card.begin(), card.end(), [](char c) { return c == 'F' || c == 'f'; }, '0');
    Add({"indirect-state", atm_.s1, atm_.s2, card});
  }

  std::vector<Request> Take() {
    std::vector<Request> requests;
    for (const Words& words : known_) {
      const Question* const question = FindQuestion(words.front());
      std::string text;
      for (const std::string& word : words) {
        const bool plain = !word.empty() && word.find_first_of(" |*\"'\\") == std::string::npos;
        text += (text.empty() ? "" : " ") + (plain ? word : "'" + word + "'");
      }
      requests.push_back({question, ReadInputs(*question, {words.begin() + 1, words.end()}), text});
    }
    return requests;
  }

 private:
  static bool IsOf(voatm::LayeredKind kind, const std::string& file) {
    const std::string directory = std::string(voatm::kFileKinds[kind].directory) + "/";
    return file.compare(0, directory.size(), directory) == 0;
  }

  static std::string Behind(const std::string& group, const std::string& key) {
    return key.compare(0, group.size(), group) == 0 ? key.substr(group.size()) : "";
  }

  static std::string TextOf(const Rows& rows, const char* record, const std::string& name) {
    const auto* const field =
        std::find_if(rows.table->begin(), rows.table->end(),
                     [&](const records::RecordField& each) { return name == each.name; });
    return FieldText(*field, record);
  }

  // A code that a row's text stands for: of a class of transactions its first, of any a rare one.
  static std::string Requested(const std::string& text, const std::string& column) {
    constexpr std::size_t kClass = 2;
    if (column == "TxnCode" && text.size() == kClass && ReadNumber(text)) return text + "0000";
    if (ReadNumber(text)) return text;
    return column == "TxnCode" ? "999999" : "999";
  }

  void Add(const Words& words) { known_.insert(words); }

  // The library puts the parts together again, so it is all the same where the key is parted.
  void AddTwoPart(const char* kind, const Words& first, const std::string& key) {
    const std::size_t bar = key.find('_');
    if (bar == std::string::npos || key.find('#') != std::string::npos) return;
    Words words = {kind};
    words.insert(words.end(), first.begin(), first.end());
    for (const std::string& word :
         {key.substr(0, bar), key.substr(bar + 1), atm_.s1, atm_.s2, atm_.s3, atm_.fallback}) {
      words.push_back(word);
    }
    Add(words);
  }

  void AddLogic(const std::string& key, std::size_t fields) {
    const std::size_t bar = key.rfind('_');
    if (bar == std::string::npos || !ReadNumber(key.substr(bar + 1))) return;
    Add({"displogic", key.substr(0, bar), key.substr(bar + 1), atm_.s1, atm_.s2, atm_.s3,
         fields > 4 ? "D912ATM" : "NDC+ATM", atm_.fallback});
  }

  // <scope>_<template>_<number>.oar
  void AddTemplate(const std::string& file) {
    const std::string suffix = voatm::kFileKinds[voatm::kTemplates].suffix;
    if (file.size() < suffix.size()) return;
    const std::string name = file.substr(0, file.size() - suffix.size());
    const std::size_t number = name.rfind('_');
    if (number == std::string::npos || number == 0 || !ReadNumber(name.substr(number + 1))) return;
    const std::size_t bar = name.rfind('_', number - 1);
    if (bar == std::string::npos) return;
    Add({"oar", atm_.s1, atm_.s2, atm_.s3, name.substr(bar + 1, number - bar - 1),
         name.substr(number + 1), atm_.fallback});
  }

  const Atm& atm_;
  std::set<Words> known_;
};

template <typename Take>
void ForEachRow(Rows* rows, Take take) {
  for (int slot = 0; rows != nullptr && slot < rows->count(); ++slot) {
    if (!IsFree(*rows->table, (*rows)[slot])) take(*rows, (*rows)[slot]);
  }
}

}  // namespace

std::vector<Request> RequestsOf(const std::vector<Side*>& sides, const Atm& atm) {
  Collector requests(atm);
  for (Side* side : sides) {
    for (const auto& [place, entry] : side->entries) {
      requests.AddEntry(place.first, place.second, entry.count);
    }
    const auto rows_of = [&](const char* question) {
      return side->TableOf(FindQuestion(question)->Table());
    };
    ForEachRow(rows_of("property"),
               [&](const Rows& rows, const char* record) { requests.AddProperty(rows, record); });
    ForEachRow(rows_of("action"),
               [&](const Rows& rows, const char* record) { requests.AddAction(rows, record); });
    ForEachRow(rows_of("indirect-state"),
               [&](const Rows& rows, const char* record) { requests.AddPrefix(rows, record); });
  }
  return requests.Take();
}
