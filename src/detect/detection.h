#pragma once
// The working state of one classification run.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "detect/item.h"
#include "detect/world.h"

namespace corvane {

// Who launched a process: an agent (with its pid) or an application (without one).
struct Launcher {
  std::optional<std::string> startedBy;
  std::optional<int32_t> agentPID;
  bool operator==(const Launcher&) const = default;
};

struct Detection {
  // Holds pointers into its own `world`, so it is neither copied nor moved.
  explicit Detection(World world);
  Detection(const Detection&) = delete;
  Detection& operator=(const Detection&) = delete;

  World world;
  std::unordered_map<int32_t, const Proc*> procs;              // into world.snapshot.procs
  std::unordered_map<int32_t, std::vector<int32_t>> children;  // direct children by parent pid
  std::vector<const Proc*> all;                                // every process, by pid ascending
  std::unordered_set<int32_t> claimed;                         // pids owned by an item
  std::vector<Item> items;                                     // in the order they were made

  const Proc* proc(int32_t pid) const;
  bool isClaimed(int32_t pid) const { return claimed.count(pid) != 0; }

  // Claims a process and its unclaimed descendants; returns their pids, `pid` first (empty when it was
  // already claimed).
  std::vector<int32_t> claim(int32_t pid);
  // The descendants that are not claimed, without claiming them; `pid` itself is not among them.
  std::vector<int32_t> unclaimedDescendants(int32_t pid) const;

  // Whether the policy keeps a row from being stopped without "--yes" (databases, agents, Xcode's services
  // while Xcode runs).
  enum class Guard { none, guarded };

  // The common builder: claims `pid` with its tree and appends the row that owns them.
  void add(Item::Kind kind, std::string id, std::string key, std::string title, int32_t pid,
           std::optional<std::string> cwd, std::optional<Stop> stop, Guard guard);
  // A row owning exactly `pids`: memory, CPU time, ports, inbound connections, start and launcher.
  Item owning(std::vector<int32_t> pids);

  // The pid at the top of the chain of processes that launched `proc` for the same job.
  int32_t launchRoot(const Proc& proc) const;
  // The nearest agent or application among the ancestors of `pid`; for an agent, the outermost process
  // of its session.
  Launcher launcher(int32_t pid);
  // The outermost process of the session the agent `agent` belongs to.
  int32_t sessionOf(const Proc& agent) const;

 private:
  struct Ancestor {
    std::string_view name;  // empty: none found
    std::optional<int32_t> pid;
    bool visiting = false;  // on the walk being made now; meeting it again means a ppid cycle
  };
  // Launchers found so far for a process and everything above it. Ancestry does not change during a
  // run, so rows that share deep ancestry walk it once.
  std::unordered_map<int32_t, Ancestor> ancestors_;
};

}  // namespace corvane
