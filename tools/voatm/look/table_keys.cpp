#include "look/table_keys.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

// One that is empty counts as none.
const char* Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

// One file a home; empty when there is no place for it.
fs::path KeysFile(const std::string& home) {
  fs::path root;
  if (const char* const state = Variable("XDG_STATE_HOME")) {
    root = state;
  } else if (const char* const user = Variable("HOME")) {
    root = fs::path(user) / ".local/state";
  } else {
    return {};
  }
  std::error_code error;
  std::string name = fs::canonical(home, error).string();
  std::replace(name.begin(), name.end(), '/', '%');
  return root / "voatm" / ("keys" + name);
}

}  // namespace

void RememberKeys(const std::string& home, const TableKeys& keys) {
  const fs::path path = KeysFile(home);
  if (path.empty() || keys.empty()) return;
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  const fs::path fresh = path.string() + ".new";
  std::ofstream file(fresh);
  for (const auto& [table, key] : keys) file << table->short_name << ' ' << key << '\n';
  file.close();
  if (file) fs::rename(fresh, path, error);
}

RememberedKeys RecallKeys(const std::string& home) {
  RememberedKeys remembered;
  const fs::path path = KeysFile(home);
  struct stat state {};
  if (stat(path.c_str(), &state) == 0) remembered.since = state.st_mtime;
  std::ifstream file(path);
  std::string name;
  for (int key = 0; file >> name >> key;) {
    for (const records::RecordTable& table : records::kRecordTables) {
      if (name == table.short_name) remembered.keys[&table] = key;
    }
  }
  return remembered;
}
