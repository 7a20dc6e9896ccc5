// What one outside-tool run costs beyond the tool itself, and what parsing Docker's output costs.
#include <string>

#include <benchmark/benchmark.h>

#include "scanner/containers.h"
#include "tools/tools.h"

namespace {

void BM_RunTrue(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(corvane::run("/bin/true", {}, 5));
}
BENCHMARK(BM_RunTrue)->Unit(benchmark::kMicrosecond);

void BM_ParseDockerOutput(benchmark::State& state) {
  std::string ps;
  std::string stats;
  for (int i = 0; i < state.range(0); ++i) {
    const std::string id = "c" + std::to_string(i) + std::string(60, 'f');
    ps += R"({"Command":"\"docker-entrypoint.sh postgres\"","ID":")" + id +
          R"(","Image":"postgres:16","Labels":"com.docker.compose.project=shop,com.docker.compose.service=db,)"
          R"(com.docker.compose.version=2.29.1","Names":"shop-db-)" + std::to_string(i) +
          R"(","Ports":"0.0.0.0:5432->5432/tcp","State":"running","Status":"Up 2 hours"})" "\n";
    stats += R"({"BlockIO":"1.2MB / 0B","CPUPerc":"0.05%","Container":")" + id + R"(","ID":")" + id +
             R"(","MemPerc":"1.20%","MemUsage":"95.3MiB / 7.7GiB","Name":"shop-db","NetIO":"1kB / 0B",)"
             R"("PIDs":"7"})" "\n";
  }
  for (auto _ : state) benchmark::DoNotOptimize(corvane::containersFromDockerOutput(ps, stats));
}
BENCHMARK(BM_ParseDockerOutput)->Arg(10)->Arg(100)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
