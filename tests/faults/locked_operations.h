// Every operation that takes slots, on tables of two slots in which slot 1 is what it looks for.
#ifndef TESTS_FAULTS_LOCKED_OPERATIONS_H
#define TESTS_FAULTS_LOCKED_OPERATIONS_H

#include <algorithm>
#include <string>
#include <vector>

#include "support/driver_test.h"

// What the operations write to; painted, it shows what they leave alone.
struct Outputs {
  AtmMemoryTable atm;
  AtmFit fit;
  VoSecurity security;
  VoAtmProperty property;
  char text[21];
  int value;
};

inline Outputs outputs;

inline void Paint() { memset(&outputs, 'w', sizeof outputs); }

inline bool IsPainted() {
  const char* bytes = reinterpret_cast<const char*>(&outputs);
  return std::all_of(bytes, bytes + sizeof outputs, [](char byte) { return byte == 'w'; });
}

struct LockedOperation {
  const char* name;
  int VoATMUtil::*set;
  int result;
  const char* said;  // the tables named when taking, and when giving after a match and otherwise
  int (*run)(VoATMUtil& util);
  bool remembers = false;  // sets LastAtmIndex
};

inline int ReadAction(VoATMUtil& u, int search_type) {
  char statuses[] = "X|";
  return u.ReadAtmActionProperty("X", "X", "X", statuses, 1, outputs.text, &outputs.value,
                                 search_type);
}

inline const std::vector<LockedOperation>& LockedOperations() {
  using U = VoATMUtil;
  static AtmMemoryTable atm = {"X", {{}, "G"}, {}};
  static const std::vector<LockedOperation> operations = {
      {"ReadAtmMemory", &U::AtmMemorySemid, 1, "AtmMemory",
       [](U& u) { return u.ReadAtmMemory("X", &outputs.atm); }, true},
      {"WriteAtmMemory", &U::AtmMemorySemid, 1, "AtmMemory",
       [](U& u) {  // probes slot 0 first, and then scans
         u.LastAtmIndex = 0;
         return u.WriteAtmMemory("X", &atm);
       }},
      {"VerifyAtmMemory", &U::AtmMemorySemid, 1, "AtmMemory",
       [](U& u) { return u.VerifyAtmMemory("X"); }},
      {"GetAtmCount", &U::AtmMemorySemid, 1, "AtmMemory", [](U& u) { return u.GetAtmCount("G"); }},
      {"GetAtmId", &U::AtmMemorySemid, 1, "AtmMemory",
       [](U& u) { return u.GetAtmId("G", outputs.text, 1); }},
      {"VerifyAtmFit", &U::AtmFitSemid, -1, "AtmFitMemory AtmMemory AtmFit",
       [](U& u) { return u.VerifyAtmFit("X"); }},
      {"GetFitCount", &U::AtmFitSemid, 1, "AtmFitMemory AtmFit AtmFit",
       [](U& u) { return u.GetFitCount("X", "X", "X"); }},
      {"ReadFitMemory", &U::AtmFitSemid, 1, "AtmFitMemory AtmFit AtmFit",
       [](U& u) { return u.ReadFitMemory("X", "X", "X", &outputs.fit, 1); }},
      {"ReadVoSecurityTable", &U::SecuritySemid, 1, "VoSecurity",
       [](U& u) { return u.ReadVoSecurityTable("X", &outputs.security); }, true},
      {"VerifyAtmPropertyMemory", &U::AtmPropertySemid, 1, "AtmProperty",
       [](U& u) { return u.VerifyAtmPropertyMemory(7); }},
      {"GetAtmPropertyCount", &U::AtmPropertySemid, 1, "AtmProperty",
       [](U& u) { return u.GetAtmPropertyCount(); }},
      {"VerifyAtmActionPropertyMemory", &U::AtmActionPropertySemid, 1, "AtmActionProperty",
       [](U& u) { return u.VerifyAtmActionPropertyMemory(7); }},
      {"GetAtmActionPropertyCount", &U::AtmActionPropertySemid, 1, "AtmActionProperty",
       [](U& u) { return u.GetAtmActionPropertyCount(); }},
      {"VerifyAtmStatusMemory", &U::AtmStatusSemid, 1, "AtmStatus",
       [](U& u) { return u.VerifyAtmStatusMemory("X"); }},
      {"BuiltStatusMsg", &U::AtmStatusSemid, -1, "AtmStatus",
       [](U& u) {  // has no result
         char rows[15][11] = {}, code[] = "X", message[101] = "A|";
         u.BuiltStatusMsg(rows, code, message);
         return -1;
       }},
      {"ReadAtmProperty", &U::AtmPropertySemid, 1, "AtmMemory",
       [](U& u) { return u.ReadAtmProperty("X", "X", "X", 1, 1, 7, &outputs.property); }},
      {"ReadAtmActionProperty, action", &U::AtmActionPropertySemid, 1, "AtmMemory",
       [](U& u) { return ReadAction(u, STATUS_ACTION); }},
      {"ReadAtmActionProperty, value", &U::AtmActionPropertySemid, 1, "AtmMemory",
       [](U& u) { return ReadAction(u, TXN_VALUE); }}};
  return operations;
}

class LockedOperationsTest : public DriverTest {
 protected:
  LockedOperationsTest() : DriverTest({2, 2, 2, 2, 2}) {
    util_.AtmMemoryPtr[1] = {"X", {{}, "G"}, {}};
    util_.AtmFitPtr[1] = {"X", "X", "X", "X", "", "", ' '};
    strcpy(util_.SecurityPtr[1].SecurityId, "X");
    VoAtmProperty& row = util_.AtmPropertyPtr[1];
    row.RecordId = 7;
    for (char* key :
         {row.InstTerminalGroup, row.AtmLogicalGroup, row.AtmId, row.TxnCode, row.RespCode}) {
      strcpy(key, "*");
    }
    util_.AtmActionPropertyPtr[1] = {7, "X", "X", "X", "X", 'Y', "act", 'Y', "*", "7"};
    util_.AtmStatusPtr[1] = {"X", 'S'};
  }

  static int Value(int set, int slot) { return semctl(set, slot, GETVAL); }

  // The slot not at rest; -1 when all are, -2 when several are not.
  int HeldSlot(int set) const {
    const bool held[] = {Value(set, 0) != 2, Value(set, 1) != 2};
    if (held[0] && held[1]) return -2;
    return held[0] ? 0 : held[1] ? 1 : -1;
  }
};

#endif  // TESTS_FAULTS_LOCKED_OPERATIONS_H
