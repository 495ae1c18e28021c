// libvoatmutil: what an ATM driver needs to know about the ATMs it serves.
//
// A driver creates one VoATMUtil, calls InitVoATMUtil once and then calls the other operations from
// its own loop:
//
//   VoDebugUtil trace;
//   VoATMUtil util;
//   if (util.InitVoATMUtil(&trace, true) != 1) return 1;
//   AtmMemoryTable atm;
//   if (util.ReadAtmMemory("ATM00001", &atm) == 1) ...
//
// This header is the manual, and the pages of section 3 are made of it: first the records that
// processes exchange, then the class. What holds for all operations stands at the class. It needs
// C++17.
#ifndef VOATMUTIL_H
#define VOATMUTIL_H

#include <cstddef>

class VoDebugUtil;

// ---- Records of the shared tables -------------------------------------------------------------
//
// Each table is an array of one record type in a System V segment, slot 0 first. Text fields end
// at their NUL; a field without one ends at its width. A slot whose key text is "NOTDEFINED" holds
// no record.

// The detail block of an ATM. Only the grouping key is read here; what stands before it and after
// its NUL is the driver's.
struct AtmDetailBlock {
  char Uninterpreted[17];
  char GroupingKey[339];  // compared by the count and the id-by-ordinal operations
};

// One ATM, in the table "ATMMEMORY".
struct AtmMemoryTable {
  char AtmId[20];  // key of every lookup
  AtmDetailBlock AtmDetail;
  char Rest[6836];  // the driver's own state, copied whole
};

// One card range of an ATM or a group, in the table "ATMFITMEMORY".
struct AtmFit {
  char FitId[17];
  char MatchKey1[13];   // must equal the first selection key
  char MatchKey2[17];   // the second selection key, or "*"
  char MatchKey3[17];   // the third selection key, or "*"
  char CardPrefix[11];  // ten characters; those beyond the prefix are 'F'
  char Uninterpreted[11];
  char IndirectNextState;  // one character, without a NUL
};

// One security record, in the table "VOSECURITYMEMORY": the id to its NUL, then bytes that belong
// to the process that fills the table and that are neither read nor logged here.
struct VoSecurity {
  char SecurityId[504];
};

// One row of the table "ATMPROPERTYMEMORY". Any key column may hold a wildcard; among rows that
// match alike the one in the lowest slot is preferred. A switch that is off holds 'N'.
struct VoAtmProperty {
  int RecordId;
  char InstTerminalGroup[17];  // or "*"
  char AtmLogicalGroup[17];    // or "*"
  char AtmId[17];              // or "*"
  char PropertySwitch1;
  char PropertySwitch2;
  char Uninterpreted1[33];
  char PropertySwitch3;
  char PropertySwitch4;
  char PropertySwitch5;
  char PropertySwitch6;
  char Uninterpreted2[1];
  char TxnCode[7];   // six digits, or the two of its class, or "*"
  char RespCode[4];  // three digits, or "*"
  char PropertySwitch7;
  char Padding[1];
  int CurrencyCode;  // 0 means any
  char Uninterpreted3[12];
};

// One row of the table "ATMACTIONPROPERTYMEMORY": what follows from a device status of an ATM.
struct VoAtmActionProperty {
  int RecordId;
  char InstTerminalGroup[17];  // or "*"
  char AtmLogicalGroup[17];    // or "*"
  char AtmId[17];              // or "*"
  char StatusCode[11];
  char ActionFlag;  // 'Y': the row answers STATUS_ACTION
  char ActionText[21];
  char TxnFlag;      // 'Y': the row answers TXN_VALUE
  char TxnCode[7];   // six digits, or the two of its class, or "*"
  char TxnValue[4];  // decimal text
};

// One device status code, in the table "ATMSTATUSMEMORY".
struct VoAtmStatus {
  char StatusCode[11];
  char StatusKind;  // 'S': the code belongs in the status message
};

// ---- Start-up: the exchange with VoChannelMgr -------------------------------------------------

enum { LOCATE_MEMORY = 7 };  // LocateMemoryMsg::RequestCode

// Request and reply of a table's location. A request has message type 1; its reply has the
// requester's process id as type. The reserved words are zero.
struct LocateMemoryMsg {
  long MessageType;
  char MemoryName[104];
  int RequestCode;
  int ChannelKeyId;  // reply: IPC key of the table's segment and semaphore set
  int Reserved1;
  int ProcessId;     // request: the requester's
  int LocateStatus;  // reply: negative when the table is not known
  int Reserved2;
};

// ---- Cash -------------------------------------------------------------------------------------
//
// A dispense logic is a text of two-digit note counts ("%02d"), one pair a cassette in position
// order, without separators: 8 characters for the model "NDC+ATM" (cassettes A to D), 16 for
// "D912ATM" (A to H).

// One cassette. A driver keeps eight of them in position order.
struct DenomInfo {
  char Id;            // 'A' to 'H'
  int Pos;            // position number, carried and traced only
  int Value;          // face value of a note in whole currency units, not 0
  int Code;           // numeric currency code of the notes
  char Status;        // 'Y' usable, 'N' not usable, '@' outside the configured logic
  int LastDispNotes;  // notes of this cassette in the logic being worked on
};

// The state of an ATM's cassettes as the ATM manager receives it.
struct AtmDenomStatusMsg {
  char DenomText1[17];
  char DenomText2[13];
  char DenomText3[13];
  char Padding[1];
  int DenomNotes[8];  // cassettes A to H
  char DenomNum1[8];  // six digits and a NUL
  char DenomNum2[8];  // six digits and a NUL
};

// ---- Messages ---------------------------------------------------------------------------------

// A message to the ATM manager: a header and one of the payloads below in MsgBuffer.
struct VoAtmMgrQMsg {
  int MsgGroup;    // 2
  int MsgCode;     // 9 status, 8 log, 11 trace number, 10 denomination
  int MsgSubCode;  // 15 for log, else 13
  char AtmId[17];
  char MsgBuffer[3003];
};

// Payload of a status message.
struct AtmStatusPayload {
  char AtmId[17];
  char StatusText[101];
  char ExtraText[101];
  char Date[8];  // "%06d" of VoDateTimeUtil::getSysDate
  char Time[8];  // "%06d" of VoDateTimeUtil::getSysTime
};

// Payload of a log message.
struct AtmLogPayload {
  char AtmId[17];
  char LogText[1025];
  char Date[8];
  char Time[8];
  char LogFlag;
};

// Payload of a trace-number message; that of a denomination message is AtmDenomStatusMsg.
struct AtmTraceNoPayload {
  char AtmId[17];
  char Padding[3];
  int TraceNo;
};

// The head of a message to the alert manager, which owns what follows byte 137.
struct VoAlertMgrMsg {
  int MsgCode;  // 1
  char AlertSource[33];
  char AlertText[101];
};

// The one layout of device and transaction messages; only the named fields are looked at here.
struct VoMsgLayout {
  int MsgType;  // 420 is a reversal
  char Uninterpreted1[4];
  int TxnCode;
  char Uninterpreted2[116];
  int TraceNo;
  char Uninterpreted3[32];
  int ReasonCode;
  char Uninterpreted4[160];
  int MemTraceNo;  // trace number of the last transaction as the switch keeps it
  char Uninterpreted5[5964];
};

struct VoDevMsg : VoMsgLayout {};  // between driver and device handler
struct VoTxnMsg : VoMsgLayout {};  // between driver and switch

// ---- OAR templates ----------------------------------------------------------------------------

// What one function key beside an interactive screen does.
struct OARKeyEntry {
  char KeyId;   // the key's letter
  int KeyType;  // 1 $VAR, 2 $NEXT, 3 $PREVIOUS, 4 $CONTINUE, 5 $CANCEL, 0 any other text
  int KeyFlag;  // set by the driver, one digit
  int KeyValue;
};

// The function keys of one template.
struct OARDetails {
  OARKeyEntry Keys[8];  // letters A to D, F to I
};

// ReadAtmActionProperty's search types.
enum { STATUS_ACTION = 0, TXN_VALUE = 1 };

// Other processes read and write these bytes. An assertion that fails here says that the change
// must not be made.
static_assert(sizeof(AtmMemoryTable) == 7212);
static_assert(offsetof(AtmMemoryTable, AtmDetail) == 20);
static_assert(offsetof(AtmMemoryTable, AtmDetail) + offsetof(AtmDetailBlock, GroupingKey) == 37);
static_assert(offsetof(AtmMemoryTable, Rest) == 376);

static_assert(sizeof(AtmFit) == 87);
static_assert(offsetof(AtmFit, MatchKey1) == 17);
static_assert(offsetof(AtmFit, MatchKey2) == 30);
static_assert(offsetof(AtmFit, MatchKey3) == 47);
static_assert(offsetof(AtmFit, CardPrefix) == 64);
static_assert(offsetof(AtmFit, IndirectNextState) == 86);

static_assert(sizeof(VoSecurity) == 504);

static_assert(sizeof(VoAtmProperty) == 124);
static_assert(offsetof(VoAtmProperty, InstTerminalGroup) == 4);
static_assert(offsetof(VoAtmProperty, AtmLogicalGroup) == 21);
static_assert(offsetof(VoAtmProperty, AtmId) == 38);
static_assert(offsetof(VoAtmProperty, PropertySwitch1) == 55);
static_assert(offsetof(VoAtmProperty, PropertySwitch2) == 56);
static_assert(offsetof(VoAtmProperty, PropertySwitch3) == 90);
static_assert(offsetof(VoAtmProperty, PropertySwitch4) == 91);
static_assert(offsetof(VoAtmProperty, PropertySwitch5) == 92);
static_assert(offsetof(VoAtmProperty, PropertySwitch6) == 93);
static_assert(offsetof(VoAtmProperty, TxnCode) == 95);
static_assert(offsetof(VoAtmProperty, RespCode) == 102);
static_assert(offsetof(VoAtmProperty, PropertySwitch7) == 106);
static_assert(offsetof(VoAtmProperty, CurrencyCode) == 108);

static_assert(sizeof(VoAtmActionProperty) == 100);
static_assert(offsetof(VoAtmActionProperty, InstTerminalGroup) == 4);
static_assert(offsetof(VoAtmActionProperty, AtmLogicalGroup) == 21);
static_assert(offsetof(VoAtmActionProperty, AtmId) == 38);
static_assert(offsetof(VoAtmActionProperty, StatusCode) == 55);
static_assert(offsetof(VoAtmActionProperty, ActionFlag) == 66);
static_assert(offsetof(VoAtmActionProperty, ActionText) == 67);
static_assert(offsetof(VoAtmActionProperty, TxnFlag) == 88);
static_assert(offsetof(VoAtmActionProperty, TxnCode) == 89);
static_assert(offsetof(VoAtmActionProperty, TxnValue) == 96);

static_assert(sizeof(VoAtmStatus) == 12);
static_assert(offsetof(VoAtmStatus, StatusKind) == 11);

static_assert(sizeof(LocateMemoryMsg) == sizeof(long) + 128);
static_assert(offsetof(LocateMemoryMsg, MemoryName) == sizeof(long));
static_assert(offsetof(LocateMemoryMsg, RequestCode) == sizeof(long) + 104);
static_assert(offsetof(LocateMemoryMsg, ChannelKeyId) == sizeof(long) + 108);
static_assert(offsetof(LocateMemoryMsg, Reserved1) == sizeof(long) + 112);
static_assert(offsetof(LocateMemoryMsg, ProcessId) == sizeof(long) + 116);
static_assert(offsetof(LocateMemoryMsg, LocateStatus) == sizeof(long) + 120);
static_assert(offsetof(LocateMemoryMsg, Reserved2) == sizeof(long) + 124);

static_assert(sizeof(DenomInfo) == 24);
static_assert(offsetof(DenomInfo, Pos) == 4);
static_assert(offsetof(DenomInfo, Value) == 8);
static_assert(offsetof(DenomInfo, Code) == 12);
static_assert(offsetof(DenomInfo, Status) == 16);
static_assert(offsetof(DenomInfo, LastDispNotes) == 20);

static_assert(sizeof(AtmDenomStatusMsg) == 92);
static_assert(offsetof(AtmDenomStatusMsg, DenomText2) == 17);
static_assert(offsetof(AtmDenomStatusMsg, DenomText3) == 30);
static_assert(offsetof(AtmDenomStatusMsg, DenomNotes) == 44);
static_assert(offsetof(AtmDenomStatusMsg, DenomNum1) == 76);
static_assert(offsetof(AtmDenomStatusMsg, DenomNum2) == 84);

static_assert(sizeof(VoAtmMgrQMsg) == 3032);
static_assert(offsetof(VoAtmMgrQMsg, MsgCode) == 4);
static_assert(offsetof(VoAtmMgrQMsg, MsgSubCode) == 8);
static_assert(offsetof(VoAtmMgrQMsg, AtmId) == 12);
static_assert(offsetof(VoAtmMgrQMsg, MsgBuffer) == 29);
static_assert(sizeof(AtmStatusPayload) == 235);
static_assert(offsetof(AtmStatusPayload, StatusText) == 17);
static_assert(offsetof(AtmStatusPayload, ExtraText) == 118);
static_assert(offsetof(AtmStatusPayload, Date) == 219);
static_assert(offsetof(AtmStatusPayload, Time) == 227);
static_assert(sizeof(AtmLogPayload) == 1059);
static_assert(offsetof(AtmLogPayload, LogText) == 17);
static_assert(offsetof(AtmLogPayload, Date) == 1042);
static_assert(offsetof(AtmLogPayload, Time) == 1050);
static_assert(offsetof(AtmLogPayload, LogFlag) == 1058);
static_assert(sizeof(AtmTraceNoPayload) == 24);
static_assert(offsetof(AtmTraceNoPayload, TraceNo) == 20);
static_assert(offsetof(VoAlertMgrMsg, AlertSource) == 4);
static_assert(offsetof(VoAlertMgrMsg, AlertText) == 37);

static_assert(sizeof(OARKeyEntry) == 16);
static_assert(offsetof(OARKeyEntry, KeyType) == 4);
static_assert(offsetof(OARKeyEntry, KeyFlag) == 8);
static_assert(offsetof(OARKeyEntry, KeyValue) == 12);
static_assert(sizeof(OARDetails) == 8 * sizeof(OARKeyEntry));

static_assert(sizeof(VoMsgLayout) == 6296);
static_assert(sizeof(VoDevMsg) == 6296 && sizeof(VoTxnMsg) == 6296);
static_assert(offsetof(VoMsgLayout, TxnCode) == 8);
static_assert(offsetof(VoMsgLayout, TraceNo) == 128);
static_assert(offsetof(VoMsgLayout, ReasonCode) == 164);
static_assert(offsetof(VoMsgLayout, MemTraceNo) == 328);

// ---- The class --------------------------------------------------------------------------------
//
// Results. 1 for success or found, -1 for failure or not found, unless an operation says otherwise.
//
// Why -1. After an operation on a table, errno tells: ENOENT when nothing matched, EEXIST when -1
// means that an id is taken, else the error of the semaphore call that failed (EINTR: a signal came
// while it waited; EIDRM or EINVAL: the set is gone; EFBIG: the set has fewer slots), whatever the
// trace object did meanwhile. On success it means nothing.
//
// Traces. Every message goes through the trace object given to InitVoATMUtil, with the levels of
// syslog: 2 errors, 6 information, 7 detail. Not finding a record is not traced unless an
// operation says so.
//
// Buffers. The caller owns every buffer and record and keeps them in the sizes stated; none may be
// null. What is not said to be written is left as it was. Where a text is longer than a field of
// this library's own it is cut at the field's width and terminated.
//
// Locks. Semaphore i of a table's set guards slot i; a holder takes 2 units and gives 2 back, so
// one process holds a slot when the semaphore rests at 2. Of each pair, the lower-case form takes
// no lock; the capitalised form holds each slot while it looks at it (one at a time, ascending,
// waiting as long as it takes) when LockFlag is set, and otherwise is the lower-case form. A failed
// semaphore call is never retried: it is traced at level 2 with the system's error and ends the
// operation, with -1 where it has a result; the slot then may stay held, as it does when a holder
// dies. A record or id is copied, and LastAtmIndex set, while the slot is held; the caller's buffer
// is written once the slot was given back, so a semaphore failure leaves it as it was.
//
// Configuration. Files below the directory that the environment variable VODIR_HOME names, read
// afresh on every call; a path of more than 150 characters (250 for a layered file) does not open.
// Numbers are decimal text read with atoi.
//
// Layered files. An operation that takes the scope names s1, s2, s3 and a fallback name reads the
// first file that opens of <s1>_<s2>_<s3>_<suffix>, <s1>_<s2>_<suffix>, <s1>_<suffix>,
// <fallback>_<suffix> and, for some kinds, DEFAULT_<suffix>. Only that file counts, even when it
// lacks the key.
//
// Threads. One object serves one thread. Nothing is allocated; segments stay attached until the
// process ends.
class [[gnu::visibility("default")]] VoATMUtil {
 public:
  VoATMUtil();   // sets every member to zero; until start-up only the text helpers may be called
  ~VoATMUtil();  // releases nothing

  // -- Start-up ---------------------------------------------------------------------------------

  // Reads the slot counts, asks VoChannelMgr for the key of each of the six tables and attaches
  // them. Call it once, before any other operation but the text helpers.
  //   trace  takes every message of the library; not owned, and must outlive the object
  //   lock   stored as LockFlag
  // Reads "CHANNEL#ORGKEY" of cfg/vokernel.cfg (the queue's key is that number plus 2),
  // "VOBUSINESS#MAXATM", "#MAXFIT", "#MAXATMPROPERTY" and "#MAXATMSTATUS" of cfg/vobusiness.cfg,
  // and "MAXSECURITY" of cfg/vosecurity.cfg. The counts are not compared with the segments' sizes.
  // Waits for VoChannelMgr's answers as long as they take.
  // Returns 1 when all tables are attached, or -1 at the first failure, traced at level 2 with the
  // file, key, value or system error. Members set before a failure keep their values; nothing is
  // undone. A second call repeats the whole and attaches the segments again.
  int InitVoATMUtil(VoDebugUtil * trace, bool lock);

  // -- ATM memory table: one record an ATM ------------------------------------------------------

  // Copies the record of an ATM into *record and remembers its slot in LastAtmIndex.
  // Returns 1, or -1 when no slot holds the id; *record and LastAtmIndex are written only when
  // found.
  int readAtmMemory(const char* atmId, AtmMemoryTable* record);
  int ReadAtmMemory(const char* atmId, AtmMemoryTable* record);

  // Copies the whole of *record, its id included, over the slot that holds atmId: slot LastAtmIndex
  // when it does, else the lowest. The record's own id is not compared; LastAtmIndex stays.
  // Returns 1, or -1 when no slot holds the id.
  int writeAtmMemory(const char* atmId, AtmMemoryTable* record);
  int WriteAtmMemory(const char* atmId, AtmMemoryTable* record);

  // Returns 1 when some slot holds the ATM, else -1.
  int verifyAtmMemory(const char* atmId);
  int VerifyAtmMemory(const char* atmId);

  // Returns how many defined slots have this grouping key.
  int getAtmCount(const char* groupingKey);
  int GetAtmCount(const char* groupingKey);

  // Copies the id of the ordinal-th defined slot (from 1) of a grouping key into atmId, which needs
  // up to 21 bytes. Returns 1, or -1 when fewer slots match.
  // Prints "retval %d" with the result to standard output, without a line end; a semaphore failure
  // prints nothing.
  int getAtmId(const char* groupingKey, char* atmId, int ordinal);
  int GetAtmId(const char* groupingKey, char* atmId, int ordinal);

  // -- FIT table --------------------------------------------------------------------------------
  //
  // A record is selected by (key1, key2, key3) when MatchKey1 equals key1 and the other two equal
  // key2 and key3, or key2 and "*", or are "*" and "*". One with "*" as second key and another
  // third key is never selected, by key2 "*" neither: an argument has no wildcard.

  // Says whether a FIT id is still free: returns 1 when no record has it and -1 when one does. A
  // semaphore failure returns -1 as well.
  int verifyAtmFit(const char* fitId);
  int VerifyAtmFit(const char* fitId);

  // Returns how many records are selected.
  int getFitCount(const char* key1, const char* key2, const char* key3);
  int GetFitCount(const char* key1, const char* key2, const char* key3);

  // Copies the ordinal-th selected record (from 1) into *record.
  // Returns 1, or -1 when fewer records are selected.
  int readFitMemory(const char* key1, const char* key2, const char* key3, AtmFit* record,
                    int ordinal);
  int ReadFitMemory(const char* key1, const char* key2, const char* key3, AtmFit* record,
                    int ordinal);

  // -- Security table and memory checks ---------------------------------------------------------

  // Copies the record of a security id into *record and its slot into LastAtmIndex, which it shares
  // with the ATM reads. Returns 1, or -1 when absent; nothing is written then.
  int readVoSecurityTable(const char* securityId, VoSecurity* record);
  int ReadVoSecurityTable(const char* securityId, VoSecurity* record);

  // Return 1 when some slot, free ones included, has this record number or status code, else -1.
  int verifyAtmPropertyMemory(int recordId);
  int VerifyAtmPropertyMemory(int recordId);
  int verifyAtmActionPropertyMemory(int recordId);
  int VerifyAtmActionPropertyMemory(int recordId);
  int verifyAtmStatusMemory(const char* statusCode);
  int VerifyAtmStatusMemory(const char* statusCode);

  // Return how many slots are not "NOTDEFINED"; an empty text counts as defined. Both tables have
  // MaxAtmProperty slots.
  int getAtmPropertyCount();
  int GetAtmPropertyCount();
  int getAtmActionPropertyCount();
  int GetAtmActionPropertyCount();

  // -- Text helpers: no table, no trace, no start-up needed --------------------------------------

  // Returns 1 when every character is a decimal digit, else -1. An empty text is 1.
  int CheckInteger(const char* text);

  // Returns bit number bit (1 lowest to 8) of a byte given as two hexadecimal digits. Outside 1 to
  // 8 the digit's index follows the same formula; an index before or behind the text yields 0.
  int IsBitSet(char* hexText, short bit);

  // Returns the number of fields: the delimiters of the text plus 1.
  int GetNTokens(char* text, char delimiter);

  // Copies field number field (from 1) to out, which the caller has zeroed and which must hold it:
  // no terminator is written, and an empty or absent field writes nothing. Returns 1.
  int ParseToken(char* text, char* out, int field, char delimiter);

  // Copies a text with its terminator; an empty source leaves the destination as it was.
  void stringCopy(char* destination, char* source);

  // -- Property tables --------------------------------------------------------------------------

  // Writes 'N' into the seven switches of *property and nothing else. Returns 1.
  int resetAtmProperty(VoAtmProperty * property);

  // Copies the row of the ATM property table that applies to a request into *property. The keys are
  // settled one after the other, each on its own value if a row has it together with the keys
  // settled before, else on its wildcard ("*"; first the two-digit class for TxnCode; 0 for
  // CurrencyCode); of the rows that agree with all six, the one in the lowest slot is taken. A key
  // once settled is not reconsidered.
  //   InstTerminalGroup, AtmLogicalGroup, AtmId  up to 16 characters, longer ones are cut
  //   TxnCode                                    0 to 999999
  //   RespCode                                   0 to 999
  // Traced at level 7: two lines with the request, first its arguments as they came, then the keys
  // as they are compared; and each value tried in vain. An InstTerminalGroup without row and
  // wildcard row is traced at level 2. The capitalised form with LockFlag also traces the slot and
  // record number found; it copies the row after giving its slot back.
  // Returns 1, or -1 with the seven switches of *property set to 'N'. A semaphore failure returns
  // -1 and leaves *property as it was.
  int readAtmProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup, const char* AtmId,
                      int TxnCode, int RespCode, int CurrencyCode, VoAtmProperty* property);
  int ReadAtmProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup, const char* AtmId,
                      int TxnCode, int RespCode, int CurrencyCode, VoAtmProperty* property);

  // Finds what the ATM action property table says about an ATM's device statuses. The ATM's keys
  // are settled as for readAtmProperty, which gives the ATM's first row. From there each status
  // code in turn, in the order of StatusBuf, moves on to the next row that has it and is flagged
  // for the search type, the present row included; a code without such a row is passed over. The
  // row of the last code that has one answers. A row is found by its code and flag alone: behind
  // the ATM's own rows stand other ATMs', and those answer too. For TXN_VALUE a row with the
  // transaction is then looked for from that row on, by its TxnCode alone: it may be for another
  // status or another ATM.
  //   StatusBuf   status codes, each followed by '|' (the last one too), each up to 10 characters
  //   TxnCode     0 to 999999; for TXN_VALUE only: six digits, then the class, then "*"
  //   ActionBuf   STATUS_ACTION: receives the action text, up to 21 bytes
  //   TxnResult   TXN_VALUE: receives the row's number
  // Nothing is traced of the request. Every search that fails is traced at level 7, and so is the
  // slot that answers; a row found for the transaction without TxnFlag is a silent miss.
  // Returns 1, -1 when nothing applies, or 0 for an unknown search type of a known ATM. The outputs
  // are written only on 1.
  int readAtmActionProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup,
                            const char* AtmId, char* StatusBuf, int TxnCode, char* ActionBuf,
                            int* TxnResult, int SearchType);
  int ReadAtmActionProperty(const char* InstTerminalGroup, const char* AtmLogicalGroup,
                            const char* AtmId, char* StatusBuf, int TxnCode, char* ActionBuf,
                            int* TxnResult, int SearchType);

  // -- State-table configuration ----------------------------------------------------------------
  //
  // Text outputs receive a field of a configuration file and must hold it; the bundled reader's
  // fields have up to 150 characters. Where an output is said to be cleared, its first 8 bytes are
  // zeroed. Keys are cut at 50 characters.

  // Maps an operation key to its transaction: entry "<keyPart1>_<keyPart2>" of the layered file
  // cfg/atm/statetable/opkey/..._opk.cfg, fields 2 to 6 in the order of the outputs. txnCode and
  // amount are cleared before they are read.
  // Returns 0, or -1 when no file opens (level 2) or a field is missing (level 7); outputs read
  // before that keep their new values.
  int LoadTxnCode(const char* keyPart1, const char* keyPart2, char* txnCode, char* amount,
                  char* currCode, char* printerFlag, char* txnReqFlag, const char* s1,
                  const char* s2, const char* s3, const char* fallback);

  // Give the next state and screen after an authorisation response: fields 2 and 3 of the entry
  // "GOOD_RESPONSE#<keyPart1>_<keyPart2>" or "BAD_RESPONSE#..." of the layered file
  // cfg/atm/statetable/resptable/..._resp.cfg. Only the bad form clears its outputs first, each
  // before it is read.
  // Return 1, or -1 when no file opens (level 6; the good form also traces the first two files that
  // do not open) or a field is missing (level 2; level 6 for the good form's screen). The good form
  // traces its answer at level 6.
  int LoadGoodResponseState(const char* keyPart1, const char* keyPart2, char* stateNo,
                            char* screenNo, const char* s1, const char* s2, const char* s3,
                            const char* fallback);
  int LoadBadResponseState(const char* keyPart1, const char* keyPart2, char* stateNo,
                           char* screenNo, const char* s1, const char* s2, const char* s3,
                           const char* fallback);

  // Gives the indirect next state of a card: that of the FIT record with MatchKey1 fitKey1 whose
  // prefix is the longest of the card number's first ten characters (the lowest slot among equals),
  // else that of the first record, free slots included, whose prefix is all 'F' in either case.
  // fitKey2 makes no difference. Neither form takes a lock.
  //   indirectState  receives the character; at least 8 bytes, all cleared first
  // Returns 1, or -1 with indirectState untouched.
  int readIndirectState(const char* fitKey1, const char* fitKey2, const char* cardNumber,
                        char* indirectState);
  int ReadIndirectState(const char* fitKey1, const char* fitKey2, const char* cardNumber,
                        char* indirectState);

  // Reads the eight function keys of an OAR template: entries "OAR#VAR#A" to "OAR#VAR#I" (there is
  // no E) of the layered file cfg/atm/templates/..._<templateName>_<templateNo>.oar, with a
  // DEFAULT. KeyFlag is left alone, and so is KeyType for an action text that is a number other
  // than 0, which is traced at level 6.
  // Returns 1, or -1 with a level-6 trace when no file opens or a field is missing; keys read
  // before that keep their new values, and the failing one its letter.
  int LoadOARTemplate(const char* s1, const char* s2, const char* s3, const char* templateName,
                      int templateNo, OARDetails* details, const char* fallback);

  // Packs a template's controls and the eight KeyFlag into digits: display flag, numeric-keys flag,
  // flags of A to D, cancel value, flags of F to I, NUL. The controls are entries
  // "OAR#CONTROL#DISPLAYFLAG", "#NUMERICKEYS" and "#CANCEL" of the template's file; the first two
  // must have one digit.
  //   keyDetails  at least 12 bytes; 22 hold whatever the file says
  //   details     read only
  // Returns 1, or -1 when no file opens (level 6) or a control is missing (level 2); characters
  // written before that stay.
  int PackKeyDetails(const char* s1, const char* s2, const char* s3, const char* templateName,
                     int templateNo, char* keyDetails, OARDetails* details, const char* fallback);

  // Gives an OAR template's time-out as text: entry "OAR#OAR_TIMEOUT" of the template's file.
  // Returns 1, or -1 with a level-6 trace and timeOut untouched.
  int GetOARTimeOut(const char* s1, const char* s2, const char* s3, const char* templateName,
                    int templateNo, char* timeOut, const char* fallback);

  // Gives the number of the reserved empty screen as text: entry "ATM_RESERVEDSCREEN#EMPTYSCR" of
  // the layered file cfg/atm/statetable/screen/..._screen.cfg, with a DEFAULT.
  // Returns 1, or -1 with a level-6 trace and screenNo untouched.
  int GetEmptyScreen(const char* s1, const char* s2, const char* s3, char* screenNo,
                     const char* fallback);

  // Returns 1 when "<instId>_BADRSP_RCPT_NEEDED" of cfg/vobusiness.cfg is "Yes" in any case, else
  // 0, for every failure too; traces nothing.
  int isBadResponsePrintNeeded(const char* instId);

  // Returns 1 when "VOBUSINESS#UTCFLAG" of cfg/vobusiness.cfg is "Yes" in any case, else 0. A
  // missing file or key is traced at level 2.
  int getUTCFlag();

  // Copies the track-2 data of a cardless operation key, up to 150 characters: entry
  // "OPKEYMAP#<opKey>" of cfg/atm/CARDLESS_TXN.cfg, or else "OPKEYMAP#DEFAULT".
  // Returns 1, or -1 with track2Data untouched. Each miss is traced at level 2.
  int getCardlessTrack2Data(const char* opKey, char* track2Data);

  // -- Device status ----------------------------------------------------------------------------
  //
  // A driver keeps three texts a terminal: a status array (fifteen rows of a code of up to 10
  // characters, an empty row begins with NUL), a status code (at least 8 bytes) and a status
  // message (codes each followed by '|', at least 101 bytes; "NONE" when cleared).

  // Appends at most len characters of a code, and '|', to a text of codes in at least 101 bytes.
  // Returns len + 1, or 0 with the buffer untouched when it would exceed 99 characters with code.
  int BuiltStatusCode(char* code, int len, char* buffer);

  // Records a code, up to 10 characters: in the first empty row of the array, also when another row
  // has it already; else in the row that has it; else in all fifteen. When the ATM status table has
  // the code with kind 'S', appends it to the message once for each code there that differs, within
  // 99 characters: so nothing to an empty message, which only BuiltStatusCode starts, and more than
  // once to a message of several codes. A "NONE" message is cleared first when the table has a
  // slot, and is then empty. The capitalised form holds the code's slot while it appends. They have
  // no result: a semaphore failure shows in the trace alone.
  void builtStatusMsg(char(*statusArray)[11], char* statusCode, char* statusMsg);
  void BuiltStatusMsg(char(*statusArray)[11], char* statusCode, char* statusMsg);

  // Clears the first 8 bytes of row 0, of the code and of the message and writes "NONE" into each;
  // rows 1 to 14 stay. Returns 1.
  int ClearStatus(char(*statusArray)[11], char* statusCode, char* statusMsg);

  // -- Messages to the ATM manager and the alert manager ----------------------------------------
  //
  // They fill a message and send nothing; all return 1. A VoAtmMgrQMsg is zeroed whole first.
  // Widths: ATM id 16 characters, status texts 100, log text 1024, alert source 32, alert text 100.

  // Pack a status, log, trace-number or denomination message: its codes and its payload; the first
  // two with the date and the time of packing.
  int PackAtmStatusMsg(const char* atmId, const char* statusText, const char* extraText,
                       VoAtmMgrQMsg* msg);
  int PackAtmLogMsg(const char* atmId, const char* logText, char logFlag, VoAtmMgrQMsg* msg);
  int PackAtmTraceNoMsg(const char* atmId, int traceNo, VoAtmMgrQMsg* msg);
  int PackAtmDenomMsg(const char* atmId, AtmDenomStatusMsg* denom, VoAtmMgrQMsg* msg);

  // Writes the first 138 bytes of *msg only.
  int PackAtmAlertMsg(const char* source, const char* alertText, VoAlertMgrMsg* msg);

  // Copy a message whole, 6296 bytes: *txn into *dev, and *dev into *txn. Return 1.
  int TransformINboundMsg(VoDevMsg * dev, VoTxnMsg * txn);
  int TransformOUTboundMsg(VoTxnMsg * txn, VoDevMsg * dev);

  // Returns the code of an operational command, compared whole and in any case, or -1:
  //   31 to 35  !INSERVICE, !OUTSERVICE, !GETCONFIG, !CLOSEVSHIELD, !OPENVSHIELD
  //   36 to 40  !UNLOCKSDOOR, !LOCKSDOOR, !GETEMG, !GETCOUNTERS, !CLEARCOUNTERS
  //   41 to 45  !GETECOUNTERS, !CLEARECOUNTERS, !RUNSELFTEST, !SHUTDOWN, !GETTALLY
  //   46 to 49  !GETERROR, !GETHWCONFIG, !GETDATETIME, !GETEKC
  int GetOpertionalCmd(const char* cmdText);

  // -- Cash -------------------------------------------------------------------------------------

  // Reads the dispense logic configured for an amount: entry
  // "DISPENCE_LOGIC#<logicName up to its first blank>_<amountIndex>" of the layered file
  // cfg/atm/displogic/..._displogic.cfg, one note count a position from field 2.
  //   logicName  up to 15 characters
  //   dispLogic  at least 17 bytes; its first 8 are cleared first; counts of 100 and more
  //              contribute their first two digits
  //   atmModel   "D912ATM" (8 positions) or "NDC+ATM" (4)
  // Traces the result at level 7. Returns 1, or -1 when no file opens (level 6), the model is
  // another, a value is missing or a value is no whole number (level 2); dispLogic may then hold
  // the positions before.
  int GetDispLogic(const char* logicName, int amountIndex, const char* s1, const char* s2,
                   const char* s3, char* dispLogic, const char* atmModel, const char* fallback);

  // Stores the face value of the last of eight cassettes with this letter in *value; without one
  // *value stays. Returns 1.
  int GetDenomination(DenomInfo * denoms, char id, int* value);

  // Writes the two characters at notes into the place of cassette id ('A' to 'H', either case) in a
  // dispense logic, which must reach that far: 8 characters for 'D', 16 for 'H'. Nothing else is
  // written and nothing is terminated. Any other id writes nothing.
  void PackDispLogicBuf(char* notes, char id, char* dispBuf);

  // Says whether the cassettes can pay an amount with the configured logic, and plans a new one,
  // highest face value first, when that logic does not give the amount, has too many notes or asks
  // a cassette that is not usable.
  //   atmModel      "D912ATM" writes 8 positions back, any other model 4
  //   reqAmount     decimal text in whole currency units
  //   dispLogic     in: the configured logic; out, on 0: the logic to dispense; at least 17 bytes
  //   currencyCode  only cassettes of this currency take part
  //   denoms        eight cassettes in position order; LastDispNotes is rewritten for as many as
  //                 dispLogic has pairs
  //   maxNotes      the most notes one dispense may hold; above 99 a count may have three digits,
  //                 which moves the pairs behind it in dispLogic
  // Returns
  //   0           dispLogic can be dispensed, if it adds up to the amount: the rule does not
  //               promise that (cassettes 50 and 40, amount 80), so sum it before dispensing. Also
  //               when the cassette in the way has a letter outside 'A' to 'H'; dispLogic then
  //               stays what was refused
  //   40          dispLogic is no whole number; nothing is changed
  //   108         a new plan was needed and no usable cassette of the currency exists
  //   301 to 316  a cassette stands in the way: 301 + 2 * (letter - 'A') when the plan needs too
  //               many notes ("Low"), one more when its notes are too large ("High")
  // On any other result dispLogic stays. Traces configuration faults at level 2 and each step at
  // level 7.
  int CheckCashAvailability(const char* atmModel, char* reqAmount, char* dispLogic,
                            int currencyCode, DenomInfo* denoms, int maxNotes);

  // Marks cassette id ('A' to 'H', either case) 'N' with the notes it has when they are fewer than
  // LastDispNotes, and traces every cassette at level 7.
  //   availNotes  decimal text
  // Returns the number of cassettes looked at: 8 for "D912ATM", else 4.
  int CheckAndSetDenomStatus(const char* atmModel, char* availNotes, char id, DenomInfo* denoms);

  // Fills a denomination status record. text1, text2 and text3 (16, 12 and 12 characters) go to
  // DenomText1, 2 and 3; mind their order in the arguments. A count of 0 in dispLogic leaves
  // DenomNotes as it was, and the numbers write their digits and a NUL, so clear the record before
  // its first use.
  // Returns 1, or -1 with a level-6 trace for an unknown model, when only the texts are written.
  int LoadDenomDetails(const char* text1, const char* text3, const char* text2,
                       const char* dispLogic, const char* atmModel, int num1, int num2,
                       AtmDenomStatusMsg* msg);

  // Returns the number of groups "OAR" in the file inf/<fileName>, or -1 when it does not open
  // (level 6) or cannot be counted (level 2).
  int GetTotalData(const char* fileName);

  // Returns the number of variables of an OAR template: entry "OAR#VAR#TOTALVAR" of its file; or -1
  // with a level-6 trace.
  int GetTotalVar(const char* s1, const char* s2, const char* s3, const char* templateName,
                  int templateNo, const char* fallback);

  // Sums a deposit. The note types' values are the entries "BNA_MAPPING#<id>" of the layered file
  // cfg/atm/bnamap/..._bnamap.cfg.
  //   depositBuf  one character that is skipped, then groups of a two-character id and a count: of
  //               two digits when up to 16 characters in multiples of 4 follow, else of three; four
  //               groups of three-digit counts in exactly 20 characters; a trailing part of a group
  //               is ignored
  //   amountOut   receives "%d.00" of the total, up to 15 bytes
  //   mapOut      receives "value^count" of each group, joined by '|', up to 64 bytes; its first 8
  //               are cleared first
  // Returns 1, or -1 when no file opens (level 6), an id has no value (level 2), is "NILL" or is
  // worth 0 (no level), or more than 16 characters follow, but for 20. amountOut is written only on
  // 1, mapOut may hold the groups before the failure.
  int GetDepositAmount(const char* s1, const char* s2, const char* s3, const char* fallback,
                       char* depositBuf, char* amountOut, char* mapOut);

  // -- Last transaction -------------------------------------------------------------------------

  // The form with three arguments parses and traces a last-transaction status, and compares it with
  // TraceNo and lastDispLogic. ltsBuf has at least 26 characters. Always returns -1 and changes
  // nothing.
  int CheckLTS_TVS(VoDevMsg * lastDevMsg, char* lastDispLogic, char* ltsBuf);

  // The other form decides whether the last cash withdrawal must be reversed, and turns *lastDevMsg
  // into the reversal (MsgType 420, ReasonCode 103) when it must: when the ATM reports another
  // trace number than MemTraceNo, or reports this one with other notes than lastDispLogic while the
  // kept message is a reversal with reason 106. Nothing is decided unless TxnCode is 10000 to 19999
  // and neither trace number is 0.
  //   lastDispLogic  the four-cassette logic that was sent, 8 characters
  //   ltsBuf         at least 52 characters
  //   the last four  not used
  // Returns 1 when *lastDevMsg was turned and must be sent, else -1. Traces without a level.
  int CheckLTS_TVS(VoDevMsg * lastDevMsg, char* lastDispLogic, char* ltsBuf, char*, char*, char*,
                   char*);

  // -- Members: for drivers and tools to read ---------------------------------------------------

  VoDebugUtil* dptr = nullptr;  // the trace object; not owned

  int ChannelQid = 0;   // VoChannelMgr's queue
  int ChannelQKey = 0;  // its key

  int AtmMemoryShmid = 0;  // of each table: segment id, semaphore-set id, IPC key of both
  int AtmMemorySemid = 0;
  int AtmMemoryKeyId = 0;
  int AtmFitShmid = 0;
  int AtmFitSemid = 0;
  int AtmFitKeyId = 0;
  int SecurityShmid = 0;
  int SecuritySemid = 0;
  int SecurityKeyId = 0;
  int AtmPropertyShmid = 0;
  int AtmPropertySemid = 0;
  int AtmPropertyKeyId = 0;
  int AtmActionPropertyShmid = 0;
  int AtmActionPropertySemid = 0;
  int AtmActionPropertyKeyId = 0;
  int AtmStatusShmid = 0;
  int AtmStatusSemid = 0;
  int AtmStatusKeyId = 0;

  int MaxAtm = 0;  // of each table: its slots
  int MaxFit = 0;
  int MaxSecurity = 0;
  int MaxAtmProperty = 0;  // of both property tables
  int MaxAtmStatus = 0;

  int LastAtmIndex = 0;  // slot of the ATM (or security) record read last

  AtmFit* AtmFitPtr = nullptr;  // of each table: its first record
  AtmMemoryTable* AtmMemoryPtr = nullptr;
  VoSecurity* SecurityPtr = nullptr;
  VoAtmProperty* AtmPropertyPtr = nullptr;
  VoAtmActionProperty* AtmActionPropertyPtr = nullptr;
  VoAtmStatus* AtmStatusPtr = nullptr;

  bool LockFlag = false;  // whether the capitalised table operations lock
};

static_assert(offsetof(VoATMUtil, MaxAtm) == sizeof(void*) + 20 * sizeof(int));
static_assert(offsetof(VoATMUtil, AtmFitPtr) == sizeof(void*) + 26 * sizeof(int));
static_assert(offsetof(VoATMUtil, LockFlag) == 7 * sizeof(void*) + 26 * sizeof(int));

#endif  // VOATMUTIL_H
