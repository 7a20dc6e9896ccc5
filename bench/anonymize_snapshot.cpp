// The cost of anonymizing a busy developer's snapshot: 600 processes spread over a dozen projects.
#include <string>

#include <benchmark/benchmark.h>

#include "anonymize/anonymizer.h"

namespace {

corvane::Snapshot busySnapshot() {
  corvane::Snapshot snapshot;
  for (int i = 0; i < 600; ++i) {
    const std::string project = "/Users/ann/Projects/client-" + std::to_string(i % 12);
    corvane::Proc p;
    p.pid = 1000 + i;
    p.ppid = 1;
    p.path = i % 3 == 0 ? "/opt/homebrew/bin/node" : project + "/bin/worker-" + std::to_string(i % 7);
    p.name = corvane::lastPathComponent(p.path);
    p.cwd = project + "/packages/app-" + std::to_string(i % 5);
    p.args = {p.path, project + "/node_modules/.bin/vite", "--port", std::to_string(3000 + i),
              "--api-key=sk_live_" + std::to_string(i) + "abcdefghijklmnop", "ann@build.example.com"};
    snapshot.procs.push_back(p);
  }
  return snapshot;
}

void BM_AnonymizeSnapshot(benchmark::State& state) {
  const corvane::Snapshot snapshot = busySnapshot();
  const corvane::Anonymizer anonymizer("/Users/ann", "salt");
  for (auto _ : state) benchmark::DoNotOptimize(anonymizer.anonymize(snapshot));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(snapshot.procs.size()));
}
BENCHMARK(BM_AnonymizeSnapshot)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
