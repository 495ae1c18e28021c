#include "ask/why_catalogue.h"

#include <cerrno>
#include <iterator>
#include <string>

#include "options.h"

namespace {

// ---- Causes that texts share ----

constexpr TraceAdvice kNormal = {"Nothing is wrong.", "Nothing; look at the lines around it.",
                                 Weight::kNormal};
constexpr TraceAdvice kHome = {"VODIR_HOME names another directory, or the file cannot be read.",
                               "voatm check"};
constexpr TraceAdvice kStartUp = {"The start-up file is wrong.", "voatm check"};
constexpr TraceAdvice kQueue = {
    "The queue is another user's, or CHANNEL#ORGKEY another installation's.",
    "voatm tables; ipcs -q"};
constexpr TraceAdvice kChannel = {"VoChannelMgr ended, or it stands still and its queue is full.",
                                  "ipcs -q; start VoChannelMgr, then the driver"};
constexpr TraceAdvice kUnknownTable = {
    "Its owner has not created it yet, or this installation has none.", "voatm tables"};
constexpr TraceAdvice kSegment = {"The tables' owner does not run, or was started with other keys.",
                                  "voatm tables"};
constexpr TraceAdvice kAttach = {"The process has no room left to attach it.",
                                 "voatm tables; ulimit -v"};
constexpr TraceAdvice kSet = {"Somebody removed the set, or the owner failed half way.",
                              "voatm tables"};
constexpr TraceAdvice kSemop = {
    "The set was removed, has fewer semaphores than the table has slots, or a signal came while "
    "waiting.",
    "voatm tables; voatm locks"};
constexpr TraceAdvice kNoProperty = {"No row has it with the keys settled before.",
                                     "voatm explain property", Weight::kNotice};
constexpr TraceAdvice kNoAction = {"No row has it with the keys settled before.",
                                   "voatm explain action", Weight::kNotice};
constexpr TraceAdvice kLayered = {"No file of the operation could be opened.",
                                  "voatm explain with the operation's scopes; voatm check",
                                  Weight::kNotice};
constexpr TraceAdvice kNoEntry = {
    "The first file that opened has no readable entry; wider files are not asked.",
    "voatm check; voatm explain shows the file that counts"};
constexpr TraceAdvice kTemplate = {
    "The template that counts lacks the key, or the entry is unreadable.",
    "voatm check; voatm explain oar"};
constexpr TraceAdvice kTemplateAction = {
    "The key's action is a number; it is $VAR, $NEXT, $PREVIOUS, $CONTINUE or $CANCEL.",
    "voatm check; voatm explain oar"};
constexpr TraceAdvice kCardless = {"CARDLESS_TXN.cfg has no entry for the key.",
                                   "voatm check; voatm explain cardless", Weight::kNotice};
constexpr TraceAdvice kModel = {"The driver gave a model other than NDC+ATM and D912ATM.",
                                "Correct the ATM's model where the driver has it from."};
constexpr TraceAdvice kNoteMapping = {"The mapping lacks a note type or gives it no value.",
                                      "voatm explain deposit; voatm check"};
constexpr TraceAdvice kNoLogic = {
    "The file that opened has no logic for the amount, or one with too few counts.",
    "voatm explain displogic; voatm check", Weight::kNotice};
constexpr TraceAdvice kLogicFault = {"A count of the dispense logic is no number.",
                                     "voatm explain displogic; voatm check"};
constexpr TraceAdvice kLogicRefused = {"The configured logic does not suit the request.",
                                       "voatm plan", Weight::kNotice};
constexpr TraceAdvice kInTheWay = {
    "The plan, largest notes first, does not make the amount within the note limit; other notes "
    "may.",
    "voatm plan; voatm plan --sweep", Weight::kNotice};
constexpr TraceAdvice kReversal = {"ATM and switch do not agree about the last withdrawal.",
                                   "Compare the ATM's journal."};
constexpr TraceAdvice kRejected = {"The ATM refused or could not carry out the reply.",
                                   "Look at the ATM's journal and its status codes."};

constexpr TraceText kTraceTexts[] = {
    // Start-up
    {"Error in opening file[ %s ]", "{1} did not open.", &kHome},
    {"Error in Searching %s from file[ %s ]", "{2} has no readable {1}.", &kStartUp},
    {"Error in Searching VOBUSINESS#MAXATM from file[ %s ]",
     "{1} has no readable VOBUSINESS#MAXATM, or later VOBUSINESS#UTCFLAG.", &kStartUp},
    {"Invalid %s[ %s ] value defined in file[ %s ]", "{1} of {3} is no whole number.", &kStartUp},
    {"Error in Creating VoChannelMgr Queue", "VoChannelMgr's queue cannot be used.", &kQueue},
    {"Error in Sending Locate Memory Channel Message to VoChannelMgr Queue",
     "VoChannelMgr could not be asked for a table.", &kChannel},
    {"Error in Receiving Locate Memory Channel Message From VoChannelMgr Queue",
     "VoChannelMgr did not answer.", &kChannel},
    {"Error in Locating Memory[ %s ]", "VoChannelMgr does not know {1}.", &kUnknownTable},
    {"Memory[ %s ] Located with ChannelKeyId[ %d ]", "{1} has the IPC key {2}.", &kNormal},
    {"Error in Creating %s Shared Memory", "The table {1} has no segment.", &kSegment},
    {"Error in attaching %s Shared Memory", "The table {1} was not attached.", &kAttach},
    {"Error in Creating %s Semaphore", "The table {1} has no semaphores.", &kSet},

    // Slots
    {"%s SysErr[ %s ] ErrNo[ %d ]", "A system call failed: {2}.", &kSemop},
    {"Error in Semop for AtmMemory",
     "A slot was not taken or given back: of ATM memory, a property table, or FIT after a match.",
     &kSemop},
    {"Error in Semop for AtmFitMemory", "A slot of the FIT table was not taken.", &kSemop},
    {"Error in Semop for AtmFit", "A slot of the FIT table was not given back.", &kSemop},
    {"Error in Semop for %s", "A slot of the table {1} was not taken or given back.", &kSemop},
    {"retval %d", "getAtmId printed its result to standard output: 1 found, -1 not.", &kNormal},

    // Property tables
    {"InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%s] RespCode[%s] "
     "CurrencyCode[%d]",
     "The property request as rows hold it.", &kNormal},
    // Behind it, as a line that could be either is taken for the later one.
    {"InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%d] RespCode[%d] "
     "CurrencyCode[%d]",
     "The property request as it was given.", &kNormal},
    {"Error in Searching InstTerminalGroup[%s] in VoAtmProperty Table",
     "No property row is for institution group {1}; * is tried next.", &kNoProperty, "*"},
    {"Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] in VoAtmProperty Table",
     "No property row is for logical group {2} there; * is tried next.", &kNoProperty, "*"},
    {"Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] in VoAtmProperty "
     "Table",
     "No property row is for ATM {3} there; * is tried next.", &kNoProperty, "*"},
    {"Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%s] in "
     "VoAtmProperty Table",
     "No property row is for transaction {4} there; its class or * is tried next.", &kNoProperty,
     "*"},
    {"Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] TxnCode[%s] "
     "RespCode[%s] in VoAtmProperty Table",
     "No property row is for response {5} there; * is tried next.", &kNoProperty, "*"},
    {"Error in Searching CurrencyCode[%d] in VoAtmProperty Table",
     "No property row is for currency {1} there; 0 is tried next.", &kNoProperty, "0"},
    {"voatmproperty tableoffset[%d]", "The property row lies in slot {1}.", &kNormal},
    {"Copied voatmproperty[%d]", "Property row number {1} is the answer.", &kNormal},
    {"Error in Searching InstTerminalGroup[%s] in VoAtmActionProperty Table",
     "No action row is for institution group {1}; * is tried next.", &kNoAction, "*"},
    {"Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] in VoAtmActionProperty Table",
     "No action row is for logical group {2} there; * is tried next.", &kNoAction, "*"},
    {"Error in Searching InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] in "
     "VoAtmActionProperty Table",
     "No action row is for ATM {3} there; * is tried next.", &kNoAction, "*"},
    {"Error in Reading InstTerminalGroup[%s] AtmLogicalGroup[%s] AtmId[%s] StatusBuf[%s] from "
     "VoAtmActionProperty Table",
     "No row from the ATM's first on gives an action for the statuses {4}.", &kNoAction},
    {"Error in Searching StatusMsg in VoAtmActionProperty Table",
     "No row from the ATM's first on has a transaction for the statuses.", &kNoAction},
    {"Error in Searching TxnCode[%s] in VoAtmActionProperty Table",
     "No row from the status's on is for transaction {1}; its class or * is tried next.",
     &kNoAction, "*"},
    {"inside tableoffset[%d]", "The action row lies in slot {1}.", &kNormal},

    // Configuration
    {"Failed to open file [ %s ]", "No file of the operation opened, last {1}.", &kLayered},
    {"LoadGoodResponseState : Failed to open file [ %s ]",
     "{1} does not open; the next wider file is tried.", &kNormal},
    {"Failed to search[ %s ] for %s", "Operation key {1} has no {2}.", &kNoEntry},
    {"Failed to search StateNo SearchId[ %s ]", "{1} has no next state.", &kNoEntry},
    {"Failed to search ScreenNo SearchId[ %s ]", "{1} has no screen.", &kNoEntry},
    {"SearchId[ %s ] StateNo[ %s ] ScreenNo[ %s ]", "{1} leads to state {2}, screen {3}.",
     &kNormal},
    {"Failed to search[ %s ] for StateNo", "{1} has no next state.", &kNoEntry},
    {"Failed to search[ %s ] for ScreenNo", "{1} has no screen.", &kNoEntry},
    {"failed to search[ %s ]", "The template has no readable {1}.", &kTemplate},
    {"Unsupported Template[ %s ]", "The action of a function key is the number {1}.",
     &kTemplateAction},
    {"Cancel< %d >", "The template's cancel value is {1}.", &kNormal},
    {"Search Id [ %s ]", "The screen file has no readable {1}.", &kNoEntry},
    {"Error in Searching cfgparam[%s] from file[ %s ] ",
     "{2} has no {1}; OPKEYMAP#DEFAULT is tried next.", &kCardless},
    {"Error in Searching cfgparam[%s] from file[ %s ]", "{2} has no {1}; nothing else is tried.",
     &kCardless},
    {"Failed to Count OAR Group", "The file opened and could not be read to its end.", &kHome},

    // Cash
    {"failed to Search [ %s ]", "{1} is absent, or has too few counts for the model.", &kNoLogic},
    {"Denom Config Error", "A dispense logic is no whole number.", &kLogicFault},
    {"Unsupported ATM Model[ %c ]", "No dispense logic is known for the model.", &kModel},
    {"Dispense logic[ %s ]", "The configured note counts are {1}.", &kNormal},
    {"Invaild Device Type[ %s ]", "{1} is no ATM model.", &kModel},
    {"Id[%c] Pos[%d] Value[%d]\tCode[%d]\tStatus[%c] LastDispNotes[%d]",
     "Cassette {1}: notes of {3}, status {5}.", &kNormal},
    {"Config Notes[%d] > Maxnotes[%d]", "The logic has {1} notes, {2} are allowed.",
     &kLogicRefused},
    {"CheckAmount[%d] != ReqAmount[%d]", "The logic makes {1}, asked were {2}.", &kLogicRefused},
    {"FixDispLogic[%s]", "The configured logic {1} makes the amount.", &kNormal},
    {"********Notes[%d]...Position[%d]", "It asks {1} notes of cassette number {2}, from 0.",
     &kNormal},
    {"Coping the Availble denom[%d]", "Cassette number {1}, from 0, is usable.", &kNormal},
    {"********Required Dynamic Disp Check********", "A new logic is planned.", &kLogicRefused},
    {"***Total Available Denom [%d]", "{1} usable cassettes take part.", &kLogicRefused},
    {"Count [%d]", "A cassette's notes are too large for what remains.", &kNormal},
    {"DispAmount[ %d ] Count[ %d ] CurrencyValue[ %d ]", "{2} notes of {3} make {1}.", &kNormal},
    {"Total NoOfNotes[%d]", "The plan has {1} notes so far.", &kNormal},
    {"Requested Amount [%d]", "The amount to pay is {1}.", &kNormal},
    {"Remaining Amount [%d]", "The amount leaves {1} when divided by the cassette's value.",
     &kNormal},
    {"Remaining Amount[%d]", "The amount leaves {1} when divided by the cassette's value.",
     &kNormal},
    {"Requested Amount [%d] is Reached", "The plan pays the whole amount.", &kNormal},
    {"Denom Id[ %c ] is High", "Cassette {1} stands in the way: its notes are too large.",
     &kInTheWay},
    {"Denom Id[ %c ] is Low", "Cassette {1} stands in the way: the plan has too many notes.",
     &kInTheWay},
    {"Final Disp Logic [ %s ]", "The logic to dispense is {1}.", &kNormal},
    {"the length [ %d ] and string[ %s ]", "The deposit's groups are {2}.", &kNormal},
    {"Failed to search[ %s ] ", "The note mapping has no readable {1}.", &kNoteMapping},
    {"Id[ %s ] configured as NILL", "{1} is not accepted.", &kNoteMapping},
    {"Currency Value configured as 0 for Id[ %s ]", "{1} is worth 0 or no number.", &kNoteMapping},
    {"Map[%s][%s][%s]", "{2} notes of type {1}, worth {3} each.", &kNormal},
    {"Amount[ %d ] Buffer[ %s ]", "The deposit makes {1}.", &kNormal},

    // Last transaction
    {"Last Transaction Trace No[%s]", "The ATM's last trace number is {1}.", &kNormal},
    {"sent none", "The ATM sent no end of its last transaction.", &kNormal},
    {"good termination sent", "The ATM ended its last transaction well.", &kNormal},
    {"error status sent", "The ATM ended its last transaction with an error.", &kRejected},
    {"transaction reply rejected.", "The ATM rejected the last reply.", &kRejected},
    {"Dispense Status A[%02d] B[%02d] C[%02d] D[%02d]", "The ATM says it paid these notes.",
     &kNormal},
    {"Reformed Dispense Buffer[ %s ]", "The notes paid make the logic {1}.", &kNormal},
    {"Test", "The notes paid are those that were sent.", &kNormal},
    {"Test 1", "The notes paid are not those that were sent.", &kReversal},
    {" Dispensed Coin Status [ %s ] Amount[ %d ]", "Coins paid: {2}.", &kNormal},
    {"Last Transaction in ATM Deposit", "The last transaction was a deposit.", &kNormal},
    {"The Deposit Id[ %d ] notes [ %d ]", "Deposit group {1} has {2} notes.", &kNormal},
    {"LastDevMsg->TxnCode[ %d ]", "The kept message is transaction {1}.", &kNormal},
    {"LTS Trace No[%d]", "The ATM's trace number is {1}.", &kNormal},
    {"Memory Trace No[%d]", "The switch's trace number is {1}.", &kNormal},
    {"Last Dispense Logic buffer[%s]", "The logic that was sent is {1}.", &kNormal},
    {"Dispense buffer not Matching", "The notes paid are not those that were sent.", &kReversal},
    {"Making Auto Reversal\n", "The kept message became a reversal, reason 103.", &kReversal},
    {"Lts Verified", "It is no cash withdrawal, or a trace number is 0: nothing is decided.",
     &kNormal},
};

}  // namespace

const std::vector<TraceText>& TraceTexts() {
  static const std::vector<TraceText> kTexts(std::begin(kTraceTexts), std::end(kTraceTexts));
  return kTexts;
}

const char* MeaningOfError(std::string_view number) {
  constexpr struct {
    int number;
    const char* means;
  } kErrors[] = {
      {EIDRM, "it was removed while somebody waited; the owner restarted or ipcrm was run"},
      {EINVAL, "nothing has this key or id: it was never created, or was removed since"},
      {EFBIG, "the set has fewer semaphores than the slot's number: a count in cfg/ was raised"},
      {EACCES, "another user owns it and gives no permission"},
      {EINTR, "a signal came; the library does not repeat the call"},
      {EAGAIN, "the queue is full: nobody reads it"},
      {ERANGE, "the semaphore would pass its largest value: slots were given back twice"},
      {ENOSPC, "a limit of the system is reached; see ipcs -l"},
      {ENOMEM, "the system has no memory for it"},
      {E2BIG, "the message is longer than this library knows: versions differ"},
  };
  const std::optional<int> value = ReadNumber(std::string(number));
  for (const auto& error : kErrors) {
    if (error.number == value) return error.means;
  }
  return nullptr;
}
