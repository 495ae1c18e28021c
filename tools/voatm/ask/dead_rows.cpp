#include "ask/dead_rows.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "ask/observation.h"
#include "look/row_faults.h"
#include "show/record_view.h"

namespace {

const std::string kAny = "*";
const std::string kNew = "\x7f";  // a text that no row has

constexpr const char* kNever = "no request is answered with it";
constexpr const char* kNeverEffect = "never get it";

template <std::size_t kSize>
std::string TextOf(const char (&field)[kSize]) {
  return {field, strnlen(field, kSize)};
}

template <std::size_t kSize>
std::string RequestFor(const char (&field)[kSize]) {
  const std::string text = TextOf(field);
  return text == kAny ? kNew : text;
}

// The codes of one column, and numbers for requests that meet them.
class Codes {
 public:
  explicit Codes(int digits) : digits_(digits) {}

  void Add(const std::string& code) { codes_.insert(code); }

  // The number whose digits the code is or begins with, and which no other row has then; nothing
  // when no request can equal the code.
  std::optional<int> NumberFor(const std::string& code) const {
    const bool is_number = code.find_first_not_of("0123456789") == std::string::npos;
    if (is_number && static_cast<int>(code.size()) == digits_) return std::atoi(code.c_str());
    const bool is_class = is_number && digits_ == 6 && code.size() == 2;
    if (!is_class && code != kAny) return std::nullopt;
    for (int number = digits_ == 6 ? 999999 : 999; number >= 0; --number) {
      const std::string digits = Digits(number);
      const std::string its_class = digits.substr(0, 2);
      if (codes_.count(digits) > 0) continue;
      if (is_class ? its_class == code : codes_.count(its_class) == 0) return number;
    }
    return std::nullopt;
  }

 private:
  std::string Digits(int number) const {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%0*d", digits_, number);
    return digits;
  }

  int digits_;
  std::set<std::string> codes_;
};

// The library on the rows.
class Asked {
 public:
  explicit Asked(Rows* rows) : rows_(*rows), faults_(*rows->table) {
    util_.dptr = Observation::Trace();
    Point(0, rows->count());
  }

  void Point(int first, int count) {
    rows_.table->point(util_, rows_[first]);
    util_.*rows_.table->slots = count;
  }

  // Free, or without a key, which is a fault of its own.
  bool HasNoKey(int slot) {
    const records::RecordTable& table = *rows_.table;
    return IsFree(table, rows_[slot]) || *(rows_[slot] + table.key().offset) == '\0';
  }

 protected:
  Rows& rows_;
  RowFaults faults_;
  VoATMUtil util_;
};

class AskedProperties : Asked {
 public:
  explicit AskedProperties(Rows* rows) : Asked(rows) {
    for (int slot = 0; slot < rows_.count(); ++slot) {
      VoAtmProperty& row = Row(slot);
      row.RecordId = slot;
      txns_.Add(TextOf(row.TxnCode));
      resps_.Add(TextOf(row.RespCode));
      currencies_.insert(row.CurrencyCode);
    }
  }

  std::vector<Finding> Run() {
    for (int slot = 0; slot < rows_.count(); ++slot) {
      if (HasNoKey(slot)) continue;
      JudgeRow(slot);
      JudgeGroup(slot);
    }
    return faults_.Findings();
  }

 private:
  VoAtmProperty& Row(int slot) { return *reinterpret_cast<VoAtmProperty*>(rows_[slot]); }

  // The slot that answers, or -1.
  int Ask(const std::string& inst, const std::string& group, const std::string& atm, int txn,
          int resp, int currency) {
    VoAtmProperty answer{};
    const int result = util_.readAtmProperty(inst.c_str(), group.c_str(), atm.c_str(), txn, resp,
                                             currency, &answer);
    return result == 1 ? answer.RecordId : -1;
  }

  int NewCurrency() const {
    int currency = INT_MAX;
    while (currencies_.count(currency) > 0) --currency;
    return currency;
  }

  void JudgeRow(int slot) {
    const VoAtmProperty& row = Row(slot);
    const auto txn = txns_.NumberFor(TextOf(row.TxnCode));
    const auto resp = resps_.NumberFor(TextOf(row.RespCode));
    if (!txn.has_value()) faults_.Add("no request can equal its TxnCode", kNeverEffect, slot);
    if (!resp.has_value()) faults_.Add("no request can equal its RespCode", kNeverEffect, slot);
    if (!txn.has_value() || !resp.has_value()) return;
    const int currency = row.CurrencyCode == 0 ? NewCurrency() : row.CurrencyCode;
    const int answers = Ask(RequestFor(row.InstTerminalGroup), RequestFor(row.AtmLogicalGroup),
                            RequestFor(row.AtmId), *txn, *resp, currency);
    if (answers != slot) faults_.Add(kNever, kNeverEffect, slot);
  }

  // Whether an ATM of the row's group without rows of its own is answered, as it would be without
  // the group's rows.
  void JudgeGroup(int slot) {
    const VoAtmProperty& row = Row(slot);
    const std::string inst = RequestFor(row.InstTerminalGroup);
    const std::string group = TextOf(row.AtmLogicalGroup);
    if (group == kAny || !groups_.insert({inst, group}).second) return;
    const int txn = txns_.NumberFor(kAny).value_or(0), resp = resps_.NumberFor(kAny).value_or(0);
    if (Ask(inst, group, kNew, txn, resp, NewCurrency()) >= 0) return;
    if (Ask(inst, kNew, kNew, txn, resp, NewCurrency()) < 0) return;
    faults_.Add("its group has no row for all, but its institution has",
                "find nothing for ATMs of the group that have no row", slot);
  }

  Codes txns_{6};
  Codes resps_{3};
  std::set<int> currencies_;
  std::set<std::pair<std::string, std::string>> groups_;
};

class AskedActions : Asked {
 public:
  explicit AskedActions(Rows* rows) : Asked(rows) {
    for (int slot = 0; slot < rows_.count(); ++slot) txns_.Add(TextOf(Row(slot).TxnCode));
  }

  std::vector<Finding> Run() {
    const VoAtmActionProperty* before = nullptr;  // the ATM whose rows lie before this one's
    const VoAtmActionProperty* last = nullptr;
    for (int slot = 0; slot < rows_.count(); ++slot) {
      if (HasNoKey(slot)) continue;
      const VoAtmActionProperty& row = Row(slot);
      if (last != nullptr && !IsSameAtm(*last, row)) before = last;
      last = &row;
      JudgeRow(slot);
      if (before == nullptr || row.ActionFlag != 'Y' || TextOf(row.AtmId) == kAny) continue;
      if (Ask(*before, row, 0, STATUS_ACTION) == slot) {
        faults_.Add("requests of an ATM above are answered with it", "take it for theirs", slot);
      }
    }
    return faults_.Findings();
  }

 private:
  VoAtmActionProperty& Row(int slot) {
    return *reinterpret_cast<VoAtmActionProperty*>(rows_[slot]);
  }

  static bool IsSameAtm(const VoAtmActionProperty& one, const VoAtmActionProperty& other) {
    return TextOf(one.InstTerminalGroup) == TextOf(other.InstTerminalGroup) &&
           TextOf(one.AtmLogicalGroup) == TextOf(other.AtmLogicalGroup) &&
           TextOf(one.AtmId) == TextOf(other.AtmId);
  }

  void JudgeRow(int slot) {
    const VoAtmActionProperty& row = Row(slot);
    const bool has_action = row.ActionFlag == 'Y', has_value = row.TxnFlag == 'Y';
    const auto txn = txns_.NumberFor(TextOf(row.TxnCode));
    if (has_value && !txn.has_value()) {
      faults_.Add("no request can equal its TxnCode", kNeverEffect, slot);
    }
    if (has_action && Ask(row, row, 0, STATUS_ACTION) == slot) return;
    if (has_value && txn.has_value() && Ask(row, row, *txn, TXN_VALUE) == slot) return;
    if (has_action || has_value) faults_.Add(kNever, kNeverEffect, slot);
  }

  // The slot that answers a request of one row's ATM with the other's status, or -1. The library
  // says which it is.
  int Ask(const VoAtmActionProperty& atm, const VoAtmActionProperty& status, int txn, int search) {
    std::string statuses = TextOf(status.StatusCode) + "|";
    char action[sizeof status.ActionText + 1] = {};
    int value = 0;
    Observation observation;
    util_.readAtmActionProperty(
        RequestFor(atm.InstTerminalGroup).c_str(), RequestFor(atm.AtmLogicalGroup).c_str(),
        RequestFor(atm.AtmId).c_str(), statuses.data(), txn, action, &value, search);
    int slot = -1;
    for (const Event& event : observation.Take()) {
      std::sscanf(event.text.c_str(), "inside tableoffset[%d]", &slot);
    }
    return slot;
  }

  Codes txns_{6};
};

// A card range alone in a table must answer for a card that begins as its prefix does.
class AskedFits : Asked {
 public:
  using Asked::Asked;

  std::vector<Finding> Run() {
    for (int slot = 0; slot < rows_.count(); ++slot) {
      if (HasNoKey(slot)) continue;
      const auto& row = *reinterpret_cast<const AtmFit*>(rows_[slot]);
      const std::string prefix = TextOf(row.CardPrefix);
      std::string card = prefix.substr(0, prefix.find('F'));
      const bool digits = card.find_first_not_of("0123456789") == std::string::npos;
      card.resize(std::max<std::size_t>(card.size(), 16), '0');
      char state[16] = {};
      Point(slot, 1);
      const std::string key1 = TextOf(row.MatchKey1), key2 = TextOf(row.MatchKey2);
      if (digits && util_.readIndirectState(key1.c_str(), key2.c_str(), card.c_str(), state) == 1) {
        continue;
      }
      faults_.Add("no card matches its CardPrefix", "never take its state", slot);
    }
    return faults_.Findings();
  }
};

}  // namespace

std::vector<Finding> FindDeadRows(Rows* rows) {
  if (rows->table->slots == &VoATMUtil::MaxFit) return AskedFits(rows).Run();
  if (rows->table->record_size == sizeof(VoAtmProperty)) return AskedProperties(rows).Run();
  if (rows->table->record_size == sizeof(VoAtmActionProperty)) return AskedActions(rows).Run();
  return {};
}
