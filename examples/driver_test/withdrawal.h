// The part of a driver that the tests beside it are about: what an ATM is told to pay.
#ifndef EXAMPLES_DRIVER_TEST_WITHDRAWAL_H
#define EXAMPLES_DRIVER_TEST_WITHDRAWAL_H

#include <cstdlib>
#include <cstring>
#include <string>

#include "voatmutil.h"

// Plans an amount with the four cassettes of an ATM of HARBOUR and keeps the notes in its record.
// Returns them, "01010000" say, or an empty text when the ATM is not known, does not offer the
// amount, or cannot pay it.
inline std::string Withdraw(VoATMUtil& util, const char* atm, std::string amount,
                            DenomInfo (&cassettes)[8]) {
  AtmMemoryTable record;
  VoAtmProperty property;
  char logic[17];
  if (util.ReadAtmMemory(atm, &record) != 1) return "";
  if (util.ReadAtmProperty("HARBOUR", "BRANCH", atm, 10000, 0, 978, &property) != 1 ||
      property.PropertySwitch1 != 'Y') {
    return "";
  }
  if (util.GetDispLogic("CASH", atoi(amount.c_str()), "HARBOUR", "BRANCH", atm, logic, "NDC+ATM",
                        "COMMON") != 1) {
    return "";
  }
  if (util.CheckCashAvailability("NDC+ATM", amount.data(), logic, 978, cassettes, 40) != 0) {
    return "";
  }
  int sum = 0;  // a result of 0 does not promise the amount
  for (const DenomInfo& cassette : cassettes) sum += cassette.Value * cassette.LastDispNotes;
  if (sum != atoi(amount.c_str())) return "";
  strcpy(record.Rest, logic);
  return util.WriteAtmMemory(atm, &record) == 1 ? logic : "";
}

#endif  // EXAMPLES_DRIVER_TEST_WITHDRAWAL_H
