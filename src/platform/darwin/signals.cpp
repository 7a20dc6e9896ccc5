#ifdef __APPLE__

#include "platform/signals.h"

#include "platform/posix/signal_delivery.h"

namespace corvane::platform {

// macOS offers no handle on a process that a signal could go through, so the start time is read
// just before kill().
SignalResult sendSignal(const ScannedProcess& process, StopSignal signal) {
  return os::killIfStillScanned(process, signal);
}

// Apple's own programs and daemons, which System Integrity Protection guards besides.
const std::vector<std::string_view>& systemLocations() {
  static const std::vector<std::string_view> locations = {"/System/", "/usr/libexec/", "/sbin/"};
  return locations;
}

std::string_view systemName() { return "macOS"; }

}  // namespace corvane::platform

#endif  // __APPLE__
