// Children are started with posix_spawn (safe beside other threads, unlike a hand-written fork) and
// collected with waitpid on their own pid, so concurrent runs never take each other's exit. The wait
// for the time-out sleeps on what the system offers to watch a child's exit (a pidfd on Linux, a kqueue on
// macOS), else polls with short naps.
#include "platform/child_process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#ifdef __APPLE__
#include <ctime>
#include <sys/event.h>
#else
#include <cstdint>
#include <poll.h>
#include <sys/syscall.h>
#endif

extern char** environ;

namespace corvane::platform {

namespace {

using Clock = std::chrono::steady_clock;

enum class ExitWait {
  exited,    // the child has exited; it is still to be collected
  deadline,  // the deadline came first
  failed,    // the watch stopped working; the caller polls instead
};

#ifdef __APPLE__

timespec timeUntil(Clock::time_point deadline) {
  const auto left =
      std::clamp<Clock::duration>(deadline - Clock::now(), Clock::duration::zero(), std::chrono::seconds(60));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
  timespec value{};
  value.tv_sec = static_cast<time_t>(seconds.count());
  value.tv_nsec = static_cast<long>(std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count());
  return value;
}

// A child gets only the three descriptors of the file actions: sockets and pipes have no
// close-on-exec flag at birth here, so another thread's would otherwise leak into the child.
constexpr short extraSpawnFlags = POSIX_SPAWN_CLOEXEC_DEFAULT;

// A descriptor that becomes ready once child `pid` exits, for `waitForExit`; -1 when the system can't
// provide one, and the caller polls instead; also when the child has already exited and can't be
// watched any more (the polling wait then collects it at once). The caller closes it.
int watchExit(pid_t pid) {
  const int queue = kqueue();
  if (queue < 0) return -1;
  struct kevent change;
  EV_SET(&change, static_cast<uintptr_t>(pid), EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
  if (kevent(queue, &change, 1, nullptr, 0, nullptr) != 0) {
    close(queue);
    return -1;
  }
  return queue;
}

// Sleeps on `queue` until the child exits or `deadline` passes.
ExitWait waitForExit(int queue, Clock::time_point deadline) {
  for (;;) {
    const timespec timeout = timeUntil(deadline);
    struct kevent event;
    const int ready = kevent(queue, nullptr, 0, &event, 1, &timeout);
    if (ready > 0 && !(event.flags & EV_ERROR)) return ExitWait::exited;
    if (ready > 0 || (ready < 0 && errno != EINTR)) return ExitWait::failed;
    if (ready == 0 && Clock::now() >= deadline) return ExitWait::deadline;
  }
}

#else

int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<int64_t>(left, 0, 60'000));
}

constexpr short extraSpawnFlags = 0;

// A pidfd, on kernels that have them: it becomes readable once child `pid` exits. The caller closes it.
int watchExit(pid_t pid) { return static_cast<int>(syscall(SYS_pidfd_open, pid, 0)); }

// Sleeps on `pidfd` until the child exits or `deadline` passes.
ExitWait waitForExit(int pidfd, Clock::time_point deadline) {
  for (;;) {
    pollfd entry{pidfd, POLLIN, 0};
    const int ready = poll(&entry, 1, millisecondsUntil(deadline));
    if (ready > 0 && (entry.revents & POLLIN)) return ExitWait::exited;
    if (ready > 0 || (ready < 0 && errno != EINTR)) return ExitWait::failed;
    if (ready == 0 && Clock::now() >= deadline) return ExitWait::deadline;
  }
}

#endif

// The runs in flight, by pid, so that they can all be ended before the program exits. A pid stays
// here until its child is collected, so while it is here it can't name another process.
struct RunsInFlight {
  std::mutex mutex;
  std::set<pid_t> pids;
  bool ended = false;        // the program is exiting: no run starts, and none returns to its caller
  bool interrupted = false;  // no run starts; those in flight return as if timed out
};

// Never destroyed: threads of runs may still use it while the program exits.
RunsInFlight& runsInFlight() {
  static RunsInFlight* const runs = [] {
    auto* made = new RunsInFlight;
    std::atexit(endRunsInFlight);
    return made;
  }();
  return *runs;
}

// A run and whatever it started, such as the commands of a login shell's startup files: each run
// leads a process group of its own. While the leader is not collected its pid names the group, even
// after the leader has exited, so the group can't be another's.
void signalRun(pid_t pid, int signal) {
  kill(-pid, signal);
  kill(pid, signal);
}

void killRun(pid_t pid) { signalRun(pid, SIGKILL); }

// The caller holds the runs' mutex.
void signalEveryRun(const RunsInFlight& runs, int signal) {
  for (const pid_t pid : runs.pids) signalRun(pid, signal);
}

// Once the program exits, a caller must not act on a run that was cut short (a login-shell lookup
// would count as a miss and be written down): its thread waits here for the exit instead.
void awaitExitIfEnded(RunsInFlight& runs) {
  {
    const std::lock_guard lock(runs.mutex);
    if (!runs.ended) return;
  }
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

// Holds the pieces posix_spawn needs and releases them on every path.
class SpawnSetup {
 public:
  SpawnSetup() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
  }
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  // Standard input and error on /dev/null; output on `outputFd`, or /dev/null when it is negative.
  bool streams(int outputFd) {
    if (posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDONLY, 0) != 0) return false;
    const int outputAction = outputFd >= 0 ? posix_spawn_file_actions_adddup2(&actions_, outputFd, 1)
                                           : posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0);
    if (outputAction != 0) return false;
    return posix_spawn_file_actions_addopen(&actions_, 2, "/dev/null", O_WRONLY, 0) == 0;
  }

  // A child starts with no blocked signals and default dispositions, whatever threads of this program
  // block or ignore (an ignored SIGTERM or SIGPIPE would otherwise be inherited), and with what this
  // system adds. `ownSession` makes it a session leader, else it leads a new process group.
  bool signals(bool ownSession) {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | extraSpawnFlags;
    flags |= ownSession ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
    if (!ownSession && posix_spawnattr_setpgroup(&attributes_, 0) != 0) return false;
    return posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
           posix_spawnattr_setsigdefault(&attributes_, &all) == 0 && posix_spawnattr_setflags(&attributes_, flags) == 0;
  }

  std::optional<pid_t> spawn(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 2);
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, path.c_str(), &actions_, &attributes_, argv.data(), environ) != 0) return std::nullopt;
    return pid;
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// A wait status, or absent when the child was collected by someone else (SIGCHLD set to SIG_IGN).
using WaitStatus = std::optional<int>;

WaitStatus reapBlocking(pid_t pid) {
  int status = 0;
  for (;;) {
    if (waitpid(pid, &status, 0) == pid) return status;
    if (errno != EINTR) return std::nullopt;
  }
}

// Waits for the child's end until `deadline`, leaving it to be collected. False at the deadline with
// the child still running.
bool exitedBefore(pid_t pid, int exitWatch, Clock::time_point deadline) {
  if (exitWatch >= 0) {
    switch (waitForExit(exitWatch, deadline)) {
      case ExitWait::exited:
        return true;
      case ExitWait::deadline:
        return false;
      case ExitWait::failed:
        break;  // fall back to polling below
    }
  }
  auto nap = std::chrono::milliseconds(1);
  for (;;) {
    siginfo_t info{};
    const int asked = waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT);
    if (asked == 0 && info.si_pid == pid) return true;
    if (asked < 0 && errno != EINTR) return true;  // collected by someone else; reapBlocking tells
    const auto now = Clock::now();
    if (now >= deadline) return false;
    std::this_thread::sleep_for(std::min<Clock::duration>(nap, deadline - now));
    nap = std::min(nap * 2, std::chrono::milliseconds(20));
  }
}

Clock::time_point deadlineAfter(Clock::time_point start, double seconds) {
  // Anything beyond a year is as good as for ever, and keeps the clock arithmetic from overflowing.
  const double bounded = seconds > 0 ? std::min(seconds, 365.0 * 86400) : 0;
  return start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(bounded));
}

// The child is signalled by pid only while it has not been collected, so the pid can't have been
// reused by another process; it leaves the runs in flight just before it is collected.
WaitStatus waitWithTimeout(RunsInFlight& runs, pid_t pid, double timeoutSeconds, double killGraceSeconds) {
  const int exitWatch = watchExit(pid);
  const auto termAt = deadlineAfter(Clock::now(), timeoutSeconds);
  if (!exitedBefore(pid, exitWatch, termAt)) {
    // The leader may go at once and leave what it started behind (a login shell's background jobs):
    // whatever of the group is still there when the leader has gone, or at the end of the grace, is
    // killed.
    signalRun(pid, SIGTERM);
    exitedBefore(pid, exitWatch, deadlineAfter(termAt, killGraceSeconds));
    killRun(pid);
  }
  if (exitWatch >= 0) close(exitWatch);
  {
    const std::lock_guard lock(runs.mutex);
    runs.pids.erase(pid);
  }
  return reapBlocking(pid);
}

std::string readFromStart(int fd) {
  std::string data;
  char buffer[65536];
  off_t offset = 0;
  for (;;) {
    const ssize_t n = pread(fd, buffer, sizeof buffer, offset);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      return {};
    }
    data.append(buffer, static_cast<size_t>(n));
    offset += n;
  }
  return data;
}

}  // namespace

std::optional<ChildOutput> runCapturingOutput(const std::string& path, const std::vector<std::string>& arguments,
                                              const std::string& outputFile, double timeoutSeconds,
                                              double killGraceSeconds) {
  RunsInFlight& runs = runsInFlight();
  int output = -1;
  std::optional<pid_t> pid;
  {
    // Started and registered in one step, so that the end of the program can't fall in between.
    const std::lock_guard lock(runs.mutex);
    if (!runs.ended && !runs.interrupted)
      output = open(outputFile.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (output >= 0) {
      SpawnSetup setup;
      pid = setup.streams(output) && setup.signals(false) ? setup.spawn(path, arguments) : std::nullopt;
      // Both ends write and read through their descriptors: the name has served, and a file without
      // one can't be left behind, whatever becomes of this program.
      unlink(outputFile.c_str());
      if (pid) runs.pids.insert(*pid);
    }
  }
  if (!pid) {
    if (output >= 0) close(output);
    awaitExitIfEnded(runs);
    return std::nullopt;
  }
  const WaitStatus status = waitWithTimeout(runs, *pid, timeoutSeconds, killGraceSeconds);
  std::string data = readFromStart(output);
  close(output);
  awaitExitIfEnded(runs);
  if (!status || !WIFEXITED(*status)) return std::nullopt;
  return ChildOutput{WEXITSTATUS(*status), std::move(data)};
}

void endRunsInFlight() {
  RunsInFlight& runs = runsInFlight();
  const std::lock_guard lock(runs.mutex);
  runs.ended = true;
  signalEveryRun(runs, SIGKILL);
}

void interruptRunsInFlight() {
  RunsInFlight& runs = runsInFlight();
  const std::lock_guard lock(runs.mutex);
  runs.interrupted = true;
  signalEveryRun(runs, SIGTERM);
}

void killRunsInFlight() {
  RunsInFlight& runs = runsInFlight();
  const std::lock_guard lock(runs.mutex);
  signalEveryRun(runs, SIGKILL);
}

bool launchDetached(const std::string& path, const std::vector<std::string>& arguments) {
  SpawnSetup setup;
  const std::optional<pid_t> pid =
      setup.streams(-1) && setup.signals(true) ? setup.spawn(path, arguments) : std::nullopt;
  if (!pid) return false;
  // A detached reaper collects the child whenever it ends; should this program end first, the child
  // is handed to init (launchd on macOS), which collects it instead.
  try {
    std::thread([child = *pid] { reapBlocking(child); }).detach();
  } catch (...) {
    // Without a thread the child lingers as a zombie until this program ends; it still runs.
  }
  return true;
}

}  // namespace corvane::platform
