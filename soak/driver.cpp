#include "driver.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <random>

#include "vodebugutil.h"

namespace {

// Of the sample home; the other ids and texts below too.
constexpr const char* kAtms[] = {"ATM00001", "ATM00002", "ATM00003"};
constexpr const char* kInst = "HARBOUR";
constexpr const char* kGroup = "BRANCH";

constexpr int kErrors = 2;             // of the trace levels, what a driver prints
constexpr unsigned kLookUpEvery = 16;  // operations on records

// Asks every table that no driver writes, and a file. Returns what was answered wrongly.
const char* LookUp(VoATMUtil& util) {
  const char* const atm = kAtms[0];
  if (util.VerifyAtmMemory(atm) != 1) return "VerifyAtmMemory";
  if (util.GetAtmCount(kGroup) != 3) return "GetAtmCount";
  AtmFit fit;
  if (util.ReadFitMemory(kInst, kGroup, atm, &fit, 1) != 1) return "ReadFitMemory";
  if (util.VerifyAtmFit(fit.FitId) != -1) return "VerifyAtmFit";
  VoSecurity security;
  if (util.ReadVoSecurityTable("NOBODY", &security) != -1) return "ReadVoSecurityTable";
  VoAtmProperty property;
  if (util.ReadAtmProperty(kInst, kGroup, atm, 10000, 0, 978, &property) != 1 ||
      property.RecordId != 111) {
    return "ReadAtmProperty";
  }
  char statuses[] = "CASHLOW|", action[21];
  int value = 0;
  if (util.ReadAtmActionProperty(kInst, kGroup, atm, statuses, 10000, action, &value, TXN_VALUE) !=
          1 ||
      value != 2) {
    return "ReadAtmActionProperty";
  }
  char codes[15][11] = {}, code[] = "CASHLOW", message[101] = "PAPEROUT|";
  util.BuiltStatusMsg(codes, code, message);
  if (strcmp(message, "PAPEROUT|CASHLOW|") != 0) return "BuiltStatusMsg";
  char logic[17];
  if (util.GetDispLogic("CASH", 170, kInst, kGroup, atm, logic, "NDC+ATM", "COMMON") != 1 ||
      strcmp(logic, "01010100") != 0) {
    return "GetDispLogic";
  }
  return util.getUTCFlag() == 0 ? nullptr : "getUTCFlag";
}

}  // namespace

bool IsWhole(const AtmMemoryTable& atm) {
  const char byte = atm.AtmDetail.Uninterpreted[0];
  return atm.Rest[0] == byte && memcmp(atm.Rest, atm.Rest + 1, sizeof atm.Rest - 1) == 0;
}

void Fill(AtmMemoryTable* atm, char byte) {
  memset(atm->AtmDetail.Uninterpreted, byte, sizeof atm->AtmDetail.Uninterpreted);
  memset(atm->Rest, byte, sizeof atm->Rest);
}

int Drive(Board& board, int place, bool lock) {
  VoDebugUtil trace;
  trace.set_level(kErrors);
  VoATMUtil util;
  if (util.InitVoATMUtil(&trace, lock) != 1) return 1;
  std::minstd_rand random(static_cast<unsigned>(getpid()));
  Board::Place& report = board.places[place];
  AtmMemoryTable atm;
  const char* wrong = nullptr;
  while (!board.stop && wrong == nullptr) {
    const char* const id = kAtms[random() % 3];
    if (place % 2 == 0) {
      atm = {};
      strcpy(atm.AtmId, id);
      strcpy(atm.AtmDetail.GroupingKey, kGroup);
      Fill(&atm, static_cast<char>(random() % 256));
      if (util.WriteAtmMemory(id, &atm) != 1) wrong = "WriteAtmMemory";
    } else if (util.ReadAtmMemory(id, &atm) != 1) {
      wrong = "ReadAtmMemory";
    } else if (!IsWhole(atm)) {
      ++report.torn;
    }
    if (++report.operations % kLookUpEvery == 0) wrong = LookUp(util);
  }
  if (wrong != nullptr) fprintf(stderr, "soak: wrong answer of %s\n", wrong);
  return wrong == nullptr ? 0 : 1;
}
