// The files of a configuration tree, and their entries with their places and what makes them
// unreadable.
#ifndef TOOLS_VOATM_HOME_CONFIGURATION_ENTRIES_H
#define TOOLS_VOATM_HOME_CONFIGURATION_ENTRIES_H

#include <cstddef>
#include <string>
#include <vector>

// A file or folder below a home's cfg/ or inf/, or below a link there.
struct TreeFile {
  std::string directory;  // below the home
  std::string name;       // empty: it is the folder that does not open
  bool is_directory;
  std::string error = {};  // why it does not open
};

std::vector<TreeFile> WalkTree(const std::string& home);

struct EntryFault {
  const char* rule;
  std::string text;
};

struct ConfigurationField {
  std::string text;
  std::size_t column;  // from 1
};

// A line that is neither blank nor a comment: a group header, or an entry below one.
struct ConfigurationEntry {
  std::size_t line = 0;  // from 1
  std::size_t column = 0;
  bool is_header = false;
  bool hidden = false;  // stands below a faulty header
  std::string group;    // empty before the first header
  std::string key;      // as it is searched: GROUP#ITEM, or the item before the first header;
                        // empty in a header and when field 1's quoting is wrong
  std::size_t end = 0;  // the column behind the last field
  std::vector<ConfigurationField> fields;  // of an entry; the key's own column first
  const EntryFault* fault = nullptr;
  std::size_t fault_column = 0;

  bool readable() const { return !is_header && !hidden && fault == nullptr; }
};

// Splits a file's text as VoCfgUtil reads it: every readable entry whose key no earlier entry has
// is one that VoCfgUtil finds on this line with these fields, and it finds no other on lines
// without a NUL. A faulty header still names the group of what it hides; the fields of a faulty
// entry end with the faulty one.
std::vector<ConfigurationEntry> ReadEntries(const std::string& text);

// The same of a file. Throws std::runtime_error when it cannot be read.
std::vector<ConfigurationEntry> ReadEntriesOf(const std::string& path);

#endif  // TOOLS_VOATM_HOME_CONFIGURATION_ENTRIES_H
