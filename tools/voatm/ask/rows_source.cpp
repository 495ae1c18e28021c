#include "ask/rows_source.h"

#include <stdexcept>

#include "devhost/seed.h"
#include "look/survey.h"

Rows RowsFrom(const std::string& from, const std::string& home, const records::RecordTable& table) {
  if (from.empty() || from == "live") return {&table, CopyRecords(SurveyTable(home, table))};
  const devhost::TableImage image = devhost::ReadSeed(table, devhost::SeedPath(table, from));
  if (image.has_file) return {&table, image.records};
  throw std::runtime_error("there is no file with rows of " + std::string(table.name) + ": " +
                           image.file);
}
