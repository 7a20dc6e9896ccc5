// What the stopper's checks cost per process: the ownership test before any signal, and one round
// of the wait's check over processes that are already gone.
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "stop/stopper.h"

namespace {

void BM_MayStopOwnChild(benchmark::State& state) {
  const pid_t child = fork();
  if (child == 0) {
    pause();
    _exit(0);
  }
  for (auto _ : state) benchmark::DoNotOptimize(corvane::Stopper::mayStop(child));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}
BENCHMARK(BM_MayStopOwnChild)->Unit(benchmark::kMicrosecond);

// Zombies: the wait returns after its first check, without sleeping.
void BM_WaitGoneZombies(benchmark::State& state) {
  std::vector<int32_t> zombies;
  for (int i = 0; i < state.range(0); ++i) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    zombies.push_back(child);
  }
  for (int32_t pid : zombies) {
    siginfo_t info;
    waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);  // exited, left unreaped
  }
  std::vector<corvane::platform::ScannedProcess> scanned;
  for (int32_t pid : zombies)
    scanned.push_back({pid, corvane::platform::processStarted(pid).value_or(corvane::Date{})});
  for (auto _ : state) benchmark::DoNotOptimize(corvane::Stopper::waitGone(scanned, 5));
  for (int32_t pid : zombies) waitpid(pid, nullptr, 0);
}
BENCHMARK(BM_WaitGoneZombies)->Arg(1)->Arg(20)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
