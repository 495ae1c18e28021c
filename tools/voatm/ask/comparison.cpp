#include "ask/comparison.h"

#include <cstdlib>
#include <cstring>
#include <map>

#include "ask/requests.h"

namespace {

constexpr const char* kNone = "(none)";

// The rows of a table by id, and the number among those of one id.
std::map<std::pair<std::string, int>, const char*> RowsById(Rows* rows) {
  std::map<std::string, int> seen;
  std::map<std::pair<std::string, int>, const char*> by_id;
  for (int slot = 0; slot < rows->count(); ++slot) {
    const char* const record = (*rows)[slot];
    if (IsFree(*rows->table, record)) continue;
    const std::string id = IdText(*rows->table, record);
    by_id[{id, seen[id]++}] = record;
  }
  return by_id;
}

void CompareTable(Rows* a, Rows* b, std::vector<RowChange>* changes) {
  const records::RecordTable& table = *a->table;
  const auto in_a = RowsById(a);
  const auto in_b = RowsById(b);
  for (const auto& [key, record] : in_a) {
    const auto other = in_b.find(key);
    if (other == in_b.end()) {
      changes->push_back({&table, key.first, "removed", {}});
    } else if (std::memcmp(record, other->second, table.record_size) != 0) {
      changes->push_back({&table, key.first, "changed", ChangesOf(table, record, other->second)});
    }
  }
  for (const auto& [key, record] : in_b) {
    if (in_a.count(key) == 0) changes->push_back({&table, key.first, "added", {}});
  }
}

// What one side answers: the question's facts, and where they stand without the side's own path.
Placed AskSide(Side* side, const Request& request, bool where) {
  if (request.question->ground == Ground::kRows) {
    Rows* const rows = side->TableOf(request.question->Table());
    if (rows == nullptr) return {};
    RowsExperiment experiment(*request.question, request.inputs, rows);
    Placed placed = {"", experiment.Ask()};
    const int slot = where && placed.answer.found ? experiment.FindSlot() : -1;
    if (slot >= 0) placed.where = rows->table->name + (" slot " + std::to_string(slot));
    return placed;
  }
  if (side->home.empty()) return {};
  setenv("VODIR_HOME", side->home.c_str(), 1);
  Placed placed = AskFiles(*request.question, request.inputs);
  if (placed.where.compare(0, side->home.size() + 1, side->home + "/") == 0) {
    placed.where.erase(0, side->home.size() + 1);
  }
  return placed;
}

}  // namespace

std::vector<RowChange> CompareRows(Side* a, Side* b) {
  std::vector<RowChange> changes;
  for (const records::RecordTable& table : records::kRecordTables) {
    Rows* const in_a = a->TableOf(table);
    Rows* const in_b = b->TableOf(table);
    if (in_a != nullptr && in_b != nullptr) CompareTable(in_a, in_b, &changes);
  }
  return changes;
}

std::vector<EntryChange> CompareEntries(const Side& a, const Side& b) {
  std::vector<EntryChange> changes;
  if (a.home.empty() || b.home.empty()) return changes;
  for (const auto& [place, entry] : a.entries) {
    const auto other = b.entries.find(place);
    if (other != b.entries.end() && other->second.fields == entry.fields) continue;
    changes.push_back({place.first, place.second, entry.fields,
                       other == b.entries.end() ? kNone : other->second.fields});
  }
  for (const auto& [place, entry] : b.entries) {
    if (a.entries.count(place) > 0) continue;
    changes.push_back({place.first, place.second, kNone, entry.fields});
  }
  return changes;
}

std::vector<AnswerChange> CompareAnswers(
    Side* a, Side* b, const Atm& atm,
    const std::function<void(std::size_t asked, std::size_t all)>& progress) {
  std::vector<AnswerChange> changes;
  const std::vector<Request> requests = RequestsOf({a, b}, atm);
  std::size_t asked = 0;
  for (const Request& request : requests) {
    progress(asked++, requests.size());
    if (AskSide(a, request, false).answer == AskSide(b, request, false).answer) continue;
    changes.push_back({request.text, AskSide(a, request, true), AskSide(b, request, true)});
  }
  return changes;
}
