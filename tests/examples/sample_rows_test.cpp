// The rows of the sample home answer for the ATM that they are for, as its comments say.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/served_home.h"
#include "support/trace_recorder.h"
#include "support/words.h"

namespace {

// From what troubles an ATM least to what troubles it most.
const Texts kByWeight = {"CASHLOW", "PAPEROUT", "CARDJAM", "CASHOUT"};

struct Case {
  const char* inst;
  const char* group;
  Texts actions;      // by weight; none where nobody answers
  Texts withdrawals;  // numbers for transaction 010000
  Texts others;       // numbers for any other
};

class SampleRows : public testing::Test {
 protected:
  SampleRows() { EXPECT_EQ(util_.InitVoATMUtil(trace_.debug(), false), 1) << trace_.text(); }

  std::string Action(const Case& atm, std::string statuses) {
    char action[21] = "";
    util_.ReadAtmActionProperty(atm.inst, atm.group, "ATM", statuses.data(), 0, action, nullptr,
                                STATUS_ACTION);
    return action;
  }

  std::string Number(const Case& atm, std::string statuses, int txn_code) {
    int number = 0;
    const int result = util_.ReadAtmActionProperty(atm.inst, atm.group, "ATM", statuses.data(),
                                                   txn_code, nullptr, &number, TXN_VALUE);
    return result == 1 ? std::to_string(number) : "";
  }

  const ServedHome home_{SAMPLE_HOME};
  TraceRecorder trace_;
  VoATMUtil util_;
};

// The heaviest of the statuses that has an answer, in whatever order they come.
std::string Heaviest(const std::vector<std::size_t>& reported, const Texts& answers) {
  std::size_t heaviest = 0;
  for (const std::size_t status : reported) {
    if (!answers[status].empty()) heaviest = std::max(heaviest, status);
  }
  const bool any = std::count(reported.begin(), reported.end(), heaviest) > 0;
  return any ? answers[heaviest] : "";
}

TEST_F(SampleRows, AnswerTheHeaviestStatusInAnyOrder) {
  const Case atms[] = {
      {"HARBOUR",
       "BRANCH",
       {"CALL CASHIER", "ORDER PAPER", "SEND SERVICE", "ORDER CASH NOW"},
       {"2", "1", "", "0"},
       {"9", "1", "", "9"}},
      {"HARBOUR",
       "MALL",
       {"ORDER CASH", "ORDER PAPER", "SEND SERVICE", "ORDER CASH NOW"},
       {"2", "1", "", "0"},
       {"9", "1", "", "9"}},
      {"NORTHPIER", "STATION", {"", "", "", "TELL OPERATOR"}, {"", "", "", "0"}, {"", "", "", "9"}},
  };
  constexpr std::size_t kLists = 4 * 4 * 4 * 4;  // of four statuses, the same ones too
  for (const Case& atm : atms) {
    for (std::size_t list = 0; list < kLists; ++list) {
      std::vector<std::size_t> reported;
      std::string statuses;
      for (std::size_t rest = list, i = 0; i < 4; ++i, rest /= 4) {
        reported.push_back(rest % 4);
        statuses += kByWeight[rest % 4] + "|";
      }
      EXPECT_EQ(Action(atm, statuses), Heaviest(reported, atm.actions)) << atm.group << statuses;
      EXPECT_EQ(Number(atm, statuses, 10000), Heaviest(reported, atm.withdrawals))
          << atm.group << statuses;
      EXPECT_EQ(Number(atm, statuses, 310000), Heaviest(reported, atm.others))
          << atm.group << statuses;
    }
  }
}

// The property rows have an answer for whatever is asked.
TEST_F(SampleRows, LeaveNoRequestWithoutProperties) {
  const std::vector<Texts> columns =
      WordsOf({"HARBOUR NORTHPIER", "BRANCH MALL STATION", "ATM00001 ATM00003 ATM00006",
               "10000 11000 310000", "0 51", "978 840"});
  constexpr std::size_t kRequests = 2 * 3 * 3 * 3 * 2 * 2;
  for (std::size_t request = 0; request < kRequests; ++request) {
    Texts keys;
    std::size_t rest = request;
    for (const Texts& column : columns) {
      keys.push_back(column[rest % column.size()]);
      rest /= column.size();
    }
    VoAtmProperty row;
    EXPECT_EQ(
        util_.ReadAtmProperty(keys[0].c_str(), keys[1].c_str(), keys[2].c_str(), std::stoi(keys[3]),
                              std::stoi(keys[4]), std::stoi(keys[5]), &row),
        1)
        << trace_.text();
    trace_.Take();
  }
}

}  // namespace
