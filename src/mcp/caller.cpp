#include "mcp/caller.h"

#include <unordered_map>
#include <unordered_set>

#include "detect/app_path.h"
#include "detect/pipeline.h"

namespace corvane::MCP {

std::optional<Caller> caller(const Snapshot& snapshot, int32_t self) {
  std::unordered_map<int32_t, const Proc*> byPid;
  for (const auto& p : snapshot.procs) byPid.emplace(p.pid, &p);
  auto own = byPid.find(self);
  if (own == byPid.end()) return std::nullopt;

  std::unordered_set<int32_t> visited{self};
  int32_t next = own->second->ppid;
  while (visited.insert(next).second) {
    auto it = byPid.find(next);
    if (it == byPid.end()) return std::nullopt;
    const Proc& ancestor = *it->second;
    if (auto name = agentName(ancestor)) return Caller{ancestor.pid, *name};
    if (isAppPath(ancestor.path)) return std::nullopt;
    next = ancestor.ppid;
  }
  return std::nullopt;
}

std::string callerLabel(const std::optional<Caller>& caller) {
  return (caller ? caller->name : std::string("An agent")) + " via MCP";
}

}  // namespace corvane::MCP
