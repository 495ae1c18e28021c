#include "ask/trace_line.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

constexpr std::string_view kEscapedNewline = "\\n";
// No text of the library is longer.
constexpr std::size_t kLongestText = 65536;
// A text of few words is believed only at the beginning of a line, or behind what ends a prefix.
constexpr std::size_t kFewWords = 8;

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool StartsWith(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && std::memcmp(text.data(), start.data(), start.size()) == 0;
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// Blanks at the ends are left out, others are made one; so is the newline that a trace escapes.
void Collapse(std::string_view line, std::string* text) {
  text->clear();
  const auto last = line.end();
  for (auto at = line.begin(); at != last;) {
    const auto word = at;
    while (at != last && !IsBlank(*at)) ++at;
    if (at != word && !text->empty()) *text += ' ';
    text->append(word, at);
    while (at != last && IsBlank(*at)) ++at;
  }
  while (EndsWith(*text, kEscapedNewline)) {
    text->resize(text->size() - kEscapedNewline.size());
    while (!text->empty() && text->back() == ' ') text->pop_back();
  }
}

// Whether a text may begin behind this character.
bool EndsPrefix(char c) { return c == ' ' || std::strchr(":]>)|=,;\"'", c) != nullptr; }

// Whether a prefix ends in what only a prefix ends in: punctuation, or the level of a trace.
bool IsWholePrefix(std::string_view prefix) {
  while (!prefix.empty() && prefix.back() == ' ') prefix.remove_suffix(1);
  if (prefix.empty() || EndsPrefix(prefix.back())) return true;
  return prefix.size() > 2 && prefix.substr(prefix.size() - 3, 2) == "] ";
}

// How many characters at the start of a text a conversion printed, or npos. `behind` is the literal
// behind it, which ends the text when it is the last.
std::size_t PrintedBy(char conversion, std::string_view text, std::string_view behind, bool last) {
  if (conversion == 'c') return text.empty() ? std::string_view::npos : 1;
  if (conversion != 's') {
    std::size_t end = !text.empty() && text.front() == '-' ? 1 : 0;
    const std::size_t first = end;
    while (end < text.size() && IsDigit(text[end])) ++end;
    const bool as_printed = conversion == '0' || end == first + 1 || text[first] != '0';
    return end > first && as_printed ? end : std::string_view::npos;
  }
  if (!last) return text.find(behind);
  return EndsWith(text, behind) ? text.size() - behind.size() : std::string_view::npos;
}

// Dates as they stand before a clock: 0 is a digit, A a letter, - what separates them.
constexpr std::string_view kDates[] = {
    "0000-00-00", "00-00-0000",  "0-00-0000",   "00-00-00", "00000000", "00-AAA-0000", "0-AAA-0000",
    "00AAA0000",  "0000-AAA-00", "AAA-00-0000", "AAA-00",   "AAA-0",    "00-00"};
constexpr std::string_view kClock = "00:00:00";

bool IsOfKind(char kind, char c) {
  if (kind == '0') return IsDigit(c);
  if (kind == 'A') return std::isalpha(static_cast<unsigned char>(c)) != 0;
  return kind == '-' ? std::strchr("-/. ", c) != nullptr : kind == c;
}

bool EndsWithForm(std::string_view text, std::string_view form) {
  if (text.size() < form.size()) return false;
  text.remove_prefix(text.size() - form.size());
  return std::equal(form.begin(), form.end(), text.begin(), IsOfKind);
}

bool IsDatePart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("-/.", c) != nullptr;
}

// Where the date begins before a clock; where that does when there is none.
std::size_t StartOfTime(std::string_view before_clock) {
  const std::string_view date =
      before_clock.substr(0, before_clock.find_last_not_of(" T_-,;:[]") + 1);
  for (const std::string_view form : kDates) {
    if (!EndsWithForm(date, form)) continue;
    const std::size_t start = date.size() - form.size();
    if (start == 0 || !IsDatePart(date[start - 1])) return start;
  }
  return before_clock.size();
}

std::string_view TimeIn(std::string_view prefix) {
  for (std::size_t end = kClock.size(); end <= prefix.size(); ++end) {
    const std::string_view before = prefix.substr(0, end - kClock.size());
    if (!EndsWithForm(prefix.substr(0, end), kClock)) continue;
    if (!before.empty() && IsDigit(before.back())) continue;
    const std::size_t start = StartOfTime(before);
    return prefix.substr(start, prefix.find_first_of(" ]>)\"", end) - start);
  }
  return {};
}

std::string_view ProcessIn(std::string_view prefix) {
  for (std::size_t open = prefix.find('['); open != std::string_view::npos;
       open = prefix.find('[', open + 1)) {
    const std::size_t close = prefix.find_first_not_of("0123456789", open + 1);
    if (close == std::string_view::npos || close == open + 1 || prefix[close] != ']') continue;
    return prefix.substr(open + 1, close - open - 1);
  }
  return {};
}

}  // namespace

std::string TraceMatch::Means() const {
  std::string_view form = row->means;
  const bool widest = row->widest != nullptr && !printed.empty() && printed.back() == row->widest;
  if (widest) form = form.substr(0, form.rfind(';'));
  std::string text;
  for (std::size_t open = form.find('{'); open != std::string_view::npos; open = form.find('{')) {
    text += form.substr(0, open);
    const auto place = static_cast<std::size_t>(form[open + 1] - '1');
    text += place < printed.size() ? printed[place] : "...";
    form.remove_prefix(open + 3);  // "{1}"
  }
  text += form;
  return widest ? text + "; nothing wider is left to try." : text;
}

TraceReader::TraceReader() {
  for (const TraceText& row : TraceTexts()) {
    Pattern pattern = Compile(row);
    // A text that begins with any text cannot be told from others.
    if (pattern.head.empty()) continue;
    patterns_[static_cast<unsigned char>(pattern.head.front())].push_back(std::move(pattern));
  }
  for (std::vector<Pattern>& patterns : patterns_) {
    std::stable_sort(patterns.begin(), patterns.end(),
                     [](const Pattern& a, const Pattern& b) { return a.words > b.words; });
  }
}

TraceReader::Pattern TraceReader::Compile(const TraceText& row) {
  Pattern pattern = {&row, {}, {}, 0};
  std::string text;
  Collapse(row.text, &text);
  std::string* literal = &pattern.head;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      *literal += text[at];
      ++pattern.words;
      continue;
    }
    const bool padded = text[at + 1] == '0';
    at = text.find_first_of("sdc", at);
    pattern.pieces.push_back({padded ? '0' : text[at], {}});
    literal = &pattern.pieces.back().literal;
  }
  return pattern;
}

bool TraceReader::Takes(const Pattern& pattern, std::string_view text,
                        std::vector<std::string_view>* printed) {
  if (!StartsWith(text, pattern.head)) return false;
  text.remove_prefix(pattern.head.size());
  printed->clear();
  std::string_view before = pattern.head;
  for (const Piece& piece : pattern.pieces) {
    std::string_view behind = piece.literal;
    const bool last = &piece == &pattern.pieces.back();
    // Of an empty text between two blanks only one blank is left.
    const bool joined = EndsWith(before, " ") && StartsWith(behind, " ") &&
                        StartsWith(text, behind.substr(1)) &&
                        (!last || text.size() + 1 == behind.size());
    if (joined) behind.remove_prefix(1);
    const std::size_t size = joined ? 0 : PrintedBy(piece.conversion, text, behind, last);
    if (size == std::string_view::npos || !StartsWith(text.substr(size), behind)) return false;
    printed->push_back(text.substr(0, size));
    text.remove_prefix(size + behind.size());
    before = piece.literal;
  }
  return text.empty();
}

// "said SysErr[ name ] ErrNo[ number ]"
void TraceReader::SplitError() {
  constexpr std::string_view kName = " SysErr[ ", kErrorNumber = " ] ErrNo[ ", kEnd = " ]";
  said_ = text_;
  if (!EndsWith(said_, kEnd)) return;
  const std::string_view text = said_.substr(0, said_.size() - kEnd.size());
  const std::size_t number = text.rfind(kErrorNumber);
  const std::size_t name = number == std::string_view::npos ? number : text.rfind(kName, number);
  if (name == std::string_view::npos || name + kName.size() > number) return;
  const std::string_view digits = text.substr(number + kErrorNumber.size());
  if (digits.empty() || !std::all_of(digits.begin(), digits.end(), IsDigit)) return;
  line_.error_number = digits;
  line_.error_name = text.substr(name + kName.size(), number - name - kName.size());
  said_ = text.substr(0, name);
}

bool TraceReader::FindAt(std::size_t at, bool ends_blank) {
  const std::string_view text = said_.substr(at);
  std::size_t most = 0;
  for (const Pattern& pattern : patterns_[static_cast<unsigned char>(text.front())]) {
    if (pattern.words < most) break;
    if (!Takes(pattern, text, &printed_)) continue;
    if (pattern.words < kFewWords && !IsWholePrefix(said_.substr(0, at))) continue;
    most = pattern.words;
    const bool first = IsBlank(std::string_view(pattern.row->text).back()) == ends_blank;
    line_.matches.insert(first ? line_.matches.begin() : line_.matches.end(),
                         TraceMatch{pattern.row, printed_});
  }
  return most > 0;
}

const TraceLine& TraceReader::Read(std::string_view line) {
  line_.matches.clear();
  line_.time = line_.process = line_.error_name = line_.error_number = {};
  if (EndsWith(line, "\r")) line.remove_suffix(1);
  Collapse(line, &text_);
  SplitError();
  const bool ends_blank = !line.empty() && IsBlank(line.back());
  for (std::size_t at = said_.size() - std::min(said_.size(), kLongestText); at < said_.size();
       ++at) {
    if (patterns_[static_cast<unsigned char>(said_[at])].empty()) continue;
    if ((at > 0 && !EndsPrefix(said_[at - 1])) || !FindAt(at, ends_blank)) continue;
    line_.time = TimeIn(said_.substr(0, at));
    line_.process = ProcessIn(said_.substr(0, at));
    break;
  }
  return line_;
}
