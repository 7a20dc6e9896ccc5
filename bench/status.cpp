// `corvane status` as a whole process against what a person would run instead, `ps -eo pid,ppid,rss,args`
// and `ss -tlnp`, in turn, pair by pair, with 400 and then 2,000 extra processes of the user (half of
// them listening on a port); then `status` while a stand-in container engine with three containers
// answers on its socket, against `status` without one. Prints medians and the median of the ratios of
// each pair: pairs keep the ratio fair on a machine whose speed drifts. Runs the corvane built beside
// it, or $CORVANE_EXE, with data and settings in a temporary directory.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "children.h"
#include "costs.h"
#include "platform/paths.h"
#include "support/fake_engine.h"

namespace {

using bench::Cost;

constexpr int rounds = 21;

std::string corvaneExecutable() {
  if (const char* named = std::getenv("CORVANE_EXE")) return named;
  const std::string own = corvane::platform::ownExecutablePath();
  return own.substr(0, own.rfind('/') + 1) + "corvane";
}

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Runs `a` and `b` in turn and prints their medians and the medians of the pairs' ratios.
void compare(const char* title, const std::vector<const char*>& a, const std::vector<const char*>& b,
             const std::function<void(bool)>& before = [](bool) {}) {
  std::vector<Cost> costsA, costsB;
  std::vector<double> cpuRatios, wallRatios;
  bool ran = true;
  for (int round = 0; round < rounds; ++round) {
    before(true);
    const Cost costA = bench::measure([&](Cost& cost) { ran &= bench::runQuietly(a, cost); });
    before(false);
    const Cost costB = bench::measure([&](Cost& cost) { ran &= bench::runQuietly(b, cost); });
    costsA.push_back(costA);
    costsB.push_back(costB);
    cpuRatios.push_back(costA.cpu / costB.cpu);
    wallRatios.push_back(costA.wall / costB.wall);
  }
  const Cost medianA = bench::median(costsA), medianB = bench::median(costsB);
  std::printf("%s%s\n", title, ran ? "" : " (some runs failed)");
  std::printf("  medians, ms: %.1f cpu %.1f wall, against %.1f cpu %.1f wall\n", medianA.cpu, medianA.wall,
              medianB.cpu, medianB.wall);
  std::printf("  median ratio of %d pairs: %.2f cpu, %.2f wall\n", rounds, medianOf(cpuRatios),
              medianOf(wallRatios));
}

}  // namespace

int main() {
  const std::string exe = corvaneExecutable();
  const std::string data = corvane::testing_support::makeTempDir("bench-data");
  setenv("XDG_DATA_HOME", data.c_str(), 1);
  setenv("XDG_CONFIG_HOME", data.c_str(), 1);
  const std::vector<const char*> status = {exe.c_str(), "status"};
  const std::vector<const char*> psAndSs = {"sh", "-c", "ps -eo pid,ppid,rss,args; ss -tlnp"};
  Cost settle;
  bench::runQuietly(status, settle);  // the first run's tool discovery is not what is measured

  for (const int extra : {400, 2000}) {
    const bench::Children children(extra);
    const std::string title = "status against ps + ss, " + std::to_string(children.ready()) + " extra processes";
    compare(title.c_str(), status, psAndSs);
  }

  const corvane::testing_support::FakeEngine engine("three");
  if (!engine.ready) {
    std::printf("the stand-in engine did not start (it needs python3)\n");
    return 1;
  }
  const std::string host = engine.host();
  compare("status with an engine of three containers, against none", status, status, [&](bool withEngine) {
    withEngine ? setenv("DOCKER_HOST", host.c_str(), 1) : setenv("DOCKER_HOST", "tcp://127.0.0.1:9", 1);
  });
  return 0;
}
