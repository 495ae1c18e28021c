#include "look/users.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>

namespace {

namespace fs = std::filesystem;

// Segments of other IPC namespaces have the same numbers.
fs::path IpcNamespace(const fs::path& process) {
  std::error_code hidden;
  return fs::read_symlink(process / "ns/ipc", hidden);
}

// The segments in a process's map: "ADDRESS MODE OFFSET DEVICE ID /SYSVxxxxxxxx (deleted)", the
// hexadecimal number being the key.
void AddSegments(const fs::path& process, pid_t id, std::vector<SegmentUser>* users) {
  std::ifstream maps(process / "maps");
  std::set<int> seen;
  for (std::string line; std::getline(maps, line);) {
    unsigned key = 0;
    int segment = 0;
    const char* const format = "%*s %*s %*s %*s %d /SYSV%8x";
    if (std::sscanf(line.c_str(), format, &segment, &key) != 2) continue;
    if (!seen.insert(segment).second) continue;
    users->push_back({LookAt(id, std::time(nullptr)), static_cast<int>(key), segment});
  }
}

}  // namespace

std::vector<SegmentUser> FindSegmentUsers() {
  std::vector<SegmentUser> users;
  const fs::path own = IpcNamespace("/proc/self");
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", error)) {
    const int id = std::atoi(entry.path().filename().c_str());
    if (id > 0 && IpcNamespace(entry.path()) == own) AddSegments(entry.path(), id, &users);
  }
  std::sort(users.begin(), users.end(), [](const SegmentUser& one, const SegmentUser& other) {
    return one.process.id < other.process.id;
  });
  return users;
}

std::vector<Finding> JudgeUsers(const TableState& table, const std::vector<SegmentUser>& users) {
  std::string stale;
  for (const SegmentUser& user : users) {
    if (user.key != table.key || user.segment == table.segment.id) continue;
    stale += (stale.empty() ? "" : ", ") + DescribeProcess(user.process);
  }
  if (stale.empty()) return {};
  return {{"processes use a segment that was removed", table.DescribeSegment(), stale,
           "go on with the old records and fail to lock", "restart these processes"}};
}
