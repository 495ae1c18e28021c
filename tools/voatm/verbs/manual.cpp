// voatm man: the manual pages, a page a verb.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "verbs/verbs.h"

namespace {

// Text as mdoc takes it: a leading point or quote is no request, and a backslash is one.
std::string Escaped(const std::string& line) {
  std::string text;
  for (const char character : line) text += character == '\\' ? "\\e" : std::string(1, character);
  const bool request = !text.empty() && (text[0] == '.' || text[0] == '\'');
  return request ? "\\&" + text : text;
}

// Running text, each sentence of which starts a line.
std::string Sentences(const std::string& line) {
  std::string text = Escaped(line);
  for (std::size_t at = text.find(". "); at != std::string::npos; at = text.find(". ", at)) {
    text[at + 1] = '\n';
  }
  return text;
}

// Words as arguments of a macro: none of them may be a macro's name.
std::string Arguments(const std::string& words) {
  std::istringstream stream(words);
  std::string arguments;
  for (std::string word; stream >> word;) arguments += " \\&" + Escaped(word);
  return arguments;
}

const std::string kDisplay = ".Bd -literal -offset indent\n";
const std::string kEndOfDisplay = ".Ed\n";

// Paragraphs are separated by empty lines; lines that begin with blanks are kept as they are.
std::string Paragraphs(const std::string& text) {
  std::istringstream stream(text);
  std::string page;
  bool starts = false;  // a paragraph
  bool displays = false;
  for (std::string line; std::getline(stream, line);) {
    const bool is_kept = line.rfind(' ', 0) == 0;
    if (is_kept != displays) page += is_kept ? kDisplay : kEndOfDisplay;
    displays = is_kept;
    if (is_kept) {
      page += Escaped(line.substr(line.find_first_not_of(' '))) + "\n";
    } else if (!line.empty()) {
      page += (starts ? ".Pp\n" : "") + Sentences(line) + "\n";
    }
    starts = line.empty();
  }
  return displays ? page + kEndOfDisplay : page;
}

std::string PageDate() {
  const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
  const std::time_t now = epoch != nullptr ? std::atol(epoch) : std::time(nullptr);
  std::tm day = {};
  gmtime_r(&now, &day);
  char date[40];
  std::strftime(date, sizeof date, "%B %e, %Y", &day);
  return date;
}

// "voatm-locks-release"
std::string PageName(const Verb& verb) {
  std::string name = *verb.name == '\0' ? "voatm" : "voatm-" + std::string(verb.name);
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::string OptionTerm(const OptionRow& option) {
  if (option.IsArgument()) return "Ar" + Arguments(option.name);
  const std::string value = option.IsFlag() ? "" : " Ar" + Arguments(option.type);
  return "Fl " + option.name.substr(1) + value;
}

std::string OptionText(const OptionRow& option) {
  std::string choices;
  for (const std::string& choice : option.Choices()) {
    choices += (choices.empty() ? "One of " : ", ") + choice;
  }
  if (!choices.empty()) choices += ".\n";
  return ".It " + OptionTerm(option) + "\n" + Sentences(option.about) + ".\n" + choices;
}

// The verbs that stand behind a verb, at once or after another one.
std::string CommandsBelow(const Verb& verb) {
  std::string page;
  const std::string start = *verb.name == '\0' ? "" : verb.name + std::string(" ");
  for (const Verb* below : kVerbs) {
    const std::string name = below->name;
    if (!below->for_operators || name.size() <= start.size() || name.rfind(start, 0) != 0) continue;
    page += ".It Cm" + Arguments(name) + "\n" + Escaped(below->summary) + "; see\n.Xr " +
            PageName(*below) + " 1 .\n";
  }
  return page.empty() ? "" : ".Sh COMMANDS\n.Bl -tag -width Ds\n" + page + ".El\n";
}

std::string ManualPage(const Verb& verb) {
  OptionList options;
  verb.declare(&options);
  bool help = false;
  options.Flag("--help", &help, "Print help");
  const std::string name = PageName(verb);
  std::string title = name;
  std::transform(name.begin(), name.end(), title.begin(), [](unsigned char character) {
    return static_cast<char>(std::toupper(character));
  });
  // Without a volume groff puts another system's name above a page.
  std::string page = ".Dd " + PageDate() + "\n.Dt " + title +
                     " 1\n.ds doc-volume libvoatmutil Manual\n.Os libvoatmutil\n.Sh NAME\n.Nm " +
                     name + "\n.Nd " + Escaped(verb.summary) + "\n.Sh SYNOPSIS\n.Nm voatm" +
                     Arguments(verb.name) + "\n";
  std::string terms;
  for (const OptionRow& option : options.rows()) {
    page += (option.required ? "." : ".Op ") + OptionTerm(option) + "\n";
    terms += OptionText(option);
  }
  page += ".Sh DESCRIPTION\n" + Paragraphs(verb.Manual()) + CommandsBelow(verb) +
          ".Sh OPTIONS\n.Bl -tag -width Ds\n" + terms + ".El\n";
  if (&verb != &kVoatm) {  // which has said it
    page += ".Sh EXIT STATUS\n0 yes or fine, 1 no or findings, 2 wrong usage or it cannot run.\n";
  }
  page +=
      ".Sh EXAMPLES\n" + kDisplay + Escaped(verb.example) + "\n" + kEndOfDisplay + ".Sh SEE ALSO\n";
  if (&verb != &kVoatm) return page + ".Xr voatm 1\n";
  return page +
         ".Xr VoATMUtil 3 ,\n.Xr voatmutil-configuration 5 ,\n.Xr voatmutil-tables 5 ,\n"
         ".Xr voatmutil-operating 7\n";
}

ExitCode WriteManual(const std::string& directory) {
  for (const Verb* verb : kVerbs) {
    if (!verb->for_operators) continue;
    const std::string path = directory + "/" + PageName(*verb) + ".1";
    std::ofstream stream(path);
    stream << ManualPage(*verb);
    if (!stream.flush()) throw std::runtime_error("cannot write " + path);
  }
  return kDone;
}

Action DeclareManual(OptionList* list) {
  const auto directory = std::make_shared<std::string>();
  list->Text("DIR", "", directory.get(), "Where the pages go").Required();
  return [directory] { return WriteManual(*directory); };
}

}  // namespace

const Verb kManual = {"man",
                      "Write the manual pages",
                      "Writes voatm.1 and a page a verb into a directory.",
                      "voatm man build/man",
                      DeclareManual,
                      nullptr,
                      false};
