// What both sides of a locate request agree on besides LocateMemoryMsg itself.
#ifndef SRC_TABLES_LOCATE_H
#define SRC_TABLES_LOCATE_H

#include <cstddef>

#include "voatmutil.h"

namespace voatm {

inline constexpr int kChannelKeyDistance = 2;  // from the configured key to VoChannelMgr's queue
inline constexpr long kLocateRequestType = 1;
inline constexpr std::size_t kLocateBodySize = sizeof(LocateMemoryMsg) - sizeof(long);

}  // namespace voatm

#endif  // SRC_TABLES_LOCATE_H
