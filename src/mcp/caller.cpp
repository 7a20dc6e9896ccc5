#include "mcp/caller.h"

#include <unordered_map>
#include <unordered_set>

#include "detect/agents.h"
#include "detect/app_path.h"

namespace corvane::MCP {

std::optional<Caller> caller(const std::vector<Proc>& ancestors) {
  // Each process's parent is the next one in the list.
  const auto parentOf = [&](const Proc& p) -> const Proc* {
    const size_t next = static_cast<size_t>(&p - ancestors.data()) + 1;
    return next < ancestors.size() ? &ancestors[next] : nullptr;
  };
  for (const Proc& ancestor : ancestors) {
    if (const auto name = agentDisplayName(ancestor))
      return Caller{sessionRoot(ancestor, parentOf, ancestors.size()).pid, std::string(*name)};
    if (isAppPath(ancestor.path)) return std::nullopt;
  }
  return std::nullopt;
}

std::vector<Proc> ancestors(const Snapshot& snapshot, int32_t self) {
  std::unordered_map<int32_t, const Proc*> byPid;
  for (const auto& p : snapshot.procs) byPid.emplace(p.pid, &p);
  std::vector<Proc> chain;
  const auto own = byPid.find(self);
  if (own == byPid.end()) return chain;
  std::unordered_set<int32_t> visited{self};
  for (int32_t next = own->second->ppid; visited.insert(next).second;) {
    const auto it = byPid.find(next);
    if (it == byPid.end()) break;
    chain.push_back(*it->second);
    next = it->second->ppid;
  }
  return chain;
}

std::string callerLabel(const std::optional<Caller>& caller) {
  return (caller ? caller->name : std::string("An agent")) + " via MCP";
}

}  // namespace corvane::MCP
