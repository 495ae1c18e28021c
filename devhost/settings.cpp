#include "devhost/settings.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "common/config_file.h"
#include "devhost/reader_line.h"
#include "tables/locate.h"
#include "vocfgutil.h"

namespace devhost {
namespace {

constexpr records::CountSource kOriginKey = {voatm::kKernelFile.name, "CHANNEL#ORGKEY"};
constexpr int kFirstTableKeyOffset = 10;
constexpr int kLargestOffset = kFirstTableKeyOffset + static_cast<int>(records::kTableCount) - 1;

enum class Empty { kZero, kRefused };

int ReadNumber(const std::string& home, const records::CountSource& source, int largest,
               Empty empty) {
  const std::string path = home + "/cfg/" + source.file;
  VoCfgUtil reader;
  if (reader.cfg_open(path.c_str()) < 0) {
    const bool is_there = access(path.c_str(), R_OK) == 0;
    const std::string cause = is_there ? "not a file" : std::strerror(errno);
    throw std::runtime_error(cause + ": cannot open " + path);
  }
  char value[voatm::kValueSize] = {};
  if (reader.cfg_search(source.key, value, 2) < 0) {
    throw std::runtime_error(std::string("no readable value for ") + source.key + " in " + path);
  }
  const std::string text = value;
  const std::string place =
      std::string(source.key) + " \"" + text + "\" in " + AtLine(path, LineOf(reader));
  const bool digits =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (!digits || (text.empty() && empty == Empty::kRefused)) {
    throw std::runtime_error("not a whole number: " + place);
  }
  // A text of many digits ends as LONG_MAX.
  const long number = std::strtol(text.c_str(), nullptr, 10);
  if (number > largest) {
    throw std::runtime_error("larger than " + std::to_string(largest) + ": " + place);
  }
  return static_cast<int>(number);
}

}  // namespace

int ReadQueueKey(const std::string& home) {
  constexpr int kLargest = std::numeric_limits<int>::max() - kLargestOffset;
  return ReadNumber(home, kOriginKey, kLargest, Empty::kRefused) + voatm::kChannelKeyDistance;
}

int ReadSlotCount(const std::string& home, const records::RecordTable& record) {
  return ReadNumber(home, record.count, std::numeric_limits<int>::max(), Empty::kZero);
}

Settings ReadSettings(const std::string& home) {
  Settings settings{};
  settings.queue_key = ReadQueueKey(home);
  int key = settings.queue_key - voatm::kChannelKeyDistance + kFirstTableKeyOffset;
  for (std::size_t i = 0; i < records::kTableCount; ++i) {
    settings.tables[i] = {key++, ReadSlotCount(home, records::kRecordTables[i])};
  }
  return settings;
}

}  // namespace devhost
