// The command table: `voatm` and its verbs, in the order of the help.
#ifndef TOOLS_VOATM_VERBS_VERBS_H
#define TOOLS_VOATM_VERBS_VERBS_H

#include "verb.h"

extern const Verb kVoatm;
extern const Verb kStatus;
extern const Verb kServe;
extern const Verb kTables;
extern const Verb kList;
extern const Verb kShow;
extern const Verb kDump;
extern const Verb kLocks;
extern const Verb kLocksRelease;
extern const Verb kCheck;
extern const Verb kExplain;
extern const Verb kPlan;
extern const Verb kDiff;
extern const Verb kWhy;
extern const Verb kCompletion;
extern const Verb kComplete;
extern const Verb kManual;

// voatm itself, then its verbs; one below another stands behind it.
inline constexpr const Verb* kVerbs[] = {
    &kVoatm, &kStatus, &kServe,        &kTables,   &kList,    &kShow,
    &kDump,  &kLocks,  &kLocksRelease, &kCheck,    &kExplain, &kPlan,
    &kDiff,  &kWhy,    &kCompletion,   &kComplete, &kManual,
};

#endif  // TOOLS_VOATM_VERBS_VERBS_H
