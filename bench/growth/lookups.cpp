#include "bench/growth/lookups.h"

#include <benchmark/benchmark.h>
#include <sys/sem.h>

#include <cstdint>
#include <cstring>
#include <iterator>

#include "bench/measure.h"
#include "bench/semop_count.h"
#include "bench/support.h"

namespace growth {

namespace {

using bench::Call;
using bench::SecondsOfEach;

constexpr char kInst[] = "HARBOUR";
constexpr char kGroup[] = "BRANCHES_0001";

template <typename Record>
Call LoadOfEach(const PrivateTable<Record>& table) {
  return [&table] {
    std::uint64_t sum = 0;
    for (int slot = 0; slot < table.count(); ++slot) {
      std::uint64_t word;
      memcpy(&word, &table[slot], sizeof word);
      sum += word;
    }
    benchmark::DoNotOptimize(sum);
  };
}

double SecondsOfPair(int semid) {
  constexpr int kPairs = 1000;
  const Call pairs = [=] {
    for (int i = 0; i < kPairs; ++i) {
      for (const short units : {short{-2}, short{2}}) {
        sembuf move = {0, units, 0};
        semop(semid, &move, 1);
      }
    }
  };
  return SecondsOfEach({pairs})[0] / kPairs;
}

// The costs of a lookup: as the library has it, with the set of its table, and as a plain loop.
template <typename Record>
Costs CostsOf(QuietDriver& driver, const PrivateTable<Record>& table, int VoATMUtil::*semid,
              const std::function<bool(VoATMUtil&)>& lookup, const Call& plain) {
  VoATMUtil& util = driver.util;
  const auto call = [&] {
    if (!lookup(util)) abort();
  };
  const std::vector<double> seconds = SecondsOfEach({LoadOfEach(table), plain, call});
  Costs costs = {seconds[0], seconds[1], seconds[2], 0, 0};
  if (semid == nullptr) return costs;
  const PrivateSet set(table.count());
  util.*semid = set.id();
  util.LockFlag = true;
  const long before = SemopCount();
  call();
  const double visits = static_cast<double>(SemopCount() - before) / 2;
  costs.pairs = SecondsOfPair(set.id()) * visits;
  costs.locked = SecondsOfEach({call})[0];
  return costs;
}

// Returns a loop that a user would write: it ends at the first record that matches.
template <typename Record, typename Matches>
Call PlainLoop(const PrivateTable<Record>& table, Matches matches) {
  return [&table, matches] {
    int slot = 0;
    while (slot < table.count() && !matches(table[slot])) ++slot;
    benchmark::DoNotOptimize(slot);
  };
}

Costs Atms(int slots) {
  const PrivateTable<AtmMemoryTable> table(slots);
  for (int slot = 0; slot < slots; ++slot) SetId(table[slot].AtmId, slot);
  const char* const last = table[slots - 1].AtmId;
  QuietDriver driver;
  driver.util.AtmMemoryPtr = table.records();
  driver.util.MaxAtm = slots;
  return CostsOf(
      driver, table, &VoATMUtil::AtmMemorySemid,
      [=](VoATMUtil& util) { return util.VerifyAtmMemory(last) == 1; },
      PlainLoop(table, [=](const AtmMemoryTable& atm) { return strcmp(atm.AtmId, last) == 0; }));
}

// A table of card ranges of one group.
class Fits : public QuietDriver {
 public:
  explicit Fits(int slots) : table(slots) {
    for (int slot = 0; slot < slots; ++slot) {
      AtmFit& fit = table[slot];
      SetId(fit.FitId, slot);
      snprintf(fit.MatchKey1, sizeof fit.MatchKey1, "INST%05d", slot % 100000);
      strcpy(fit.MatchKey2, kGroup);
      strcpy(fit.MatchKey3, "*");
      snprintf(fit.CardPrefix, sizeof fit.CardPrefix, "4%05dFFFF", slot % 100000);
    }
    util.AtmFitPtr = table.records();
    util.MaxFit = slots;
  }

  AtmFit& last() const { return table[table.count() - 1]; }

  PrivateTable<AtmFit> table;
};

Costs FitIds(int slots) {
  Fits fits(slots);
  const char* const last = fits.last().FitId;
  return CostsOf(
      fits, fits.table, &VoATMUtil::AtmFitSemid,
      [=](VoATMUtil& util) { return util.VerifyAtmFit(last) == -1; },
      PlainLoop(fits.table, [=](const AtmFit& fit) { return strcmp(fit.FitId, last) == 0; }));
}

Costs FitSelections(int slots) {
  Fits fits(slots);
  const char* const last = fits.last().MatchKey1;
  AtmFit record;
  return CostsOf(
      fits, fits.table, &VoATMUtil::AtmFitSemid,
      [&](VoATMUtil& util) { return util.ReadFitMemory(last, kGroup, "ATM", &record, 1) == 1; },
      PlainLoop(fits.table, [=](const AtmFit& fit) {
        return strcmp(fit.MatchKey1, last) == 0 && strcmp(fit.MatchKey2, kGroup) == 0 &&
               strcmp(fit.MatchKey3, "*") == 0;
      }));
}

Costs Cards(int slots) {
  Fits fits(slots);
  strcpy(fits.last().CardPrefix, "FFFFFFFFFF");
  const Call plain = [&] {
    const char card[] = "4999991234";
    int found = -1;
    for (std::size_t length = sizeof card - 1;; --length) {
      char pattern[] = "FFFFFFFFFF";
      memcpy(pattern, card, length);
      for (int slot = 0; slot < slots; ++slot) {
        if (strcmp(fits.table[slot].CardPrefix, pattern) == 0) found = slot;
      }
      if (length == 0) break;
    }
    benchmark::DoNotOptimize(found);
  };
  char state[8];
  return CostsOf(
      fits, fits.table, nullptr,
      [&](VoATMUtil& util) {
        return util.ReadIndirectState(kInst, "*", "4999991234567890", state) == 1;
      },
      plain);
}

Costs Securities(int slots) {
  const PrivateTable<VoSecurity> table(slots);
  for (int slot = 0; slot < slots; ++slot) SetId(table[slot].SecurityId, slot);
  const char* const last = table[slots - 1].SecurityId;
  QuietDriver driver;
  driver.util.SecurityPtr = table.records();
  driver.util.MaxSecurity = slots;
  VoSecurity record;
  return CostsOf(
      driver, table, &VoATMUtil::SecuritySemid,
      [&](VoATMUtil& util) { return util.ReadVoSecurityTable(last, &record) == 1; },
      PlainLoop(table, [=](const VoSecurity& row) { return strcmp(row.SecurityId, last) == 0; }));
}

// Property rows of one group and ATMs of its own, nine transactions each; the ATM of the last ten
// rows has one for all others.
Costs Properties(int slots) {
  const PrivateTable<VoAtmProperty> table(slots);
  for (int slot = 0; slot < slots; ++slot) {
    VoAtmProperty& row = table[slot];
    strcpy(row.InstTerminalGroup, kInst);
    strcpy(row.AtmLogicalGroup, kGroup);
    SetId(row.AtmId, (slots - 1 - slot) / 10);
    snprintf(row.TxnCode, sizeof row.TxnCode, "%06d", 10000 + slot % 10);
    strcpy(row.RespCode, "*");
  }
  strcpy(table[slots - 1].TxnCode, "*");
  const char* const last = table[slots - 1].AtmId;
  QuietDriver driver;
  driver.util.AtmPropertyPtr = table.records();
  driver.util.MaxAtmProperty = slots;
  VoAtmProperty record;
  const auto row_of = [=](const VoAtmProperty& row, const char* txn) {
    return strcmp(row.InstTerminalGroup, kInst) == 0 && strcmp(row.AtmLogicalGroup, kGroup) == 0 &&
           strcmp(row.AtmId, last) == 0 && strcmp(row.TxnCode, txn) == 0;
  };
  const Call plain = [&] {
    for (const char* txn : {"219999", "21", "*"}) {
      PlainLoop(table, [=](const VoAtmProperty& row) { return row_of(row, txn); })();
    }
  };
  return CostsOf(
      driver, table, &VoATMUtil::AtmPropertySemid,
      [&](VoATMUtil& util) {
        return util.ReadAtmProperty(kInst, kGroup, last, 219999, 0, 978, &record) == 1;
      },
      plain);
}

Costs ActionProperties(int slots) {
  const PrivateTable<VoAtmActionProperty> table(slots);
  for (int slot = 0; slot < slots; ++slot) {
    VoAtmActionProperty& row = table[slot];
    strcpy(row.InstTerminalGroup, kInst);
    strcpy(row.AtmLogicalGroup, kGroup);
    SetId(row.AtmId, slot);
    strcpy(row.StatusCode, "CASHLOW");
    row.ActionFlag = 'Y';
  }
  const char* const last = table[slots - 1].AtmId;
  QuietDriver driver;
  driver.util.AtmActionPropertyPtr = table.records();
  driver.util.MaxAtmProperty = slots;
  return CostsOf(
      driver, table, &VoATMUtil::AtmActionPropertySemid,
      [=](VoATMUtil& util) {
        char statuses[] = "CASHLOW|", text[21];
        return util.ReadAtmActionProperty(kInst, kGroup, last, statuses, 0, text, nullptr,
                                          STATUS_ACTION) == 1;
      },
      PlainLoop(table, [=](const VoAtmActionProperty& row) {
        return strcmp(row.InstTerminalGroup, kInst) == 0 &&
               strcmp(row.AtmLogicalGroup, kGroup) == 0 && strcmp(row.AtmId, last) == 0 &&
               strcmp(row.StatusCode, "CASHLOW") == 0;
      }));
}

Costs Statuses(int slots) {
  const PrivateTable<VoAtmStatus> table(slots);
  for (int slot = 0; slot < slots; ++slot) {
    snprintf(table[slot].StatusCode, sizeof table[slot].StatusCode, "CODE%05d", slot % 100000);
  }
  const char* const last = table[slots - 1].StatusCode;
  QuietDriver driver;
  driver.util.AtmStatusPtr = table.records();
  driver.util.MaxAtmStatus = slots;
  return CostsOf(
      driver, table, &VoATMUtil::AtmStatusSemid,
      [=](VoATMUtil& util) { return util.VerifyAtmStatusMemory(last) == 1; },
      PlainLoop(table, [=](const VoAtmStatus& row) { return strcmp(row.StatusCode, last) == 0; }));
}

}  // namespace

const Lookup kLookups[] = {
    {"ATM", "`VerifyAtmMemory`", Atms},
    {"card range by id", "`VerifyAtmFit`", FitIds},
    {"card range by keys", "`ReadFitMemory`", FitSelections},
    {"card", "`ReadIndirectState`", Cards},
    {"security", "`ReadVoSecurityTable`", Securities},
    {"property", "`ReadAtmProperty`", Properties},
    {"action property", "`ReadAtmActionProperty`", ActionProperties},
    {"status", "`VerifyAtmStatusMemory`", Statuses},
};

const std::size_t kLookupCount = std::size(kLookups);

}  // namespace growth
