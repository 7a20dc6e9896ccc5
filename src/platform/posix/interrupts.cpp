// The handler only notes the signal and wakes a watcher thread through a pipe; everything else (ending
// the program, ending the programs it runs) happens on that thread, where any call is safe.
#include "platform/interrupts.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/child_process.h"

namespace corvane::platform {

namespace {

// How long the programs a stop runs get to end on SIGTERM once it is interrupted.
constexpr int runGraceMilliseconds = 2000;

std::atomic<int> firstSignal{0};
int wakeRead = -1;
int wakeWrite = -1;

std::mutex holdMutex;
int holds = 0;

void onInterrupt(int signal) {
  const int savedErrno = errno;
  int none = 0;
  firstSignal.compare_exchange_strong(none, signal);
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = write(wakeWrite, &byte, 1);
  errno = savedErrno;
}

// The next signal caught, or 0 when `milliseconds` pass first (-1 waits for ever).
int awaitSignal(int milliseconds) {
  for (;;) {
    pollfd entry{wakeRead, POLLIN, 0};
    const int ready = poll(&entry, 1, milliseconds);
    if (ready == 0) return 0;
    if (ready < 0) {
      if (errno == EINTR) continue;
      return firstSignal.load();  // can't wait any more: treat it as the next signal
    }
    unsigned char byte = 0;
    if (read(wakeRead, &byte, 1) == 1) return byte;
  }
}

[[noreturn]] void endNow(int signal) {
  endRunsInFlight();
  _exit(128 + signal);
}

void watch() {
  const int first = awaitSignal(-1);
  {
    const std::lock_guard lock(holdMutex);
    if (holds == 0) endNow(first);
    interruptRunsInFlight();
  }
  if (const int second = awaitSignal(runGraceMilliseconds)) endNow(second);
  killRunsInFlight();
  endNow(awaitSignal(-1));
}

bool makeWakePipe() {
  int ends[2];
  if (pipe(ends) != 0) return false;
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  fcntl(ends[1], F_SETFL, O_NONBLOCK);  // the handler must never block on a full pipe
  wakeRead = ends[0];
  wakeWrite = ends[1];
  return true;
}

void catchSignal(int signal) {
  struct sigaction previous {};
  if (sigaction(signal, nullptr, &previous) != 0 || previous.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

}  // namespace

void catchInterrupts() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (!makeWakePipe()) return;
    try {
      std::thread(watch).detach();
    } catch (const std::system_error&) {
      return;  // without the watcher the signals keep their default: they end the program
    }
    catchSignal(SIGINT);
    catchSignal(SIGTERM);
  });
}

bool interrupted() { return firstSignal.load() != 0; }

std::optional<int32_t> interruptExitCode() {
  const int signal = firstSignal.load();
  if (signal == 0) return std::nullopt;
  return 128 + signal;
}

InterruptHold::InterruptHold() {
  const std::lock_guard lock(holdMutex);
  ++holds;
}

InterruptHold::~InterruptHold() {
  const std::lock_guard lock(holdMutex);
  --holds;
}

}  // namespace corvane::platform
