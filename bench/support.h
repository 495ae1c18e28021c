// What the benchmarks share: tables in real segments, and an object whose traces are filtered out.
#ifndef BENCH_SUPPORT_H
#define BENCH_SUPPORT_H

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "voatmutil.h"
#include "vodebugutil.h"

// A table in a segment that the system removes with the process.
template <typename Record>
class PrivateTable {
 public:
  explicit PrivateTable(int count) : count_(count) {
    const int id =
        shmget(IPC_PRIVATE, static_cast<std::size_t>(count) * sizeof(Record), IPC_CREAT | 0600);
    void* const address = shmat(id, nullptr, 0);
    shmctl(id, IPC_RMID, nullptr);
    if (reinterpret_cast<std::ptrdiff_t>(address) == -1) abort();
    records_ = static_cast<Record*>(address);
  }
  ~PrivateTable() { shmdt(records_); }
  PrivateTable(const PrivateTable&) = delete;
  PrivateTable& operator=(const PrivateTable&) = delete;

  int count() const { return count_; }
  Record* records() const { return records_; }
  Record& operator[](int slot) const { return records_[slot]; }

 private:
  int count_;
  Record* records_;
};

// A semaphore set, every semaphore at 2, removed with the object.
class PrivateSet {
 public:
  explicit PrivateSet(int count) : id_(semget(IPC_PRIVATE, count, IPC_CREAT | 0600)) {
    std::vector<unsigned short> values(static_cast<std::size_t>(count), 2);
    if (id_ < 0 || semctl(id_, 0, SETALL, values.data()) != 0) abort();
  }
  ~PrivateSet() { semctl(id_, 0, IPC_RMID); }
  PrivateSet(const PrivateSet&) = delete;
  PrivateSet& operator=(const PrivateSet&) = delete;

  int id() const { return id_; }

 private:
  int id_;
};

// An object that traces nothing but errors, and those to nowhere.
class QuietDriver {
 public:
  QuietDriver() {
    debug_.set_level(1);
    debug_.to_callback([](void*, int, const char*) {}, nullptr);
    util.dptr = &debug_;
  }

  VoATMUtil util;

 private:
  VoDebugUtil debug_;
};

// An id of 16 characters that differs from others at its end only.
template <std::size_t N>
void SetId(char (&field)[N], int number) {
  snprintf(field, N, "BRANCHATM%07u", static_cast<unsigned>(number) % 10000000);
}

#endif  // BENCH_SUPPORT_H
