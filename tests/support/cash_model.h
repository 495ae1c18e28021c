// The rule of cash availability said slowly.
#ifndef TESTS_SUPPORT_CASH_MODEL_H
#define TESTS_SUPPORT_CASH_MODEL_H

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "voatmutil.h"

// The rule of cash availability, step by step and as plain as it reads, for currency 840.
struct CashModel {
  std::string logic;
  std::size_t max_notes;
  DenomInfo denoms[8];
  std::ostringstream said;
  int flagged = 0;  // code of the cassette in the way

  template <typename... Parts>
  void Say(const Parts&... parts) {
    ((said << " <") << ... << parts) << '>';
  }

  int NotesAt(std::size_t i) const { return std::stoi(logic.substr(2 * i, 2)); }

  // The cassettes that can pay, in position order.
  std::vector<DenomInfo> Usable(int requested, bool& replan) {
    int notes = 0, amount = 0;
    for (std::size_t i = 0; i < logic.size() / 2; ++i) {
      DenomInfo& denom = denoms[i];
      denom.LastDispNotes = NotesAt(i);
      if ((NotesAt(i) == 0 && denom.Status == '@') || denom.Code != 840) continue;
      notes += NotesAt(i);
      amount += denom.Value * NotesAt(i);
      if (notes <= static_cast<int>(max_notes)) continue;
      Say("2 Config Notes[", notes, "] > Maxnotes[", max_notes, "]");
      replan = true;
    }
    if (amount != requested) {
      Say("2 CheckAmount[", amount, "] != ReqAmount[", requested, "]");
      replan = true;
    }
    const bool fixed = !replan;
    if (fixed) Say("7 FixDispLogic[", logic, "]");
    for (std::size_t i = 0; fixed && i < logic.size() / 2; ++i) {
      Say("7 ********Notes[", NotesAt(i), "]...Position[", i, "]");
    }
    std::vector<DenomInfo> usable;
    const std::string pairs = logic.substr(0, logic.size() / 2 * 2);
    const bool pays_nothing = pairs.find_first_not_of('0') == std::string::npos;
    for (std::size_t i = 0; i < logic.size() / 2; ++i) {
      if ((fixed && pays_nothing) || denoms[i].Code != 840) continue;
      if (denoms[i].Status == 'Y') {
        if (fixed) Say("7 Coping the Availble denom[", i, "]");
        usable.push_back(denoms[i]);
      } else if (fixed && denoms[i].Status == 'N') {
        Say("7 ********Notes[", NotesAt(i), "]...Position[", i, "]");
        if (NotesAt(i) != 0) replan = true;
      }
    }
    return usable;
  }

  void Flag(char id, const char* kind, int offset) {
    Say("7 Denom Id[ ", id, " ] is ", kind);
    flagged = 300 + 2 * (id - 'A') + offset;
  }

  void FlagHigh(const std::vector<DenomInfo>& usable, int remainder) {
    for (const DenomInfo& denom : usable) {
      if (denom.Value > remainder) return Flag(denom.Id, "High", 2);
    }
  }

  void Plan(int requested, const std::vector<DenomInfo>& usable, std::vector<DenomInfo>& sorted) {
    int remaining = requested, remainder = 0;
    std::size_t total = 0;
    for (DenomInfo& denom : sorted) {
      const bool last = &denom == &sorted.back();
      const int notes = remaining / denom.Value;
      if (notes < 1) {
        Say("7 Count [", notes, "]");
        if (last && requested % denom.Value != 0) FlagHigh(usable, remainder);
        continue;
      }
      denom.LastDispNotes = notes;
      Say("7 DispAmount[ ", denom.Value * notes, " ] Count[ ", notes, " ] CurrencyValue[ ",
          denom.Value, " ]");
      total += static_cast<std::size_t>(notes);
      remaining -= denom.Value * notes;
      remainder = requested % denom.Value;
      Say("7 Total NoOfNotes[", total, "]");
      Say("- Requested Amount [", requested, "]");
      Say("- Remaining Amount [", remainder, "]");
      Say("7 Remaining Amount[", remainder, "]");
      if (remainder == 0 && remaining == 0 && total <= max_notes) {
        return Say("7 Requested Amount [0] is Reached");
      }
      if (last && remainder != 0) FlagHigh(usable, remainder);
      if (total > max_notes) Flag(denom.Id, "Low", 1);
    }
  }

  int Run(std::size_t cassettes, int requested) {
    bool replan = false;
    const std::vector<DenomInfo> usable = Usable(requested, replan);
    std::vector<DenomInfo> sorted = usable;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const DenomInfo& a, const DenomInfo& b) { return a.Value > b.Value; });
    if (replan) {
      Say("7 ********Required Dynamic Disp Check********");
      Say("7 ***Total Available Denom [", sorted.size(), "]");
      for (DenomInfo& denom : sorted) denom.LastDispNotes = 0;
      for (std::size_t i = 0; i < logic.size() / 2; ++i) denoms[i].LastDispNotes = 0;
      if (sorted.empty()) return 108;
      Plan(requested, usable, sorted);
    }
    if (flagged != 0) return flagged >= 301 && flagged <= 316 ? flagged : 0;
    for (std::size_t i = 0; i < logic.size() / 2; ++i) {
      for (const DenomInfo& denom : sorted) {
        if (denoms[i].Id == denom.Id) denoms[i].LastDispNotes = denom.LastDispNotes;
      }
    }
    std::string text;
    for (std::size_t i = 0; i < cassettes; ++i) {
      text += (denoms[i].LastDispNotes < 10 ? "0" : "") + std::to_string(denoms[i].LastDispNotes);
    }
    Say("7 Final Disp Logic [ ", text.substr(0, 19), " ]");
    logic = text.substr(0, 16);
    return 0;
  }
};

#endif  // TESTS_SUPPORT_CASH_MODEL_H
