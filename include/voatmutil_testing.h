// Test doubles for a driver's own tests: the shared tables in memory, the traces as text, and a
// configuration home of the test's own.
//
//   TEST(Driver, TurnsAnUnknownAtmAway) {
//     namespace doubles = voatmutil_testing;
//     doubles::Traces traces;
//     doubles::Tables tables(traces.debug());
//     tables.Add(doubles::Row<AtmMemoryTable>({{&AtmMemoryTable::AtmId, "ATM00001"}}));
//     Driver driver(&tables.util());
//     EXPECT_TRUE(driver.Serves("ATM00001"));
//     EXPECT_FALSE(driver.Serves("NOBODY")) << traces.text();
//   }
//
// The library itself answers. Nothing is started, no IPC object is made, and no lock is taken:
// LockFlag is false, so that a capitalised operation is its lower-case form. What start-up and
// locks do is for a test against `voatm serve`.
//
// Header only: C++17, its standard library and libc. What cannot be done is thrown as
// std::runtime_error.
#ifndef VOATMUTIL_TESTING_H
#define VOATMUTIL_TESTING_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "voatmutil.h"
#include "vodebugutil.h"

namespace voatmutil_testing {

// Collects what the library traces at every level, a line a call: the level ('-' when it has none),
// a blank, the text. Needs a VoDebugUtil that writes to a callback, as the bundled one does; a
// switch with another gives Tables its own.
template <typename Debug>
class TracesOf {
 public:
  TracesOf() {
    debug_.set_level(7);
    debug_.to_callback(&TracesOf::Add, this);
  }
  TracesOf(const TracesOf&) = delete;
  TracesOf& operator=(const TracesOf&) = delete;

  Debug* debug() { return &debug_; }

  // The lines so far, each with its newline; Take also begins anew.
  const std::string& text() const { return lines_; }
  std::string Take() { return std::exchange(lines_, {}); }

 private:
  static void Add(void* self, int level, const char* text) {
    std::string& lines = static_cast<TracesOf*>(self)->lines_;
    lines += (level < 0 ? "-" : std::to_string(level)) + " " + text + "\n";
  }

  Debug debug_;
  std::string lines_;
};
using Traces = TracesOf<VoDebugUtil>;

// One field of a record with its value: {&VoAtmProperty::CurrencyCode, 978}, {&AtmFit::FitId, "A"},
// {&VoAtmProperty::PropertySwitch1, 'Y'}, and {&AtmDetailBlock::GroupingKey, "BRANCH"} for an ATM.
template <typename Record>
class Field {
 public:
  // A text may fill the field but for its NUL.
  template <typename Part, std::size_t N>
  Field(char (Part::*field)[N], const std::string& text) {
    if (text.size() >= N) throw std::runtime_error("no room for \"" + text + "\" in its field");
    set_ = [field, text](Record& record) {
      if constexpr (std::is_same_v<Part, AtmDetailBlock>) {
        std::memcpy(record.AtmDetail.*field, text.c_str(), text.size() + 1);
      } else {
        std::memcpy(record.*field, text.c_str(), text.size() + 1);
      }
    };
  }
  Field(int Record::*field, int number)
      : set_([field, number](Record& record) { record.*field = number; }) {}
  Field(char Record::*field, char character)
      : set_([field, character](Record& record) { record.*field = character; }) {}

  void Set(Record& record) const { set_(record); }

 private:
  std::function<void(Record&)> set_;
};

// A record of the fields named. The others: where a column has a wildcard, that; switches and flags
// are 'N'; everything else is empty.
template <typename Record>
Record Row(std::initializer_list<Field<Record>> fields) {
  Record record = {};
  if constexpr (std::is_same_v<Record, AtmFit>) {
    for (char* key : {record.MatchKey2, record.MatchKey3}) std::strcpy(key, "*");
    std::strcpy(record.CardPrefix, "FFFFFFFFFF");
  } else if constexpr (std::is_same_v<Record, VoAtmProperty>) {
    for (char* key : {record.InstTerminalGroup, record.AtmLogicalGroup, record.AtmId,
                      record.TxnCode, record.RespCode}) {
      std::strcpy(key, "*");
    }
    VoATMUtil().resetAtmProperty(&record);
  } else if constexpr (std::is_same_v<Record, VoAtmActionProperty>) {
    for (char* key :
         {record.InstTerminalGroup, record.AtmLogicalGroup, record.AtmId, record.TxnCode}) {
      std::strcpy(key, "*");
    }
    record.ActionFlag = record.TxnFlag = 'N';
  }
  for (const Field<Record>& field : fields) field.Set(record);
  return record;
}

// The six tables in memory, and an object that is pointed at them as if it had started up.
class Tables {
 public:
  explicit Tables(VoDebugUtil* trace) { util_.dptr = trace; }
  Tables(const Tables&) = delete;
  Tables& operator=(const Tables&) = delete;

  VoATMUtil& util() { return util_; }

  // Puts a record into the next slot of its table, whose place in memory may change.
  template <typename Record>
  Tables& Add(const Record& record) {
    Table<Record>& table = std::get<Table<Record>>(tables_);
    if (table.used == table.slots.size()) table.slots.emplace_back();
    table.slots[table.used++] = record;
    Attach();
    return *this;
  }

  // The record in a slot, which the library and the test may change.
  template <typename Record>
  Record& At(int slot) {
    return std::get<Table<Record>>(tables_).slots.at(static_cast<std::size_t>(slot));
  }

 private:
  template <typename Record>
  struct Table {
    std::vector<Record> slots;
    std::size_t used = 0;
  };

  template <typename Record>
  void Point(Record*& first, int& count) {
    std::vector<Record>& slots = std::get<Table<Record>>(tables_).slots;
    first = slots.data();
    count = static_cast<int>(slots.size());
  }

  // Both property tables have as many slots as the longer one.
  template <typename Record>
  void Fill(std::size_t count) {
    using F = Field<Record>;
    const Record free = Row<Record>({F(&Record::InstTerminalGroup, "NOTDEFINED")});
    std::get<Table<Record>>(tables_).slots.resize(count, free);
  }

  void Attach() {
    const std::size_t count = std::max(std::get<Table<VoAtmProperty>>(tables_).slots.size(),
                                       std::get<Table<VoAtmActionProperty>>(tables_).slots.size());
    Fill<VoAtmProperty>(count);
    Fill<VoAtmActionProperty>(count);
    Point(util_.AtmMemoryPtr, util_.MaxAtm);
    Point(util_.AtmFitPtr, util_.MaxFit);
    Point(util_.SecurityPtr, util_.MaxSecurity);
    Point(util_.AtmPropertyPtr, util_.MaxAtmProperty);
    Point(util_.AtmActionPropertyPtr, util_.MaxAtmProperty);
    Point(util_.AtmStatusPtr, util_.MaxAtmStatus);
  }

  VoATMUtil util_;
  std::tuple<Table<AtmMemoryTable>, Table<AtmFit>, Table<VoSecurity>, Table<VoAtmProperty>,
             Table<VoAtmActionProperty>, Table<VoAtmStatus>>
      tables_;
};

// A configuration home in a folder of its own that VODIR_HOME names, until the object removes it
// and gives VODIR_HOME back what it was.
class Home {
 public:
  Home() : path_((std::filesystem::temp_directory_path() / "voatm.XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot make " + path_);
    const char* before = getenv("VODIR_HOME");
    was_set_ = before != nullptr;
    if (was_set_) before_ = before;
    setenv("VODIR_HOME", path_.c_str(), 1);
  }
  ~Home() {
    if (was_set_) {
      setenv("VODIR_HOME", before_.c_str(), 1);
    } else {
      unsetenv("VODIR_HOME");
    }
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  const std::string& path() const { return path_; }

  // Writes a file of the home, "cfg/vobusiness.cfg" say, with the folders it lies in.
  void Write(const std::string& file, const std::string& text) const {
    const std::filesystem::path path = std::filesystem::path(path_) / file;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary);
    if (!(stream << text).flush()) throw std::runtime_error("cannot write " + path.string());
  }

  // Returns a file's text; an empty one when there is no such file.
  std::string Read(const std::string& file) const {
    std::ifstream stream(path_ + "/" + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::string path_;
  std::string before_;
  bool was_set_ = false;
};

}  // namespace voatmutil_testing

#endif  // VOATMUTIL_TESTING_H
