// Lines of text as data.
#ifndef TESTS_SUPPORT_WORDS_H
#define TESTS_SUPPORT_WORDS_H

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

// The words of a line, each between two separators.
inline Texts Words(const std::string& line, char separator = ' ') {
  Texts words(1);
  for (const char c : line) c == separator ? words.emplace_back() : words.back() += c;
  return words;
}

// The words of each line.
inline std::vector<Texts> WordsOf(const Texts& lines) {
  std::vector<Texts> words;
  for (const std::string& line : lines) words.push_back(Words(line));
  return words;
}

// Sets a record's text field.
template <std::size_t N>
void SetField(char (&field)[N], const std::string& text) {
  text.copy(field, N - 1);
  field[text.size()] = '\0';
}

#endif  // TESTS_SUPPORT_WORDS_H
