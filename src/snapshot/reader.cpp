#include "snapshot/reader.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "platform/process_table.h"
#include "snapshot/utf8.h"

namespace corvane {

namespace {

// System services are recorded but their sockets are never read.
bool isSystemPath(std::string_view path) {
  return path.starts_with("/System/") || path.starts_with("/usr/libexec/");
}

std::vector<std::string> repaired(const std::vector<std::string>& strings) {
  std::vector<std::string> texts;
  texts.reserve(strings.size());
  for (const auto& s : strings) texts.push_back(repairedUTF8(s));
  return texts;
}

// The arguments of a process are read once for its whole life: a cache entry only counts for the
// process that has this pid and exactly this start time, so a reused pid reads them afresh.
const std::vector<std::string>& arguments(platform::ProcessTable& table, ArgsCache& cache, int32_t pid,
                                          Date started) {
  auto entry = cache.find(pid);
  if (entry != cache.end() && entry->second.started == started) return entry->second.args;
  CachedArgs fresh{started, repaired(table.args(pid))};
  if (entry != cache.end()) {
    entry->second = std::move(fresh);
    return entry->second.args;
  }
  return cache.emplace(pid, std::move(fresh)).first->second.args;
}

// Listening ports as a set; accepted connections are the established ones on a listening port. A
// port listened on over IPv4 and IPv6 counts once.
void fillPorts(Proc& proc, const std::vector<platform::TcpSocket>& sockets) {
  for (const auto& socket : sockets)
    if (socket.listening) proc.listening.push_back(socket.port);
  std::sort(proc.listening.begin(), proc.listening.end());
  proc.listening.erase(std::unique(proc.listening.begin(), proc.listening.end()), proc.listening.end());
  proc.inbound = std::count_if(sockets.begin(), sockets.end(), [&](const platform::TcpSocket& socket) {
    return !socket.listening && std::binary_search(proc.listening.begin(), proc.listening.end(), socket.port);
  });
}

}  // namespace

Snapshot snapshot(ArgsCache& argsCache) {
  platform::ProcessTable table;
  std::vector<Proc> procs;
  std::unordered_set<int32_t> seen;
  for (const int32_t pid : table.pids()) {
    if (pid < 1) continue;
    const auto stats = table.stats(pid);
    if (!stats) continue;
    Proc proc;
    proc.pid = pid;
    proc.ppid = stats->ppid;
    proc.started = stats->started;
    proc.cpu = stats->cpu;
    proc.footprint = stats->footprint;
    proc.args = arguments(table, argsCache, pid, stats->started);
    seen.insert(pid);
    if (const auto path = table.executable(pid)) {
      proc.path = repairedUTF8(*path);
    } else if (!proc.args.empty()) {
      proc.path = proc.args.front();
    }
    const auto cwd = table.workingDirectory(pid);
    proc.cwd = cwd ? repairedUTF8(*cwd) : "/";
    proc.name = lastPathComponent(proc.path);
    proc.responsible = table.responsible(pid);
    if (!isSystemPath(proc.path)) fillPorts(proc, table.tcpSockets(pid));
    procs.push_back(std::move(proc));
  }
  std::erase_if(argsCache, [&](const auto& entry) { return !seen.contains(entry.first); });
  return Snapshot{std::move(procs), now()};
}

}  // namespace corvane
