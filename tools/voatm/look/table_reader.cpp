#include "look/table_reader.h"

TableReader::TableReader(const std::string& home, const records::RecordTable& table)
    : state_(SurveyTable(home, table)), records_(state_) {}

std::string TableReader::Shortage() const {
  return "only " + std::to_string(readable()) + " of " + std::to_string(slots()) +
         " slots lie in the " + state_.DescribeSegment() + "; see voatm tables";
}

const char* TableReader::Read(int slot) {
  const char* const record = records_[slot];
  copy_.assign(record, record + table().record_size);
  return copy_.data();
}
