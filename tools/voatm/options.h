// What a verb takes on the command line, as data: the parser, help, completion and manual pages are
// made of the same rows.
#ifndef TOOLS_VOATM_OPTIONS_H
#define TOOLS_VOATM_OPTIONS_H

#include <climits>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The command line is wrong; says how.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The parts of a text between separators, none behind a last one; and such parts as one text.
std::vector<std::string> Split(const std::string& text, char separator);
std::string Joined(const std::vector<std::string>& parts, const std::string& separator);

// The one reader of numbers that people give, on the command line and in files: decimal digits,
// leading zeros allowed and without meaning. Nothing for any other text or a number out of range.
std::optional<int> ReadNumber(const std::string& text, int least = 0, int most = INT_MAX);

// The same; throws UsageError that says what `name` takes.
int RequireNumber(const std::string& name, const std::string& text, int least, int most);

struct OptionRow {
  static constexpr int kAnyNumber = -1;
  static constexpr const char* kNumber = "NUMBER";  // the type of whole numbers

  std::string name;  // "--json", or of an argument "TABLE"
  std::string type;  // of its value: "DIR", "{bash,zsh,fish}"; a flag has none
  std::string about;
  std::function<void(const std::vector<std::string>& values)> take;  // may throw UsageError
  int values = 1;                                                    // or kAnyNumber
  int more = 0;  // values that may follow; then it may be given again, and is taken each time
  bool required = false;
  const char* member = nullptr;  // of a JSON file that may give it instead

  bool IsFlag() const { return values == 0; }
  bool IsArgument() const { return name.front() != '-'; }
  std::vector<std::string> Choices() const;  // of a type in braces

  OptionRow& Required() {
    required = true;
    return *this;
  }
  OptionRow& Member(const char* name_in_file) {
    member = name_in_file;
    return *this;
  }
};

class OptionList {
 public:
  OptionRow& Flag(const std::string& name, bool* value, const std::string& about);
  // Into a std::string, or a std::optional of one.
  template <typename Value>
  OptionRow& Text(const std::string& name, const std::string& type, Value* value,
                  const std::string& about) {
    return Add({name, type, about, [value](const auto& values) { *value = values.front(); }});
  }
  // `number` values, or OptionRow::kAnyNumber.
  OptionRow& Texts(const std::string& name, const std::string& type, int number,
                   std::vector<std::string>* values, const std::string& about);
  OptionRow& Choice(const std::string& name, const std::vector<std::string>& choices,
                    std::string* value, const std::string& about);
  // Into an int, or a std::optional of one.
  template <typename Value>
  OptionRow& Number(const std::string& name, int least, int most, Value* value,
                    const std::string& about) {
    return Add({name, OptionRow::kNumber, about, [=](const std::vector<std::string>& values) {
                  *value = RequireNumber(name, values.front(), least, most);
                }});
  }
  OptionRow& Add(OptionRow row);

  const std::vector<OptionRow>& rows() const { return rows_; }
  const OptionRow* Find(const std::string& name) const;

 private:
  std::vector<OptionRow> rows_;
};

#endif  // TOOLS_VOATM_OPTIONS_H
