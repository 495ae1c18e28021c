#include "ask/comparison.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

#include "ask/requests.h"
#include "show/record_view.h"

namespace {

// A row by its id, and its number among those of one id.
using RowKey = std::pair<std::string, int>;

// The slots of the rows, and the free ones that still hold something: the library may answer with
// it.
std::map<RowKey, int> SlotsOf(const Rows& rows) {
  std::map<std::string, int> seen;
  std::map<RowKey, int> slots;
  for (int slot = 0; slot < rows.count(); ++slot) {
    const char* const record = rows[slot];
    if (IsUntouched(*rows.table, record)) continue;
    const std::string id = IdText(*rows.table, record);
    slots[{id, seen[id]++}] = slot;
  }
  return slots;
}

// Which of rows that match alike answers is a matter of their order: the first one of both sides
// that other rows precede than before.
const RowKey* FirstMoved(const std::map<RowKey, int>& in_a, const std::map<RowKey, int>& in_b) {
  std::map<int, const RowKey*> a, b;
  for (const auto& [key, slot] : in_a) {
    const auto other = in_b.find(key);
    if (other == in_b.end()) continue;
    a[slot] = &key;
    b[other->second] = &other->first;
  }
  const auto moved = std::mismatch(a.begin(), a.end(), b.begin(), [](auto& one, auto& other) {
                       return *one.second == *other.second;
                     }).first;
  return moved == a.end() ? nullptr : moved->second;
}

void CompareTable(const Rows& a, const Rows& b, Json* changes) {
  const records::RecordTable& table = *a.table;
  const auto in_a = SlotsOf(a);
  const auto in_b = SlotsOf(b);
  const auto add = [&](const std::string& id, const char* change, Json fields) {
    changes->push_back(
        {{"table", table.name}, {"id", id}, {"change", change}, {"fields", std::move(fields)}});
  };
  for (const auto& [key, slot] : in_a) {
    const auto other = in_b.find(key);
    if (other == in_b.end()) {
      add(key.first, "removed", Json::array());
    } else if (std::memcmp(a[slot], b[other->second], table.record_size) != 0) {
      add(key.first, "changed", ChangesJson(table, a[slot], b[other->second]));
    }
  }
  for (const auto& [key, slot] : in_b) {
    if (in_a.count(key) == 0) add(key.first, "added", Json::array());
  }
  if (const RowKey* const key = FirstMoved(in_a, in_b)) {
    add(key->first, "moved",
        {{{"field", "Slot"}, {"before", in_a.at(*key)}, {"after", in_b.at(*key)}}});
  }
}

std::string AllOf(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : " ") + Quoted(field);
  return line;
}

// What one side answers, and where that stands without the side's own path.
Placed AskSide(Side* side, const Request& request) {
  const Question& question = *request.question;
  if (question.table != nullptr) {
    return RowsExperiment(question, request.inputs, &side->tables.at(question.table)).Place();
  }
  setenv("VODIR_HOME", side->home.c_str(), 1);
  Placed placed = AskFiles(question, request.inputs);
  if (placed.where.compare(0, side->home.size() + 1, side->home + "/") == 0) {
    placed.where.erase(0, side->home.size() + 1);
  }
  return placed;
}

// The answer alone, which costs less than where it stands.
Answer AnswerOf(Side* side, const Request& request) {
  const Question& question = *request.question;
  if (question.table == nullptr) return AskSide(side, request).answer;
  return RowsExperiment(question, request.inputs, &side->tables.at(question.table)).Ask();
}

Json FoundJson(const Placed& placed) {
  Json json = {{"found", placed.answer.found}};
  json.update(PlacedJson(placed));
  return json;
}

bool CanAnswer(const Side& side, const Question& question) {
  return question.table == nullptr ? !side.home.empty() : side.tables.count(question.table) > 0;
}

}  // namespace

Json CompareRows(const Side& a, const Side& b) {
  Json changes = Json::array();
  for (const records::RecordTable& table : records::kRecordTables) {
    const auto in_a = a.tables.find(&table), in_b = b.tables.find(&table);
    if (in_a == a.tables.end() || in_b == b.tables.end()) continue;
    CompareTable(in_a->second, in_b->second, &changes);
  }
  return changes;
}

Json CompareEntries(const Side& a, const Side& b) {
  Json changes = Json::array();
  if (a.home.empty() || b.home.empty()) return changes;
  Entries all = a.entries;
  all.insert(b.entries.begin(), b.entries.end());
  const auto find = [](const Entries& entries, const Entries::key_type& place) {
    const auto found = entries.find(place);
    return found == entries.end() ? nullptr : &found->second;
  };
  const auto shown = [](const std::vector<std::string>* fields) {
    if (fields == nullptr) return std::string("(none)");
    return *fields == kUnreadable ? kUnreadable.front() : AllOf(*fields);
  };
  for (const auto& [place, fields] : all) {
    const auto *const in_a = find(a.entries, place), *const in_b = find(b.entries, place);
    if (in_a != nullptr && in_b != nullptr && *in_a == *in_b) continue;
    changes.push_back(
        {{"file", place.first}, {"key", place.second}, {"a", shown(in_a)}, {"b", shown(in_b)}});
  }
  return changes;
}

Json CompareAnswers(Side* a, Side* b, const Atm& atm,
                    const std::function<void(std::size_t asked, std::size_t all)>& progress) {
  Json changes = Json::array();
  const std::vector<Request> requests = RequestsOf({a, b}, atm);
  std::size_t asked = 0;
  for (const Request& request : requests) {
    progress(asked++, requests.size());
    if (!CanAnswer(*a, *request.question) || !CanAnswer(*b, *request.question)) continue;
    if (AnswerOf(a, request) == AnswerOf(b, request)) continue;
    changes.push_back({{"atm", atm.s3},
                       {"request", request.text},
                       {"a", FoundJson(AskSide(a, request))},
                       {"b", FoundJson(AskSide(b, request))}});
  }
  return changes;
}
