#pragma once
// A pipe whose ends close on exec, so that only the child meant to hold an end keeps it. Header-only,
// so that the benchmarks use it too.
#include <fcntl.h>
#include <unistd.h>

namespace corvane::testing_support {

// False when no pipe could be made.
inline bool makeClosingPipe(int ends[2]) {
#ifdef __linux__
  return pipe2(ends, O_CLOEXEC) == 0;
#else
  // macOS has no pipe2: a child forked between the two calls may inherit the ends.
  if (pipe(ends) != 0) return false;
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  fcntl(ends[1], F_SETFD, FD_CLOEXEC);
  return true;
#endif
}

}  // namespace corvane::testing_support
