// The configuration file that decides an answer, its entries, and the files that it hides.
#ifndef TOOLS_VOATM_ASK_EXPLAIN_FILE_WALK_H
#define TOOLS_VOATM_ASK_EXPLAIN_FILE_WALK_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ask/explain_core.h"
#include "vocfgutil.h"

using Texts = std::vector<std::string>;

// Where files lie that answer alike, what their names end in, and which names stand before that.
struct SoughtFile {
  const char* directory;
  const char* suffix;
  enum { kFixed, kScoped, kScopedOrDefault } names;
};

class FileWalk {
 public:
  // Tries the paths of a request in their order, opens the first that can be opened, and notes the
  // others that could as hidden.
  FileWalk(const SoughtFile& file, const Inputs& inputs, Explanation* explanation);

  bool open() const { return !path_.empty(); }

  // Reads fields of a key's entry, from this one on, and notes what hidden files say otherwise.
  // Returns nothing when one of the fields is missing.
  std::optional<Texts> Read(const std::string& whole_key, int first_field, int fields);

  // Notes what an entry that was not needed says.
  void Hide(const std::string& key, int field);

 private:
  struct Entry;

  static Entry Search(VoCfgUtil& cfg, const std::string& path, const std::string& key,
                      int first_field, int fields);
  std::string Outcome(const std::string& path, bool fits) const;
  void AddShadow(const std::string& key, const Entry& entry);

  Explanation* explanation_;
  VoCfgUtil cfg_;
  std::string path_;  // of the file that is open
  Texts hidden_;
};

#endif  // TOOLS_VOATM_ASK_EXPLAIN_FILE_WALK_H
