// The rows of a shared table as a request compares them, and the walk from column to column that
// leads to the one that decides.
#ifndef TOOLS_VOATM_ASK_EXPLAIN_ROW_WALK_H
#define TOOLS_VOATM_ASK_EXPLAIN_ROW_WALK_H

#include <cstddef>
#include <string>
#include <vector>

#include "ask/explain_core.h"
#include "records/record_tables.h"

constexpr int kNoRow = -1;
constexpr char kAny[] = "*";

// The rows of a table, field by field as text.
class Rows {
 public:
  // No rows when the address is null, or what shmat returns for a failure.
  Rows(const char* short_name, const void* first, int count);

  int count() const { return count_; }

  // A field as it is compared: nothing is made printable.
  std::string Text(int slot, const char* name) const;

  std::string Name(int slot) const;

  // The fields that mean something here.
  Facts All(int slot) const;

 private:
  const char* Row(int slot) const {
    return first_ + static_cast<std::size_t>(slot) * table_.record_size;
  }

  const records::RecordTable& table_;
  const char* first_;
  int count_;
};

// A column, and the keys that are tried for it in this order.
struct Level {
  const char* column;
  std::vector<std::string> keys;
};

using Levels = std::vector<Level>;

std::string SlotOrNone(int slot);

// Settles one column after the other on the first key that some row has together with the columns
// settled before. Returns the row's slot, or kNoRow.
int Walk(const Rows& rows, const Levels& levels, int start, Explanation* explanation);

// Whether a row has one of the keys in each column.
bool HasAnyKey(const Rows& rows, int slot, const Levels& levels);

// Notes a row that would do for the request, or all of them but the winner when there is one.
void AddShadow(const Rows& rows, int slot, Explanation* explanation);
void AddShadows(const Rows& rows, int winner, const Levels& levels, Explanation* explanation);

#endif  // TOOLS_VOATM_ASK_EXPLAIN_ROW_WALK_H
