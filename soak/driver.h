// A driver of the soak, and what all drivers and their supervisor share.
#ifndef SOAK_DRIVER_H
#define SOAK_DRIVER_H

#include <atomic>

#include "voatmutil.h"

constexpr int kMaxProcesses = 64;

// Lies in memory that all processes share. What a driver counts outlives it.
struct Board {
  struct Place {
    std::atomic<long> operations;
    std::atomic<long> torn;  // records read that are no one's whole record
  };

  std::atomic<bool> stop;
  Place places[kMaxProcesses];
};

// Whether all bytes that drivers write into a record come from one write.
bool IsWhole(const AtmMemoryTable& atm);

// Makes a record whole.
void Fill(AtmMemoryTable* atm, char byte);

// Works until it is told to stop: even places write records and odd ones read them, and all look up
// what the other tables and files hold. Returns 0, or 1 when an operation gave a wrong answer.
int Drive(Board& board, int place, bool lock);

#endif  // SOAK_DRIVER_H
