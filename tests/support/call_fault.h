// System calls that fail: the tests' functions stand before the system's, for the library and the
// platform alike.
#ifndef TESTS_SUPPORT_CALL_FAULT_H
#define TESTS_SUPPORT_CALL_FAULT_H

#include <functional>
#include <set>
#include <string>
#include <vector>

// While it exists, this thread's calls of one function are counted, and the nth of them fails. A
// call that fails does nothing, but for close, which closes as the system's does.
class CallFault {
 public:
  // What may happen to a call in place of an error.
  enum { kNothing = 0, kKilledBefore = -1, kKilledAfter = -2 };

  explicit CallFault(const char* function, int nth = 0, int error = kNothing);
  ~CallFault();
  CallFault(const CallFault&) = delete;
  CallFault& operator=(const CallFault&) = delete;

  int calls() const { return calls_; }

  // Counts a call when it is one of the function. Returns what happens to it.
  int Count(const char* function);

 private:
  std::string function_;
  int nth_;
  int error_;
  int calls_ = 0;
};

// How many calls of a function an operation makes.
int CallsOf(const char* function, const std::function<void()>& operation);

// The first, a middle one and the last of so many calls.
std::set<int> SomeOf(int calls);

// The errors that a function's manual page names.
const std::vector<int>& ErrorsOf(const std::string& function);

// How many descriptors this process has open.
long OpenDescriptors();

#endif  // TESTS_SUPPORT_CALL_FAULT_H
