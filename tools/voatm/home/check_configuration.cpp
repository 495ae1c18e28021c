#include "home/check_configuration.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "common/config_file.h"
#include "devhost/plan.h"
#include "home/configuration_entries.h"
#include "home/configuration_kinds.h"
#include "vocfgutil.h"

namespace {

constexpr std::size_t kLongestKey = voatm::kKeySize - 1;
constexpr std::size_t kShownText = 40;  // characters of a value that a finding quotes

std::string Below(const std::string& directory, const std::string& name) {
  std::string path = directory;
  path += '/';
  path += name;
  return path;
}

std::string Excerpt(const std::string& text) {
  return '"' + text.substr(0, kShownText) + (text.size() > kShownText ? "...\"" : "\"");
}

void AddFinding(Json* report, const std::string& path, std::size_t line, std::size_t column,
                Severity severity, const std::string& text, const std::string& rule) {
  const std::string name = severity == Severity::kError ? "error" : "warning";
  (*report)["findings"].push_back({{"path", path},
                                   {"line", line},
                                   {"column", column},
                                   {"severity", name},
                                   {"text", text},
                                   {"rule", rule}});
  Json& count = (*report)[name + "s"];
  count = count.get<int>() + 1;
}

// The pattern of a key's last part.
std::string ItemPattern(const std::string& pattern) {
  return pattern.substr(pattern.rfind('#') + 1);  // all of one without a group
}

// The check of one file.
class FileCheck {
 public:
  FileCheck(const FileKind& kind, std::string path, Json& report)
      : kind_(kind), path_(std::move(path)), report_(report) {}

  void Run() {
    if (path_.size() > kind_.LongestPath()) {
      Report(1, 1, Severity::kError, "path-too-long",
             "a path of more than " + std::to_string(kind_.LongestPath()) +
                 " characters does not open");
      return;
    }
    std::error_code unknown;
    const bool is_file = std::filesystem::is_regular_file(path_, unknown);
    if (!is_file || VoCfgUtil().cfg_open(path_.c_str()) < 0) {
      Report(1, 1, Severity::kError, "unreadable-file", "does not open as a file");
      return;
    }
    report_["files"].push_back(path_);
    for (const ConfigurationEntry& entry : ReadEntriesOf(path_)) CheckEntry(entry);
    for (const KeyKind& key : kind_.keys) CheckPresence(key);
  }

 private:
  // Where and how a key was first said.
  struct Saying {
    std::size_t line;
    std::string group;
  };

  void Report(std::size_t line, std::size_t column, Severity severity, const char* rule,
              const std::string& text) {
    AddFinding(&report_, path_, line, column, severity, text, rule);
  }

  void CheckEntry(const ConfigurationEntry& entry) {
    if (kind_.scope == Scope::kGroupsOnly && !entry.is_header) return;
    if (entry.fault != nullptr) {
      Report(entry.line, entry.fault_column, Severity::kError, entry.fault->rule,
             entry.fault->text);
    }
    if (entry.is_header || entry.key.empty()) return;
    said_.insert(entry.key);
    if (entry.hidden) return;
    const auto [first, added] = sayings_.emplace(entry.key, Saying{entry.line, entry.group});
    if (!added) {
      ReportRepetition(entry, first->second);
    } else if (entry.readable()) {
      CheckKey(entry);
    }
  }

  void ReportRepetition(const ConfigurationEntry& entry, const Saying& first) {
    const std::string line = std::to_string(first.line);
    if (entry.group == first.group) {
      Report(entry.line, entry.column, Severity::kWarning, "duplicate-key",
             entry.key + " is never read: line " + line + " has it already");
    } else {
      Report(entry.line, entry.column, Severity::kWarning, "shadowed-key",
             entry.key + " is never read: line " + line + " makes the same key of other parts");
    }
  }

  void CheckKey(const ConfigurationEntry& entry) {
    const KeyKind* key = KindOf(entry);
    if (key == nullptr) return;
    if (entry.key.size() > kLongestKey) {
      Report(entry.line, entry.column, Severity::kError, "key-too-long",
             entry.key + " is never found: keys are cut at " + std::to_string(kLongestKey) +
                 " characters");
      return;
    }
    CheckCount(*key, entry);
    const std::size_t most = key->counts.back();
    for (std::size_t value = 1; value <= most && value < entry.fields.size(); ++value) {
      CheckValue(key->values[std::min(value, key->values.size()) - 1], entry, value);
    }
  }

  // Returns null, reported where that is a fault, when nothing reads the key.
  const KeyKind* KindOf(const ConfigurationEntry& entry) {
    const KeyKind* alike = nullptr;
    for (const KeyKind& key : kind_.keys) {
      if (Matches(key.pattern, entry.key)) return &key;
      if (Matches(ItemPattern(key.pattern), entry.fields.front().text)) alike = &key;
    }
    if (alike != nullptr) {
      Report(entry.line, entry.column, Severity::kWarning, "unread-key",
             entry.key + " is never read: the key is " + alike->shown);
    } else if (kind_.scope == Scope::kEveryKey) {
      const bool has_one_key = kind_.keys.size() == 1;
      Report(entry.line, entry.column, Severity::kWarning, "unread-key",
             entry.key + " is never read" +
                 (has_one_key ? ": only " + kind_.keys.front().shown + " is" : ""));
    }
    return nullptr;
  }

  void CheckCount(const KeyKind& key, const ConfigurationEntry& entry) {
    const std::size_t values = entry.fields.size() - 1;
    const std::string has = entry.key + " has " + std::to_string(values) + " values, ";
    const std::size_t needed = key.counts.front();
    if (key.counts.size() > 1) {
      if (std::find(key.counts.begin(), key.counts.end(), values) != key.counts.end()) return;
      Report(entry.line, entry.column, Severity::kError, "logic-counts",
             has + "one a cassette makes " + std::to_string(needed) + " or " +
                 std::to_string(key.counts.back()));
    } else if (values < needed) {
      Report(entry.line, entry.end, Severity::kError, "missing-field",
             has + "read are " + std::to_string(needed));
    } else if (values > needed) {
      Report(entry.line, entry.fields[needed + 1].column, Severity::kWarning, "extra-field",
             has + "read are " + std::to_string(needed));
    }
  }

  void CheckValue(const FieldRules& rules, const ConfigurationEntry& entry, std::size_t value) {
    const ConfigurationField& field = entry.fields[value];
    const std::string shown =
        entry.key + ", value " + std::to_string(value) + " " + Excerpt(field.text) + ": ";
    for (const FieldRule& rule : rules) {
      // A text of many digits ends as LONG_MAX.
      const bool small =
          rule.largest == 0 || std::strtol(field.text.c_str(), nullptr, 10) <= rule.largest;
      if (small && Matches(rule.pattern, field.text)) continue;
      Report(entry.line, field.column, rule.severity, rule.rule,
             shown + "expected " + rule.expected);
      return;
    }
  }

  void CheckPresence(const KeyKind& key) {
    if (key.need == Need::kNone || said_.count(key.pattern) > 0) return;
    Report(1, 1, key.need == Need::kRequired ? Severity::kError : Severity::kWarning, "missing-key",
           key.shown + " is missing");
  }

  const FileKind& kind_;
  std::string path_;
  Json& report_;
  std::map<std::string, Saying> sayings_;
  std::set<std::string> said_;  // hidden ones included, so that one fault is reported once
};

// The check of a tree.
class HomeCheck {
 public:
  explicit HomeCheck(std::string home) : home_(std::move(home)) {}

  Json Run() {
    for (const TreeFile& file : WalkTree(home_)) Check(file);
    for (const FileKind& kind : FileKinds()) {
      if (kind.need != Need::kRequired || seen_.count(&kind) > 0) continue;
      Report(Below(kind.directory, kind.shown), Severity::kError, "missing-file",
             "drivers need it to start");
    }
    CheckSeeds();
    std::sort(report_["files"].begin(), report_["files"].end());
    std::sort(report_["findings"].begin(), report_["findings"].end(),
              [](const Json& a, const Json& b) {
                return std::tie(a["path"], a["line"], a["column"], a["text"]) <
                       std::tie(b["path"], b["line"], b["column"], b["text"]);
              });
    return std::move(report_);
  }

 private:
  void Report(const std::string& file, Severity severity, const char* rule,
              const std::string& text) {
    AddFinding(&report_, Below(home_, file), 1, 1, severity, text, rule);
  }

  // The rows that the development host would load.
  void CheckSeeds() {
    for (const records::RecordTable& table : records::kRecordTables) {
      const std::string path = Below(home_, Below("tables", table.seed_file));
      if (std::filesystem::exists(path)) report_["files"].push_back(path);
    }
    for (const devhost::SeedError& error : devhost::CheckSeeds(home_)) {
      AddFinding(&report_, error.path, error.line, error.column, Severity::kError, error.text,
                 "seed-refused");
    }
  }

  void Check(const TreeFile& file) {
    if (file.name.empty()) {
      Report(file.directory, Severity::kError, "unreadable-file", "does not open: " + file.error);
    } else if (!CheckKnown(file) && !file.is_directory) {
      CheckStray(file.directory, file.name);
    }
  }

  // Returns whether the name is one that is opened there.
  bool CheckKnown(const TreeFile& file) {
    const FileKind* const kind = FileKindOf(file.directory, file.name);
    if (kind == nullptr || (file.is_directory && kind->scope == Scope::kGroupsOnly)) return false;
    seen_.insert(kind);
    FileCheck(*kind, Below(home_, Below(file.directory, file.name)), report_).Run();
    return true;
  }

  void CheckStray(const std::string& directory, const std::string& name) {
    for (const FileKind& kind : FileKinds()) {
      const bool here = directory == kind.directory;
      const std::string file = Below(directory, name);
      if (here && kind.layered) {
        Report(file, Severity::kWarning, "unopened-file",
               "no scope opens it: names here are " + kind.shown);
        return;
      }
      if (!here && Matches(kind.claims, name)) {
        Report(file, Severity::kWarning, "unopened-file",
               std::string("nothing opens it here: its folder is ") + kind.directory);
        return;
      }
    }
  }

  std::string home_;
  Json report_ = {
      {"errors", 0}, {"warnings", 0}, {"findings", Json::array()}, {"files", Json::array()}};
  std::set<const FileKind*> seen_;
};

}  // namespace

Json CheckConfiguration(const std::string& home) { return HomeCheck(home).Run(); }
