// With what a request reaches a row that takes several codes or cards: with one that no other row
// names more closely, where there is one.
#ifndef TOOLS_VOATM_ASK_REACH_H
#define TOOLS_VOATM_ASK_REACH_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ask/experiment.h"

inline const std::string kAny = "*";  // a row's text that takes every request's

// The codes of a column of some rows.
class Codes {
 public:
  // A number of so many digits; a row may give a class of them by its first digits, unless these
  // are all.
  Codes(const std::vector<const Rows*>& all, const char* field, std::size_t digits,
        std::size_t class_digits);

  // Of one of the codes, or of kAny. Nothing when no request can equal it, or when the others take
  // all numbers.
  const std::optional<std::string>& NumberFor(const std::string& code) const {
    return numbers_.at(code);
  }

 private:
  std::optional<std::string> Find(const std::string& code) const;
  std::optional<std::string> Rarest(const std::string& start) const;

  std::size_t digits_;
  std::size_t class_digits_;
  std::map<std::string, std::optional<std::string>> numbers_;
};

// The card prefixes of some rows.
class Cards {
 public:
  explicit Cards(const std::vector<const Rows*>& all);

  // A card that begins as a prefix does and, of the rows with its first match key, as no longer
  // one; without such a card one for each digit behind it. None when it is no prefix.
  std::vector<std::string> For(const std::string& prefix, const std::string& key) const;

 private:
  bool IsTaken(const std::string& start, const std::string& key) const;
  std::optional<std::string> Untaken(const std::string& start, const std::string& key) const;

  std::set<std::pair<std::string, std::string>> starts_;  // MatchKey1, and a prefix's digits
};

// What reaches the rows of a table, of one side or of several.
struct Reach {
  explicit Reach(const std::vector<const Rows*>& all)
      : txns(all, "TxnCode", 6, 2),
        resps(all, "RespCode", 3, 3),
        currencies(all, "CurrencyCode", 9, 9),
        cards(all) {}

  const Codes txns;
  const Codes resps;
  const Codes currencies;  // of nine digits none is a row's own
  const Cards cards;
};

#endif  // TOOLS_VOATM_ASK_REACH_H
