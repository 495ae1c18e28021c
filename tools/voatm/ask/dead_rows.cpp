#include "ask/dead_rows.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "ask/observation.h"
#include "ask/question.h"
#include "look/row_faults.h"
#include "show/record_view.h"

namespace {

const std::string kAny = "*";
const std::string kNew = "\x7f";                // a text that no row has
const std::string kNewCurrency = "2147483647";  // nor this number
constexpr std::size_t kClassDigits = 2;         // of a transaction code, that a row may give alone

bool IsNumber(const std::string& text) {
  return text.find_first_not_of("0123456789") == std::string::npos;
}

// The codes of a column, each with one that a request can have to meet it and no longer one.
class Codes {
 public:
  Codes(Rows* rows, const char* field, std::size_t digits, std::size_t class_digits)
      : digits_(digits), class_digits_(class_digits) {
    if (rows->table->Find(field) == nullptr) return;
    for (int slot = 0; slot < rows->count(); ++slot) {
      numbers_[FieldText(*rows->table->Find(field), (*rows)[slot])] = std::nullopt;
    }
    numbers_[kAny] = std::nullopt;
    for (auto& [code, number] : numbers_) number = Find(code);
  }

  // Nothing when no request can equal the code.
  const std::optional<std::string>& NumberFor(const std::string& code) const {
    return numbers_.at(code);
  }

 private:
  std::optional<std::string> Find(const std::string& code) const {
    if (IsNumber(code) && code.size() == digits_) return code;
    const bool is_class = IsNumber(code) && code.size() == class_digits_;
    if (!is_class && code != kAny) return std::nullopt;
    const std::string start = is_class ? code : "";
    const std::size_t open = digits_ - start.size();
    for (int rest = std::stoi(std::string(open, '9')); rest >= 0; --rest) {
      const std::string digits = std::to_string(rest);
      std::string number = start;
      number.append(open - digits.size(), '0').append(digits);
      const bool has_class = !is_class && numbers_.count(number.substr(0, class_digits_)) > 0;
      if (!has_class && numbers_.count(number) == 0) return number;
    }
    return std::nullopt;
  }

  std::size_t digits_;
  std::size_t class_digits_;  // of the class that a row may give instead; all when there is none
  std::map<std::string, std::optional<std::string>> numbers_;
};

// The rows of a table, each asked for what it was made for. The one that is asked about carries
// another mark than all others, so the answer says whether it is that row's.
class AskedRows {
 public:
  AskedRows(const char* question, Rows* rows)
      : question_(*FindQuestion(question)),
        rows_(*rows),
        faults_(*rows->table),
        txns_(rows, "TxnCode", 6, kClassDigits),
        resps_(rows, "RespCode", 3, 3) {
    util_.dptr = Observation::Trace();
    for (int slot = 0; slot < rows->count(); ++slot) PutMark(question_, 0, (*rows)[slot]);
  }

  std::vector<Finding> Judge(void (AskedRows::*judge)(int slot)) {
    for (int slot = 0; slot < rows_.count(); ++slot) {
      // One without a key is a fault of its own.
      const bool has_key = *(rows_[slot] + rows_.table->key().offset) != '\0';
      if (has_key && !IsFree(*rows_.table, rows_[slot])) (this->*judge)(slot);
    }
    return faults_.Findings();
  }

  void JudgeProperty(int slot) {
    Inputs request = RequestOf(slot);
    JudgeGroup(slot, request);
    const auto& txn = txns_.NumberFor(Text(slot, "TxnCode"));
    const auto& resp = resps_.NumberFor(Text(slot, "RespCode"));
    if (!txn.has_value()) AddNever("no request can equal its TxnCode", slot);
    if (!resp.has_value()) AddNever("no request can equal its RespCode", slot);
    if (!txn.has_value() || !resp.has_value()) return;
    const std::string currency = Text(slot, "CurrencyCode");
    request["txn"] = *txn;
    request["resp"] = *resp;
    request["currency"] = currency == "0" ? kNewCurrency : currency;
    if (!Answers(FirstOf(request, slot), slot, request)) {
      AddNever("no request is answered with it", slot);
    }
  }

  void JudgeAction(int slot) {
    Inputs request = RequestOf(slot);
    JudgeReach(slot, request);
    const bool has_action = Text(slot, "ActionFlag") == "Y";
    const bool has_value = Text(slot, "TxnFlag") == "Y";
    const auto& txn = txns_.NumberFor(Text(slot, "TxnCode"));
    if (has_value && !txn.has_value()) {
      faults_.Add("no request can equal its TxnCode", "never get its TxnValue", slot);
    }
    const int first = FirstOf(request, slot);
    if (has_action && Answers(first, slot, request)) return;
    request["search"] = "value";
    request["txn"] = txn.value_or("");
    if (has_value && txn.has_value() && Answers(first, slot, request)) return;
    if (has_action || has_value) AddNever("no request is answered with it", slot);
  }

  // A card range must answer for a card that begins as its prefix does: by itself, and beside the
  // others for one that goes on with some digit.
  void JudgeFit(int slot) {
    const std::string prefix = Text(slot, "CardPrefix");
    const std::string start = prefix.substr(0, prefix.find_first_of("Ff"));
    Inputs request;
    request["match1"] = Text(slot, "MatchKey1");
    request["match2"] = Text(slot, "MatchKey2");
    bool is_matched = false, answers = false;
    for (char next = '0'; next <= '9' && IsNumber(start) && !answers; ++next) {
      std::string card = start;
      card.resize(std::max<std::size_t>(card.size(), 16), next);
      request["card"] = card;
      is_matched = is_matched || Answers(slot, slot, request);
      answers = is_matched && AnswersAmong(0, rows_.count(), slot, request);
    }
    if (answers) return;
    faults_.Add(is_matched ? "no card is answered with it" : "no card matches its CardPrefix",
                "never take its state", slot);
  }

 private:
  void Point(int first, int count) {
    rows_.table->point(util_, rows_[first]);
    util_.*rows_.table->slots = count;
  }

  std::string Text(int slot, const char* field) {
    return FieldText(*rows_.table->Find(field), rows_[slot]);
  }

  void AddNever(const char* what, int slot) { faults_.Add(what, "never get it", slot); }

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

  bool IsAnswered(const Inputs& request) {
    Point(0, rows_.count());
    return question_.ask(util_, request).found;
  }

  static std::string AtmOf(const Inputs& request) {
    return std::string(request["inst"]) + '\0' + request["group"] + '\0' + request["atm"];
  }

  // The first row of the request's ATM, which is judged at the latest now.
  int FirstOf(const Inputs& request, int slot) {
    return firsts_.emplace(AtmOf(request), slot).first->second;
  }

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

  // Whether an ATM of the row's group without rows of its own is answered, as it would be without
  // the group's rows.
  void JudgeGroup(int slot, Inputs request) {
    const bool is_new = groups_.insert(request["inst"] + '\0' + request["group"]).second;
    if (!is_new || request["group"] == kNew) return;
    request["atm"] = kNew;
    request["txn"] = txns_.NumberFor(kAny).value_or("0");
    request["resp"] = resps_.NumberFor(kAny).value_or("0");
    request["currency"] = kNewCurrency;
    if (IsAnswered(request)) return;
    request["group"] = kNew;
    if (!IsAnswered(request)) return;
    faults_.Add("its group has no row for all, but its institution has",
                "find nothing for ATMs of the group that have no row", slot);
  }

  // Whether the row answers for the ATM whose rows lie before those of its own. A row for all ATMs
  // may do so within their institution, and one for all institutions everywhere.
  void JudgeReach(int slot, Inputs request) {
    if (!last_.has_value() || AtmOf(*last_) != AtmOf(request))
      above_ = std::exchange(last_, request);
    if (!above_.has_value()) return;
    const bool is_foreign = request["inst"] != kNew && request["inst"] != (*above_)["inst"];
    if (request["atm"] == kNew && !is_foreign) return;
    for (const char* const name : {"inst", "group", "atm"}) request[name] = (*above_)[name];
    if (Text(slot, "ActionFlag") != "Y") return;
    if (!Answers(FirstOf(*above_, slot), slot, request)) return;
    faults_.Add("requests of an ATM above are answered with it", "take it for theirs", slot);
  }

  const Question& question_;
  Rows& rows_;
  RowFaults faults_;
  Codes txns_;
  Codes resps_;
  VoATMUtil util_;
  std::set<std::string> groups_;
  std::map<std::string, int> firsts_;  // the first row of each ATM
  std::optional<Inputs> last_;         // for the ATM of the row before
  std::optional<Inputs> above_;        // for the ATM whose rows end before those of that one begin
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
