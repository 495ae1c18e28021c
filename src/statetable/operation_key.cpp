// Operation keys: the transaction that a pressed key stands for.
#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "statetable/layered_file.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

int VoATMUtil::LoadTxnCode(const char* keyPart1, const char* keyPart2, char* txnCode, char* amount,
                           char* currCode, char* printerFlag, char* txnReqFlag, const char* s1,
                           const char* s2, const char* s3, const char* fallback) {
  VoCfgUtil cfg;
  LayeredFile file(kFileKinds[kOperationKeys], {s1, s2, s3, fallback});
  if (!file.OpenFirst(cfg)) {
    dptr->trace(kError, "Failed to open file [ %s ]", file.path());
    return -1;
  }
  char key[kKeySize];
  FormatText(key, "%s_%s", keyPart1, keyPart2);

  // The fields of the entry, from field 2. Intended: only the first two outputs are cleared.
  struct Output {
    char* text;
    const char* name;
    bool cleared;
  };
  const Output outputs[] = {{txnCode, "TxnCode", true},
                            {amount, "Amount", true},
                            {currCode, "CurrCode", false},
                            {printerFlag, "PrinterFlag", false},
                            {txnReqFlag, "TxnReqFlag", false}};
  int field = 2;
  for (const Output& output : outputs) {
    if (output.cleared) ClearOutput(output.text);
    if (cfg.cfg_search(key, output.text, field++) < 0) {
      cfg.cfg_close();
      dptr->trace(kDetail, "Failed to search[ %s ] for %s", key, output.name);
      return -1;
    }
  }
  cfg.cfg_close();
  return 0;  // Intended: success is 0 here.
}
