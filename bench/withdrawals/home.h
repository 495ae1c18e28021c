// The home of a switch with many ATMs, and the host that serves it.
#ifndef BENCH_WITHDRAWALS_HOME_H
#define BENCH_WITHDRAWALS_HOME_H

#include <sys/types.h>

#include <string>

// How the property rows stand. Each group of a hundred ATMs has eleven: ten transactions, of which
// the withdrawal is the hot one, and one for all others.
enum class RowOrder {
  kOwnFirst,       // an ATM's own row for the withdrawal below all others, then as by group
  kByGroup,        // a group's rows together, the withdrawal first
  kByTransaction,  // all groups' rows for one transaction together, the withdrawal last
};

constexpr const char* kInst = "HARBOUR";
constexpr int kAtmsOfGroup = 100;

std::string AtmName(int atm);
std::string GroupName(int atm);

// A copy of the sample home with so many ATMs and IPC keys of its own, which VODIR_HOME names, and
// `voatm serve` on it. Both are gone with the object. Throws std::runtime_error.
class ManyAtms {
 public:
  ManyAtms(int atms, RowOrder order);
  ~ManyAtms();
  ManyAtms(const ManyAtms&) = delete;
  ManyAtms& operator=(const ManyAtms&) = delete;

  int property_rows() const { return property_rows_; }

 private:
  void WriteAtms(int atms) const;
  void WriteProperties(int atms, RowOrder order);
  void WriteSettings(int atms) const;
  void Serve();

  std::string path_;
  int property_rows_ = 0;
  pid_t host_ = 0;
};

#endif  // BENCH_WITHDRAWALS_HOME_H
