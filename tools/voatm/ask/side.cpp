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

Entries EntriesOf(const std::string& home) {
  Entries entries;
  for (const TreeFile& file : WalkTree(home)) {
    const std::string path = std::string(file.directory).append("/").append(file.name);
    const fs::path place = fs::path(home) / path;
    if (!file.error.empty()) throw std::runtime_error(file.error + ": " + place.string());
    const FileKind* const kind = FileKindOf(file.directory, file.name);
    if (file.is_directory && (kind == nullptr || !kind->layered)) continue;
    if (!fs::is_regular_file(place)) throw std::runtime_error("it is no file: " + place.string());
    for (const ConfigurationEntry& entry : ReadEntriesOf(place.string())) {
      if (!entry.readable() || entry.key.empty()) continue;
      std::vector<std::string> fields;
      for (std::size_t i = 1; i < entry.fields.size(); ++i) fields.push_back(entry.fields[i].text);
      entries.try_emplace({path, entry.key}, std::move(fields));
    }
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

// Nothing when there is no home, or it does not say.
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

// A dump does not say of which table it is: the one whose rows it can hold.
void ReadDump(const std::string& file, Side* side) {
  std::string refusal;
  for (const records::RecordTable& table : records::kRecordTables) {
    try {
      side->tables.emplace(&table, ReadRows(table, file).value());
      return;
    } catch (const devhost::SeedError& error) {
      const bool named = fs::path(file).filename() == table.seed_file;
      if (refusal.empty() || named) refusal = error.what();
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
