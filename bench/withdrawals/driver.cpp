#include "bench/withdrawals/driver.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "bench/semop_count.h"
#include "bench/withdrawals/home.h"

namespace {

constexpr char kModel[] = "NDC+ATM";
constexpr char kFallback[] = "COMMON";
constexpr int kCurrency = 978;
constexpr int kMaxNotes = 40;

void Expect(bool holds, const char* operation) {
  if (!holds) throw std::runtime_error(std::string("wrong answer of ") + operation);
}

// How many slots were visited since the last call: each is taken and given back.
double Visited() {
  static long before = 0;
  const long calls = SemopCount() - before;
  before = SemopCount();
  return static_cast<double>(calls) / 2;
}

}  // namespace

WithdrawalDriver::WithdrawalDriver() {
  trace_.set_level(2);
  Expect(util_.InitVoATMUtil(&trace_, true) == 1, "InitVoATMUtil");
}

void WithdrawalDriver::Plan(const char* group, const char* id) {
  char amount[151], currency[151], printer[151], request[151];
  Expect(util_.LoadTxnCode("A", "D", code_, amount, currency, printer, request, kInst, group, id,
                           kFallback) == 0,
         "LoadTxnCode");
  VoAtmProperty property;
  Visited();
  Expect(util_.ReadAtmProperty(kInst, group, id, atoi(code_), 0, kCurrency, &property) == 1,
         "ReadAtmProperty");
  visits_.property = Visited();
  Expect(util_.GetDispLogic("CASH", atoi(amount), kInst, group, id, logic_, kModel, kFallback) == 1,
         "GetDispLogic");
  DenomInfo cassettes[8] = {{'A', 1, 20, kCurrency, 'Y', 0},
                            {'B', 2, 50, kCurrency, 'Y', 0},
                            {'C', 3, 100, kCurrency, 'Y', 0},
                            {'D', 4, 10, kCurrency, 'Y', 0}};
  Expect(util_.CheckCashAvailability(kModel, amount, logic_, kCurrency, cassettes, kMaxNotes) == 0,
         "CheckCashAvailability");
  char state[151], screen[151];
  Expect(util_.LoadGoodResponseState(code_, "000", state, screen, kInst, group, id, kFallback) == 1,
         "LoadGoodResponseState");
}

void WithdrawalDriver::Report(const char* id) {
  char codes[15][11] = {}, code[] = "CASHLOW", message[101] = "PAPEROUT|";
  Visited();
  util_.BuiltStatusMsg(codes, code, message);
  visits_.status = Visited();
  Expect(strcmp(message, "PAPEROUT|CASHLOW|") == 0, "BuiltStatusMsg");
  AtmDenomStatusMsg notes = {};
  VoAtmMgrQMsg packed;
  util_.LoadDenomDetails(id, "", "", logic_, kModel, 0, 0, &notes);
  util_.PackAtmDenomMsg(id, &notes, &packed);
  util_.PackAtmStatusMsg(id, message, "", &packed);
}

void WithdrawalDriver::Withdraw(int atm) {
  const std::string id = AtmName(atm);
  const std::string group = GroupName(atm);
  static AtmMemoryTable record;
  Visited();
  Expect(util_.ReadAtmMemory(id.c_str(), &record) == 1, "ReadAtmMemory");
  visits_.atm_read = Visited();
  Plan(group.c_str(), id.c_str());
  Report(id.c_str());
  strcpy(record.Rest, logic_);
  Visited();
  Expect(util_.WriteAtmMemory(id.c_str(), &record) == 1, "WriteAtmMemory");
  visits_.atm_write = Visited();
}
