// The kinds of layered files that the library reads below VODIR_HOME. What checks a configuration
// tree takes them from here.
#ifndef SRC_STATETABLE_FILE_KINDS_H
#define SRC_STATETABLE_FILE_KINDS_H

#include <cstddef>
#include <iterator>

namespace voatm {

// A kind of layered file: its directory below VODIR_HOME, what its names end in, and whether
// "DEFAULT" is tried last.
struct FileKind {
  const char* directory;
  const char* suffix;
  bool has_default;
};

enum LayeredKind : std::size_t {
  kOperationKeys,
  kResponseStates,
  kScreens,
  kTemplates,
  kDispenseLogics,
  kNoteMappings,
  kLayeredKinds
};

inline constexpr FileKind kFileKinds[] = {
    {"cfg/atm/statetable/opkey", "opk.cfg", false},
    {"cfg/atm/statetable/resptable", "resp.cfg", false},
    {"cfg/atm/statetable/screen", "screen.cfg", true},
    {"cfg/atm/templates", ".oar", true},  // a template's own suffix is <name>_<number>.oar
    {"cfg/atm/displogic", "displogic.cfg", false},
    {"cfg/atm/bnamap", "bnamap.cfg", false},
};
static_assert(std::size(kFileKinds) == kLayeredKinds);

}  // namespace voatm

#endif  // SRC_STATETABLE_FILE_KINDS_H
