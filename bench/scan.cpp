// What a whole scan costs (snapshot, detection, projects, idle tracking) next to the tools a person
// would run for the same picture: `ps` for the processes, then `ss -tlnp` for the ports. A cold scan
// is the first of a new scanner, as every command makes one; a warm scan is the next one of the same
// scanner, as the MCP server runs them. The machine gets 1,000 extra processes of the user, half of
// them listening on a port, and loses them again at the end.
#include <cstdio>
#include <sys/resource.h>
#include <vector>

#include "children.h"
#include "costs.h"
#include "scanner/scanner.h"

namespace {

constexpr int childCount = 1000;
constexpr int rounds = 7;

}  // namespace

int main() {
  using bench::Cost;
  std::vector<corvane::Item> items;
  std::vector<Cost> cold, warm, ps, ss;
  bool toolsRan = true;
  size_t started = 0, ready = 0, pids = 0;
  {
    const bench::Children children(childCount);
    started = children.started();
    ready = children.ready();
    for (int round = 0; round < rounds; ++round) {
      // No docker path: Docker's own commands are not what is measured.
      corvane::Scanner scanner(corvane::Tools{});
      cold.push_back(bench::measure([&](Cost&) { items = scanner.scan(); }));
      warm.push_back(bench::measure([&](Cost&) { items = scanner.scan(); }));
      ps.push_back(bench::measure(
          [&](Cost& cost) { toolsRan &= bench::runQuietly({"ps", "-eo", "pid,ppid,rss,args"}, cost); }));
      ss.push_back(bench::measure([&](Cost& cost) { toolsRan &= bench::runQuietly({"ss", "-tlnp"}, cost); }));
    }
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);

  for (const auto& item : items) pids += item.pids.size();
  std::printf("extra processes started: %zu (ready: %zu)\n", started, ready);
  std::printf("rows of the last scan: %zu, owning %zu processes\n", items.size(), pids);
  bench::printAgainstPsAndSs("scan, new scanner", "scan, warm caches", cold, warm, ps, ss, toolsRan, rounds);
  std::printf("peak resident memory of the benchmark: %.1f MB\n", usage.ru_maxrss * 1024 / 1e6);
  return 0;
}
