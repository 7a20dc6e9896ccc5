// Linux wakes the waiting thread through a pidfd, on kernels that have them.
#include "platform/posix/child_exit.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace corvane::platform::os {

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<int64_t>(left, 0, 60'000));
}

}  // namespace

short extraSpawnFlags() { return 0; }

int watchExit(pid_t pid) { return static_cast<int>(syscall(SYS_pidfd_open, pid, 0)); }

ExitWait waitForExit(int pidfd, Clock::time_point deadline) {
  for (;;) {
    pollfd entry{pidfd, POLLIN, 0};
    const int ready = poll(&entry, 1, millisecondsUntil(deadline));
    if (ready > 0 && (entry.revents & POLLIN)) return ExitWait::exited;
    if (ready > 0 || (ready < 0 && errno != EINTR)) return ExitWait::failed;
    if (ready == 0 && Clock::now() >= deadline) return ExitWait::deadline;
  }
}

}  // namespace corvane::platform::os
