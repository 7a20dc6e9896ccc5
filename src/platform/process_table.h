#pragma once
// The machine's process table as the snapshot and the stopper read it. Strings are the kernel's raw
// bytes; the callers decide how to present them.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/date.h"

namespace corvane::platform {

// What is read of every process of the user at every scan.
struct ProcessStats {
  int32_t ppid = 0;
  Date started{};
  uint64_t cpu = 0;        // nanoseconds of user plus system time
  uint64_t footprint = 0;  // bytes of private memory, resident or swapped
};

// One TCP socket of a process: its local port, and whether it listens or is an established connection.
struct TcpSocket {
  uint16_t port = 0;
  bool listening = false;
};

// One pass over the process table. It holds what a pass shares between processes (the open table,
// a read buffer, the user's socket table, read on first use) and is meant for one snapshot.
class ProcessTable {
 public:
  ProcessTable();
  ~ProcessTable();
  ProcessTable(const ProcessTable&) = delete;
  ProcessTable& operator=(const ProcessTable&) = delete;

  // All pids of the machine, in the kernel's order.
  std::vector<int32_t> pids();
  // Absent when the process belongs to another user or cannot be read (it may have gone); the
  // readings below are only meant for processes that passed this one.
  std::optional<ProcessStats> stats(int32_t pid);
  // The argument vector, args[0] included; empty when it cannot be read.
  std::vector<std::string> args(int32_t pid);
  // The executable's path; absent when it cannot be read.
  std::optional<std::string> executable(int32_t pid);
  // The working directory; absent when it cannot be read.
  std::optional<std::string> workingDirectory(int32_t pid);
  // The process the system holds responsible for this one (macOS: the app that launched a helper);
  // absent when there is none, when it is the process itself, or where the system has no such notion.
  std::optional<int32_t> responsible(int32_t pid);
  // The process's TCP sockets that listen, or are established on a port that some socket of the
  // user listens on; as many as could be read. The user's sockets are found in the order the
  // processes are asked for (after their stats); once every one has been found, a later process is
  // searched only when it may have inherited one: its parent holds one, descends from a holder, or
  // was not asked about in this pass.
  std::vector<TcpSocket> tcpSockets(int32_t pid);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// A process as a scan saw it. The pid names it only while the process with that pid has this start
// time: between a scan and a signal the pid may have been reused by a newer process.
struct ScannedProcess {
  int32_t pid = 0;
  Date started{};

  bool operator==(const ScannedProcess&) const = default;
};

// The start time of the process that has this pid now, as the snapshot reads it; absent when there
// is none or it cannot be read.
std::optional<Date> processStarted(int32_t pid);

// The process has exited (or is a zombie, or cannot be read any more).
bool processGone(int32_t pid);

// What the stopper learns of a scanned process now. It is gone only when the system says there is no
// such process, when it is a zombie, or when its pid names a newer process; any other failure to read
// it (no descriptor left, no permission, an I/O error) leaves it unknown, never gone.
struct ProcessCheck {
  enum class State { running, gone, unknown };
  State state = State::gone;
  int error = 0;  // when unknown: the errno of the reading that failed

  bool operator==(const ProcessCheck&) const = default;
};
ProcessCheck checkProcess(const ScannedProcess& process);

// For the stopper's ownership test.
struct ProcessOwner {
  uint32_t realUid = 0;
  std::optional<std::string> path;  // the executable; absent when it cannot be read
};
// Absent when the process cannot be read.
std::optional<ProcessOwner> processOwner(int32_t pid);

// The real user id of this program.
uint32_t currentUser();

}  // namespace corvane::platform
