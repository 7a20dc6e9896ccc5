#pragma once
// The machine's process table as the snapshot and the stopper read it. Strings are the kernel's raw
// bytes; the callers decide how to present them.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/date.h"

namespace corvane::platform {

// One TCP socket of a process: its local port, and whether it listens or is an established connection.
struct TcpSocket {
  uint16_t port = 0;
  bool listening = false;
};

// Everything one read learns of a process of the user, read together so that no reading depends on
// another call having come first.
struct ProcessRecord {
  int32_t ppid = 0;
  Date started{};
  uint64_t cpuTimeNanoseconds = 0;  // user plus system time
  uint64_t footprint = 0;           // bytes of private memory, resident or swapped
  // The argument vector, args[0] included (empty when it cannot be read); absent when the caller
  // already knew it.
  std::optional<std::vector<std::string>> args;
  std::optional<std::string> executable;        // absent when it cannot be read
  std::optional<std::string> workingDirectory;  // absent when it cannot be read
  // The process the system holds responsible for this one (macOS: the app that launched a helper);
  // absent when there is none, when it is the process itself, or where the system has no such notion.
  std::optional<int32_t> responsible;
  // The TCP sockets that listen, or are established on a port that some socket of the user listens
  // on; as many as could be read. Empty when they were not asked for.
  std::vector<TcpSocket> sockets;
};

// What a read leaves out: the arguments of a process whose (pid, start time) the caller has seen (it
// answers them, or null to have them read), and the sockets of a process whose path (the executable,
// else the first argument) it does not want.
struct ProcessReading {
  std::function<const std::vector<std::string>*(Date started)> knownArgs = [](Date) { return nullptr; };
  std::function<bool(std::string_view path)> wantsSockets = [](std::string_view) { return true; };
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
  // Absent when the process belongs to another user or cannot be read (it may have gone). Once every
  // socket of the user has been found, a process is searched for sockets only when it may have
  // inherited one: its parent holds one, descends from a holder, or was not read in this pass.
  std::optional<ProcessRecord> read(int32_t pid, const ProcessReading& reading = {});

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
