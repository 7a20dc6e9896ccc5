#include "platform/signals.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

#ifndef __APPLE__
#include <sys/syscall.h>
#endif

namespace corvane::platform {

namespace {

int signalNumber(StopSignal signal) { return signal == StopSignal::kill ? SIGKILL : SIGTERM; }

// What a failed signal call's errno means for the stopper.
SignalResult failedSignal(int error) {
  if (error == EPERM) return SignalResult::notPermitted;
  return error == ESRCH ? SignalResult::gone : SignalResult::failed;
}

// `sent` when the scanned process still runs, so that a signal may go to it; `gone` when it has ended or
// its pid names a newer process; `failed` when that can't be told.
SignalResult stillScanned(const ScannedProcess& process) {
  switch (checkProcess(process).state) {
    case ProcessCheck::State::running:
      return SignalResult::sent;
    case ProcessCheck::State::gone:
      return SignalResult::gone;
    case ProcessCheck::State::unknown:
      return SignalResult::failed;
  }
  return SignalResult::failed;
}

// Checks the start time just before kill(): without a handle on the process the two are separate
// steps, so only a pid reused in between could still be hit, no longer one reused since the scan.
SignalResult killIfStillScanned(const ScannedProcess& process, StopSignal signal) {
  // kill() with 0 or a negative pid reaches whole process groups; the stopper means one process.
  if (process.pid < 1) return SignalResult::failed;
  if (const SignalResult check = stillScanned(process); check != SignalResult::sent) return check;
  if (::kill(process.pid, signalNumber(signal)) == 0) return SignalResult::sent;
  return failedSignal(errno);
}

}  // namespace

#ifdef __APPLE__

// macOS offers no handle on a process that a signal could go through, so the start time is read
// just before kill().
SignalResult sendSignal(const ScannedProcess& process, StopSignal signal) {
  return killIfStillScanned(process, signal);
}

std::string_view systemName() { return "macOS"; }

#else

// A pidfd names one process for good. Once it is open, the start time read under the pid is that of
// the process it names, or of one started later still; so when it is the scanned one's, the pidfd
// names the scanned process, and the signal sent through it can reach no other.
SignalResult sendSignal(const ScannedProcess& process, StopSignal signal) {
  if (process.pid < 1) return SignalResult::failed;
  const int pidfd = static_cast<int>(syscall(SYS_pidfd_open, process.pid, 0));
  if (pidfd < 0) {
    if (errno == ESRCH) return SignalResult::gone;
    return killIfStillScanned(process, signal);  // a kernel without pidfds (before 5.3)
  }
  SignalResult result = stillScanned(process);
  if (result == SignalResult::sent) {
    result = syscall(SYS_pidfd_send_signal, pidfd, signalNumber(signal), nullptr, 0) == 0 ? SignalResult::sent
                                                                                          : failedSignal(errno);
  }
  close(pidfd);
  return result;
}

std::string_view systemName() { return "Linux"; }

#endif

int32_t ownPid() { return static_cast<int32_t>(::getpid()); }

int32_t parentPid() { return static_cast<int32_t>(::getppid()); }

uint32_t currentUser() { return static_cast<uint32_t>(::getuid()); }

}  // namespace corvane::platform
