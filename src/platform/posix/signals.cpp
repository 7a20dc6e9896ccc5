#include "platform/signals.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

#include "platform/posix/signal_delivery.h"

namespace corvane::platform {

namespace os {

int signalNumber(StopSignal signal) { return signal == StopSignal::kill ? SIGKILL : SIGTERM; }

SignalResult failedSignal(int error) {
  if (error == EPERM) return SignalResult::notPermitted;
  return error == ESRCH ? SignalResult::gone : SignalResult::failed;
}

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

SignalResult killIfStillScanned(const ScannedProcess& process, StopSignal signal) {
  // kill() with 0 or a negative pid reaches whole process groups; the stopper means one process.
  if (process.pid < 1) return SignalResult::failed;
  if (const SignalResult check = stillScanned(process); check != SignalResult::sent) return check;
  if (::kill(process.pid, signalNumber(signal)) == 0) return SignalResult::sent;
  return failedSignal(errno);
}

}  // namespace os

int32_t ownPid() { return static_cast<int32_t>(::getpid()); }

int32_t parentPid() { return static_cast<int32_t>(::getppid()); }

}  // namespace corvane::platform
