#include "look/table_reader.h"

#include <vector>

#include "show/record_view.h"

TableReader::TableReader(const std::string& home, const records::RecordTable& table)
    : state_(SurveyTable(home, table)), records_(state_) {}

void TableReader::ForEach(bool all,
                          const std::function<void(int slot, const char* record)>& take) const {
  std::vector<char> copy(table().record_size);
  for (int slot = 0; slot < readable(); ++slot) {
    copy.assign(records_[slot], records_[slot] + copy.size());
    if (all || !IsFree(table(), copy.data())) take(slot, copy.data());
  }
}
