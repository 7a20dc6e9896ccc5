// Children are started with posix_spawn (safe beside other threads, unlike a hand-written fork) and
// collected with waitpid on their own pid, so concurrent runs never take each other's exit. The wait
// for the time-out sleeps on what the system offers to watch a child's exit (child_exit.h), else polls
// with short naps.
#include "platform/child_process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/posix/child_exit.h"

extern char** environ;

namespace corvane::platform {

namespace {

using Clock = std::chrono::steady_clock;

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
  // system adds.
  bool signals(bool ownSession) {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | os::extraSpawnFlags();
    if (ownSession) flags |= POSIX_SPAWN_SETSID;
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

// Waits for the child's end until `deadline`. Returns true with `status` set once it ended, false at
// the deadline with the child still running (and not yet collected).
bool reapBefore(pid_t pid, int exitWatch, Clock::time_point deadline, WaitStatus& status) {
  if (exitWatch >= 0) {
    switch (os::waitForExit(exitWatch, deadline)) {
      case os::ExitWait::exited:
        status = reapBlocking(pid);
        return true;
      case os::ExitWait::deadline:
        return false;
      case os::ExitWait::failed:
        break;  // fall back to polling below
    }
  }
  auto nap = std::chrono::milliseconds(1);
  for (;;) {
    int raw = 0;
    const pid_t done = waitpid(pid, &raw, WNOHANG);
    if (done == pid) {
      status = raw;
      return true;
    }
    if (done < 0 && errno != EINTR) {
      status = std::nullopt;
      return true;
    }
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
// reused by another process.
WaitStatus waitWithTimeout(pid_t pid, double timeoutSeconds, double killGraceSeconds) {
  const int exitWatch = os::watchExit(pid);
  WaitStatus status;
  const auto termAt = deadlineAfter(Clock::now(), timeoutSeconds);
  if (!reapBefore(pid, exitWatch, termAt, status)) {
    kill(pid, SIGTERM);
    if (!reapBefore(pid, exitWatch, deadlineAfter(termAt, killGraceSeconds), status)) {
      kill(pid, SIGKILL);
      status = reapBlocking(pid);
    }
  }
  if (exitWatch >= 0) close(exitWatch);
  return status;
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
  const int output = open(outputFile.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (output < 0) return std::nullopt;
  const auto discardOutput = [&] {
    close(output);
    unlink(outputFile.c_str());
  };

  SpawnSetup setup;
  const std::optional<pid_t> pid =
      setup.streams(output) && setup.signals(false) ? setup.spawn(path, arguments) : std::nullopt;
  if (!pid) {
    discardOutput();
    return std::nullopt;
  }
  const WaitStatus status = waitWithTimeout(*pid, timeoutSeconds, killGraceSeconds);
  std::string data = readFromStart(output);
  discardOutput();
  if (!status || !WIFEXITED(*status)) return std::nullopt;
  return ChildOutput{WEXITSTATUS(*status), std::move(data)};
}

bool launchDetached(const std::string& path, const std::vector<std::string>& arguments) {
  SpawnSetup setup;
  const std::optional<pid_t> pid = setup.streams(-1) && setup.signals(true) ? setup.spawn(path, arguments) : std::nullopt;
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
