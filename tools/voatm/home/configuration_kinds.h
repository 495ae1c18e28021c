// What the library reads below a home. Where a kind of file stands, what its names end in and what
// has to fit comes from the library; what its keys and fields should look like is said here.
#ifndef TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H
#define TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H

#include <cstddef>
#include <string>
#include <vector>

enum class Severity { kWarning, kError };

// One thing that a field must be.
struct FieldRule {
  std::string pattern;  // ECMAScript, of the whole field
  const char* rule;
  Severity severity;
  std::string expected;
  long largest = 0;  // number that it may be, unless 0
};

using FieldRules = std::vector<FieldRule>;  // the first one that a field breaks is reported

enum class Need { kNone, kWanted, kRequired };

// The keys of a kind that are read alike.
struct KeyKind {
  // ECMAScript, of the whole key. A key that is needed is its own pattern. A # only separates the
  // group from the item; in a class it is \x23.
  std::string pattern;
  std::string shown;
  Need need;
  std::vector<std::size_t> counts;  // how many values it may have behind the key
  std::vector<FieldRules> values;   // the last one holds for all that follow
};

// What is looked at in a kind of file.
enum class Scope {
  kEveryKey,    // a key that no row names is never read
  kKnownKeys,   // others read the file too
  kGroupsOnly,  // its groups are counted
};

struct FileKind {
  const char* directory;
  std::string opens;   // ECMAScript, of the names that the library opens there
  std::string claims;  // the same of the names that can only be meant for the folder
  std::string shown;   // its names, for people
  bool layered;        // has its folder for itself
  Scope scope;
  Need need;
  std::vector<KeyKind> keys;

  std::size_t LongestPath() const;  // that opens
};

const std::vector<FileKind>& FileKinds();

// The kind of a file of this name in a directory below a home; null when the library opens none.
const FileKind* FileKindOf(const std::string& directory, const std::string& name);

// Whether an ECMAScript pattern matches the whole text.
bool Matches(const std::string& pattern, const std::string& text);

#endif  // TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H
