// The entries of a configuration file with their places, and what makes them unreadable.
#ifndef TOOLS_VOATM_HOME_CONFIGURATION_ENTRIES_H
#define TOOLS_VOATM_HOME_CONFIGURATION_ENTRIES_H

#include <cstddef>
#include <string>
#include <vector>

enum class EntryFault {
  kNone,
  kUnclosedQuote,
  kTextAfterQuote,
  kFieldTooLong,
  kNulCharacter,
  kOpenHeader,     // no ']'
  kHeaderTooLong,  // hides the items below it, as an open one does
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
  EntryFault fault = EntryFault::kNone;
  std::size_t fault_column = 0;

  bool readable() const { return !is_header && !hidden && fault == EntryFault::kNone; }
};

// Splits a file's text as VoCfgUtil reads it: every readable entry whose key no earlier entry has
// is one that VoCfgUtil finds on this line with these fields, and it finds no other on lines
// without a NUL. A faulty header still names the group of what it hides; the fields of a faulty
// entry end with the faulty one.
std::vector<ConfigurationEntry> ReadEntries(const std::string& text);

#endif  // TOOLS_VOATM_HOME_CONFIGURATION_ENTRIES_H
