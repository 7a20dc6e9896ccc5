#pragma once
// Wall-clock and CPU time of pieces of work, ours or a child command's, and their medians.
#include <cstdio>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace bench {

// Milliseconds.
struct Cost {
  double wall = 0;
  double cpu = 0;  // user plus system
};

inline double cpuMilliseconds(const timeval& user, const timeval& system) {
  return (user.tv_sec + system.tv_sec) * 1e3 + (user.tv_usec + system.tv_usec) / 1e3;
}

inline double ownCpuMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// Runs a command with its output thrown away; its CPU time is the child's own.
inline bool runQuietly(const std::vector<const char*>& command, Cost& cost) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  std::vector<char*> argv;
  for (const char* arg : command) argv.push_back(const_cast<char*>(arg));
  argv.push_back(nullptr);
  pid_t pid = 0;
  const bool started = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  if (!started) return false;
  int status = 0;
  rusage usage{};
  while (wait4(pid, &status, 0, &usage) < 0) {
  }
  cost.cpu = cpuMilliseconds(usage.ru_utime, usage.ru_stime);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Work that sets no CPU time of its own is charged with the CPU time this process spent on it.
inline Cost measure(const std::function<void(Cost&)>& work) {
  Cost cost;
  const auto start = std::chrono::steady_clock::now();
  const double cpuStart = ownCpuMilliseconds();
  work(cost);
  cost.wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  if (cost.cpu == 0) cost.cpu = ownCpuMilliseconds() - cpuStart;
  return cost;
}

inline Cost median(const std::vector<Cost>& costs) {
  std::vector<double> wall, cpu;
  for (const auto& cost : costs) {
    wall.push_back(cost.wall);
    cpu.push_back(cost.cpu);
  }
  std::sort(wall.begin(), wall.end());
  std::sort(cpu.begin(), cpu.end());
  return Cost{wall[wall.size() / 2], cpu[cpu.size() / 2]};
}

// The medians of the measured reading, cold and warm, beside ps + ss, and their ratios.
inline void printAgainstPsAndSs(const char* coldLabel, const char* warmLabel, const std::vector<Cost>& cold,
                                const std::vector<Cost>& warm, const std::vector<Cost>& ps,
                                const std::vector<Cost>& ss, bool toolsRan, size_t rounds) {
  const Cost coldCost = median(cold), warmCost = median(warm);
  const Cost psCost = median(ps), ssCost = median(ss);
  const Cost tools{psCost.wall + ssCost.wall, psCost.cpu + ssCost.cpu};
  std::printf("medians of %zu rounds, wall-clock and CPU milliseconds:\n", rounds);
  const auto row = [](const char* what, const Cost& cost) {
    std::printf("  %-26s %8.2f wall %8.2f cpu\n", what, cost.wall, cost.cpu);
  };
  row(coldLabel, coldCost);
  row(warmLabel, warmCost);
  row("ps -eo pid,ppid,rss,args", psCost);
  row("ss -tlnp", ssCost);
  row(toolsRan ? "ps + ss" : "ps + ss (a tool failed)", tools);
  std::printf("ratio to ps + ss (target: at most 0.50):\n");
  std::printf("  cold: %.2f wall, %.2f cpu\n", coldCost.wall / tools.wall, coldCost.cpu / tools.cpu);
  std::printf("  warm: %.2f wall, %.2f cpu\n", warmCost.wall / tools.wall, warmCost.cpu / tools.cpu);
}

}  // namespace bench
