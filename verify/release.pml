/* The protocol of `voatm locks release` (tools/voatm/look/release.cpp and slot_locks.cpp) on one slot:
 * two drivers, two releasers, a crash at any step, numbers of processes that are used again. A driver
 * may give its two units back one by one, so that a crash leaves one of them (--reset).
 *
 * Shown: no release gives back what a living process holds, no two living processes hold the slot,
 * and what a dead one held is released sooner or later.
 *
 * Assumed: the number of a process that ended is not used again while one look lasts. The system
 * hands numbers out in turn, so it would have to start some 30,000 processes in that moment; with
 * REUSE_AT_ONCE they are, and the protocol fails. And that no other slot of the set is used: the
 * time of the last change is the set's, so that a number which was given again would pass for the
 * holder's. Nothing is given back then; --force is for that.
 *
 * Each FAULT_ takes away one of its steps and must be found. */

#define DRIVERS 2
#define RELEASERS 2
#define NOBODY 0
#define RELEASER 3 /* its number is on slots at rest only */
#define NUMBERS 4  /* drivers have 1 and 2 */
#define CRASHES 3        /* so many, lest only crashes go on */

byte units = 2;           /* the semaphore's value */
byte last = 0;            /* the number of the process that changed it last */
bool lives[NUMBERS];      /* whether a process has the number */
bool is_young[NUMBERS];   /* and whether it started after the last change */
bool holds[NUMBERS];      /* whether the process that has the number now holds the slot */
bool orphaned = false;    /* whether a dead process holds it */
bool socket = false;      /* whether there is a releaser at work */
byte asked[RELEASERS];    /* the number that a releaser looks at */
byte crashes = 0;

/* What a releaser knows of the time of the last change: who started after that. */
typedef Time { bool is_after[NUMBERS] }
Time known[RELEASERS];

inline Changed(by) {
  last = by;
  is_young[1] = false;
  is_young[2] = false
}

#ifdef REUSE_AT_ONCE
#define MAY_START(number) true
#else
#define MAY_START(number) (asked[0] != number && asked[1] != number)
#endif

inline Start(number) {
  lives[number] = true;
  is_young[number] = true;
  known[0].is_after[number] = true;
  known[1].is_after[number] = true
}

/* semop waits until it can take two units, and takes them in one step. */
active [DRIVERS] proctype Driver() {
  byte me;
start:
  atomic {
    if
    :: MAY_START(1) && !lives[1] -> me = 1
    :: MAY_START(2) && !lives[2] -> me = 2
    fi;
    Start(me)
  }
ready:
  if
  :: atomic { units >= 2 -> units = units - 2; Changed(me); holds[me] = true }
  :: atomic { crashes < CRASHES -> crashes++; lives[me] = false; goto start }
  fi;
  assert(!(holds[1] && holds[2]));
  if
  :: atomic { units = units + 2; Changed(me); holds[me] = false }; goto ready
  :: atomic { units = units + 1; Changed(me) }
  :: atomic {
       crashes < CRASHES -> crashes++;
       lives[me] = false;
       holds[me] = false;
       orphaned = true;
       goto start
     }
  fi;
  /* it has given one of its units back */
  if
  :: atomic { units = units + 1; Changed(me); holds[me] = false }; goto ready
  :: atomic {
       crashes < CRASHES -> crashes++;
       lives[me] = false;
       holds[me] = false;
       orphaned = true;
       goto start
     }
  fi
}

inline ReadTime() {
  d_step {
    known[self].is_after[1] = is_young[1];
    known[self].is_after[2] = is_young[2]
  }
}

/* A step after which the process may be gone; its socket goes with it. */
#define OR_CRASH :: atomic { crashes < CRASHES -> crashes++; goto done }

active [RELEASERS] proctype Releaser() {
  byte self = _pid - DRIVERS;
  byte number, value;
  bool is_gone;
look:
  atomic {
#ifndef FAULT_NO_SOCKET
    !socket;
#endif
    socket = true
  }
#ifdef FAULT_TIME_FIRST
  ReadTime();
#endif
  if
  :: atomic { number = last; asked[self] = number }
  OR_CRASH
  fi;
#ifdef FAULT_VALUE_LATE
  value = 0;
#else
  if
  :: value = units
  OR_CRASH
  fi;
#endif
#ifndef FAULT_TIME_FIRST
  if
  :: ReadTime()
  OR_CRASH
  fi;
#endif
  if
  :: number == NOBODY || number == RELEASER || value == 2 -> goto done
#ifdef FAULT_NUMBER_IS_PROCESS
  :: else -> is_gone = !lives[number]
#else
  :: else -> is_gone = !lives[number] || known[self].is_after[number]
#endif
  OR_CRASH
  fi;
#ifndef FAULT_VALUE_ONCE
  if
  :: units != value -> goto done
  :: else
  OR_CRASH
  fi;
#endif
#ifndef FAULT_NUMBER_ONCE
  if
  :: number != last -> goto done
  :: else
  OR_CRASH
  fi;
#endif
  if
  :: !is_gone -> goto done
  :: else
  OR_CRASH
  fi;
  /* semop takes what was found, finds none and adds two in one step */
  atomic {
    if
    :: units != value -> goto done
    :: else
    fi;
    assert(!holds[1] && !holds[2]);
    units = 2;
    Changed(RELEASER);
    orphaned = false
  }
done:
  atomic { socket = false; asked[self] = NOBODY; number = 0; value = 0; is_gone = false }
  goto look
}

ltl released { [] (orphaned -> <> !orphaned) }
