#include "look/users.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>

namespace {

namespace fs = std::filesystem;

// Segments of other IPC namespaces have the same numbers.
fs::path IpcNamespace(const fs::path& process) {
  std::error_code hidden;
  return fs::read_symlink(process / "ns/ipc", hidden);
}

struct Segment {
  int key;  // under which it was created
  int id;
};

// The segments in a process's map: "ADDRESS MODE OFFSET DEVICE ID /SYSVxxxxxxxx (deleted)", the
// hexadecimal number being the key. Nothing when this user may not read it.
std::optional<std::vector<Segment>> SegmentsOf(const fs::path& process) {
  std::ifstream maps(process / "maps");
  if (maps.peek() == std::ifstream::traits_type::eof()) return std::nullopt;
  std::vector<Segment> segments;
  std::set<int> seen;
  for (std::string line; std::getline(maps, line);) {
    unsigned key = 0;
    int id = 0;
    const char* const format = "%*s %*s %*s %*s %d /SYSV%8x";
    if (std::sscanf(line.c_str(), format, &id, &key) != 2) continue;
    if (seen.insert(id).second) segments.push_back({static_cast<int>(key), id});
  }
  return segments;
}

}  // namespace

std::vector<SegmentUser> FindSegmentUsers() {
  std::vector<SegmentUser> users;
  if (!HasOwnProc()) return users;
  const fs::path own = IpcNamespace("/proc/self");
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", error)) {
    const int id = std::atoi(entry.path().filename().c_str());
    if (id <= 0 || IpcNamespace(entry.path()) != own) continue;
    for (const Segment& segment : SegmentsOf(entry.path()).value_or(std::vector<Segment>())) {
      users.push_back({LookAt(id, std::time(nullptr)), segment.key, segment.id});
    }
  }
  std::sort(users.begin(), users.end(), [](const SegmentUser& one, const SegmentUser& other) {
    return one.process.id < other.process.id;
  });
  return users;
}

bool MayUse(const TableState& table, pid_t id) {
  if (!HasOwnProc()) return true;
  const auto segments = SegmentsOf(fs::path("/proc") / std::to_string(id));
  return !segments || std::any_of(segments->begin(), segments->end(),
                                  [&](const Segment& segment) { return segment.key == table.key; });
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
