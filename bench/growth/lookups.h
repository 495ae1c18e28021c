// What a lookup costs in tables of growing size.
#ifndef BENCH_GROWTH_LOOKUPS_H
#define BENCH_GROWTH_LOOKUPS_H

#include <cstddef>
#include <vector>

namespace growth {

// Seconds of one lookup that is answered by the table's last slot.
struct Costs {
  double limit;     // one load of eight bytes a slot
  double plain;     // the loop that compares text with strcmp
  double unlocked;  // the library without locks
  double pairs;     // as many bare semaphore pairs as the lookup makes, 0 where none locks
  double locked;    // the library with locks
};

struct Lookup {
  const char* name;
  const char* operation;
  Costs (*measure)(int slots);
};

extern const Lookup kLookups[];
extern const std::size_t kLookupCount;

}  // namespace growth

#endif  // BENCH_GROWTH_LOOKUPS_H
