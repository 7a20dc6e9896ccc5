#pragma once
// Carries out the stop of one row once the policy allowed it: simulators through simctl, emulators
// through adb, containers through docker, everything else by signal; with force, SIGKILL and
// `docker kill`. Whatever the row says, it only ever signals the user's own processes outside the
// system's locations, never this program or its parent, and only the very processes the scan saw.
#include <cstdint>
#include <string>
#include <vector>

#include "detect/item.h"
#include "platform/process_table.h"
#include "tools/tools.h"
#include "snapshot/proc.h"
#include "stop/outcome.h"

namespace corvane::Stopper {

struct Result {
  // Only stopped (the processes are gone, or the container tool reported success), stillRunning (some
  // process outlived the wait) or failed (nothing was done, or the tool failed).
  using State = Outcome::State;

  State state = State::stopped;
  std::string message;  // when failed: a complete sentence for the user

  static Result stopped() { return {State::stopped, {}}; }
  static Result stillRunning() { return {State::stillRunning, {}}; }
  static Result failed(std::string message) { return {State::failed, std::move(message)}; }

  bool operator==(const Result&) const = default;
};

// Stops `item` and, for processes, waits up to `wait` seconds for them to go. `started` holds the
// start time the scan recorded for each pid: a pid without one is never signalled, and one that
// names another process by now (its process ended and the pid was reused) counts as gone. A row
// whose processes are all gone that way is stopped.
Result stop(const Item& item, const StartTimes& started, const Tools& tools, bool force, double wait);

// The row's processes that may be signalled, as the scan saw them. A pid the scan did not record is
// never touched; one whose process has ended (its pid perhaps given to another) is gone.
struct Owned {
  std::vector<platform::ScannedProcess> processes;
  bool allGone = false;  // the row had processes and every one has ended
  int unreadable = 0;    // the errno of a process that couldn't be read, which is neither gone nor touched
};

Owned ownedProcesses(const Item& item, const StartTimes& started);

// A process this program may signal: pid 2 or above, neither this program nor its parent, the real
// user's own, with a readable executable outside the system's locations.
bool mayStop(int32_t pid);

// How the wait for a row's processes ended: all gone, some still running, or some that could not be read
// at the last check (`error` then holds why).
struct Wait {
  enum class State { gone, running, unknown };
  State state = State::gone;
  int error = 0;

  bool operator==(const Wait&) const = default;
};

// Gone once every process has exited (a zombie, and a pid that names another process by now, count as
// gone) within `seconds`. Checks before the first pause, then every 200 ms.
Wait waitGone(const std::vector<platform::ScannedProcess>& processes, double seconds);

}  // namespace corvane::Stopper
