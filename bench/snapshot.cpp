// What a snapshot costs next to the tools a person would run for the same picture: `ps` for the
// processes, then `ss -tlnp` for the ports. The machine gets 1,000 extra processes of the user,
// half of them listening on a port, and loses them again at the end.
#include <cstdio>
#include <vector>

#include "children.h"
#include "costs.h"
#include "snapshot/reader.h"

namespace {

constexpr int childCount = 1000;
constexpr int rounds = 7;

}  // namespace

int main() {
  using bench::Cost;
  corvane::Snapshot last;
  std::vector<Cost> cold, warm, ps, ss;
  bool toolsRan = true;
  size_t started = 0, ready = 0;
  {
    const bench::Children children(childCount);
    started = children.started();
    ready = children.ready();
    corvane::ArgsCache cache;
    for (int round = 0; round < rounds; ++round) {
      corvane::ArgsCache empty;
      cold.push_back(bench::measure([&](Cost&) { last = corvane::snapshot(empty); }));
      cache = std::move(empty);
      warm.push_back(bench::measure([&](Cost&) { last = corvane::snapshot(cache); }));
      ps.push_back(bench::measure(
          [&](Cost& cost) { toolsRan &= bench::runQuietly({"ps", "-eo", "pid,ppid,rss,args"}, cost); }));
      ss.push_back(bench::measure([&](Cost& cost) { toolsRan &= bench::runQuietly({"ss", "-tlnp"}, cost); }));
    }
  }

  size_t listening = 0;
  for (const auto& proc : last.procs) listening += proc.listening.empty() ? 0 : 1;
  std::printf("extra processes started: %zu (ready: %zu)\n", started, ready);
  std::printf("processes in the snapshot: %zu, with listening ports: %zu\n", last.procs.size(), listening);
  bench::printAgainstPsAndSs("snapshot, cold cache", "snapshot, warm cache", cold, warm, ps, ss, toolsRan, rounds);
  return 0;
}
