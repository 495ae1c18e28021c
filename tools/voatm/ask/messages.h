// The messages that the library packs, as data: what their bytes are called.
#ifndef TOOLS_VOATM_ASK_MESSAGES_H
#define TOOLS_VOATM_ASK_MESSAGES_H

#include <cstddef>
#include <string>
#include <vector>

#include "records/record_tables.h"

// A head, or the payload behind it.
struct MessagePart {
  const char* name;
  std::size_t offset;  // of its first byte in the message
  std::vector<records::RecordField> fields;
};

// Says what a message consists of, by its size and its head, which is compared with the heads that
// the library itself packs. Returns nothing for bytes that are no message, or fewer than one has.
std::vector<MessagePart> TakeApart(VoATMUtil& util, const std::string& bytes);

#endif  // TOOLS_VOATM_ASK_MESSAGES_H
