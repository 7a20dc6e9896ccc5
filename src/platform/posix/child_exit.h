#pragma once
// The parts of running a child that each system does its own way: the posix_spawn flags it adds, and
// how a waiting thread sleeps until the child exits (a pidfd on Linux, a kqueue on macOS); defined in
// linux/ and darwin/ for the shared code of posix/.
#include <chrono>
#include <sys/types.h>

namespace corvane::platform::os {

// posix_spawn flags every child gets on this system besides the shared ones.
short extraSpawnFlags();

// A descriptor that becomes ready once child `pid` exits, for `waitForExit`; -1 when the system
// can't provide one, and the caller polls instead. The caller closes it.
int watchExit(pid_t pid);

enum class ExitWait {
  exited,    // the child has exited; it is still to be collected
  deadline,  // the deadline came first
  failed,    // the watch stopped working; the caller polls instead
};

// Sleeps on `watch` until the child exits or `deadline` passes.
ExitWait waitForExit(int watch, std::chrono::steady_clock::time_point deadline);

}  // namespace corvane::platform::os
