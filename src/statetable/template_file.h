// The file of an OAR template.
#ifndef SRC_STATETABLE_TEMPLATE_FILE_H
#define SRC_STATETABLE_TEMPLATE_FILE_H

#include "common/config_file.h"
#include "common/trace.h"
#include "statetable/layered_file.h"

class VoCfgUtil;
class VoDebugUtil;

namespace voatm {

// Opens the layered file cfg/atm/templates/..._<name>_<number>.oar, with a "DEFAULT". When none
// opens, traces it at level 6.
bool OpenTemplate(VoDebugUtil* trace, VoCfgUtil& cfg, const char* name, int number,
                  const Scopes& scopes);

// Reads a field of a key. A miss is traced at the level and closes the file.
bool SearchTemplate(VoDebugUtil* trace, TraceLevel level, VoCfgUtil& cfg, const char* key,
                    int field, char (&value)[kKeySize]);

}  // namespace voatm

#endif  // SRC_STATETABLE_TEMPLATE_FILE_H
