// Device status: the array of recent codes and the status message.
#include <cstring>

#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "common/token.h"
#include "voatmutil.h"

using namespace voatm;

namespace {

constexpr LockTexts kStatusSemop = SameText("Error in Semop for AtmStatus");

constexpr char kSeparator = '|';
constexpr char kSeparatorText[] = "|";
constexpr char kNone[] = "NONE";         // a cleared status text
constexpr std::size_t kMaxContent = 99;  // characters of a status message before the last '|'
constexpr char kInMessage = 'S';         // kind of a code that belongs in the status message
constexpr int kRows = 15;

using StatusRow = char[11];

// Copies a code into a row, cut at its width; what stands behind the copy's NUL stays.
void CopyCode(StatusRow& row, const char* code) {
  const std::size_t length = strnlen(code, sizeof row - 1);
  memcpy(row, code, length);
  row[length] = '\0';
}

void RecordCode(StatusRow* rows, const char* code) {
  for (int i = 0; i < kRows; ++i) {
    if (rows[i][0] == '\0') {
      CopyCode(rows[i], code);  // Intended: an empty row is not zeroed first.
      return;
    }
  }
  for (int i = 0; i < kRows; ++i) {
    if (FieldIs(rows[i], code)) {
      SetText(rows[i], code);
      return;
    }
  }
  // Intended: a full array is overwritten whole, it does not rotate.
  for (int i = 0; i < kRows; ++i) SetText(rows[i], code);
}

// Intended: once for each other code in the message, so never to an empty one, and also when the
// message has the code.
void AppendToMessage(char* message, const char* code, int fields) {
  for (int field = 0; field < fields; ++field) {
    StatusRow other = {};
    CopyToken(message, field, kSeparator, other, sizeof other - 1);
    if (other[0] == '\0' || FieldIs(other, code)) continue;
    if (strlen(message) + strlen(code) > kMaxContent) continue;
    strcat(message, code);
    strcat(message, kSeparatorText);
  }
}

template <typename Lock>
void BuildStatus(VoATMUtil& util, const Lock& lock, StatusRow* rows, const char* code,
                 char* message) {
  RecordCode(rows, code);
  const FieldKey key(code, sizeof(VoAtmStatus::StatusCode));
  FindSlot(TableSlots(util.AtmStatusPtr, util.MaxAtmStatus), 0, lock,
           [&](const VoAtmStatus& status, int) {
             if (strcmp(message, kNone) == 0) ClearOutput(message);
             if (!key.Is(status.StatusCode)) return false;
             if (status.StatusKind == kInMessage) {
               AppendToMessage(message, code, util.GetNTokens(message, kSeparator));
             }
             return true;
           });
}

void SetNone(char* text) {
  ClearOutput(text);
  strcpy(text, kNone);
}

}  // namespace

int VoATMUtil::BuiltStatusCode(char* code, int len, char* buffer) {
  const std::size_t used = strlen(buffer);
  if (len < 0 || used + static_cast<std::size_t>(len) > kMaxContent) return 0;
  AppendText(buffer, code, static_cast<std::size_t>(len));
  strcat(buffer, kSeparatorText);
  return len + 1;
}

void VoATMUtil::builtStatusMsg(char (*statusArray)[11], char* statusCode, char* statusMsg) {
  BuildStatus(*this, NoLock(), statusArray, statusCode, statusMsg);
}

void VoATMUtil::BuiltStatusMsg(char (*statusArray)[11], char* statusCode, char* statusMsg) {
  if (!LockFlag) {
    builtStatusMsg(statusArray, statusCode, statusMsg);
    return;
  }
  const SlotLock lock(dptr, AtmStatusSemid, kStatusSemop);
  BuildStatus(*this, lock, statusArray, statusCode, statusMsg);
}

// Intended: rows 1 to 14 keep their codes.
int VoATMUtil::ClearStatus(char (*statusArray)[11], char* statusCode, char* statusMsg) {
  SetNone(statusArray[0]);
  SetNone(statusCode);
  SetNone(statusMsg);
  return 1;
}
