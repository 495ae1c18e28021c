// The property table: a lookup beside thirteen scans that compare text with strcmp.
#include <benchmark/benchmark.h>

#include "bench/support.h"

namespace {

using Table = PrivateTable<VoAtmProperty>;

struct Request {
  char inst[17];
  char logical[17];
  char atm[17];
  int txn;
  int resp;
  int currency;
};

constexpr int kRowsOfAtm = 10;
constexpr int kRowsOfGroup = 500;
constexpr int kRowsOfInstitution = 1000;

// Leaves the columns behind the first `kept` of a row open.
void Widen(VoAtmProperty& row, int kept) {
  char* const columns[] = {row.InstTerminalGroup, row.AtmLogicalGroup, row.AtmId, row.TxnCode,
                           row.RespCode};
  for (int column = kept; column < 5; ++column) strcpy(columns[column], "*");
  row.CurrencyCode = 0;
}

// A table as a switch has it: nine transactions an ATM and one row for its others, then a row for
// the other ATMs of a group, for the other groups of an institution, and for all institutions.
void Fill(const Table& table) {
  for (int slot = 0; slot < table.count(); ++slot) {
    VoAtmProperty& row = table[slot];
    row = {};
    row.RecordId = slot;
    snprintf(row.InstTerminalGroup, sizeof row.InstTerminalGroup, "HARBOURBANK%04u",
             static_cast<unsigned>(slot) / kRowsOfInstitution % 10000);
    snprintf(row.AtmLogicalGroup, sizeof row.AtmLogicalGroup, "BRANCHES%04u",
             static_cast<unsigned>(slot) / kRowsOfGroup % 10000);
    SetId(row.AtmId, slot / kRowsOfAtm);
    snprintf(row.TxnCode, sizeof row.TxnCode, "%06u",
             10000 + static_cast<unsigned>(slot) % kRowsOfAtm);
    strcpy(row.RespCode, "000");
    row.CurrencyCode = 978;
    if (slot % kRowsOfAtm == kRowsOfAtm - 1) Widen(row, 3);
    if (slot % kRowsOfGroup == kRowsOfGroup - 2) Widen(row, 2);
    if (slot % kRowsOfInstitution == kRowsOfInstitution - 3) Widen(row, 1);
  }
  Widen(table[table.count() - 1], 0);
}

// Rotating requests: all over the table, each known down to another column.
constexpr int kRequests = 60;

void MakeRequests(const Table& table, Request (&requests)[kRequests]) {
  for (int i = 0; i < kRequests; ++i) {
    const long ids = table.count() / kRowsOfAtm - 1;
    const VoAtmProperty& row = table[static_cast<int>(i * ids / kRequests) * kRowsOfAtm];
    const int known = 4 - i % 5;  // 4: an exact row
    Request& request = requests[i];
    request = {};
    strcpy(request.inst, known > 0 ? row.InstTerminalGroup : "HARBOURBANK9999");
    strcpy(request.logical, known > 1 ? row.AtmLogicalGroup : "BRANCHES9999");
    strcpy(request.atm, known > 2 ? row.AtmId : "BRANCHATM9999999");
    request.txn = known > 3 ? atoi(row.TxnCode) : 219999;
    request.currency = 978;
  }
}

// The lookup as thirteen scans.
class Scans {
 public:
  Scans(VoDebugUtil* trace, const Table& table, const Request& request)
      : trace_(trace), table_(table) {
    strcpy(inst_, request.inst);
    strcpy(logical_, request.logical);
    strcpy(atm_, request.atm);
    snprintf(txn_, sizeof txn_, "%06u", static_cast<unsigned>(request.txn) % 1000000);
    snprintf(resp_, sizeof resp_, "%03u", static_cast<unsigned>(request.resp) % 1000);
    currency_ = request.currency;
    snprintf(class_, sizeof class_, "%02u", static_cast<unsigned>(request.txn) / 10000 % 100);
  }

  int Find() {
    const char* const any[] = {"*"};
    const char* const txns[] = {class_, "*"};
    return Settle(0, inst_, any, 1) && Settle(1, logical_, any, 1) && Settle(2, atm_, any, 1) &&
                   Settle(3, txn_, txns, 2) && Settle(4, resp_, any, 1) && SettleCurrency()
               ? slot_
               : -1;
  }

 private:
  bool Scan(int level) {
    for (int slot = slot_; slot < table_.count(); ++slot) {
      const VoAtmProperty& row = table_[slot];
      if (strcmp(row.InstTerminalGroup, inst_) == 0 &&
          (level < 1 || strcmp(row.AtmLogicalGroup, logical_) == 0) &&
          (level < 2 || strcmp(row.AtmId, atm_) == 0) &&
          (level < 3 || strcmp(row.TxnCode, txn_) == 0) &&
          (level < 4 || strcmp(row.RespCode, resp_) == 0) &&
          (level < 5 || row.CurrencyCode == currency_)) {
        slot_ = slot;
        return true;
      }
    }
    trace_->trace(7, "Error in Searching %s %s %s %s %s %d", inst_, logical_, atm_, txn_, resp_,
                  currency_);
    return false;
  }

  bool Settle(int level, char* key, const char* const* wider, int count) {
    if (Scan(level)) return true;
    for (int i = 0; i < count; ++i) {
      strcpy(key, wider[i]);
      if (Scan(level)) return true;
    }
    return false;
  }

  bool SettleCurrency() {
    if (Scan(5)) return true;
    currency_ = 0;
    return Scan(5);
  }

  VoDebugUtil* trace_;
  const Table& table_;
  int slot_ = 0;
  char inst_[17], logical_[17], atm_[17], txn_[7], class_[7], resp_[4];
  int currency_;
};

int Lookup(QuietDriver& driver, const Request& request, VoAtmProperty& row) {
  return driver.util.readAtmProperty(request.inst, request.logical, request.atm, request.txn,
                                     request.resp, request.currency, &row);
}

void Operation(benchmark::State& state, int rows, bool first) {
  const Table table(rows);
  Fill(table);
  QuietDriver driver;
  driver.util.AtmPropertyPtr = table.records();
  driver.util.MaxAtmProperty = rows;
  Request requests[kRequests];
  MakeRequests(table, requests);
  VoAtmProperty row;
  for (const Request& request : requests) {
    if (Lookup(driver, request, row) != 1 ||
        row.RecordId != table[Scans(driver.util.dptr, table, request).Find()].RecordId) {
      state.SkipWithError("the lookups disagree");
      return;
    }
  }
  unsigned next = 0;
  for (auto _ : state) {
    const Request& request = requests[first ? 0 : next++ % kRequests];
    benchmark::DoNotOptimize(Lookup(driver, request, row));
  }
}

void Baseline(benchmark::State& state, int rows, bool first) {
  const Table table(rows);
  Fill(table);
  QuietDriver driver;
  Request requests[kRequests];
  MakeRequests(table, requests);
  VoAtmProperty row;
  unsigned next = 0;
  for (auto _ : state) {
    const Request& request = requests[first ? 0 : next++ % kRequests];
    driver.util.dptr->trace(7, "%s %s %s", request.inst, request.logical, request.atm);
    driver.util.dptr->trace(7, "%s %s %s", request.inst, request.logical, request.atm);
    row = table[Scans(driver.util.dptr, table, request).Find()];
    benchmark::DoNotOptimize(row);
  }
}

BENCHMARK_CAPTURE(Operation, 1k, 1000, false)->Name("property_1k/op");
BENCHMARK_CAPTURE(Baseline, 1k, 1000, false)->Name("property_1k/base");
BENCHMARK_CAPTURE(Operation, 10k, 10000, false)->Name("property_10k/op");
BENCHMARK_CAPTURE(Baseline, 10k, 10000, false)->Name("property_10k/base");
BENCHMARK_CAPTURE(Operation, 30k, 30000, false)->Name("property_30k/op");
BENCHMARK_CAPTURE(Baseline, 30k, 30000, false)->Name("property_30k/base");
BENCHMARK_CAPTURE(Operation, first, 30000, true)->Name("property_first/op");
BENCHMARK_CAPTURE(Baseline, first, 30000, true)->Name("property_first/base");

}  // namespace
