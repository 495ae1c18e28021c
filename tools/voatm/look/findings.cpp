#include "look/findings.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "ask/library.h"

namespace {

std::string Configured(const TableState& table) {
  const records::CountSource& count = table.record->count;
  return std::string(count.key) + " in cfg/" + count.file;
}

std::string Count(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

Finding Missing(const std::string& object, int error) {
  if (error == ENOENT) {
    return {"there is no " + object, "start the process that owns the table, then the drivers"};
  }
  return {std::string(std::strerror(error)) + ": " + object,
          "run as a user that may read it, as the drivers do"};
}

void CheckSegment(const TableState& table, std::vector<Finding>* findings) {
  if (!table.segment.there()) {
    findings->push_back(Missing(table.DescribeSegment(), table.segment.error));
    return;
  }
  const auto slots = static_cast<std::size_t>(table.slots);
  const std::size_t held = table.HeldSlots();
  const std::string sizes = "the segment holds " + Count(held, "slot") + " (" +
                            Count(table.segment.bytes, "byte") + "), " + Configured(table) +
                            " says " + std::to_string(slots);
  if (held < slots) {
    findings->push_back({sizes + ": drivers read behind its end",
                         "stop the drivers; set the count to " + std::to_string(held) +
                             ", or have the owner create the segment with " +
                             Count(slots * table.record->record_size, "byte")});
  } else if (held > slots) {
    findings->push_back({sizes + ": drivers do not see the slots from " + std::to_string(slots),
                         "set the count to " + std::to_string(held) +
                             " if the owner fills them, and restart the drivers"});
  }
}

void CheckSet(const TableState& table, std::vector<Finding>* findings) {
  if (!table.set.there()) {
    findings->push_back(Missing(table.DescribeSet(), table.set.error));
  } else if (table.set.semaphores < table.slots) {
    findings->push_back(
        {"the semaphore set has " +
             Count(static_cast<std::size_t>(table.set.semaphores), "semaphore") + ", " +
             Configured(table) + " says " + std::to_string(table.slots) + ": locking a slot from " +
             std::to_string(table.set.semaphores) + " on fails",
         "stop the drivers; have the owner create the set with " +
             Count(static_cast<std::size_t>(table.slots), "semaphore") + ", all at 2"});
  }
}

}  // namespace

std::vector<Finding> CheckTable(const TableState& table) {
  if (!table.key.has_value()) {
    return {{"VoChannelMgr does not know the table: drivers do not start",
             "define it there, with the key of its segment and set"}};
  }
  std::vector<Finding> findings;
  CheckSegment(table, &findings);
  CheckSet(table, &findings);
  return findings;
}

std::vector<Finding> CheckStart(const Survey& survey) {
  try {
    const Library library(survey);
    return {};
  } catch (const std::runtime_error& error) {
    return {{error.what(), "put right what the message names, then start the drivers"}};
  }
}
