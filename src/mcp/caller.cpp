#include "mcp/caller.h"

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

std::string callerLabel(const std::optional<Caller>& caller) {
  return (caller ? caller->name : std::string("An agent")) + " via MCP";
}

}  // namespace corvane::MCP
