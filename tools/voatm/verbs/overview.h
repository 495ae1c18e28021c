// All that stands at a home, and what is wrong with it. What cannot be looked at is a finding and
// keeps nothing else from being seen.
#ifndef TOOLS_VOATM_VERBS_OVERVIEW_H
#define TOOLS_VOATM_VERBS_OVERVIEW_H

#include <string>
#include <vector>

#include "look/slot_locks.h"
#include "look/survey.h"
#include "look/table_keys.h"
#include "look/users.h"
#include "show/finding.h"

struct Overview {
  std::vector<TableState> tables;  // whose keys are known
  std::vector<SegmentUser> users;
  std::vector<SlotLock> locks;  // that are not at rest
  bool is_answered = false;     // by VoChannelMgr
  std::size_t files = 0;        // of the configuration and the seeds that were read
  std::vector<Finding> findings;
};

// The given keys count before what VoChannelMgr answers, the remembered ones when it does not.
// Throws std::runtime_error when there is no home.
Overview LookAtHome(const std::string& home, const TableKeys& given);

#endif  // TOOLS_VOATM_VERBS_OVERVIEW_H
