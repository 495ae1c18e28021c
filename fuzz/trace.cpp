// Lines of a log: what is said of them can be said back, and each text is found in what it prints.
#include <sstream>

#include "support.h"
#include "tools/voatm/ask/trace_log.h"

namespace {

// The words of a text, a blank between them.
std::string Collapsed(const std::string& text) {
  std::istringstream stream(text);
  std::string collapsed;
  for (std::string word; stream >> word;) collapsed += (collapsed.empty() ? "" : " ") + word;
  return collapsed;
}

// A text of the catalogue with its conversions replaced one by one.
template <typename Value>
std::string Said(const std::string& form, Value value) {
  std::string said;
  for (std::size_t at = 0; at < form.size(); ++at) {
    if (form[at] != '%') {
      said += form[at];
      continue;
    }
    at = form.find_first_of("sdc", at);
    said += value(form[at]);
  }
  return said;
}

void CheckReading(const TraceLine& read, const std::string& line) {
  std::string text = Collapsed(line);
  while (text.size() > 1 && text.compare(text.size() - 2, 2, "\\n") == 0) {
    text = Collapsed(text.substr(0, text.size() - 2));
  }
  for (const TraceMatch& match : read.matches) {
    std::size_t next = 0;
    std::string said = Said(match.row->text, [&](char) { return match.printed[next++]; });
    Require(next == match.printed.size(), "each conversion printed something");
    if (!read.error_number.empty()) {
      said += " SysErr[ " + std::string(read.error_name) + " ] ErrNo[ " +
              std::string(read.error_number) + " ]";
    }
    said = Collapsed(said);
    Require(text.size() >= said.size() && text.substr(text.size() - said.size()) == said,
            "the line ends with what is said back");
    Require(match.Means().find('{') == std::string::npos || line.find('{') != std::string::npos,
            "each value has its place");
  }
}

// A line of the library behind a prefix.
std::string LibraryLine(FuzzedDataProvider& input, const TraceText& row) {
  const std::string prefix = TextOf(input, 40);
  const std::string said = Said(row.text, [&](char conversion) -> std::string {
    if (conversion == 'c') return std::string(1, input.ConsumeIntegralInRange('!', '~'));
    if (conversion == 'd') return std::to_string(input.ConsumeIntegral<int>());
    return input.PickValueInArray({"]", "a b", "4711", "/x/y.cfg"});
  });
  return prefix + "[1] 7 " + said + (input.ConsumeBool() ? " SysErr[ x ] ErrNo[ 43 ]" : "");
}

void CheckLines(const std::string& text) {
  static InputFile file;
  file.Write(text);
  LogLines lines(InputFile::kPath);
  std::istringstream expected(text);
  for (std::string line; std::getline(expected, line);) {
    const auto next = lines.Next();
    Require(next.has_value() && *next == line, "the lines are the file's");
  }
  Require(!lines.Next().has_value(), "and no more");
}

}  // namespace

FUZZ_TARGET(trace) {
  static TraceReader reader;
  FuzzedDataProvider input(bytes, size);
  const std::size_t row = input.ConsumeIntegralInRange<std::size_t>(0, TraceTexts().size() - 1);
  const TraceText& text = TraceTexts()[row];
  if (text.text[0] != '%') {
    const std::string line = LibraryLine(input, text);
    const TraceLine& read = reader.Read(line);
    Require(!read.matches.empty(), "a text of the library is found");
    CheckReading(read, line);
  }
  const std::string rest = input.ConsumeRemainingBytesAsString();
  CheckReading(reader.Read(rest), rest);
  CheckLines(rest);
  return 0;
}
