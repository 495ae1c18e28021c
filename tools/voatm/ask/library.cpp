#include "ask/library.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace {

constexpr int kEveryLevel = 7;

void Keep(void* lines, int level, const char* text) {
  static_cast<std::vector<Library::Line>*>(lines)->push_back({level, text});
}

}  // namespace

Library::Library(const Survey& survey) {
  setenv("VODIR_HOME", survey.home.c_str(), 1);
  trace_.set_level(kEveryLevel);
  trace_.to_callback(Keep, &lines_);
  if (util_.InitVoATMUtil(&trace_, false) != 1) {
    throw std::runtime_error("a driver cannot start: " +
                             (lines_.empty() ? survey.home : lines_.back().text));
  }
  lines_.clear();
}

std::vector<Library::Line> Library::TakeTrace() { return std::exchange(lines_, {}); }
