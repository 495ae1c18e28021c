// What a verb of `voatm` is, and what the verbs have in common on the command line.
//
// A verb is a file of its own below verbs/ that defines its row, and a line in verbs/verbs.h. Data
// goes to standard output, talk to standard error.
#ifndef TOOLS_VOATM_VERB_H
#define TOOLS_VOATM_VERB_H

#include <functional>
#include <string>

#include "options.h"
#include "records/record_tables.h"

enum ExitCode {
  kDone = 0,       // yes, or fine
  kFindings = 1,   // the answer is no, or something is wrong
  kCannotRun = 2,  // wrong usage, or what the verb needs could not be looked at
};

// What a verb does once its options are taken. One that cannot run throws; the text begins with the
// cause and names the file, key, slot or object.
using Action = std::function<ExitCode()>;

// Help, completions and man pages are made from these rows.
struct Verb {
  const char* name;         // "locks release" stands below the verb "locks"; voatm itself has none
  const char* summary;      // one line
  const char* description;  // what it prints and answers, with its JSON shape
  const char* example;
  Action (*declare)(OptionList* options);  // says what it takes
  std::string (*choices)() = nullptr;      // more of the description, from the data it tells of
  bool for_operators = true;               // else it is in no list of verbs

  // The description and what belongs to it.
  std::string Manual() const;

  // Whether it is the verb that `word` makes of the verb `above`.
  bool Is(const Verb& above, const std::string& word) const;

  // The last word of its name.
  std::string Word() const;
};

// The options of a verb that shows data.
struct DataOptions {
  std::string home;
  bool json = false;
};

// Adds --home. What it stores: the option's value, else VODIR_HOME's.
void AddHomeOption(OptionList* options, std::string* home);

// Adds --home and --json.
void AddDataOptions(OptionList* options, DataOptions* data);

// Adds the argument TABLE, required, which takes a table's short name or its own.
void AddTableArgument(OptionList* options, const records::RecordTable** table);

// Throws when neither gave a home, or it is no directory.
void RequireHome(const std::string& home);

// Makes it the home that the library reads; throws as RequireHome does.
void UseHome(const std::string& home);

#endif  // TOOLS_VOATM_VERB_H
