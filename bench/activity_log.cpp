// What one stop costs in the activity log once the log is full: lock, read and decode 2000 lines,
// encode and atomically replace the file. Runs in a temporary directory of its own.
#include <cstdlib>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

#include "activity/activity_log.h"

namespace {

using namespace corvane;

std::string temporaryRoot() {
  std::string pattern = std::filesystem::temp_directory_path().string() + "/corvane-bench-XXXXXX";
  const char* dir = mkdtemp(pattern.data());
  return dir ? dir : "";
}

Activity sample(int i) {
  Item item;
  item.title = "iPhone 16 Pro " + std::to_string(i);
  item.kind = Item::Kind::simulator;
  item.key = "sim:X";
  item.memory = 2'000'000'000;
  item.stop = Stop::simulator("3F2504E0-4F89-11D3-9A0C-0305E82C3301", false);
  return makeActivity(item, now(), "corvane stop");
}

void BM_AppendToFullLog(benchmark::State& state) {
  const std::string root = temporaryRoot();
  const ActivityLog log{root + "/Corvane/activity.jsonl"};
  std::vector<Activity> full;
  for (int i = 0; i < 2000; ++i) full.push_back(sample(i));
  log.write(full);
  int i = 0;
  for (auto _ : state) log.append({sample(i++)});
  std::filesystem::remove_all(root);
}
BENCHMARK(BM_AppendToFullLog)->Unit(benchmark::kMillisecond);

void BM_ReadFullLog(benchmark::State& state) {
  const std::string root = temporaryRoot();
  const ActivityLog log{root + "/Corvane/activity.jsonl"};
  std::vector<Activity> full;
  for (int i = 0; i < 2000; ++i) full.push_back(sample(i));
  log.write(full);
  for (auto _ : state) benchmark::DoNotOptimize(log.read());
  std::filesystem::remove_all(root);
}
BENCHMARK(BM_ReadFullLog)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
