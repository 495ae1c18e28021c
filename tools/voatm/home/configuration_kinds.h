// What the library reads below a home: each kind of file, its keys, and the shape of their fields.
#ifndef TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H
#define TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H

#include <cstddef>
#include <string>
#include <vector>

enum class Severity { kWarning, kError };

// The largest number a field may hold.
enum class Largest { kNoNumber, kAnyInteger, kSemaphoresOfASet };

// One thing that a field must be.
struct FieldRule {
  const char* pattern;  // ECMAScript, of the whole field
  const char* rule;
  Severity severity;
  const char* expected;
  Largest largest = Largest::kNoNumber;
};

using FieldRules = std::vector<FieldRule>;  // the first one that a field breaks is reported

enum class Need { kNone, kWanted, kRequired };

// The keys of a kind that are read alike.
struct KeyKind {
  // ECMAScript, of the whole key. A key that is needed is its own pattern. A # only separates the
  // group from the item; in a class it is \x23.
  const char* pattern;
  const char* shown;
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

// Whether the file's name is fixed or tells its scope. A layered kind has its folder for itself.
enum class Place { kFixed, kLayered };

struct FileKind {
  const char* directory;
  const char* pattern;  // of the names that can be opened
  const char* shown;
  const char* suffix;  // what names that only belong here end in; null: none does
  Scope scope;
  Need need;
  Place place;
  std::vector<KeyKind> keys;
};

const std::vector<FileKind>& FileKinds();

#endif  // TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H
