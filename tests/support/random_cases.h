// Random choices. Their seed is in the output; the environment variable VOATM_TEST_SEED repeats it.
#ifndef TESTS_SUPPORT_RANDOM_CASES_H
#define TESTS_SUPPORT_RANDOM_CASES_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "support/words.h"

class RandomCases {
 public:
  RandomCases() {
    const char* chosen = getenv("VOATM_TEST_SEED");
    const unsigned seed = chosen != nullptr ? static_cast<unsigned>(strtoul(chosen, nullptr, 10))
                                            : std::random_device()();
    std::cout << "VOATM_TEST_SEED=" << seed << '\n';
    testing::Test::RecordProperty("seed", std::to_string(seed));
    engine_.seed(seed);
  }

  // As many rounds as are worth their time: where memory is watched each takes ten times as long,
  // and the fuzz targets try the same.
  static constexpr int Rounds(int rounds) { return SANITIZED ? rounds / 10 : rounds; }

  int Below(int count) { return static_cast<int>(engine_() % static_cast<unsigned>(count)); }

  template <typename T>
  T OneOf(std::initializer_list<T> choices) {
    return choices.begin()[Below(static_cast<int>(choices.size()))];
  }

  // One word of each line.
  Texts Row(const std::vector<Texts>& lines) {
    Texts row;
    for (const Texts& words : lines) {
      row.push_back(words[static_cast<std::size_t>(Below(static_cast<int>(words.size())))]);
    }
    return row;
  }

 private:
  std::mt19937 engine_;
};

#endif  // TESTS_SUPPORT_RANDOM_CASES_H
