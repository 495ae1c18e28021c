// A home of a test's own, and the tables of a development host that serves it in a child process.
#ifndef TESTS_SUPPORT_SERVED_HOME_H
#define TESTS_SUPPORT_SERVED_HOME_H

#include <sys/types.h>

#include <string>

#include "voatmutil_testing.h"

// A temporary home that VODIR_HOME names while it lives.
class TestHome : public voatmutil_testing::Home {
 public:
  void Remove(const std::string& file) const;
};

struct SlotCounts {
  int atm = 4;
  int fit = 6;
  int security = 4;
  int property = 8;
  int status = 4;
};

// A home whose tables a host serves. The base of its keys is its own; the host's queue is that
// number plus 2, the tables' keys are plus 10 to 15. The host ends with the object or the test.
class ServedHome : public TestHome {
 public:
  explicit ServedHome(const SlotCounts& counts = {});
  explicit ServedHome(const char* model);  // a copy of this home, with keys of its own
  ~ServedHome();

  int key_base() const { return key_base_; }
  pid_t host() const { return host_; }

 private:
  int key_base_;
  pid_t host_;
};

// Writes the three start-up files of a home.
void WriteStartUpFiles(const TestHome& home, int key_base, const SlotCounts& counts);

#endif  // TESTS_SUPPORT_SERVED_HOME_H
