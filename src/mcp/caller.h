#pragma once
// The coding agent that started this MCP server, found among the server's ancestors.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "snapshot/proc.h"

namespace corvane::MCP {

struct Caller {
  int32_t pid = 0;
  std::string name;
};

// Walks up the server's ancestors, its parent first; the first application hides any agent further up.
std::optional<Caller> caller(const std::vector<Proc>& ancestors);

// "<agent> via MCP", or "An agent via MCP" when none was found.
std::string callerLabel(const std::optional<Caller>& caller);

}  // namespace corvane::MCP
