#include "platform/signals.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace corvane::platform {

SignalResult sendSignal(int32_t pid, StopSignal signal) {
  // kill() with 0 or a negative pid reaches whole process groups; the stopper means one process.
  if (pid < 1) return SignalResult::failed;
  if (::kill(pid, signal == StopSignal::kill ? SIGKILL : SIGTERM) == 0) return SignalResult::sent;
  return errno == EPERM ? SignalResult::notPermitted : SignalResult::failed;
}

int32_t ownPid() { return static_cast<int32_t>(::getpid()); }

int32_t parentPid() { return static_cast<int32_t>(::getppid()); }

}  // namespace corvane::platform
