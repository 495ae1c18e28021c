// A driver that does whole withdrawals.
#ifndef BENCH_WITHDRAWALS_DRIVER_H
#define BENCH_WITHDRAWALS_DRIVER_H

#include "voatmutil.h"
#include "vodebugutil.h"

// What one withdrawal visits, by table.
struct Visits {
  double atm_read;
  double property;
  double status;
  double atm_write;
};

class WithdrawalDriver {
 public:
  // Attaches under locks. Throws std::runtime_error.
  WithdrawalDriver();

  // One withdrawal at an ATM, from its record to its record: reads it, resolves the key, the
  // properties and the logic, plans the notes, takes the next state, records a status, packs what
  // the ATM manager gets and writes the record back. Throws std::runtime_error at a wrong answer.
  void Withdraw(int atm);

  // The slots visited by the last withdrawal.
  const Visits& visits() const { return visits_; }

 private:
  void Plan(const char* group, const char* id);
  void Report(const char* id);

  VoDebugUtil trace_;
  VoATMUtil util_;
  Visits visits_ = {};
  char code_[151];
  char logic_[17];
};

#endif  // BENCH_WITHDRAWALS_DRIVER_H
