#include "vocfgutil.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <regex>

#include "support/random_cases.h"
#include "support/served_home.h"

namespace {

constexpr int kBuffer = 16384;
const std::string kLongest(VoCfgUtil::kMaxField, 'x');

class VoCfgUtilTest : public testing::Test {
 protected:
  VoCfgUtilTest() { close(descriptor_); }

  void Open(const std::string& text) {
    home_.Remove("file");  // writing over it would wait for the disk
    home_.Write("file", text);
    ASSERT_EQ(reader_.cfg_open(path_.c_str()), 0);
  }

  // "line value", or "line -" when there is no value.
  std::string Search(const std::string& key, std::size_t field = 2) {
    char value[VoCfgUtil::kMaxField + 1] = "-";
    const bool found = reader_.cfg_search(key.c_str(), value, static_cast<int>(field)) == 0;
    EXPECT_EQ(found, std::string(value) != "-");
    return std::to_string(reader_.line()) + " " + value;
  }

  const TestHome home_;
  const std::string path_ = home_.path() + "/file";
  const int descriptor_ = dup(0);  // the lowest that is free, which the reader gets
  VoCfgUtil reader_;
};

TEST_F(VoCfgUtilTest, FindsWhatTheFormatSays) {
  const std::string blanks(kBuffer, ' ');
  const std::vector<Texts> rows = {
      {" [\tA B ] C\nMAX 1\n[B\nMIN 2\n[A B]\n\"\\\"MIN\" \"3 \\\"\"\r\n", "A B#\"MIN", "6 3 \""},
      {std::string("\0 4\n\"\" 5\n", 9), "", "2 5"},
      {"[ " + kLongest + " ]\nMAX 1\n", kLongest + "#MAX", "2 1"},
      {"[" + kLongest + "x]\nMAX 1\n", kLongest + "x#MAX", "0 -"},
      {"", "MAX", "0 -"},
      {"#" + blanks + blanks + "\nMAX 1\n", "MAX", "2 1"},
      {"MIN" + blanks + "1\nMAX" + blanks + "2", "MAX", "2 2"},
      {"[" + blanks + "A" + blanks + "]\nMAX 1", "A#MAX", "2 1"},
  };
  for (const Texts& row : rows) {
    Open(row[0]);
    EXPECT_EQ(Search(row[1]), row[2]) << row[0].substr(0, 80);
  }
  Open("#" + std::string(kBuffer, '[') + "\nA [A]\n[A]\n[A\n#[A]\n[ A ] B\n[A#B]\n\"[A]\"\n\t[A]");
  EXPECT_EQ(reader_.cfg_group_count("A"), 3);
}

TEST_F(VoCfgUtilTest, OpensFilesOnlyAndClosesTheOneBefore) {
  ASSERT_EQ(mkfifo((home_.path() + "/fifo").c_str(), 0600), 0);
  for (const char* name : {"/fifo", "/", "/absent"}) {
    Open("MAX 1\n");
    EXPECT_EQ(reader_.cfg_open((home_.path() + name).c_str()), -1) << name;
    EXPECT_EQ(fcntl(descriptor_, F_GETFD), -1) << name;
  }
  EXPECT_EQ(Search("MAX"), "0 -");
  EXPECT_EQ(reader_.cfg_group_count("A"), -1);
}

TEST_F(VoCfgUtilTest, FailedReadIsNoEndOfFile) {
  Open("MAX" + std::string(kBuffer - 5, ' ') + "12345\n[A]\n");
  EXPECT_EQ(fcntl(descriptor_, F_GETFD), FD_CLOEXEC);
  close(descriptor_);
  ASSERT_EQ(open("/", O_RDONLY), descriptor_);
  EXPECT_EQ(Search("MAX"), "1 -") << "not the 12 that was read";
  EXPECT_EQ(reader_.cfg_group_count("A"), -1);
  close(descriptor_);
  ASSERT_EQ(open(path_.c_str(), O_RDONLY), descriptor_);
  EXPECT_EQ(Search("MAX"), "1 12345") << "the failure is over";
}

// The format once more, slowly and plainly: what Search answers for a field of each key.
std::map<std::string, std::string> Model(const std::string& text, std::size_t wanted) {
  static const std::regex header(R"(^\[\s*([^\]]*?)\s*\])");
  static const std::regex field(R"-(^("((\\["\\]|(?!\\["\\])[^"])*)"|([^"\s]\S*))(?!\S)\s*)-");
  static const std::regex escape(R"(\\(["\\]))");
  std::map<std::string, std::string> answers;
  std::string group;
  int number = 0;
  for (std::string line : Words(text, '\n')) {
    Texts fields = {std::to_string(++number) + " "};
    line.erase(0, line.find_first_not_of(" \t\r"));
    std::smatch match;
    if (line[0] == '[') group = std::regex_search(line, match, header) ? match.str(1) + "#" : "\n";
    if (line[0] == '[' || line[0] == '#') continue;
    while (std::regex_search(line, match, field) && fields.back().size() <= kLongest.size()) {
      fields.push_back(std::regex_replace(match.str(2), escape, "$1") + match.str(4));
      line = match.suffix();
    }
    if (fields.size() == 1) continue;
    const bool readable = line.empty() && fields.back().size() <= kLongest.size();
    const bool present = readable && wanted > 0 && wanted < fields.size();
    answers.emplace(group + fields[1], fields[0] + (present ? fields[wanted] : "-"));
  }
  return answers;
}

TEST_F(VoCfgUtilTest, AgreesWithThePlainModel) {
  const std::string marks = "#;[;];[A]\n;[A#B]\r\n; ; ;\t;\n;\n;\r\n;\r;\";\";\\;\"A\" ;\nA ;";
  const std::vector<Texts> pieces(24, Words(marks + "A;B;AB;\nB A;\nAB \"A B\";" + kLongest, ';'));
  const Texts keys = Words("A;B;AB;A#A;A#AB;A#B#A;#;;A#;A B;" + kLongest + ";A" + kLongest, ';');
  RandomCases random;
  for (int round = 0; round < 1000; ++round) {
    // Half of the texts lie across the end of the reader's buffer.
    std::string text(random.OneOf({0U, kBuffer - 30U}), '#');
    for (const std::string& piece : random.Row(pieces)) text += piece;
    Open(text);
    const auto field = random.OneOf<std::size_t>({0, 1, 2, 3});
    auto model = Model(text, field);
    for (const std::string& key : keys) {
      ASSERT_EQ(Search(key, field), model.emplace(key, "0 -").first->second) << key << '\n' << text;
    }
  }
}

}  // namespace
