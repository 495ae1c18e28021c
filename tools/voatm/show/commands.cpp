#include "show/commands.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <sstream>

namespace {

constexpr std::size_t kLongestLine = 78;

// Text as mdoc takes it: a leading point or quote is no request, and a backslash is one.
std::string Escaped(const std::string& line) {
  std::string text;
  for (const char character : line) text += character == '\\' ? "\\e" : std::string(1, character);
  const bool request = !text.empty() && (text[0] == '.' || text[0] == '\'');
  return request ? "\\&" + text : text;
}

// Words as arguments of a macro: none of them may be a macro's name.
std::string Arguments(const std::string& words) {
  std::istringstream stream(words);
  std::string arguments;
  for (std::string word; stream >> word;) {
    arguments += " \\&" + Escaped(word);
  }
  return arguments;
}

bool EndsSentence(const std::string& word) {
  const char last = word.back();
  return last == '.' || last == '?' || last == '!';
}

// Running text in short lines, each sentence on lines of its own.
std::string Reflowed(const std::string& text) {
  std::istringstream stream(text);
  std::string page;
  std::string line;
  for (std::string word; stream >> word;) {
    const bool full = line.size() + 1 + word.size() > kLongestLine;
    if (full) {
      page += Escaped(line) + "\n";
      line.clear();
    }
    if (!line.empty()) line += ' ';
    line += word;
    if (!EndsSentence(word)) continue;
    page += Escaped(line) + "\n";
    line.clear();
  }
  return page + (line.empty() ? "" : Escaped(line) + "\n");
}

std::string Display(const std::string& lines) {
  return ".Bd -literal -offset indent\n" + lines + ".Ed\n";
}

// Paragraphs are separated by empty lines; those that begin with blanks keep their lines.
std::string Paragraphs(const std::string& text) {
  std::istringstream stream(text + "\n\n");
  std::string page;
  std::string running;
  std::string display;
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line[0] == ' ') {
      display += Escaped(line.substr(line.find_first_not_of(' '))) + "\n";
    } else if (!line.empty()) {
      running += line + "\n";
    } else if (!display.empty() || !running.empty()) {
      if (!running.empty()) page += (page.empty() ? "" : ".Pp\n") + Reflowed(running);
      if (!display.empty()) page += Display(display);
      display.clear();
      running.clear();
    }
  }
  return page;
}

std::string PageDate() {
  const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
  const std::time_t now = epoch != nullptr ? std::atol(epoch) : std::time(nullptr);
  std::tm day = {};
  gmtime_r(&now, &day);
  char month[16];
  std::strftime(month, sizeof month, "%B", &day);
  return std::string(month) + " " + std::to_string(day.tm_mday) + ", " +
         std::to_string(day.tm_year + 1900);
}

std::string OptionTerm(const OptionRow& option) {
  if (option.IsArgument()) return "Ar" + Arguments(option.name);
  std::string term = "Fl " + option.name.substr(1);
  if (!option.IsFlag()) term += " Ar" + Arguments(option.type);
  return term;
}

std::string Synopsis(const Command& command) {
  std::string page = ".Sh SYNOPSIS\n.Nm voatm" + Arguments(command.path) + "\n";
  for (const OptionRow& option : command.options.rows()) {
    page += (option.required ? "." : ".Op ") + OptionTerm(option) + "\n";
  }
  return page;
}

std::string Options(const Command& command) {
  std::string page = ".Sh OPTIONS\n.Bl -tag -width Ds\n";
  for (const OptionRow& option : command.options.rows()) {
    page += ".It " + OptionTerm(option) + "\n" + Reflowed(option.about + ".");
    std::string choices;
    for (const std::string& choice : option.Choices()) {
      choices += (choices.empty() ? "One of " : ", ") + choice;
    }
    if (!choices.empty()) page += Reflowed(choices + ".");
    if (option.environment != nullptr) {
      page += "Without it the environment variable\n.Ev " + std::string(option.environment) +
              "\ncounts.\n";
    }
  }
  return page + ".El\n";
}

std::string Verbs(const Command& command, const std::vector<Command>& all) {
  std::string page;
  const std::string below = command.path.empty() ? "" : command.path + " ";
  for (const Command& other : all) {
    if (other.path.size() <= below.size() || other.path.compare(0, below.size(), below) != 0) {
      continue;
    }
    page += ".It Cm" + Arguments(other.path) + "\n" + Escaped(other.summary) + "; see\n.Xr " +
            other.Page() + " 1 .\n";
  }
  return page.empty() ? "" : ".Sh COMMANDS\n.Bl -tag -width Ds\n" + page + ".El\n";
}

}  // namespace

std::string Command::Page() const {
  std::string page = path.empty() ? "voatm" : "voatm-" + path;
  std::replace(page.begin(), page.end(), ' ', '-');
  return page;
}

std::string Command::Name() const { return path.substr(path.find_last_of(' ') + 1); }

bool Command::IsBelow(const Command& other) const {
  if (path.empty()) return false;
  const std::size_t blank = path.find_last_of(' ');
  return other.path == (blank == std::string::npos ? "" : path.substr(0, blank));
}

std::vector<Command> CommandsOf(const std::string& summary, const std::vector<const Verb*>& verbs) {
  std::vector<Command> commands = {{"", summary, nullptr, {}}};
  for (const Verb* verb : verbs) {
    if (!verb->for_operators) continue;
    commands.push_back({verb->name, verb->summary, verb, {}});
    verb->declare(&commands.back().options);
  }
  bool ignored = false;
  commands.front().options.Flag("--version", &ignored, "Print the version");
  for (Command& command : commands) command.options.Flag("--help", &ignored, "Print help");
  return commands;
}

std::string ManualPage(const Command& command, const std::vector<Command>& all) {
  std::string title = command.Page();
  std::transform(title.begin(), title.end(), title.begin(), [](unsigned char character) {
    return static_cast<char>(std::toupper(character));
  });
  const Verb* const verb = command.verb;
  std::string summary = command.summary;
  if (EndsSentence(summary)) summary.pop_back();
  // Without a volume groff puts another system's name above a page.
  std::string page = ".Dd " + PageDate() + "\n.Dt " + title +
                     " 1\n.ds doc-volume libvoatmutil Manual\n.Os libvoatmutil\n.Sh NAME\n.Nm " +
                     command.Page() + "\n.Nd " + Escaped(summary) + "\n" + Synopsis(command) +
                     ".Sh DESCRIPTION\n";
  page += Paragraphs(verb != nullptr ? verb->Manual()
                                     : "Data goes to standard output, talk to standard error.\n"
                                       "Every verb answers --help.");
  page += Verbs(command, all) + Options(command);
  page += ".Sh EXIT STATUS\n0 yes or fine, 1 no or findings, 2 wrong usage or it cannot run.\n";
  if (verb != nullptr) {
    page +=
        ".Sh EXAMPLES\n" + Display(Escaped(verb->example) + "\n") + ".Sh SEE ALSO\n.Xr voatm 1\n";
  } else {
    page +=
        ".Sh SEE ALSO\n.Xr VoATMUtil 3 ,\n.Xr voatmutil-configuration 5 ,\n"
        ".Xr voatmutil-tables 5 ,\n.Xr voatmutil-operating 7\n";
  }
  return page;
}
