#include "vocfgutil.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kBuffer = 16384;
constexpr char kFailure[] = "(failure)";

// Puts a text into the one file of these tests, which lies in memory, and returns its path.
std::string FileOf(const std::string& text) {
  static const int file = memfd_create("configuration", 0);
  EXPECT_EQ(0, ftruncate(file, 0));
  EXPECT_EQ(static_cast<ssize_t>(text.size()), pwrite(file, text.data(), text.size(), 0));
  return "/proc/self/fd/" + std::to_string(file);
}

std::string Search(VoCfgUtil& reader, const std::string& key, int field) {
  char value[VoCfgUtil::kMaxField + 1] = "untouched";
  if (reader.cfg_search(key.c_str(), value, field) == 0) return value;
  EXPECT_STREQ("untouched", value);
  return kFailure;
}

int LowestFree() {
  const int descriptor = dup(0);
  close(descriptor);
  return descriptor;
}

const std::string k150(150, 'x');

struct SearchCase {
  std::string text, key;
  int field;
  int line;
  std::string value;
};

const SearchCase kCases[] = {
    {"MAX 64\n", "MAX", 2, 1, "64"},
    {"MAX 64\n", "MAX", 1, 1, "MAX"},
    {"MAX 64\n", "MAX", 3, 1, kFailure},
    {"MAXIMUM 1\nMAX 64", "MAX", 2, 2, "64"},
    {"MAX 64\n", "MAX", 0, 1, kFailure},
    {"MAX\n64\n", "MAX", 2, 1, kFailure},
    {" \t MAX \t 64 \t 65 \r\n", "MAX", 3, 1, "65"},
    {" # MAX 1\n\r\n#MAX 2\nMAX #3\r\n", "MAX", 2, 4, "#3"},
    {"#MAX 1\n\"#MAX\" 2\n", "#MAX", 2, 2, "2"},
    {"\"two words\" \"\" \"a \\\"b\\\\\\c\"", "two words", 2, 1, ""},
    {"\"two words\" \"\" \"a \\\"b\\\\\\c\"", "two words", 3, 1, "a \"b\\\\c"},
    {std::string("\0 4\n\"\" 5\n", 9), "", 2, 2, "5"},
    {"MAX 5\"6\"\n", "MAX", 2, 1, "5\"6\""},
    {"MAX 5 \"6\nMAX 7\n", "MAX", 2, 1, kFailure},
    {"MAX 5 \"6\"7\nMAX 7\n", "MAX", 2, 1, kFailure},
    {"MAX 5 \"6\\\"\n", "MAX", 2, 1, kFailure},
    {"\"MAX 5\n\"MAX\"5 6\nMAX 7\n", "MAX", 2, 3, "7"},
    {"MAX " + k150 + " 1", "MAX", 2, 1, k150},
    {"MAX 5 " + k150 + "x 1", "MAX", 2, 1, kFailure},
    {"MAX \"" + k150 + "\"", "MAX", 2, 1, k150},
    {k150 + " 1", k150, 1, 1, k150},
    {k150 + "x 1", k150 + "x", 2, 1, kFailure},
    {"[A]\nMAX 1\n[B]\nMAX 2\n[A]\nMIN 3\n", "A#MIN", 2, 6, "3"},
    {" [\tA B ] C\r\n MAX 1\n", "A B#MAX", 2, 2, "1"},
    {"A#B#C 1\n[A]\nB#C 2\n", "A#B#C", 2, 1, "1"},
    {"[A]\nB#C 2\n[A#B]\nC 3\n", "A#B#C", 2, 2, "2"},
    {"[]\nMAX 1\n", "#MAX", 2, 2, "1"},
    {"[AB]\nMAX 1\n", "A#MAX", 2, 0, kFailure},
    {"[A\nMAX 1\n[A]\nMAX 2\n", "A#MAX", 2, 4, "2"},
    {"[A]\nMAX 1\n[B\nMIN 2\n", "A#MIN", 2, 0, kFailure},
    {"[ " + k150 + " ]\nMAX 1\n", k150 + "#MAX", 2, 2, "1"},
    {"[" + k150 + "x]\nMAX 1\n", k150 + "x#MAX", 2, 0, kFailure},
    {"#" + std::string(3 * kBuffer, '#') + "\nMAX 1\n", "MAX", 2, 2, "1"},
    {"MIN" + std::string(kBuffer, ' ') + "1\nMAX" + std::string(kBuffer, '\t') + "2", "MAX", 2, 2,
     "2"},
    {"[" + std::string(kBuffer, ' ') + "A" + std::string(kBuffer, ' ') + "]\nMAX 1", "A#MAX", 2, 2,
     "1"},
};

TEST(VoCfgUtil, FindsWhatTheFormatSays) {
  for (const SearchCase& c : kCases) {
    SCOPED_TRACE(c.text.substr(0, 80) + " | " + c.key);
    VoCfgUtil reader;
    ASSERT_EQ(0, reader.cfg_open(FileOf(c.text).c_str()));
    EXPECT_EQ(c.value, Search(reader, c.key, c.field));
    EXPECT_EQ(c.line, reader.line());
    EXPECT_EQ(kFailure, Search(reader, "absent", 2));
    EXPECT_EQ(0, reader.line());
  }
}

TEST(VoCfgUtil, CountsHeaders) {
  VoCfgUtil reader;
  EXPECT_EQ(-1, reader.cfg_group_count("A"));
  const std::string text = "A [A]\n[A]\n[A\n#[A]\n[ A ] B\n[A#B]\n\"[A]\"\n\t[A]";
  ASSERT_EQ(0, reader.cfg_open(FileOf("#" + std::string(kBuffer, '[') + "\n" + text).c_str()));
  EXPECT_EQ(3, reader.cfg_group_count("A"));
  EXPECT_EQ(0, reader.cfg_group_count("B"));
}

TEST(VoCfgUtil, OpensFilesOnlyAndClosesTheOneBefore) {
  const std::string fifo = testing::TempDir() + "vocfgutil_fifo." + std::to_string(getpid());
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  const std::string file = FileOf("MAX 1\n");
  const int free_before = LowestFree();
  for (const std::string& path : {fifo, std::string("/"), std::string("/absent")}) {
    VoCfgUtil reader;
    ASSERT_EQ(0, reader.cfg_open(file.c_str()));
    EXPECT_EQ(-1, reader.cfg_open(path.c_str())) << path;
    EXPECT_EQ(free_before, LowestFree());
    ASSERT_EQ(0, reader.cfg_open(file.c_str()));
    reader.cfg_close();
    EXPECT_EQ(kFailure, Search(reader, "MAX", 2));
    ASSERT_EQ(0, reader.cfg_open(file.c_str()));
  }
  EXPECT_EQ(free_before, LowestFree());
  unlink(fifo.c_str());
}

TEST(VoCfgUtil, FailedReadIsNoEndOfFile) {
  const std::string path = FileOf("MAX" + std::string(kBuffer - 5, ' ') + "12345\n[A]\n");
  const int descriptor = LowestFree();  // which the reader gets
  VoCfgUtil reader;
  ASSERT_EQ(0, reader.cfg_open(path.c_str()));
  EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
  const int file = dup(descriptor);
  const int directory = open("/", O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(descriptor, dup2(directory, descriptor));
  EXPECT_EQ(kFailure, Search(reader, "MAX", 2)) << "not the 12 that was read";
  EXPECT_EQ(-1, reader.cfg_group_count("A"));
  ASSERT_EQ(descriptor, dup2(file, descriptor));
  EXPECT_EQ("12345", Search(reader, "MAX", 2)) << "the failure is over";
  close(directory);
  close(file);
}

// The format once more, as slowly and plainly as it can be said.
std::string Trimmed(const std::string& text) {
  const std::size_t start = text.find_first_not_of(" \t\r");
  if (start == std::string::npos) return "";
  return text.substr(start, text.find_last_not_of(" \t\r") - start + 1);
}

bool Split(std::string line, std::vector<std::string>& fields) {
  for (; !line.empty(); line = Trimmed(line)) {
    std::string field = line.substr(0, line.find_first_of(" \t\r"));
    std::size_t at = field.size();
    if (line[0] == '"') {
      field.clear();
      for (at = 1; at < line.size() && line[at] != '"'; ++at) {
        const std::string pair = line.substr(at, 2);
        if (pair == "\\\"" || pair == "\\\\") ++at;
        field += line[at];
      }
      if (at++ == line.size() || line.find_first_not_of(" \t\r", at) == at) return false;
    }
    if (field.size() > 150) return false;
    fields.push_back(field);
    line.erase(0, at);
  }
  return true;
}

std::string Model(const std::string& text, const std::string& key, std::size_t field) {
  std::istringstream lines(text);
  std::string group;
  bool hidden = false;
  for (std::string line; std::getline(lines, line);) {
    line = Trimmed(line);
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '[') {
      group = Trimmed(line.substr(1, line.find(']') - 1)) + "#";
      hidden = line.find(']') == std::string::npos || group.size() > 151;
      continue;
    }
    std::vector<std::string> fields;
    const bool readable = Split(line, fields);
    if (hidden || fields.empty() || group + fields[0] != key) continue;
    return readable && field <= fields.size() ? fields[field - 1] : kFailure;
  }
  return kFailure;
}

TEST(VoCfgUtil, AgreesWithThePlainModel) {
  const std::string pieces[] = {"A",  "B",     "A",         "AB",   "#",      "[",
                                "]",  "[A]\n", "[A#B]\r\n", " ",    "\t",     " ",
                                "\n", "\n",    "\r\n",      "\"",   "\"",     "\"A\" ",
                                "\\", "\r",    k150,        "\nA ", "\nB A ", "\nAB \"A B\" "};
  const std::string keys[] = {"A", "B", "AB", "A#A", "A#AB", "A#B#A", "#", "", "A#", k150, "A B"};
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const auto pick = [&random](std::size_t count) { return random() % count; };
  for (int round = 0; round < 100000; ++round) {
    // Half of the texts lie across the end of the reader's buffer.
    std::string text = pick(2) == 0 ? "" : "#" + std::string(kBuffer - 2 - pick(40), '-') + "\n";
    const std::size_t head = text.size();
    for (std::size_t count = pick(24); count > 0; --count) text += pieces[pick(std::size(pieces))];
    VoCfgUtil reader;
    ASSERT_EQ(0, reader.cfg_open(FileOf(text).c_str()));
    for (const std::string& key : keys) {
      const std::size_t field = 1 + pick(3);
      ASSERT_EQ(Model(text.substr(head), key, field), Search(reader, key, static_cast<int>(field)))
          << "key " << key << " field " << field << " behind " << head << ":\n"
          << text.substr(head);
    }
  }
}

}  // namespace
