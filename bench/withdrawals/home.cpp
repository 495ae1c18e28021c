#include "bench/withdrawals/home.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

constexpr int kTransactions = 10;
constexpr int kFirstTransaction = 10000;  // the withdrawal

std::string Digits(int number, int width) {
  std::string text = std::to_string(number);
  text.insert(0, static_cast<std::size_t>(std::max(0, width - static_cast<int>(text.size()))), '0');
  return text;
}

// Writes the rows of a property table, one a call.
class PropertyFile {
 public:
  explicit PropertyFile(const std::string& path) : out_(path) {}
  ~PropertyFile() { out_ << "\n]\n"; }
  PropertyFile(const PropertyFile&) = delete;
  PropertyFile& operator=(const PropertyFile&) = delete;

  int rows() const { return rows_; }

  // A row for a transaction, or for all others.
  void Add(int first_atm, const std::string& atm, int transaction) {
    const bool named = transaction < kTransactions;
    ++rows_;
    out_ << (rows_ == 1 ? "[\n" : ",\n") << R"({"RecordId": )" << rows_
         << R"(, "InstTerminalGroup": ")" << kInst << R"(", "AtmLogicalGroup": ")"
         << GroupName(first_atm) << R"(", "AtmId": ")" << atm << R"(", "TxnCode": ")"
         << (named ? Digits(kFirstTransaction + transaction, 6) : "*") << R"(", "RespCode": ")"
         << (named ? "000" : "*") << R"(", "CurrencyCode": )" << (named ? 978 : 0) << '}';
  }

 private:
  std::ofstream out_;
  int rows_ = 0;
};

}  // namespace

std::string AtmName(int atm) { return "BRANCHATM" + Digits(atm, 7); }

std::string GroupName(int atm) { return "BRANCHES" + Digits(atm / kAtmsOfGroup, 4); }

ManyAtms::ManyAtms(int atms, RowOrder order)
    : path_(std::filesystem::temp_directory_path() / "voatm-withdrawals.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot create " + path_);
  try {
    std::filesystem::copy(SAMPLE_HOME, path_, std::filesystem::copy_options::recursive);
    WriteAtms(atms);
    WriteProperties(atms, order);
    WriteSettings(atms);
    setenv("VODIR_HOME", path_.c_str(), 1);
    Serve();
  } catch (...) {
    std::filesystem::remove_all(path_);
    throw;
  }
}

ManyAtms::~ManyAtms() {
  kill(host_, SIGTERM);
  waitpid(host_, nullptr, 0);
  std::filesystem::remove_all(path_);
}

void ManyAtms::WriteAtms(int atms) const {
  std::ofstream out(path_ + "/tables/atm_memory.json");
  for (int atm = 0; atm < atms; ++atm) {
    out << (atm == 0 ? "[\n" : ",\n") << R"({"AtmId": ")" << AtmName(atm)
        << R"(", "GroupingKey": ")" << GroupName(atm) << R"("})";
  }
  out << "\n]\n";
}

void ManyAtms::WriteProperties(int atms, RowOrder order) {
  PropertyFile file(path_ + "/tables/atm_property.json");
  const int groups = (atms + kAtmsOfGroup - 1) / kAtmsOfGroup;
  if (order == RowOrder::kOwnFirst) {
    for (int group = 0; group < groups; ++group) {
      file.Add(group * kAtmsOfGroup, AtmName(group * kAtmsOfGroup), 0);
    }
  }
  if (order == RowOrder::kByTransaction) {
    for (int transaction = kTransactions; transaction >= 0; --transaction) {
      for (int group = 0; group < groups; ++group) file.Add(group * kAtmsOfGroup, "*", transaction);
    }
  } else {
    for (int group = 0; group < groups; ++group) {
      for (int transaction = 0; transaction <= kTransactions; ++transaction) {
        file.Add(group * kAtmsOfGroup, "*", transaction);
      }
    }
  }
  property_rows_ = file.rows();
}

// The tables have as many slots as they have rows.
void ManyAtms::WriteSettings(int atms) const {
  std::ofstream(path_ + "/cfg/vokernel.cfg")
      << "[CHANNEL]\nORGKEY " << 0x38000000 + 16 * getpid() << '\n';
  std::ofstream(path_ + "/cfg/vobusiness.cfg")
      << "[VOBUSINESS]\nMAXATM " << atms << "\nMAXFIT 16\nMAXATMPROPERTY "
      << std::max(property_rows_, 16) << "\nMAXATMSTATUS 32\nUTCFLAG No\n";
}

void ManyAtms::Serve() {
  int output[2];
  if (pipe(output) != 0) throw std::runtime_error("cannot open a pipe");
  host_ = fork();
  if (host_ < 0) throw std::runtime_error("cannot start a process");
  if (host_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(output[1], STDOUT_FILENO);
    execl(VOATM, "voatm", "serve", "--home", path_.c_str(), nullptr);
    _exit(127);
  }
  close(output[1]);
  FILE* const said = fdopen(output[0], "r");
  char line[256] = "";
  while (fgets(line, sizeof line, said) != nullptr && std::string(line) != "ready\n") {
  }
  const bool ready = std::string(line) == "ready\n";
  fclose(said);
  if (ready) return;
  waitpid(host_, nullptr, 0);
  throw std::runtime_error("voatm serve did not start on " + path_);
}
