// What a snapshot costs next to the tools a person would run for the same picture: `ps` for the
// processes, then `ss -tlnp` for the ports. The machine gets 1,000 extra processes of the user,
// half of them listening on a port, and loses them again at the end.
#include <algorithm>
#include <chrono>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "snapshot/reader.h"

extern char** environ;

namespace {

constexpr int childCount = 1000;
constexpr int rounds = 7;

// A process that (every other one) listens on a loopback port, says it is ready and sleeps until killed.
pid_t startChild(bool listens, int ready) {
  const pid_t pid = fork();
  if (pid != 0) return pid;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (listens) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, 4) != 0)
      _exit(1);
  }
  const char byte = 1;
  (void)!write(ready, &byte, 1);
  while (true) pause();
}

// Wall-clock and CPU time (user plus system) of one piece of work, in milliseconds.
struct Cost {
  double wall = 0;
  double cpu = 0;
};

double cpuMilliseconds(const timeval& user, const timeval& system) {
  return (user.tv_sec + system.tv_sec) * 1e3 + (user.tv_usec + system.tv_usec) / 1e3;
}

double ownCpuMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// Runs a command with its output thrown away; its CPU time is the child's own.
bool runQuietly(const std::vector<const char*>& command, Cost& cost) {
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

Cost measure(const std::function<void(Cost&)>& work) {
  Cost cost;
  const auto start = std::chrono::steady_clock::now();
  const double cpuStart = ownCpuMilliseconds();
  work(cost);
  cost.wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  if (cost.cpu == 0) cost.cpu = ownCpuMilliseconds() - cpuStart;
  return cost;
}

Cost median(const std::vector<Cost>& costs) {
  std::vector<double> wall, cpu;
  for (const auto& cost : costs) {
    wall.push_back(cost.wall);
    cpu.push_back(cost.cpu);
  }
  std::sort(wall.begin(), wall.end());
  std::sort(cpu.begin(), cpu.end());
  return Cost{wall[wall.size() / 2], cpu[cpu.size() / 2]};
}

}  // namespace

int main() {
  int ready[2];
  if (pipe(ready) != 0) return 1;
  std::vector<pid_t> children;
  for (int i = 0; i < childCount; ++i) {
    const pid_t pid = startChild(i % 2 == 0, ready[1]);
    if (pid < 0) break;
    children.push_back(pid);
  }
  close(ready[1]);
  size_t readyCount = 0;
  char byte;
  while (readyCount < children.size() && read(ready[0], &byte, 1) == 1) ++readyCount;
  close(ready[0]);

  corvane::Snapshot last;
  std::vector<Cost> cold, warm, ps, ss;
  corvane::ArgsCache cache;
  bool toolsRan = true;
  for (int round = 0; round < rounds; ++round) {
    corvane::ArgsCache empty;
    cold.push_back(measure([&](Cost&) { last = corvane::snapshot(empty); }));
    cache = std::move(empty);
    warm.push_back(measure([&](Cost&) { last = corvane::snapshot(cache); }));
    ps.push_back(measure([&](Cost& cost) { toolsRan &= runQuietly({"ps", "-eo", "pid,ppid,rss,args"}, cost); }));
    ss.push_back(measure([&](Cost& cost) { toolsRan &= runQuietly({"ss", "-tlnp"}, cost); }));
  }

  for (const pid_t pid : children) kill(pid, SIGKILL);
  for (const pid_t pid : children)
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }

  size_t listening = 0;
  for (const auto& proc : last.procs) listening += proc.listening.empty() ? 0 : 1;
  const Cost coldCost = median(cold), warmCost = median(warm), psCost = median(ps), ssCost = median(ss);
  const Cost tools{psCost.wall + ssCost.wall, psCost.cpu + ssCost.cpu};
  std::printf("extra processes started: %zu (ready: %zu)\n", children.size(), readyCount);
  std::printf("processes in the snapshot: %zu, with listening ports: %zu\n", last.procs.size(), listening);
  std::printf("medians of %d rounds, wall-clock and CPU milliseconds:\n", rounds);
  const auto row = [](const char* what, const Cost& cost) {
    std::printf("  %-26s %8.2f wall %8.2f cpu\n", what, cost.wall, cost.cpu);
  };
  row("snapshot, cold cache", coldCost);
  row("snapshot, warm cache", warmCost);
  row("ps -eo pid,ppid,rss,args", psCost);
  row("ss -tlnp", ssCost);
  row(toolsRan ? "ps + ss" : "ps + ss (a tool failed)", tools);
  std::printf("ratio to ps + ss (target: at most 0.50):\n");
  std::printf("  cold: %.2f wall, %.2f cpu\n", coldCost.wall / tools.wall, coldCost.cpu / tools.cpu);
  std::printf("  warm: %.2f wall, %.2f cpu\n", warmCost.wall / tools.wall, warmCost.cpu / tools.cpu);
  return 0;
}
