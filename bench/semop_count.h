// Semaphore calls, counted: the program's own semop stands before the system's.
#ifndef BENCH_SEMOP_COUNT_H
#define BENCH_SEMOP_COUNT_H

// How many calls of semop this process has made.
long SemopCount();

#endif  // BENCH_SEMOP_COUNT_H
