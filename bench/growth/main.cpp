// Measures how cost grows with slots and with processes.
//
//   voatm_growth DIRECTORY     writes performance.md and the data of its pictures there
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/growth/lookups.h"
#include "bench/processes.h"
#include "bench/support.h"

namespace {

using namespace growth;
using bench::Throughput;

constexpr int kSlots[] = {100, 300, 1000, 3000, 10000, 32000};
constexpr int kProcesses[] = {1, 2, 4, 8, 16, 32, 64};
constexpr int kContendedSlots = 100;
constexpr double kContendedSeconds = 2;

using Grown = std::vector<Costs>;  // of one lookup, by kSlots

std::string Number(double value, const char* unit) {
  char text[32];
  snprintf(text, sizeof text, value < 10 ? "%.2f" : value < 100 ? "%.1f" : "%.0f", value);
  return std::string(text) + unit;
}

std::string Time(double seconds) {
  if (seconds < 1e-6) return Number(seconds * 1e9, " ns");
  if (seconds < 1e-3) return Number(seconds * 1e6, " us");
  return Number(seconds * 1e3, " ms");
}

std::string Thousands(int number) {
  std::string text = std::to_string(number);
  if (text.size() > 3) text.insert(text.size() - 3, ",");
  return text;
}

class Document {
 public:
  explicit Document(const std::string& path) : out_(path) {}

  void Say(const char* text) { out_ << text << '\n'; }

  // A table with a line for each lookup and a column for each number of slots.
  template <typename Figure>
  void Table(const std::vector<Grown>& lookups, bool locked, Figure figure) {
    out_ << "| Lookup |";
    for (const int slots : kSlots) out_ << ' ' << Thousands(slots) << " |";
    out_ << "\n|---|";
    for (std::size_t i = 0; i < std::size(kSlots); ++i) out_ << "---|";
    out_ << '\n';
    for (std::size_t i = 0; i < kLookupCount; ++i) {
      if (locked && lookups[i][0].pairs == 0) continue;
      out_ << "| " << kLookups[i].name << " |";
      for (const Costs& costs : lookups[i]) out_ << ' ' << figure(costs) << " |";
      out_ << '\n';
    }
    out_ << '\n';
  }

  void Table(const std::vector<Throughput>& contended) {
    Say("| Processes | Operations a second | Against one process | Median wait | 99th percentile "
        "|");
    Say("|---|---|---|---|---|");
    for (std::size_t i = 0; i < contended.size(); ++i) {
      const Throughput& of = contended[i];
      out_ << "| " << kProcesses[i] << " | " << Number(of.operations, "") << " | "
           << Number(of.operations / contended[0].operations, "") << " | " << Time(of.median)
           << " | " << Time(of.p99) << " |\n";
    }
    out_ << '\n';
  }

 private:
  std::ofstream out_;
};

// So many processes read random records of one table under locks.
Throughput Contend(int processes) {
  const PrivateTable<AtmMemoryTable> table(kContendedSlots);
  for (int slot = 0; slot < kContendedSlots; ++slot) SetId(table[slot].AtmId, slot);
  const PrivateSet set(kContendedSlots);
  QuietDriver driver;
  driver.util.LockFlag = true;
  driver.util.AtmMemoryPtr = table.records();
  driver.util.AtmMemorySemid = set.id();
  driver.util.MaxAtm = kContendedSlots;
  return bench::RunProcesses(processes, kContendedSeconds, [&](int process) {
    const auto random = std::make_shared<std::minstd_rand>(static_cast<unsigned>(process) + 1);
    return [&, random] {
      static AtmMemoryTable record;
      char id[20];
      SetId(id, static_cast<int>((*random)() % kContendedSlots));
      if (driver.util.ReadAtmMemory(id, &record) != 1) throw std::runtime_error("no such ATM");
    };
  });
}

// The processor and the system, as they name themselves.
std::string Machine() {
  std::string model = "unknown processor";
  std::ifstream cpus("/proc/cpuinfo");
  for (std::string line; std::getline(cpus, line);) {
    if (line.rfind("model name", 0) == 0) model = line.substr(line.find(": ") + 2);
  }
  utsname system = {};
  uname(&system);
  std::ostringstream text;
  text << sysconf(_SC_NPROCESSORS_ONLN) << " processors, " << model << ", " << system.sysname << ' '
       << system.release;
  return text.str();
}

void WriteFigures(Document& document, const std::vector<Grown>& lookups) {
  document.Say(("## Absolute figures\n\nTaken on: " + Machine() +
                ". A machine that does other work at the same time shows larger ones.\n")
                   .c_str());
  document.Say("Without locks, by slots:\n");
  document.Table(lookups, false, [](const Costs& costs) { return Time(costs.unlocked); });
  document.Say("Plain loops, by slots:\n");
  document.Table(lookups, false, [](const Costs& costs) { return Time(costs.plain); });
  document.Say("The limit, by slots:\n");
  document.Table(lookups, false, [](const Costs& costs) { return Time(costs.limit); });
  document.Say("With locks, by slots:\n");
  document.Table(lookups, true, [](const Costs& costs) { return Time(costs.locked); });
}

void WriteDocument(const std::string& path, const std::vector<Grown>& lookups,
                   const std::vector<Throughput>& contended) {
  Document document(path);
  document.Say(R"(# Performance

How cost grows with the slots of a table and with the processes that share it. `./dev bench growth`
measures this and writes the page; a figure is the median of 15 runs in which what is compared takes
its turn, of processor time where one process works. Ratios come first: they hold on other machines
too.

Each lookup is answered by the last slot of its table, so it looks at all. *Limit*: a loop that loads
eight bytes of each record and does nothing with them. *Plain*: the loop that a user would write,
with `strcmp`. *Pairs*: as many bare semaphore calls as the lookup makes, and nothing else.

| Lookup | Operation |
|---|---|)");
  for (std::size_t i = 0; i < kLookupCount; ++i) {
    document.Say(
        ("| " + std::string(kLookups[i].name) + " | " + kLookups[i].operation + " |").c_str());
  }
  document.Say(R"(
A property lookup looks for a transaction that no row names and ends at the ATM's row for any; the
card is one that only the catch-all takes, which no lock guards.

## Without locks

![A lookup's time against the slots of its table, without locks](performance-slots.svg)

Against the limit, by slots:
)");
  document.Table(lookups, false,
                 [](const Costs& costs) { return Number(costs.unlocked / costs.limit, ""); });
  document.Say("Against the plain loop, by slots:\n");
  document.Table(lookups, false,
                 [](const Costs& costs) { return Number(costs.unlocked / costs.plain, ""); });
  document.Say(R"(## With locks

![A lookup's time against the slots of its table, with and without locks](performance-locks.svg)

Against bare semaphore pairs, by slots:
)");
  document.Table(lookups, true,
                 [](const Costs& costs) { return Number(costs.locked / costs.pairs, ""); });
  document.Say("Against the same lookup without locks, by slots:\n");
  document.Table(lookups, true,
                 [](const Costs& costs) { return Number(costs.locked / costs.unlocked, ""); });
  document.Say(("## Many processes\n\n"
                "![Operations a second and waits against the number of processes]"
                "(performance-processes.svg)\n\n"
                "Processes that read random records of one ATM table of " +
                std::to_string(kContendedSlots) +
                " slots under locks, each as fast as it can.\n"
                "The wait is what an operation makes its caller wait, from the call to the answer; "
                "half of the table\nis visited on the way.\n")
                   .c_str());
  document.Table(contended);
  WriteFigures(document, lookups);
}

// A line for each number of slots: the slots, then all costs of each lookup in microseconds.
void WriteData(const std::string& directory, const std::vector<Grown>& lookups,
               const std::vector<Throughput>& contended) {
  std::ofstream slots(directory + "/slots.dat");
  for (std::size_t i = 0; i < std::size(kSlots); ++i) {
    slots << kSlots[i];
    for (const Grown& grown : lookups) {
      const Costs& costs = grown[i];
      for (const double seconds :
           {costs.limit, costs.plain, costs.unlocked, costs.pairs, costs.locked}) {
        slots << ' ' << seconds * 1e6;
      }
    }
    slots << '\n';
  }
  std::ofstream processes(directory + "/processes.dat");
  for (std::size_t i = 0; i < contended.size(); ++i) {
    const Throughput& of = contended[i];
    processes << kProcesses[i] << ' ' << of.operations << ' ' << of.median * 1e6 << ' '
              << of.p99 * 1e6 << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: voatm_growth DIRECTORY\n");
    return 2;
  }
  std::vector<Grown> lookups;
  for (std::size_t i = 0; i < kLookupCount; ++i) {
    fprintf(stderr, "%s\n", kLookups[i].name);
    Grown grown;
    for (const int slots : kSlots) grown.push_back(kLookups[i].measure(slots));
    lookups.push_back(grown);
  }
  std::vector<Throughput> contended;
  for (const int processes : kProcesses) {
    fprintf(stderr, "%d processes\n", processes);
    contended.push_back(Contend(processes));
  }
  const std::string directory = argv[1];
  WriteDocument(directory + "/performance.md", lookups, contended);
  WriteData(directory, lookups, contended);
  return 0;
}
