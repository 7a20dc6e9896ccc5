#include "platform/signals.h"

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/posix/signal_delivery.h"

namespace corvane::platform {

// A pidfd names one process for good. Once it is open, the start time read under the pid is that of
// the process it names, or of one started later still; so when it is the scanned one's, the pidfd
// names the scanned process, and the signal sent through it can reach no other.
SignalResult sendSignal(const ScannedProcess& process, StopSignal signal) {
  if (process.pid < 1) return SignalResult::failed;
  const int pidfd = static_cast<int>(syscall(SYS_pidfd_open, process.pid, 0));
  if (pidfd < 0) {
    if (errno == ESRCH) return SignalResult::gone;
    return os::killIfStillScanned(process, signal);  // a kernel without pidfds (before 5.3)
  }
  SignalResult result = os::stillScanned(process);
  if (result == SignalResult::sent) {
    result = syscall(SYS_pidfd_send_signal, pidfd, os::signalNumber(signal), nullptr, 0) == 0
                 ? SignalResult::sent
                 : os::failedSignal(errno);
  }
  close(pidfd);
  return result;
}

const std::vector<std::string_view>& systemLocations() {
  static const std::vector<std::string_view> locations = {"/System/", "/usr/libexec/", "/sbin/", "/usr/sbin/"};
  return locations;
}

std::string_view systemName() { return "Linux"; }

}  // namespace corvane::platform
