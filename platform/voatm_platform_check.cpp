// Checks a switch's platform services against what libvoatmutil relies on: its reader, its trace
// and its clock. Compile it against the switch's headers and library, and run it:
//
//   g++ -std=c++17 -I<headers> voatm_platform_check.cpp <library> -o voatm_platform_check
//   ./voatm_platform_check [FOLDER]
//
// The folder holds entries.cfg and changed.cfg, what is written below (kEntries, kChanged) in the
// form that the switch's reader reads. Without a folder the files are written as they stand below.
//
//   --list          prints the names of the promises
//   --files FOLDER  writes the two files there, to start from
//
// A promise is checked in a process of its own, so one that crashes, throws or hangs is a broken
// one like any other. Exit status: 0 all hold, 1 some are broken, 2 could not check.
#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include "vocfgutil.h"
#include "vodatetimeutil.h"
#include "vodebugutil.h"

namespace {

// L stands for 150 characters "x", the longest field, K for 50 characters "k", the longest key.
constexpr char kEntries[] =
    "PLAIN 1 2 3 4 5 6 7 8\n"
    "K behind\n"
    "PLAIN_LONGER other\n"
    "plain small\n"
    "LONGEST L behind\n"
    "TOO_LONG Lx behind\n"
    "[GROUP]\n"
    "PLAIN inside\n"
    "[OAR]\n"
    "OAR_TIMEOUT 30\n"
    "[OAR]\n"
    "[OAR]\n"
    "[OAR#VAR]\n"
    "A $VAR 5\n"
    "OAR_TIMEOUT deeper\n";
constexpr char kChanged[] =
    "PLAIN changed\n"
    "ONLY_HERE 1\n";

constexpr int kMaxField = 150;   // characters of a field
constexpr int kMaxKey = 50;      // of a key
constexpr int kMaxPath = 250;    // of a path
constexpr int kSeconds = 10;     // that a promise may take
constexpr char kUnset = '\x7e';  // what an output holds before a search

struct Files {
  std::string entries;
  std::string changed;
  std::string scratch;  // a file that is there and may be overwritten
  std::string missing;  // none
  std::string longest;  // a path that is as long as any
};

void Write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!(file << text).flush()) {
    std::fprintf(stderr, "voatm_platform_check: cannot write %s\n", path.c_str());
    std::exit(2);
  }
}

std::string Contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A caller's output with room to see what is written behind the field.
struct Output {
  Output() { std::memset(text, kUnset, sizeof text); }

  bool Is(const std::string& expected) const {
    return std::memcmp(text, expected.c_str(), expected.size() + 1) == 0;
  }
  bool UntouchedFrom(std::size_t first) const {
    for (std::size_t i = first; i < sizeof text; ++i) {
      if (text[i] != kUnset) return false;
    }
    return true;
  }

  char text[1024];
};

// The calls below are the library's: the same arguments, the same use of the results.

bool Opens(VoCfgUtil& reader, const std::string& path) {
  const int result = reader.cfg_open(path.c_str());
  return result >= 0;
}

bool Finds(VoCfgUtil& reader, const char* key, int field, const std::string& value) {
  Output out;
  const int result = reader.cfg_search(key, out.text, field);
  return result >= 0 && out.Is(value);
}

bool Misses(VoCfgUtil& reader, const char* key, int field) {
  Output out;
  const int result = reader.cfg_search(key, out.text, field);
  return result < 0;
}

[[noreturn]] void CannotCheck(const char* what) {
  std::perror(what);
  std::exit(2);
}

int OpenDescriptors() {
  int count = 0;
  DIR* folder = opendir("/proc/self/fd");
  if (folder == nullptr) CannotCheck("/proc/self/fd");
  while (readdir(folder) != nullptr) ++count;
  closedir(folder);
  return count;
}

// A reader with the entries open.
struct Entries {
  explicit Entries(const Files& files) : opened(Opens(reader, files.entries)) {}

  VoCfgUtil reader;
  const bool opened;
};

bool OpenFailsWithoutFile(const Files& files) {
  VoCfgUtil reader;
  return !Opens(reader, files.missing);
}

bool OpenSucceeds(const Files& files) { return Entries(files).opened; }

bool OpenGoesOnAfterFailures(const Files& files) {
  VoCfgUtil reader;
  for (int layer = 1; layer <= 4; ++layer) Opens(reader, files.missing);
  return Opens(reader, files.entries) && Finds(reader, "PLAIN", 2, "1");
}

bool OpenForgetsTheFileBefore(const Files& files) {
  Entries entries(files);
  if (!Finds(entries.reader, "PLAIN", 2, "1")) return false;
  entries.reader.cfg_close();
  return Opens(entries.reader, files.changed) && Finds(entries.reader, "PLAIN", 2, "changed") &&
         Finds(entries.reader, "ONLY_HERE", 2, "1") && Misses(entries.reader, "GROUP#PLAIN", 2);
}

bool OpenReadsAfresh(const Files& files) {
  for (const std::string& source : {files.entries, files.changed}) {
    Write(files.scratch, Contents(source));
    VoCfgUtil reader;
    const char* value = source == files.entries ? "1" : "changed";
    if (!Opens(reader, files.scratch) || !Finds(reader, "PLAIN", 2, value)) return false;
    reader.cfg_close();
  }
  return true;
}

bool OpenTakesLongestPath(const Files& files) {
  Write(files.longest, Contents(files.entries));
  VoCfgUtil reader;
  return Opens(reader, files.longest) && Finds(reader, "PLAIN", 2, "1");
}

bool SearchFindsPlainKey(const Files& files) {
  Entries entries(files);
  return Finds(entries.reader, "PLAIN", 2, "1");
}

bool SearchFindsGroupedKey(const Files& files) {
  Entries entries(files);
  return Finds(entries.reader, "GROUP#PLAIN", 2, "inside");
}

bool SearchTellsNestedGroups(const Files& files) {
  Entries entries(files);
  return Finds(entries.reader, "OAR#OAR_TIMEOUT", 2, "30") &&
         Finds(entries.reader, "OAR#VAR#A", 2, "$VAR") &&
         Finds(entries.reader, "OAR#VAR#OAR_TIMEOUT", 2, "deeper") &&
         Misses(entries.reader, "OAR#A", 2);
}

bool SearchFindsLongestKey(const Files& files) {
  Entries entries(files);
  return Finds(entries.reader, std::string(kMaxKey, 'k').c_str(), 2, "behind");
}

bool SearchGivesEachField(const Files& files) {
  Entries entries(files);
  for (int field = 2; field <= 9; ++field) {
    if (!Finds(entries.reader, "PLAIN", field, std::to_string(field - 1))) return false;
  }
  return true;
}

bool SearchKeepsNoOrder(const Files& files) {
  Entries entries(files);
  return Finds(entries.reader, "OAR#VAR#A", 3, "5") && Finds(entries.reader, "PLAIN", 9, "8") &&
         Finds(entries.reader, "PLAIN", 2, "1") && Misses(entries.reader, "ABSENT", 2) &&
         Finds(entries.reader, "PLAIN", 2, "1") && Finds(entries.reader, "OAR#VAR#A", 3, "5");
}

bool SearchComparesWholeKeys(const Files& files) {
  Entries entries(files);
  return Misses(entries.reader, "PLAI", 2) && Misses(entries.reader, "Plain", 2) &&
         Finds(entries.reader, "PLAIN_LONGER", 2, "other") &&
         Finds(entries.reader, "plain", 2, "small") && Misses(entries.reader, "group#PLAIN", 2);
}

bool SearchFailsWithoutKey(const Files& files) {
  Entries entries(files);
  return Misses(entries.reader, "ABSENT", 2) && Misses(entries.reader, "GROUP#ABSENT", 2) &&
         Misses(entries.reader, "ABSENT#PLAIN", 2);
}

bool SearchFailsWithoutField(const Files& files) {
  Entries entries(files);
  return entries.opened && Misses(entries.reader, "PLAIN", 10) &&
         Misses(entries.reader, "GROUP#PLAIN", 3);
}

bool FailedSearchWritesNothing(const Files& files) {
  Entries entries(files);
  Output out;
  for (const char* key : {"ABSENT", "GROUP#ABSENT"}) entries.reader.cfg_search(key, out.text, 2);
  entries.reader.cfg_search("PLAIN", out.text, 10);
  return entries.opened && out.UntouchedFrom(0);
}

bool SearchWritesTheFieldOnly(const Files& files) {
  Entries entries(files);
  Output out;
  return entries.reader.cfg_search("GROUP#PLAIN", out.text, 2) >= 0 && out.Is("inside") &&
         out.UntouchedFrom(sizeof "inside");
}

bool LongestFieldIsGivenWhole(const Files& files) {
  Entries entries(files);
  return Finds(entries.reader, "LONGEST", 2, std::string(kMaxField, 'x'));
}

bool NoFieldIsLonger(const Files& files) {
  Entries entries(files);
  Output out;
  entries.reader.cfg_search("TOO_LONG", out.text, 2);
  return entries.opened && out.UntouchedFrom(kMaxField + 1);
}

bool GroupsAreCounted(const Files& files) {
  Entries entries(files);
  const int count = entries.reader.cfg_group_count("OAR");
  return count == 3;
}

bool AbsentGroupsAreNone(const Files& files) {
  Entries entries(files);
  const int count = entries.reader.cfg_group_count("ABSENT");
  return entries.opened && count == 0;
}

bool CloseGivesTheFileBack(const Files& files) {
  const int before = OpenDescriptors();
  Entries entries(files);
  entries.reader.cfg_close();
  return entries.opened && OpenDescriptors() == before;
}

bool DestructorCloses(const Files& files) {
  const int before = OpenDescriptors();
  const bool opened = Entries(files).opened;
  return opened && OpenDescriptors() == before;
}

bool ReadersAreApart(const Files& files) {
  Entries entries(files);
  VoCfgUtil other;
  return Opens(other, files.changed) && Finds(entries.reader, "GROUP#PLAIN", 2, "inside") &&
         Finds(other, "PLAIN", 2, "changed") && Finds(entries.reader, "PLAIN", 2, "1");
}

bool TraceTakesEveryLevel(const Files&) {
  VoDebugUtil trace;
  for (const int level : {2, 6, 7}) {
    trace.trace(level, "voatm_platform_check: %s, level %d, letter %c", "a text", level, 'A');
  }
  trace.trace("voatm_platform_check: %s, no level, notes A[%02d]", "a text", 7);
  return true;
}

bool TraceTakesAnyLength(const Files&) {
  const std::string text(10000, 'x');
  VoDebugUtil trace;
  trace.trace(7, "voatm_platform_check: %s", text.c_str());
  trace.trace("voatm_platform_check: %s", text.c_str());
  return true;
}

bool SixDigits(int number) { return number >= 0 && number <= 999999; }

bool DateHasSixDigits(const Files&) {
  VoDateTimeUtil clock;
  const int date = clock.getSysDate();
  return SixDigits(date);
}

bool TimeHasSixDigits(const Files&) {
  VoDateTimeUtil clock;
  const int time = clock.getSysTime();
  return SixDigits(time);
}

bool TimeGoesOn(const Files&) {
  const int first = VoDateTimeUtil().getSysTime();
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  while (std::chrono::steady_clock::now() < end) {
    if (VoDateTimeUtil().getSysTime() != first) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

struct Promise {
  const char* name;
  const char* text;
  bool (*holds)(const Files&);
};

constexpr Promise kPromises[] = {
    {"open-missing", "cfg_open is negative when there is no file", OpenFailsWithoutFile},
    {"open-file", "cfg_open of a file is not negative", OpenSucceeds},
    {"open-after-failure", "a reader opens a file after it failed to", OpenGoesOnAfterFailures},
    {"open-after-close", "a reader that opens another file knows that one only",
     OpenForgetsTheFileBefore},
    {"open-afresh", "a file is read as it is now, not as it was before", OpenReadsAfresh},
    {"open-longest", "a file with a path of 250 characters opens", OpenTakesLongestPath},
    {"search-plain", "cfg_search finds a plain key", SearchFindsPlainKey},
    {"search-grouped", "cfg_search finds GROUP#ITEM", SearchFindsGroupedKey},
    {"search-nested", "a group's name may hold '#' itself", SearchTellsNestedGroups},
    {"search-longest", "cfg_search finds a key of 50 characters", SearchFindsLongestKey},
    {"search-fields", "fields 2 to 9 are the first to the eighth value", SearchGivesEachField},
    {"search-order", "keys are found in any order, again, and after a miss", SearchKeepsNoOrder},
    {"search-exact", "keys are compared whole, letter by letter", SearchComparesWholeKeys},
    {"search-no-key", "cfg_search is negative for a key that is absent", SearchFailsWithoutKey},
    {"search-no-field", "cfg_search is negative for a field that is absent",
     SearchFailsWithoutField},
    {"search-untouched", "a search that fails leaves the output as it was",
     FailedSearchWritesNothing},
    {"search-bounds", "a search writes the field and one NUL, nothing behind it",
     SearchWritesTheFieldOnly},
    {"field-longest", "a field of 150 characters is given whole", LongestFieldIsGivenWhole},
    {"field-too-long", "no more than 150 characters are given: a longer field fails or is cut",
     NoFieldIsLonger},
    {"group-count", "cfg_group_count counts the groups of this very name", GroupsAreCounted},
    {"group-count-none", "cfg_group_count is 0 when there is no such group", AbsentGroupsAreNone},
    {"close", "cfg_close gives the file back", CloseGivesTheFileBack},
    {"destructor", "the destructor closes a file that is open", DestructorCloses},
    {"readers-apart", "two readers do not know of each other", ReadersAreApart},
    {"trace-levels", "trace takes levels 2, 6 and 7, and none", TraceTakesEveryLevel},
    {"trace-long", "trace takes a text of any length", TraceTakesAnyLength},
    {"date-digits", "getSysDate has up to six digits and no sign", DateHasSixDigits},
    {"time-digits", "getSysTime has up to six digits and no sign", TimeHasSixDigits},
    {"time-goes-on", "getSysTime is asked anew on each call", TimeGoesOn},
};

// How a promise's process ended: an empty text when it holds.
std::string Ended(const Promise& promise, const Files& files) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid < 0) std::exit(2);
  if (pid == 0) {
    alarm(kSeconds);
    const bool holds = promise.holds(files);
    std::fflush(nullptr);
    _exit(holds ? 0 : 1);
  }
  int status = 0;
  if (waitpid(pid, &status, 0) != pid) CannotCheck("waitpid");
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return "";
  if (!WIFSIGNALED(status)) return "does not hold";
  if (WTERMSIG(status) == SIGALRM) return "does not come back";
  return "ends the process with signal " + std::to_string(WTERMSIG(status));
}

int CheckAll(const Files& files) {
  std::signal(SIGCHLD, SIG_DFL);  // who ignores it is told of no child's end
  int broken = 0;
  int promises = 0;
  for (const Promise& promise : kPromises) {
    ++promises;
    const std::string ended = Ended(promise, files);
    if (ended.empty()) continue;
    ++broken;
    std::printf("broken  %s\n        %s: %s\n", promise.name, promise.text, ended.c_str());
  }
  std::printf("%d of %d promises hold\n", promises - broken, promises);
  return broken == 0 ? 0 : 1;
}

void WriteFiles(const std::string& folder) {
  std::string entries = kEntries;
  entries.replace(entries.find("\nK ") + 1, 1, std::string(kMaxKey, 'k'));
  for (std::size_t at = 0; (at = entries.find(" L", at)) != std::string::npos;) {
    entries.replace(at + 1, 1, std::string(kMaxField, 'x'));
  }
  Write(folder + "/entries.cfg", entries);
  Write(folder + "/changed.cfg", kChanged);
}

int Check(const std::string& given) {
  char scratch[] = "/tmp/voatm_platform_check.XXXXXX";
  if (mkdtemp(scratch) == nullptr) return 2;
  const std::string folder = given.empty() ? scratch : given;
  if (given.empty()) WriteFiles(scratch);
  std::string longest = std::string(scratch) + "/";
  longest.resize(kMaxPath, 'x');
  const Files files{folder + "/entries.cfg", folder + "/changed.cfg",
                    std::string(scratch) + "/scratch.cfg", std::string(scratch) + "/missing.cfg",
                    longest};
  int result = 2;
  if (access(files.entries.c_str(), R_OK) != 0 || access(files.changed.c_str(), R_OK) != 0) {
    std::fprintf(stderr, "voatm_platform_check: %s lacks entries.cfg or changed.cfg\n",
                 folder.c_str());
  } else {
    result = CheckAll(files);
  }
  for (const std::string& file :
       {files.scratch, files.longest, std::string(scratch) + "/entries.cfg",
        std::string(scratch) + "/changed.cfg"}) {
    unlink(file.c_str());
  }
  rmdir(scratch);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  if (argc == 2 && option == "--list") {
    for (const Promise& promise : kPromises) std::printf("%s\n", promise.name);
    return 0;
  }
  if (argc == 3 && option == "--files") {
    WriteFiles(argv[2]);
    return 0;
  }
  if (argc > 2 || option.find('-') == 0) {
    std::fprintf(stderr, "usage: voatm_platform_check [FOLDER | --list | --files FOLDER]\n");
    return 2;
  }
  return Check(option);
}
