// Asking VoChannelMgr where a table is, without the endless waiting of a driver's start-up.
#ifndef TOOLS_VOATM_LOOK_LOCATE_H
#define TOOLS_VOATM_LOOK_LOCATE_H

#include <optional>
#include <string>

#include "voatmutil.h"

class Locator {
 public:
  // Opens VoChannelMgr's queue; throws std::runtime_error when there is none. It has so many
  // seconds for an answer.
  explicit Locator(int queue_key, int seconds = 2);

  // Returns the key of a table, or nothing when VoChannelMgr does not know it. Throws
  // std::runtime_error when it does not answer in time. The request then stays in the queue, and
  // while it lies there unread no other one is sent.
  std::optional<int> Ask(const char* table) const;

 private:
  bool HoldsOrphanedRequest() const;
  bool Receive(LocateMemoryMsg* reply) const;
  void Send(const char* table) const;

  int seconds_;
  int queue_;
  std::string description_;
};

#endif  // TOOLS_VOATM_LOOK_LOCATE_H
