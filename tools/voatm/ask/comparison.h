// What differs between two sides: rows, entries, and what drivers are answered.
#ifndef TOOLS_VOATM_ASK_COMPARISON_H
#define TOOLS_VOATM_ASK_COMPARISON_H

#include <functional>
#include <string>

#include "ask/side.h"

// The rows of the tables that both sides have, by id; of several with one id the first with the
// first, and so on. Their slots do not count, but their order does: of a table's rows that stand in
// another one the first is named. [{table, id, change: "added", "removed", "changed" or "moved",
// fields: [{field, before, after}]}]
Json CompareRows(const Side& a, const Side& b);

// Nothing unless both sides have a configuration. [{file, key, a, b}], "(none)" where a side has no
// such entry.
Json CompareEntries(const Side& a, const Side& b);

// An ATM whose answers are compared.
struct Atm {
  std::string s1, s2, s3, fallback;
};

// Every request that either side knows, asked of both for an ATM when both have what answers it;
// those that are answered differently. [{atm, request, a: {found, where, answer}, b}], the request
// as voatm explain takes it. `progress` is called with the number of requests asked so far, and of
// all.
Json CompareAnswers(Side* a, Side* b, const Atm& atm,
                    const std::function<void(std::size_t asked, std::size_t all)>& progress);

#endif  // TOOLS_VOATM_ASK_COMPARISON_H
