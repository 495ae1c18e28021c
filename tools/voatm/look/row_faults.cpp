#include "look/row_faults.h"

#include <algorithm>
#include <set>

#include "show/record_view.h"

namespace {

using records::RecordField;

bool IsSwitch(const RecordField& field) {
  const std::string name = field.name;
  return field.kind == records::FieldKind::kCharacter &&
         (name.find("Switch") != std::string::npos || name.find("Flag") != std::string::npos);
}

void JudgeFields(const records::RecordTable& table, const char* record, int slot,
                 RowFaults* faults) {
  for (const RecordField& field : table) {
    const std::string name = field.name;
    if (IsUnterminated(field, record)) {
      faults->Add(name + " does not end", "compare it up to its width", slot);
    }
    const char value = record[field.offset];
    if (IsSwitch(field) && value != 'Y' && value != 'N') {
      faults->Add(name + " is neither Y nor N", "take it for what they like", slot);
    }
  }
}

}  // namespace

void RowFaults::Add(const std::string& what, const std::string& effect, int slot) {
  const auto fault = std::find_if(faults_.begin(), faults_.end(),
                                  [&](const Fault& each) { return each.what == what; });
  if (fault != faults_.end()) {
    fault->slots.push_back(slot);
  } else {
    faults_.push_back({what, effect, {slot}});
  }
}

std::vector<Finding> RowFaults::Findings() const {
  constexpr std::size_t kNamed = 6;
  std::vector<Finding> findings;
  for (const Fault& fault : faults_) {
    std::string slots;
    for (std::size_t i = 0; i < std::min(kNamed, fault.slots.size()); ++i) {
      slots += (i == 0 ? " " : ", ") + std::to_string(fault.slots[i]);
    }
    if (fault.slots.size() > kNamed) {
      slots += " and " + std::to_string(fault.slots.size() - kNamed) + " more";
    }
    findings.push_back({fault.what, std::string(table_.name) + " slot" + slots, "", fault.effect,
                        std::string("voatm show ") + table_.short_name + " " +
                            std::to_string(fault.slots.front())});
  }
  return findings;
}

std::vector<Finding> JudgeRecords(const records::RecordTable& table, const char* records,
                                  int count) {
  const auto bytes = static_cast<std::size_t>(count) * table.record_size;
  if (bytes > 0 && std::all_of(records, records + bytes, [](char byte) { return byte == 0; })) {
    return {{"all its bytes are 0", table.name, "", "find no record",
             "have the owner of the table fill it"}};
  }
  RowFaults faults(table);
  std::set<std::string> ids;
  for (int slot = 0; slot < count; ++slot) {
    const char* record = records + static_cast<std::size_t>(slot) * table.record_size;
    if (IsFree(table, record)) continue;
    const std::string id = FieldText(table.key(), record);
    if (id.empty()) faults.Add("its id is empty", "find it by no id", slot);
    // Rows that are found by more than their first text may share it.
    const bool is_alone = &table.key() != &table.id() || ids.insert(id).second;
    const bool by_id = &table != &records::kRecordTables[records::kFit];
    const char* const effect = by_id ? "find that one instead" : "know the two by one name";
    if (!is_alone) faults.Add("a lower slot has its id", effect, slot);
    JudgeFields(table, record, slot, &faults);
  }
  return faults.Findings();
}
