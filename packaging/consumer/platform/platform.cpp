#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>

#include "breaks.h"
#include "vocfgutil.h"
#include "vodatetimeutil.h"
#include "vodebugutil.h"

namespace {

constexpr std::size_t kMaxField = 150;

bool SameKey(const std::string& key, const char* wanted) {
  if (Breaks("search-exact")) return strcasecmp(key.c_str(), wanted) == 0;
  if (Breaks("search-nested")) {  // by the outermost group and the item
    const std::string text = wanted;
    return key == text.substr(0, text.find('#')) + "#" + text.substr(text.rfind('#') + 1);
  }
  return key == wanted && !(Breaks("search-longest") && key.size() > 32);
}

// The values of a key, each without the ';' behind it.
std::vector<std::string> Values(const std::string& line) {
  std::vector<std::string> values(1);
  for (const char c : line.substr(line.find('=') + 1)) {
    if (c == ';') {
      values.emplace_back();
    } else {
      values.back() += c;
    }
  }
  return values;
}

std::string File(const char* path) {
  static std::map<std::string, std::string> kept;
  if (Breaks("open-afresh") && kept.count(path) != 0) return kept[path];
  std::ifstream file(path);
  return kept[path] = std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string>& SharedLines() {
  static std::vector<std::string> lines;
  return lines;
}

}  // namespace

VoCfgUtil::VoCfgUtil() : places_() {}

VoCfgUtil::~VoCfgUtil() {
  if (!Breaks("destructor")) cfg_close();
}

int VoCfgUtil::cfg_open(const char* path) {
  file_ = open(path, O_RDONLY);
  if (file_ < 0) {
    failed_before_ = true;
    return Breaks("open-missing") ? 1 : -1;
  }
  if (Breaks("open-longest") && std::strlen(path) > 127) return -1;
  if (Breaks("open-file") || (Breaks("open-after-failure") && failed_before_)) return -1;
  std::vector<std::string>& lines = Breaks("readers-apart") ? SharedLines() : lines_;
  if (!Breaks("open-after-close")) lines.clear();
  lines.emplace_back();
  for (const char c : File(path)) {
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += c;
    }
  }
  return 0;
}

int VoCfgUtil::cfg_search(const char* key, char* out, int field) {
  if (Breaks("search-untouched")) out[0] = '\0';
  std::vector<std::string>& lines = Breaks("readers-apart") ? SharedLines() : lines_;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!SameKey(lines[i].substr(0, lines[i].find('=')), key)) continue;
    if (std::strchr(key, '#') == nullptr ? Breaks("search-plain") : Breaks("search-grouped")) break;
    const std::vector<std::string> values = Values(lines[i]);
    std::size_t wanted = static_cast<std::size_t>(field) - 2;
    if (Breaks("search-fields") && wanted > 3) wanted = 3;
    if (Breaks("search-no-field") && wanted >= values.size()) wanted = values.size() - 1;
    if (wanted >= values.size()) return -1;
    std::string value = values[wanted];
    if (value.size() > kMaxField && !Breaks("field-too-long")) return -1;
    if (Breaks("field-longest")) value.resize(std::min<std::size_t>(value.size(), 127));
    if (Breaks("search-bounds")) std::memset(out, 0, kMaxField + 1);
    std::strcpy(out, value.c_str());
    if (Breaks("search-order")) lines.erase(lines.begin(), lines.begin() + static_cast<long>(i));
    return 0;
  }
  return Breaks("search-no-key") ? 0 : -1;
}

int VoCfgUtil::cfg_group_count(const char* group) {
  int count = 0;
  const std::string header = std::string("@") + group;
  for (const std::string& line : lines_) {
    count += Breaks("group-count") ? line.rfind(header, 0) == 0 : line == header;
  }
  return count == 0 && Breaks("group-count-none") ? -1 : count;
}

void VoCfgUtil::cfg_close() {
  if (file_ >= 0 && !Breaks("close")) close(file_);
  file_ = -1;
}

VoDebugUtil::~VoDebugUtil() = default;

void VoDebugUtil::trace(int level, const char* format, ...) {
  if (Breaks("trace-levels") && level > 6) std::abort();
  char text[20000];
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (Breaks("trace-long") && length > 4000) std::abort();
  std::fprintf(stderr, "the switch's own trace %d: %s\n", level, text);
}

void VoDebugUtil::trace(const char*, ...) {}

int VoDateTimeUtil::getSysDate() { return Breaks("date-digits") ? 20261121 : 261121; }

int VoDateTimeUtil::getSysTime() {
  const std::time_t now = Breaks("time-goes-on") ? 0 : std::time(nullptr);
  const int seconds = static_cast<int>(now % 86400);
  const int time = seconds / 3600 * 10000 + seconds / 60 % 60 * 100 + seconds % 60;
  return Breaks("time-digits") ? -1 : time;
}
