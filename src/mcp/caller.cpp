#include "mcp/caller.h"

#include "detect/app_path.h"
#include "detect/pipeline.h"

namespace corvane::MCP {

std::optional<Caller> caller(const std::vector<Proc>& ancestors) {
  for (const Proc& ancestor : ancestors) {
    if (auto name = agentName(ancestor)) return Caller{ancestor.pid, *name};
    if (isAppPath(ancestor.path)) return std::nullopt;
  }
  return std::nullopt;
}

std::string callerLabel(const std::optional<Caller>& caller) {
  return (caller ? caller->name : std::string("An agent")) + " via MCP";
}

}  // namespace corvane::MCP
