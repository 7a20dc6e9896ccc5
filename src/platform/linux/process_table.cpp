#include "platform/process_table.h"

#include <cstdio>
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

// Clock ticks per second and the boot time never change while the program runs.
struct Clock {
  uint64_t ticksPerSecond = 100;
  int64_t bootSeconds = 0;
};

std::optional<std::string_view> readAt(int directory, const char* name, std::vector<char>& buffer);

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

std::optional<std::string> readLinkAt(int directory, const char* name) {
  char target[4096];
  const ssize_t length = readlinkat(directory, name, target, sizeof target);
  if (length <= 0) return std::nullopt;
  return std::string(target, static_cast<size_t>(length));
}

void formatPid(int32_t pid, char (&name)[16]) { std::snprintf(name, sizeof name, "%d", pid); }

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
  // The directory of the process read last; readings of one process go through it, so that a pid
  // reused halfway fails to read instead of mixing two processes.
  int32_t openPid = 0;
  int pidFd = -1;
  std::optional<TcpTable> sockets;
  std::unordered_set<uint64_t> matched;

  ~State() {
    if (pidFd >= 0) close(pidFd);
    if (proc) closedir(proc);
  }

  int directory(int32_t pid) {
    if (pid == openPid && pidFd >= 0) return pidFd;
    if (pidFd >= 0) close(pidFd);
    char name[16];
    formatPid(pid, name);
    openPid = pid;
    pidFd = procFd < 0 ? -1 : openat(procFd, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return pidFd;
  }

  // The owner of the pid directory is the process's effective user. The user's own processes show
  // the user, or root when they run a setuid-root program; everything else is another user's and
  // skipped without a read. The real user (from status) decides the rest.
  bool mayBeOwn(int32_t pid) const {
    char name[16];
    formatPid(pid, name);
    struct stat info;
    if (procFd < 0 || fstatat(procFd, name, &info, 0) != 0) return false;
    return info.st_uid == uid || info.st_uid == 0;
  }

  bool allSocketsMatched() const { return sockets && matched.size() == sockets->size(); }
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

std::optional<ProcessStats> ProcessTable::stats(int32_t pid) {
  State& s = *state_;
  if (!s.mayBeOwn(pid)) return std::nullopt;
  const int directory = s.directory(pid);
  if (directory < 0) return std::nullopt;
  const auto statusText = readAt(directory, "status", s.buffer);
  if (!statusText) return std::nullopt;
  const StatusFields status = parseStatus(*statusText);
  if (status.realUid != s.uid) return std::nullopt;
  const auto statText = readAt(directory, "stat", s.buffer);
  if (!statText) return std::nullopt;
  const auto stat = parseStat(*statText);
  if (!stat) return std::nullopt;
  const uint64_t ticksPerSecond = clock().ticksPerSecond;
  ProcessStats stats;
  stats.ppid = stat->ppid;
  stats.started = dateFromTicks(stat->starttime);
  stats.cpu = (stat->utime + stat->stime) * 1'000'000'000 / ticksPerSecond;
  stats.footprint = (status.rssAnonKB + status.vmSwapKB) * 1024;
  return stats;
}

std::vector<std::string> ProcessTable::args(int32_t pid) {
  const int directory = state_->directory(pid);
  if (directory < 0) return {};
  const auto bytes = readAt(directory, "cmdline", state_->buffer);
  return bytes ? splitAtNul(*bytes) : std::vector<std::string>();
}

std::optional<std::string> ProcessTable::executable(int32_t pid) {
  const int directory = state_->directory(pid);
  if (directory < 0) return std::nullopt;
  auto link = readLinkAt(directory, "exe");
  if (!link) return std::nullopt;
  return std::string(withoutDeletedMark(*link));
}

std::optional<std::string> ProcessTable::workingDirectory(int32_t pid) {
  const int directory = state_->directory(pid);
  if (directory < 0) return std::nullopt;
  return readLinkAt(directory, "cwd");
}

std::vector<TcpSocket> ProcessTable::tcpSockets(int32_t pid) {
  State& s = *state_;
  if (!s.sockets) s.sockets = readTcpTable(s.uid);
  std::vector<TcpSocket> found;
  if (s.allSocketsMatched()) return found;
  const int directory = s.directory(pid);
  if (directory < 0) return found;
  const int fdDirectory = openat(directory, "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fdDirectory < 0) return found;
  DIR* fds = fdopendir(fdDirectory);
  if (!fds) {
    close(fdDirectory);
    return found;
  }
  char link[64];
  while (const dirent* entry = readdir(fds)) {
    if (entry->d_name[0] == '.') continue;
    const ssize_t length = readlinkat(fdDirectory, entry->d_name, link, sizeof link);
    if (length <= 0) continue;
    const auto inode = socketInode(std::string_view(link, static_cast<size_t>(length)));
    if (!inode) continue;
    const auto socket = s.sockets->find(*inode);
    if (socket == s.sockets->end()) continue;
    found.push_back(socket->second);
    s.matched.insert(*inode);
    if (s.allSocketsMatched()) break;
  }
  closedir(fds);
  return found;
}

bool processGone(int32_t pid) {
  if (pid < 1) return true;
  char path[32];
  std::snprintf(path, sizeof path, "/proc/%d/stat", pid);
  std::vector<char> buffer(1024);
  const auto text = readAt(AT_FDCWD, path, buffer);
  if (!text) return true;
  const auto stat = parseStat(*text);
  return !stat || stat->state == 'Z' || stat->state == 'X';
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

uint32_t currentUser() { return static_cast<uint32_t>(getuid()); }

}  // namespace corvane::platform
