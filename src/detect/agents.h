#pragma once
// Coding agents: which processes are one, and which of them make up one session.
#include <cstddef>
#include <optional>
#include <string_view>

#include "detect/app_path.h"
#include "snapshot/proc.h"

namespace corvane {

// The script a JavaScript runtime ("node", "bun") runs: its first argument after args[0] that is not an
// option, since the runtime's options come first. Absent for other programs and for a bare runtime.
std::optional<std::string_view> runtimeScript(const Proc& proc);

// The display name of the coding agent a process is; a view of a static table.
std::optional<std::string_view> agentDisplayName(const Proc& proc);

// Whether an agent process is a daemon that outlives the session that started it (Codex's app server):
// it is a session of its own, and what runs under it is its.
bool runsApart(const Proc& agent);

// Agents relaunch themselves (a runtime restarted with other options, a script that starts the native
// program), so an agent whose nearest agent ancestor has the same name belongs to that ancestor's
// session. The outermost process of `agent`'s session; `parentOf` gives a process's parent or nullptr.
// An application between two agents, or a daemon, starts a session of its own, and at most `maxSteps`
// parents are climbed, which ends a ppid cycle.
template <typename ParentOf>
const Proc& sessionRoot(const Proc& agent, const ParentOf& parentOf, size_t maxSteps) {
  const auto name = agentDisplayName(agent);
  const Proc* root = &agent;
  const Proc* current = &agent;
  for (size_t steps = 0; name && !runsApart(*root) && steps < maxSteps; ++steps) {
    current = parentOf(*current);
    if (!current || current == &agent || isAppPath(current->path)) break;
    const auto above = agentDisplayName(*current);
    if (!above) continue;
    if (*above != *name) break;
    root = current;
  }
  return *root;
}

}  // namespace corvane
