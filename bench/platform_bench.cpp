// What the platform's services cost beside the least that could do their work.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string>

#include "vocfgutil.h"
#include "vodebugutil.h"

namespace {

std::string FiveDigits(std::size_t number) { return std::to_string(100000 + number).substr(1); }

// A configuration of that size with one more entry at its end, in a file of the benchmark's own.
class ConfigurationFile {
 public:
  explicit ConfigurationFile(std::size_t size) {
    std::string text = "# Operation keys of the branch terminals\nREVISION      12\n";
    for (std::size_t id = 0; text.size() < size - 128; ++id) {
      if (id % 50 == 0)
        text += "\n[BRANCH" + FiveDigits(id / 50) + "]\n# key  code account amount\n";
      text += "ATM_BRANCH_" + FiveDigits(id) + "   011000   20   5000\n";
    }
    text += "ATM_BRANCH_LAST    013000   10   0\n";
    const int file = mkstemp(path_);
    if (file < 0 || write(file, text.data(), text.size()) < 0) std::abort();
    close(file);
    const std::size_t group = text.rfind('[') + 1;
    key_ = text.substr(group, text.find(']', group) - group) + "#ATM_BRANCH_LAST";
  }
  ~ConfigurationFile() { unlink(path_); }
  ConfigurationFile(const ConfigurationFile&) = delete;
  ConfigurationFile& operator=(const ConfigurationFile&) = delete;

  const char* path() const { return path_; }
  const char* key() const { return key_.c_str(); }

 private:
  char path_[32] = "/tmp/platform_bench_XXXXXX";
  std::string key_;
};

void SearchOnce(benchmark::State& state, std::size_t size) {
  const ConfigurationFile file(size);
  char value[VoCfgUtil::kMaxField + 1];
  while (state.KeepRunning()) {
    VoCfgUtil reader;
    if (reader.cfg_open(file.path()) != 0 || reader.cfg_search(file.key(), value, 2) != 0) {
      state.SkipWithError("the key was not found");
      break;
    }
    reader.cfg_close();
    benchmark::DoNotOptimize(value);
  }
}

void ReadOnce(benchmark::State& state, std::size_t size) {
  const ConfigurationFile file(size);
  static char text[64 * 1024];
  while (state.KeepRunning()) {
    const int descriptor = open(file.path(), O_RDONLY);
    if (read(descriptor, text, sizeof text) <= 0) {
      state.SkipWithError("the file was not read");
      break;
    }
    close(descriptor);
    benchmark::DoNotOptimize(text);
  }
}

BENCHMARK_CAPTURE(SearchOnce, 4k, std::size_t{4096})->Name("config_4k/op");
BENCHMARK_CAPTURE(ReadOnce, 4k, std::size_t{4096})->Name("config_4k/base");
BENCHMARK_CAPTURE(SearchOnce, 64k, std::size_t{65536})->Name("config_64k/op");
BENCHMARK_CAPTURE(ReadOnce, 64k, std::size_t{65536})->Name("config_64k/base");

class EmptyTrace {
 public:
  [[gnu::noinline, gnu::format(printf, 3, 4)]] void trace(int level, const char* format, ...);
};

void EmptyTrace::trace(int level, const char* format, ...) {
  benchmark::DoNotOptimize(level);
  benchmark::DoNotOptimize(format);
}

template <typename Trace>
void TraceFiltered(benchmark::State& state) {
  Trace trace;
  for (auto _ : state) trace.trace(7, "Memory[ %s ] Located with ChannelKeyId[ %d ]", "ATM", 12);
}

BENCHMARK_TEMPLATE(TraceFiltered, VoDebugUtil)->Name("trace_filtered/op");
BENCHMARK_TEMPLATE(TraceFiltered, EmptyTrace)->Name("trace_filtered/base");

}  // namespace
