// Cassette states and the denomination status record; totals of template files.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cash/cassettes.h"
#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "statetable/template_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

int VoATMUtil::CheckAndSetDenomStatus(const char* atmModel, char* availNotes, char id,
                                      DenomInfo* denoms) {
  const char letter = UpperCase(id);
  const int available = atoi(availNotes);
  const int count = CassettesOf(atmModel) == kEightCassettes ? kEightCassettes : kFourCassettes;
  for (int i = 0; i < count; ++i) {
    DenomInfo& cassette = denoms[i];
    if (cassette.Id == letter && available < cassette.LastDispNotes) {
      cassette.Status = 'N';
      cassette.LastDispNotes = available;
    }
  }
  for (int i = 0; i < count; ++i) {
    dptr->trace(kDetail, "Id[%c] Pos[%d] Value[%d]\tCode[%d]\tStatus[%c] LastDispNotes[%d]",
                denoms[i].Id, denoms[i].Pos, denoms[i].Value, denoms[i].Code, denoms[i].Status,
                denoms[i].LastDispNotes);
  }
  return count;
}

int VoATMUtil::LoadDenomDetails(const char* text1, const char* text3, const char* text2,
                                const char* dispLogic, const char* atmModel, int num1, int num2,
                                AtmDenomStatusMsg* msg) {
  SetText(msg->DenomText1, text1);
  SetText(msg->DenomText2, text2);
  SetText(msg->DenomText3, text3);
  const int positions = CassettesOf(atmModel);
  if (positions == kUnknownModel) {
    dptr->trace(kInformation, "Invaild Device Type[ %s ]", atmModel);
    return -1;
  }
  const char* pair = dispLogic;
  for (int position = 0; position < positions; ++position) {
    const int count = NotesOf(pair);
    pair += strnlen(pair, 2);                           // a short text has no notes behind its end
    if (count != 0) msg->DenomNotes[position] = count;  // Intended: 0 leaves the old count.
  }
  // Intended: the fields are not cleared; six digits leave the last byte as it was.
  snprintf(msg->DenomNum1, sizeof msg->DenomNum1, "%06d", num1);
  snprintf(msg->DenomNum2, sizeof msg->DenomNum2, "%06d", num2);
  return 1;
}

int VoATMUtil::GetTotalData(const char* fileName) {
  VoCfgUtil cfg;
  char path[kFixedPathSize];
  if (!OpenFixedFile(cfg, path, {kInfDirectory, fileName})) {
    dptr->trace(kInformation, "Failed to open file [ %s ]", path);
    return -1;
  }
  const int count = cfg.cfg_group_count("OAR");
  if (count < 0) dptr->trace(kError, "Failed to Count OAR Group");
  cfg.cfg_close();
  return count < 0 ? -1 : count;
}

int VoATMUtil::GetTotalVar(const char* s1, const char* s2, const char* s3, const char* templateName,
                           int templateNo, const char* fallback) {
  VoCfgUtil cfg;
  if (!OpenTemplate(dptr, cfg, templateName, templateNo, {s1, s2, s3, fallback})) return -1;
  char value[kKeySize];
  if (!SearchTemplate(dptr, kInformation, cfg, "OAR#VAR#TOTALVAR", 2, value)) return -1;
  cfg.cfg_close();
  return atoi(value);
}
