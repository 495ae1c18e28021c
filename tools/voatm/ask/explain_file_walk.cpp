#include "ask/explain_file_walk.h"

#include <unistd.h>

#include <cstdlib>

namespace {

constexpr std::size_t kLongestKey = 50;  // longer ones are cut
constexpr std::size_t kLongestFixedPath = 150;
constexpr std::size_t kLongestLayeredPath = 250;

Texts Candidates(const SoughtFile& file, const Inputs& inputs) {
  const char* const home = getenv("VODIR_HOME");
  const std::string directory = std::string(home != nullptr ? home : "") + "/" + file.directory;
  if (file.names == SoughtFile::kFixed) return {directory + "/" + file.suffix};
  const std::string& s1 = inputs.Text("s1");
  const std::string group = s1 + "_" + inputs.Text("s2");
  Texts names = {group + "_" + inputs.Text("s3"), group, s1, inputs.Text("fallback")};
  if (file.names == SoughtFile::kScopedOrDefault) names.emplace_back("DEFAULT");
  for (std::string& name : names) {
    name.insert(0, directory + "/").append("_").append(file.suffix);
  }
  return names;
}

}  // namespace

struct FileWalk::Entry {
  std::string place;  // path and line; empty when there is none
  std::string fault;  // of an entry whose values cannot all be read
  std::optional<Texts> values;

  std::string Shown() const {
    if (place.empty()) return "none";
    return place + ": " + (values ? Values() : fault);
  }

  std::string Values() const {
    std::string text;
    for (const std::string& value : *values) text += (text.empty() ? "" : " ") + value;
    return text;
  }
};

FileWalk::FileWalk(const SoughtFile& file, const Inputs& inputs, Explanation* explanation)
    : explanation_(explanation) {
  const std::size_t longest =
      file.names == SoughtFile::kFixed ? kLongestFixedPath : kLongestLayeredPath;
  for (const std::string& path : Candidates(file, inputs)) {
    const bool fits = path.size() <= longest;
    if (open()) {
      VoCfgUtil later;
      if (!fits || later.cfg_open(path.c_str()) != 0) continue;
      hidden_.push_back(path);
      explanation->shadowed.push_back({path, "exists"});
      continue;
    }
    if (fits && cfg_.cfg_open(path.c_str()) == 0) explanation->source = path_ = path;
    explanation->tries.push_back({"file", path, Outcome(path, fits)});
  }
}

std::optional<Texts> FileWalk::Read(const std::string& whole_key, int first_field, int fields) {
  if (!open()) return std::nullopt;
  const std::string key = whole_key.substr(0, kLongestKey);
  const Entry entry = Search(cfg_, path_, key, first_field, fields);
  explanation_->tries.push_back({"entry", key, entry.Shown()});
  if (entry.values && explanation_->source == path_) explanation_->source = entry.place;
  for (const std::string& path : hidden_) {
    VoCfgUtil later;
    if (later.cfg_open(path.c_str()) != 0) continue;
    const Entry other = Search(later, path, key, first_field, fields);
    if (other.values && other.values != entry.values) AddShadow(key, other);
  }
  return entry.values;
}

void FileWalk::Hide(const std::string& key, int field) {
  const Entry entry = Search(cfg_, path_, key, field, 1);
  if (entry.values) AddShadow(key, entry);
}

FileWalk::Entry FileWalk::Search(VoCfgUtil& cfg, const std::string& path, const std::string& key,
                                 int first_field, int fields) {
  Entry entry;
  Texts values;
  for (int field = first_field; field < first_field + fields; ++field) {
    char value[VoCfgUtil::kMaxField + 1] = {};
    const bool found = cfg.cfg_search(key.c_str(), value, field) == 0;
    if (cfg.line() > 0) entry.place = path + ":" + std::to_string(cfg.line());
    if (!found) {
      entry.fault = "no readable field " + std::to_string(field);
      return entry;
    }
    values.emplace_back(value);
  }
  entry.values = values;
  return entry;
}

std::string FileWalk::Outcome(const std::string& path, bool fits) const {
  if (path == path_) return "exists";
  if (!fits) return "none: the path is too long";
  return access(path.c_str(), F_OK) == 0 ? "none: it cannot be opened" : "none";
}

void FileWalk::AddShadow(const std::string& key, const Entry& entry) {
  explanation_->shadowed.push_back({entry.place, key + ": " + entry.Values()});
}
