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
  if (code == kAny) {
    if (auto number = Rarest("", false)) return number;
    return Rarest("", true);
  }
  if (!IsNumber(code)) return std::nullopt;
  if (code.size() == digits_) return code;
  return code.size() == class_digits_ ? Rarest(code, true) : std::nullopt;
}

// The largest number that begins so and is no row's; unless it may, nor is of the class of one.
std::optional<std::string> Codes::Rarest(const std::string& start, bool may_have_class) const {
  const std::size_t open = digits_ - start.size();
  for (int rest = std::stoi(std::string(open, '9')); rest >= 0; --rest) {
    const std::string digits = std::to_string(rest);
    std::string number = start;
    number.append(open - digits.size(), '0').append(digits);
    const bool has_class = numbers_.count(number.substr(0, class_digits_)) > 0;
    if (numbers_.count(number) == 0 && (may_have_class || !has_class)) return number;
  }
  return std::nullopt;
}

Cards::Cards(const std::vector<const Rows*>& all) {
  for (const std::string& prefix : TextsOf(all, "CardPrefix")) starts_.insert(StartOf(prefix));
}

std::vector<std::string> Cards::For(const std::string& prefix) const {
  const std::string start = StartOf(prefix);
  if (!IsNumber(start)) return {};
  std::vector<std::string> cards;
  if (auto untaken = Untaken(start)) {
    cards.push_back(*std::move(untaken));
  } else {
    for (char next = '0'; next <= '9'; ++next) cards.push_back(start + next);
  }
  for (std::string& card : cards) card.resize(kPrefixDigits, card.back());
  return cards;
}

std::optional<std::string> Cards::Untaken(const std::string& start) const {
  if (start.size() >= kPrefixDigits) return start;
  for (char next = '0'; next <= '9'; ++next) {
    const auto longer = starts_.lower_bound(start + next);
    if (longer == starts_.end() || longer->compare(0, start.size() + 1, start + next) != 0) {
      return start + next;
    }
  }
  for (char next = '0'; next <= '9'; ++next) {
    if (starts_.count(start + next) > 0) continue;
    if (auto untaken = Untaken(start + next)) return untaken;
  }
  return std::nullopt;
}
