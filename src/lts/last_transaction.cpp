// The last-transaction check: what the ATM says of its last transaction against what was sent.
#include <cstdlib>
#include <cstring>

#include "common/text_field.h"
#include "lts/status_text.h"
#include "voatmutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

constexpr char kSentNone = '0';
constexpr char kDeposit = '1';

constexpr int kFirstCashTxn = 10000;
constexpr int kLastCashTxn = 19999;
constexpr int kReversal = 420;        // MsgType
constexpr int kReasonToRemark = 106;  // ReasonCode of a reversal that is sent again
constexpr int kReasonAutoReversal = 103;

// The notes that the ATM says it paid, and the dispense logic they make.
struct Dispensed {
  explicit Dispensed(const StatusText& status) {
    for (std::size_t i = 0; i < kStatusCassettes; ++i) {
      notes[i] = status.Number({kNotes.offset + i * kNotes.size, kNotes.size});
    }
    FormatText(logic, "%02d%02d%02d%02d", notes[0], notes[1], notes[2], notes[3]);
  }

  void Trace(VoDebugUtil* trace) const {
    trace->trace("Dispense Status A[%02d] B[%02d] C[%02d] D[%02d]", notes[0], notes[1], notes[2],
                 notes[3]);
    trace->trace("Reformed Dispense Buffer[ %s ]", logic);
  }

  int notes[kStatusCassettes];
  char logic[kStatusCassettes * kNotes.size + 1];
};

void TraceEnd(VoDebugUtil* trace, char end) {
  switch (end) {
    case kSentNone:
      trace->trace("sent none");
      break;
    case '1':
      trace->trace("good termination sent");
      break;
    case '2':
      trace->trace("error status sent");
      break;
    case '3':
      trace->trace("transaction reply rejected.");
      break;
    default:
      break;
  }
}

// Whole groups only; nothing of them is handed back.
void TraceDeposit(VoDebugUtil* trace, const StatusText& status) {
  trace->trace("Last Transaction in ATM Deposit");
  const std::size_t length = strlen(status.Text(kDepositGroups).text);
  for (std::size_t id = 1; id * kDepositGroupSize <= length; ++id) {
    const std::size_t group = kDepositGroups.offset + (id - 1) * kDepositGroupSize;
    const int notes = status.Number({group + kDepositNotes.offset, kDepositNotes.size});
    trace->trace("The Deposit Id[ %d ] notes [ %d ]", static_cast<int>(id), notes);
  }
}

int MakeAutoReversal(VoDebugUtil* trace, VoDevMsg& message) {
  trace->trace("Making Auto Reversal\n");
  message.ReasonCode = kReasonAutoReversal;
  message.MsgType = kReversal;
  return 1;
}

// Decides about a cash withdrawal that both sides know.
int DecideReversal(VoDebugUtil* trace, VoDevMsg& message, const char* last_logic,
                   const StatusText& status, int status_trace_number) {
  const Dispensed dispensed(status);
  dispensed.Trace(trace);
  trace->trace("LTS Trace No[%d]", status_trace_number);
  trace->trace("Memory Trace No[%d]", message.MemTraceNo);
  if (message.MemTraceNo != status_trace_number) return MakeAutoReversal(trace, message);

  trace->trace("Last Dispense Logic buffer[%s]", last_logic);
  if (strcmp(dispensed.logic, last_logic) == 0) return -1;
  trace->trace("Dispense buffer not Matching");
  // Intended: other notes than planned reverse only what is a reversal with this reason already.
  if (message.MsgType != kReversal || message.ReasonCode != kReasonToRemark) return -1;
  return MakeAutoReversal(trace, message);
}

}  // namespace

int VoATMUtil::CheckLTS_TVS(VoDevMsg* lastDevMsg, char* lastDispLogic, char* ltsBuf) {
  const StatusText status(ltsBuf);
  if (!status.IsLastTransactionStatus()) return -1;
  const StatusText::Value trace_number = status.Text(kTraceNumber);
  dptr->trace("Last Transaction Trace No[%s]", trace_number.text);
  if (trace_number.Number() != lastDevMsg->TraceNo) return -1;
  const char end = status.Char(kEnd);
  TraceEnd(dptr, end);
  if (end == kSentNone) return -1;
  const Dispensed dispensed(status);
  dispensed.Trace(dptr);
  if (strcmp(dispensed.logic, lastDispLogic) == 0) {
    dptr->trace("Test");
  } else {
    dptr->trace("Test 1");
  }
  return -1;  // Intended: this form traces and decides nothing.
}

int VoATMUtil::CheckLTS_TVS(VoDevMsg* lastDevMsg, char* lastDispLogic, char* ltsBuf, char*, char*,
                            char*, char*) {
  const StatusText status(ltsBuf);
  if (!status.IsLastTransactionStatus()) return -1;
  const int trace_number = status.Number(kTraceNumber);
  TraceEnd(dptr, status.Char(kEnd));  // Intended: unlike in the first form, none ends the check.
  dptr->trace(" Dispensed Coin Status [ %s ] Amount[ %d ]", status.Text(kCoinStatus).text,
              status.Number(kCoinAmount));
  if (status.Char(kDepositMark) == kDeposit) TraceDeposit(dptr, status);
  dptr->trace("LastDevMsg->TxnCode[ %d ]", lastDevMsg->TxnCode);
  dptr->trace("LTS Trace No[%d]", trace_number);

  const bool is_cash = lastDevMsg->TxnCode >= kFirstCashTxn && lastDevMsg->TxnCode <= kLastCashTxn;
  if (!is_cash || lastDevMsg->MemTraceNo == 0 || trace_number == 0) {
    dptr->trace("Lts Verified");
    return -1;
  }
  return DecideReversal(dptr, *lastDevMsg, lastDispLogic, status, trace_number);
}
