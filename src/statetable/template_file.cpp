#include "statetable/template_file.h"

#include "common/text_field.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

namespace voatm {

bool OpenTemplate(VoDebugUtil* trace, VoCfgUtil& cfg, const char* name, int number,
                  const Scopes& scopes) {
  // A name that is cut here makes a path that does not fit.
  FileKind kind = kFileKinds[kTemplates];
  char suffix[kLayeredPathSize];
  FormatText(suffix, "%s_%d%s", name, number, kind.suffix);
  kind.suffix = suffix;
  return OpenLayered(trace, cfg, kind, scopes);
}

bool SearchTemplate(VoDebugUtil* trace, TraceLevel level, VoCfgUtil& cfg, const char* key,
                    int field, char (&value)[kKeySize]) {
  if (ReadValue(cfg, key, field, value)) return true;
  trace->trace(level, "failed to search[ %s ]", key);
  cfg.cfg_close();
  return false;
}

}  // namespace voatm
