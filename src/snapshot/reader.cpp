#include "snapshot/reader.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <thread>
#include <unordered_set>

#include "platform/paths.h"
#include "platform/process_table.h"
#include "base/utf8.h"

namespace corvane {

namespace {

std::vector<std::string> repaired(const std::vector<std::string>& strings) {
  std::vector<std::string> texts;
  texts.reserve(strings.size());
  for (const auto& s : strings) texts.push_back(repairedUTF8(s));
  return texts;
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

Proc procOf(int32_t pid, const platform::ProcessRecord& record, std::vector<std::string> args) {
  Proc proc;
  proc.pid = pid;
  proc.ppid = record.ppid;
  proc.started = record.started;
  proc.cpuTimeNanoseconds = record.cpuTimeNanoseconds;
  proc.footprint = record.footprint;
  proc.args = std::move(args);
  if (record.executable) {
    proc.path = repairedUTF8(*record.executable);
  } else if (!proc.args.empty()) {
    proc.path = proc.args.front();
  }
  proc.cwd = record.workingDirectory ? repairedUTF8(*record.workingDirectory) : "/";
  proc.name = lastPathComponent(proc.path);
  proc.responsible = record.responsible;
  fillPorts(proc, record.sockets);
  return proc;
}

// One reader's share of the table: the processes of `pids` in their order.
struct Share {
  std::vector<Proc> procs;
  std::vector<std::pair<int32_t, CachedArgs>> freshArgs;
};

// The arguments of a process are read once for its whole life: a cache entry only counts for the
// process that has this pid and exactly this start time, so a reused pid reads them afresh. The cache
// is only read here; what was read afresh goes to `freshArgs`, stored once all readers are done.
void readShare(const std::vector<int32_t>& pids, size_t begin, size_t end, const ArgsCache& cache, Share& share) {
  platform::ProcessTable table;
  for (size_t i = begin; i < end; ++i) {
    const int32_t pid = pids[i];
    if (pid < 1) continue;
    const auto cached = cache.find(pid);
    platform::ProcessReading reading;
    reading.knownArgs = [&](Date started) -> const std::vector<std::string>* {
      return cached != cache.end() && cached->second.started == started ? &cached->second.args : nullptr;
    };
    reading.wantsSockets = platform::socketsWanted;
    auto record = table.read(pid, reading);
    if (!record) continue;
    std::vector<std::string> args;
    if (record->args) {
      args = repaired(*record->args);
      share.freshArgs.emplace_back(pid, CachedArgs{record->started, args});
    } else {
      args = cached->second.args;
    }
    share.procs.push_back(procOf(pid, *record, std::move(args)));
  }
}

// Nearly all of a snapshot is the kernel answering one small read after another, so a large table
// is split between the cores; a small one isn't worth a thread.
size_t readerCount(size_t pids) {
  constexpr size_t pidsPerReader = 256;
  const size_t cores = std::max(1u, std::min(4u, std::thread::hardware_concurrency()));
  return std::max<size_t>(1, std::min(cores, pids / pidsPerReader));
}

}  // namespace

Snapshot snapshot(ArgsCache& argsCache) {
  const std::vector<int32_t> pids = platform::ProcessTable().pids();
  const size_t readers = readerCount(pids.size());
  std::vector<Share> shares(readers);
  std::vector<std::thread> threads;
  for (size_t r = 1; r < readers; ++r) {
    try {
      threads.emplace_back(readShare, std::cref(pids), pids.size() * r / readers, pids.size() * (r + 1) / readers,
                           std::cref(argsCache), std::ref(shares[r]));
    } catch (const std::system_error&) {
      readShare(pids, pids.size() * r / readers, pids.size() * (r + 1) / readers, argsCache, shares[r]);
    }
  }
  readShare(pids, 0, pids.size() / readers, argsCache, shares[0]);
  for (auto& thread : threads) thread.join();

  std::vector<Proc> procs;
  std::unordered_set<int32_t> seen;
  for (auto& share : shares) {
    for (auto& proc : share.procs) {
      seen.insert(proc.pid);
      procs.push_back(std::move(proc));
    }
    for (auto& [pid, args] : share.freshArgs) argsCache[pid] = std::move(args);
  }
  std::erase_if(argsCache, [&](const auto& entry) { return !seen.contains(entry.first); });
  return Snapshot{std::move(procs), now()};
}

std::vector<Proc> ancestors(int32_t pid) {
  platform::ProcessTable table;
  platform::ProcessReading reading;
  reading.wantsSockets = [](std::string_view) { return false; };
  std::vector<Proc> chain;
  std::unordered_set<int32_t> visited{pid};
  const auto self = table.read(pid, reading);
  for (int32_t next = self ? self->ppid : 0; next > 0 && visited.insert(next).second;) {
    const auto record = table.read(next, reading);
    if (!record) break;
    chain.push_back(procOf(next, *record, repaired(record->args.value_or(std::vector<std::string>()))));
    next = record->ppid;
  }
  return chain;
}

}  // namespace corvane
