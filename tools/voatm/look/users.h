// Which processes have a table's segment attached, or one that was removed.
#ifndef TOOLS_VOATM_LOOK_USERS_H
#define TOOLS_VOATM_LOOK_USERS_H

#include <string>
#include <vector>

#include "look/process.h"
#include "look/survey.h"
#include "show/finding.h"

struct SegmentUser {
  Process process;
  int key;      // under which the segment was created
  int segment;  // its id
};

// All attached segments of all processes that this user may look into, by process.
std::vector<SegmentUser> FindSegmentUsers();

// Whether the process has the table's segment attached, be it one that was removed, or cannot be
// looked into.
bool MayUse(const TableState& table, pid_t id);

// What is wrong with those of one table: who still uses a segment that was removed.
std::vector<Finding> JudgeUsers(const TableState& table, const std::vector<SegmentUser>& users);

#endif  // TOOLS_VOATM_LOOK_USERS_H
