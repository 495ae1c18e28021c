// What a verb of `voatm` is, and what the verbs have in common on the command line.
//
// A verb is a file of its own that defines its row, and a line in verbs.h. Data goes to standard
// output, talk to standard error.
#ifndef TOOLS_VOATM_VERB_H
#define TOOLS_VOATM_VERB_H

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>
#include <string>

#include "devhost/record_fields.h"

enum ExitCode {
  kDone = 0,       // yes, or fine
  kFindings = 1,   // the answer is no, or something is wrong
  kCannotRun = 2,  // wrong usage, or what the verb needs is not there
};

// What a verb does once its options are known. One that cannot run throws; the text begins with the
// cause and names the file, key, slot or object.
using Action = std::function<ExitCode()>;

// Help, completions and man pages are made from these rows.
struct Verb {
  const char* name;         // "locks release" stands below the verb "locks"
  const char* summary;      // one line
  const char* description;  // what it prints and answers, with its JSON shape
  const char* example;
  Action (*declare)(CLI::App* verb);   // adds the options
  std::string (*choices)() = nullptr;  // more of the description, from the data it tells of
};

// The description and what belongs to it.
std::string ManualText(const Verb& verb);

// The options of a verb that shows data.
struct DataOptions {
  std::string home;
  bool json = false;
};

// Adds --home. What it stores: the option's value, else VODIR_HOME's.
void AddHomeOption(CLI::App* verb, std::string* home);

// Adds --home and --json.
void AddDataOptions(CLI::App* verb, DataOptions* options);

// Adds the argument TABLE, required, which takes a table's short name or its own.
void AddTableArgument(CLI::App* verb, const devhost::RecordTable** table);

// Throws when neither gave a home, or it is no directory.
void RequireHome(const std::string& home);

#endif  // TOOLS_VOATM_VERB_H
