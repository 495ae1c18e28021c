// A driver's day: three withdrawals, a status report, a deposit, and an ATM that reconnects. Needs
// VODIR_HOME and the tables of `voatm serve`; --trace shows the library's own lines as well.
#include <cstring>

#include "show.h"
#include "voatmutil.h"

namespace {

constexpr char kModel[] = "NDC+ATM";  // four cassettes
constexpr int kCassettes = 4;
constexpr int kMaxNotes = 40;
constexpr int kCurrency = 978;
constexpr std::size_t kValue = 151;  // holds any field of a configuration file

// What this driver keeps for its ATM. Cassettes C and D are nearly empty.
struct Terminal {
  DenomInfo cassettes[8] = {{'A', 1, 20, kCurrency, 'Y', 0},
                            {'B', 2, 50, kCurrency, 'Y', 0},
                            {'C', 3, 100, kCurrency, 'Y', 0},
                            {'D', 4, 10, kCurrency, 'Y', 0}};
  int notes_left[kCassettes] = {200, 200, 1, 0};
  char statuses[15][11] = {};
  char status_message[101] = "";
  VoDevMsg last_message = {};
  char last_logic[17] = "";
};

// Gives each cassette its notes of a logic; one that holds fewer is marked as not usable.
void LoadNotes(VoATMUtil& util, Terminal& terminal, const char* logic) {
  for (int i = 0; i < kCassettes; ++i) {
    DenomInfo& cassette = terminal.cassettes[i];
    cassette.Status = 'Y';
    cassette.LastDispNotes = CountAt(logic, i);
    std::string left = std::to_string(terminal.notes_left[i]);
    util.CheckAndSetDenomStatus(kModel, left.data(), cassette.Id, terminal.cassettes);
    if (cassette.Status == 'N') Step("cassette", "%c holds %s notes", cassette.Id, left.c_str());
  }
}

// Plans an amount and takes its notes. A plan is summed before anything is dispensed.
bool Dispense(VoATMUtil& util, Terminal& terminal, char* amount, char* logic) {
  if (util.GetDispLogic("CASH", atoi(amount), kInst, kGroup, kAtm, logic, kModel, kFallback) != 1) {
    return false;
  }
  Step("configured", "%s, from %s", logic, FileRead("displogic", "displogic.cfg").c_str());
  LoadNotes(util, terminal, logic);
  const std::string configured = logic;
  const int result =
      util.CheckCashAvailability(kModel, amount, logic, kCurrency, terminal.cassettes, kMaxNotes);
  if (result != 0 || SumOf(terminal.cassettes, kCassettes) != atoi(amount)) {
    Step("refused", "%d, %s", result, Meaning(result).c_str());
    return false;
  }
  Step("dispense", "%s, %s: %s", logic, configured == logic ? "as configured" : "a new plan",
       NotesOf(terminal.cassettes, kCassettes).c_str());
  for (int i = 0; i < kCassettes; ++i)
    terminal.notes_left[i] -= terminal.cassettes[i].LastDispNotes;
  return true;
}

void Withdraw(VoATMUtil& util, Terminal& terminal, const char* key) {
  char code[kValue], amount[kValue], currency[kValue], printer[kValue], request[kValue];
  util.LoadTxnCode("A", key, code, amount, currency, printer, request, kInst, kGroup, kAtm,
                   kFallback);
  Title("Withdrawal, keys A and %s", key);
  Step("transaction", "%s, amount %s, currency %s, from %s", code, amount, currency,
       FileRead("statetable/opkey", "opk.cfg").c_str());
  VoAtmProperty property = {};
  util.ReadAtmProperty(kInst, kGroup, kAtm, atoi(code), 0, kCurrency, &property);
  Step("property", "record %d: group %s, ATM %s, transaction %s, response %s", property.RecordId,
       property.AtmLogicalGroup, property.AtmId, property.TxnCode, property.RespCode);
  char logic[17], state[kValue], screen[kValue];
  if (Dispense(util, terminal, amount, logic)) {
    util.LoadGoodResponseState(code, "000", state, screen, kInst, kGroup, kAtm, kFallback);
    terminal.last_message.TxnCode = atoi(code);
    terminal.last_message.MemTraceNo = 4711;
    strcpy(terminal.last_logic, logic);
  } else {
    util.LoadBadResponseState(code, "091", state, screen, kInst, kGroup, kAtm, kFallback);
  }
  Step("next", "state %s, screen %s, from %s", state, screen,
       FileRead("statetable/resptable", "resp.cfg").c_str());
}

void ReportStatus(VoATMUtil& util, Terminal& terminal) {
  char first[] = "PAPEROUT", then[] = "CASHLOW", action[21] = "no action";
  util.BuiltStatusCode(first, 8, terminal.status_message);
  util.BuiltStatusMsg(terminal.statuses, then, terminal.status_message);
  util.ReadAtmActionProperty(kInst, kGroup, kAtm, terminal.status_message, 0, action, nullptr,
                             STATUS_ACTION);
  Title("The ATM reports %s", terminal.status_message);
  Step("action", "%s", action);
  VoAtmMgrQMsg status, denominations;
  util.PackAtmStatusMsg(kAtm, terminal.status_message, "", &status);
  AtmDenomStatusMsg notes = {};
  util.LoadDenomDetails(kAtm, "", "", terminal.last_logic, kModel, 0, 0, &notes);
  util.PackAtmDenomMsg(kAtm, &notes, &denominations);
  Step("ATM manager", "is sent message codes %d and %d", status.MsgCode, denominations.MsgCode);
}

void Deposit(VoATMUtil& util) {
  char accepted[] = "A01040402", amount[16], notes[64];
  Title("Deposit, note types and counts %s", accepted + 1);
  util.GetDepositAmount(kInst, kGroup, kAtm, kFallback, accepted, amount, notes);
  Step("amount", "%s, value^notes %s, from %s", amount, notes,
       FileRead("bnamap", "bnamap.cfg").c_str());
}

void Reconnect(VoATMUtil& util, Terminal& terminal) {
  VoDevMsg& kept = terminal.last_message;
  Title("The ATM reconnects: its last transaction is 4710, ours %d", kept.MemTraceNo);
  // Trace number, good termination, notes of A to D, coins and their status, no deposit.
  char status[53];
  snprintf(status, sizeof status, "2%04d1%05d%05d%05d%05d%05d%20s0", 4710, 1, 1, 1, 0, 0, "");
  char* const unused = nullptr;
  if (util.CheckLTS_TVS(&kept, terminal.last_logic, status, unused, unused, unused, unused) == 1) {
    Step("reversal", "message type %d, reason %d, to be sent", kept.MsgType, kept.ReasonCode);
  }
}

}  // namespace

int main(int argc, char** argv) {
  VoDebugUtil trace;
  ShowTrace(trace, argc > 1 && strcmp(argv[1], "--trace") == 0);
  VoATMUtil util;
  AtmMemoryTable atm;
  if (util.InitVoATMUtil(&trace, true) != 1) return Failed("start-up failed; see --trace");
  if (util.ReadAtmMemory(kAtm, &atm) != 1) return Failed("no such ATM");
  Title("ATM %s of %s, group %s", kAtm, kInst, kGroup);
  Step("record", "slot %d of the %d in ATMMEMORY", util.LastAtmIndex, util.MaxAtm);
  char indirect[8] = "none";
  util.ReadIndirectState(kInst, kGroup, "9780019912345678", indirect);
  Step("card", "978001991234.... enters indirect state %s", indirect);

  Terminal terminal;
  for (const char* key : {"D", "C", "A"}) Withdraw(util, terminal, key);
  ReportStatus(util, terminal);
  strcpy(atm.Rest, terminal.last_logic);
  Step("record", "written back: %s", util.WriteAtmMemory(kAtm, &atm) == 1 ? "yes" : "no");
  Deposit(util);
  Reconnect(util, terminal);
}
