#include "support/file_test.h"

namespace {

class LastTransactionTest : public FileTest {};

// Given: trace number of the message, logic, status.
TEST_F(LastTransactionTest, FirstFormOnlyTraces) {
  ExpectDone(R"(
42 02000105 10042100002000000000100005 => -1
42 02000105 20043100002000000000100005 => -1 <- Last Transaction Trace No[0043]>
42 02000105 200420 => -1 <- Last Transaction Trace No[0042]> <- sent none>
42 02000105 20042100002000000000100005 => -1 <- Last Transaction Trace No[0042]>
 <- good termination sent> <- Dispense Status A[02] B[00] C[01] D[05]>
 <- Reformed Dispense Buffer[ 02000105 ]> <- Test>
42 02000105 20042200002000000000100105 => -1 <- Last Transaction Trace No[0042]>
 <- error status sent> <- Dispense Status A[02] B[00] C[01] D[105]>
 <- Reformed Dispense Buffer[ 020001105 ]> <- Test 1>
42 00000000 200423 => -1 <- Last Transaction Trace No[0042]> <- transaction reply rejected.>
 <- Dispense Status A[00] B[00] C[00] D[00]> <- Reformed Dispense Buffer[ 00000000 ]> <- Test>
0 00000000 2 => -1 <- Last Transaction Trace No[]> <- Dispense Status A[00] B[00] C[00] D[00]>
 <- Reformed Dispense Buffer[ 00000000 ]> <- Test>)",
             [&](const std::string& given) {
               std::string logic, status;
               VoDevMsg message = {};
               std::istringstream(given) >> message.TraceNo >> logic >> status;
               const VoDevMsg before = message;
               const int result = util.CheckLTS_TVS(&message, logic.data(), status.data());
               EXPECT_EQ(memcmp(&before, &message, sizeof message), 0) << given;
               return result;
             });
}

// Given: transaction code, memory's trace number, type, reason, logic, status. The first output
// shows type and reason after the call.
TEST_F(LastTransactionTest, SecondFormDecidesAboutAReversal) {
  const auto check = [&](const std::string& given) {
    std::string logic, status;
    VoDevMsg message = {};
    std::istringstream(given) >> message.TxnCode >> message.MemTraceNo >> message.MsgType >>
        message.ReasonCode >> logic >> status;
    VoDevMsg before = message;
    const int result = util.CheckLTS_TVS(&message, logic.data(), status.data(), nullptr, nullptr,
                                         nullptr, nullptr);
    sprintf(Out(0), "%d %d", message.MsgType, message.ReasonCode);
    before.MsgType = message.MsgType;
    before.ReasonCode = message.ReasonCode;
    EXPECT_EQ(memcmp(&before, &message, sizeof message), 0) << given;
    return result;
  };
  ExpectDone(R"(
10000 42 200 1 02000105 10042100002000000000100005 => -1 [200 1.]
9999 42 420 106 02000105 200410 => -1 [420 106.] <- sent none>
 <-  Dispensed Coin Status [  ] Amount[ 0 ]> <- LastDevMsg->TxnCode[ 9999 ]>
 <- LTS Trace No[41]> <- Lts Verified>
19999 42 200 1 02000105
 2004110000200000000010000500007coin-status-of-20-cs1000030123456789abcde00012 => 1
 [420 103.] <- good termination sent>
 <-  Dispensed Coin Status [ coin-status-of-20-cs ] Amount[ 7 ]>
 <- Last Transaction in ATM Deposit> <- The Deposit Id[ 1 ] notes [ 3 ]>
 <- LastDevMsg->TxnCode[ 19999 ]> <- LTS Trace No[41]>
 <- Dispense Status A[02] B[00] C[01] D[05]> <- Reformed Dispense Buffer[ 02000105 ]>
 <- LTS Trace No[41]> <- Memory Trace No[42]> <- Making Auto Reversal> <>
10000 42 420 106 02000105 20042200002000000000100005 => -1 [420 106.] <- error status sent>
 <-  Dispensed Coin Status [  ] Amount[ 0 ]> <- LastDevMsg->TxnCode[ 10000 ]>
 <- LTS Trace No[42]> <- Dispense Status A[02] B[00] C[01] D[05]>
 <- Reformed Dispense Buffer[ 02000105 ]> <- LTS Trace No[42]> <- Memory Trace No[42]>
 <- Last Dispense Logic buffer[02000105]>
10000 42 420 106 02000105 20042300002000000000000005 => 1 [420 103.] <- transaction reply rejected.>
 <-  Dispensed Coin Status [  ] Amount[ 0 ]> <- LastDevMsg->TxnCode[ 10000 ]>
 <- LTS Trace No[42]> <- Dispense Status A[02] B[00] C[00] D[05]>
 <- Reformed Dispense Buffer[ 02000005 ]> <- LTS Trace No[42]> <- Memory Trace No[42]>
 <- Last Dispense Logic buffer[02000105]> <- Dispense buffer not Matching>
 <- Making Auto Reversal> <>)",
             check);
  for (const std::size_t length : {119U, 120U}) {  // five whole groups, and one that is cut
    const std::string deposits(length, '2');
    EXPECT_EQ(check("1 2 3 4 5 2" + std::string(50, '0') + "1" + deposits), -1);
    const std::string traces = trace.Take();
    EXPECT_NE(traces.find("The Deposit Id[ 5 ] notes [ 22222 ]\n- LastDev"), std::string::npos);
  }
  ExpectDone(R"(
20000 42 420 106 02000105 20041 => -1 [420 106.]
10000 0 420 106 02000105 20041 => -1 [420 106.]
10000 42 420 106 02000105 2 => -1 [420 106.]
10000 42 1 2 02000105 20043 => 1 [420 103.]
10000 42 420 105 02000105 20042 => -1 [420 105.]
10000 42 200 106 02000105 20042 => -1 [200 106.]
10000 42 420 106 02000105 20042100002000000000100105 => 1 [420 103.])",
             [&](const std::string& given) {
               const int result = check(given);
               trace.Take();
               return result;
             });
}

}  // namespace
