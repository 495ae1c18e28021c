// Cash availability: whether and how the cassettes pay an amount.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cash/cassettes.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "voatmutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

enum Result { kPayable = 0, kNoWholeNumber = 40, kNoCassette = 108, kFirstCassette = 300 };

constexpr std::size_t kWorkLogicSize = 20;

// A wide integer: no configured value, however wrong, overflows a sum of it.
using Amount = long long;

int Traced(Amount amount) { return static_cast<int>(amount); }

// A face value of 0 is a configuration error: such a cassette gives no notes.
Amount Quotient(Amount amount, Amount value) { return value != 0 ? amount / value : 0; }
Amount Remainder(Amount amount, Amount value) { return value != 0 ? amount % value : 0; }

// One check. The steps stand in the order in which Run takes them.
class CashPlan {
 public:
  CashPlan(VoDebugUtil* trace, const char* req_amount, const char* logic, int currency_code,
           DenomInfo* denoms, int max_notes)
      : trace_(trace),
        logic_(logic),
        requested_(atoi(req_amount)),
        currency_code_(currency_code),
        denoms_(denoms),
        max_notes_(max_notes) {
    const std::size_t length = strnlen(logic, kMaxDispenseLogic);
    positions_ = static_cast<int>(length / 2);
  }

  // Returns the result code; on kPayable the counts in the cassettes are the plan, unless a
  // cassette was flagged.
  int Run() {
    bool replan = !ConfiguredLogicAgrees();
    if (replan) {
      CollectUsable();
    } else {
      replan = CollectForConfiguredLogic();
    }
    SortByValue();
    if (replan) {
      TraceReplanning();
      ClearCounts();
      if (usable_ == 0) return kNoCassette;
      PlanAnew();
    }
    if (flagged_) return FlagCode();
    WriteBack();
    return kPayable;
  }

  bool flagged() const { return flagged_; }

 private:
  bool IsOfCurrency(const DenomInfo& cassette) const { return cassette.Code == currency_code_; }

  // Sets the counts of the configured logic and compares them with the request and the limit.
  bool ConfiguredLogicAgrees() {
    Amount notes = 0;
    Amount amount = 0;
    bool agrees = true;
    for (int i = 0; i < positions_; ++i) {
      DenomInfo& cassette = denoms_[i];
      cassette.LastDispNotes = NotesOf(logic_ + 2 * i);
      if (cassette.LastDispNotes == 0 && cassette.Status == '@') continue;
      if (!IsOfCurrency(cassette)) continue;
      notes += cassette.LastDispNotes;
      amount += Amount{cassette.Value} * cassette.LastDispNotes;
      if (notes > max_notes_) {
        trace_->trace(kError, "Config Notes[%d] > Maxnotes[%d]", Traced(notes), max_notes_);
        agrees = false;
      }
    }
    if (requested_ != amount) {
      trace_->trace(kError, "CheckAmount[%d] != ReqAmount[%d]", Traced(amount), requested_);
      agrees = false;
    }
    return agrees;
  }

  void CollectUsable() {
    for (int i = 0; i < positions_; ++i) {
      if (denoms_[i].Status == 'Y' && IsOfCurrency(denoms_[i])) Append(denoms_[i]);
    }
  }

  // Returns whether the logic asks notes of a cassette that is not usable.
  bool CollectForConfiguredLogic() {
    trace_->trace(kDetail, "FixDispLogic[%s]", logic_);
    bool any_notes = false;
    for (int i = 0; i < positions_; ++i) {
      if (TracedNotesAt(i) > 0) any_notes = true;
    }
    if (!any_notes) return false;

    bool conflict = false;
    for (int i = 0; i < positions_; ++i) {
      if (!IsOfCurrency(denoms_[i])) continue;
      if (denoms_[i].Status == 'Y') {
        trace_->trace(kDetail, "Coping the Availble denom[%d]", i);
        Append(denoms_[i]);
      } else if (denoms_[i].Status == 'N') {
        if (TracedNotesAt(i) != 0) conflict = true;
      }
    }
    return conflict;
  }

  // The configured count, as ConfiguredLogicAgrees has read it.
  int TracedNotesAt(int position) {
    const int notes = denoms_[position].LastDispNotes;
    trace_->trace(kDetail, "********Notes[%d]...Position[%d]", notes, position);
    return notes;
  }

  void Append(const DenomInfo& cassette) { available_[appended_++] = cassette; }

  // Bubble sort, highest value first; equal values keep their position order.
  void SortByValue() {
    for (int i = 0; i < positions_; ++i) {
      if (available_[i].Value != 0) ++usable_;
    }
    memcpy(sorted_, available_, sizeof sorted_);
    for (int pass = 0; pass < usable_; ++pass) {
      for (int i = 0; i < usable_ - pass && i + 1 < kMaxCassettes; ++i) {
        if (sorted_[i].Value >= sorted_[i + 1].Value) continue;
        const DenomInfo lower = sorted_[i];
        sorted_[i] = sorted_[i + 1];
        sorted_[i + 1] = lower;
      }
    }
  }

  void TraceReplanning() {
    trace_->trace(kDetail, "********Required Dynamic Disp Check********");
    trace_->trace(kDetail, "***Total Available Denom [%d]", usable_);
  }

  void ClearCounts() {
    for (int i = 0; i < positions_; ++i) {
      sorted_[i].LastDispNotes = 0;
      denoms_[i].LastDispNotes = 0;
    }
  }

  void PlanAnew() {
    remaining_ = requested_;
    for (int k = 0; k < usable_; ++k) {
      const Amount notes = Quotient(remaining_, sorted_[k].Value);
      if (notes < 1) {
        SkipCassette(k, notes);
        continue;
      }
      PayFrom(sorted_[k], notes);
      if (remainder_ == 0 && remaining_ == 0 && total_notes_ <= max_notes_) {
        trace_->trace(kDetail, "Requested Amount [%d] is Reached", Traced(remaining_));
        return;
      }
      // Intended: neither flag ends the loop, and a later cassette may overwrite it.
      if (IsLast(k) && remainder_ != 0) FlagHigh();
      if (total_notes_ > max_notes_) Flag(sorted_[k].Id, false);
    }
  }

  bool IsLast(int k) const { return k == usable_ - 1; }

  void SkipCassette(int k, Amount notes) {
    trace_->trace(kDetail, "Count [%d]", Traced(notes));
    if (IsLast(k) && Remainder(requested_, sorted_[k].Value) != 0) FlagHigh();
  }

  void PayFrom(DenomInfo& cassette, Amount notes) {
    cassette.LastDispNotes = static_cast<int>(notes);
    const Amount amount = cassette.Value * notes;
    trace_->trace(kDetail, "DispAmount[ %d ] Count[ %d ] CurrencyValue[ %d ]", Traced(amount),
                  Traced(notes), cassette.Value);
    total_notes_ += notes;
    remaining_ -= amount;
    trace_->trace(kDetail, "Total NoOfNotes[%d]", Traced(total_notes_));
    // Intended: of the whole requested amount, not of what remains of it.
    remainder_ = Remainder(requested_, cassette.Value);
    trace_->trace("Requested Amount [%d]", requested_);
    trace_->trace("Remaining Amount [%d]", Traced(remainder_));
    trace_->trace(kDetail, "Remaining Amount[%d]", Traced(remainder_));
  }

  // Flags the first cassette in position order whose notes are larger than the remainder.
  void FlagHigh() {
    for (const DenomInfo& cassette : available_) {
      if (cassette.Value > remainder_) {
        Flag(cassette.Id, true);
        return;
      }
    }
  }

  void Flag(char id, bool high) {
    flagged_ = true;
    flagged_id_ = id;
    flagged_high_ = high;
    if (high) {
      trace_->trace(kDetail, "Denom Id[ %c ] is High", id);
    } else {
      trace_->trace(kDetail, "Denom Id[ %c ] is Low", id);
    }
  }

  int FlagCode() const {
    const int position = flagged_id_ - 'A';
    if (position < 0 || position >= kMaxCassettes) return kPayable;
    return kFirstCassette + 2 * position + (flagged_high_ ? 2 : 1);
  }

  void WriteBack() {
    for (int i = 0; i < positions_; ++i) {
      for (int j = 0; j < usable_; ++j) {
        if (denoms_[i].Id == sorted_[j].Id) denoms_[i].LastDispNotes = sorted_[j].LastDispNotes;
      }
    }
  }

  VoDebugUtil* trace_;
  const char* logic_;
  int requested_;
  int currency_code_;
  DenomInfo* denoms_;
  int max_notes_;
  int positions_ = 0;

  DenomInfo available_[kMaxCassettes] = {};  // usable cassettes in position order
  DenomInfo sorted_[kMaxCassettes];          // the same, highest value first
  int appended_ = 0;
  int usable_ = 0;  // those with a face value

  Amount remaining_ = 0;
  Amount remainder_ = 0;
  Amount total_notes_ = 0;
  bool flagged_ = false;
  bool flagged_high_ = false;
  char flagged_id_ = '\0';
};

// Prints the counts of all of a model's positions, cut at the width.
void PrintLogic(const char* atm_model, const DenomInfo* denoms, char (&logic)[kWorkLogicSize]) {
  const int count = CassettesOf(atm_model) == kEightCassettes ? kEightCassettes : kFourCassettes;
  char whole[kMaxCassettes * kCountSize];
  char* end = whole;
  for (int i = 0; i < count; ++i) {
    char digits[kCountSize];
    SetDigits(digits, denoms[i].LastDispNotes, 2);
    end = stpcpy(end, digits);
  }
  SetText(logic, whole);
}

}  // namespace

int VoATMUtil::CheckCashAvailability(const char* atmModel, char* reqAmount, char* dispLogic,
                                     int currencyCode, DenomInfo* denoms, int maxNotes) {
  if (CheckInteger(dispLogic) != 1) {
    dptr->trace(kError, "Denom Config Error");
    return kNoWholeNumber;
  }
  CashPlan plan(dptr, reqAmount, dispLogic, currencyCode, denoms, maxNotes);
  const int result = plan.Run();
  // Intended: a flagged cassette without a code of its own is no failure, but changes no logic.
  if (result != kPayable || plan.flagged()) return result;

  char logic[kWorkLogicSize];
  PrintLogic(atmModel, denoms, logic);
  dptr->trace(kDetail, "Final Disp Logic [ %s ]", logic);
  char final_logic[kMaxDispenseLogic + 1];
  SetText(final_logic, logic);
  ClearOutput(dispLogic);
  strcpy(dispLogic, final_logic);
  return kPayable;
}
