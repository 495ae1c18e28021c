// Asking VoChannelMgr where a table is, without the waiting of a driver's start-up.
#ifndef TOOLS_VOATM_LOOK_LOCATE_H
#define TOOLS_VOATM_LOOK_LOCATE_H

#include <optional>
#include <string>

class Locator {
 public:
  // Opens VoChannelMgr's queue; throws std::runtime_error when there is none.
  explicit Locator(int queue_key);

  // Returns the key of a table, or nothing when VoChannelMgr does not know it. Throws
  // std::runtime_error when it does not answer within two seconds. The request then stays in the
  // queue; while it lies there unread no further one is sent.
  std::optional<int> Ask(const char* table) const;

 private:
  void Send(const char* table) const;

  int queue_;
  std::string description_;
};

#endif  // TOOLS_VOATM_LOOK_LOCATE_H
