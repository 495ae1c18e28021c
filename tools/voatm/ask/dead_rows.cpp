#include "ask/dead_rows.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "ask/observation.h"
#include "ask/question.h"
#include "ask/reach.h"
#include "look/row_faults.h"
#include "show/record_view.h"

namespace {

const std::string kNew = "\x7f";  // a text that no row has

// The rows of a table, each asked for what it was made for. The one that is asked about carries
// another mark than all others, so the answer says whether it is that row's.
class AskedRows {
 public:
  AskedRows(const char* question, Rows* rows)
      : question_(*FindQuestion(question)), rows_(*rows), faults_(*rows->table), reach_({rows}) {
    util_.dptr = Observation::Trace();
    for (int slot = 0; slot < rows->count(); ++slot) PutMark(question_, 0, (*rows)[slot]);
  }

  std::vector<Finding> Judge(void (AskedRows::*judge)(int slot)) {
    const std::vector<char> untouched = MarkedFreeRecord();
    for (int slot = 0; slot < rows_.count(); ++slot) {
      // One without a key is a fault of its own.
      const bool has_key = *(rows_[slot] + rows_.table->key().offset) != '\0';
      const bool is_free = IsFree(*rows_.table, rows_[slot]);
      if (has_key && !is_free) (this->*judge)(slot);
      const bool holds_more = !std::equal(untouched.begin(), untouched.end(), rows_[slot]);
      if (is_free && holds_more) JudgeFree(slot);
    }
    return faults_.Findings();
  }

  void JudgeProperty(int slot) {
    Inputs request = RequestOf(slot);
    JudgeRest(slot, request);
    const auto& txn = reach_.txns.NumberFor(Text(slot, "TxnCode"));
    const auto& resp = reach_.resps.NumberFor(Text(slot, "RespCode"));
    for (const auto& [field, number] : {std::pair("TxnCode", txn), std::pair("RespCode", resp)}) {
      // Whether a row for any code is reached cannot be told when others take them all.
      if (number.has_value() || Text(slot, field) == kAny) continue;
      AddNever(std::string("no request can equal its ") + field, slot);
    }
    if (!txn.has_value() || !resp.has_value()) return;
    const std::string currency = Text(slot, "CurrencyCode");
    request["txn"] = *txn;
    request["resp"] = *resp;
    request["currency"] =
        currency == "0" ? reach_.currencies.NumberFor(kAny).value_or("0") : currency;
    // Only a row for the same request can come before it.
    const std::string same =
        AtmOf(request) + '\0' + *txn + '\0' + *resp + '\0' + request["currency"];
    if (!Answers(FirstOf(same, slot), slot, request)) {
      AddNever("no request is answered with it", slot);
    }
  }

  void JudgeAction(int slot) {
    const Inputs request = RequestOf(slot);
    JudgeReach(slot, request);
    const std::string code = Text(slot, "TxnCode");
    const bool has_value = Text(slot, "TxnFlag") == "Y";
    if (has_value && !reach_.txns.NumberFor(code).has_value()) {
      if (code == kAny) return;  // cannot be told, as with a property
      faults_.Add("no request can equal its TxnCode", "never get its TxnValue", slot);
    }
    // The last ATM above that the row is for; at the latest its own.
    const Inputs& atm = *std::find_if(atms_.rbegin(), atms_.rend(),
                                      [&](const Inputs& each) { return IsFor(request, each); });
    const int first = FirstOf(AtmOf(atm), slot);
    const std::vector<Inputs> requests = ActionRequests(slot, atm);
    const bool answers = std::any_of(requests.begin(), requests.end(), [&](const Inputs& each) {
      return Answers(first, slot, each);
    });
    if (!answers && (has_value || Text(slot, "ActionFlag") == "Y")) {
      faults_.Add("no request of its ATM with its status alone is answered with it",
                  "of its ATM never get it", slot);
    }
  }

  // A card range must answer for a card that begins as its prefix does: by itself, and beside the
  // others for one of those that are tried.
  void JudgeFit(int slot) {
    bool is_matched = false;
    for (const Inputs& request : RequestsOfFit(slot)) {
      is_matched = is_matched || Answers(slot, slot, request);
      if (is_matched && AnswersAmong(0, rows_.count(), slot, request)) return;
    }
    faults_.Add(is_matched ? "no card is answered with it" : "no card matches its CardPrefix",
                "never take its state", slot);
  }

 private:
  struct Above {
    std::size_t seen = 0;  // how many of the ATMs were looked at
    std::size_t last = 0;  // the number of the last that a row is not for, from 1; 0 without
  };

  void Point(int first, int count) {
    rows_.table->point(util_, rows_[first]);
    util_.*rows_.table->slots = count;
  }

  std::string Text(int slot, const char* field) {
    return FieldText(*rows_.table->Find(field), rows_[slot]);
  }

  void AddNever(const std::string& what, int slot) { faults_.Add(what, "never get it", slot); }

  std::vector<Inputs> RequestsOfFit(int slot) {
    Inputs request;
    request["match2"] = Text(slot, "MatchKey2");
    std::vector<Inputs> requests;
    for (const std::string& key : {Text(slot, "MatchKey1"), kNew}) {  // one for all takes any key
      request["match1"] = key;
      for (const std::string& card : reach_.cards.For(Text(slot, "CardPrefix"), key)) {
        request["card"] = card;
        requests.push_back(request);
      }
    }
    return requests;
  }

  std::vector<char> MarkedFreeRecord() const {
    std::vector<char> record = rows_.table->FreeRecord();
    PutMark(question_, 0, record.data());
    return record;
  }

  // A row that was taken away by its key text alone may still be found by the rest.
  void JudgeFree(int slot) {
    std::vector<Inputs> requests;
    if (rows_.table->Find("CardPrefix") != nullptr) {
      requests = RequestsOfFit(slot);
    } else if (!atms_.empty()) {
      requests = ActionRequests(slot, atms_.back());
    }
    const bool answers = std::any_of(requests.begin(), requests.end(), [&](const Inputs& request) {
      return AnswersAmong(0, rows_.count(), slot, request);
    });
    if (answers) faults_.Add("a free slot answers", "take what it held", slot);
  }

  // What an ATM asks to get the row's action, and its value.
  std::vector<Inputs> ActionRequests(int slot, const Inputs& atm) {
    std::vector<Inputs> requests;
    Inputs request = RequestOf(slot);
    for (const char* const name : {"inst", "group", "atm"}) request[name] = atm[name];
    if (Text(slot, "ActionFlag") == "Y") requests.push_back(request);
    const auto& txn = reach_.txns.NumberFor(Text(slot, "TxnCode"));
    request["search"] = "value";
    request["txn"] = txn.value_or("");
    if (Text(slot, "TxnFlag") == "Y" && txn.has_value()) requests.push_back(request);
    return requests;
  }

  // For the row's ATM, or one that no row has where any will do; of an action row with its status.
  Inputs RequestOf(int slot) {
    Inputs request;
    request["search"] = "action";
    request["txn"] = "0";
    if (rows_.table->Find("StatusCode") != nullptr) {
      request["statuses"] = Text(slot, "StatusCode") + "|";
    }
    for (const auto& [name, field] :
         {std::pair{"inst", "InstTerminalGroup"}, {"group", "AtmLogicalGroup"}, {"atm", "AtmId"}}) {
      const std::string text = Text(slot, field);
      request[name] = text == kAny ? kNew : text;
    }
    return request;
  }

  // Of a request that differs from others in its ATM only.
  bool IsAnswered(const Inputs& request) {
    const auto [rest, is_new] = rests_.emplace(AtmOf(request), false);
    if (is_new) {
      Point(0, rows_.count());
      rest->second = question_.ask(util_, request).found;
    }
    return rest->second;
  }

  // Whether a row that is made for this request is for an ATM.
  static bool IsFor(const Inputs& request, const Inputs& atm) {
    const auto takes = [&](const char* name) {
      return request.Is(name, kNew.c_str()) || request.Is(name, atm[name]);
    };
    return takes("inst") && takes("group") && takes("atm");
  }

  static std::string AtmOf(const Inputs& request) {
    return std::string(request["inst"]) + '\0' + request["group"] + '\0' + request["atm"];
  }

  // The first row of a request or an ATM, which is judged at the latest now.
  int FirstOf(const std::string& who, int slot) { return firsts_.emplace(who, slot).first->second; }

  // Whether the row answers, asked of the rows from `first` to itself: whoever could come before it
  // lies there, and a look at all rows for each of them would last minutes.
  bool Answers(int first, int slot, const Inputs& request) {
    return AnswersAmong(first, slot - first + 1, slot, request);
  }

  bool AnswersAmong(int first, int count, int slot, const Inputs& request) {
    Point(first, count);
    PutMark(question_, 1, rows_[slot]);
    const int mark = MarkOf(question_, question_.ask(util_, request));
    PutMark(question_, 0, rows_[slot]);
    return mark == 1;
  }

  // Whether the row's ATM, then one of its group, then one of its institution, the latter without
  // rows of their own, is answered whatever it asks, as it would be without those rows.
  void JudgeRest(int slot, Inputs request) {
    request["txn"] = reach_.txns.NumberFor(kAny).value_or("0");
    request["resp"] = reach_.resps.NumberFor(kAny).value_or("0");
    request["currency"] = reach_.currencies.NumberFor(kAny).value_or("0");
    const struct {
      const char *name, *what, *effect;
    } kLevels[] = {{"atm", "its ATM has no row for all, but its group has",
                    "find nothing for what the ATM's own rows do not name"},
                   {"group", "its group has no row for all, but its institution has",
                    "find nothing for ATMs of the group that have no row"},
                   {"inst", "its institution has no row for all, but there is one for any",
                    "find nothing for ATMs of the institution that have no row"}};
    for (const auto& [name, what, effect] : kLevels) {
      const bool is_new = request[name] != kNew && judged_.insert(AtmOf(request)).second;
      const bool misses = is_new && !IsAnswered(request);
      request[name] = kNew;
      if (misses && IsAnswered(request)) faults_.Add(what, effect, slot);
    }
  }

  // Whether the row answers for the last ATM above that it is not for. A row for all ATMs is for
  // those of its group, one for all groups for those of its institution, and so on.
  void JudgeReach(int slot, const Inputs& request) {
    Above& above = aboves_[AtmOf(request)];
    std::size_t at = atms_.size();
    while (at > above.seen && IsFor(request, atms_[at - 1])) --at;
    if (at > above.seen) above.last = at;
    above.seen = atms_.size();
    const auto atm = above.last == 0 ? std::nullopt : std::optional<Inputs>(atms_[above.last - 1]);
    if (FirstOf(AtmOf(request), slot) == slot) atms_.push_back(request);
    if (!atm.has_value()) return;
    for (const Inputs& each : ActionRequests(slot, *atm)) {
      if (!Answers(FirstOf(AtmOf(*atm), slot), slot, each)) continue;
      faults_.Add("requests of an ATM above are answered with it", "take it for theirs", slot);
      return;
    }
  }

  const Question& question_;
  Rows& rows_;
  RowFaults faults_;
  const Reach reach_;
  VoATMUtil util_;
  std::set<std::string> judged_;         // whose rest was judged
  std::map<std::string, bool> rests_;    // whether an ATM is answered whatever it asks
  std::map<std::string, int> firsts_;    // the first row of each request or ATM
  std::map<std::string, Above> aboves_;  // by the ATM that a row is for
  std::vector<Inputs> atms_;             // a request of each ATM, in the order of their first rows
};

}  // namespace

std::vector<Finding> FindDeadRows(Rows* rows) {
  const struct {
    const char* question;
    void (AskedRows::*judge)(int slot);
  } kJudges[] = {{"indirect-state", &AskedRows::JudgeFit},
                 {"property", &AskedRows::JudgeProperty},
                 {"action", &AskedRows::JudgeAction}};
  for (const auto& [question, judge] : kJudges) {
    if (FindQuestion(question)->table == rows->table) return AskedRows(question, rows).Judge(judge);
  }
  return {};
}
