#include "ask/side.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "ask/rows_source.h"
#include "common/config_file.h"
#include "devhost/seed.h"
#include "home/configuration_entries.h"

namespace {

namespace fs = std::filesystem;

void AddEntries(const std::string& home, const fs::path& path, Entries* entries) {
  std::ifstream stream(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (!stream.is_open() || stream.bad()) throw std::runtime_error("cannot read " + path.string());
  const std::string file = path.lexically_relative(home).string();
  for (const ConfigurationEntry& entry : ReadEntries(text)) {
    if (!entry.readable() || entry.key.empty()) continue;
    std::string fields;
    for (std::size_t i = 1; i < entry.fields.size(); ++i) {
      fields += (i == 1 ? "" : " ") + entry.fields[i].text;
    }
    entries->try_emplace({file, entry.key}, Entry{fields, entry.fields.size() - 1, entry.line});
  }
}

Entries EntriesOf(const std::string& home) {
  Entries entries;
  for (const std::string& directory :
       {std::string(voatm::kKernelFile.directory), std::string(voatm::kInfDirectory)}) {
    const fs::path root = fs::path(home) / directory;
    if (!fs::is_directory(root)) continue;
    for (const fs::directory_entry& file : fs::recursive_directory_iterator(root)) {
      if (file.is_regular_file()) AddEntries(home, file.path(), &entries);
    }
  }
  return entries;
}

void ReadSeeds(const std::string& from, Side* side) {
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    const records::RecordTable& table = records::kRecordTables[i];
    const devhost::TableImage image = devhost::ReadSeed(table, devhost::SeedPath(table, from));
    if (image.has_file) side->tables[i] = Rows{&table, image.records};
  }
}

// A dump does not say of which table it is: the one whose rows it can hold.
void ReadDump(const std::string& file, Side* side) {
  std::string refusal;
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    const records::RecordTable& table = records::kRecordTables[i];
    try {
      side->tables[i] = Rows{&table, devhost::ReadSeed(table, file).records};
      return;
    } catch (const std::runtime_error& error) {
      const bool named = fs::path(file).filename() == table.seed_file;
      if (refusal.empty() || named) refusal = error.what();
    }
  }
  throw std::runtime_error(refusal);
}

}  // namespace

Rows* Side::TableOf(const records::RecordTable& table) {
  auto& rows = tables[static_cast<std::size_t>(&table - records::kRecordTables.data())];
  return rows ? &*rows : nullptr;
}

Side ReadSide(const std::string& given, const std::string& live_home) {
  Side side{given, "", {}, {}};
  if (given == "live") {
    side.home = live_home;
    for (std::size_t i = 0; i < records::kTableCount; ++i) {
      side.tables[i] = RowsFrom("live", live_home, records::kRecordTables[i]);
    }
  } else if (fs::is_directory(given)) {
    if (fs::is_directory(fs::path(given) / voatm::kKernelFile.directory)) side.home = given;
    ReadSeeds(given, &side);
  } else if (fs::exists(given)) {
    ReadDump(given, &side);
  } else {
    throw std::runtime_error("No such file or directory: " + given);
  }
  if (!side.home.empty()) side.entries = EntriesOf(side.home);
  return side;
}
