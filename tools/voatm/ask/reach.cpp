#include "ask/reach.h"

#include <algorithm>

#include "show/record_view.h"

namespace {

constexpr std::size_t kPrefixDigits = 10;  // of a card's number; the library looks at no more

bool IsNumber(const std::string& text) {
  return text.find_first_not_of("0123456789") == std::string::npos;
}

// The texts of a column; none when the tables have no such field.
std::set<std::string> TextsOf(const std::vector<const Rows*>& all, const char* field) {
  std::set<std::string> texts;
  for (const Rows* rows : all) {
    const records::RecordField* const found = rows->table->Find(field);
    for (int slot = 0; found != nullptr && slot < rows->count(); ++slot) {
      texts.insert(FieldText(*found, (*rows)[slot]));
    }
  }
  return texts;
}

std::string StartOf(const std::string& prefix) {
  return prefix.substr(0, prefix.find_first_of("Ff"));
}

}  // namespace

Codes::Codes(const std::vector<const Rows*>& all, const char* field, std::size_t digits,
             std::size_t class_digits)
    : digits_(digits), class_digits_(class_digits) {
  for (const std::string& text : TextsOf(all, field)) numbers_[text] = std::nullopt;
  numbers_[kAny] = std::nullopt;
  for (auto& [code, number] : numbers_) number = Find(code);
}

std::optional<std::string> Codes::Find(const std::string& code) const {
  if (code == kAny) return Rarest("");
  if (!IsNumber(code)) return std::nullopt;
  if (code.size() == digits_) return code;
  return code.size() == class_digits_ ? Rarest(code) : std::nullopt;
}

// The largest number that begins so and is no row's, nor of the class of one but this.
std::optional<std::string> Codes::Rarest(const std::string& start) const {
  const std::size_t open = digits_ - start.size();
  for (int rest = std::stoi(std::string(open, '9')); rest >= 0; --rest) {
    const std::string digits = std::to_string(rest);
    std::string number = start;
    number.append(open - digits.size(), '0').append(digits);
    const std::string its_class = number.substr(0, class_digits_);
    if (numbers_.count(number) == 0 && (its_class == start || numbers_.count(its_class) == 0)) {
      return number;
    }
  }
  return std::nullopt;
}

Cards::Cards(const std::vector<const Rows*>& all) {
  for (const Rows* rows : all) {
    const records::RecordField* const prefix = rows->table->Find("CardPrefix");
    for (int slot = 0; prefix != nullptr && slot < rows->count(); ++slot) {
      const std::string key = FieldText(*rows->table->Find("MatchKey1"), (*rows)[slot]);
      starts_.emplace(key, StartOf(FieldText(*prefix, (*rows)[slot])));
    }
  }
}

std::vector<std::string> Cards::For(const std::string& prefix, const std::string& key) const {
  const std::string start = StartOf(prefix);
  if (!IsNumber(start)) return {};
  std::vector<std::string> cards;
  if (auto untaken = Untaken(start, key)) {
    cards.push_back(*std::move(untaken));
  } else {
    for (char next = '0'; next <= '9'; ++next) cards.push_back(start + next);
  }
  for (std::string& card : cards) card.resize(kPrefixDigits, card.back());
  return cards;
}

// Whether a prefix of the rows with the key begins so.
bool Cards::IsTaken(const std::string& start, const std::string& key) const {
  const auto longer = starts_.lower_bound({key, start});
  return longer != starts_.end() && longer->first == key &&
         longer->second.compare(0, start.size(), start) == 0;
}

std::optional<std::string> Cards::Untaken(const std::string& start, const std::string& key) const {
  if (start.size() >= kPrefixDigits) return start;
  for (char next = '0'; next <= '9'; ++next) {
    if (!IsTaken(start + next, key)) return start + next;
  }
  for (char next = '0'; next <= '9'; ++next) {
    if (starts_.count({key, start + next}) != 0) continue;
    if (auto untaken = Untaken(start + next, key)) return untaken;
  }
  return std::nullopt;
}
