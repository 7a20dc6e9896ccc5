#pragma once
// The coding agent that started this MCP server, found among the server's ancestors.
#include <cstdint>
#include <optional>
#include <string>

#include "snapshot/proc.h"

namespace corvane::MCP {

struct Caller {
  int32_t pid = 0;
  std::string name;
};

// Walks up from `self`; the first application above the server hides any agent further up.
std::optional<Caller> caller(const Snapshot& snapshot, int32_t self);

// "<agent> via MCP", or "An agent via MCP" when none was found.
std::string callerLabel(const std::optional<Caller>& caller);

}  // namespace corvane::MCP
