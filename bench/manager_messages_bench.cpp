// Manager messages: packing beside a memset of the message and a memcpy of the payload.
#include <benchmark/benchmark.h>

#include "bench/support.h"
#include "vodatetimeutil.h"

namespace {

constexpr char kAtm[] = "BRANCHATM0000123";

void PackStatus(VoATMUtil& util, VoAtmMgrQMsg& message) {
  util.PackAtmStatusMsg(kAtm, "CASSETTE_A|CASSETTE_B|READER|", "PRINTER|", &message);
}

void PackLog(VoATMUtil& util, VoAtmMgrQMsg& message) {
  static const char text[] =
      "cassette B gave 3 of 5 notes; the plan was made anew from cassettes A, C and D";
  util.PackAtmLogMsg(kAtm, text, 'Y', &message);
}

void PackTrace(VoATMUtil& util, VoAtmMgrQMsg& message) {
  util.PackAtmTraceNoMsg(kAtm, 70523, &message);
}

void PackDenom(VoATMUtil& util, VoAtmMgrQMsg& message) {
  static AtmDenomStatusMsg denom = {};
  util.PackAtmDenomMsg(kAtm, &denom, &message);
}

void Pack(benchmark::State& state, void (*pack)(VoATMUtil&, VoAtmMgrQMsg&)) {
  QuietDriver driver;
  static VoAtmMgrQMsg message;
  for (auto _ : state) {
    pack(driver.util, message);
    benchmark::DoNotOptimize(message);
  }
}

// The same bytes, and the clock read as often, without a text being made of it.
void Copy(benchmark::State& state, std::size_t payload, bool stamped) {
  static VoAtmMgrQMsg message;
  static char source[sizeof message.MsgBuffer];
  for (auto _ : state) {
    memset(&message, 0, sizeof message);
    memcpy(message.MsgBuffer, source, payload);
    if (stamped) {
      VoDateTimeUtil clock;
      benchmark::DoNotOptimize(clock.getSysTime());
      benchmark::DoNotOptimize(clock.getSysDate());
    }
    benchmark::DoNotOptimize(message);
  }
}

BENCHMARK_CAPTURE(Pack, status, PackStatus)->Name("pack_status/op");
BENCHMARK_CAPTURE(Copy, status, sizeof(AtmStatusPayload), true)->Name("pack_status/base");
BENCHMARK_CAPTURE(Pack, log, PackLog)->Name("pack_log/op");
BENCHMARK_CAPTURE(Copy, log, sizeof(AtmLogPayload), true)->Name("pack_log/base");
BENCHMARK_CAPTURE(Pack, trace, PackTrace)->Name("pack_trace/op");
BENCHMARK_CAPTURE(Copy, trace, sizeof(AtmTraceNoPayload), false)->Name("pack_trace/base");
BENCHMARK_CAPTURE(Pack, denom, PackDenom)->Name("pack_denom/op");
BENCHMARK_CAPTURE(Copy, denom, sizeof(AtmDenomStatusMsg), false)->Name("pack_denom/base");

}  // namespace
