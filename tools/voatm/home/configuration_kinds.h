// What the library reads below a home. Where a kind of file stands, what its names end in and what
// has to fit comes from the library; what its keys and fields should look like is said here.
#ifndef TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H
#define TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H

#include <cstddef>
#include <string>
#include <vector>

enum class Severity { kWarning, kError };

// The largest number a field may hold.
enum class Largest { kNoNumber, kAnyInteger, kChannelKey, kSemaphoresOfASet };

// One thing that a field must be.
struct FieldRule {
  std::string pattern;  // ECMAScript, of the whole field
  const char* rule;
  Severity severity;
  std::string expected;
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

// What the file's name tells. All but a fixed name have their folder for themselves.
enum class Name {
  kFixed,
  kScope,     // <scope>_<name>
  kTemplate,  // <scope>_<template>_<number><name>
  kAny,
};

struct FileKind {
  const char* directory;
  const char* name;  // or what it ends in
  Name names;
  bool has_default;  // of kScope: "DEFAULT" is a scope that the library tries
  Scope scope;
  Need need;
  std::vector<KeyKind> keys;

  // Whether the library opens a file of this name.
  bool Opens(const std::string& file) const;

  // Whether a file of this name can only be meant for the kind's folder.
  bool Claims(const std::string& file) const;

  std::string Shown() const;        // its names, for people
  std::size_t LongestPath() const;  // that opens
};

const std::vector<FileKind>& FileKinds();

// Whether an ECMAScript pattern matches the whole text.
bool Matches(const std::string& pattern, const std::string& text);

#endif  // TOOLS_VOATM_HOME_CONFIGURATION_KINDS_H
