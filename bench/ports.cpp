// The cost of probing ports: one free port, and a run of a thousand (the worst case is 65535 of them).
#include <benchmark/benchmark.h>

#include "platform/port_probe.h"
#include "ports/ports.h"

namespace {

using namespace corvane;

void BM_FirstFreeFromHighPort(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Ports::firstFree(62000));
}
BENCHMARK(BM_FirstFreeFromHighPort)->Unit(benchmark::kMicrosecond);

void BM_ProbeThousandPorts(benchmark::State& state) {
  for (auto _ : state)
    for (uint32_t p = 62000; p < 63000; ++p)
      benchmark::DoNotOptimize(platform::canBind(platform::AddressFamily::ipv4, static_cast<uint16_t>(p)) &&
                               platform::canBind(platform::AddressFamily::ipv6, static_cast<uint16_t>(p)));
}
BENCHMARK(BM_ProbeThousandPorts)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
