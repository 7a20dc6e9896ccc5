// macOS wakes the waiting thread through a kqueue that reports the child's exit.
#ifdef __APPLE__

#include "platform/posix/child_exit.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <spawn.h>
#include <sys/event.h>
#include <unistd.h>

namespace corvane::platform::os {

namespace {

using Clock = std::chrono::steady_clock;

timespec timeUntil(Clock::time_point deadline) {
  const auto left =
      std::clamp<Clock::duration>(deadline - Clock::now(), Clock::duration::zero(), std::chrono::seconds(60));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
  timespec value{};
  value.tv_sec = static_cast<time_t>(seconds.count());
  value.tv_nsec = static_cast<long>(std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count());
  return value;
}

}  // namespace

// A child gets only the three descriptors of the file actions: sockets and pipes have no
// close-on-exec flag at birth here, so another thread's would otherwise leak into the child.
short extraSpawnFlags() { return POSIX_SPAWN_CLOEXEC_DEFAULT; }

// -1 also when the child has already exited and can't be watched any more (the polling wait then
// collects it at once).
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

}  // namespace corvane::platform::os

#endif  // __APPLE__
