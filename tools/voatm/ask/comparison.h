// What differs between two sides: rows, entries, and what drivers are answered.
#ifndef TOOLS_VOATM_ASK_COMPARISON_H
#define TOOLS_VOATM_ASK_COMPARISON_H

#include <functional>
#include <string>
#include <vector>

#include "ask/side.h"
#include "show/record_view.h"

struct RowChange {
  const records::RecordTable* table;
  std::string id;
  std::string change;  // "added", "removed" or "changed"
  std::vector<FieldChange> fields;
};

// The rows of the tables that both sides have, by id; of several with one id the first with the
// first, and so on. Their slots do not count.
std::vector<RowChange> CompareRows(Side* a, Side* b);

struct EntryChange {
  std::string file;
  std::string key;
  std::string a;  // "(none)" when there is no such entry
  std::string b;
};

// Nothing unless both sides have a configuration.
std::vector<EntryChange> CompareEntries(const Side& a, const Side& b);

// An ATM whose answers are compared.
struct Atm {
  std::string s1, s2, s3, fallback;
};

struct AnswerChange {
  std::string request;  // as voatm explain takes it
  Placed a;
  Placed b;
};

// Every request that either side knows, asked of both for an ATM; those that are answered
// differently. `progress` is called with the number of requests asked so far, and of all.
std::vector<AnswerChange> CompareAnswers(
    Side* a, Side* b, const Atm& atm,
    const std::function<void(std::size_t asked, std::size_t all)>& progress);

#endif  // TOOLS_VOATM_ASK_COMPARISON_H
