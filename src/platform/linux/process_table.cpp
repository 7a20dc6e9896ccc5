#include "platform/process_table.h"

#include <cerrno>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/proc_text.h"
#include "platform/linux/tcp_table.h"

namespace corvane::platform {

namespace {

using namespace linux_proc;

// Reads a whole /proc file into the buffer, growing it as needed. These files are generated in one
// piece, so a read that leaves room in the buffer has reached the end; that saves the read that
// would return 0.
std::optional<std::string_view> readAt(int directory, const char* name, std::vector<char>& buffer) {
  const int fd = openat(directory, name, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  size_t used = 0;
  while (true) {
    if (used == buffer.size()) buffer.resize(buffer.size() * 2);
    const ssize_t count = read(fd, buffer.data() + used, buffer.size() - used);
    if (count < 0) {
      close(fd);
      return std::nullopt;
    }
    used += static_cast<size_t>(count);
    if (count == 0 || used < buffer.size()) break;
  }
  close(fd);
  return std::string_view(buffer.data(), used);
}

// Clock ticks per second and the boot time never change while the program runs.
struct Clock {
  uint64_t ticksPerSecond = 100;
  int64_t bootSeconds = 0;
};

const Clock& clock() {
  static const Clock value = [] {
    Clock clock;
    if (const long ticks = sysconf(_SC_CLK_TCK); ticks > 0) clock.ticksPerSecond = static_cast<uint64_t>(ticks);
    std::vector<char> buffer(16 * 1024);
    if (const auto text = readAt(AT_FDCWD, "/proc/stat", buffer))
      clock.bootSeconds = bootTime(*text).value_or(0);
    return clock;
  }();
  return value;
}

std::optional<std::string> readLinkAt(int directory, const char* name) {
  char target[4096];
  const ssize_t length = readlinkat(directory, name, target, sizeof target);
  if (length <= 0) return std::nullopt;
  return std::string(target, static_cast<size_t>(length));
}

Date dateFromTicks(uint64_t ticksAfterBoot) {
  const Clock& c = clock();
  const auto micros = c.bootSeconds * 1'000'000 +
                      static_cast<int64_t>(ticksAfterBoot * 1'000'000 / c.ticksPerSecond);
  return Date(std::chrono::microseconds(micros));
}

}  // namespace

struct ProcessTable::State {
  DIR* proc = nullptr;
  int procFd = -1;
  uint32_t uid = 0;
  std::vector<char> buffer = std::vector<char>(4096);
  std::vector<char> entries = std::vector<char>(8192);
  char pathText[48];
  std::optional<TcpTable> sockets;
  std::unordered_set<uint64_t> matched;
  // Every pid asked about, and whether it may hold one of the table's sockets: its own, or one
  // inherited from an ancestor. A pid this pass has not asked about may be either; pid 0 is the
  // parent of the first processes only, and holds nothing.
  std::unordered_map<int32_t, bool> mayHold = {{0, false}};

  ~State() {
    if (proc) closedir(proc);
  }

  // "PID/leaf" (or "PID" for an empty leaf), relative to the open /proc. Paths from there cost
  // fewer calls than opening each process's directory.
  const char* path(int32_t pid, const char* leaf) {
    std::snprintf(pathText, sizeof pathText, *leaf ? "%d/%s" : "%d", pid, leaf);
    return pathText;
  }

  // The owner of the pid directory is the process's effective user. The user's own processes show
  // the user, or root when they run a setuid-root program; everything else is another user's and
  // skipped without a read. The real user (from status) decides the rest. For root every owner
  // passes, so the call would only cost time.
  bool mayBeOwn(int32_t pid) {
    if (uid == 0) return procFd >= 0;
    struct stat info;
    if (procFd < 0 || fstatat(procFd, path(pid, ""), &info, 0) != 0) return false;
    return info.st_uid == uid || info.st_uid == 0;
  }

  // A multi-call program shows the name it was started under, as the same program does on a Mac:
  // Debian's redis-server is a link to redis-check-rdb beside it. The link wins only when it leads to
  // the very file the kernel runs; a command name of 15 bytes may be cut short and is not trusted.
  std::string startedAs(int32_t pid, std::string exe, const std::string& comm) {
    const size_t slash = exe.rfind('/');
    if (comm.empty() || comm.size() >= 15 || slash == std::string::npos ||
        exe.compare(slash + 1, std::string::npos, comm) == 0)
      return exe;
    const std::string link = exe.substr(0, slash + 1) + comm;
    struct stat running, named;
    if (fstatat(procFd, path(pid, "exe"), &running, 0) != 0 || stat(link.c_str(), &named) != 0) return exe;
    if (running.st_dev != named.st_dev || running.st_ino != named.st_ino) return exe;
    return link;
  }

  bool allSocketsMatched() const { return sockets && matched.size() == sockets->size(); }

  // A process holds the sockets it opened, those it inherited, and (rarely) one passed to it. Once
  // every socket is matched to some process, only the descendants of a holder are still worth a
  // look: a pre-fork server's workers hold its listening sockets and their own connections.
  bool mayInherit(int32_t parent) const {
    const auto found = mayHold.find(parent);
    return found == mayHold.end() || found->second;
  }

  std::vector<TcpSocket> tcpSockets(int32_t pid, int32_t parent) {
    if (!sockets) {
      sockets = readTcpTable(uid);
      dropUncountableConnections(*sockets);
    }
    std::vector<TcpSocket> found;
    const bool inherits = mayInherit(parent);
    if (inherits) mayHold[pid] = true;
    if (allSocketsMatched() && !inherits) return found;
    const int fdDirectory = openat(procFd, path(pid, "fd"), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fdDirectory < 0) return found;
    // The kernel lists fds until the next entry does not fit; an entry is at most 32 bytes, so a
    // listing that leaves more room than that is complete, and the call that would return 0 is saved.
    constexpr size_t room = 64;
    while (true) {
      const ssize_t length = getdents64(fdDirectory, entries.data(), entries.size());
      if (length <= 0) break;
      if (!matchFds(fdDirectory, static_cast<size_t>(length), !inherits, found)) break;
      if (static_cast<size_t>(length) + room <= entries.size()) break;
    }
    close(fdDirectory);
    if (!found.empty()) mayHold[pid] = true;
    return found;
  }

  // Adds the sockets of the table among the fds listed in `entries`. False once all are matched and
  // `stopWhenAllMatched`: the rest of this process's fds are not worth reading then.
  bool matchFds(int fdDirectory, size_t length, bool stopWhenAllMatched, std::vector<TcpSocket>& found) {
    char link[64];
    for (size_t at = 0; at < length;) {
      const auto* entry = reinterpret_cast<const dirent64*>(entries.data() + at);
      at += entry->d_reclen;
      if (entry->d_name[0] == '.') continue;
      const ssize_t linkLength = readlinkat(fdDirectory, entry->d_name, link, sizeof link);
      if (linkLength <= 0) continue;
      const auto inode = socketInode(std::string_view(link, static_cast<size_t>(linkLength)));
      if (!inode) continue;
      const auto socket = sockets->find(*inode);
      if (socket == sockets->end()) continue;
      found.push_back(socket->second);
      matched.insert(*inode);
      if (stopWhenAllMatched && allSocketsMatched()) return false;
    }
    return true;
  }
};

ProcessTable::ProcessTable() : state_(std::make_unique<State>()) {
  state_->uid = currentUser();
  const int fd = open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  state_->proc = fdopendir(fd);
  if (!state_->proc) {
    close(fd);
    return;
  }
  state_->procFd = fd;
}

ProcessTable::~ProcessTable() = default;

std::vector<int32_t> ProcessTable::pids() {
  std::vector<int32_t> pids;
  if (!state_->proc) return pids;
  rewinddir(state_->proc);
  while (const dirent* entry = readdir(state_->proc)) {
    int32_t pid = 0;
    const char* name = entry->d_name;
    const char* end = name;
    while (*end >= '0' && *end <= '9' && pid <= 99'999'999) pid = pid * 10 + (*end++ - '0');
    if (end != name && *end == '\0') pids.push_back(pid);
  }
  return pids;
}

std::optional<ProcessRecord> ProcessTable::read(int32_t pid, const ProcessReading& reading) {
  State& s = *state_;
  s.mayHold.emplace(pid, false);
  if (!s.mayBeOwn(pid)) return std::nullopt;
  const auto statusText = readAt(s.procFd, s.path(pid, "status"), s.buffer);
  if (!statusText) return std::nullopt;
  StatusFields status = parseStatus(*statusText);
  if (status.realUid != s.uid) return std::nullopt;
  const auto statText = readAt(s.procFd, s.path(pid, "stat"), s.buffer);
  if (!statText) return std::nullopt;
  const auto stat = parseStat(*statText);
  if (!stat) return std::nullopt;

  ProcessRecord record;
  record.ppid = stat->ppid;
  record.started = dateFromTicks(stat->starttime);
  record.cpuTimeNanoseconds = (stat->utime + stat->stime) * 1'000'000'000 / clock().ticksPerSecond;
  record.footprint = (status.rssAnonKB + status.vmSwapKB) * 1024;
  const std::vector<std::string>* args = reading.knownArgs(record.started);
  if (!args) {
    const auto bytes = readAt(s.procFd, s.path(pid, "cmdline"), s.buffer);
    record.args = bytes ? splitAtNul(*bytes) : std::vector<std::string>();
    args = &*record.args;
  }
  if (auto link = readLinkAt(s.procFd, s.path(pid, "exe")))
    record.executable = s.startedAs(pid, std::string(withoutDeletedMark(*link)), status.name);
  if (auto link = readLinkAt(s.procFd, s.path(pid, "cwd"))) record.workingDirectory = withoutDeletedMark(*link);
  // Linux keeps no record of which app is responsible for a process.
  const std::string_view path = record.executable ? std::string_view(*record.executable)
                                : args->empty()     ? std::string_view()
                                                    : std::string_view(args->front());
  if (reading.wantsSockets(path)) record.sockets = s.tcpSockets(pid, record.ppid);
  return record;
}

namespace {

std::optional<StatFields> statOf(int32_t pid) {
  if (pid < 1) return std::nullopt;
  char path[32];
  std::snprintf(path, sizeof path, "/proc/%d/stat", pid);
  std::vector<char> buffer(1024);
  const auto text = readAt(AT_FDCWD, path, buffer);
  return text ? parseStat(*text) : std::nullopt;
}

bool exited(const std::optional<StatFields>& stat) { return !stat || stat->state == 'Z' || stat->state == 'X'; }

}  // namespace

std::optional<Date> processStarted(int32_t pid) {
  const auto stat = statOf(pid);
  if (!stat) return std::nullopt;
  return dateFromTicks(stat->starttime);
}

bool processGone(int32_t pid) { return exited(statOf(pid)); }

ProcessCheck checkProcess(const ScannedProcess& process) {
  using State = ProcessCheck::State;
  if (process.pid < 1) return {State::gone};
  char path[32];
  std::snprintf(path, sizeof path, "/proc/%d/stat", process.pid);
  std::vector<char> buffer(1024);
  errno = 0;
  const auto text = readAt(AT_FDCWD, path, buffer);
  // ENOENT: no such pid; ESRCH: it exited after the open. An empty file is one that exited in between too.
  if (!text && (errno == ENOENT || errno == ESRCH)) return {State::gone};
  if (!text) return {State::unknown, errno != 0 ? errno : EIO};
  if (text->empty()) return {State::gone};
  const auto stat = parseStat(*text);
  if (!stat) return {State::unknown, EIO};
  if (exited(stat) || dateFromTicks(stat->starttime) != process.started) return {State::gone};
  return {State::running};
}

std::optional<ProcessOwner> processOwner(int32_t pid) {
  if (pid < 1) return std::nullopt;
  char path[32];
  std::snprintf(path, sizeof path, "/proc/%d", pid);
  const int directory = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) return std::nullopt;
  std::vector<char> buffer(4096);
  ProcessOwner owner;
  bool known = false;
  if (const auto status = readAt(directory, "status", buffer)) {
    const StatusFields fields = parseStatus(*status);
    known = fields.realUid.has_value();
    owner.realUid = fields.realUid.value_or(0);
  }
  if (const auto exe = readLinkAt(directory, "exe")) owner.path = std::string(withoutDeletedMark(*exe));
  close(directory);
  if (!known) return std::nullopt;
  return owner;
}

}  // namespace corvane::platform
