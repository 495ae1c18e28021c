#include "ask/side.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "common/config_file.h"
#include "devhost/seed.h"
#include "devhost/settings.h"
#include "devhost/system_call.h"
#include "home/configuration_entries.h"
#include "home/configuration_kinds.h"
#include "look/survey.h"
#include "verb.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kLive = "live";

// The first entry of a key counts, be it unreadable; of files that are only counted each group.
void AddEntries(const std::string& path, const std::vector<ConfigurationEntry>& all,
                const FileKind* kind, Entries* entries) {
  const bool counts_groups = kind != nullptr && kind->scope == Scope::kGroupsOnly;
  std::map<std::string, int> groups;
  for (const ConfigurationEntry& entry : all) {
    if (entry.is_header && entry.fault == nullptr) ++groups[entry.group];
    if (entry.hidden || entry.key.empty()) continue;
    std::vector<std::string> fields;
    for (std::size_t i = 1; i < entry.fields.size(); ++i) fields.push_back(entry.fields[i].text);
    if (entry.fault != nullptr) fields = kUnreadable;
    entries->try_emplace({path, entry.key}, std::move(fields));
  }
  for (const auto& [group, count] : groups) {
    if (counts_groups) (*entries)[{path, "[" + group + "]"}] = {std::to_string(count)};
  }
}

Entries EntriesOf(const std::string& home) {
  Entries entries;
  for (const TreeFile& file : WalkTree(home)) {
    const std::string path = std::string(file.directory).append("/").append(file.name);
    const fs::path place = fs::path(home) / path;
    if (!file.error.empty()) throw std::runtime_error(file.error + ": " + place.string());
    const FileKind* const kind = FileKindOf(file.directory, file.name);
    std::error_code unknown;
    const bool is_file = fs::is_regular_file(place, unknown);
    if (!is_file && (kind == nullptr || (file.is_directory && !kind->layered))) continue;
    if (!is_file) throw std::runtime_error("it is no file: " + place.string());
    if (kind != nullptr && place.string().size() > kind->LongestPath()) {
      throw std::runtime_error("the library opens no path that is so long: " + place.string());
    }
    AddEntries(path, ReadEntriesOf(place.string()), kind, &entries);
  }
  return entries;
}

// What a file of rows holds; nothing when there is no such file.
std::optional<Rows> ReadRows(const records::RecordTable& table, const std::string& file,
                             std::optional<int> slots = std::nullopt) {
  const devhost::TableImage image = devhost::ReadSeed(table, file, slots);
  if (!image.has_file) return std::nullopt;
  return Rows{&table, image.records, ""};
}

// Nothing when no home is given, or it does not say. Throws when what is given is none.
std::optional<int> ConfiguredSlots(const std::string& home, const records::RecordTable& table) {
  if (home.empty()) return std::nullopt;
  RequireHome(home);
  try {
    return std::min(devhost::ReadSlotCount(home, table), devhost::MostSemaphoresOfASet());
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

void ReadSeeds(const std::string& from, Side* side) {
  for (const records::RecordTable& table : records::kRecordTables) {
    auto rows = ReadRows(table, devhost::SeedPath(table, from));
    if (rows) side->tables.emplace(&table, *std::move(rows));
  }
}

// A dump does not say of which table it is: the one whose seed file has its name, or else the first
// whose rows it can hold.
void ReadDump(const std::string& file, Side* side) {
  std::string refusal;
  for (const bool by_name : {true, false}) {
    for (const records::RecordTable& table : records::kRecordTables) {
      if ((fs::path(file).filename() == table.seed_file) != by_name) continue;
      try {
        side->tables.emplace(&table, ReadRows(table, file).value());
        return;
      } catch (const devhost::SeedError& error) {
        if (refusal.empty()) refusal = error.what();
      }
    }
  }
  throw std::runtime_error(refusal);
}

}  // namespace

Rows RowsFrom(const std::string& from, const std::string& home, const records::RecordTable& table) {
  if (from.empty() || from == kLive) {
    const TableState state = SurveyTable(home, table);
    return {&table, CopyRecords(state), state.Shortage()};
  }
  const std::string file = devhost::SeedPath(table, from);
  if (auto rows = ReadRows(table, file, ConfiguredSlots(home, table))) return *std::move(rows);
  throw std::runtime_error("there is no file with rows of " + std::string(table.name) + ": " +
                           file);
}

Side ReadSide(const std::string& given, const std::string& live_home) {
  Side side;
  if (given == kLive) {
    side.home = live_home;
    for (const records::RecordTable& table : records::kRecordTables) {
      Rows rows = RowsFrom(kLive, live_home, table);
      if (!rows.unseen.empty()) throw std::runtime_error(rows.unseen);
      side.tables.emplace(&table, std::move(rows));
    }
  } else if (fs::is_directory(given)) {
    if (fs::is_directory(fs::path(given) / voatm::kKernelFile.directory)) side.home = given;
    ReadSeeds(given, &side);
  } else if (fs::exists(given)) {
    ReadDump(given, &side);
  } else {
    throw std::runtime_error("No such file or directory: " + given);
  }
  if (side.home.empty() && side.tables.empty()) {
    throw std::runtime_error("neither a home nor seed files: " + given);
  }
  if (!side.home.empty()) side.entries = EntriesOf(side.home);
  return side;
}
